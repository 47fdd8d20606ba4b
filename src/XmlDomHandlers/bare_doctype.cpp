// Where a document type declaration ends, found in the document text.
//
// A declaration with neither an external identifier nor an internal subset
// ("<!DOCTYPE a>") reaches no parser call-back at all. The handler finds it
// in the prolog itself, so that the program still sees its
// DOCUMENT-TYPE-DECLARATION event, in document order.
//
// A declaration that names an external subset is never ended by the parser
// when the subset is not read (endDTD is not called): it is closed when the
// parser reports the first construct behind its closing ">". Either way the
// event's text is the whole declaration, internal subset included.
#include <cstdlib>
#include <string>

#include "XmlDomHandlers/decl_scan.h"
#include "XmlDomHandlers/event_sink.h"
#include "XmlParseErr/event_record.h"

namespace cblxml {
namespace {

bool at(const XMLCh *text, size_t length, size_t pos, const char16_t *word)
{
    size_t n = std::char_traits<char16_t>::length(word);
    return pos + n <= length && std::char_traits<char16_t>::compare(text + pos, word, n) == 0;
}

size_t skip_past(const XMLCh *text, size_t length, size_t pos, const char16_t *end)
{
    size_t n = std::char_traits<char16_t>::length(end);
    for (; pos + n <= length; ++pos) {
        if (std::char_traits<char16_t>::compare(text + pos, end, n) == 0)
            return pos + n;
    }
    return length;
}

// The offset of the ">" that closes a document type declaration, scanning
// from `from` (where the parser reported it: its "[" or its ">"), or -1 when
// the text ends first.
int64_t doctype_end(const XMLCh *text, size_t length, size_t from)
{
    bool subset = false;
    for (size_t pos = from; pos < length; ++pos) {
        const XMLCh c = text[pos];
        if (c == u'"' || c == u'\'') {
            // A literal may hold "]" and ">".
            while (++pos < length && text[pos] != c) {
            }
        } else if (at(text, length, pos, u"<!--")) {
            pos = skip_past(text, length, pos + 4, u"-->") - 1;
        } else if (at(text, length, pos, u"<?")) {
            pos = skip_past(text, length, pos + 2, u"?>") - 1;
        } else if (c == u'[' || c == u']') {
            subset = c == u'[';
        } else if (c == u'>' && !subset) {
            return static_cast<int64_t>(pos);
        }
    }
    return -1;
}

// Walks the prolog: white space, the XML declaration, comments and PIs, up
// to the first other markup; returns where it stops. Linear in the prolog's
// length.
size_t prolog_end(const XMLCh *docText, size_t length)
{
    size_t pos = docText != nullptr && length > 0 && docText[0] == 0xFEFF ? 1 : 0;
    for (;;) {
        while (pos < length && is_decl_space(docText[pos]))
            ++pos;
        if (at(docText, length, pos, u"<!--"))
            pos = skip_past(docText, length, pos + 4, u"-->");
        else if (at(docText, length, pos, u"<?"))
            pos = skip_past(docText, length, pos + 2, u"?>");
        else
            break;
    }
    return pos;
}

}  // namespace

void EventSink::findBareDoctype()
{
    // The walk reads longer and longer prefixes of the text: its outcome
    // stands once it stops nine units or more before the prefix's end (room
    // for "<!DOCTYPE"), or the prefix is the whole text.
    const XMLCh *docText = h.getDocTextStart();
    size_t pos = 0;
    for (size_t want = 4096;; want *= 4) {
        const size_t have = h.prepareDocText(want);
        pos = prolog_end(docText, have);
        if (pos + 9 <= have || h.docTextComplete()) {
            if (!at(docText, have, pos, u"<!DOCTYPE"))
                return;
            break;
        }
    }
    docText = h.getDocText();
    const size_t length = h.getDocTextLen();
    size_t end = pos + 9;
    while (end < length && docText[end] != u'>' && docText[end] != u'[' && docText[end] != u'"' &&
           docText[end] != u'\'')
        ++end;
    // A subset or an identifier brings the parser's own call-back.
    if (end >= length || docText[end] != u'>')
        return;
    const std::u16string words(docText + pos + 9, end - pos - 9);
    if (words.find(u"SYSTEM") != std::u16string::npos ||
        words.find(u"PUBLIC") != std::u16string::npos)
        return;
    bareDoctypeStart = static_cast<int64_t>(pos);
    bareDoctypeEnd = static_cast<int64_t>(end);
}

void EventSink::emitBareDoctypeBefore(int64_t position)
{
    if (bareDoctypeStart < 0 || position <= bareDoctypeEnd)
        return;
    xd_parse_info *record = new_event("DOCUMENT-TYPE-DECLARATION");
    appendEvent(record);
    doctypeSeen = true;
    const int64_t from = bareDoctypeStart;
    bareDoctypeStart = -1;
    appendSourceText(record, from, bareDoctypeEnd);
}

void EventSink::openDtd(int64_t position)
{
    dtdPosition = position;
    dtdEnd = doctype_end(h.getDocText(), h.getDocTextLen(), static_cast<size_t>(position));
    inDtd = true;
}

void EventSink::endDoctypeBefore(int64_t position)
{
    if (bareDoctypeStart >= 0)
        emitBareDoctypeBefore(position);
    // Inside an entity (the external subset when it is read) the position is
    // not one of the document text: only the parser's endDTD closes then.
    if (inDtd && entityDepth == 0 && dtdEnd >= 0 && position > dtdEnd)
        closeDtd(dtdEnd);
}

void EventSink::closeDtd(int64_t end)
{
    inDtd = false;
    // The record may be handed to the program once another follows it: its
    // text is completed only while it is the tail (a record made in between,
    // an error inside the subset, leaves the text as it was).
    if (!event_is(eventTail, "DOCUMENT-TYPE-DECLARATION") || dtdPosition < 0 || end <= dtdPosition)
        return;
    int64_t open = dtdPosition;
    while (open > 0 && h.getDocText()[open] != u'<')
        --open;
    std::free(eventTail->text);
    eventTail->text = nullptr;
    appendSourceText(eventTail, open, end);
}

}  // namespace cblxml
