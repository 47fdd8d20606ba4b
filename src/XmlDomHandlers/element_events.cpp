// Element and attribute call-backs. In event mode the attribute values are
// re-read from the start tag's own text, so that entity and character
// references inside them reach the program as events of their own.
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <string_view>

#include "XmlDomHandlers/XmlDomHandlers.h"
#include "XmlDomHandlers/decl_scan.h"
#include "XmlDomHandlers/event_record.h"
#include "XmlDomHandlers/text_units.h"
#include "xmldom/dom_append.h"

namespace cblxml {
namespace {

// A converted text until a node has copied it.
struct FreeText {
    void operator()(char *text) const { std::free(text); }
};
using CText = std::unique_ptr<char, FreeText>;

// The one character that a predefined entity reference stands for, decided
// by its first letter (and the second after "a") and nothing more; 0 for an
// "a" reference that is neither amp nor apos.
XMLCh predefined_character(const std::u16string &name)
{
    switch (name.empty() ? u'\0' : name[0]) {
    case u'l': return u'<';
    case u'g': return u'>';
    case u'q': return u'"';
    case u'a':
        if (name.size() > 1 && name[1] == u'm')
            return u'&';
        if (name.size() > 1 && name[1] == u'p')
            return u'\'';
        return 0;
    default: return 0;
    }
}

} // namespace

void XmlDomHandlers::startElement(const XMLCh *const uri, const XMLCh *const localname,
                                  const XMLCh *const qname, const xercesc::Attributes &attrs)
{
    if (treeMode == 0)
        startElementEvents(qname, attrs);
    else if (treeMode == 1)
        startElementTree(uri, localname, attrs);
}

void XmlDomHandlers::startElementEvents(const XMLCh *qname, const xercesc::Attributes &attrs)
{
    const int32_t nat = national ? 1 : 0;
    if (bareDoctypeStart >= 0)
        emitBareDoctypeBefore(static_cast<int64_t>(docTextLen));
    appendTextEvent("START-OF-ELEMENT", qname, unit_length(qname));
    if (attrs.getLength() < 1 || locator == nullptr || docTextLen == 0)
        return;

    // The locator stands just behind the ">" of the start tag. Backward scans
    // stop at the start of the text.
    int64_t tagEnd = locatorOffset(locator->getLineNumber(), locator->getColumnNumber()) - 1;
    if (tagEnd >= static_cast<int64_t>(docTextLen))
        tagEnd = static_cast<int64_t>(docTextLen) - 1;
    if (tagEnd < 0)
        return;
    int64_t tagStart = tagEnd;
    while (tagStart > 0 && docText[tagStart] != u'<')
        --tagStart;
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
        std::u16string &raw = attrRaw;
        raw.clear();
        if (!quote_copy(tag.data(), tag.size(), search, raw))
            return;

        const XMLCh *value = attrs.getValue(i);
        const size_t valueLen = unit_length(value);
        size_t cursor = 0;
        if (valueLen == 0)
            appendTextEvent("ATTRIBUTE-CHARACTERS", u"", 0);

        size_t rest = 0;
        while (rest < raw.size()) {
            size_t amp = raw.find(u'&', rest);
            if (amp == std::u16string::npos)
                break;
            if (amp > rest) {
                appendTextEvent("ATTRIBUTE-CHARACTERS", raw.data() + rest, amp - rest);
                cursor += amp - rest;
            }
            size_t semi = raw.find(u';', amp + 1);
            if (semi == std::u16string::npos)
                return;
            const std::u16string ref = raw.substr(amp + 1, semi - amp - 1);
            rest = semi + 1;
            if (cursor > valueLen)
                cursor = valueLen;

            if (!ref.empty() && ref[0] == u'#') {
                size_t units = (cursor + 1 < valueLen && is_high_surrogate(value[cursor])) ? 2 : 1;
                if (cursor + units > valueLen)
                    units = valueLen - cursor;
                xd_parse_info *record = newRecord("ATTRIBUTE-NATIONAL-CHARACTER");
                appendEvent(record);
                record->text = copy_text(value + cursor, units * 2, 2);
                cursor += units;
            } else if (!ref.empty() && (ref[0] == u'l' || ref[0] == u'g' || ref[0] == u'q' ||
                                        ref[0] == u'a')) {
                xd_parse_info *record = newRecord("ATTRIBUTE-CHARACTER");
                appendEvent(record);
                XMLCh c = predefined_character(ref);
                if (c != 0) {
                    record->text = cobolText(&c, 1, nat);
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

void XmlDomHandlers::startElementTree(const XMLCh *uri, const XMLCh *localname,
                                      const xercesc::Attributes &attrs)
{
    char *name = cobolText(localname, unit_length(localname), 0);
    char *ns = nullptr;
    xd_dom_node_t *element = nullptr;
    try {
        ns = cobolText(uri, unit_length(uri), 0);
        if (kvt_xe_xml_dom_element_node(treeDocument, &element, name, ns) != 0) {
            element = nullptr;
            if (treeDocument != nullptr)
                throw std::bad_alloc();  // the tree must not lack the element
        }
    } catch (...) {
        std::free(name);
        std::free(ns);
        throw;
    }
    std::free(name);
    std::free(ns);
    if (element == nullptr)
        return;
    try {
        for (XMLSize_t i = 0; i < attrs.getLength(); ++i) {
            const XMLCh *attrLocal = attrs.getLocalName(i);
            const XMLCh *attrUri = attrs.getURI(i);
            const XMLCh *attrValue = attrs.getValue(i);
            const CText aName(cobolText(attrLocal, unit_length(attrLocal), 0));
            const CText aUri(cobolText(attrUri, unit_length(attrUri), 0));
            const CText aValue(cobolText(attrValue, unit_length(attrValue), 0));
            xd_dom_node_t *attr = nullptr;
            if (kvt_xe_xml_dom_attr_node(treeDocument, &attr, aName.get(), aUri.get(),
                                         aValue.get()) != 0)
                throw std::bad_alloc();  // the tree must not lack the attribute
            if (!dom_append_child(element, attr))
                kvt_xe_xml_dom_free_node(attr, 0);
        }
    } catch (...) {
        kvt_xe_xml_dom_free_node(element, 0);
        throw;
    }
    appendToCurrent(element);
    treeCurrent = element;
}

void XmlDomHandlers::appendToCurrent(xd_dom_node_t *node)
{
    mergeText = nullptr;  // a new node ends the text being merged
    if (treeCurrent == nullptr || !dom_append_child(treeCurrent, node))
        kvt_xe_xml_dom_free_node(node, 0);
}

void XmlDomHandlers::endElement(const XMLCh *const, const XMLCh *const, const XMLCh *const qname)
{
    if (treeMode == 0) {
        appendTextEvent("END-OF-ELEMENT", qname, unit_length(qname));
    } else if (treeMode == 1) {
        mergeText = nullptr;
        if (treeCurrent != nullptr && treeCurrent->parent != nullptr)
            treeCurrent = treeCurrent->parent;
    }
}

} // namespace cblxml
