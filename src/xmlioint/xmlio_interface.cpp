// CBL_XMLIO_INTERFACE: the one entry of XML-enabled file I/O. It checks the
// block, links the record layouts at the first OPEN, and hands the block to
// the operation of its opcode. Every result is left in the block's status.
#include "xmlioint/file_ops.h"

namespace cblxml::xmlio {
namespace {

using Operation = int32_t (*)(xmlio_fcb *);

// Indexed by opcode, 1 to 12.
const Operation kOperations[] = {
    nullptr,        open_file,     close_file,     write_document,    read_file,
    start_file,     read_next,     write_record,   write_record_keep, insert_pi_text,
    insert_pi_text, delete_record, rewrite_record,
};
constexpr uint8_t kLastOpcode = sizeof kOperations / sizeof kOperations[0] - 1;

// The block's first OPEN: links every record layout once. A fresh block
// holds nothing of the library's, so the pointers the library owns start
// null (a compiler may leave them undefined).
void initialise(xmlio_fcb *fcb)
{
    kvt_xe_xml_rec_link(fcb->records, fcb->rec_count);
    fcb->stream = nullptr;
    fcb->doc = nullptr;
    fcb->read_buf = nullptr;
    fcb->read_buf_len = 0;
    fcb->dm_handle = nullptr;
    fcb->flags |= XMLIO_INITIALISED;
}

}  // namespace
}  // namespace cblxml::xmlio

extern "C" void CBL_XMLIO_INTERFACE(xmlio_fcb *fcb, const char *arg2)
{
    namespace x = cblxml::xmlio;
    // Without a block there is nowhere to leave a status.
    if (fcb == nullptr)
        return;
    try {
        if ((fcb->flags & XMLIO_INITIALISED) == 0) {
            if (fcb->opcode != XMLIO_OP_OPEN) {
                fcb->status = XMLIO_ST_NOT_OPEN;
                return;
            }
            x::initialise(fcb);
        }
        if (fcb->opcode == 0 || fcb->opcode > x::kLastOpcode) {
            fcb->status = XMLIO_ST_BAD_OPCODE;
            return;
        }
        if (fcb->opcode == XMLIO_OP_INSERT_PI || fcb->opcode == XMLIO_OP_INSERT_TEXT)
            fcb->arg2 = arg2;
        fcb->status = XMLIO_ST_OK;
        fcb->status = x::kOperations[fcb->opcode](fcb);
    } catch (...) {
        // The operations do not throw; should one run out of memory on the
        // way, the call reports that the operation could not run.
        fcb->status = XMLIO_ST_BAD_OPCODE;
    }
}
