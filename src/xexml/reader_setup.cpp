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
    handler.setIdescLen(static_cast<int32_t>(length));
    uint32_t size = platform::utf8_room(length);  // the longest UTF-8 form and its terminator
    std::string buffer(size, '\0');
    if (platform::get_cbl_data(handler.getMPH(), handler.getIdesc(), document, DM_FORM_UTF8,
                               buffer.data(), &size) != 0)
        size = 0;
    // The data map's terminator is left out: a NUL after the root element
    // would be a parse error.
    buffer.resize(size > 0 ? size - 1 : 0);
    buffer.shrink_to_fit();  // the room for the longest form is not kept for the parse
    return buffer;
}

}  // namespace cblxml
