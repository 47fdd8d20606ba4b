// Record linkage, OCCURS counts and item addresses, on descriptor sequences
// laid out as a compiler lays them out (record_layout.h).
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "record_layout.h"
#include "xexml/idesc_access.h"

using cblxml::layout::Record;

namespace {

#define GET(desc, field) DESC_GET(desc, field)

// A record and its entry, linked.
struct Linked {
    Record record;
    xml_rec_entry_t entry;
    explicit Linked(const char *text) : record(text), entry(record.entry())
    {
        kvt_xe_xml_rec_link(&entry, 1);
    }
    IDESC *operator[](const char *path) const { return record.item(path); }
};

// The tree that the level numbers describe: each item's parent is the
// nearest item before it with a lower level.
void expect_tree_matches_levels(const Record &record)
{
    const size_t n = record.size();
    for (size_t i = 1; i < n; ++i) {
        size_t p = i - 1;
        while (p > 0 && record.items()[p].level >= record.items()[i].level)
            --p;
        IDESC *item = record.item_at(i);
        IDESC *parent = record.item_at(p);
        EXPECT_EQ(GET(item, parent), parent) << "item " << i;
        EXPECT_EQ(GET(item, prev_desc), record.item_at(i - 1)) << "item " << i;
        EXPECT_EQ(GET(record.item_at(i - 1), next_desc), item) << "item " << i;
        // Siblings are the other items with the same parent, in order.
        IDESC *prev = nullptr;
        for (size_t j = p + 1; j < i; ++j) {
            if (GET(record.item_at(j), parent) == parent)
                prev = record.item_at(j);
        }
        EXPECT_EQ(prev == nullptr ? GET(parent, first_child) : GET(prev, next_sibling), item);
        if (prev != nullptr) {
            EXPECT_EQ(GET(item, prev_sibling), prev);
        }
    }
}

struct SlotCase {
    const char *layout;
    std::vector<std::pair<const char *, std::pair<uint32_t, uint32_t>>> slot_and_span;
};

TEST(RecordLink, NumbersSlotsAndBuildsTheTree)
{
    const SlotCase cases[] = {
        {"01 rec pic=X(5)", {{"rec", {0, 0}}}},
        {R"(01 rec
              05 t occurs=3
                 10 a pic=X
                 10 b pic=X
              05 after pic=X)",
         {{"rec", {0, 8}}, {"t", {1, 2}}, {"a", {2, 0}}, {"b", {3, 0}}, {"after", {8, 0}}}},
        {R"(01 rec
              05 hdr pic=XX
              05 outer occurs=3
                 10 tag pic=X
                 10 inner occurs=4
                    15 v pic=XX
              05 tail pic=X)",
         {{"rec", {0, 21}},
          {"outer", {2, 6}},
          {"inner", {4, 1}},
          {"v", {5, 0}},
          {"tail", {21, 0}}}},
    };
    for (const SlotCase &c : cases) {
        SCOPED_TRACE(c.layout);
        Linked linked(c.layout);
        expect_tree_matches_levels(linked.record);
        EXPECT_EQ(linked.entry.last_desc, linked.record.item_at(linked.record.size() - 1));
        EXPECT_EQ(linked.entry.link_flags & XML_REC_LINKED, XML_REC_LINKED);
        EXPECT_EQ(linked.record.counts().size(), GET(linked.entry.root, slot_span) + 1u);
        for (const auto &[path, want] : c.slot_and_span) {
            EXPECT_EQ(GET(linked[path], count_slot), want.first) << path;
            EXPECT_EQ(GET(linked[path], slot_span), want.second) << path;
        }
    }
}

