// Document tree nodes: what the constructors store or refuse, who owns the
// strings, the append rule and release. Leaks are caught by running this
// suite under LeakSanitizer.
#include "cblxml.h"
#include "xmldom/dom_append.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

namespace {

struct NodeFree {
    void operator()(xd_dom_node_t *node) const { kvt_xe_xml_dom_free_node(node, 0); }
};
using NodePtr = std::unique_ptr<xd_dom_node_t, NodeFree>;
using Out = xd_dom_node_t **;

int g_context;
void *const kOwner = &g_context;

// A value that a constructor must overwrite with null when it fails.
xd_dom_node_t *const kPoison = reinterpret_cast<xd_dom_node_t *>(std::uintptr_t{0x1000});

int text(Out out, const char *chars, int keepBlank, void *owner = kOwner)
{
    return kvt_xe_xml_dom_text_node(owner, out, chars, static_cast<uint32_t>(std::strlen(chars)),
                                    keepBlank);
}

// The node that `make` (which must succeed) made.
template <typename Make>
xd_dom_node_t *made(Make &&make)
{
    xd_dom_node_t *node = nullptr;
    EXPECT_EQ(make(&node), 0);
    return node;
}

xd_dom_node_t *element(const char *name)
{
    return made([&](Out o) { return kvt_xe_xml_dom_element_node(kOwner, o, name, nullptr); });
}

xd_dom_node_t *attribute(const char *name, const char *value)
{
    return made([&](Out o) { return kvt_xe_xml_dom_attr_node(kOwner, o, name, nullptr, value); });
}

xd_dom_node_t *text(const char *chars)
{
    return made([&](Out o) { return text(o, chars, 1); });
}

xd_dom_node_t *pi(const char *target, const char *data)
{
    return made(
        [&](Out o) { return kvt_xe_xml_dom_pi_node(kOwner, o, strdup(target), strdup(data)); });
}

xd_dom_node_t *document()
{
    return made([](Out o) { return kvt_xe_xml_dom_doc_node(o); });
}

void append(xd_dom_node_t *parent, xd_dom_node_t *child)
{
    ASSERT_TRUE(cblxml::dom_append_child(parent, child));
}

void expect_field(const char *stored, const char *expected)
{
    if (expected == nullptr) {
        EXPECT_EQ(stored, nullptr);
    } else {
        ASSERT_NE(stored, nullptr);
        EXPECT_STREQ(stored, expected);
    }
}

// Which calls make a node, and the fields it holds: an empty string is
// stored as null, everything else as a private copy. Text nodes that hold
// only spaces, line feeds and NULs are dropped unless exactly 1 asks to keep
// them. A refused call gives status 1 and a null node.
TEST(NodeConstructors, StoreOrRefuse)
{
    static char *data = strdup("x");
    const struct {
        const char *label;
        int (*make)(Out);
        uint32_t kind;  // 0: refused
        const char *name;
        const char *ns;
        const char *value;
    } rows[] = {
        // clang-format off
        {"blanks dropped", [](Out o) { return text(o, "  \n  ", 0); }, 0, nullptr, nullptr, nullptr},
        {"blanks kept", [](Out o) { return text(o, "  \n  ", 1); }, XD_DOM_TEXT, "text", nullptr, "  \n  "},
        {"NUL counts as blank", [](Out o) { return kvt_xe_xml_dom_text_node(kOwner, o, "\0 \n", 3, 0); }, 0, nullptr, nullptr, nullptr},
        {"empty dropped", [](Out o) { return text(o, "", 0); }, 0, nullptr, nullptr, nullptr},
        {"empty kept", [](Out o) { return text(o, "", 1); }, XD_DOM_TEXT, "text", nullptr, ""},
        {"only 1 keeps blanks", [](Out o) { return text(o, " \n", 2); }, 0, nullptr, nullptr, nullptr},
        {"tab is content", [](Out o) { return text(o, "\t", 0); }, XD_DOM_TEXT, "text", nullptr, "\t"},
        {"CR LF is content", [](Out o) { return text(o, "  \r\n", 0); }, XD_DOM_TEXT, "text", nullptr, "  \r\n"},
        {"word between blanks", [](Out o) { return text(o, " a \n", 0); }, XD_DOM_TEXT, "text", nullptr, " a \n"},
        {"length bytes only", [](Out o) { return kvt_xe_xml_dom_text_node(kOwner, o, "abcdef", 3, 0); }, XD_DOM_TEXT, "text", nullptr, "abc"},
        {"attribute", [](Out o) { return kvt_xe_xml_dom_attr_node(nullptr, o, "id", "urn:a", "7"); }, XD_DOM_ATTRIBUTE, "id", "urn:a", "7"},
        {"attribute, empty name", [](Out o) { return kvt_xe_xml_dom_attr_node(nullptr, o, "", "urn:a", "7"); }, XD_DOM_ATTRIBUTE, nullptr, "urn:a", "7"},
        {"attribute, empty value", [](Out o) { return kvt_xe_xml_dom_attr_node(nullptr, o, "id", "", ""); }, XD_DOM_ATTRIBUTE, "id", nullptr, nullptr},
        {"element", [](Out o) { return kvt_xe_xml_dom_element_node(kOwner, o, "a", "urn:x"); }, XD_DOM_ELEMENT, "a", "urn:x", nullptr},
        {"element, empty namespace", [](Out o) { return kvt_xe_xml_dom_element_node(kOwner, o, "a", ""); }, XD_DOM_ELEMENT, "a", nullptr, nullptr},
        {"document", [](Out o) { return kvt_xe_xml_dom_doc_node(o); }, XD_DOM_DOCUMENT, "Document", nullptr, nullptr},
        {"text without owner, even for content", [](Out o) { return text(o, "abc", 1, nullptr); }, 0, nullptr, nullptr, nullptr},
        {"attribute with a null value", [](Out o) { return kvt_xe_xml_dom_attr_node(kOwner, o, "id", nullptr, nullptr); }, 0, nullptr, nullptr, nullptr},
        {"element without owner", [](Out o) { return kvt_xe_xml_dom_element_node(nullptr, o, "a", "urn:x"); }, 0, nullptr, nullptr, nullptr},
        {"PI without target", [](Out o) { return kvt_xe_xml_dom_pi_node(kOwner, o, nullptr, data); }, 0, nullptr, nullptr, nullptr},
        // clang-format on
    };
    for (const auto &r : rows) {
        SCOPED_TRACE(r.label);
        xd_dom_node_t *out = kPoison;
        EXPECT_EQ(r.make(&out), r.kind == 0 ? 1 : 0);
        NodePtr node(out == kPoison ? nullptr : out);
        if (r.kind == 0) {
            EXPECT_EQ(out, nullptr);
            continue;
        }
        ASSERT_NE(out, nullptr);
        EXPECT_EQ(out->kind, r.kind);
        expect_field(out->name, r.name);
        expect_field(out->namespace_uri, r.ns);
        expect_field(out->value, r.value);
        EXPECT_EQ(out->parent, nullptr);
        EXPECT_EQ(out->first_child, nullptr);
    }
    std::free(data);  // a double free here would mean the refused node took it

    // A text keeps NULs when asked, and ends in one more.
    xd_dom_node_t *out = nullptr;
    ASSERT_EQ(kvt_xe_xml_dom_text_node(kOwner, &out, "a\0b", 3, 1), 0);
    NodePtr nul(out);
    EXPECT_EQ(std::string(out->value, 4), std::string("a\0b\0", 4));
    EXPECT_EQ(out->owner, kOwner);
}

TEST(NodeConstructors, PiTakesTheStringsThemselves)
{
    char *target = strdup("xml-stylesheet");
    char *data = strdup("href=\"a.xsl\"");
    xd_dom_node_t *out = nullptr;
    ASSERT_EQ(kvt_xe_xml_dom_pi_node(nullptr, &out, target, data), 0);
    NodePtr node(out);
    EXPECT_EQ(out->kind, uint32_t{XD_DOM_PI});
    EXPECT_EQ(out->name, target);
    EXPECT_EQ(out->value, data);
}

TEST(Append, DocumentTakesOnlyElementsAndProcessingInstructions)
{
    const struct {
        xd_dom_node_t *(*make)();
        bool accepted;
    } rows[] = {
        {[] { return element("root"); }, true}, {[] { return pi("t", "d"); }, true},
        {[] { return text("x"); }, false},      {[] { return attribute("a", "1"); }, false},
        {[] { return document(); }, false},
    };
    for (const auto &r : rows) {
        NodePtr doc(document());
        xd_dom_node_t *child = r.make();
        const bool linked = cblxml::dom_append_child(doc.get(), child);
        EXPECT_EQ(linked, r.accepted);
        EXPECT_EQ(doc->first_child, linked ? child : nullptr);
        EXPECT_EQ(doc->first_attribute, nullptr);
        EXPECT_EQ(child->parent, linked ? doc.get() : nullptr);
        if (!linked)
            kvt_xe_xml_dom_free_node(child, 0);
    }
}

// The names along a sibling list, forwards or backwards.
std::string walk(const xd_dom_node_t *node, bool backwards)
{
    std::string names;
    for (; node != nullptr; node = backwards ? node->prev_sibling : node->next_sibling)
        names += (names.empty() ? "" : " ") + std::string(node->name);
    return names;
}

TEST(Append, KeepsChildrenAndAttributesInSeparateOrderedLists)
{
    NodePtr root(element("root"));
    xd_dom_node_t *a = element("a");
    xd_dom_node_t *t = text("t");
    xd_dom_node_t *p = pi("p", "");
    xd_dom_node_t *x = attribute("x", "1");
    xd_dom_node_t *y = attribute("y", "2");
    for (xd_dom_node_t *n : {a, x, t, y, p})
        append(root.get(), n);

    EXPECT_EQ(walk(root->first_child, false), "a text p");
    EXPECT_EQ(walk(root->last_child, true), "p text a");
    EXPECT_EQ(walk(root->first_attribute, false), "x y");
    EXPECT_EQ(walk(root->last_attribute, true), "y x");
    for (xd_dom_node_t *n : {a, x, t, y, p})
        EXPECT_EQ(n->parent, root.get());

    // After the only child of a list was freed, the next append starts afresh.
    NodePtr other(element("other"));
    append(other.get(), element("gone"));
    kvt_xe_xml_dom_free_node(other->first_child, 1);
    ASSERT_EQ(other->first_child, nullptr);
    xd_dom_node_t *fresh = element("fresh");
    append(other.get(), fresh);
    EXPECT_EQ(other->first_child, fresh);
    EXPECT_EQ(other->last_child, fresh);
    EXPECT_EQ(fresh->prev_sibling, nullptr);
}

TEST(FreeNode, NullAndUnknownKindsAreLeftAlone)
{
    kvt_xe_xml_dom_free_node(nullptr, 1);

    auto *comment = static_cast<xd_dom_node_t *>(std::calloc(1, sizeof(xd_dom_node_t)));
    comment->kind = 8;
    kvt_xe_xml_dom_free_node(comment, 1);
    EXPECT_EQ(comment->kind, 8u);  // still ours: under ASan a freed record would trap here

    // Inside a tree the unknown node is passed over, not freed, and the
    // release still finishes.
    xd_dom_node_t *root = element("root");
    append(root, element("before"));
    append(root, comment);
    append(root, element("after"));
    kvt_xe_xml_dom_free_node(root, 0);
    EXPECT_EQ(comment->kind, 8u);
    std::free(comment);
}

// Freeing the first of a parent's list with unlink advances the parent's
// head and nothing else; without unlink the parent is not touched at all.
TEST(FreeNode, UnlinkAdvancesOnlyTheHead)
{
    const struct {
        xd_dom_node_t *(*make)();
        bool isAttribute;
    } rows[] = {
        {[] { return element("e"); }, false},
        {[] { return text("t"); }, false},
        {[] { return pi("p", "d"); }, false},
        {[] { return attribute("a", "1"); }, true},
    };
    for (const auto &r : rows) {
        NodePtr parent(element("parent"));
        xd_dom_node_t *first = r.make();
        xd_dom_node_t *second = r.make();
        xd_dom_node_t *third = r.make();
        for (xd_dom_node_t *n : {first, second, third})
            append(parent.get(), n);
        xd_dom_node_t **head = r.isAttribute ? &parent->first_attribute : &parent->first_child;

        const auto firstAddress = reinterpret_cast<std::uintptr_t>(first);
        kvt_xe_xml_dom_free_node(first, 1);
        EXPECT_EQ(*head, second);
        // The follower's back link is deliberately not repaired.
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(second->prev_sibling), firstAddress);

        kvt_xe_xml_dom_free_node(second, 0);
        EXPECT_EQ(*head, second);
        *head = third;
        third->prev_sibling = nullptr;
    }
}

