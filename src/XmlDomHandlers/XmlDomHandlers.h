// The handler object that the SAX2 reader calls back during one parse. In
// event mode it appends XML PARSE event records behind the caller's sentinel;
// in tree mode it builds document-tree nodes. The constructor detects the
// document's encoding, may refuse it, and keeps a UTF-16 copy of the document
// that the call-backs read to recover what the parser does not report (the
// XML declaration, the raw text of attribute values and references).
#ifndef CBLXML_XMLDOMHANDLERS_XMLDOMHANDLERS_H
#define CBLXML_XMLDOMHANDLERS_XMLDOMHANDLERS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <xercesc/sax/Locator.hpp>
#include <xercesc/sax2/Attributes.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/util/TransService.hpp>

#include "cblxml.h"
#include "XmlDomHandlers/event_pool.h"
#include "XmlDomHandlers/line_index.h"

namespace cblxml {

// The code and domain of the error the parser is reporting, recorded by the
// reader before it calls the handler's error call-backs.
struct ParserError {
    unsigned code = 0;
    const XMLCh *domain = nullptr;
};

class XmlDomHandlers : public xercesc::DefaultHandler {
public:
    // out: event mode, xd_parse_info ** holding the sentinel; tree mode,
    // xd_dom_node_t ** that receives the document node (may be null).
    // errorRecord: tree mode, the caller's error record (cleared here).
    XmlDomHandlers(const void *document, uint32_t length, void *out,
                   xd_dom_parse_err_t **errorRecord, uint32_t flags);
    ~XmlDomHandlers() override;
    XmlDomHandlers(const XmlDomHandlers &) = delete;
    XmlDomHandlers &operator=(const XmlDomHandlers &) = delete;

    bool getSawErrors() const { return sawErrors; }
    dm_item_desc *getIdesc() { return &idesc; }
    void *getMPH() const { return mapHandle; }
    void setIdescLen(int32_t length) { idesc.length = static_cast<uint32_t>(length); }
    xercesc::XMLTranscoder *getTranscoder() const { return transcoder; }

    // Where the reader records the error it is about to report.
    void setErrorSource(const ParserError *source) { parserError = source; }

    // Converts `count` UTF-16 units into the program's representation,
    // writing into `out` (zero-filled by the caller, at least
    // cobolTextRoom(count) bytes). The length is read back from the
    // terminator. Never fails: unconvertible characters are replaced.
    void WCharToCOBOL1(xercesc::XMLTranscoder *t, const XMLCh *source, char *out,
                       int32_t count, int32_t national);

    // Bytes a caller must zero-fill for WCharToCOBOL1 of `count` units,
    // terminator included.
    static size_t cobolTextRoom(size_t count);

    // A new zero-terminated buffer (malloc) holding `count` units of source
    // converted by WCharToCOBOL1 with the handler's transcoder. Owned by the
    // caller (normally handed to an event record).
    char *cobolText(const XMLCh *source, size_t count, int32_t national);

    // The UTF-16 copy of the document and its length in units.
    const XMLCh *getDocText() const { return docText; }
    uint32_t getDocTextLen() const { return docTextLen; }
    bool isNational() const { return national; }

    // Records of a progressive parse come from `pool` (null: every record is
    // built by new_event, as the list handed to kvt_xe_xmlparse's caller
    // must be).
    void setEventPool(EventPool *eventPool) { pool = eventPool; }
    xd_parse_info *newRecord(const char *name);

    // Event list: appends at the tail; a record that already has followers
    // (the two records of an unknown reference) moves the tail to the last.
    void appendEvent(xd_parse_info *record);
    xd_parse_info *getEventTail() const { return eventTail; }
    // Appends a record named `name` whose text is `count` units of `text` in
    // the program's representation (the handler's national flag).
    xd_parse_info *appendTextEvent(const char *name, const XMLCh *text, size_t count);

    // SAX2 content call-backs.
    void setDocumentLocator(const xercesc::Locator *const locator) override;
    void startDocument() override;
    void endDocument() override;
    void startElement(const XMLCh *const uri, const XMLCh *const localname,
                      const XMLCh *const qname, const xercesc::Attributes &attrs) override;
    void endElement(const XMLCh *const uri, const XMLCh *const localname,
                    const XMLCh *const qname) override;
    void characters(const XMLCh *const chars, const XMLSize_t length) override;
    void processingInstruction(const XMLCh *const target, const XMLCh *const data) override;

    // Lexical call-backs.
    void startDTD(const XMLCh *const name, const XMLCh *const publicId,
                  const XMLCh *const systemId) override;
    void endDTD() override;
    void comment(const XMLCh *const chars, const XMLSize_t length) override;
    void startCDATA() override;
    void endCDATA() override;

