// Linking new nodes into a document tree, as the parser call-backs build it.
#ifndef CBLXML_XMLDOM_DOM_APPEND_H
#define CBLXML_XMLDOM_DOM_APPEND_H

#include <cstddef>

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

// The constructors of the library's own tree builders: the same nodes and
// the same results as kvt_xe_xml_dom_element_node, _attr_node and _text_node
// with `document` as the owner, but taken from the document's arena (names
// and namespace URIs shared). Freed with kvt_xe_xml_dom_free_node as ever,
// and before the document is. When `document` is not a document node they
// are the exported constructors.
int dom_element_node(xd_dom_node_t *document, xd_dom_node_t **out, const char *name,
                     const char *namespace_uri);
int dom_attr_node(xd_dom_node_t *document, xd_dom_node_t **out, const char *name,
                  const char *namespace_uri, const char *value);
int dom_text_node(xd_dom_node_t *document, xd_dom_node_t **out, const char *chars, uint32_t length,
                  int keep_blank);

// The arena's one copy of `text` for the tree under `document`, to name
// nodes made by the two constructors below; null when `document` is not a
// document node or memory runs out.
const char *dom_shared_string(xd_dom_node_t *document, const char *text);
// The same for the first `size` bytes at `bytes`, cut at a NUL among them
// (a record item's name, which need not end in one).
const char *dom_shared_bytes(xd_dom_node_t *document, const char *bytes, size_t size);
// As dom_element_node and dom_attr_node, for names and namespace URIs that
// dom_shared_string gave for the same document (empty: null); the
// attribute's value is copied from `value_size` bytes (0: null).
int dom_element_node_named(xd_dom_node_t *document, xd_dom_node_t **out, const char *name,
                           const char *namespace_uri);
int dom_attr_node_named(xd_dom_node_t *document, xd_dom_node_t **out, const char *name,
                        const char *namespace_uri, const char *value, size_t value_size);

// True when `text` is a string of `node` that lives in its document's arena
// (it must not be reallocated or freed on its own).
bool dom_string_in_arena(const xd_dom_node_t *node, const char *text);

}  // namespace cblxml

#endif
