// Tree mode: the call-backs build document-tree nodes under a document node
// that the caller owns; errors go into the caller's error record.
#ifndef CBLXML_XMLDOMHANDLERS_TREE_SINK_H
#define CBLXML_XMLDOMHANDLERS_TREE_SINK_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>

#include "XmlDomHandlers/XmlDomHandlers.h"
#include "XmlDomHandlers/handler_sink.h"
#include "cblxml.h"

namespace cblxml {

class TreeSink final : public HandlerSink {
public:
    // out: xd_dom_node_t ** that receives the new document node (may be
    // null: no tree is built). errorRecord: the caller's error record
    // pointer (may be null), cleared here.
    TreeSink(XmlDomHandlers &handler, void *out, xd_dom_parse_err_t **errorRecord);

    // Records the document's declared encoding on the document node (`name`,
    // owned from here, upper-cased; null: none) and the form of the tree's
    // strings: `utf8` when they are UTF-8 whatever the declaration says.
    void setEncoding(char *name, bool utf8);

    void startDocument() override;
    void startElement(const XMLCh *uri, const XMLCh *localname, const XMLCh *qname,
                      const xercesc::Attributes &attrs) override;
    void endElement(const XMLCh *qname) override;
    void characters(const XMLCh *chars, size_t units) override;
    void processingInstruction(const XMLCh *target, const XMLCh *data) override;
    void warning(const xercesc::SAXParseException &exc) override;
    void error(const xercesc::SAXParseException &exc) override;
    void fatalError(const xercesc::SAXParseException &exc) override;

private:
    void appendToCurrent(xd_dom_node_t *node);
    void appendPi(const XMLCh *target, size_t targetLen, const XMLCh *data, size_t dataLen);
    void appendText(const char *bytes, size_t size);
    void recordError(const xercesc::SAXParseException &exc, bool readDomain);
    // The tree's copy of a converted element or attribute name or namespace
    // URI (zero-terminated `units`); throws std::bad_alloc when memory runs
    // out.
    const char *sharedName(const XMLCh *units);

    XmlDomHandlers &h;
    xd_dom_node_t *treeDocument = nullptr;  // the document node (also the owner)
    xd_dom_node_t *treeCurrent = nullptr;   // where new nodes are appended
    xd_dom_parse_err_t *errorRecord = nullptr;
    // The text node whose value is being extended, its length and the room
    // allocated behind its value.
    xd_dom_node_t *mergeText = nullptr;
    size_t mergeLen = 0;
    size_t mergeCap = 0;
    // Names and namespace URIs converted so far, by their UTF-16 form.
    std::unordered_map<std::u16string, const char *> names;
    // The string last found at an address, by the address's low bits: its
    // key in `names` (which never moves) and the tree's copy.
    struct RecentName {
        const XMLCh *at = nullptr;
        const XMLCh *key = nullptr;
        const char *shared = nullptr;
    };
    static constexpr size_t kRecentNames = 64;
    RecentName recentNames[kRecentNames];
    std::u16string probe;     // the key being looked up, reused
    std::u16string blankFix;  // a text whose trailing blanks became spaces
};

}  // namespace cblxml

#endif
