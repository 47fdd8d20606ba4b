// Tree mode: the call-backs build document-tree nodes. Strings are converted
// with national flag 0; a node that cannot be made (out of memory) ends the
// parse with std::bad_alloc, so that a tree with a node missing never counts
// as a success.
#include "XmlDomHandlers/tree_sink.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "XmlDomHandlers/decl_scan.h"
#include "XmlDomHandlers/text_units.h"
#include "xmldom/dom_append.h"
#include "xmldom/dom_document.h"

namespace cblxml {
TreeSink::TreeSink(XmlDomHandlers &handler, void *out, xd_dom_parse_err_t **errorRecordOut)
    : h(handler)
{
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
}

void TreeSink::setEncoding(char *name, bool utf8)
{
    if (treeDocument == nullptr) {
        std::free(name);
        return;
    }
    dom_set_strings_utf8(treeDocument, utf8);
    if (name == nullptr)
        return;
    for (char *c = name + std::strlen(name); c != name;) {
        --c;
        if (*c >= 'a' && *c <= 'z')
            *c = static_cast<char>(*c - 'a' + 'A');
    }
    std::free(treeDocument->value);
    treeDocument->value = name;
}

void TreeSink::startDocument()
{
    // The declaration becomes a processing-instruction node of the document.
    const XMLCh *text = h.getDocText();
    const size_t length = h.getDocTextLen();
    if (treeDocument == nullptr || !starts_with(text, length, u"<?xml "))
        return;
    size_t from = 5;
    while (from < length && is_decl_space(text[from]))
        ++from;
    size_t end = find_decl_end(text, length, from);
    appendPi(u"xml", 3, text + from, end - from);
}

const char *TreeSink::sharedName(const XMLCh *units)
{
    static const XMLCh kNone[] = {0};
    if (units == nullptr)
        units = kNone;  // no string: the empty one
    // The parser mostly passes a name at the same address each time: the
    // last string seen there is compared first, terminator included.
    RecentName &recent = recentNames[(reinterpret_cast<uintptr_t>(units) >> 1) % kRecentNames];
    if (recent.at == units && recent.key != nullptr) {
        size_t i = 0;
        while (recent.key[i] == units[i] && units[i] != 0)
            ++i;
        if (recent.key[i] == units[i])
            return recent.shared;
    }
    const size_t length = unit_length(units);
    probe.assign(units, length);
    const auto found = names.find(probe);
    if (found != names.end()) {
        recent = RecentName{units, found->first.c_str(), found->second};
        return found->second;
    }
    // Converted and copied once per distinct string; the copy is the
    // arena's, which lives as long as the tree.
    const std::string_view text = h.cobolView(units, length, 0);
    const char *shared = dom_shared_string(treeDocument, text.data());
    if (shared == nullptr)
        throw std::bad_alloc();  // the tree must not lack the name
    // Past this many distinct names the conversion is made every time, so
    // that a document of endless distinct names holds no more here.
    constexpr size_t kMaxNames = 4096;
    if (names.size() < kMaxNames) {
        const auto added = names.emplace(probe, shared).first;
        recent = RecentName{units, added->first.c_str(), shared};
    }
    return shared;
}

void TreeSink::startElement(const XMLCh *uri, const XMLCh *localname, const XMLCh *,
                            const xercesc::Attributes &attrs)
{
    if (treeDocument == nullptr)
        return;  // no tree is built: nothing to make
    xd_dom_node_t *element = nullptr;
    if (dom_element_node_named(treeDocument, &element, sharedName(localname), sharedName(uri)) != 0)
        throw std::bad_alloc();  // the tree must not lack the element
    try {
        for (XMLSize_t i = 0; i < attrs.getLength(); ++i) {
            const char *name = sharedName(attrs.getLocalName(i));
            const char *ns = sharedName(attrs.getURI(i));
            const XMLCh *value = attrs.getValue(i);
            const std::string_view text = h.cobolView(value, unit_length(value), 0);
            xd_dom_node_t *attr = nullptr;
            if (dom_attr_node_named(treeDocument, &attr, name, ns, text.data(),
                                    std::strlen(text.data())) != 0)
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

void TreeSink::appendToCurrent(xd_dom_node_t *node)
{
    mergeText = nullptr;  // a new node ends the text being merged
    if (treeCurrent == nullptr || !dom_append_child(treeCurrent, node))
        kvt_xe_xml_dom_free_node(node, 0);
}

void TreeSink::endElement(const XMLCh *)
{
    mergeText = nullptr;
    if (treeCurrent != nullptr && treeCurrent->parent != nullptr)
        treeCurrent = treeCurrent->parent;
}

void TreeSink::characters(const XMLCh *chars, size_t units)
{
    if (treeCurrent == nullptr)
        return;
    // Trailing white space becomes spaces, so that only blanks the tree
    // knows as blank (space, line feed) remain at the end.
    auto blank = [](XMLCh c) { return c == u' ' || c == u'\n' || c == u'\r' || c == u'\t'; };
    size_t trailing = units;
    while (trailing > 0 && blank(chars[trailing - 1]))
        --trailing;
    // White space alone between two nodes makes no node when the blanks stay
    // spaces: the text-node constructor would drop it.
    const xd_dom_node_t *lastChild = treeCurrent->last_child;
    if (trailing == 0 && h.keepsAscii() && (lastChild == nullptr || lastChild->kind != XD_DOM_TEXT))
        return;
    const XMLCh *from = chars;
    if (trailing < units) {
        blankFix.assign(chars, units);
        std::fill(blankFix.begin() + static_cast<std::ptrdiff_t>(trailing), blankFix.end(), u' ');
        from = blankFix.data();
    }
    // The text ends at its first zero byte, as a C string would.
    const std::string_view bytes = h.cobolView(from, units, 0);
    appendText(bytes.data(), std::strlen(bytes.data()));
}

void TreeSink::appendText(const char *bytes, size_t size)
{
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
            // A value in the document's arena moves to a heap string of its
            // own, which the node then owns.
            const bool inArena = dom_string_in_arena(lastChild, lastChild->value);
            char *grown = static_cast<char *>(inArena ? std::malloc(cap + 1)
                                                      : std::realloc(lastChild->value, cap + 1));
            if (grown == nullptr)
                throw std::bad_alloc();
            if (inArena)
                std::memcpy(grown, lastChild->value, mergeLen + 1);
            lastChild->value = grown;
            mergeCap = cap;
        }
        std::memcpy(lastChild->value + mergeLen, bytes, size + 1);
        mergeLen += size;
        return;
    }
    xd_dom_node_t *node = nullptr;
    // Blank text between elements makes no node: the constructor says 1.
    if (dom_text_node(treeDocument, &node, bytes, static_cast<uint32_t>(size), 0) == 0)
        appendToCurrent(node);
    else if (!dom_text_is_blank(bytes, static_cast<uint32_t>(size)))
        throw std::bad_alloc();  // the tree must not lack the text
}

void TreeSink::processingInstruction(const XMLCh *target, const XMLCh *data)
{
    appendPi(target, unit_length(target), data, unit_length(data));
}

void TreeSink::appendPi(const XMLCh *target, size_t targetLen, const XMLCh *data, size_t dataLen)
{
    char *targetText = h.cobolText(target, targetLen, 0);
    char *dataText = nullptr;
    try {
        dataText = h.cobolText(data, dataLen, 0);
    } catch (...) {
        std::free(targetText);
        throw;
    }
    xd_dom_node_t *node = nullptr;
    if (kvt_xe_xml_dom_pi_node(treeDocument, &node, targetText, dataText) != 0) {
        std::free(targetText);
        std::free(dataText);
        throw std::bad_alloc();  // the tree must not lack the instruction
    }
    appendToCurrent(node);
}

void TreeSink::recordError(const xercesc::SAXParseException &exc, bool readDomain)
{
    h.markErrors();
    if (errorRecord == nullptr)
        return;
    const XMLCh *message = exc.getMessage();
    const size_t length = message != nullptr ? xercesc::XMLString::stringLen(message) : 0;
    // Converted before the record changes, so that a failed allocation leaves
    // the previous error whole.
    char *text = h.cobolText(message, length, 0);

    const ParserError *parserError = h.getErrorSource();
    errorRecord->column = static_cast<uint32_t>(exc.getColumnNumber());
    errorRecord->line = static_cast<uint32_t>(exc.getLineNumber());
    errorRecord->errorCode = parserError != nullptr ? parserError->code : 0;
    if (readDomain && parserError != nullptr &&
        xercesc::XMLString::equals(parserError->domain, xercesc::XMLUni::fgXMLErrDomain))
        errorRecord->isXmlError = 1;
    std::free(errorRecord->message);
    errorRecord->message = text;
}

void TreeSink::warning(const xercesc::SAXParseException &exc) { recordError(exc, false); }

void TreeSink::error(const xercesc::SAXParseException &exc) { recordError(exc, false); }

void TreeSink::fatalError(const xercesc::SAXParseException &exc) { recordError(exc, true); }

}  // namespace cblxml
