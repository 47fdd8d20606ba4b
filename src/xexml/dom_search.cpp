// Tree search by item descriptor, and the mapping of one node's subtree onto
// an item for sequential reading.
//
// Both walk the tree without recursion (documents may nest deeper than any
// stack) and through xmldom/dom_tree.h only.
#include <cstring>

#include "xexml/idesc_access.h"
#include "xexml/record_map.h"

namespace cblxml::xexml {
namespace {

bool qualifies(const dom::Node *node, const IDESC *item)
{
    return node_matches(node, item) && path_matches(node, item);
}

// The last run whose member was looked for: its start, and the element
// `occurrence` - 1 element steps after it (null: past the end of the list).
struct RunCursor {
    dom::Node *start = nullptr;
    dom::Node *far = nullptr;
};

// The `occurrence`-th element of the run of like siblings in which `found`
// stands (the run starts at its earliest matching element, non-elements
// passed over); null when the run is shorter. Siblings share the parent, so
// the path check of `found` holds for all of them. A later run of the same
// parent starts further on, so the far end of the run before is carried
// along to it instead of walked again from the start: among siblings where
// like runs alternate with other elements the search stays linear.
dom::Node *run_member(dom::Node *found, const IDESC *item, uint32_t occurrence, RunCursor &cursor)
{
    dom::Node *start = found;
    for (dom::Node *p = dom::prev_element_sibling(found); p != nullptr && node_matches(p, item);
         p = dom::prev_element_sibling(p))
        start = p;
    dom::Node *at = nullptr;
    dom::Node *from = cursor.start;
    if (from != nullptr && dom::parent(from) == dom::parent(start)) {
        at = cursor.far;
        while (from != nullptr && from != start) {
            from = dom::next_element_sibling(from);
            if (at != nullptr)
                at = dom::next_element_sibling(at);
        }
    }
    if (from == nullptr || from != start) {
        at = start;
        for (uint32_t step = 1; step < occurrence && at != nullptr; ++step)
            at = dom::next_element_sibling(at);
    }
    cursor = RunCursor{start, at};
    return at != nullptr && node_matches(at, item) ? at : nullptr;
}

dom::Node *search_ordinary(dom::Node *node, const IDESC *item, uint32_t occurrence)
{
    if (!dom::is_element(node) && !dom::is_document(node))
        node = dom::parent(node);
    if (node == nullptr)
        return nullptr;
    dom::Node *root = node;
    dom::Node *at = dom::is_element(node) ? node : dom::first_element_child(node);
    RunCursor cursor;
    while (at != nullptr) {
        if (!qualifies(at, item)) {
            at = dom::next_element_in(at, root, false);
            continue;
        }
        if (occurrence == 0)
            return at;
        if (dom::Node *member = run_member(at, item, occurrence, cursor))
            return member;
        if (at == root)
            return nullptr;
        // Every later element of this run has the same run: passed over
        // with their subtrees.
        while (dom::Node *next = dom::next_element_sibling(at)) {
            if (!node_matches(next, item))
                break;
            at = next;
        }
        at = dom::next_element_in(at, root, true);
    }
    return nullptr;
}

// The attribute of `element` that a holder search with `occurrence` finds;
// `qualified` tells whether any attribute matched at all.
dom::Node *holder_attribute(dom::Node *element, const IDESC *item, uint32_t occurrence,
                            bool &qualified)
{
    const bool wildcard = (DESC_GET(item, flags) & IDESC_NO_NAME) != 0;
    dom::Node *result = nullptr;
    qualified = false;
    for (dom::Node *a = dom::first_attribute(element); a != nullptr;) {
        if (!qualifies(a, item)) {
            a = dom::next_sibling(a);
            continue;
        }
        qualified = true;
        if (occurrence <= 1)
            return a;
        if (wildcard) {
            dom::Node *further = a;
            for (uint32_t step = 1; step < occurrence && further != nullptr; ++step)
                further = dom::next_sibling(further);
            if (further != nullptr && qualifies(further, item)) {
                result = further;  // a later one replaces it
                a = dom::next_sibling(further);
                continue;
            }
        }
        // A named holder takes no attribute past the first occurrence.
        a = dom::next_sibling(a);
    }
    return result;
}

dom::Node *search_holder(dom::Node *node, const IDESC *item, uint32_t occurrence)
{
    if (!dom::is_element(node) && !dom::is_document(node))
        node = dom::parent(node);
    if (node == nullptr)
        return nullptr;
    dom::Node *root = node;
    dom::Node *at = node;
    while (at != nullptr) {
        bool qualified = false;
        dom::Node *found = holder_attribute(at, item, occurrence, qualified);
        if (found != nullptr || (qualified && at == root))
            return found;
        at = dom::next_element_in(at, root, qualified);
    }
    return nullptr;
}

// An attribute node onto an item (sequential reading of an attribute key):
// names and namespaces into the receivers, the value dealt over the others.
void map_attribute_node(MapContext &ctx, dom::Node *attribute, IDESC *item)
{
    DESC_SET(item, subscript, 0u);
    const char *value = dom::value(attribute) != nullptr ? dom::value(attribute) : "";
    const auto length = static_cast<uint32_t>(std::strlen(value));
    IDESC *child = DESC_GET(item, first_child);
    if (child == nullptr) {
        move_value(ctx, item, value, length);
        return;
    }
    uint64_t offset = 0;
    for (; child != nullptr; child = DESC_GET(child, next_sibling)) {
        const uint32_t flags = DESC_GET(child, flags);
        if ((flags & IDESC_GETS_NAME) != 0) {
            move_name(ctx, child, dom::name(attribute), false);
        } else if ((flags & IDESC_GETS_NAMESPACE) != 0) {
            move_name(ctx, child, dom::namespace_uri(attribute), true);
        } else {
            const uint64_t from = offset < length ? offset : length;
            move_value(ctx, child, value + from, static_cast<uint32_t>(length - from));
            offset += DESC_GET(child, length);
        }
    }
}

}  // namespace
}  // namespace cblxml::xexml

