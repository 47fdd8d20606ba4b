// Document tree nodes: the five constructors and the release of a subtree.
//
// Plain C style on purpose: every node made by the exported constructors is
// one zero-filled malloc'd record, every string a length-exact private copy,
// and nothing here throws. The constructors never link a node into a tree;
// the parser call-backs and the tree-update operations do that. The library's
// own tree builders use the document's arena instead (dom_append.h): such a
// node carries a mark in the padding behind its kind, its owner is the
// document, and its strings that lie in the arena are not freed one by one.
#include "cblxml.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "xmldom/dom_append.h"
#include "xmldom/dom_arena.h"
#include "xmldom/dom_document.h"

namespace {

const char kDocumentName[] = "Document";
const char kTextName[] = "text";

// A document node carries what the tree keeps about its document behind the
// public node, in the same block: freeing the node frees both.
struct DocumentRecord {
    xd_dom_node_t node;
    bool stringsUtf8;
    cblxml::DomArena *arena;  // made with the first node from it
};

// The mark of a node from an arena, in the 4 padding bytes behind `kind`.
constexpr uint32_t kArenaMark = 0x41524e41u;
constexpr size_t kMarkOffset = offsetof(xd_dom_node_t, kind) + sizeof(uint32_t);
static_assert(offsetof(xd_dom_node_t, name) >= kMarkOffset + sizeof(uint32_t),
              "the node has padding behind its kind");

void set_mark(xd_dom_node_t *node)
{
    std::memcpy(reinterpret_cast<char *>(node) + kMarkOffset, &kArenaMark, sizeof kArenaMark);
}

// The arena of a marked node (its owner is the document); null for a node
// from the exported constructors.
cblxml::DomArena *arena_of(const xd_dom_node_t *node)
{
    uint32_t mark = 0;
    std::memcpy(&mark, reinterpret_cast<const char *>(node) + kMarkOffset, sizeof mark);
    if (mark != kArenaMark || node->owner == nullptr)
        return nullptr;
    return static_cast<const DocumentRecord *>(node->owner)->arena;
}

void free_string(cblxml::DomArena *arena, char *text)
{
    if (text != nullptr && (arena == nullptr || !arena->owns(text)))
        std::free(text);
}
static_assert(offsetof(DocumentRecord, node) == 0, "a document record opens with its node");

xd_dom_node_t *new_node(uint32_t kind)
{
    const size_t size = kind == XD_DOM_DOCUMENT ? sizeof(DocumentRecord) : sizeof(xd_dom_node_t);
    auto *node = static_cast<xd_dom_node_t *>(std::calloc(1, size));
    if (node != nullptr)
        node->kind = kind;
    return node;
}

// A NUL-terminated copy of `size` bytes (which may contain NULs); null when
// the allocation fails. Owned by the caller.
char *copy_bytes(const char *bytes, size_t size)
{
    char *copy = static_cast<char *>(std::malloc(size + 1));
    if (copy == nullptr)
        return nullptr;
    if (size > 0)
        std::memcpy(copy, bytes, size);
    copy[size] = '\0';
    return copy;
}

char *copy_string(const char *text) { return copy_bytes(text, std::strlen(text)); }

bool is_empty(const char *text) { return text == nullptr || text[0] == '\0'; }

// Copies `text` into *field unless it is null or empty (then *field stays
// null). False only when a copy was due and the allocation failed.
bool copy_unless_empty(const char *text, char **field)
{
    if (is_empty(text))
        return true;
    *field = copy_string(text);
    return *field != nullptr;
}

// Whitespace-only text between elements is dropped. Only space, line feed and
// NUL count as blank; carriage return and tab are deliberately content, so
// text made only of them still reaches the record mapping.
bool is_blank(const char *chars, uint32_t length)
{
    for (uint32_t i = 0; i < length; ++i) {
        char c = chars[i];
        if (c != ' ' && c != '\n' && c != '\0')
            return false;
    }
    return true;
}

int fail(xd_dom_node_t **out)
{
    if (out != nullptr)
        *out = nullptr;
    return 1;
}

// Frees a node that a constructor was still building (its strings are null
// until copied) and reports the failure.
int discard(xd_dom_node_t *node, xd_dom_node_t **out)
{
    std::free(node->value);
    std::free(node->namespace_uri);
    std::free(node->name);
    std::free(node);
    return fail(out);
}

int succeed(xd_dom_node_t **out, xd_dom_node_t *node)
{
    *out = node;
    return 0;
}

// ---------------------------------------------------------------------------
// Release rules per kind.
// ---------------------------------------------------------------------------

enum class Children {
    kNone,
    kAll,
    kFirstOnly
};
enum class HeadList {
    kNone,
    kChildren,
    kAttributes
};

struct ReleaseRule {
    uint32_t kind;
    Children children;     // which of the child list is released with the node
    bool attributes;       // the attribute list is released with the node
    HeadList unlinks;      // which list of the parent an unlink advances
    bool frees_namespace;  // only elements and attributes carry one
};

const ReleaseRule kReleaseRules[] = {
    {XD_DOM_ELEMENT, Children::kAll, true, HeadList::kChildren, true},
    {XD_DOM_ATTRIBUTE, Children::kNone, false, HeadList::kAttributes, true},
    {XD_DOM_TEXT, Children::kFirstOnly, false, HeadList::kChildren, false},
    {XD_DOM_PI, Children::kNone, false, HeadList::kChildren, false},
    {XD_DOM_DOCUMENT, Children::kAll, false, HeadList::kNone, false},
};

const ReleaseRule *release_rule(const xd_dom_node_t *node)
{
    for (const ReleaseRule &rule : kReleaseRules) {
        if (rule.kind == node->kind)
            return &rule;
    }
    return nullptr;
}

// Takes the head of a list off the list. A node of a kind the tree does not
// know is passed over and left allocated: it is not ours to free, and leaving
// it at the head would make the owner's list never empty.
xd_dom_node_t *take_head(xd_dom_node_t **head)
{
    while (*head != nullptr) {
        xd_dom_node_t *node = *head;
        *head = node->next_sibling;
        if (release_rule(node) != nullptr)
            return node;
    }
    return nullptr;
}

// The next node below `node` that must be released before `node` itself, or
// null when none is left. Clears last_child / last_attribute once the list
// they point into is empty.
xd_dom_node_t *next_to_release(xd_dom_node_t *node, const ReleaseRule &rule)
{
    switch (rule.children) {
    case Children::kAll:
        if (xd_dom_node_t *child = take_head(&node->first_child))
            return child;
        node->last_child = nullptr;
        break;
    case Children::kFirstOnly: {
        // A text node releases its first child only; clearing the head marks
        // that child as handled.
        xd_dom_node_t *child = node->first_child;
        node->first_child = nullptr;
        if (child != nullptr && release_rule(child) != nullptr)
            return child;
        break;
    }
    case Children::kNone:
        break;
    }
    if (rule.attributes) {
        if (xd_dom_node_t *attribute = take_head(&node->first_attribute))
            return attribute;
        node->last_attribute = nullptr;
    }
    return nullptr;
}

// With `discarding` (the whole document goes, and its arena with it) a node
// from the arena is not put on the free list.
void release_record(xd_dom_node_t *node, const ReleaseRule &rule, bool discarding)
{
    if (cblxml::DomArena *arena = arena_of(node)) {
        // A string may have been replaced by one on the heap (text that
        // was joined, say): that one is freed here.
        free_string(arena, node->name);
        if (rule.frees_namespace)
            free_string(arena, node->namespace_uri);
        free_string(arena, node->value);
        if (!discarding)
            arena->release(node);
        return;
    }
    std::free(node->name);
    if (rule.frees_namespace)
        std::free(node->namespace_uri);
    std::free(node->value);
    if (node->kind == XD_DOM_DOCUMENT)
        delete reinterpret_cast<DocumentRecord *>(node)->arena;
    std::free(node);
}

// The arena of `document`, made on first use; null when `document` is not a
// document node or memory runs out.
cblxml::DomArena *document_arena(xd_dom_node_t *document)
{
    if (document == nullptr || document->kind != XD_DOM_DOCUMENT || arena_of(document) != nullptr)
        return nullptr;
    auto *record = reinterpret_cast<DocumentRecord *>(document);
    if (record->arena == nullptr)
        record->arena = new (std::nothrow) cblxml::DomArena();
    return record->arena;
}

xd_dom_node_t *arena_node(cblxml::DomArena &arena, xd_dom_node_t *document, uint32_t kind)
{
    xd_dom_node_t *node = arena.node(kind);
    if (node != nullptr) {
        set_mark(node);
        node->owner = document;
    }
    return node;
}

// Head-only unlink: the node is taken to be the head of its parent's list, so
// only the head pointer moves; the next node's prev_sibling is not repaired.
// Callers freeing from the middle of a list re-link the neighbours first.
void unlink_head(const xd_dom_node_t *node, const ReleaseRule &rule)
{
    xd_dom_node_t *parent = node->parent;
    if (parent == nullptr)
        return;
    if (rule.unlinks == HeadList::kChildren)
        parent->first_child = node->next_sibling;
    else if (rule.unlinks == HeadList::kAttributes)
        parent->first_attribute = node->next_sibling;
}

}  // namespace

