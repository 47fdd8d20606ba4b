// The document call-backs: the first events of every parse (taken from the
// handler's own copy of the XML declaration, which the parser does not
// report) and the last one. (In tree mode the declaration becomes a node:
// tree_sink.cpp.)
#include <cstring>
#include <string>

#include <xercesc/framework/XMLErrorCodes.hpp>

#include "XmlDomHandlers/decl_scan.h"
#include "XmlDomHandlers/event_sink.h"
#include "XmlParseErr/event_record.h"
#include "XmlParseErr/exception_codes.h"

namespace cblxml {
namespace {

enum class Pseudo {
    Version,
    Encoding,
    Standalone,
    Other
};

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

}  // namespace

void EventSink::startDocument()
{
    if (h.docTextEmpty()) {
        xd_parse_info *record = new_event("EXCEPTION");
        record->code = kGenericExceptionCode;
        record->text = copy_text(h.getDocText(), 0, 2);
        appendEvent(record);
        // Ends the scan quietly: no further call-backs and no error counted.
        throw xercesc::XMLErrs::F_HighBounds;
    }
    appendEvent(new_event("START-OF-DOCUMENT"));
    appendDocumentDeclaration();
    findBareDoctype();
}

void EventSink::appendDocumentDeclaration()
{
    // The first "?>" is looked for in longer and longer prefixes of the
    // text: the declaration is all that is read of it.
    const XMLCh *decl = h.getDocTextStart();
    if (!starts_with(decl, h.prepareDocText(5), u"<?xml"))
        return;
    size_t end = 0;
    for (size_t want = 256;; want *= 4) {
        const size_t have = h.prepareDocText(want);
        end = find_decl_end(decl, have);
        if (end < have)
            break;
        if (h.docTextComplete())
            return;  // no "?>"
    }
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

void EventSink::endDocument() { appendEvent(new_event("END-OF-DOCUMENT")); }

}  // namespace cblxml