TEST(FreeNode, DeepTreeFreesWithoutExhaustingTheStack)
{
    xd_dom_node_t *doc = document();
    xd_dom_node_t *parent = doc;
    for (int level = 0; level < 200000; ++level) {
        xd_dom_node_t *child = element("e");
        ASSERT_NE(child, nullptr);
        append(parent, child);
        if (level % 1000 == 0)
            append(child, attribute("n", "1"));
        parent = child;
    }
    append(parent, text("leaf"));
    kvt_xe_xml_dom_free_node(doc, 0);
}

}  // namespace

namespace {

// Both kinds of constructor, as the tree builders and as a program call them.
struct ArenaCall {
    const char *label;
    int (*arena)(xd_dom_node_t *, Out);
    int (*exported)(xd_dom_node_t *, Out);
};

}  // namespace

// The arena constructors make the same nodes and refuse the same calls as
// the exported ones; names are stored once; a string a node took from the
// heap later is still freed with it (LeakSanitizer watches), and removed
// nodes are taken back before the document goes.
TEST(ArenaNodes, SameNodesAsTheExportedConstructors)
{
    using namespace cblxml;
    const ArenaCall calls[] = {
        // clang-format off
        {"element", [](xd_dom_node_t *d, Out o) { return dom_element_node(d, o, "a", "urn:x"); }, [](xd_dom_node_t *d, Out o) { return kvt_xe_xml_dom_element_node(d, o, "a", "urn:x"); }},
        {"element, empty namespace", [](xd_dom_node_t *d, Out o) { return dom_element_node(d, o, "a", ""); }, [](xd_dom_node_t *d, Out o) { return kvt_xe_xml_dom_element_node(d, o, "a", ""); }},
        {"attribute, empty name and value", [](xd_dom_node_t *d, Out o) { return dom_attr_node(d, o, "", "urn:a", ""); }, [](xd_dom_node_t *d, Out o) { return kvt_xe_xml_dom_attr_node(d, o, "", "urn:a", ""); }},
        {"attribute, null value", [](xd_dom_node_t *d, Out o) { return dom_attr_node(d, o, "id", nullptr, nullptr); }, [](xd_dom_node_t *d, Out o) { return kvt_xe_xml_dom_attr_node(d, o, "id", nullptr, nullptr); }},
        {"blank text dropped", [](xd_dom_node_t *d, Out o) { return dom_text_node(d, o, " \n", 2, 0); }, [](xd_dom_node_t *d, Out o) { return kvt_xe_xml_dom_text_node(d, o, " \n", 2, 0); }},
        {"text with NUL", [](xd_dom_node_t *d, Out o) { return dom_text_node(d, o, "a\0b", 3, 1); }, [](xd_dom_node_t *d, Out o) { return kvt_xe_xml_dom_text_node(d, o, "a\0b", 3, 1); }},
        // clang-format on
    };
    NodePtr doc(document());
    for (const ArenaCall &c : calls) {
        SCOPED_TRACE(c.label);
        xd_dom_node_t *mine = kPoison, *theirs = kPoison;
        ASSERT_EQ(c.arena(doc.get(), &mine), c.exported(doc.get(), &theirs));
        NodePtr keep(theirs);
        if (theirs == nullptr) {
            EXPECT_EQ(mine, nullptr);
            continue;
        }
        EXPECT_EQ(mine->kind, theirs->kind);
        EXPECT_EQ(mine->owner, doc.get());
        for (auto field : {&xd_dom_node_t::name, &xd_dom_node_t::namespace_uri}) {
            expect_field(mine->*field, theirs->*field);
        }
        if (theirs->value != nullptr)
            EXPECT_EQ(std::string(mine->value, 4), std::string(theirs->value, 4));
        else
            EXPECT_EQ(mine->value, nullptr);
        kvt_xe_xml_dom_free_node(mine, 0);
    }
    xd_dom_node_t *a = nullptr, *b = nullptr, *t = nullptr;
    ASSERT_EQ(dom_element_node(doc.get(), &a, "order", "urn:o"), 0);
    append(doc.get(), a);
    ASSERT_EQ(dom_element_node(doc.get(), &b, "order", "urn:o"), 0);
    append(a, b);
    EXPECT_EQ(a->name, b->name);
    EXPECT_EQ(a->namespace_uri, b->namespace_uri);
    ASSERT_EQ(dom_text_node(doc.get(), &t, "x", 1, 0), 0);
    append(b, t);
    EXPECT_TRUE(dom_string_in_arena(t, t->value));
    t->value = strdup("a value of its own");
    EXPECT_FALSE(dom_string_in_arena(t, t->value));
    EXPECT_FALSE(dom_string_in_arena(a, "elsewhere"));
    kvt_xe_xml_dom_free_node(b, 1);  // with its text, before the document
    EXPECT_EQ(a->first_child, nullptr);
}

