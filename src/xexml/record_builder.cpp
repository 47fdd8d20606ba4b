#include "xexml/record_builder.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "xexml/idesc_access.h"
#include "xexml/item_text.h"
#include "xmldom/dom_append.h"
#include "xmldom/dom_tree.h"

namespace cblxml::xexml {
namespace {

constexpr char kBlankPiData[] = {' ', '\t', '\n', '\0'};

bool has_flag(const IDESC *item, uint32_t flag) { return (DESC_GET(item, flags) & flag) != 0; }

std::string_view inline_view(const char *text, uint32_t length)
{
    return text != nullptr ? std::string_view(text, length) : std::string_view();
}

// A name or namespace taken from a record field into `text`: `width` bytes,
// trailing spaces cut.
void field_text(xml_rec_entry_t *entry, IDESC *field, uint32_t width, std::string &text)
{
    // Fields that are not recursed into keep whatever subscript they had;
    // they are read at their first occurrence.
    if (!desc_is_table(field))
        DESC_SET(field, subscript, 1u);
    text = item_bytes(entry, field, width);
    text.resize(trimmed_length(text.data(), text.size(), " ", 1));
}

// The name and namespace of an element or attribute: views of the item's
// own strings, or of the two strings here when they come from fields.
struct Naming {
    Naming() = default;
    Naming(const Naming &) = delete;
    Naming &operator=(const Naming &) = delete;

    std::string_view name;
    std::string_view ns;
    std::string name_field;
    std::string ns_field;
};

// The name and namespace of an element or attribute item: its own strings,
// or (flags 0x8 / 0x10) the fields of its children flagged 0x20 / 0x40.
void naming_of(xml_rec_entry_t *entry, IDESC *item, Naming &naming)
{
    const uint32_t flags = DESC_GET(item, flags);
    naming.name = {};
    naming.ns = {};
    if ((flags & IDESC_NO_NAME) == 0)
        naming.name = inline_view(DESC_GET(item, name_ptr), DESC_GET(item, name_len));
    if ((flags & IDESC_NO_NAMESPACE) == 0)
        naming.ns = inline_view(DESC_GET(item, namespace_ptr), DESC_GET(item, namespace_len));
    if ((flags & (IDESC_NO_NAME | IDESC_NO_NAMESPACE)) == 0)
        return;
    for (IDESC *child = DESC_GET(item, first_child); child != nullptr;
         child = DESC_GET(child, next_sibling)) {
        if ((flags & IDESC_NO_NAME) != 0 && has_flag(child, IDESC_GETS_NAME)) {
            field_text(entry, child, DESC_GET(item, name_len), naming.name_field);
            naming.name = naming.name_field;
        }
        if ((flags & IDESC_NO_NAMESPACE) != 0 && has_flag(child, IDESC_GETS_NAMESPACE)) {
            field_text(entry, child, DESC_GET(item, namespace_len), naming.ns_field);
            naming.ns = naming.ns_field;
        }
    }
}

// The document's shared copies of the name and namespace (cut at a NUL, as
// C strings are); false when the document keeps none (it is not a document
// node) or memory ran out: the node is then made from copies of the strings.
bool shared_naming(const record_builder &builder, const Naming &naming, const char *&name,
                   const char *&ns)
{
    name = dom_shared_bytes(builder.document, naming.name.data(), naming.name.size());
    ns = naming.ns.empty() ? ""
                           : dom_shared_bytes(builder.document, naming.ns.data(), naming.ns.size());
    return name != nullptr && ns != nullptr;
}

int make_element(const record_builder &builder, const Naming &naming, xd_dom_node_t **out)
{
    const char *name = nullptr;
    const char *ns = nullptr;
    if (shared_naming(builder, naming, name, ns))
        return dom_element_node_named(builder.document, out, name, ns);
    return dom_element_node(builder.document, out, std::string(naming.name).c_str(),
                            std::string(naming.ns).c_str());
}

// An attribute's value ends at its first NUL, as a C string does.
int make_attribute(const record_builder &builder, const Naming &naming, const std::string &value,
                   xd_dom_node_t **out)
{
    const char *name = nullptr;
    const char *ns = nullptr;
    if (shared_naming(builder, naming, name, ns))
        return dom_attr_node_named(builder.document, out, name, ns, value.c_str(),
                                   std::strlen(value.c_str()));
    return dom_attr_node(builder.document, out, std::string(naming.name).c_str(),
                         std::string(naming.ns).c_str(), value.c_str());
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
        Naming naming;
        naming_of(entry, holder, naming);
        std::string &value = builder.text;
        value.clear();
        IDESC *child = DESC_GET(holder, first_child);
        if (child == nullptr)
            append_item_text(value, entry, holder, builder.dm_handle);
        for (; child != nullptr; child = DESC_GET(child, next_sibling)) {
            if (has_flag(child, IDESC_GETS_NAME | IDESC_GETS_NAMESPACE))
                continue;
            if (!desc_is_table(child))
                DESC_SET(child, subscript, 1u);
            append_item_text(value, entry, child, builder.dm_handle);
        }
        if (naming.name.empty())
            continue;
        xd_dom_node_t *node = nullptr;
        if (make_attribute(builder, naming, value, &node) != 0) {
            builder.failed = true;
            continue;
        }
        append(element, node);
    }
    DESC_SET(holder, subscript, 1u);
}

void build_occurrence(record_builder &builder, xml_rec_entry_t *entry, IDESC *item)
{
    Naming naming;
    naming_of(entry, item, naming);
    xd_dom_node_t *element = nullptr;
    if (!naming.name.empty()) {
        if (make_element(builder, naming, &element) != 0) {
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
            add_text(builder, element, builder.item_text(entry, child));
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
        add_text(builder, element, builder.item_text(entry, item));
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

const std::string &record_builder::item_text(xml_rec_entry_t *entry, IDESC *item)
{
    text.clear();
    append_item_text(text, entry, item, dm_handle);
    return text;
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