    // Error call-backs.
    void warning(const xercesc::SAXParseException &exc) override;
    void error(const xercesc::SAXParseException &exc) override;
    void fatalError(const xercesc::SAXParseException &exc) override;
    void resetErrors() override;

    // The character offset in docText of a parser line and column:
    // start of the line + column - 1 + the position adjustment.
    int64_t locatorOffset(uint64_t line, uint64_t column);

private:
    void constructEventMode(const unsigned char *doc, uint32_t length, void *out,
                            uint32_t flags);
    void buildDocText(const unsigned char *doc, uint32_t length, void *out, uint32_t flags);
    void constructTreeMode(const unsigned char *doc, uint32_t length, void *out,
                           xd_dom_parse_err_t **errorRecord);
    void refuse(int32_t code, const unsigned char *doc, uint32_t length);
    // Reads the XML declaration's encoding; true when it replaced the transcoder.
    bool examineDeclaration(XMLCh *work, uint32_t workLen, std::u16string &detected,
                            const unsigned char *doc, uint32_t length, uint32_t flags);
    // The UTF-16 conversion routine: a new buffer of *length + 1 units.
    XMLCh *toUtf16(const unsigned char *source, uint32_t &length, bool utf16Flag);

    void appendDocumentDeclaration();
    void appendTreeDeclaration();
    void appendGenericException(int64_t position);
    void recordTreeError(const xercesc::SAXParseException &exc, bool readDomain);

    // Element, content and DTD helpers.
    void startElementEvents(const XMLCh *qname, const xercesc::Attributes &attrs);
    void startElementTree(const XMLCh *uri, const XMLCh *localname,
                          const xercesc::Attributes &attrs);
    void charactersEvents(const XMLCh *chars, size_t units);
    void charactersTree(const XMLCh *chars, size_t units);
    void appendToCurrent(xd_dom_node_t *node);
    // Tree mode: a processing-instruction node appended to the current node.
    void appendTreePi(const XMLCh *target, size_t targetLen, const XMLCh *data, size_t dataLen);
    // The locator's offset (no adjustment for a construct's end) within the text.
    int64_t clampedPosition();
    // A declaration "<!DOCTYPE name>" that the parser does not report: found
    // at the start of the document, emitted before the first construct that
    // follows it.
    void findBareDoctype();
    void emitBareDoctypeBefore(int64_t position);
    // Gives the record the document text [from, to] in the program's form.
    void appendSourceText(xd_parse_info *record, int64_t from, int64_t to);

public:
    // Fields in the order the handler object describes them.
    bool sawErrors = false;
    uint8_t treeMode = 0;
    bool national = false;
    int32_t encodingKind = 0;
    uint32_t declValuePos = 0;
    uint32_t declValueLen = 0;
    uint32_t posAdjust = 0;  // characters added to every locator-derived offset
    uint32_t reserved = 0;
    xd_dom_node_t *treeDocument = nullptr;  // tree mode: the document node (also the owner)
    xd_dom_node_t *treeCurrent = nullptr;   // tree mode: where new nodes are appended
    xd_parse_info *eventTail = nullptr;
    xd_dom_parse_err_t *errorRecord = nullptr;
    XMLCh *docText = nullptr;
    uint32_t docTextLen = 0;
    xercesc::XMLTranscoder *transcoder = nullptr;
    void *mapHandle = nullptr;
    dm_item_desc idesc{};

    EventPool *pool = nullptr;
    bool asciiTranscoder = false;  // the transcoder writes ASCII as it is (UTF-8)
    bool doctypeSeen = false;  // a DOCUMENT-TYPE-DECLARATION event was made
    std::u16string attrRaw;    // an attribute value as written, reused
    const xercesc::Locator *locator = nullptr;
    const ParserError *parserError = nullptr;
    LineIndex lines;  // extended as the parse moves on
    std::vector<char> scratch;  // conversion area reused by cobolText
    // Tree mode: the text node whose value is being extended, its length and
    // the room allocated behind its value.
    xd_dom_node_t *mergeText = nullptr;
    size_t mergeLen = 0;
    size_t mergeCap = 0;
    int64_t dtdPosition = -1;  // event mode: where the open declaration stood
    bool inDtd = false;        // between startDTD and endDTD
    // The parser reads UTF-8 that starts with a byte-order mark: it counts no
    // column for the mark (it does count a UTF-16 mark).
    bool bomUncounted = false;
    int64_t bareDoctypeStart = -1;  // an unreported "<!DOCTYPE name>", until emitted
    int64_t bareDoctypeEnd = -1;
};

} // namespace cblxml

#endif
