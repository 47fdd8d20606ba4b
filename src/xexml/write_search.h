// Matching tree nodes to item descriptors, as the writer and the insert need
// it: the name and namespace match, the path check and the search for an
// item's node. These follow the rules the reading side uses.
#ifndef CBLXML_XEXML_WRITE_SEARCH_H
#define CBLXML_XEXML_WRITE_SEARCH_H

#include <cstdint>

#include "cblxml.h"

namespace cblxml::xexml::wsearch {

// An element or attribute whose name equals the item's (unless the item
// takes any name) and whose namespace begins with the item's (unless the
// item takes any namespace).
bool node_matches(const xd_dom_node_t *node, const IDESC *item);
// The node's ancestors below the document node match the item's ancestors
// pair by pair, and both chains end together.
bool path_matches(const xd_dom_node_t *node, const IDESC *item);
// The node of `item` at or below `node` (see the tree search): occurrence 0
// the first found, n the n-th of the run of like siblings it stands in.
// Null when none. Iterative: trees may nest very deep.
xd_dom_node_t *search(xd_dom_node_t *node, const IDESC *item, uint32_t occurrence);

}  // namespace cblxml::xexml::wsearch

#endif
