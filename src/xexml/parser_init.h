#ifndef CBLXML_XEXML_PARSER_INIT_H
#define CBLXML_XEXML_PARSER_INIT_H

namespace cblxml {

// Initialises the parser library once per process, under the run-time's
// lock. Returns false when the initialisation failed (it is tried again by
// the next parse). The library is never terminated.
bool ensure_parser_initialised();

}  // namespace cblxml

#endif
