// Tree-mode construction: a document node to build on, the caller's error
// record cleared, and the document's encoding read from its declaration.
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

#include <xercesc/util/PlatformUtils.hpp>

#include "XmlDomHandlers/XmlDomHandlers.h"
#include "XmlDomHandlers/decl_scan.h"
#include "XmlDomHandlers/encoding_names.h"
#include "platform/platform.h"

namespace cblxml {
namespace {

bool utf16_start(const unsigned char *doc, uint32_t length)
{
    if (length < 2)
        return false;
    return (doc[0] == 0x00 && doc[1] == 0x3C) || (doc[0] == 0x3C && doc[1] == 0x00) ||
           (doc[0] == 0xFE && doc[1] == 0xFF) || (doc[0] == 0xFF && doc[1] == 0xFE);
}

// The declaration text ("<?xml" up to and including "?>") of a byte document,
// widened by the platform's multibyte conversion; empty when there is none.
std::u16string byte_declaration(const unsigned char *doc, uint32_t length)
{
    uint32_t from = (length >= 3 && std::memcmp(doc, "\xEF\xBB\xBF", 3) == 0) ? 3 : 0;
    for (uint32_t i = from; i + 1 < length; ++i) {
        if (doc[i] == '?' && doc[i + 1] == '>')
            return platform::utf8_to_utf16(reinterpret_cast<const char *>(doc + from), i + 2 - from);
    }
    return {};
}

// The declaration of a UTF-16 document in machine order; empty when none.
std::u16string unit_declaration(const unsigned char *doc, uint32_t length)
{
    std::u16string units(length / 2, u'\0');
    std::memcpy(units.data(), doc, units.size() * 2);
    if (!starts_with(units.data(), units.size(), u"<?xml"))
        return {};
    size_t end = find_decl_end(units.data(), units.size());
    if (end == units.size())
        return {};
    units.resize(end + 2);
    return units;
}

} // namespace

void XmlDomHandlers::constructTreeMode(const unsigned char *doc, uint32_t length, void *out,
                                       xd_dom_parse_err_t **errorRecordOut)
{
    treeMode = 1;
    if (out != nullptr) {
        auto **tree = static_cast<xd_dom_node_t **>(out);
        if (kvt_xe_xml_dom_doc_node(&treeDocument) != 0)
            throw std::bad_alloc();  // no tree to build on
        *tree = treeDocument;
        treeCurrent = treeDocument;
    }
    if (errorRecordOut != nullptr && *errorRecordOut != nullptr) {
        errorRecord = *errorRecordOut;
        std::memset(errorRecord, 0, sizeof *errorRecord);
    }

    const bool utf16 = utf16_start(doc, length);
    std::u16string declaration;
    std::u16string encoding;
    if (utf16) {
        declaration = unit_declaration(doc, length);
    } else if ((length >= 5 && std::memcmp(doc, "<?xml", 5) == 0) ||
               (length >= 3 && std::memcmp(doc, "\xEF\xBB\xBF", 3) == 0)) {
        encoding = u"UTF-8";
        declaration = byte_declaration(doc, length);
    }
    size_t at = find_word(declaration.data(), declaration.size(), u"encoding");
    if (at != std::u16string::npos) {
        size_t pos = at + 8;
        while (pos < declaration.size() && declaration[pos] != u'=')
            ++pos;
        ++pos;
        // A value that cannot be read leaves what was copied of it.
        encoding.clear();
        quote_copy(declaration.data(), declaration.size(), pos, encoding);
    }
    if (!encoding.empty()) {
        xercesc::XMLTransService::Codes res;
        transcoder = is_transcoder_name(encoding)
                         ? xercesc::XMLPlatformUtils::fgTransService->makeNewTranscoderFor(
                               encoding.c_str(), res, 4096)
                         : nullptr;
        if (treeDocument != nullptr) {
            char *name = cobolText(encoding.data(), encoding.size(), 0);
            for (char *c = name + std::strlen(name); c != name;) {
                --c;
                if (*c >= 'a' && *c <= 'z')
                    *c = static_cast<char>(*c - 'a' + 'A');
            }
            treeDocument->value = name;
        }
    }
    docTextLen = length;
    docText = toUtf16(doc, docTextLen, utf16);
}

} // namespace cblxml
