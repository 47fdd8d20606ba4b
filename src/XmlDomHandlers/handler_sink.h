// What a parse does with the parser's call-backs in one mode. The handler
// keeps what both modes share (the document text, its conversion, the
// locator) and passes each call-back on to the sink of the parse's mode, so
// that a sink's call-back reads in that mode alone. A call-back that a mode
// has no use for does nothing.
#ifndef CBLXML_XMLDOMHANDLERS_HANDLER_SINK_H
#define CBLXML_XMLDOMHANDLERS_HANDLER_SINK_H

#include <cstddef>

#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/sax2/Attributes.hpp>

namespace cblxml {

class HandlerSink {
public:
    virtual ~HandlerSink() = default;

    virtual void startDocument() {}
    virtual void endDocument() {}
    virtual void startElement(const XMLCh * /*uri*/, const XMLCh * /*localname*/,
                              const XMLCh * /*qname*/, const xercesc::Attributes & /*attrs*/)
    {}
    virtual void endElement(const XMLCh * /*qname*/) {}
    // `units` (at least 1) units of text, none of them zero.
    virtual void characters(const XMLCh * /*chars*/, size_t /*units*/) {}
    virtual void processingInstruction(const XMLCh * /*target*/, const XMLCh * /*data*/) {}
    virtual void startDTD(const XMLCh * /*publicId*/, const XMLCh * /*systemId*/) {}
    virtual void endDTD() {}
    // The parser begins and ends reading an entity (the external DTD subset,
    // a parameter or general entity).
    virtual void startEntity() {}
    virtual void endEntity() {}
    virtual void comment(const XMLCh * /*chars*/, size_t /*length*/) {}
    virtual void startCDATA() {}
    virtual void endCDATA() {}

    virtual void warning(const xercesc::SAXParseException &exc) = 0;
    virtual void error(const xercesc::SAXParseException &exc) = 0;
    virtual void fatalError(const xercesc::SAXParseException &exc) = 0;
};

}  // namespace cblxml

#endif
