// The read side's mapping of a document tree onto a record layout.
//
// Linear in the size of the document: the n-th child element that matches an
// item is found by one pass over the children for all n together, never by a
// fresh scan from the first child for each n.
#include <cstring>
#include <string>

#include "xexml/idesc_access.h"
#include "xexml/record_map.h"

namespace cblxml::xexml {
namespace {

uint32_t flags_of(const IDESC *item) { return DESC_GET(item, flags); }
bool named(const IDESC *item) { return DESC_GET(item, name_len) > 0; }
bool is_holder(const IDESC *item) { return (flags_of(item) & IDESC_ATTRIBUTES) != 0; }
uint32_t occurrences(const IDESC *item)
{
    const uint32_t max = DESC_GET(item, occurs_max);
    return max != 0 ? max : 1;
}
constexpr uint32_t kReceives = IDESC_GETS_NAME | IDESC_GETS_NAMESPACE;

// An item that looks for a subordinate element of its own name. A name or
// namespace receiver takes its field width from its own name_len or
// namespace_len, so it may carry a name length without a name (flag 0x8):
// it stays a receiver and is never taken for an element to look for.
bool seeks_elements(const IDESC *item)
{
    return named(item) && (flags_of(item) & (IDESC_ATTRIBUTES | kReceives)) == 0;
}

bool is_blank_byte(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\0'; }

bool blank_text(const char *text)
{
    for (; *text != '\0'; ++text) {
        if (*text != ' ' && *text != '\n' && *text != '\t')
            return false;
    }
    return true;
}

// The text of the element's text nodes from `at` up to the next processing
// instruction (returned in `pi`, null at the end), blank nodes left out and
// leading blanks dropped.
std::string text_segment(dom::Node *at, dom::Node *&pi)
{
    std::string text;
    pi = nullptr;
    for (; at != nullptr; at = dom::next_sibling(at)) {
        if (dom::kind(at) == XD_DOM_PI) {
            pi = at;
            break;
        }
        if (dom::kind(at) == XD_DOM_TEXT && dom::value(at) != nullptr &&
            !blank_text(dom::value(at)))
            text += dom::value(at);
    }
    size_t lead = 0;
    while (lead < text.size() && is_blank_byte(text[lead]))
        ++lead;
    return text.substr(lead);
}

// Target, one space and data.
std::string pi_text(const dom::Node *pi)
{
    std::string text = dom::name(pi) != nullptr ? dom::name(pi) : "";
    text += ' ';
    if (dom::value(pi) != nullptr)
        text += dom::value(pi);
    return text;
}

// A run of content receivers: unnamed items with no receiver or PI flag.
bool in_content_run(const IDESC *item)
{
    return !named(item) && (flags_of(item) & (kReceives | IDESC_GETS_PI)) == 0;
}

// The element's content into `receiver` and, segment by segment, the runs of
// items after it; each processing instruction goes to the next PI item.
void map_contents(MapContext &ctx, dom::Node *element, IDESC *receiver, bool whole)
{
    dom::Node *at = dom::first_child(element);
    IDESC *item = receiver;
    while (item != nullptr) {
        dom::Node *pi = nullptr;
        const std::string text = text_segment(at, pi);
        const auto length = static_cast<uint32_t>(text.size());
        if (whole || named(item)) {
            move_value(ctx, item, text.data(), length);
            return;
        }
        // Dealt over the run, each item from the running offset; attribute
        // holders are passed over. An offset equal to the text's length
        // still deals an empty text; dealing stops once it is past.
        uint64_t offset = 0;
        for (; item != nullptr && in_content_run(item); item = DESC_GET(item, next_sibling)) {
            if (is_holder(item))
                continue;
            if (offset > length)
                break;
            move_value(ctx, item, text.data() + offset, static_cast<uint32_t>(length - offset));
            offset += DESC_GET(item, length);
        }
        // The rest of the run is passed over, then the next PI item found.
        while (item != nullptr && in_content_run(item) && !is_holder(item))
            item = DESC_GET(item, next_sibling);
        while (item != nullptr && (flags_of(item) & IDESC_GETS_PI) == 0)
            item = DESC_GET(item, next_sibling);
        if (pi == nullptr || item == nullptr)
            return;
        const std::string target_data = pi_text(pi);
        move_value(ctx, item, target_data.data(), static_cast<uint32_t>(target_data.size()));
        item = DESC_GET(item, next_sibling);
        at = dom::next_sibling(pi);
    }
}

// One attribute into the holder that receives it: the value dealt over the
// holder's children (or into the holder), names and namespaces into the
// receivers of a wildcard holder; then the holder's count.
void map_attribute_into(MapContext &ctx, dom::Node *attribute, IDESC *holder)
{
    const char *value = dom::value(attribute) != nullptr ? dom::value(attribute) : "";
    const auto length = static_cast<uint32_t>(std::strlen(value));
    IDESC *child = DESC_GET(holder, first_child);
    if (child == nullptr) {
        move_value(ctx, holder, value, length);
    } else {
        const bool wildcard = (flags_of(holder) & IDESC_NO_NAME) != 0;
        uint64_t offset = 0;
        for (; child != nullptr; child = DESC_GET(child, next_sibling)) {
            const uint32_t flags = flags_of(child);
            if ((flags & kReceives) == 0) {
                // Past the value's end the child is dealt an empty text.
                const uint64_t from = offset < length ? offset : length;
                move_value(ctx, child, value + from, static_cast<uint32_t>(length - from));
                offset += DESC_GET(child, length);
            } else if (wildcard && (flags & IDESC_GETS_NAME) != 0) {
                move_name(ctx, child, dom::name(attribute), false);
            } else if (wildcard && (flags & IDESC_GETS_NAMESPACE) != 0) {
                move_name(ctx, child, dom::namespace_uri(attribute), true);
            }
        }
    }
    kvt_xe_xml_itm_count_add(ctx.entry, holder, 1);
}

// Every attribute of the element to a named holder of the run that matches
// it, or else, as the k-th unmatched attribute, to the k-th position of the
// run's wildcard holders whose namespace matches.
void map_attributes(MapContext &ctx, dom::Node *element, IDESC *first_holder)
{
    uint32_t unmatched = 0;
    for (dom::Node *a = dom::first_attribute(element); a != nullptr; a = dom::next_sibling(a)) {
        IDESC *receiver = nullptr;
        for (IDESC *h = first_holder;
             h != nullptr && is_holder(h) && (flags_of(h) & IDESC_NO_NAME) == 0;
             h = DESC_GET(h, next_sibling)) {
            if (node_matches(a, h)) {
                receiver = h;
                break;
            }
        }
        if (receiver == nullptr) {
            const uint32_t k = ++unmatched;
            uint32_t position = 0;
            for (IDESC *h = first_holder; h != nullptr && is_holder(h) && receiver == nullptr;
                 h = DESC_GET(h, next_sibling)) {
                if ((flags_of(h) & IDESC_NO_NAME) == 0 || !node_matches(a, h))
                    continue;
                const uint32_t places = occurrences(h);
                if (k - position <= places) {
                    DESC_SET(h, subscript, k - position);
                    receiver = h;
                } else {
                    DESC_SET(h, subscript, places);
                    position += places;
                }
            }
        }
        if (receiver != nullptr)
            map_attribute_into(ctx, a, receiver);
    }
}

// The child elements of `element` that match `child`, in order, onto its
// occurrences 1 to its maximum; true when any was mapped.
bool map_occurrences(MapContext &ctx, dom::Node *element, IDESC *child)
{
    const uint32_t max = occurrences(child);
    uint32_t subscript = 0;
    for (dom::Node *e = dom::first_element_child(element); e != nullptr && subscript < max;
         e = dom::next_element_sibling(e)) {
        if (!node_matches(e, child))
            continue;
        DESC_SET(child, subscript, ++subscript);
        map_element(ctx, e, child);
    }
    return subscript > 0;
}

}  // namespace

bool node_matches(const dom::Node *node, const IDESC *item)
{
    // Only elements and attributes stand for items: a processing instruction
    // or text node never matches, whatever its name.
    if (!dom::is_element(node) && !dom::is_attribute(node))
        return false;
    const uint32_t flags = flags_of(item);
    if ((flags & IDESC_NO_NAME) == 0) {
        const char *name = dom::name(node);
        const uint32_t name_len = DESC_GET(item, name_len);
        const char *want = DESC_GET(item, name_ptr);
        if (name == nullptr || want == nullptr || std::strlen(name) != name_len ||
            std::memcmp(name, want, name_len) != 0)
            return false;
    }
    const uint32_t ns_len = DESC_GET(item, namespace_len);
    if ((flags & IDESC_NO_NAMESPACE) != 0 || ns_len == 0)
        return true;
    const char *uri = dom::namespace_uri(node);
    const char *want = DESC_GET(item, namespace_ptr);
    return uri != nullptr && want != nullptr && std::strlen(uri) >= ns_len &&
           std::memcmp(uri, want, ns_len) == 0;
}

bool path_matches(const dom::Node *node, const IDESC *item)
{
    const dom::Node *n = dom::parent(node);
    const IDESC *d = DESC_GET(item, parent);
    for (int steps = 0; steps < kMaxDepth; ++steps) {
        const bool at_document = n == nullptr || dom::is_document(n);
        if (at_document || d == nullptr)
            return at_document && d == nullptr;
        if (!node_matches(n, d))
            return false;
        n = dom::parent(n);
        d = DESC_GET(d, parent);
    }
    return false;
}

bool map_root(MapContext &ctx, dom::Node *element)
{
    for (uint32_t i = 0; i < ctx.entry_count; ++i) {
        IDESC *root = ctx.entries[i].root;
        if (root == nullptr || !node_matches(element, root))
            continue;
        ctx.entry = &ctx.entries[i];
        ctx.record_number = i + 1;
        kvt_xe_xml_rec_reset_zeroes(ctx.entries, ctx.entry_count);
        DESC_SET(root, subscript, 1u);
        map_element(ctx, element, root);
        return true;
    }
    return false;
}

void map_element(MapContext &ctx, dom::Node *element, IDESC *item)
{
    bool mapped_named = false;
    IDESC *first = DESC_GET(item, first_child);
    for (IDESC *c = first; c != nullptr; c = DESC_GET(c, next_sibling)) {
        const uint32_t flags = flags_of(c);
        if (seeks_elements(c))
            mapped_named = map_occurrences(ctx, element, c) || mapped_named;
        else if ((flags & IDESC_GETS_NAME) != 0 && dom::name(element) != nullptr)
            move_name(ctx, c, dom::name(element), false);
        else if ((flags & IDESC_GETS_NAMESPACE) != 0 && dom::namespace_uri(element) != nullptr)
            move_name(ctx, c, dom::namespace_uri(element), true);
    }
    if (first == nullptr) {
        // An item without subordinates takes the whole content itself; its
        // siblings belong to other elements and are never dealt into.
        map_contents(ctx, element, item, true);
    } else {
        IDESC *holder = nullptr;
        IDESC *receiver = nullptr;
        for (IDESC *c = first; c != nullptr; c = DESC_GET(c, next_sibling)) {
            if (holder == nullptr && is_holder(c))
                holder = c;
            if (receiver == nullptr && !named(c) && (flags_of(c) & kReceives) == 0)
                receiver = c;
        }
        if (holder != nullptr)
            map_attributes(ctx, element, holder);
        if (receiver != nullptr) {
            DESC_SET(receiver, subscript, 0u);
            map_contents(ctx, element, receiver, false);
        }
    }
    kvt_xe_xml_itm_count_add(ctx.entry, item, 1);
    if (!mapped_named)
        ctx.last_mapped = element;
}

}  // namespace cblxml::xexml
