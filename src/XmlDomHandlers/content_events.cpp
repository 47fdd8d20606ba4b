// Character data. The parser delivers the replacement of a reference as the
// start of a call of its own; the source text just before the locator tells
// whether a call began at a reference, and which one.
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

#include "XmlDomHandlers/XmlDomHandlers.h"
#include "XmlDomHandlers/event_record.h"
#include "XmlDomHandlers/text_units.h"
#include "xmldom/dom_append.h"

namespace cblxml {

void XmlDomHandlers::characters(const XMLCh *const chars, const XMLSize_t length)
{
    if (chars == nullptr)
        return;
    // The text is taken up to its terminator, which the parser always writes
    // at `length`; the length bounds the read should it ever not.
    size_t units = 0;
    while (units < length && chars[units] != 0)
        ++units;
    // An empty call (an empty CDATA section) carries no text and no event.
    if (units == 0)
        return;
    if (treeMode == 0)
        charactersEvents(chars, units);
    else if (treeMode == 1)
        charactersTree(chars, units);
}

void XmlDomHandlers::charactersEvents(const XMLCh *chars, size_t units)
{
    const int32_t nat = national ? 1 : 0;
    if (event_is(eventTail, "START-OF-CDATA-SECTION") || locator == nullptr || docTextLen == 0) {
        appendTextEvent("CONTENT-CHARACTERS", chars, units);
        return;
    }
    // The locator stands at the "<" that ends the text, or one past the "&"
    // of the reference that ends it.
    int64_t p = locatorOffset(locator->getLineNumber(), locator->getColumnNumber()) - 1;
    const auto last = static_cast<int64_t>(docTextLen) - 1;
    if (p > last)
        p = last;
    if (p + 1 > last || docText[p + 1] != u'<')
        --p;
    // Walk back to the reference or the tag that precedes the text; the scan
    // stops at the start of the text, which counts as a tag.
    int64_t q = p;
    while (q >= 0 && docText[q] != u'&' && docText[q] != u'>')
        --q;
    if (q < 0 || docText[q] == u'>') {
        appendTextEvent("CONTENT-CHARACTERS", chars, units);
        return;
    }
    const XMLCh second = q + 1 <= p ? docText[q + 1] : 0;
    size_t restFrom = 0;
    XMLCh single = 0;
    switch (second) {
    case u'l': single = u'<'; break;
    case u'g': single = u'>'; break;
    case u'q': single = u'"'; break;
    case u'a': {
        const XMLCh third = q + 2 <= p ? docText[q + 2] : 0;
        single = third == u'm' ? u'&' : third == u'p' ? u'\'' : 0;
        break;
    }
    default: break;
    }
    if (second == u'#') {
        size_t take = (units > 1 && is_high_surrogate(chars[0])) ? 2 : 1;
        if (take > units)
            take = units;
        xd_parse_info *record = newRecord("CONTENT-NATIONAL-CHARACTER");
        appendEvent(record);
        record->text = copy_text(chars, take * 2, 2);
        restFrom = take;
    } else if (second == u'l' || second == u'g' || second == u'q' || second == u'a') {
        // An "a" reference other than amp and apos keeps no text; the rest of
        // the call still begins at its second character.
        xd_parse_info *record = newRecord("CONTENT-CHARACTER");
        appendEvent(record);
        if (single != 0)
            record->text = cobolText(&single, 1, nat);
        restFrom = units > 0 ? 1 : 0;
    }
    // Any other reference (a declared general entity): the whole text.
    if (restFrom < units)
        appendTextEvent("CONTENT-CHARACTERS", chars + restFrom, units - restFrom);
}

void XmlDomHandlers::charactersTree(const XMLCh *chars, size_t units)
{
    if (treeCurrent == nullptr)
        return;
    // Trailing white space becomes spaces, so that only blanks the tree
    // knows as blank (space, line feed) remain at the end.
    std::u16string text(chars, units);
    for (size_t i = text.size(); i > 0; --i) {
        XMLCh &c = text[i - 1];
        if (c != u' ' && c != u'\n' && c != u'\r' && c != u'\t')
            break;
        c = u' ';
    }
    char *bytes = cobolText(text.data(), text.size(), 0);
    const size_t size = std::strlen(bytes);
    xd_dom_node_t *lastChild = treeCurrent->last_child;
    if (lastChild != nullptr && lastChild->kind == XD_DOM_TEXT) {
        // Adjacent call-backs join one text node. Its value grows
        // geometrically while it is the node being merged.
        if (mergeText != lastChild) {
            mergeText = lastChild;
            mergeLen = lastChild->value != nullptr ? std::strlen(lastChild->value) : 0;
            mergeCap = mergeLen;
        }
        if (mergeLen + size > mergeCap) {
            size_t cap = mergeCap * 2 > mergeLen + size ? mergeCap * 2 : mergeLen + size;
            char *grown = static_cast<char *>(std::realloc(lastChild->value, cap + 1));
            if (grown == nullptr) {
                std::free(bytes);
                throw std::bad_alloc();
            }
            lastChild->value = grown;
            mergeCap = cap;
        }
        std::memcpy(lastChild->value + mergeLen, bytes, size + 1);
        mergeLen += size;
        std::free(bytes);
        return;
    }
    xd_dom_node_t *node = nullptr;
    // Blank text between elements makes no node: the constructor says 1.
    int rc = kvt_xe_xml_dom_text_node(treeDocument, &node, bytes, static_cast<uint32_t>(size), 0);
    const bool lost = rc != 0 && !dom_text_is_blank(bytes, static_cast<uint32_t>(size));
    std::free(bytes);
    if (lost)
        throw std::bad_alloc();  // the tree must not lack the text
    if (rc == 0)
        appendToCurrent(node);
}

} // namespace cblxml
