// The small interface through which record mapping, search, sequential
// reading, the record builder and the tree updates see a document tree:
// make, link, unlink, walk, find and free. The parser's tree sink appends
// through dom_append.h; the node constructors are kvt_xe_xml_dom_*_node.
#ifndef CBLXML_XMLDOM_DOM_TREE_H
#define CBLXML_XMLDOM_DOM_TREE_H

#include <cstddef>
#include <cstdint>

#include "cblxml.h"

namespace cblxml::dom {

using Node = xd_dom_node_t;

// --- reading a node ---------------------------------------------------------
inline uint32_t kind(const Node *n) { return n->kind; }
inline bool is_element(const Node *n) { return n != nullptr && n->kind == XD_DOM_ELEMENT; }
inline bool is_attribute(const Node *n) { return n != nullptr && n->kind == XD_DOM_ATTRIBUTE; }
inline bool is_document(const Node *n) { return n != nullptr && n->kind == XD_DOM_DOCUMENT; }
// Name, namespace URI and value: NUL-terminated, or null when absent.
inline const char *name(const Node *n) { return n->name; }
inline const char *namespace_uri(const Node *n) { return n->namespace_uri; }
inline const char *value(const Node *n) { return n->value; }

// --- walking ----------------------------------------------------------------
inline Node *parent(const Node *n) { return n->parent; }
inline Node *first_child(const Node *n) { return n->first_child; }
inline Node *next_sibling(const Node *n) { return n->next_sibling; }
inline Node *prev_sibling(const Node *n) { return n->prev_sibling; }
inline Node *first_attribute(const Node *n) { return n->first_attribute; }

// The first element among `n` and its following siblings; null when none.
inline Node *element_from(Node *n)
{
    while (n != nullptr && n->kind != XD_DOM_ELEMENT)
        n = n->next_sibling;
    return n;
}
inline Node *first_element_child(const Node *n) { return element_from(n->first_child); }
inline Node *next_element_sibling(const Node *n) { return element_from(n->next_sibling); }
inline Node *prev_element_sibling(const Node *n)
{
    Node *p = n->prev_sibling;
    while (p != nullptr && p->kind != XD_DOM_ELEMENT)
        p = p->prev_sibling;
    return p;
}

// The next element after `n` in document order within the subtree of `root`
// (elements only, attributes never); with `skip_below` the elements under
// `n` are passed over. Iterative: documents may nest deeper than any stack.
Node *next_element_in(const Node *n, const Node *root, bool skip_below);

// The document node above `n` (n itself when it is one); null when the
// chain ends elsewhere.
Node *document_of(Node *n);
// 1 plus the number of parent steps from `n` to its document node.
size_t depth(const Node *n);

// The encoding of the tree's strings ("UTF-8" for UTF-8 and UTF-16
// documents, else the declared name); null when not known.
const char *strings_encoding(const Node *document);

// --- linking, unlinking and freeing ----------------------------------------
// Appends `child` to the children (or attributes) of `parent`; false when it
// cannot be linked, and the caller keeps it.
bool link_child(Node *parent, Node *child);
// Links `node` (owned by the caller, in no list) into the list of `anchor`,
// after it or before it, with anchor's parent as its parent (an attribute
// goes into the attribute list). The tree owns the node afterwards.
void link_after(Node *anchor, Node *node);
void link_before(Node *anchor, Node *node);
// Takes `node` out of its parent's child list (attribute list for an
// attribute), repairing both neighbours, the head and the tail. The node
// keeps its subtree and is the caller's afterwards. A node without a parent
// is left as it is.
void unlink(Node *node);
// Unlinks `node` and frees it with everything below it.
void remove(Node *node);
// Removes every node on both sides of `node` in its list, except processing
// instructions when `keep_pis`.
void remove_siblings(Node *node, bool keep_pis);
// Removes the children of `node` that are not text nodes.
void remove_non_text_children(Node *node);
// Frees a whole tree (or a subtree already taken out of its parent's lists).
void free_tree(Node *root);

}  // namespace cblxml::dom

#endif
