// The file operations behind CBL_XMLIO_INTERFACE. Each takes the file
// control block and returns the status the call leaves in it.
#ifndef CBLXML_XMLIOINT_FILE_OPS_H
#define CBLXML_XMLIOINT_FILE_OPS_H

#include <cstdint>

#include "cblxml.h"

namespace cblxml::xmlio {

int32_t open_file(xmlio_fcb *fcb);          // opcode 1
int32_t close_file(xmlio_fcb *fcb);         // opcode 2
int32_t write_document(xmlio_fcb *fcb);     // opcode 3
int32_t read_file(xmlio_fcb *fcb);          // opcode 4
int32_t start_file(xmlio_fcb *fcb);         // opcode 5
int32_t read_next(xmlio_fcb *fcb);          // opcode 6
int32_t write_record(xmlio_fcb *fcb);       // opcode 7
int32_t write_record_keep(xmlio_fcb *fcb);  // opcode 8
int32_t insert_pi_text(xmlio_fcb *fcb);     // opcodes 9 and 10
int32_t delete_record(xmlio_fcb *fcb);      // opcode 11
int32_t rewrite_record(xmlio_fcb *fcb);     // opcode 12

// The checks that START, READ NEXT, DELETE and REWRITE share: -5 without a
// tree; -6 when the record read is not the one named, or there is no key
// item or record entry to search with; else 0.
int32_t positioning_checks(const xmlio_fcb *fcb);

}  // namespace cblxml::xmlio

#endif
