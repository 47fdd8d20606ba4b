// Mapping document-tree nodes onto record items: matching a node to an item
// descriptor, the recursive element mapping with contents and attributes,
// and the moves of values, names and namespaces into the record area. The
// tree is read only through xmldom/dom_tree.h.
#ifndef CBLXML_XEXML_RECORD_MAP_H
#define CBLXML_XEXML_RECORD_MAP_H

#include <cstdint>

#include "cblxml.h"
#include "xmldom/dom_tree.h"

namespace cblxml::xexml {

// One mapping pass (a READ, or a READ NEXT through the sequential reader).
struct MapContext {
    xml_rec_entry_t *entries = nullptr;  // all record layouts of the file
    uint32_t entry_count = 0;
    xml_rec_entry_t *entry = nullptr;  // the layout being filled; null until chosen
    uint32_t record_number = 0;        // its 1-based number
    void *dm_handle = nullptr;
    const char *encoding = nullptr;    // the encoding of the tree's strings
    dom::Node *last_mapped = nullptr;  // the last element mapped without named children
    // The string-conversion probe, made once per pass: 1 succeeded, 0 failed,
    // -1 not made yet.
    int probe = -1;
};

// The node's name and namespace against the item's (exact name unless the
// item matches any name; namespace compared on the item's length, so a
// longer URI with the same beginning matches). Only an element or an
// attribute matches. The reading side, the writer and the tree updates all
// match through this and path_matches.
bool node_matches(const dom::Node *node, const IDESC *item);
// The node's ancestors below the document against the item's parent chain,
// pairwise; both must end together.
bool path_matches(const dom::Node *node, const IDESC *item);

// Maps the root element: chooses the first layout whose root matches (and
// zeroes every layout's counts), then maps. False when no layout matches.
bool map_root(MapContext &ctx, dom::Node *element);
// Maps `element` onto `item` within ctx.entry (READ and READ NEXT alike):
// subordinate elements, name and namespace receivers, contents, attributes,
// and the item's count.
void map_element(MapContext &ctx, dom::Node *element, IDESC *item);

// Moves `length` bytes of `text` into `item` as a value (plain move or the
// data map, see value_move.cpp).
void move_value(MapContext &ctx, IDESC *item, const char *text, uint32_t length);
// Moves a name (width: the item's name_len) or a namespace URI (width: its
// namespace_len) into the item, space-filled.
void move_name(MapContext &ctx, IDESC *item, const char *text, bool namespace_width);

}  // namespace cblxml::xexml

#endif
