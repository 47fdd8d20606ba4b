#include "xmldom/dom_build.h"

namespace cblxml {
namespace {

struct List {
    xd_dom_node_t **head;
    xd_dom_node_t **tail;
};

List list_of(xd_dom_node_t *parent, const xd_dom_node_t *node)
{
    if (node->kind == XD_DOM_ATTRIBUTE)
        return {&parent->first_attribute, &parent->last_attribute};
    return {&parent->first_child, &parent->last_child};
}

}  // namespace

void dom_unlink(xd_dom_node_t *node)
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

void dom_remove(xd_dom_node_t *node)
{
    if (node == nullptr)
        return;
    dom_unlink(node);
    kvt_xe_xml_dom_free_node(node, 0);
}

void dom_remove_siblings(xd_dom_node_t *node, bool keep_pis)
{
    for (xd_dom_node_t *side = node->prev_sibling; side != nullptr;) {
        xd_dom_node_t *next = side->prev_sibling;
        if (!keep_pis || side->kind != XD_DOM_PI)
            dom_remove(side);
        side = next;
    }
    for (xd_dom_node_t *side = node->next_sibling; side != nullptr;) {
        xd_dom_node_t *next = side->next_sibling;
        if (!keep_pis || side->kind != XD_DOM_PI)
            dom_remove(side);
        side = next;
    }
}

void dom_link_after(xd_dom_node_t *anchor, xd_dom_node_t *node)
{
    xd_dom_node_t *parent = anchor->parent;
    node->parent = parent;
    node->prev_sibling = anchor;
    node->next_sibling = anchor->next_sibling;
    if (anchor->next_sibling != nullptr)
        anchor->next_sibling->prev_sibling = node;
    anchor->next_sibling = node;
    if (parent != nullptr) {
        const List list = list_of(parent, node);
        if (*list.tail == anchor)
            *list.tail = node;
    }
}

void dom_link_before(xd_dom_node_t *anchor, xd_dom_node_t *node)
{
    xd_dom_node_t *parent = anchor->parent;
    node->parent = parent;
    node->next_sibling = anchor;
    node->prev_sibling = anchor->prev_sibling;
    if (anchor->prev_sibling != nullptr)
        anchor->prev_sibling->next_sibling = node;
    else if (parent != nullptr)
        *list_of(parent, node).head = node;
    anchor->prev_sibling = node;
}

}  // namespace cblxml
