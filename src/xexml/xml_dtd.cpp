// The internal DTD: element and attribute-list declarations derived from the
// tree being written (not from the record layouts).
//
// One declaration per run of same-named siblings: a node with a same-named
// previous sibling is skipped with its subtree. Names repeat across parents
// and are declared once per place. The walk is iterative and keeps, for each
// open child list, the names seen so far in it, so that the skip test and the
// choice of the model node cost constant time per node: a document element
// with a million record children is declared in one pass.
#include <string_view>
#include <unordered_set>
#include <vector>

#include "xexml/xml_serialise.h"

namespace cblxml::xexml {
namespace {

std::string_view name_of(const xd_dom_node_t *node)
{
    return node->name != nullptr ? std::string_view(node->name) : std::string_view();
}

// The node whose children and attributes declare `node`, or null for a free
// declaration "(#PCDATA)*". An element with children is its own model. An
// empty one looks at its next sibling first, then at itself: a same-named
// next sibling with children is the model; a same-named one without
// children, or (failing that) the node itself, makes the declaration free.
// Without a next sibling the node is its own model and is declared EMPTY.
const xd_dom_node_t *model_of(const xd_dom_node_t *node)
{
    if (node->first_child != nullptr)
        return node;
    const xd_dom_node_t *next = node->next_sibling;
    if (next == nullptr)
        return node;
    if (name_of(next) == name_of(node) && next->first_child != nullptr)
        return next;
    return nullptr;
}

void write_content_model(xml_writer &out, const xd_dom_node_t *model)
{
    bool mixed = false;
    for (const xd_dom_node_t *c = model->first_child; c != nullptr; c = c->next_sibling)
        mixed = mixed || c->kind == XD_DOM_TEXT;
    if (mixed)
        out.put("(#PCDATA");
    size_t elements = 0;
    for (const xd_dom_node_t *c = model->first_child; c != nullptr; c = c->next_sibling) {
        if (c->kind != XD_DOM_ELEMENT)
            continue;
        if (elements == 0)
            out.put(mixed ? "|" : "(");
        out.put(name_of(c));
        // Any next sibling counts, text and processing instructions too: the
        // mixed shapes keep a trailing "|" before ")*>".
        if (mixed) {
            if (c->next_sibling != nullptr)
                out.put("|");
        } else {
            out.put(c->next_sibling != nullptr ? "*," : "*");
        }
        ++elements;
    }
    if (mixed || elements >= 2)
        out.put(")*>");
    else if (elements == 1)
        out.put(")>");
    else
        out.put("EMPTY>");
    out.newline();
}

// Writes the declarations of `node` and returns the node whose children
// come next, or null.
const xd_dom_node_t *declare(xml_writer &out, const xd_dom_node_t *node)
{
    out.put("<!ELEMENT ");
    out.put(name_of(node));
    out.put(" ");
    const xd_dom_node_t *model = model_of(node);
    if (model == nullptr) {
        out.put("(#PCDATA)*>");
        out.newline();
        model = node;
    } else {
        write_content_model(out, model);
    }
    for (const xd_dom_node_t *a = model->first_attribute; a != nullptr; a = a->next_sibling) {
        out.put("\t<!ATTLIST ");
        out.put(name_of(node));
        out.put(" ");
        out.put(name_of(a));
        out.put(" CDATA #IMPLIED>");
        out.newline();
    }
    return model;
}

struct Level {
    const xd_dom_node_t *next;                  // the next child of the model to visit
    std::unordered_set<std::string_view> seen;  // names of the children visited
};

}  // namespace

void write_dtd(xml_writer &out, const xd_dom_node_t *element)
{
    if (element == nullptr || element->kind != XD_DOM_ELEMENT)
        return;
    // The document element's own previous siblings (processing instructions).
    for (const xd_dom_node_t *p = element->prev_sibling; p != nullptr; p = p->prev_sibling) {
        if (name_of(p) == name_of(element))
            return;
    }
    std::vector<Level> levels;
    levels.push_back(Level{declare(out, element)->first_child, {}});
    while (!levels.empty()) {
        Level &level = levels.back();
        const xd_dom_node_t *node = level.next;
        if (node == nullptr) {
            levels.pop_back();
            continue;
        }
        level.next = node->next_sibling;
        // Previous siblings of every kind count (a text node is named "text").
        const bool repeated = !level.seen.insert(name_of(node)).second;
        if (node->kind != XD_DOM_ELEMENT || repeated)
            continue;
        const xd_dom_node_t *model = declare(out, node);
        if (model->first_child != nullptr)
            levels.push_back(Level{model->first_child, {}});
    }
}

}  // namespace cblxml::xexml
