// Character data in event mode. The parser delivers the replacement of a
// reference as the start of a call of its own; the source text just before
// the locator tells whether a call began at a reference, and which one.
#include <string>
#include <string_view>

#include "XmlDomHandlers/event_sink.h"
#include "XmlDomHandlers/text_units.h"
#include "XmlParseErr/event_record.h"

namespace cblxml {

void EventSink::characters(const XMLCh *chars, size_t units)
{
    const int32_t nat = h.isNational() ? 1 : 0;
    const xercesc::Locator *locator = h.getLocator();
    // Without an "&" in the document text no call begins at a reference (the
    // walk below would end at a ">" or at the start of the text).
    if (event_is(eventTail, "START-OF-CDATA-SECTION") || locator == nullptr || h.ampersandFree()) {
        appendTextEvent("CONTENT-CHARACTERS", chars, units);
        return;
    }
    const uint32_t docTextLen = h.getDocTextLen();
    const int64_t firstAmp = h.firstAmpersand();
    // The locator stands at the "<" that ends the text, or one past the "&"
    // of the reference that ends it.
    int64_t p = h.locatorOffset(locator->getLineNumber(), locator->getColumnNumber()) - 1;
    const XMLCh *docText = h.getDocText();
    const auto last = static_cast<int64_t>(docTextLen) - 1;
    if (p > last)
        p = last;
    if (p + 1 > last || docText[p + 1] != u'<')
        --p;
    if (p < firstAmp) {
        appendTextEvent("CONTENT-CHARACTERS", chars, units);
        return;
    }
    // Walk back to the reference or the tag that precedes the text; the scan
    // stops at the start of the text, which counts as a tag.
    const int64_t q = find_last_either(docText, 0, p + 1, u'&', u'>');
    if (q < 0 || docText[q] == u'>') {
        appendTextEvent("CONTENT-CHARACTERS", chars, units);
        return;
    }
    // A reference the parser skipped: it brought no text, so the call's
    // text is all source text.
    int64_t semicolon = q + 1;
    while (semicolon <= p && docText[semicolon] != u';')
        ++semicolon;
    if (semicolon <= p &&
        isSkipped(std::u16string_view(docText + q + 1, static_cast<size_t>(semicolon - q - 1)))) {
        appendSkippedBefore(semicolon + 1);
        appendTextEvent("CONTENT-CHARACTERS", chars, units);
        return;
    }
    const XMLCh second = q + 1 <= p ? docText[q + 1] : 0;
    size_t restFrom = 0;
    XMLCh single = 0;
    switch (second) {
    case u'l':
        single = u'<';
        break;
    case u'g':
        single = u'>';
        break;
    case u'q':
        single = u'"';
        break;
    case u'a': {
        const XMLCh third = q + 2 <= p ? docText[q + 2] : 0;
        single = third == u'm' ? u'&' : third == u'p' ? u'\'' : 0;
        break;
    }
    default:
        break;
    }
    if (second == u'#') {
        size_t take = (units > 1 && is_high_surrogate(chars[0])) ? 2 : 1;
        if (take > units)
            take = units;
        xd_parse_info *record = newRecord("CONTENT-NATIONAL-CHARACTER");
        appendEvent(record);
        record->text = h.unitText(chars, take);
        restFrom = take;
    } else if (second == u'l' || second == u'g' || second == u'q' || second == u'a') {
        // An "a" reference other than amp and apos keeps no text; the rest of
        // the call still begins at its second character.
        xd_parse_info *record = newRecord("CONTENT-CHARACTER");
        appendEvent(record);
        if (single != 0)
            record->text = h.cobolText(&single, 1, nat);
        restFrom = units > 0 ? 1 : 0;
    }
    // Any other reference (a declared general entity): the whole text.
    if (restFrom < units)
        appendTextEvent("CONTENT-CHARACTERS", chars + restFrom, units - restFrom);
}

}  // namespace cblxml