namespace cblxml {

bool dom_text_is_blank(const char *chars, uint32_t length) { return is_blank(chars, length); }

bool dom_string_in_arena(const xd_dom_node_t *node, const char *text)
{
    const DomArena *arena = arena_of(node);
    return arena != nullptr && arena->owns(text);
}

int dom_element_node(xd_dom_node_t *document, xd_dom_node_t **out, const char *name,
                     const char *namespace_uri)
{
    DomArena *arena = document_arena(document);
    if (arena == nullptr || name == nullptr)
        return kvt_xe_xml_dom_element_node(document, out, name, namespace_uri);
    const char *shared = arena->shared(name);
    const char *ns = is_empty(namespace_uri) ? nullptr : arena->shared(namespace_uri);
    if (shared == nullptr || (!is_empty(namespace_uri) && ns == nullptr))
        return fail(out);
    return dom_element_node_named(document, out, shared, ns);
}

const char *dom_shared_string(xd_dom_node_t *document, const char *text)
{
    DomArena *arena = document_arena(document);
    return arena != nullptr && text != nullptr ? arena->shared(text) : nullptr;
}

const char *dom_shared_bytes(xd_dom_node_t *document, const char *bytes, size_t size)
{
    DomArena *arena = document_arena(document);
    return arena != nullptr ? arena->shared(bytes, size) : nullptr;
}

int dom_element_node_named(xd_dom_node_t *document, xd_dom_node_t **out, const char *name,
                           const char *namespace_uri)
{
    DomArena *arena = document_arena(document);
    if (arena == nullptr || name == nullptr)
        return fail(out);
    xd_dom_node_t *node = arena_node(*arena, document, XD_DOM_ELEMENT);
    if (node == nullptr)
        return fail(out);
    node->name = const_cast<char *>(name);
    node->namespace_uri = is_empty(namespace_uri) ? nullptr : const_cast<char *>(namespace_uri);
    return succeed(out, node);
}

int dom_attr_node_named(xd_dom_node_t *document, xd_dom_node_t **out, const char *name,
                        const char *namespace_uri, const char *value, size_t value_size)
{
    DomArena *arena = document_arena(document);
    if (arena == nullptr)
        return fail(out);
    xd_dom_node_t *node = arena_node(*arena, document, XD_DOM_ATTRIBUTE);
    if (node == nullptr)
        return fail(out);
    node->name = is_empty(name) ? nullptr : const_cast<char *>(name);
    node->namespace_uri = is_empty(namespace_uri) ? nullptr : const_cast<char *>(namespace_uri);
    if (value_size > 0 && (node->value = arena->copy(value, value_size)) == nullptr) {
        arena->release(node);
        return fail(out);
    }
    return succeed(out, node);
}

int dom_attr_node(xd_dom_node_t *document, xd_dom_node_t **out, const char *name,
                  const char *namespace_uri, const char *value)
{
    DomArena *arena = document_arena(document);
    if (arena == nullptr || value == nullptr)
        return kvt_xe_xml_dom_attr_node(document, out, name, namespace_uri, value);
    // Empty strings stay null, as the exported constructor leaves them.
    const char *shared = is_empty(name) ? nullptr : arena->shared(name);
    const char *ns = is_empty(namespace_uri) ? nullptr : arena->shared(namespace_uri);
    if ((!is_empty(name) && shared == nullptr) || (!is_empty(namespace_uri) && ns == nullptr))
        return fail(out);
    return dom_attr_node_named(document, out, shared, ns, value, std::strlen(value));
}

int dom_text_node(xd_dom_node_t *document, xd_dom_node_t **out, const char *chars, uint32_t length,
                  int keep_blank)
{
    DomArena *arena = document_arena(document);
    if (arena == nullptr || (chars == nullptr && length > 0))
        return kvt_xe_xml_dom_text_node(document, out, chars, length, keep_blank);
    if (keep_blank != 1 && is_blank(chars, length))
        return fail(out);
    xd_dom_node_t *node = arena_node(*arena, document, XD_DOM_TEXT);
    if (node == nullptr)
        return fail(out);
    node->name = arena->text_name();
    node->value = node->name != nullptr ? arena->copy(chars, length) : nullptr;
    if (node->value == nullptr) {
        arena->release(node);
        return fail(out);
    }
    return succeed(out, node);
}

void dom_set_strings_utf8(xd_dom_node_t *document, bool utf8)
{
    if (document != nullptr && document->kind == XD_DOM_DOCUMENT)
        reinterpret_cast<DocumentRecord *>(document)->stringsUtf8 = utf8;
}

const char *dom_document_encoding(const xd_dom_node_t *document)
{
    if (document == nullptr || document->kind != XD_DOM_DOCUMENT)
        return nullptr;
    if (reinterpret_cast<const DocumentRecord *>(document)->stringsUtf8)
        return "UTF-8";
    return document->value;
}

}  // namespace cblxml

