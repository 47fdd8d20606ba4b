// The document call-backs: the first events of every parse (taken from the
// handler's own copy of the XML declaration, which the parser does not
// report) and the last one.
#include <cstring>
#include <string>

#include <xercesc/framework/XMLErrorCodes.hpp>

#include "XmlDomHandlers/XmlDomHandlers.h"
#include "XmlDomHandlers/decl_scan.h"
#include "XmlDomHandlers/event_record.h"

namespace cblxml {
namespace {

enum class Pseudo { Version, Encoding, Standalone, Other };

Pseudo pseudo_attribute(const std::u16string &name)
{
    if (name == u"version")
        return Pseudo::Version;
    if (name == u"encoding")
        return Pseudo::Encoding;
    if (name == u"standalone")
        return Pseudo::Standalone;
    return Pseudo::Other;
}

} // namespace

void XmlDomHandlers::startDocument()
{
    if (treeMode == 1) {
        appendTreeDeclaration();
        return;
    }
    if (treeMode != 0)
        return;
    if (docTextLen == 0) {
        xd_parse_info *record = new_event("EXCEPTION");
        record->code = 201;
        record->text = copy_text(docText, 0, 2);
        appendEvent(record);
        // Ends the scan quietly: no further call-backs and no error counted.
        throw xercesc::XMLErrs::F_HighBounds;
    }
    appendEvent(new_event("START-OF-DOCUMENT"));
    appendDocumentDeclaration();
    findBareDoctype();
}

void XmlDomHandlers::appendDocumentDeclaration()
{
    if (!starts_with(docText, docTextLen, u"<?xml"))
        return;
    const size_t end = find_decl_end(docText, docTextLen);
    if (end == docTextLen)
        return;
    const XMLCh *decl = docText;
    const size_t declLen = end + 2;

    size_t pos = 0;
    while (pos < declLen && !is_decl_space(decl[pos]))
        ++pos;
    if (pos == declLen)
        return;
    bool versionSeen = false;
    bool encodingSeen = false;
    // The standalone marker is never set: a later "encoding" after
    // "standalone" is refused through the encoding marker that standalone
    // sets, and a second "standalone" is not refused.
    const bool standaloneSeen = false;
    for (;;) {
        while (pos < declLen && is_decl_space(decl[pos]))
            ++pos;
        if (pos + 1 >= declLen || (decl[pos] == u'?' && decl[pos + 1] == u'>'))
            break;
        size_t nameStart = pos;
        while (pos < declLen && decl[pos] != u'=' && !is_decl_space(decl[pos]))
            ++pos;
        std::u16string name(decl + nameStart, pos - nameStart);
        while (pos < declLen && is_decl_space(decl[pos]))
            ++pos;
        if (pos < declLen && decl[pos] == u'=')
            ++pos;

        const char *event = nullptr;
        switch (pseudo_attribute(name)) {
        case Pseudo::Version:
            if (versionSeen || encodingSeen || standaloneSeen)
                return;
            versionSeen = true;
            event = "VERSION-INFORMATION";
            break;
        case Pseudo::Encoding:
            if (!versionSeen || encodingSeen || standaloneSeen)
                return;
            encodingSeen = true;
            event = "ENCODING-DECLARATION";
            break;
        case Pseudo::Standalone:
            if (!versionSeen || standaloneSeen)
                return;
            encodingSeen = true;
            event = "STANDALONE-DECLARATION";
            break;
        case Pseudo::Other:
            // A name that is none of the three ends the declaration events
            // (scanning on would never move past it).
            return;
        }
        std::u16string value;
        if (!quote_copy(decl, declLen, pos, value))
            return;
        appendTextEvent(event, value.data(), value.size());
    }
}

void XmlDomHandlers::appendTreeDeclaration()
{
    if (treeDocument == nullptr || !starts_with(docText, docTextLen, u"<?xml "))
        return;
    size_t from = 5;
    while (from < docTextLen && is_decl_space(docText[from]))
        ++from;
    size_t end = find_decl_end(docText, docTextLen, from);
    appendTreePi(u"xml", 3, docText + from, end - from);
}

void XmlDomHandlers::endDocument()
{
    if (treeMode == 0)
        appendEvent(new_event("END-OF-DOCUMENT"));
}

} // namespace cblxml
