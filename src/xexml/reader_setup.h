// The parts of a parse start shared by the whole-document parse and the
// progressive one: the reader's features, the handler registration and the
// private parse buffer.
#ifndef CBLXML_XEXML_READER_SETUP_H
#define CBLXML_XEXML_READER_SETUP_H

#include <cstdint>
#include <string>

#include "XmlDomHandlers/XmlDomHandlers.h"
#include "xexml/error_reader.h"

namespace cblxml {

// Namespaces always; schema, full checking and validation for a validating
// parse; namespace prefixes reported except in a non-validating tree parse.
void set_features(xercesc::SAX2XMLReader &reader, uint32_t flags);

// Registers the handler for every call-back the option word asks for (only
// errors in a validating parse without content) and resets its error state.
void register_handler(ErrorRecordingReader &reader, XmlDomHandlers &handler, uint32_t flags);

// The private parse buffer: a copy of the document, or its UTF-8 form when
// the data map converts the program's code page.
std::string parse_buffer(XmlDomHandlers &handler, const void *document, uint32_t length);

// kvt_xe_xmlparse, except that running out of memory throws std::bad_alloc
// (the records made so far stay behind `sentinel`, for the caller to free).
int32_t parse_whole_events(xd_parse_info *sentinel, const void *document, uint32_t length,
                           uint32_t flags);

}  // namespace cblxml

#endif
