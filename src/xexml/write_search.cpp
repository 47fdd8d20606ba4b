#include "xexml/write_search.h"

#include <cstring>

#include "xexml/idesc_access.h"

namespace cblxml::xexml::wsearch {
namespace {

bool element_or_attribute(const xd_dom_node_t *node)
{
    return node->kind == XD_DOM_ELEMENT || node->kind == XD_DOM_ATTRIBUTE;
}

bool qualifies(const xd_dom_node_t *node, const IDESC *item)
{
    return node_matches(node, item) && path_matches(node, item);
}

xd_dom_node_t *next_element(xd_dom_node_t *node)
{
    for (node = node->next_sibling; node != nullptr; node = node->next_sibling) {
        if (node->kind == XD_DOM_ELEMENT)
            return node;
    }
    return nullptr;
}

// The n-th (1-based) element of the run of qualifying siblings `found`
// stands in, or null.
xd_dom_node_t *nth_of_run(xd_dom_node_t *found, const IDESC *item, uint32_t occurrence)
{
    xd_dom_node_t *start = found;
    for (xd_dom_node_t *p = found->prev_sibling; p != nullptr; p = p->prev_sibling) {
        if (p->kind != XD_DOM_ELEMENT)
            continue;
        if (!qualifies(p, item))
            break;
        start = p;
    }
    for (uint32_t i = 1; i < occurrence && start != nullptr; ++i)
        start = next_element(start);
    return start != nullptr && qualifies(start, item) ? start : nullptr;
}

xd_dom_node_t *search_element(xd_dom_node_t *top, const IDESC *item, uint32_t occurrence)
{
    // Depth first over the elements under `top`; a qualifying element ends
    // the descent into it, whatever its occurrence gives.
    xd_dom_node_t *node = top;
    while (node != nullptr) {
        bool descend = true;
        if (node->kind == XD_DOM_ELEMENT && qualifies(node, item)) {
            xd_dom_node_t *result = occurrence == 0 ? node : nth_of_run(node, item, occurrence);
            if (result != nullptr)
                return result;
            descend = false;
        }
        if (descend && node->first_child != nullptr) {
            node = node->first_child;
            continue;
        }
        while (node != top && node->next_sibling == nullptr)
            node = node->parent;
        if (node == top)
            return nullptr;
        node = node->next_sibling;
    }
    return nullptr;
}

xd_dom_node_t *attributes_of(xd_dom_node_t *element, const IDESC *item, uint32_t occurrence)
{
    xd_dom_node_t *result = nullptr;
    const bool named = (DESC_GET(item, flags) & IDESC_NO_NAME) == 0;
    for (xd_dom_node_t *a = element->first_attribute; a != nullptr;) {
        if (!qualifies(a, item)) {
            a = a->next_sibling;
            continue;
        }
        if (occurrence <= 1)
            return a;
        if (named) {
            a = a->next_sibling;
            continue;
        }
        xd_dom_node_t *b = a;
        for (uint32_t i = 1; i < occurrence && b != nullptr; ++i)
            b = b->next_sibling;
        if (b != nullptr && qualifies(b, item)) {
            result = b;
            a = b->next_sibling;
        } else {
            a = a->next_sibling;
        }
    }
    return result;
}

xd_dom_node_t *search_holder(xd_dom_node_t *node, const IDESC *item, uint32_t occurrence)
{
    if (node->kind != XD_DOM_ELEMENT)
        node = node->parent;
    if (node == nullptr)
        return nullptr;
    // Only element children are searched: a text child would lead back to
    // this same element.
    xd_dom_node_t *top = node;
    while (node != nullptr) {
        if (node->kind == XD_DOM_ELEMENT) {
            if (xd_dom_node_t *found = attributes_of(node, item, occurrence))
                return found;
        }
        if (node->first_child != nullptr) {
            node = node->first_child;
            continue;
        }
        while (node != top && node->next_sibling == nullptr)
            node = node->parent;
        if (node == top)
            return nullptr;
        node = node->next_sibling;
    }
    return nullptr;
}

}  // namespace

bool node_matches(const xd_dom_node_t *node, const IDESC *item)
{
    if (node == nullptr || item == nullptr || !element_or_attribute(node))
        return false;
    const uint32_t flags = DESC_GET(item, flags);
    if ((flags & IDESC_NO_NAME) == 0) {
        const uint32_t length = DESC_GET(item, name_len);
        const char *name = DESC_GET(item, name_ptr);
        if (node->name == nullptr || std::strlen(node->name) != length ||
            (length > 0 && (name == nullptr || std::memcmp(node->name, name, length) != 0)))
            return false;
    }
    const uint32_t ns_length = DESC_GET(item, namespace_len);
    if ((flags & IDESC_NO_NAMESPACE) != 0 || ns_length == 0)
        return true;
    const char *ns = DESC_GET(item, namespace_ptr);
    return node->namespace_uri != nullptr && ns != nullptr &&
           std::strlen(node->namespace_uri) >= ns_length &&
           std::memcmp(node->namespace_uri, ns, ns_length) == 0;
}

bool path_matches(const xd_dom_node_t *node, const IDESC *item)
{
    const xd_dom_node_t *up = node->parent;
    const IDESC *desc = DESC_GET(item, parent);
    for (;;) {
        if (up == nullptr || up->kind == XD_DOM_DOCUMENT)
            return desc == nullptr;
        if (desc == nullptr || !node_matches(up, desc))
            return false;
        up = up->parent;
        desc = DESC_GET(desc, parent);
    }
}

xd_dom_node_t *search(xd_dom_node_t *node, const IDESC *item, uint32_t occurrence)
{
    if (node == nullptr || item == nullptr)
        return nullptr;
    if ((DESC_GET(item, flags) & IDESC_ATTRIBUTES) != 0)
        return search_holder(node, item, occurrence);
    if (node->kind != XD_DOM_ELEMENT)
        node = node->parent;
    if (node == nullptr)
        return nullptr;
    if (node->kind == XD_DOM_DOCUMENT) {
        for (xd_dom_node_t *child = node->first_child; child != nullptr;
             child = child->next_sibling) {
            if (child->kind != XD_DOM_ELEMENT)
                continue;
            if (xd_dom_node_t *found = search_element(child, item, occurrence))
                return found;
        }
        return nullptr;
    }
    return search_element(node, item, occurrence);
}

}  // namespace cblxml::xexml::wsearch