// A name taken by its bytes is the document's one copy of it, cut at a NUL;
// new bytes at the same address (a reused record area) give their own copy.
TEST(ArenaNodes, SharedBytesFollowTheBytesNotTheirAddress)
{
    using namespace cblxml;
    NodePtr doc(document());
    char area[8] = {'o', 'r', 'd', 'e', 'r', 'X', '\0', 'y'};
    const char *order = dom_shared_bytes(doc.get(), area, 5);
    ASSERT_NE(order, nullptr);
    EXPECT_STREQ(order, "order");
    EXPECT_EQ(dom_shared_bytes(doc.get(), area, 5), order);
    EXPECT_EQ(dom_shared_string(doc.get(), "order"), order);
    std::memcpy(area, "line", 4);
    EXPECT_STREQ(dom_shared_bytes(doc.get(), area, 5), "liner");
    EXPECT_STREQ(dom_shared_bytes(doc.get(), area, 8), "linerX");
    EXPECT_STREQ(dom_shared_bytes(doc.get(), area, 0), "");
    xd_dom_node_t *element = nullptr;
    ASSERT_EQ(dom_element_node(doc.get(), &element, "e", nullptr), 0);
    EXPECT_EQ(dom_shared_bytes(element, area, 5), nullptr);  // not a document
    kvt_xe_xml_dom_free_node(element, 0);
}
