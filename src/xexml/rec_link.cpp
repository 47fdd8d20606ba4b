// Record linkage: turns a compiled descriptor sequence into a tree (parent,
// sibling and child pointers), locates each descriptor's inline strings and
// numbers the count slots.
//
// The record entry's descriptor count bounds the walk: no descriptor past the
// count is ever read, whatever the level numbers say. Fields are read and
// written with memcpy (MISALIGNED DESCRIPTOR, see idesc_access.h).
#include "xexml/idesc_access.h"

namespace cblxml::xexml {
namespace {

// The walk over one record's sequence. `frontier` is the furthest descriptor
// reached; only it may step to a new one, and only while `budget` lasts. A
// next_desc found in a descriptor behind the frontier was written by this
// walk; one found in the compiled image is ignored, so a stale pointer there
// cannot lead the walk past the count.
struct Walk {
    IDESC *frontier;
    uint32_t budget;
};

unsigned char *bytes(IDESC *desc) { return reinterpret_cast<unsigned char *>(desc); }

// Fills the descriptor's string pointers and returns the address just past
// its last string, which is where the next descriptor starts. Done for every
// descriptor reached, the last of the record included: its strings lie
// inside it, whether or not the count allows a next descriptor.
unsigned char *locate_strings(IDESC *desc)
{
    unsigned char *pos = bytes(desc) + desc_head_size(desc);
    const uint32_t flags = DESC_GET(desc, flags);
    const uint32_t name_len = DESC_GET(desc, name_len);
    const uint32_t namespace_len = DESC_GET(desc, namespace_len);
    const uint32_t third_len = DESC_GET(desc, third_len);
    if ((flags & IDESC_NO_NAME) == 0 && name_len > 0) {
        DESC_SET(desc, name_ptr, reinterpret_cast<const char *>(pos));
        pos += desc_padded(name_len);
    }
    if ((flags & IDESC_NO_NAMESPACE) == 0 && namespace_len > 0) {
        DESC_SET(desc, namespace_ptr, reinterpret_cast<const char *>(pos));
        pos += desc_padded(namespace_len);
    }
    if (third_len > 0) {
        DESC_SET(desc, third_ptr, reinterpret_cast<const char *>(pos));
        pos += desc_padded(third_len);
    }
    return pos;
}

// The descriptor after `desc`, or null when the count allows no more.
IDESC *next_desc(IDESC *desc, Walk &walk)
{
    if (desc != walk.frontier)
        return DESC_GET(desc, next_desc);
    unsigned char *end = locate_strings(desc);
    if (walk.budget == 0) {
        DESC_SET(desc, next_desc, static_cast<IDESC *>(nullptr));
        return nullptr;
    }
    auto *next = reinterpret_cast<IDESC *>(end);
    DESC_SET(desc, next_desc, next);
    DESC_SET(next, prev_desc, desc);
    // The spans are sums that linkage builds; start them from zero whatever
    // the compiled image holds.
    DESC_SET(next, slot_span, 0u);
    --walk.budget;
    walk.frontier = next;
    return next;
}

// Slots under one occurrence of `item` plus its own: what a sibling after it
// skips. Saturates rather than wrapping on absurd OCCURS values.
uint64_t slots_taken(const IDESC *item)
{
    const uint64_t span = DESC_GET(item, slot_span);
    const uint32_t occurs = DESC_GET(item, occurs_max);
    return 1 + span * (occurs != 0 ? occurs : 1);
}

constexpr uint64_t kSlotLimit = 0xFFFFFFFEu;

uint32_t saturate(uint64_t value)
{
    return static_cast<uint32_t>(value > kSlotLimit ? kSlotLimit : value);
}

void add_span(IDESC *group, const IDESC *child)
{
    DESC_SET(group, slot_span, saturate(DESC_GET(group, slot_span) + slots_taken(child)));
}

// Links the items under `group` and returns the last descriptor consumed.
// The recursion goes one level deeper only for a descriptor whose level is
// greater than that of the item it follows, so its depth is bounded by the
// 256 level values whatever the sequence.
IDESC *link_group(IDESC *group, Walk &walk)
{
    IDESC *child = next_desc(group, walk);
    if (child == nullptr)
        return group;
    DESC_SET(group, first_child, child);
    DESC_SET(group, last_child, child);
    DESC_SET(child, parent, group);
    DESC_SET(child, count_slot, DESC_GET(group, count_slot) + 1);
    IDESC *last = child;
    for (;;) {
        IDESC *desc = next_desc(last, walk);
        if (desc == nullptr)
            break;
        const uint8_t level = DESC_GET(desc, level);
        const uint8_t child_level = DESC_GET(child, level);
        if (level < child_level) {
            // `desc` closes the group; the caller sees it again as the
            // descriptor after `last`.
            add_span(group, child);
            return last;
        }
        if (level != child_level) {
            DESC_SET(desc, count_slot, DESC_GET(child, count_slot) + 1);
            last = link_group(child, walk);
            continue;
        }
        add_span(group, child);
        DESC_SET(group, last_child, desc);
        DESC_SET(desc, parent, group);
        DESC_SET(desc, prev_sibling, child);
        DESC_SET(desc, count_slot, saturate(DESC_GET(child, count_slot) + slots_taken(child)));
        DESC_SET(child, next_sibling, desc);
        last = child = desc;
    }
    add_span(group, child);
    return last;
}

void link_entry(xml_rec_entry_t &entry)
{
    entry.link_flags |= XML_REC_LINKED;
    IDESC *root = entry.root;
    if (root == nullptr) {
        entry.last_desc = nullptr;
        return;
    }
    // A count of 0 would underflow the budget and let the walk run on without
    // bound; the record is then taken as its root alone, like a count of 1
    // (the root pointer says that one descriptor exists).
    Walk walk{root, entry.desc_count == 0 ? 0u : entry.desc_count - 1};
    DESC_SET(root, count_slot, 0u);
    DESC_SET(root, slot_span, 0u);
    entry.last_desc = link_group(root, walk);
}

}  // namespace
}  // namespace cblxml::xexml

extern "C" void kvt_xe_xml_rec_link(xml_rec_entry_t *entries, uint32_t n)
{
    if (entries == nullptr)
        return;
    for (uint32_t i = 0; i < n; ++i) {
        if ((entries[i].link_flags & XML_REC_LINKED) == 0)
            cblxml::xexml::link_entry(entries[i]);
    }
}
