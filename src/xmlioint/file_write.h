// The writing operations behind CBL_XMLIO_INTERFACE.
#ifndef CBLXML_XMLIOINT_FILE_WRITE_H
#define CBLXML_XMLIOINT_FILE_WRITE_H

#include <cstdint>

#include "cblxml.h"

namespace cblxml::xmlio {

int32_t write_document(xmlio_fcb *fcb);     // opcode 3
int32_t write_record(xmlio_fcb *fcb);       // opcode 7
int32_t write_record_keep(xmlio_fcb *fcb);  // opcode 8

}  // namespace cblxml::xmlio

#endif
