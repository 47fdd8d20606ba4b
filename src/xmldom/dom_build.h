// Changing a document tree in place: taking a node out of the middle of its
// list, linking one next to another, and removing a node with its subtree.
// The writer and the tree updates use these; the parser only appends.
#ifndef CBLXML_XMLDOM_DOM_BUILD_H
#define CBLXML_XMLDOM_DOM_BUILD_H

#include "cblxml.h"

namespace cblxml {

// Takes `node` out of its parent's child list (attribute list for an
// attribute), repairing both neighbours, the head and the tail. The node keeps
// its subtree and is owned by the caller afterwards. A node without a parent
// is left as it is.
void dom_unlink(xd_dom_node_t *node);

// Unlinks `node` and frees it with everything below it.
void dom_remove(xd_dom_node_t *node);

// Removes every node on both sides of `node` in its list, except processing
// instructions when `keep_pis`.
void dom_remove_siblings(xd_dom_node_t *node, bool keep_pis);

// Links `node` (owned by the caller, not in any list) into the list of
// `anchor`, after it or before it, with anchor's parent as its parent. The
// tree owns the node afterwards.
void dom_link_after(xd_dom_node_t *anchor, xd_dom_node_t *node);
void dom_link_before(xd_dom_node_t *anchor, xd_dom_node_t *node);

}  // namespace cblxml

#endif
