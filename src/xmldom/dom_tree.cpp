#include "xmldom/dom_tree.h"

#include "xmldom/dom_append.h"
#include "xmldom/dom_document.h"

namespace cblxml::dom {
namespace {

struct List {
    Node **head;
    Node **tail;
};

List list_of(Node *parent, const Node *node)
{
    if (node->kind == XD_DOM_ATTRIBUTE)
        return {&parent->first_attribute, &parent->last_attribute};
    return {&parent->first_child, &parent->last_child};
}

}  // namespace

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

void link_after(Node *anchor, Node *node)
{
    Node *up = anchor->parent;
    node->parent = up;
    node->prev_sibling = anchor;
    node->next_sibling = anchor->next_sibling;
    if (anchor->next_sibling != nullptr)
        anchor->next_sibling->prev_sibling = node;
    anchor->next_sibling = node;
    if (up != nullptr) {
        const List list = list_of(up, node);
        if (*list.tail == anchor)
            *list.tail = node;
    }
}

void link_before(Node *anchor, Node *node)
{
    Node *up = anchor->parent;
    node->parent = up;
    node->next_sibling = anchor;
    node->prev_sibling = anchor->prev_sibling;
    if (anchor->prev_sibling != nullptr)
        anchor->prev_sibling->next_sibling = node;
    else if (up != nullptr)
        *list_of(up, node).head = node;
    anchor->prev_sibling = node;
}

void unlink(Node *node)
{
    if (node == nullptr || node->parent == nullptr)
        return;
    const List list = list_of(node->parent, node);
    if (node->prev_sibling != nullptr)
        node->prev_sibling->next_sibling = node->next_sibling;
    else if (*list.head == node)
        *list.head = node->next_sibling;
    if (node->next_sibling != nullptr)
        node->next_sibling->prev_sibling = node->prev_sibling;
    // A tail left unset by the builder of the list stays unset: appenders
    // then find the end by walking.
    if (*list.tail == node)
        *list.tail = node->prev_sibling;
    node->parent = nullptr;
    node->next_sibling = nullptr;
    node->prev_sibling = nullptr;
}

void remove(Node *node)
{
    if (node == nullptr)
        return;
    unlink(node);
    kvt_xe_xml_dom_free_node(node, 0);
}

void remove_siblings(Node *node, bool keep_pis)
{
    for (Node *side = node->prev_sibling; side != nullptr;) {
        Node *next = side->prev_sibling;
        if (!keep_pis || side->kind != XD_DOM_PI)
            remove(side);
        side = next;
    }
    for (Node *side = node->next_sibling; side != nullptr;) {
        Node *next = side->next_sibling;
        if (!keep_pis || side->kind != XD_DOM_PI)
            remove(side);
        side = next;
    }
}

void remove_non_text_children(Node *node)
{
    for (Node *c = node->first_child; c != nullptr;) {
        Node *next = c->next_sibling;
        if (c->kind != XD_DOM_TEXT)
            remove(c);
        c = next;
    }
}

void free_tree(Node *root) { kvt_xe_xml_dom_free_node(root, 0); }

}  // namespace cblxml::dom
