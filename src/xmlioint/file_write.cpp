// WRITE, the second WRITE form and write-document.
#include "xmlioint/file_ops.h"

namespace cblxml::xmlio {
namespace {

// A document is held whose document node has a child other than a
// processing instruction: WRITE inserts into it.
bool holds_content(const xmlio_fcb *fcb)
{
    if (fcb->doc == nullptr || fcb->doc->document == nullptr)
        return false;
    for (const xd_dom_node_t *n = fcb->doc->document->first_child; n != nullptr;
         n = n->next_sibling) {
        if (n->kind != XD_DOM_PI)
            return true;
    }
    return false;
}

bool has_output(const xmlio_fcb *fcb)
{
    return fcb->stream != nullptr || (fcb->flags & (XMLIO_IN_MEMORY | XMLIO_URL)) != 0;
}

int32_t insert_record(xmlio_fcb *fcb, int32_t replacing)
{
    if (fcb->rec_read != fcb->rec_no)
        return XMLIO_ST_NO_MATCH;
    if (fcb->doc->current == nullptr)
        return XMLIO_ST_NO_POSITION;
    return kvt_xe_xml_dom_insert(fcb, replacing);
}

int32_t marked(xmlio_fcb *fcb, int32_t status)
{
    if (status == XMLIO_ST_OK)
        fcb->flags |= XMLIO_MODIFIED;
    return status;
}

}  // namespace

int32_t write_document(xmlio_fcb *fcb)
{
    if (!has_output(fcb))
        return XMLIO_ST_NOT_OPEN;
    if (fcb->opcode == XMLIO_OP_WRITE_DOC) {
        if (fcb->open_mode == XMLIO_INPUT)
            return XMLIO_ST_BAD_OPCODE;
        // The new document replaces the old one.
        cblxml_stream *stream = fcb->stream;
        if (fcb->open_mode == XMLIO_IO && stream != nullptr && stream->ops != nullptr) {
            if (stream->ops->seek != nullptr)
                stream->ops->seek(stream, 0, CBLXML_SEEK_START);
            if (stream->ops->truncate != nullptr)
                stream->ops->truncate(stream, 0);
        }
    }
    kvt_xe_xmlio_write_stream(fcb, 1);
    if (fcb->status >= 0) {
        if (fcb->opcode == XMLIO_OP_WRITE_DOC)
            fcb->flags &= ~uint32_t{XMLIO_MODIFIED};
        else
            fcb->flags |= XMLIO_MODIFIED;
    }
    return fcb->status;
}

int32_t write_record(xmlio_fcb *fcb)
{
    if (holds_content(fcb))
        return marked(fcb, insert_record(fcb, 0));
    fcb->rec_read = fcb->rec_no;
    if (fcb->stream == nullptr && (fcb->flags & XMLIO_IN_MEMORY) == 0)
        return XMLIO_ST_NOT_OPEN;
    kvt_xe_xmlio_write_stream(fcb, 0);
    return marked(fcb, fcb->status);
}

int32_t write_record_keep(xmlio_fcb *fcb)
{
    if (holds_content(fcb))
        return marked(fcb, insert_record(fcb, 1));
    fcb->rec_read = fcb->rec_no;
    return marked(fcb, write_document(fcb));
}

}  // namespace cblxml::xmlio
