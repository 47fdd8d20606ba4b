// The record builder: turns a record's items into nodes of a document tree.
#ifndef CBLXML_XEXML_RECORD_BUILDER_H
#define CBLXML_XEXML_RECORD_BUILDER_H

#include <string>

#include "cblxml.h"

namespace cblxml::xexml {

struct record_builder {
    xd_dom_node_t *document = nullptr;  // the tree's document node: owner of new nodes
    xd_dom_node_t *parent = nullptr;    // new nodes are appended here
    void *aux = nullptr;                // the block's builder_aux, passed along
    void *dm_handle = nullptr;
    bool failed = false;  // a node could not be made: the tree is incomplete
    std::string text;     // work area of item texts, its memory kept from item to item

    // The text of the item's current occurrence (see item_text), in `text`.
    const std::string &item_text(xml_rec_entry_t *entry, IDESC *item);
};

// Builds the nodes of `item` (every occurrence up to its count's maximum)
// under builder.parent. Nodes that cannot be made set builder.failed.
// Running out of memory for work strings throws std::bad_alloc; whatever was
// linked by then belongs to the tree.
void build_item(record_builder &builder, xml_rec_entry_t *entry, IDESC *item);

// The processing-instruction node of a record text: target up to the first
// space, data the rest unless it is blank (space, tab, LF, NUL). Null when
// the text is blank or memory runs out.
xd_dom_node_t *make_pi_node(void *owner, const std::string &text);

}  // namespace cblxml::xexml

#endif
