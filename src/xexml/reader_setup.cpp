#include "xexml/reader_setup.h"

#include <xercesc/util/XMLUni.hpp>

#include "platform/platform.h"

using xercesc::XMLUni;

namespace cblxml {

void set_features(xercesc::SAX2XMLReader &reader, uint32_t flags)
{
    const bool validate = (flags & (CBLXML_OPT_VALIDATE | CBLXML_OPT_VALIDATE_ONLY)) != 0;
    reader.setFeature(XMLUni::fgSAX2CoreNameSpaces, true);
    reader.setFeature(XMLUni::fgXercesSchema, validate);
    reader.setFeature(XMLUni::fgXercesSchemaFullChecking, validate);
    reader.setFeature(XMLUni::fgSAX2CoreNameSpacePrefixes, validate || !(flags & CBLXML_OPT_TREE));
    reader.setFeature(XMLUni::fgSAX2CoreValidation, validate);
}

void register_handler(ErrorRecordingReader &reader, XmlDomHandlers &handler, uint32_t flags)
{
    if (!(flags & CBLXML_OPT_VALIDATE_ONLY)) {
        reader.setContentHandler(&handler);
        reader.setLexicalHandler(&handler);
        reader.setDTDHandler(&handler);
    }
    reader.setErrorHandler(&handler);
    handler.setErrorSource(reader.lastError());
    handler.resetErrors();
}

std::string parse_buffer(XmlDomHandlers &handler, const void *document, uint32_t length)
{
    if (handler.getMPH() == nullptr)
        return std::string(static_cast<const char *>(document), length);
    // The handler converted the document through the data map already (its
    // terminator left out: a NUL after the root element would be a parse
    // error).
    return handler.takeMappedText();
}

}  // namespace cblxml