// Wide heads, names, namespaces and third strings of 1, 16 and 17 bytes, and
// a name length without a name string (flag 0x8), are stepped over exactly.
TEST(RecordLink, LocatesEveryStringIncludingTheLastDescriptors)
{
    const std::string n16(16, 'n'), n17(17, 'm'), u17(17, 'u');
    const std::string layout = "01 r wide ns=u pic=X\n"
                               "05 " +
                               n16 + " ns=" + u17 +
                               " pic=XXXXXXXXXXXXXXXX\n"
                               "05 any anyname wide pic=X(17)\n"
                               "05 " +
                               n17 + " ns=" + n16 + " pic=XXXXXXXXXXXXXXXXX\n";
    Linked linked(layout.c_str());
    expect_tree_matches_levels(linked.record);
    for (size_t i = 0; i < linked.record.size(); ++i) {
        const auto &item = linked.record.items()[i];
        IDESC *desc = linked.record.item_at(i);
        SCOPED_TRACE(item.name);
        if ((item.flags & IDESC_NO_NAME) == 0) {
            EXPECT_EQ(std::string(GET(desc, name_ptr), item.name.size()), item.name);
        } else {
            EXPECT_EQ(GET(desc, name_ptr), nullptr);
        }
        if (!item.ns.empty()) {
            EXPECT_EQ(std::string(GET(desc, namespace_ptr), item.ns.size()), item.ns);
        }
        EXPECT_EQ(std::string(GET(desc, third_ptr), item.picture.size()), item.picture);
    }
    EXPECT_EQ(GET(linked.record.item_at(3), next_desc), nullptr);
}

// Sequences that the levels or the count make odd are linked without reading
// a byte past the descriptors the count allows: the image is cut to exactly
// those, so ASan reports any read beyond.
TEST(RecordLink, MalformedSequencesStopAtTheCount)
{
    const char *four_deep = "01 a\n05 b\n10 c\n15 d";
    const struct {
        const char *layout;
        uint32_t count;  // the entry's descriptor count
        size_t kept;     // descriptors left in the image
        size_t last;     // index of last_desc
        uint32_t span;   // the root's slot span
    } cases[] = {
        {four_deep, 0, 1, 0, 0},
        {four_deep, 1, 1, 0, 0},
        {four_deep, 2, 2, 1, 1},
        {four_deep, 4, 4, 3, 3},
        {"01 a\n05 b\n01 c\n05 d", 4, 4, 1, 1},
        {"01 r\n05 a\n05 b\n05 c", 2, 2, 1, 1},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.layout) + " count " + std::to_string(c.count));
        Record record(c.layout);
        record.keep_first(c.kept);
        xml_rec_entry_t entry = record.entry();
        entry.desc_count = c.count;
        kvt_xe_xml_rec_link(&entry, 1);
        EXPECT_EQ(entry.last_desc, record.item_at(c.last));
        EXPECT_EQ(GET(entry.root, slot_span), c.span);
        EXPECT_EQ(GET(record.item_at(c.kept - 1), next_desc), nullptr);
        EXPECT_NE(GET(entry.last_desc, name_ptr), nullptr);
    }
}

TEST(RecordLink, LinkedEntriesAreSkipped)
{
    Record first("01 a\n05 b pic=X"), second("01 c\n05 d pic=X");
    xml_rec_entry_t entries[2] = {first.entry(), second.entry()};
    kvt_xe_xml_rec_link(entries, 0);
    EXPECT_EQ(entries[0].link_flags, 0u);
    kvt_xe_xml_rec_link(entries, 2);
    // Marks that a second linkage would overwrite.
    DESC_SET(first.item_at(1), count_slot, 99u);
    entries[0].last_desc = nullptr;
    kvt_xe_xml_rec_link(entries, 2);
    EXPECT_EQ(GET(first.item_at(1), count_slot), 99u);
    EXPECT_EQ(entries[0].last_desc, nullptr);
    EXPECT_EQ(entries[1].last_desc, second.item_at(1));
}

const char *kNested = R"(01 rec
   05 hdr pic=XX
   05 outer occurs=3
      10 tag pic=X
      10 inner occurs=4
         15 v pic=XX)";

