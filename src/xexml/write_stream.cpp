// kvt_xe_xmlio_write_stream: the writing side of XML-enabled files. It turns
// the current record into tree nodes and, for write-document, the tree into
// XML text for the file or the data item.
#include <cstdlib>
#include <cstring>
#include <new>

#include "xexml/idesc_access.h"
#include "xexml/record_builder.h"
#include "xexml/record_map.h"
#include "xexml/xml_serialise.h"
#include "xexml/xml_write.h"
#include "xmldom/dom_document.h"
#include "xmldom/dom_tree.h"

namespace cblxml::xexml {

xd_dom_node_t *document_element(const xd_dom_node_t *document)
{
    if (document == nullptr)
        return nullptr;
    for (xd_dom_node_t *n = document->first_child; n != nullptr; n = n->next_sibling) {
        if (n->kind == XD_DOM_ELEMENT)
            return n;
    }
    return nullptr;
}

void drop_tree(xmlio_fcb *fcb)
{
    if (fcb->doc == nullptr)
        return;
    // The whole tree goes through the tree delete (the document node frees
    // everything below it), then its anchor.
    kvt_xe_xml_dom_delete(fcb, fcb->doc->document);
    std::free(fcb->doc);
    fcb->doc = nullptr;
}

bool hold_document(xmlio_fcb *fcb, xd_dom_node_t *document)
{
    if (fcb->doc == nullptr) {
        fcb->doc = static_cast<xml_doc_anchor_t *>(std::calloc(1, sizeof(xml_doc_anchor_t)));
        if (fcb->doc == nullptr) {
            dom::free_tree(document);
            return false;
        }
    }
    fcb->doc->document = document;
    return true;
}

bool stream_failed(const cblxml_stream *stream)
{
    return stream != nullptr && (stream->error_code == CBLXML_STREAM_IO_ERROR ||
                                 stream->error_code == CBLXML_STREAM_NO_ROOM);
}

xml_rec_entry_t *record_entry(const xmlio_fcb *fcb, uint32_t number)
{
    if (fcb->records == nullptr || number == 0 || number > fcb->rec_count ||
        fcb->records[number - 1].root == nullptr)
        return nullptr;
    return &fcb->records[number - 1];
}

bool build_record(xmlio_fcb *fcb, xd_dom_node_t *parent, xml_rec_entry_t *entry, IDESC *item)
{
    record_builder builder;
    builder.document = fcb->doc != nullptr ? fcb->doc->document : parent;
    builder.parent = parent;
    builder.aux = fcb->builder_aux;
    builder.dm_handle = fcb->dm_handle;
    build_item(builder, entry, item);
    return !builder.failed;
}

namespace {

constexpr uint32_t kVerifyOptions = 20;  // tree mode, validation without content call-backs

// Cuts the tree down to the path from the document element to `node`: the
// nodes a later WRITE inserts next to.
void keep_path(xd_dom_node_t *node, bool top)
{
    if (!top)
        dom::remove_non_text_children(node);
    dom::remove_siblings(node, true);
    for (xd_dom_node_t *a = node->parent;
         a != nullptr && a->parent != nullptr && a->parent->kind != XD_DOM_DOCUMENT; a = a->parent)
        dom::remove_siblings(a, false);
}

void position_after_write(xmlio_fcb *fcb, xml_rec_entry_t *entry, xd_dom_node_t *root, bool top)
{
    IDESC *item = fcb->key_item;
    if (item == nullptr) {
        // No key item: the document element is the position, kept whole.
        fcb->doc->current = root;
        return;
    }
    xd_dom_node_t *found = nullptr;
    if ((DESC_GET(item, flags) & IDESC_ATTRIBUTES) != 0) {
        found = kvt_xe_xml_dom_search(root, item, entry, 1);
        if (found != nullptr)
            found = found->parent;
    } else {
        found = kvt_xe_xml_dom_search(root, item, entry, 0);
    }
    for (int steps = 0; found == nullptr && DESC_GET(item, level) != 1 && steps < kMaxDepth;
         ++steps) {
        item = DESC_GET(item, parent);
        if (item == nullptr)
            break;
        found = kvt_xe_xml_dom_search(root, item, entry, 0);
        top = false;
    }
    if (found != nullptr)
        keep_path(found, top);
    fcb->doc->current = found;
}

// Parses the produced text again; -9 when it gives result 3.
int32_t verify(const xml_outbuf &buf)
{
    xd_dom_node_t *tree = nullptr;
    xd_dom_parse_err_t record{};
    xd_dom_parse_err_t *rec = &record;
    const int32_t result = kvt_xe_xml_dom_parse(buf.data, static_cast<uint32_t>(buf.used), &tree,
                                                &rec, kVerifyOptions);
    dom::free_tree(tree);
    std::free(record.message);
    return result == 3 ? XMLIO_ST_PARSE_FAILED : XMLIO_ST_OK;
}

void produce_text(xmlio_fcb *fcb, xml_outbuf &buf, const xd_dom_node_t *root)
{
    xml_writer out{buf, *fcb};
    if ((fcb->flags & XMLIO_SCHEMA) == 0) {
        out.put("<!DOCTYPE ");
        if (fcb->doctype_name != nullptr)
            out.put(fcb->doctype_name, fcb->doctype_len);
        out.put(" [");
        out.newline();
        write_dtd(out, root);
        out.put("]>");
        out.newline();
    }
    if (fcb->doc != nullptr)
        serialise_document(out, fcb->doc->document);
    if (!out.compact() && !outbuf_ends_crlf(buf))
        out.put("\r\n", 2);
}

// The steps between creating and closing the buffer; returns the status.
int32_t write_stream(xmlio_fcb *fcb, int32_t top, xml_outbuf &buf)
{
    const bool document_op = fcb->opcode == XMLIO_OP_WRITE_DOC;
    // Callers set rec_read to rec_no first; a write-document before any
    // READ or WRITE has no record read yet and writes record rec_no.
    xml_rec_entry_t *entry = record_entry(fcb, fcb->rec_read);
    if (entry == nullptr)
        entry = record_entry(fcb, fcb->rec_no);
    xd_dom_node_t *root = nullptr;
    if (fcb->doc != nullptr) {
        if ((fcb->flags & XMLIO_MODIFIED) != 0 || !document_op)
            root = document_element(fcb->doc->document);
        else
            drop_tree(fcb);
    }
    if (entry == nullptr && root == nullptr)
        return XMLIO_ST_NO_MATCH;
    if (entry != nullptr && (root == nullptr || !node_matches(root, entry->root))) {
        xd_dom_node_t *document = fcb->doc != nullptr ? fcb->doc->document : nullptr;
        if (document == nullptr) {
            if (kvt_xe_xml_dom_doc_node(&document) != 0)
                return XMLIO_ST_BAD_OPCODE;
            // The writer's strings are UTF-8, whatever the document declares.
            dom_set_strings_utf8(document, true);
        }
        if (!hold_document(fcb, document))
            return XMLIO_ST_BAD_OPCODE;
        const bool built = build_record(fcb, document, entry, entry->root);
        fcb->doc->current = document->first_child;
        fcb->doc->position_mode = 0;
        // A tree that could not be built whole is kept (it is the file's),
        // and the operation reports that it could not run.
        if (!built)
            return XMLIO_ST_BAD_OPCODE;
        root = document_element(document);
    }
    if (!document_op) {
        if (root != nullptr)
            position_after_write(fcb, entry, root, top != 0);
        return XMLIO_ST_OK;
    }
    produce_text(fcb, buf, root);
    if (buf.failed)
        return XMLIO_ST_BAD_OPCODE;
    // A count past what a status can hold is reported as the largest one.
    int32_t status = buf.produced > 0x7FFFFFFF ? 0x7FFFFFFF : static_cast<int32_t>(buf.produced);
    if ((fcb->flags & XMLIO_VERIFY) != 0 && verify(buf) != XMLIO_ST_OK)
        return XMLIO_ST_PARSE_FAILED;
    if ((fcb->flags & XMLIO_URL) != 0)
        status = XMLIO_ST_URL_WRITE;
    else if ((fcb->flags & XMLIO_IN_MEMORY) != 0 && fcb->name != nullptr)
        // The data item is the caller's, handed over as the file's name.
        std::memcpy(const_cast<char *>(fcb->name), buf.data, fcb->name_len);
    drop_tree(fcb);
    return status;
}

}  // namespace
}  // namespace cblxml::xexml

extern "C" void kvt_xe_xmlio_write_stream(xmlio_fcb *fcb, int32_t top)
{
    namespace x = cblxml::xexml;
    if (fcb == nullptr)
        return;
    x::xml_outbuf buf;
    if (!x::outbuf_create(buf, fcb)) {
        fcb->status = XMLIO_ST_BAD_OPCODE;
        return;
    }
    int32_t status;
    try {
        status = x::write_stream(fcb, top, buf);
    } catch (const std::bad_alloc &) {
        status = XMLIO_ST_BAD_OPCODE;
    }
    // Text that is not whole is never written.
    x::outbuf_close(buf, status < 0 ? XMLIO_ST_PARSE_FAILED : status);
    if (x::stream_failed(fcb->stream))
        status = XMLIO_ST_WRITE_ERROR;
    fcb->status = status;
}
