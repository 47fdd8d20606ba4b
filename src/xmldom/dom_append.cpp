#include "xmldom/dom_append.h"

namespace cblxml {

namespace {

bool document_accepts(uint32_t kind) { return kind == XD_DOM_ELEMENT || kind == XD_DOM_PI; }

// The last node of a list. A tail pointer is trusted only while the list has
// a head: freeing the only node of a list advances the head to null but leaves
// the tail pointing at freed memory. A list built without tail pointers is
// walked once; from then on the tail is kept.
xd_dom_node_t *list_tail(xd_dom_node_t *head, xd_dom_node_t *tail)
{
    if (head == nullptr)
        return nullptr;
    if (tail != nullptr)
        return tail;
    while (head->next_sibling != nullptr)
        head = head->next_sibling;
    return head;
}

void append_to_list(xd_dom_node_t **head, xd_dom_node_t **tail, xd_dom_node_t *node)
{
    xd_dom_node_t *last = list_tail(*head, *tail);
    node->prev_sibling = last;
    node->next_sibling = nullptr;
    if (last == nullptr)
        *head = node;
    else
        last->next_sibling = node;
    *tail = node;
}

}  // namespace

bool dom_append_child(xd_dom_node_t *parent, xd_dom_node_t *child)
{
    if (parent == nullptr || child == nullptr || parent == child)
        return false;
    if (parent->kind == XD_DOM_DOCUMENT && !document_accepts(child->kind))
        return false;
    child->parent = parent;
    if (child->kind == XD_DOM_ATTRIBUTE)
        append_to_list(&parent->first_attribute, &parent->last_attribute, child);
    else
        append_to_list(&parent->first_child, &parent->last_child, child);
    return true;
}

}  // namespace cblxml