extern "C" xd_dom_node_t *kvt_xe_xml_dom_search(xd_dom_node_t *node, IDESC *item, xml_rec_entry_t *,
                                                uint32_t occurrence)
{
    namespace x = cblxml::xexml;
    if (node == nullptr || item == nullptr)
        return nullptr;
    if ((DESC_GET(item, flags) & IDESC_ATTRIBUTES) != 0)
        return x::search_holder(node, item, occurrence);
    return x::search_ordinary(node, item, occurrence);
}

extern "C" void kvt_xe_xml_dom_readnext(xml_rec_entry_t *entry, IDESC *item, xd_dom_node_t *node,
                                        void *dm_handle, uint32_t start)
{
    namespace x = cblxml::xexml;
    namespace dom = cblxml::dom;
    if (entry == nullptr || item == nullptr || node == nullptr)
        return;
    try {
        x::MapContext ctx;
        ctx.entries = entry;
        ctx.entry_count = 1;
        ctx.entry = entry;
        ctx.dm_handle = dm_handle;
        ctx.encoding = dom::strings_encoding(dom::document_of(node));
        const bool holder = (DESC_GET(item, flags) & IDESC_ATTRIBUTES) != 0;
        if (start == 0) {
            // The matching child element whose rank is the item's subscript.
            uint32_t rank = 0;
            const uint32_t want = DESC_GET(item, subscript);
            for (dom::Node *e = dom::first_element_child(node); e != nullptr;
                 e = dom::next_element_sibling(e)) {
                if (x::node_matches(e, item) && ++rank == want) {
                    x::map_element(ctx, e, item);
                    break;
                }
            }
        } else if (dom::is_element(node)) {
            if (!holder && x::node_matches(node, item)) {
                DESC_SET(item, subscript, 1u);
                x::map_element(ctx, node, item);
            }
        } else if (dom::is_attribute(node)) {
            x::map_attribute_node(ctx, node, item);
        }
    } catch (...) {
        // Out of memory while mapping: the record holds what was mapped.
    }
}
