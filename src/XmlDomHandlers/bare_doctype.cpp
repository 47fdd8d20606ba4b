// A document type declaration with neither an external identifier nor an
// internal subset ("<!DOCTYPE a>") reaches no parser call-back at all. The
// handler finds it in the prolog itself, so that the program still sees its
// DOCUMENT-TYPE-DECLARATION event, in document order.
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

}  // namespace

void EventSink::findBareDoctype()
{
    const XMLCh *docText = h.getDocText();
    // Walk the prolog: white space, the XML declaration, comments and PIs,
    // up to the first other markup. Linear in the prolog's length.
    const size_t length = h.getDocTextLen();
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
    if (!at(docText, length, pos, u"<!DOCTYPE"))
        return;
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
    if (bareDoctypeStart < 0 || position <= bareDoctypeStart)
        return;
    xd_parse_info *record = new_event("DOCUMENT-TYPE-DECLARATION");
    appendEvent(record);
    doctypeSeen = true;
    const int64_t from = bareDoctypeStart;
    bareDoctypeStart = -1;
    appendSourceText(record, from, bareDoctypeEnd);
}

}  // namespace cblxml
