// What the file operations, the reading side, the writer and the tree
// updates share about the held document.
#ifndef CBLXML_XEXML_XML_WRITE_H
#define CBLXML_XEXML_XML_WRITE_H

#include "cblxml.h"

namespace cblxml::xexml {

// The first element child of the document node, or null.
xd_dom_node_t *document_element(const xd_dom_node_t *document);
// Frees the held tree and its anchor (CLOSE, a new READ, write-document);
// doc becomes null.
void drop_tree(xmlio_fcb *fcb);
// Makes `document` the held document, making the anchor when there is none.
// False when the anchor cannot be made: `document` is then freed.
bool hold_document(xmlio_fcb *fcb, xd_dom_node_t *document);
// The stream reports error 18 or 31.
bool stream_failed(const cblxml_stream *stream);
// Record entry `number` (1-based), or null when there is none.
xml_rec_entry_t *record_entry(const xmlio_fcb *fcb, uint32_t number);
// Builds the nodes of `item` from the record under `parent`; false when a
// node could not be made (what was made stays linked under `parent`).
bool build_record(xmlio_fcb *fcb, xd_dom_node_t *parent, xml_rec_entry_t *entry, IDESC *item);

}  // namespace cblxml::xexml

#endif
