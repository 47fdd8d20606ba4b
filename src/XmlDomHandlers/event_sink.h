// Event mode: every call-back appends XML PARSE event records behind the
// caller's sentinel, reading the document text through the handler.
#ifndef CBLXML_XMLDOMHANDLERS_EVENT_SINK_H
#define CBLXML_XMLDOMHANDLERS_EVENT_SINK_H

#include <cstdint>
#include <string>
#include <string_view>

#include "XmlDomHandlers/XmlDomHandlers.h"
#include "XmlDomHandlers/event_pool.h"
#include "XmlDomHandlers/handler_sink.h"
#include "cblxml.h"

namespace cblxml {

class EventSink final : public HandlerSink {
public:
    // tail: the sentinel (or last record) of the caller's list; null drops
    // every record.
    EventSink(XmlDomHandlers &handler, xd_parse_info *tail) : h(handler), eventTail(tail) {}

    void setEventPool(EventPool *eventPool) { pool = eventPool; }
    xd_parse_info *tail() const { return eventTail; }

    // Appends at the tail; a record that already has followers (the two
    // records of an unknown reference) moves the tail to the last.
    void appendEvent(xd_parse_info *record);
    // Appends a record named `name` whose text is `count` units of `text` in
    // the program's representation (the handler's national flag).
    xd_parse_info *appendTextEvent(const char *name, const XMLCh *text, size_t count);

    void startDocument() override;
    void endDocument() override;
    void startElement(const XMLCh *uri, const XMLCh *localname, const XMLCh *qname,
                      const xercesc::Attributes &attrs) override;
    void endElement(const XMLCh *qname) override;
    void characters(const XMLCh *chars, size_t units) override;
    void processingInstruction(const XMLCh *target, const XMLCh *data) override;
    void startDTD(const XMLCh *publicId, const XMLCh *systemId) override;
    void endDTD() override;
    void startEntity() override { ++entityDepth; }
    void endEntity() override { --entityDepth; }
    void comment(const XMLCh *chars, size_t length) override;
    void startCDATA() override;
    void endCDATA() override;
    void warning(const xercesc::SAXParseException &exc) override;
    void error(const xercesc::SAXParseException &exc) override;
    void fatalError(const xercesc::SAXParseException &exc) override;

private:
    xd_parse_info *newRecord(const char *name);
    void appendDocumentDeclaration();
    void appendGenericException(int64_t position);
    int32_t errorPosition(const xercesc::SAXParseException &exc);
    // References the parser skipped (skipped_references.cpp). A name other
    // than a character reference, the five predefined entities and the
    // entities the document declares.
    bool isSkipped(std::u16string_view name) const;
    // Appends "UNKNOWN-REFERENCE-IN-CONTENT" for each skipped reference of
    // the run of references that ends just before docText[end], in
    // document order.
    void appendSkippedBefore(int64_t end);
    // In content: the same for the references written right before the
    // markup that begins with `opener` and ends at the locator.
    void appendSkippedBeforeMarkup(const char16_t *opener);
    // Gives the record the document text [from, to] in the program's form.
    void appendSourceText(xd_parse_info *record, int64_t from, int64_t to);
    // A declaration "<!DOCTYPE name>" that the parser does not report: found
    // at the start of the document, emitted before the first construct that
    // follows it.
    void findBareDoctype();
    void emitBareDoctypeBefore(int64_t position);
    // The parser reported a declaration at `position` (its "[" or its ">"):
    // it is open until closeDtd.
    void openDtd(int64_t position);
    // The parser reported a construct of the document that stands at
    // `position` (or an error there). A document type declaration that ends
    // before it is finished first: the unreported one is emitted, an open one
    // is closed. Called before the construct's own records are appended.
    void endDoctypeBefore(int64_t position);
    // True when endDoctypeBefore may do something.
    bool pendingDoctype() const { return bareDoctypeStart >= 0 || inDtd; }
    // Closes the open declaration whose closing ">" is docText[end]: its
    // record, still the tail, gets the whole declaration as its text.
    void closeDtd(int64_t end);

    XmlDomHandlers &h;
    xd_parse_info *eventTail;
    EventPool *pool = nullptr;
    bool doctypeSeen = false;       // a DOCUMENT-TYPE-DECLARATION event was made
    int64_t dtdPosition = -1;       // where the open declaration stood
    int64_t dtdEnd = -1;            // its closing ">" in the text (-1: not found)
    bool inDtd = false;             // from startDTD until the declaration is closed
    int64_t entityDepth = 0;        // entities being read: positions not in the text
    int64_t bareDoctypeStart = -1;  // an unreported "<!DOCTYPE name>", until emitted
    int64_t bareDoctypeEnd = -1;
    int64_t depth = 0;        // elements open
    int64_t skippedUpTo = 0;  // where the last run of references looked at ended
};

}  // namespace cblxml

#endif
