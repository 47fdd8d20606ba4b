// Element and attribute events. The attribute values are
// re-read from the start tag's own text, so that entity and character
// references inside them reach the program as events of their own.
#include <cstring>
#include <string>
#include <string_view>

#include "XmlDomHandlers/decl_scan.h"
#include "XmlDomHandlers/event_sink.h"
#include "XmlDomHandlers/text_units.h"
#include "XmlParseErr/event_record.h"

namespace cblxml {
namespace {

// The one character that a predefined entity reference stands for, decided
// by its first letter (and the second after "a") and nothing more; 0 for an
// "a" reference that is neither amp nor apos.
XMLCh predefined_character(std::u16string_view name)
{
    switch (name.empty() ? u'\0' : name[0]) {
    case u'l':
        return u'<';
    case u'g':
        return u'>';
    case u'q':
        return u'"';
    case u'a':
        if (name.size() > 1 && name[1] == u'm')
            return u'&';
        if (name.size() > 1 && name[1] == u'p')
            return u'\'';
        return 0;
    default:
        return 0;
    }
}

// The value written between quotes at tag[pos] (after white space), as
// quote_copy reads it, without copying it: false when no quoted value
// stands there or it is not closed before the end or a zero unit. pos ends
// after the closing quote.
bool quoted_value(std::u16string_view tag, size_t &pos, std::u16string_view &value)
{
    while (pos < tag.size() && tag[pos] != 0 && is_decl_space(tag[pos]))
        ++pos;
    if (pos >= tag.size() || (tag[pos] != u'"' && tag[pos] != u'\''))
        return false;
    const char16_t quote = tag[pos++];
    const size_t from = pos;
    while (pos < tag.size() && tag[pos] != 0) {
        if (tag[pos] == quote) {
            value = tag.substr(from, pos - from);
            ++pos;
            return true;
        }
        ++pos;
    }
    return false;
}

}  // namespace

void EventSink::startElement(const XMLCh *, const XMLCh *, const XMLCh *qname,
                             const xercesc::Attributes &attrs)
{
    const xercesc::Locator *locator = h.getLocator();
    const int32_t nat = h.isNational() ? 1 : 0;
    // Only a declaration still open or unreported reads the position.
    if (pendingDoctype())
        endDoctypeBefore(static_cast<int64_t>(h.getDocTextLen()));
    appendSkippedBeforeMarkup(u"<");
    ++depth;
    appendTextEvent("START-OF-ELEMENT", qname, unit_length(qname));
    if (attrs.getLength() < 1 || locator == nullptr)
        return;
    const uint32_t docTextLen = h.getDocTextLen();
    if (docTextLen == 0)
        return;

    // The locator stands just behind the ">" of the start tag. Backward scans
    // stop at the start of the text.
    int64_t tagEnd = h.locatorOffset(locator->getLineNumber(), locator->getColumnNumber()) - 1;
    if (tagEnd >= static_cast<int64_t>(docTextLen))
        tagEnd = static_cast<int64_t>(docTextLen) - 1;
    if (tagEnd < 0)
        return;
    const XMLCh *docText = h.getDocText();
    int64_t tagStart = find_last_either(docText, 0, tagEnd + 1, u'<', u'<');
    if (tagStart < 0)
        tagStart = 0;
    const std::u16string_view tag(docText + tagStart, static_cast<size_t>(tagEnd - tagStart + 1));
    size_t search = 0;

    for (XMLSize_t i = 0; i < attrs.getLength(); ++i) {
        const XMLCh *attrName = attrs.getQName(i);
        appendTextEvent("ATTRIBUTE-NAME", attrName, unit_length(attrName));

        // The name's first occurrence from the search point, then its "=".
        size_t at = tag.find(attrName, search);
        if (at == std::u16string::npos)
            return;  // not written in the tag (a defaulted attribute)
        size_t eq = tag.find(u'=', at);
        search = eq == std::u16string::npos ? tag.size() : eq + 1;
        std::u16string_view raw;
        if (!quoted_value(tag, search, raw))
            return;

        const XMLCh *value = attrs.getValue(i);
        const size_t valueLen = unit_length(value);
        size_t cursor = 0;
        if (valueLen == 0)
            appendTextEvent("ATTRIBUTE-CHARACTERS", u"", 0);

        size_t rest = 0;
        while (rest < raw.size()) {
            size_t amp = raw.find(u'&', rest);
            if (amp == std::u16string_view::npos)
                break;
            if (amp > rest) {
                appendTextEvent("ATTRIBUTE-CHARACTERS", raw.data() + rest, amp - rest);
                cursor += amp - rest;
            }
            size_t semi = raw.find(u';', amp + 1);
            if (semi == std::u16string_view::npos)
                return;
            const std::u16string_view ref = raw.substr(amp + 1, semi - amp - 1);
            rest = semi + 1;
            if (cursor > valueLen)
                cursor = valueLen;

            if (isSkipped(ref)) {
                // The parser's value holds nothing for it.
                appendTextEvent("UNKNOWN-REFERENCE-IN-ATTRIBUTE", ref.data(), ref.size());
            } else if (!ref.empty() && ref[0] == u'#') {
                size_t units = (cursor + 1 < valueLen && is_high_surrogate(value[cursor])) ? 2 : 1;
                if (cursor + units > valueLen)
                    units = valueLen - cursor;
                xd_parse_info *record = newRecord("ATTRIBUTE-NATIONAL-CHARACTER");
                appendEvent(record);
                record->text = h.unitText(value + cursor, units);
                cursor += units;
            } else if (!ref.empty() &&
                       (ref[0] == u'l' || ref[0] == u'g' || ref[0] == u'q' || ref[0] == u'a')) {
                xd_parse_info *record = newRecord("ATTRIBUTE-CHARACTER");
                appendEvent(record);
                XMLCh c = predefined_character(ref);
                if (c != 0) {
                    record->text = h.cobolText(&c, 1, nat);
                    ++cursor;
                }
            } else {
                // A general entity other than the five predefined ones: the
                // rest of the parser's expanded value, and no further
                // attributes of this element.
                appendTextEvent("ATTRIBUTE-CHARACTERS", value + cursor, valueLen - cursor);
                return;
            }
        }
        if (rest < raw.size())
            appendTextEvent("ATTRIBUTE-CHARACTERS", raw.data() + rest, raw.size() - rest);
    }
}

void EventSink::endElement(const XMLCh *qname)
{
    appendSkippedBeforeMarkup(u"</");
    --depth;
    appendTextEvent("END-OF-ELEMENT", qname, unit_length(qname));
}

}  // namespace cblxml
