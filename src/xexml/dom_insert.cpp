// kvt_xe_xml_dom_insert: a record item written into the held tree, next to
// the current node or under the nearest node that can hold it.
#include <new>
#include <string>

#include "xexml/idesc_access.h"
#include "xexml/item_text.h"
#include "xexml/record_builder.h"
#include "xexml/record_map.h"
#include "xexml/xml_write.h"
#include "xmldom/dom_tree.h"

namespace cblxml::xexml {
namespace {

constexpr int32_t kOutOfMemory = XMLIO_ST_BAD_OPCODE;

// The position mode is kept unsigned but compared as signed: -1 (after a
// delete) inserts after as 0 does.
bool inserts_after(const xml_doc_anchor_t *anchor)
{
    return static_cast<int32_t>(anchor->position_mode) < 1;
}

void link_beside(const xml_doc_anchor_t *anchor, xd_dom_node_t *current, xd_dom_node_t *node)
{
    if (inserts_after(anchor))
        dom::link_after(current, node);
    else
        dom::link_before(current, node);
}

// One node for `item`: a processing instruction for an item flagged 0x80,
// else the first node the builder makes under a scratch element (the rest
// are freed with the scratch). Null with `failed` set when memory ran out;
// null alone when the item makes no node (a count of 0, an empty name).
xd_dom_node_t *build_one(xmlio_fcb *fcb, xml_rec_entry_t *entry, IDESC *item, bool &failed)
{
    xd_dom_node_t *document = fcb->doc->document;
    if ((DESC_GET(item, flags) & IDESC_GETS_PI) != 0)
        return make_pi_node(document, item_text(entry, item, fcb->dm_handle));
    xd_dom_node_t *scratch = nullptr;
    if (kvt_xe_xml_dom_element_node(document, &scratch, "scratch", nullptr) != 0) {
        failed = true;
        return nullptr;
    }
    bool built = false;
    try {
        built = build_record(fcb, scratch, entry, item);
    } catch (const std::bad_alloc &) {
        built = false;
    }
    xd_dom_node_t *node = scratch->first_child;
    if (built && node != nullptr)
        dom::unlink(node);
    else
        node = nullptr;
    dom::free_tree(scratch);
    failed = !built;
    return node;
}

int32_t insert_item(xmlio_fcb *fcb, xml_rec_entry_t *entry, IDESC *item, bool replacing)
{
    xml_doc_anchor_t *anchor = fcb->doc;
    xd_dom_node_t *current = anchor->current;
    for (IDESC *d = item; d != nullptr; d = DESC_GET(d, parent))
        DESC_SET(d, subscript, 1u);
    if (current->kind == XD_DOM_ATTRIBUTE)
        current = current->parent;
    bool failed = false;
    // The path check covers "the current node's parent matches the item's
    // parent": the new node becomes the current node's sibling.
    if (path_matches(current, item)) {
        xd_dom_node_t *node = build_one(fcb, entry, item, failed);
        if (node == nullptr)
            return failed ? kOutOfMemory : XMLIO_ST_OK;
        link_beside(anchor, current, node);
        anchor->current = node;
        if (!replacing)
            dom::remove_non_text_children(node);
        return XMLIO_ST_OK;
    }
    // Another level: the nearest node, from the item's node (or the current
    // node) upwards, that matches one of the item's ancestors holds the
    // subtree of the ancestor's child on the item's chain.
    xd_dom_node_t *start = kvt_xe_xml_dom_search(current, item, entry, 0);
    if (start == nullptr)
        start = current;
    xd_dom_node_t *parent = nullptr;
    IDESC *build = nullptr;
    for (xd_dom_node_t *n = start; n != nullptr && parent == nullptr; n = n->parent) {
        if (n->kind != XD_DOM_ELEMENT)
            continue;
        IDESC *below = item;
        for (IDESC *up = DESC_GET(item, parent); up != nullptr; up = DESC_GET(up, parent)) {
            if (node_matches(n, up) && path_matches(n, up)) {
                parent = n;
                build = below;
                break;
            }
            below = up;
        }
    }
    if (parent == nullptr)
        return XMLIO_ST_NO_POSITION;
    xd_dom_node_t *node = build_one(fcb, entry, build, failed);
    if (node == nullptr)
        return failed ? kOutOfMemory : XMLIO_ST_OK;
    if (!dom::link_child(parent, node)) {
        dom::free_tree(node);
        return XMLIO_ST_OK;
    }
    xd_dom_node_t *found = kvt_xe_xml_dom_search(node, item, entry, 0);
    // Not found in the new subtree (the item made no node of its own): the
    // subtree's root is the position.
    if (found == nullptr) {
        anchor->current = node;
        return XMLIO_ST_OK;
    }
    if (!replacing)
        dom::remove_non_text_children(found);
    for (xd_dom_node_t *a = found; a != node && a != nullptr; a = a->parent)
        dom::remove_siblings(a, false);
    anchor->current = found;
    return XMLIO_ST_OK;
}

int32_t insert_attribute(xmlio_fcb *fcb, xml_rec_entry_t *entry, IDESC *holder, bool replacing)
{
    xml_doc_anchor_t *anchor = fcb->doc;
    xd_dom_node_t *current = anchor->current;
    if (current->kind != XD_DOM_ATTRIBUTE || !path_matches(current, holder)) {
        IDESC *group = DESC_GET(holder, parent);
        return group != nullptr ? insert_item(fcb, entry, group, replacing) : XMLIO_ST_NO_POSITION;
    }
    // Addresses are taken by subscript: the holder's chain reads its first
    // occurrence, as an ordinary insert does.
    for (IDESC *d = holder; d != nullptr; d = DESC_GET(d, parent))
        DESC_SET(d, subscript, 1u);
    const uint32_t flags = DESC_GET(holder, flags);
    const uint32_t name_width = DESC_GET(holder, name_len);
    const uint32_t ns_width = DESC_GET(holder, namespace_len);
    std::string name, ns, value;
    IDESC *name_field = nullptr;
    IDESC *child = DESC_GET(holder, first_child);
    if (child == nullptr)
        value = item_text(entry, holder, fcb->dm_handle);
    for (; child != nullptr; child = DESC_GET(child, next_sibling)) {
        const uint32_t child_flags = DESC_GET(child, flags);
        if ((child_flags & IDESC_GETS_NAME) != 0) {
            name_field = child;
            name = item_bytes(entry, child, name_width);
            name.resize(trimmed_length(name.data(), name.size(), " ", 1));
        } else if ((child_flags & IDESC_GETS_NAMESPACE) != 0) {
            // The namespace is cut where the trimmed name text would end over
            // namespace_len bytes: the trim measures the name field, on
            // purpose. Without a name field before it, the namespace field
            // measures itself.
            ns = item_bytes(entry, child, ns_width);
            const std::string measured =
                name_field != nullptr ? item_bytes(entry, name_field, ns_width) : ns;
            const size_t cut = trimmed_length(measured.data(), measured.size(), " ", 1);
            if (cut < ns.size())
                ns.resize(cut);
        } else {
            value += item_text(entry, child, fcb->dm_handle);
        }
    }
    if ((flags & IDESC_NO_NAME) == 0)
        name.assign(DESC_GET(holder, name_ptr) != nullptr ? DESC_GET(holder, name_ptr) : "",
                    DESC_GET(holder, name_ptr) != nullptr ? name_width : 0);
    if ((flags & IDESC_NO_NAMESPACE) == 0 && ns_width > 0 &&
        DESC_GET(holder, namespace_ptr) != nullptr)
        ns.assign(DESC_GET(holder, namespace_ptr), ns_width);
    if (name.empty())
        return XMLIO_ST_OK;
    xd_dom_node_t *node = nullptr;
    if (kvt_xe_xml_dom_attr_node(current->owner, &node, name.c_str(), ns.c_str(), value.c_str()) !=
        0)
        return kOutOfMemory;
    link_beside(anchor, current, node);
    anchor->current = node;
    return XMLIO_ST_OK;
}

}  // namespace
}  // namespace cblxml::xexml

extern "C" int32_t kvt_xe_xml_dom_insert(xmlio_fcb *fcb, int32_t replacing)
{
    namespace x = cblxml::xexml;
    if (fcb == nullptr)
        return XMLIO_ST_NOT_OPEN;
    int32_t status = XMLIO_ST_NO_POSITION;
    try {
        xml_rec_entry_t *entry = x::record_entry(fcb, fcb->rec_no);
        // Without a key item the record itself is inserted.
        IDESC *item = fcb->key_item != nullptr ? fcb->key_item
                      : entry != nullptr       ? entry->root
                                               : nullptr;
        if (entry == nullptr || item == nullptr)
            status = XMLIO_ST_NO_MATCH;
        else if (fcb->doc != nullptr && fcb->doc->current != nullptr)
            status = (DESC_GET(item, flags) & IDESC_ATTRIBUTES) != 0
                         ? x::insert_attribute(fcb, entry, item, replacing != 0)
                         : x::insert_item(fcb, entry, item, replacing != 0);
    } catch (const std::bad_alloc &) {
        status = x::kOutOfMemory;
    }
    fcb->status = status;
    return status;
}
