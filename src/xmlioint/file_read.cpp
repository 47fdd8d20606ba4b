// READ, START and READ NEXT of an XML-enabled file.
#include <cstdlib>
#include <cstring>
#include <vector>

#include "xexml/idesc_access.h"
#include "xexml/record_map.h"
#include "xexml/xml_write.h"
#include "xmldom/dom_tree.h"
#include "xmlioint/file_ops.h"

namespace cblxml::xmlio {
namespace {

namespace dom = cblxml::dom;
using cblxml::xexml::node_matches;
using cblxml::xexml::path_matches;

constexpr uint32_t kWalking = 2;

// The record entry that the statement names; null when its number lies
// outside the file's entries.
xml_rec_entry_t *named_entry(const xmlio_fcb *fcb) { return xexml::record_entry(fcb, fcb->rec_no); }

// The counts of the key item's slots: its own and the slot_span below it.
struct KeySlots {
    size_t first = 0;
    size_t count = 0;
};

KeySlots key_slots(xml_rec_entry_t *entry, IDESC *key)
{
    KeySlots slots;
    const uint32_t *slot = kvt_xe_xml_itm_countadd_get(entry, key);
    if (slot != nullptr) {
        slots.first = static_cast<size_t>(slot - entry->counts);
        slots.count = size_t{DESC_GET(key, slot_span)} + 1;
    }
    return slots;
}

// Maps `node` into the record as READ NEXT does: the key item and its
// ancestors start at their first occurrence, and the counts outside the key
// item's slots survive the read.
void read_node(xmlio_fcb *fcb, dom::Node *node)
{
    xml_rec_entry_t *entry = named_entry(fcb);
    IDESC *key = fcb->key_item;
    const size_t slots = entry->root != nullptr && entry->counts != nullptr
                             ? DESC_GET(entry->root, slot_span) + 1u
                             : 0;
    std::vector<uint32_t> saved(entry->counts, entry->counts + slots);
    int steps = 0;
    for (IDESC *d = key; d != nullptr && steps < xexml::kMaxDepth; d = DESC_GET(d, parent), ++steps)
        DESC_SET(d, subscript, 0u);
    fcb->doc->current = node;
    kvt_xe_xml_rec_count_reset_zeroes(entry);
    kvt_xe_xml_dom_readnext(entry, key, node, fcb->dm_handle, 1);
    const KeySlots keep = key_slots(entry, key);
    for (size_t i = 0; i < slots; ++i) {
        if (i < keep.first || i >= keep.first + keep.count)
            entry->counts[i] = saved[i];
    }
}

// The next node for READ NEXT's walk from the current node; null at the end.
dom::Node *walk_on(xmlio_fcb *fcb, IDESC *key, xml_rec_entry_t *entry)
{
    dom::Node *current = fcb->doc->current;
    dom::Node *from = current;
    if ((DESC_GET(key, flags) & IDESC_ATTRIBUTES) == 0) {
        dom::Node *up = dom::is_attribute(current) ? dom::parent(current) : current;
        while (up != nullptr && !dom::is_document(up) &&
               !(node_matches(up, key) && path_matches(up, key)))
            up = dom::parent(up);
        from = up != nullptr && !dom::is_document(up)
                   ? up
                   : kvt_xe_xml_dom_search(current, key, entry, 0);
    }
    if (from == nullptr)
        return nullptr;
    for (dom::Node *n = dom::next_sibling(from); n != nullptr; n = dom::next_sibling(n)) {
        if ((dom::is_element(n) || dom::is_attribute(n)) && node_matches(n, key) &&
            path_matches(n, key))
            return n;
    }
    return nullptr;
}

}  // namespace

int32_t positioning_checks(const xmlio_fcb *fcb)
{
    if (fcb->doc == nullptr || fcb->doc->document == nullptr)
        return XMLIO_ST_NO_DOCUMENT;
    // Without a key item or a record entry no element can match the key.
    if (fcb->rec_read != fcb->rec_no || fcb->key_item == nullptr || named_entry(fcb) == nullptr)
        return XMLIO_ST_NO_MATCH;
    return XMLIO_ST_OK;
}

int32_t read_file(xmlio_fcb *fcb)
{
    if (fcb->stream == nullptr && (fcb->flags & (XMLIO_IN_MEMORY | XMLIO_URL)) == 0)
        return XMLIO_ST_NOT_OPEN;
    const int32_t status = kvt_xe_xmlio_parse_stream(fcb);
    if (status != XMLIO_ST_OK)
        return status;
    if ((fcb->flags & XMLIO_MODIFIED) != 0) {
        fcb->flags &= ~uint32_t{XMLIO_MODIFIED};
        return XMLIO_ST_UNWRITTEN;
    }
    return static_cast<int32_t>(fcb->rec_read);
}

int32_t start_file(xmlio_fcb *fcb)
{
    if (const int32_t status = positioning_checks(fcb); status != XMLIO_ST_OK)
        return status;
    xml_doc_anchor_t *anchor = fcb->doc;
    dom::Node *start =
        anchor->current != nullptr ? anchor->current : dom::first_child(anchor->document);
    if (start == nullptr)
        return XMLIO_ST_NO_MATCH;
    const dom::Node *limit = dom::is_element(start) ? start : dom::parent(start);
    xml_rec_entry_t *entry = named_entry(fcb);
    dom::Node *found = kvt_xe_xml_dom_search(start, fcb->key_item, entry, fcb->key_occurrence);
    bool stepped = false;
    while (found == nullptr) {
        dom::Node *parent = dom::parent(start);
        if (parent == nullptr || dom::is_document(parent))
            return XMLIO_ST_NO_MATCH;
        start = parent;
        stepped = true;
        found = kvt_xe_xml_dom_search(start, fcb->key_item, entry, fcb->key_occurrence);
    }
    if (stepped && dom::depth(found) > dom::depth(limit))
        return XMLIO_ST_NO_MATCH;
    anchor->current = found;
    anchor->position_mode = fcb->key_occurrence;
    return XMLIO_ST_OK;
}

int32_t read_next(xmlio_fcb *fcb)
{
    if (const int32_t status = positioning_checks(fcb); status != XMLIO_ST_OK)
        return status;
    xml_doc_anchor_t *anchor = fcb->doc;
    if (anchor->current == nullptr)
        return XMLIO_ST_NO_CURRENT;
    IDESC *key = fcb->key_item;
    xml_rec_entry_t *entry = named_entry(fcb);
    dom::Node *node = anchor->current;
    const bool walk = anchor->position_mode == 0;
    if (walk) {
        anchor->position_mode = kWalking;
        node = walk_on(fcb, key, entry);
    } else {
        anchor->position_mode = 0;
    }
    if (node != nullptr && !dom::is_attribute(node))
        node = kvt_xe_xml_dom_search(node, key, entry, 0);
    if (node == nullptr) {
        if (walk)
            anchor->position_mode = 0;
        return XMLIO_ST_NO_CURRENT;
    }
    read_node(fcb, node);
    if (walk)
        anchor->position_mode = 0;
    return XMLIO_ST_OK;
}

}  // namespace cblxml::xmlio
