// Construction: deciding the document's encoding, refusing (event mode) the
// encodings a program cannot hand over, and making the UTF-16 copy.
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>

#include <xercesc/util/PlatformUtils.hpp>

#include "XmlDomHandlers/XmlDomHandlers.h"
#include "XmlDomHandlers/decl_scan.h"
#include "XmlDomHandlers/encoding_names.h"
#include "XmlDomHandlers/event_sink.h"
#include "XmlDomHandlers/tree_sink.h"
#include "XmlParseErr/event_record.h"
#include "XmlParseErr/exception_codes.h"
#include "platform/platform.h"

namespace cblxml {
namespace {

struct LeadingBytes {
    const char *bytes;
    size_t size;
    const char16_t *encoding;
};

// Tried in order; the first match names the encoding. FF FE is tested before
// FF FE 00 00, so a document starting FF FE 00 00 is taken as UTF-16LE: that
// order is kept on purpose.
const LeadingBytes kDetection[] = {
    {"\xFE\xFF", 2, u"UTF-16BE"},
    {"\x00\x3C\x00\x3F\x00\x78\x00\x6D\x00\x6C\x00\x20", 12, u"UTF-16BE"},
    {"\xFF\xFE", 2, u"UTF-16LE"},
    {"\x3C\x00\x3F\x00\x78\x00\x6D\x00\x6C\x00\x20\x00", 12, u"UTF-16LE"},
    {"\xEF\xBB\xBF", 3, u"UTF-8"},
    {"<?xml ", 6, u"UTF-8"},
    {"\x00\x00\xFE\xFF", 4, u"UCS-4BE"},
    {"\x00\x00\x00\x3C\x00\x00\x00\x3F\x00\x00\x00\x78\x00\x00\x00\x6D\x00\x00\x00\x6C\x00\x00\x00"
     "\x20",
     24, u"UCS-4BE"},
    {"\xFF\xFE\x00\x00", 4, u"UCS-4LE"},
    {"\x3C\x00\x00\x00\x3F\x00\x00\x00\x78\x00\x00\x00\x6D\x00\x00\x00\x6C\x00\x00\x00\x20\x00\x00"
     "\x00",
     24, u"UCS-4LE"},
};

constexpr unsigned char kEbcdicXmlDecl[] = {0x4C, 0x6F, 0xA7, 0x94, 0x93, 0x40};  // "<?xml "

bool begins(const unsigned char *doc, uint32_t length, const void *bytes, size_t size)
{
    return length >= size && std::memcmp(doc, bytes, size) == 0;
}

// Refusal codes for a program whose data is EBCDIC (option value 2).
int32_t ebcdic_program_refusal(const unsigned char *doc, uint32_t length)
{
    if (length >= 1 && doc[0] == 0x3C)
        return kAsciiRefusedCode;
    if (length >= 2 && doc[0] == 0x00 && doc[1] == 0x3C)
        return kUtf16RefusedCode;
    return kGenericExceptionCode;
}

char16_t ascii_upper(char16_t c)
{
    return (c >= u'a' && c <= u'z') ? static_cast<char16_t>(c - u'a' + u'A') : c;
}

xercesc::XMLTranscoder *transcoder_for(const std::u16string &name)
{
    xercesc::XMLTransService::Codes res;
    return xercesc::XMLPlatformUtils::fgTransService->makeNewTranscoderFor(name.c_str(), res, 4096);
}

// Tree mode: a document in UTF-16 (either order, with or without a mark) as
// machine-order units, or empty when it is not one.
std::u16string utf16_units(const unsigned char *doc, uint32_t length)
{
    if (length < 2)
        return {};
    bool big;
    if ((doc[0] == 0x00 && doc[1] == 0x3C) || (doc[0] == 0xFE && doc[1] == 0xFF))
        big = true;
    else if ((doc[0] == 0x3C && doc[1] == 0x00) || (doc[0] == 0xFF && doc[1] == 0xFE))
        big = false;
    else
        return {};
    std::u16string units(length / 2, u'\0');
    for (size_t i = 0; i < units.size(); ++i) {
        const unsigned char first = doc[2 * i];
        const unsigned char second = doc[2 * i + 1];
        units[i] = big ? static_cast<char16_t>(first << 8 | second)
                       : static_cast<char16_t>(second << 8 | first);
    }
    return units;
}

// Tree mode: the declaration text ("<?xml" up to and including "?>") of a
// byte document, widened by the platform's multibyte conversion; empty when
// there is none.
std::u16string byte_declaration(const unsigned char *doc, uint32_t length)
{
    uint32_t from = (length >= 3 && std::memcmp(doc, "\xEF\xBB\xBF", 3) == 0) ? 3 : 0;
    for (uint32_t i = from; i + 1 < length; ++i) {
        if (doc[i] == '?' && doc[i + 1] == '>')
            return platform::utf8_to_utf16(reinterpret_cast<const char *>(doc + from),
                                           i + 2 - from);
    }
    return {};
}

}  // namespace

void XmlDomHandlers::refuse(int32_t code, const unsigned char *doc, uint32_t length)
{
    xd_parse_info *record = new_event("EXCEPTION");
    record->code = code;
    try {
        record->text = copy_text(doc, length, 2);  // terminated for either measure
    } catch (...) {
        kvt_xe_xmlparse_delete_info(record);
        throw;
    }
    events->appendEvent(record);
    sawErrors = true;
}

std::u16string XmlDomHandlers::detectEncoding(const unsigned char *doc, uint32_t length,
                                              uint32_t flags)
{
    for (const LeadingBytes &row : kDetection) {
        if (begins(doc, length, row.bytes, row.size))
            return row.encoding;
    }
    if (length == 0) {
        if (flags & CBLXML_OPT_EBCDIC_DATA)
            refuse(kGenericExceptionCode, doc, length);  // an empty document has no EBCDIC "<"
        return {};
    }
    if (flags & CBLXML_OPT_EBCDIC_DATA) {
        if (doc[0] != 0x4C)
            refuse(ebcdic_program_refusal(doc, length), doc, length);
        return {};
    }
    if (doc[0] == 0x3C)
        return u"UTF-8";
    if (begins(doc, length, kEbcdicXmlDecl, sizeof kEbcdicXmlDecl))
        return u"IBM1140";
    if (doc[0] == 0x4C)
        refuse(kEbcdicRefusedCode, doc, length);
    // Any other first byte: the encoding stays unknown and the data map
    // converts the document from the program's code page.
    return {};
}

namespace {

// How many bytes of a document hold its declaration: 0 when the document
// opens with '<' and a letter, '!' or '/' (no declaration; ASCII-compatible
// bytes), else the bytes up to the first "?>" and those two; `length` when
// neither tells.
size_t declaration_head(const unsigned char *doc, uint32_t length)
{
    if (length >= 2 && doc[0] == '<' &&
        ((doc[1] >= 'A' && doc[1] <= 'Z') || (doc[1] >= 'a' && doc[1] <= 'z') || doc[1] == '!' ||
         doc[1] == '_' || doc[1] == '/'))
        return 0;
    const void *end = memmem(doc, length, "?>", 2);
    return end != nullptr ? static_cast<size_t>(static_cast<const unsigned char *>(end) - doc) + 2
                          : length;
}

}  // namespace

void XmlDomHandlers::constructEventMode(const unsigned char *doc, uint32_t length, uint32_t flags)
{
    national = (flags & CBLXML_OPT_NATIONAL) != 0;
    std::u16string detected;  // empty: no encoding name
    if (national) {
        idesc.class_code = DM_CLASS_NATIONAL;
        idesc.usage_code = DM_USAGE_NATIONAL;
    } else {
        detected = detectEncoding(doc, length, flags);
    }
    if (sawErrors)
        return;

    if (detected.empty()) {
        convertThroughDataMap(doc, length, flags);
    } else {
        transcoder = transcoder_for(detected);
        if (deferUtf8Text(doc, length, detected, flags)) {
            bomUncounted = !sawErrors && docText != nullptr && prepareDocText(1) > 0 &&
                           docText[0] == 0xFEFF && begins(doc, length, "\xEF\xBB\xBF", 3);
            return;
        }
        uint32_t workLen = length;
        XMLCh *work = toUtf16(doc, workLen);
        bool replaced = false;
        if (starts_with(work, workLen, u"<?xml")) {
            try {
                replaced = examineDeclaration(work, workLen, detected, doc, length, flags);
            } catch (...) {
                std::free(work);
                throw;
            }
        }
        if (sawErrors || replaced) {
            std::free(work);
            if (sawErrors)
                return;
            workLen = length;
            work = toUtf16(doc, workLen);
        }
        docText = work;
        docTextLen = workLen;
    }
    // The data map hands the parser UTF-8; so does a document that starts
    // with the UTF-8 mark.
    bomUncounted = docText != nullptr && docTextLen > 0 && docText[0] == 0xFEFF &&
                   (mapHandle != nullptr || begins(doc, length, "\xEF\xBB\xBF", 3));
}

bool XmlDomHandlers::deferUtf8Text(const unsigned char *doc, uint32_t length,
                                   const std::u16string &detected, uint32_t flags)
{
    // Small documents are converted at once: deferring pays only where the
    // copy costs something.
    constexpr uint32_t kDeferredMinimum = 64 * 1024;
    if (!bytesStay || length < kDeferredMinimum || transcoder == nullptr ||
        !xercesc::XMLString::equals(transcoder->getEncodingName(), u"UTF-8"))
        return false;
    // The head ends just after the first "?>" (or is empty when the
    // document opens with a tag): the declaration reads the same in it as
    // in the whole copy.
    const size_t head = declaration_head(doc, length);
    if (head >= length)
        return false;
    uint32_t headLen = static_cast<uint32_t>(head);
    XMLCh *work = toUtf16(doc, headLen);
    bool replaced = false;
    if (starts_with(work, headLen, u"<?xml")) {
        try {
            replaced = examineDeclaration(work, headLen, detected, doc, length, flags);
        } catch (...) {
            std::free(work);
            throw;
        }
    }
    std::free(work);
    if (sawErrors)
        return true;
    if (replaced) {
        // Another encoding: the whole copy is made through its transcoder.
        uint32_t workLen = length;
        docText = toUtf16(doc, workLen);
        docTextLen = workLen;
        return true;
    }
    // UTF-8 never takes fewer bytes than UTF-16 units: the copy's block has
    // room for it; its length is known once it is complete.
    docText = static_cast<XMLCh *>(std::malloc((size_t{length} + 1) * sizeof(XMLCh)));
    if (docText == nullptr)
        throw std::bad_alloc();
    docTextLen = 0;
    lazyBytes = doc;
    lazyLength = length;
    return true;
}

void XmlDomHandlers::convertThroughDataMap(const unsigned char *doc, uint32_t length,
                                           uint32_t flags)
{
    mapHandle = DMInit(national ? 0 : (1 | static_cast<int32_t>(flags & CBLXML_OPT_EBCDIC_DATA)), 0,
                       0, 0, 0);
    if (mapHandle == nullptr) {
        // The program's code page cannot be opened: nothing can be read,
        // so the document is refused rather than parsed as garbage.
        refuse(kGenericExceptionCode, doc, length);
        return;
    }
    setIdescLen(static_cast<int32_t>(length));
    // A conversion that fails leaves an empty text: the parse then ends
    // at once with an exception rather than reading garbage. So does one
    // longer than the longest UTF-8 form of the document (3 bytes per byte
    // of a single-byte code page, 3 per 2 bytes of UTF-16, plus the
    // terminator), which no conversion makes.
    if (!platform::get_cbl_text(mapHandle, &idesc, doc, mappedText) ||
        mappedText.size() + 1 > platform::utf8_room(length))
        std::string().swap(mappedText);
    auto converted = static_cast<uint32_t>(mappedText.size());
    docTextLen = converted;
    if (converted != 0)
        transcoder = transcoder_for(u"UTF-8");
    docText = toUtf16(reinterpret_cast<const unsigned char *>(mappedText.data()), docTextLen);
}

bool XmlDomHandlers::examineDeclaration(const XMLCh *work, uint32_t workLen,
                                        const std::u16string &detected, const unsigned char *doc,
                                        uint32_t length, uint32_t flags)
{
    const size_t end = find_decl_end(work, workLen);
    // The scans read no further than the end of the declaration.
    const size_t declLen = end < workLen ? end + 2 : workLen;
    DeclaredEncoding declared = declared_encoding(work, declLen);
    if (declared.found) {
        // Only a value whose "=" follows the word at once is read: with
        // anything between the two the detected encoding stays in force
        // (the parser reads the declaration itself).
        if (!declared.adjacent)
            return false;
        for (char16_t &c : declared.value)
            c = ascii_upper(c);
        const std::u16string canonical = normalise_encoding_name(declared.value);
        if (canonical.empty() || canonical == detected || canonical == u"UTF-16" ||
            canonical == u"UCS-4")
            return false;
        delete transcoder;
        transcoder = nullptr;  // the next one may not be made
        transcoder = is_transcoder_name(canonical) ? transcoder_for(canonical) : nullptr;
        return true;
    }
    if (!(flags & CBLXML_OPT_EBCDIC_DATA)) {
        if (detected == u"IBM1140")
            refuse(kEbcdicRefusedCode, doc, length);
    } else if (detected == u"UTF-8") {
        refuse(kAsciiRefusedCode, doc, length);
    } else if (detected.size() > 6 && detected.compare(0, 6, u"UTF-16") == 0) {
        refuse(kUtf16RefusedCode, doc, length);
    } else if (detected != u"IBM1140") {
        refuse(kGenericExceptionCode, doc, length);
    }
    return false;
}

void XmlDomHandlers::constructTreeMode(const unsigned char *doc, uint32_t length)
{
    auto &tree = static_cast<TreeSink &>(*sink);
    // A UTF-16 document is kept as it is; its strings are converted to UTF-8
    // (no transcoder), so the tree reads the same as for the document in
    // UTF-8. With a byte-order mark the declaration is not looked for.
    std::u16string units = utf16_units(doc, length);
    const bool utf16 = !units.empty();
    std::u16string declaration;
    std::u16string encoding;
    if (utf16) {
        const size_t end = find_decl_end(units.data(), units.size());
        if (starts_with(units.data(), units.size(), u"<?xml") && end < units.size())
            declaration = units.substr(0, end + 2);
    } else if ((length >= 5 && std::memcmp(doc, "<?xml", 5) == 0) ||
               (length >= 3 && std::memcmp(doc, "\xEF\xBB\xBF", 3) == 0)) {
        encoding = u"UTF-8";
        declaration = byte_declaration(doc, length);
    }
    DeclaredEncoding declared = declared_encoding(declaration.data(), declaration.size());
    if (declared.found)
        encoding = std::move(declared.value);
    if (!encoding.empty() && !utf16)
        transcoder = is_transcoder_name(encoding) ? transcoder_for(encoding) : nullptr;
    // The name, in the program's form (through the transcoder just made),
    // goes to the document node.
    char *name = encoding.empty() ? nullptr : cobolText(encoding.data(), encoding.size(), 0);
    tree.setEncoding(name, utf16 || transcoder == nullptr);

    if (utf16) {
        docTextLen = static_cast<uint32_t>(units.size());
        docText = static_cast<XMLCh *>(std::malloc((units.size() + 1) * sizeof(XMLCh)));
        if (docText == nullptr)
            throw std::bad_alloc();
        std::memcpy(docText, units.c_str(), (units.size() + 1) * sizeof(XMLCh));
        return;
    }
    // Tree mode reads the text only for the declaration (the document node's
    // first processing instruction): when the bytes show where it ends, only
    // that much is converted, not the whole document.
    docTextLen = length;
    const size_t head = declaration_head(doc, length);
    if (head < length) {
        uint32_t headLen = static_cast<uint32_t>(head);
        XMLCh *text = toUtf16(doc, headLen);
        if (head == 0 || (headLen >= 2 && text[headLen - 2] == u'?' && text[headLen - 1] == u'>')) {
            docText = text;
            docTextLen = headLen;
            return;
        }
        std::free(text);
    }
    docText = toUtf16(doc, docTextLen);
}

}  // namespace cblxml
