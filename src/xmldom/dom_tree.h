// The small interface through which record mapping, search and sequential
// reading see a document tree: make, link, walk, find and free. Nothing
// outside src/xmldom/ and the parser's tree sink touches the node record's
// fields directly for these tasks, so the representation underneath can
// change without touching the callers.
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

// --- making, linking and freeing --------------------------------------------
// Appends `child` to the children (or attributes) of `parent`; false when it
// cannot be linked, and the caller keeps it.
bool link_child(Node *parent, Node *child);
// Frees a whole tree (or a subtree already taken out of its parent's lists).
void free_tree(Node *root);

}  // namespace cblxml::dom

#endif
