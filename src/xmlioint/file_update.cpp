// DELETE, REWRITE and the insertion of a processing instruction or a text.
#include "xexml/xml_write.h"
#include "xmlioint/file_ops.h"

namespace cblxml::xmlio {
namespace {

constexpr uint32_t kAfterDelete = 0xFFFFFFFFu;  // position mode -1

// The key item's node, searched from the current node: 0 and `node`, or the
// status of DELETE and REWRITE.
int32_t key_node(xmlio_fcb *fcb, xd_dom_node_t *&node)
{
    node = nullptr;
    if (const int32_t status = positioning_checks(fcb); status != XMLIO_ST_OK)
        return status;
    if (fcb->doc->current == nullptr)
        return XMLIO_ST_NO_CURRENT;
    node = kvt_xe_xml_dom_search(fcb->doc->current, fcb->key_item,
                                 xexml::record_entry(fcb, fcb->rec_no), 0);
    return node != nullptr ? XMLIO_ST_OK : XMLIO_ST_NO_MATCH;
}

int32_t marked(xmlio_fcb *fcb, int32_t status)
{
    if (status == XMLIO_ST_OK)
        fcb->flags |= XMLIO_MODIFIED;
    return status;
}

}  // namespace

int32_t insert_pi_text(xmlio_fcb *fcb) { return marked(fcb, kvt_xe_xml_dom_insertPIPT(fcb)); }

int32_t delete_record(xmlio_fcb *fcb)
{
    xd_dom_node_t *node = nullptr;
    if (const int32_t status = key_node(fcb, node); status != XMLIO_ST_OK)
        return status;
    // The position moves to the next sibling (perhaps none, a text or a
    // processing instruction), which the next READ NEXT reads first.
    if (node == fcb->doc->current) {
        fcb->doc->current = node->next_sibling;
        fcb->doc->position_mode = kAfterDelete;
    }
    return marked(fcb, kvt_xe_xml_dom_delete(fcb, node) == 0 ? XMLIO_ST_OK : XMLIO_ST_NO_MATCH);
}

int32_t rewrite_record(xmlio_fcb *fcb)
{
    xd_dom_node_t *node = nullptr;
    if (const int32_t status = key_node(fcb, node); status != XMLIO_ST_OK)
        return status;
    return marked(fcb, kvt_xe_xml_dom_modify(fcb, node));
}

}  // namespace cblxml::xmlio
