// Event-mode construction: deciding the document's encoding, refusing the
// encodings a program cannot hand over, and making the UTF-16 copy.
#include <cstdlib>
#include <cstring>
#include <string>

#include <xercesc/util/PlatformUtils.hpp>

#include "XmlDomHandlers/XmlDomHandlers.h"
#include "XmlDomHandlers/decl_scan.h"
#include "XmlDomHandlers/encoding_names.h"
#include "XmlDomHandlers/event_record.h"
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
    {"\x00\x00\x00\x3C\x00\x00\x00\x3F\x00\x00\x00\x78\x00\x00\x00\x6D\x00\x00\x00\x6C\x00\x00\x00\x20",
     24, u"UCS-4BE"},
    {"\xFF\xFE\x00\x00", 4, u"UCS-4LE"},
    {"\x3C\x00\x00\x00\x3F\x00\x00\x00\x78\x00\x00\x00\x6D\x00\x00\x00\x6C\x00\x00\x00\x20\x00\x00\x00",
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
        return 306;
    if (length >= 2 && doc[0] == 0x00 && doc[1] == 0x3C)
        return 310;
    return 201;
}

char16_t ascii_upper(char16_t c)
{
    return (c >= u'a' && c <= u'z') ? static_cast<char16_t>(c - u'a' + u'A') : c;
}

} // namespace

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
    appendEvent(record);
    sawErrors = true;
}

void XmlDomHandlers::constructEventMode(const unsigned char *doc, uint32_t length, void *out,
                                        uint32_t flags)
{
    buildDocText(doc, length, out, flags);
    // The data map hands the parser UTF-8; so does a document that starts
    // with the UTF-8 mark.
    bomUncounted = docText != nullptr && docTextLen > 0 && docText[0] == 0xFEFF &&
                   (mapHandle != nullptr || begins(doc, length, "\xEF\xBB\xBF", 3));
}

void XmlDomHandlers::buildDocText(const unsigned char *doc, uint32_t length, void *out,
                                  uint32_t flags)
{
    national = (flags & CBLXML_OPT_NATIONAL) != 0;
    if (out != nullptr)
        eventTail = *static_cast<xd_parse_info **>(out);

    std::u16string detected;  // empty: no encoding name
    if (national) {
        idesc.class_code = DM_CLASS_NATIONAL;
        idesc.usage_code = DM_USAGE_NATIONAL;
    } else {
        for (const LeadingBytes &row : kDetection) {
            if (begins(doc, length, row.bytes, row.size)) {
                detected = row.encoding;
                break;
            }
        }
        if (detected.empty() && length > 0) {
            if (!(flags & CBLXML_OPT_EBCDIC_DATA)) {
                if (doc[0] == 0x3C)
                    detected = u"UTF-8";
                else if (begins(doc, length, kEbcdicXmlDecl, sizeof kEbcdicXmlDecl))
                    detected = u"IBM1140";
                else if (doc[0] == 0x4C)
                    refuse(300, doc, length);
                // Any other first byte: the encoding stays unknown and the
                // data map converts the document from the program's code page.
            } else if (doc[0] != 0x4C) {
                refuse(ebcdic_program_refusal(doc, length), doc, length);
            }
        } else if (detected.empty() && (flags & CBLXML_OPT_EBCDIC_DATA)) {
            refuse(201, doc, length);  // an empty document has no EBCDIC "<"
        }
    }
    if (sawErrors)
        return;

    XMLCh *work = nullptr;
    docTextLen = length;
    if (detected.empty()) {
        mapHandle = DMInit(national ? 0 : (1 | static_cast<int32_t>(flags & CBLXML_OPT_EBCDIC_DATA)),
                           0, 0, 0, 0);
        if (mapHandle == nullptr) {
            // The program's code page cannot be opened: nothing can be read,
            // so the document is refused rather than parsed as garbage.
            refuse(201, doc, length);
            return;
        }
        setIdescLen(static_cast<int32_t>(length));
        // Room for the longest UTF-8 form: 3 bytes per byte of a single-byte
        // code page, 3 per 2 bytes of UTF-16, plus the terminator.
        uint32_t converted = platform::utf8_room(length);
        std::string utf8(converted, '\0');
        if (platform::get_cbl_data(mapHandle, &idesc, doc, DM_FORM_UTF8, utf8.data(),
                                   &converted) != 0)
            converted = 0;
        if (converted > 0)
            --converted;  // the data map counts its terminator
        // A conversion that fails leaves an empty text: the parse then ends
        // at once with an exception rather than reading garbage.
        docTextLen = converted;
        if (converted != 0) {
            xercesc::XMLTransService::Codes res;
            transcoder = xercesc::XMLPlatformUtils::fgTransService->makeNewTranscoderFor(
                u"UTF-8", res, 4096);
        }
        work = toUtf16(reinterpret_cast<const unsigned char *>(utf8.data()), docTextLen, false);
        docText = work;
        return;
    }

    xercesc::XMLTransService::Codes res;
    transcoder = xercesc::XMLPlatformUtils::fgTransService->makeNewTranscoderFor(
        detected.c_str(), res, 4096);
    uint32_t workLen = length;
    work = toUtf16(doc, workLen, false);
    if (!starts_with(work, workLen, u"<?xml")) {
        docText = work;
        docTextLen = workLen;
        return;
    }
    bool replaced = false;
    try {
        replaced = examineDeclaration(work, workLen, detected, doc, length, flags);
    } catch (...) {
        std::free(work);  // not yet the handler's
        throw;
    }
    if (sawErrors) {
        std::free(work);
        return;
    }
    if (!replaced) {
        // The work text already is the whole document in the final encoding.
        docText = work;
        docTextLen = workLen;
        return;
    }
    std::free(work);
    docTextLen = length;
    docText = toUtf16(doc, docTextLen, false);
}

