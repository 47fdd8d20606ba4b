#include "raw_parse.h"

#include <memory>

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLUni.hpp>

using xercesc::XMLUni;

namespace cblxml_bench {
namespace {

// Every call-back the library registers, doing nothing; errors are counted
// by the reader, so fatal errors must not throw.
class NullHandler : public xercesc::DefaultHandler {
public:
    void fatalError(const xercesc::SAXParseException &) override {}
};

}  // namespace

bool init_raw_parser()
{
    try {
        xercesc::XMLPlatformUtils::Initialize();
        return true;
    } catch (...) {
        return false;
    }
}

bool raw_parse(const std::string &document)
{
    try {
        std::unique_ptr<xercesc::SAX2XMLReader> reader(
            xercesc::XMLReaderFactory::createXMLReader());
        // The features of an event-mode, non-validating parse.
        reader->setFeature(XMLUni::fgSAX2CoreNameSpaces, true);
        reader->setFeature(XMLUni::fgXercesSchema, false);
        reader->setFeature(XMLUni::fgXercesSchemaFullChecking, false);
        reader->setFeature(XMLUni::fgSAX2CoreNameSpacePrefixes, true);
        reader->setFeature(XMLUni::fgSAX2CoreValidation, false);
        NullHandler handler;
        reader->setContentHandler(&handler);
        reader->setLexicalHandler(&handler);
        reader->setDTDHandler(&handler);
        reader->setErrorHandler(&handler);

        const std::string copy = document;
        xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte *>(copy.data()),
                                          copy.size(), "bench", false);
        source.setCopyBufToStream(false);  // as the library reads its private copy
        reader->parse(source);
        return reader->getErrorCount() == 0;
    } catch (...) {
        return false;
    }
}

}  // namespace cblxml_bench
