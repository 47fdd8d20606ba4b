// Linking new nodes into a document tree, as the parser call-backs build it.
#ifndef CBLXML_XMLDOM_DOM_APPEND_H
#define CBLXML_XMLDOM_DOM_APPEND_H

#include "cblxml.h"

namespace cblxml {

// Appends `child` at the end of the attribute list of `parent` (for an
// attribute) or of its child list (for any other kind), in constant time, and
// makes `parent` its parent. A document node takes only elements and
// processing instructions. Returns true when the child was linked: the tree
// owns it from then on. On false nothing was changed and the caller still
// owns `child` (and frees it with kvt_xe_xml_dom_free_node).
bool dom_append_child(xd_dom_node_t *parent, xd_dom_node_t *child);

// True for text that the text-node constructor drops (it then says 1 without
// running out of memory): spaces, line feeds and zero bytes only.
bool dom_text_is_blank(const char *chars, uint32_t length);

}  // namespace cblxml

#endif
