// A SAX2 reader that records the code and domain of each error before the
// handler's error call-back runs, so that the handler can classify it.
#ifndef CBLXML_XEXML_ERROR_READER_H
#define CBLXML_XEXML_ERROR_READER_H

#include <xercesc/parsers/SAX2XMLReaderImpl.hpp>

#include "XmlDomHandlers/XmlDomHandlers.h"

namespace cblxml {

class ErrorRecordingReader : public xercesc::SAX2XMLReaderImpl {
public:
    // The reader takes its memory from `memory`, which must outlive it.
    explicit ErrorRecordingReader(xercesc::MemoryManager *memory)
        : xercesc::SAX2XMLReaderImpl(memory)
    {}

    const ParserError *lastError() const { return &last; }

    // Only called while an error handler is registered.
    void error(const unsigned int errCode, const XMLCh *const msgDomain,
               const xercesc::XMLErrorReporter::ErrTypes errType, const XMLCh *const errorText,
               const XMLCh *const systemId, const XMLCh *const publicId, const XMLFileLoc lineNum,
               const XMLFileLoc colNum) override
    {
        last.code = errCode;
        last.domain = msgDomain;
        xercesc::SAX2XMLReaderImpl::error(errCode, msgDomain, errType, errorText, systemId,
                                          publicId, lineNum, colNum);
    }

private:
    ParserError last;
};

}  // namespace cblxml

#endif
