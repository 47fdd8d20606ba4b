// Tree updates of an open file beside the insert: delete, modify (REWRITE)
// and the insertion of a processing instruction or a plain text.
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

#include "xexml/record_builder.h"
#include "xexml/xml_write.h"
#include "xmldom/dom_document.h"
#include "xmldom/dom_tree.h"

namespace cblxml::xexml {
namespace {

namespace dom = cblxml::dom;

// `node` is `inner` or one of its ancestors (an attribute's element counts).
bool contains(const xd_dom_node_t *node, const xd_dom_node_t *inner)
{
    for (; inner != nullptr; inner = inner->parent) {
        if (inner == node)
            return true;
    }
    return false;
}

// The position mode is kept unsigned but compared as signed: below 1 (the
// -1 after a delete included) inserts after the current node.
bool inserts_after(const xml_doc_anchor_t *anchor)
{
    return static_cast<int32_t>(anchor->position_mode) < 1;
}

// The node of an insertPIPT record: a processing instruction for opcode 9,
// else a text node (blanks kept). Null when none can be made.
xd_dom_node_t *make_pi_or_text(const xmlio_fcb *fcb, xd_dom_node_t *owner)
{
    const std::string record(fcb->arg2, fcb->arg2_len);
    if (fcb->opcode == XMLIO_OP_INSERT_PI)
        return make_pi_node(owner, record);
    std::string text = record;
    if ((fcb->flags & XMLIO_COMPACT) == 0)
        text += "\r\n";
    xd_dom_node_t *node = nullptr;
    if (kvt_xe_xml_dom_text_node(owner, &node, text.data(), static_cast<uint32_t>(text.size()),
                                 1) != 0)
        return nullptr;
    return node;
}

// A new tree whose document node holds `node` (made with `document` as its
// owner) as its only child; the anchor names both.
int32_t hold_new_tree(xmlio_fcb *fcb, xd_dom_node_t *document, xd_dom_node_t *node)
{
    // The document node usually takes elements and processing instructions
    // only; a text written into an empty file is kept all the same, as the
    // document's first node.
    document->first_child = node;
    document->last_child = node;
    node->parent = document;
    if (!hold_document(fcb, document))
        return XMLIO_ST_BAD_OPCODE;
    fcb->doc->current = node;
    fcb->doc->position_mode = 0;
    return XMLIO_ST_OK;
}

}  // namespace
}  // namespace cblxml::xexml

extern "C" int32_t kvt_xe_xml_dom_delete(xmlio_fcb *fcb, xd_dom_node_t *node)
{
    namespace dom = cblxml::dom;
    if (node == nullptr)
        return 1;
    xml_doc_anchor_t *anchor = fcb != nullptr ? fcb->doc : nullptr;
    // A current node inside what goes would be left dangling: the position
    // moves on to the next sibling of the deleted node, as after DELETE.
    if (anchor != nullptr && cblxml::xexml::contains(node, anchor->current)) {
        anchor->current = node->kind == XD_DOM_DOCUMENT ? nullptr : node->next_sibling;
        anchor->position_mode = 0xFFFFFFFFu;
    }
    if (node->kind == XD_DOM_DOCUMENT) {
        kvt_xe_xml_dom_free_node(node, 1);
        if (anchor != nullptr && anchor->document == node)
            anchor->document = nullptr;
        return 0;
    }
    // Out of its list with both neighbours, the head and the tail repaired
    // (a stale tail would be followed by the next append), then freed whole.
    dom::remove(node);
    return 0;
}

extern "C" int32_t kvt_xe_xml_dom_modify(xmlio_fcb *fcb, xd_dom_node_t *node)
{
    namespace x = cblxml::xexml;
    if (fcb == nullptr || fcb->doc == nullptr || node == nullptr)
        return XMLIO_ST_NO_CURRENT;
    xml_doc_anchor_t *anchor = fcb->doc;
    xd_dom_node_t *saved = anchor->current;
    anchor->current = node;
    const int32_t status = kvt_xe_xml_dom_insert(fcb, 1);
    xd_dom_node_t *made = anchor->current;
    if (status != XMLIO_ST_OK) {
        // Nothing was built: the old version stays, and so does the position.
        anchor->current = saved;
        return status;
    }
    // The new version stands beside the old one; the old one goes. A saved
    // position inside the old version goes with it: the new version is the
    // position then.
    anchor->current = saved != node && !x::contains(node, saved) ? saved : made;
    kvt_xe_xml_dom_delete(fcb, node);
    fcb->status = XMLIO_ST_OK;
    return XMLIO_ST_OK;
}

extern "C" int32_t kvt_xe_xml_dom_insertPIPT(xmlio_fcb *fcb)
{
    namespace x = cblxml::xexml;
    namespace dom = cblxml::dom;
    if (fcb == nullptr)
        return XMLIO_ST_NOT_OPEN;
    // No text to insert (no second argument): the operation cannot run.
    if (fcb->arg2 == nullptr)
        return XMLIO_ST_BAD_OPCODE;
    try {
        xml_doc_anchor_t *anchor = fcb->doc;
        const bool empty = anchor == nullptr || anchor->document == nullptr ||
                           anchor->document->first_child == nullptr;
        if (empty) {
            xd_dom_node_t *document = anchor != nullptr ? anchor->document : nullptr;
            const bool fresh = document == nullptr;
            if (fresh) {
                if (kvt_xe_xml_dom_doc_node(&document) != 0)
                    return XMLIO_ST_BAD_OPCODE;
                cblxml::dom_set_strings_utf8(document, true);
            }
            xd_dom_node_t *node = x::make_pi_or_text(fcb, document);
            if (node == nullptr) {
                if (fresh)
                    dom::free_tree(document);
                return XMLIO_ST_BAD_OPCODE;
            }
            return x::hold_new_tree(fcb, document, node);
        }
        xd_dom_node_t *current = anchor->current;
        // A tree with nodes but no position (the last one deleted): no place.
        if (current == nullptr)
            return XMLIO_ST_NO_POSITION;
        if (current->kind == XD_DOM_ATTRIBUTE)
            current = current->parent;
        xd_dom_node_t *node = x::make_pi_or_text(fcb, anchor->document);
        // A blank processing instruction, or no memory: nothing is inserted.
        if (node == nullptr)
            return XMLIO_ST_BAD_OPCODE;
        if (x::inserts_after(anchor))
            dom::link_after(current, node);
        else
            dom::link_before(current, node);
        anchor->current = node;
        anchor->position_mode = 0;
        return XMLIO_ST_OK;
    } catch (const std::bad_alloc &) {
        return XMLIO_ST_BAD_OPCODE;
    }
}