extern "C" {

int kvt_xe_xml_dom_doc_node(xd_dom_node_t **out)
{
    if (out == nullptr)
        return fail(out);
    xd_dom_node_t *node = new_node(XD_DOM_DOCUMENT);
    if (node == nullptr)
        return fail(out);
    node->name = copy_string(kDocumentName);
    if (node->name == nullptr) {
        std::free(node);
        return fail(out);
    }
    return succeed(out, node);
}

int kvt_xe_xml_dom_element_node(void *owner, xd_dom_node_t **out, const char *name,
                                const char *namespace_uri)
{
    if (owner == nullptr || out == nullptr || name == nullptr)
        return fail(out);
    xd_dom_node_t *node = new_node(XD_DOM_ELEMENT);
    if (node == nullptr)
        return fail(out);
    node->owner = owner;
    node->name = copy_string(name);
    if (node->name == nullptr || !copy_unless_empty(namespace_uri, &node->namespace_uri))
        return discard(node, out);
    return succeed(out, node);
}

int kvt_xe_xml_dom_attr_node(void *owner, xd_dom_node_t **out, const char *name,
                             const char *namespace_uri, const char *value)
{
    // An attribute always has a value, even an empty one; a null value is a
    // caller error. The owner is stored but not required.
    if (out == nullptr || value == nullptr)
        return fail(out);
    xd_dom_node_t *node = new_node(XD_DOM_ATTRIBUTE);
    if (node == nullptr)
        return fail(out);
    node->owner = owner;
    if (!copy_unless_empty(name, &node->name) ||
        !copy_unless_empty(namespace_uri, &node->namespace_uri) ||
        !copy_unless_empty(value, &node->value))
        return discard(node, out);
    return succeed(out, node);
}

int kvt_xe_xml_dom_text_node(void *owner, xd_dom_node_t **out, const char *chars, uint32_t length,
                             int keep_blank)
{
    if (owner == nullptr || out == nullptr || (chars == nullptr && length > 0))
        return fail(out);
    // Status 1 without a node also means "blank text dropped"; callers treat
    // it as the absence of a node, not as an error of the document.
    if (keep_blank != 1 && is_blank(chars, length))
        return fail(out);
    xd_dom_node_t *node = new_node(XD_DOM_TEXT);
    if (node == nullptr)
        return fail(out);
    node->owner = owner;
    node->name = copy_string(kTextName);
    if (node->name != nullptr)
        node->value = copy_bytes(chars, length);
    if (node->value == nullptr)
        return discard(node, out);
    return succeed(out, node);
}

int kvt_xe_xml_dom_pi_node(void *owner, xd_dom_node_t **out, char *target, char *data)
{
    if (out == nullptr || target == nullptr)
        return fail(out);
    xd_dom_node_t *node = new_node(XD_DOM_PI);
    if (node == nullptr)
        return fail(out);
    // Ownership of both strings passes to the node only now that nothing can
    // fail any more; on failure the caller still owns and frees them.
    node->owner = owner;
    node->name = target;
    node->value = data;
    return succeed(out, node);
}

// Releases `node` and everything it owns. With unlink 1 the head pointer of
// the parent's list (children, or attributes for an attribute) moves on to
// the node's next sibling; with unlink 0 the parent is not touched.
//
// The walk is iterative and uses no memory of its own: documents can nest
// hundreds of thousands of levels deep, which a recursive release would turn
// into a stack overflow inside the COBOL program. Going down, each node is
// taken off its owner's list and its parent field is pointed at that owner,
// so the way back up is always known; only nodes about to be freed are
// written this way. Seen from outside, the effect is that of releasing each
// child list from its head, node after node: the lists of `node` end empty
// with last_child / last_attribute cleared, and only the parent of `node`
// itself is ever updated.
void kvt_xe_xml_dom_free_node(xd_dom_node_t *node, int unlink)
{
    if (node == nullptr || release_rule(node) == nullptr)
        return;
    // Nodes of a document that goes whole are not kept for reuse.
    const bool discarding = node->kind == XD_DOM_DOCUMENT;
    xd_dom_node_t *current = node;
    for (;;) {
        const ReleaseRule &rule = *release_rule(current);
        if (xd_dom_node_t *below = next_to_release(current, rule)) {
            below->parent = current;
            current = below;
            continue;
        }
        if (current == node) {
            if (unlink == 1)
                unlink_head(node, rule);
            release_record(node, rule, discarding);
            return;
        }
        xd_dom_node_t *up = current->parent;
        release_record(current, rule, discarding);
        current = up;
    }
}

}  // extern "C"