bool XmlDomHandlers::examineDeclaration(XMLCh *work, uint32_t workLen, std::u16string &detected,
                                        const unsigned char *doc, uint32_t length, uint32_t flags)
{
    size_t end = find_decl_end(work, workLen);
    // The scans below read no further than the end of the declaration.
    size_t declLen = end < workLen ? end + 2 : workLen;
    size_t at = find_word(work, declLen, u"encoding");
    if (at != std::u16string::npos) {
        // The scan for "=" tests the unit right after the word and does not
        // move on: "=" or the end stop it where it is, and so does white
        // space (which would otherwise never end the scan). A value that
        // cannot be read from there leaves the detected encoding in force.
        size_t eq = at + 8;
        size_t valuePos = eq + 1;
        declValuePos = static_cast<uint32_t>(valuePos + 1);
        std::u16string declared;
        size_t pos = valuePos;
        quote_copy(work, declLen, pos, declared);
        declValueLen = static_cast<uint32_t>(declared.size());
        for (char16_t &c : declared)
            c = ascii_upper(c);
        EncodingName name = normalise_encoding_name(declared);
        encodingKind = name.kind;
        if (!name.canonical.empty() && name.canonical != detected &&
            name.canonical != u"UTF-16" && name.canonical != u"UCS-4") {
            delete transcoder;
            transcoder = nullptr;  // the next one may not be made
            xercesc::XMLTransService::Codes res;
            transcoder = is_transcoder_name(name.canonical)
                             ? xercesc::XMLPlatformUtils::fgTransService->makeNewTranscoderFor(
                                   name.canonical.c_str(), res, 4096)
                             : nullptr;
            return true;
        }
        return false;
    }
    if (!(flags & CBLXML_OPT_EBCDIC_DATA)) {
        if (detected == u"IBM1140")
            refuse(300, doc, length);
        return false;
    }
    if (detected == u"IBM1140") {
        encodingKind = 4;
        declValuePos = declValueLen = static_cast<uint32_t>(end + 2);
    } else if (detected == u"UTF-8") {
        refuse(306, doc, length);
    } else if (detected.size() > 6 && detected.compare(0, 6, u"UTF-16") == 0) {
        refuse(310, doc, length);
    } else {
        refuse(201, doc, length);
    }
    return false;
}

} // namespace cblxml
