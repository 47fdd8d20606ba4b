// What a document tree keeps about the document it was parsed from, for the
// operations that read its strings after the parse (the value move).
#ifndef CBLXML_XMLDOM_DOM_DOCUMENT_H
#define CBLXML_XMLDOM_DOM_DOCUMENT_H

#include "cblxml.h"

namespace cblxml {

// Marks the strings of the tree under `document` (a node made by
// kvt_xe_xml_dom_doc_node) as UTF-8 whatever encoding the document declared
// (a UTF-16 document). Nothing happens for a null node or another kind.
void dom_set_strings_utf8(xd_dom_node_t *document, bool utf8);

// The encoding of the tree's strings: "UTF-8" for a tree marked so, else the
// declared encoding that the document node holds as its value (null when the
// document declared none). Null for a null node or another kind. Borrowed
// from the tree.
const char *dom_document_encoding(const xd_dom_node_t *document);

}  // namespace cblxml

#endif