TEST(RecordCounts, NestedTablesAddressTheirOwnBytesAndSlots)
{
    Linked linked(kNested);
    IDESC *outer = linked["outer"], *inner = linked["inner"], *v = linked["v"];
    auto *data = static_cast<unsigned char *>(linked.entry.data);
    for (uint32_t k = 0; k < linked.record.counts().size(); ++k)
        linked.record.counts()[k] = 100 + k;
    for (uint32_t i = 1; i <= 4; ++i) {
        for (uint32_t j = 1; j <= 5; ++j) {
            DESC_SET(outer, subscript, i);
            DESC_SET(inner, subscript, j);
            const bool inside = i <= 3 && j <= 4;
            void *want = inside ? data + 2 + (i - 1) * 9 + 1 + (j - 1) * 2 : nullptr;
            EXPECT_EQ(kvt_xe_xml_itm_addr_get(&linked.entry, v, 1), want) << i << "," << j;
            EXPECT_EQ(kvt_xe_xml_itm_count_get(&linked.entry, v),
                      inside ? 100 + 5 + (i - 1) * 6 + (j - 1) : 0u)
                << i << "," << j;
        }
    }
    // By counts: the tables' counts pick the occurrence being filled.
    kvt_xe_xml_rec_count_reset_zeroes(&linked.entry);
    kvt_xe_xml_itm_count_add(&linked.entry, outer, 2);
    kvt_xe_xml_itm_count_add(&linked.entry, inner, 3);
    EXPECT_EQ(linked.record.counts()[4 + 2 * 6], 3u);
    EXPECT_EQ(kvt_xe_xml_itm_addr_get(&linked.entry, v, 0), data + 2 + 2 * 9 + 1 + 3 * 2);
    kvt_xe_xml_itm_count_add(&linked.entry, outer, 1);
    EXPECT_EQ(kvt_xe_xml_itm_countadd_get(&linked.entry, v), nullptr);
    EXPECT_EQ(kvt_xe_xml_itm_addr_get(&linked.entry, v, 0), nullptr);
}

TEST(RecordCounts, MaximumFollowsTheSlotAndTheFlag)
{
    const struct {
        const char *flags;
        uint32_t occurs, slot, want;
    } cases[] = {
        {"nocount", 0, 7, 1},
        {"nocount", 5, 2, 5},
        {"", 5, 3, 3},
        {"", 5, 7, 5},
        {"", 0, 2, 1},
        {"", 5, 0, 0},
        {"", 5, XML_COUNT_NONE, 5},
        {"", 0, XML_COUNT_NONE, 1},
    };
    for (const auto &c : cases) {
        const std::string layout =
            "01 r\n05 t pic=X occurs=" + std::to_string(c.occurs) + " " + c.flags;
        Linked linked(layout.c_str());
        linked.record.counts()[1] = c.slot;
        EXPECT_EQ(kvt_xe_xml_itm_count_max(&linked.entry, linked["t"]), c.want) << layout;
    }
}

TEST(RecordCounts, NoCountSlotsTakeTheAddedValueAndResetsCoverEveryEntry)
{
    Linked a(kNested), b("01 r\n05 t occurs=2 pic=X");
    xml_rec_entry_t entries[2] = {a.entry, b.entry};
    kvt_xe_xml_rec_reset_maximum(entries, 2);
    for (uint32_t value : a.record.counts())
        EXPECT_EQ(value, XML_COUNT_NONE);
    EXPECT_EQ(b.record.counts(), std::vector<uint32_t>(2, XML_COUNT_NONE));
    EXPECT_EQ(kvt_xe_xml_itm_count_max(&b.entry, b["t"]), 2u);
    kvt_xe_xml_itm_count_add(&b.entry, b["t"], 4);
    EXPECT_EQ(kvt_xe_xml_itm_count_get(&b.entry, b["t"]), 4u);
    // An index equal to the maximum addresses nothing.
    DESC_SET(b["t"], subscript, 3u);
    EXPECT_EQ(kvt_xe_xml_itm_addr_get(&b.entry, b["t"], 1), nullptr);
    kvt_xe_xml_rec_reset_zeroes(entries, 2);
    EXPECT_EQ(b.record.counts(), std::vector<uint32_t>(2, 0));
    EXPECT_EQ(kvt_xe_xml_itm_addr_get(nullptr, b["t"], 1), nullptr);
    EXPECT_EQ(kvt_xe_xml_itm_countadd_get(&b.entry, nullptr), nullptr);
}

}  // namespace
