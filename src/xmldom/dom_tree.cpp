#include "xmldom/dom_tree.h"

#include "xmldom/dom_append.h"
#include "xmldom/dom_document.h"

namespace cblxml::dom {

Node *next_element_in(const Node *n, const Node *root, bool skip_below)
{
    if (!skip_below) {
        if (Node *child = first_element_child(n))
            return child;
    }
    // Up until a following element sibling is found, never above `root`.
    for (const Node *at = n; at != nullptr && at != root; at = at->parent) {
        if (Node *next = next_element_sibling(at))
            return next;
    }
    return nullptr;
}

Node *document_of(Node *n)
{
    while (n != nullptr && n->kind != XD_DOM_DOCUMENT)
        n = n->parent;
    return n;
}

size_t depth(const Node *n)
{
    size_t steps = 1;
    for (const Node *at = n; at != nullptr && at->parent != nullptr && !is_document(at->parent);
         at = at->parent)
        ++steps;
    return steps;
}

const char *strings_encoding(const Node *document) { return dom_document_encoding(document); }

bool link_child(Node *parent, Node *child) { return dom_append_child(parent, child); }

void free_tree(Node *root) { kvt_xe_xml_dom_free_node(root, 0); }

}  // namespace cblxml::dom
