// OCCURS counts and item addresses of a linked record.
//
// Every index is checked: a count slot outside the record's count array or an
// item address past the record's length is never produced. Fields are read
// with memcpy (MISALIGNED DESCRIPTOR, see idesc_access.h).
#include <array>

#include "xexml/idesc_access.h"

namespace cblxml::xexml {
namespace {

constexpr uint64_t kNoSlot = ~uint64_t{0};

// Slots in the entry's count array: the root's span plus its own slot.
uint64_t slot_count(const xml_rec_entry_t *entry)
{
    if (entry == nullptr || entry->root == nullptr || entry->counts == nullptr)
        return 0;
    return uint64_t{DESC_GET(entry->root, slot_span)} + 1;
}

// A subscript of 0 (not set yet) is read as the first occurrence rather than
// wrapping to occurrence 2^32.
uint32_t subscript_index(const IDESC *desc)
{
    const uint32_t subscript = DESC_GET(desc, subscript);
    return subscript == 0 ? 0 : subscript - 1;
}

enum class Lookup {
    kByCount,
    kBySubscript
};

// The index of the item's count slot. By count (mode 0): the current count of
// each enclosing table selects its occurrence; by subscript (mode 1): its
// subscript. Enclosing tables are taken outermost first, each with a level
// greater than the one before. kNoSlot when an occurrence lies outside its
// table or the slot outside the array.
uint64_t slot_index(const xml_rec_entry_t *entry, const IDESC *item, Lookup mode)
{
    const uint64_t slots = slot_count(entry);
    if (item == nullptr || slots == 0)
        return kNoSlot;
    std::array<const IDESC *, kMaxDepth> tables;
    size_t depth = 0;
    const IDESC *up = DESC_GET(item, parent);
    for (int steps = 0; up != nullptr && steps < kMaxDepth; ++steps) {
        if (desc_is_table(up))
            tables[depth++] = up;
        up = DESC_GET(up, parent);
    }
    uint64_t base = 0;
    int last_level = 0;
    for (;;) {
        const IDESC *table = nullptr;
        for (size_t i = depth; i-- > 0;) {
            if (DESC_GET(tables[i], level) > last_level) {
                table = tables[i];
                break;
            }
        }
        if (table == nullptr)
            break;
        last_level = DESC_GET(table, level);
        uint32_t k;
        if (mode == Lookup::kBySubscript) {
            k = subscript_index(table);
        } else {
            const uint64_t own = base + DESC_GET(table, count_slot);
            if (own >= slots)
                return kNoSlot;
            k = entry->counts[own];
            if (k == XML_COUNT_NONE)
                continue;
        }
        if (k >= DESC_GET(table, occurs_max))
            return kNoSlot;
        base += uint64_t{DESC_GET(table, slot_span)} * k;
    }
    const uint64_t slot = base + DESC_GET(item, count_slot);
    return slot < slots ? slot : kNoSlot;
}

uint32_t maximum_or_one(const IDESC *item)
{
    const uint32_t occurs = DESC_GET(item, occurs_max);
    return occurs != 0 ? occurs : 1;
}

void fill_counts(xml_rec_entry_t *entry, uint32_t value)
{
    const uint64_t slots = slot_count(entry);
    for (uint64_t i = 0; i < slots; ++i)
        entry->counts[i] = value;
}

}  // namespace
}  // namespace cblxml::xexml

using namespace cblxml::xexml;

extern "C" uint32_t *kvt_xe_xml_itm_countadd_get(xml_rec_entry_t *entry, IDESC *item)
{
    const uint64_t slot = slot_index(entry, item, Lookup::kByCount);
    return slot == kNoSlot ? nullptr : &entry->counts[slot];
}

extern "C" uint32_t kvt_xe_xml_itm_count_get(xml_rec_entry_t *entry, IDESC *item)
{
    // No slot for these subscripts: nothing is present there.
    const uint64_t slot = slot_index(entry, item, Lookup::kBySubscript);
    return slot == kNoSlot ? 0 : entry->counts[slot];
}

extern "C" void kvt_xe_xml_itm_count_add(xml_rec_entry_t *entry, IDESC *item, uint32_t n)
{
    uint32_t *slot = kvt_xe_xml_itm_countadd_get(entry, item);
    if (slot == nullptr)
        return;
    if (*slot == XML_COUNT_NONE) {
        *slot = n;
        return;
    }
    // A sum that would wrap, or reach the no-count value, stops just below it.
    const uint64_t sum = uint64_t{*slot} + n;
    *slot = static_cast<uint32_t>(sum >= XML_COUNT_NONE ? XML_COUNT_NONE - 1 : sum);
}

extern "C" uint32_t kvt_xe_xml_itm_count_max(xml_rec_entry_t *entry, IDESC *item)
{
    if (item == nullptr)
        return 0;
    if ((DESC_GET(item, flags) & IDESC_NO_COUNT) != 0)
        return maximum_or_one(item);
    const uint32_t count = kvt_xe_xml_itm_count_get(entry, item);
    if (count == XML_COUNT_NONE)
        return maximum_or_one(item);
    // The bound applies to a non-table too: a count above 1 reads as 1.
    return count <= maximum_or_one(item) ? count : maximum_or_one(item);
}

extern "C" void *kvt_xe_xml_itm_addr_get(xml_rec_entry_t *entry, IDESC *item, uint32_t by_subscript)
{
    if (entry == nullptr || item == nullptr || entry->data == nullptr || entry->root == nullptr)
        return nullptr;
    uint64_t position = DESC_GET(item, offset);
    const IDESC *desc = item;
    for (int steps = 0; desc != nullptr && steps < kMaxDepth; ++steps) {
        uint32_t index;
        if (by_subscript != 0) {
            index = subscript_index(desc);
        } else {
            const uint64_t slot = slot_index(entry, desc, Lookup::kByCount);
            if (slot == kNoSlot)
                return nullptr;
            // No count kept: the first occurrence.
            index = entry->counts[slot] == XML_COUNT_NONE ? 0 : entry->counts[slot];
        }
        if (desc_is_table(desc)) {
            if (index >= DESC_GET(desc, occurs_max))
                return nullptr;
            position += uint64_t{index} * DESC_GET(desc, length);
        } else if (index > 0) {
            return nullptr;
        }
        desc = DESC_GET(desc, parent);
    }
    const IDESC *root = entry->root;
    const uint64_t record_end = uint64_t{DESC_GET(root, offset)} + DESC_GET(root, length);
    if (position + DESC_GET(item, length) > record_end)
        return nullptr;
    return static_cast<unsigned char *>(entry->data) + position;
}

extern "C" void kvt_xe_xml_rec_count_reset_zeroes(xml_rec_entry_t *entry) { fill_counts(entry, 0); }

extern "C" void kvt_xe_xml_rec_count_reset_maximum(xml_rec_entry_t *entry)
{
    fill_counts(entry, XML_COUNT_NONE);
}

extern "C" void kvt_xe_xml_rec_reset_zeroes(xml_rec_entry_t *entries, uint32_t n)
{
    for (uint32_t i = 0; entries != nullptr && i < n; ++i)
        fill_counts(&entries[i], 0);
}

extern "C" void kvt_xe_xml_rec_reset_maximum(xml_rec_entry_t *entries, uint32_t n)
{
    for (uint32_t i = 0; entries != nullptr && i < n; ++i)
        fill_counts(&entries[i], XML_COUNT_NONE);
}
