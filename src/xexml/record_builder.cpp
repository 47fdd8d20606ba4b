#include "xexml/record_builder.h"

#include <cstdlib>
#include <cstring>
#include <string>

#include "xexml/idesc_access.h"
#include "xexml/item_text.h"
#include "xmldom/dom_append.h"
#include "xmldom/dom_tree.h"

namespace cblxml::xexml {
namespace {

constexpr char kBlankPiData[] = {' ', '\t', '\n', '\0'};

bool has_flag(const IDESC *item, uint32_t flag) { return (DESC_GET(item, flags) & flag) != 0; }

std::string inline_string(const char *text, uint32_t length)
{
    return text != nullptr ? std::string(text, length) : std::string();
}

// A name or namespace taken from a record field: `width` bytes, trailing
// spaces cut.
std::string field_text(xml_rec_entry_t *entry, IDESC *field, uint32_t width)
{
    // Fields that are not recursed into keep whatever subscript they had;
    // they are read at their first occurrence.
    if (!desc_is_table(field))
        DESC_SET(field, subscript, 1u);
    std::string text = item_bytes(entry, field, width);
    text.resize(trimmed_length(text.data(), text.size(), " ", 1));
    return text;
}

struct Naming {
    std::string name;
    std::string ns;
};

// The name and namespace of an element or attribute item: its own strings,
// or (flags 0x8 / 0x10) the fields of its children flagged 0x20 / 0x40.
Naming naming_of(xml_rec_entry_t *entry, IDESC *item)
{
    Naming naming;
    const uint32_t flags = DESC_GET(item, flags);
    if ((flags & IDESC_NO_NAME) == 0)
        naming.name = inline_string(DESC_GET(item, name_ptr), DESC_GET(item, name_len));
    if ((flags & IDESC_NO_NAMESPACE) == 0)
        naming.ns = inline_string(DESC_GET(item, namespace_ptr), DESC_GET(item, namespace_len));
    if ((flags & (IDESC_NO_NAME | IDESC_NO_NAMESPACE)) == 0)
        return naming;
    for (IDESC *child = DESC_GET(item, first_child); child != nullptr;
         child = DESC_GET(child, next_sibling)) {
        if ((flags & IDESC_NO_NAME) != 0 && has_flag(child, IDESC_GETS_NAME))
            naming.name = field_text(entry, child, DESC_GET(item, name_len));
        if ((flags & IDESC_NO_NAMESPACE) != 0 && has_flag(child, IDESC_GETS_NAMESPACE))
            naming.ns = field_text(entry, child, DESC_GET(item, namespace_len));
    }
    return naming;
}

// Links `node` under `parent`; a node the parent cannot take is freed.
void append(xd_dom_node_t *parent, xd_dom_node_t *node)
{
    // A document node takes elements only, here: anything else is dropped.
    if (parent->kind == XD_DOM_DOCUMENT && node->kind != XD_DOM_ELEMENT) {
        dom::free_tree(node);
        return;
    }
    if (!dom::link_child(parent, node))
        dom::free_tree(node);
}

void add_text(record_builder &builder, xd_dom_node_t *element, const std::string &text)
{
    if (text.empty())
        return;
    xd_dom_node_t *node = nullptr;
    // Blank text makes no node, which the constructor reports as a failure:
    // such an item is written as an empty element.
    if (dom_text_node(builder.document, &node, text.data(), static_cast<uint32_t>(text.size()),
                      0) == 0)
        append(element, node);
}

void add_attributes(record_builder &builder, xml_rec_entry_t *entry, IDESC *holder,
                    xd_dom_node_t *element)
{
    const uint32_t count = kvt_xe_xml_itm_count_max(entry, holder);
    for (uint32_t s = 1; s <= count; ++s) {
        DESC_SET(holder, subscript, s);
        Naming naming = naming_of(entry, holder);
        std::string value;
        IDESC *child = DESC_GET(holder, first_child);
        if (child == nullptr)
            value = item_text(entry, holder, builder.dm_handle);
        for (; child != nullptr; child = DESC_GET(child, next_sibling)) {
            if (has_flag(child, IDESC_GETS_NAME | IDESC_GETS_NAMESPACE))
                continue;
            if (!desc_is_table(child))
                DESC_SET(child, subscript, 1u);
            value += item_text(entry, child, builder.dm_handle);
        }
        if (naming.name.empty())
            continue;
        xd_dom_node_t *node = nullptr;
        if (dom_attr_node(builder.document, &node, naming.name.c_str(), naming.ns.c_str(),
                          value.c_str()) != 0) {
            builder.failed = true;
            continue;
        }
        append(element, node);
    }
    DESC_SET(holder, subscript, 1u);
}

void build_occurrence(record_builder &builder, xml_rec_entry_t *entry, IDESC *item)
{
    const Naming naming = naming_of(entry, item);
    xd_dom_node_t *element = nullptr;
    if (!naming.name.empty()) {
        if (dom_element_node(builder.document, &element, naming.name.c_str(), naming.ns.c_str()) !=
            0) {
            builder.failed = true;
            return;
        }
        for (IDESC *c = DESC_GET(item, first_child); c != nullptr; c = DESC_GET(c, next_sibling)) {
            if (has_flag(c, IDESC_ATTRIBUTES))
                add_attributes(builder, entry, c, element);
        }
        // Linked before its content is built, so that everything made from
        // here on belongs to the tree even when a later step fails.
        append(builder.parent, element);
        if (element->parent == nullptr)
            return;  // dropped
        builder.parent = element;
    }
    IDESC *child = DESC_GET(item, first_child);
    for (; child != nullptr; child = DESC_GET(child, next_sibling)) {
        const uint32_t flags = DESC_GET(child, flags);
        if ((flags & IDESC_GETS_PI) != 0) {
            if (element == nullptr)
                continue;
            if (!desc_is_table(child))
                DESC_SET(child, subscript, 1u);
            if (xd_dom_node_t *pi =
                    make_pi_node(builder.document, item_text(entry, child, builder.dm_handle)))
                append(element, pi);
        } else if ((flags & (IDESC_ATTRIBUTES | IDESC_GETS_NAME | IDESC_GETS_NAMESPACE)) != 0) {
            continue;
        } else if (DESC_GET(child, name_len) == 0 && (flags & IDESC_NO_NAME) == 0) {
            // Unnamed: the element's content, first occurrence only.
            if (element == nullptr)
                continue;
            DESC_SET(child, subscript, 1u);
            add_text(builder, element, item_text(entry, child, builder.dm_handle));
        } else {
            build_item(builder, entry, child);
        }
    }
    if (element == nullptr)
        return;
    // An item without subordinate items is elementary: its own value is the
    // content. Skipped children (attributes, name fields) count as items, so
    // a group of attributes alone is an empty element.
    if (DESC_GET(item, first_child) == nullptr)
        add_text(builder, element, item_text(entry, item, builder.dm_handle));
    builder.parent = element->parent;
}

}  // namespace

xd_dom_node_t *make_pi_node(void *owner, const std::string &text)
{
    // A blank text (an item of spaces) makes no instruction.
    const size_t length = trimmed_length(text.data(), text.size(), kBlankPiData, 4);
    if (length == 0)
        return nullptr;
    size_t space = text.find(' ');
    if (space == std::string::npos || space > length)
        space = length;
    const size_t rest = space < length ? space + 1 : length;
    char *target = strndup(text.c_str(), space);
    char *data = nullptr;
    if (rest < length)
        data = strndup(text.c_str() + rest, text.size() - rest);
    xd_dom_node_t *node = nullptr;
    if (target == nullptr || (rest < length && data == nullptr) ||
        kvt_xe_xml_dom_pi_node(owner, &node, target, data) != 0) {
        std::free(target);
        std::free(data);
        return nullptr;
    }
    return node;
}

void build_item(record_builder &builder, xml_rec_entry_t *entry, IDESC *item)
{
    const uint32_t count = kvt_xe_xml_itm_count_max(entry, item);
    for (uint32_t s = 1; s <= count; ++s) {
        DESC_SET(item, subscript, s);
        build_occurrence(builder, entry, item);
    }
    DESC_SET(item, subscript, 1u);
}

}  // namespace cblxml::xexml
