// References the parser skips. An entity that would be declared in the
// external DTD subset (which is never read) is unknown to the parser, and it
// drops a reference to it without any call-back (skippedEntity is not called
// either, in content or in attribute values). Such a reference reaches
// the program as "UNKNOWN-REFERENCE-IN-CONTENT" (or "-IN-ATTRIBUTE", see
// element_events.cpp) with the entity's name and code 0, and the text around
// it is delivered whole. It is found in the document text: right before the
// text of a character call-back, or right before the markup that follows
// the text.
#include <string_view>

#include "XmlDomHandlers/decl_scan.h"
#include "XmlDomHandlers/event_sink.h"
#include "XmlDomHandlers/text_units.h"

namespace cblxml {
namespace {

// The longest name looked at: a longer run of name characters is not taken
// for a reference (the scans stay short whatever the document holds).
constexpr int64_t kMaxReferenceName = 1024;

bool is_predefined(std::u16string_view name)
{
    return name == u"lt" || name == u"gt" || name == u"amp" || name == u"apos" || name == u"quot";
}

// The offset of the "&" of a reference "&name;" whose ";" is text[end - 1],
// or -1 when the text there is not one.
int64_t reference_before(const XMLCh *text, int64_t end)
{
    if (end < 3 || text[end - 1] != u';')
        return -1;
    for (int64_t i = end - 2; i >= 0 && end - i <= kMaxReferenceName; --i) {
        const XMLCh c = text[i];
        if (c == u'&')
            return i + 2 < end ? i : -1;
        if (is_decl_space(c) || c == u'<' || c == u'>' || c == u';' || c == u'"' || c == u'\'' ||
            c == u'%' || c == 0)
            return -1;
    }
    return -1;
}

}  // namespace

bool EventSink::isSkipped(std::u16string_view name) const
{
    return !name.empty() && name[0] != u'#' && !is_predefined(name) && !h.isDeclaredEntity(name);
}

void EventSink::appendSkippedBefore(int64_t end)
{
    const XMLCh *text = h.getDocText();
    if (end > static_cast<int64_t>(h.getDocTextLen()))
        return;
    // Each reference is delivered once: the runs move forward through the
    // text (an empty element's end tag stands where its start tag does).
    if (end <= skippedUpTo)
        return;
    int64_t first = end;
    for (int64_t amp = reference_before(text, first); amp >= skippedUpTo;
         amp = reference_before(text, first)) {
        if (!isSkipped(std::u16string_view(text + amp + 1, static_cast<size_t>(first - amp - 2))))
            break;
        first = amp;
    }
    skippedUpTo = end;
    // Forward through the run: every reference in it is a skipped one.
    while (first < end) {
        int64_t semicolon = first + 1;
        while (text[semicolon] != u';')
            ++semicolon;
        appendTextEvent("UNKNOWN-REFERENCE-IN-CONTENT", text + first + 1,
                        static_cast<size_t>(semicolon - first - 1));
        first = semicolon + 1;
    }
}

void EventSink::appendSkippedBeforeMarkup(const char16_t *opener)
{
    const xercesc::Locator *locator = h.getLocator();
    // No reference stands before the first "&". Leaving skippedUpTo behind
    // changes nothing: no "&" lies between it and this markup either.
    if (depth <= 0 || locator == nullptr || h.ampersandFree())
        return;
    const auto length = static_cast<int64_t>(h.getDocTextLen());
    const int64_t firstAmp = h.firstAmpersand();
    int64_t at = h.locatorOffset(locator->getLineNumber(), locator->getColumnNumber());
    if (at > length)
        at = length;
    if (at <= firstAmp)
        return;
    const XMLCh *text = h.getDocText();
    // A tag is the nearest "<"; a comment, a processing instruction or a
    // CDATA section may hold "<" itself and is found by its opener.
    const std::u16string_view start(opener);
    const bool tag = start == u"<" || start == u"</";
    for (at = find_last_either(text, 0, at, u'<', u'<'); at >= 0;
         at = find_last_either(text, 0, at, u'<', u'<')) {
        const bool opens = at + static_cast<int64_t>(start.size()) <= length &&
                           std::u16string_view(text + at, start.size()) == start;
        if (opens)
            appendSkippedBefore(at);
        if (opens || tag)
            return;
    }
}

}  // namespace cblxml
