// Tree-mode parses: the document tree that the file I/O side maps records from.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "cblxml.h"
#include "parse_events.h"

namespace {

using Tree = cblxml_test::TreeParse;

std::string value(const xd_dom_node_t *n)
{
    return n != nullptr && n->value != nullptr ? n->value : "";
}

int count_children(const xd_dom_node_t *n)
{
    int count = 0;
    for (const xd_dom_node_t *c = n->first_child; c != nullptr; c = c->next_sibling)
        ++count;
    return count;
}

TEST(TreeModeTest, BuildsElementsAttributesAndMergedText)
{
    Tree t("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
           "<r xmlns=\"urn:x\" a=\"1\" b=\"&lt;\">\n  <c>one &amp; two&#33;</c>\n  <d/>\n</r>");
    ASSERT_EQ(t.result, 0);
    ASSERT_NE(t.doc, nullptr);
    EXPECT_EQ(t.doc->kind, uint32_t{XD_DOM_DOCUMENT});
    EXPECT_EQ(value(t.doc), "UTF-8") << "the document's encoding, upper-cased";

    const xd_dom_node_t *pi = t.doc->first_child;
    ASSERT_NE(pi, nullptr);
    EXPECT_EQ(pi->kind, uint32_t{XD_DOM_PI});
    EXPECT_STREQ(pi->name, "xml");
    EXPECT_EQ(value(pi), "version=\"1.0\" encoding=\"utf-8\"");

    const xd_dom_node_t *r = pi->next_sibling;
    ASSERT_NE(r, nullptr);
    EXPECT_STREQ(r->name, "r");
    EXPECT_STREQ(r->namespace_uri, "urn:x");
    ASSERT_NE(r->first_attribute, nullptr);
    EXPECT_STREQ(r->first_attribute->name, "a");
    EXPECT_EQ(value(r->first_attribute), "1");
    EXPECT_EQ(value(r->first_attribute->next_sibling), "<");
    EXPECT_EQ(r->last_attribute, r->first_attribute->next_sibling);
    EXPECT_EQ(r->first_attribute->next_sibling->next_sibling, nullptr)
        << "namespace declarations are not attributes in tree mode";

    EXPECT_EQ(count_children(r), 2) << "blank text between elements makes no node";
    const xd_dom_node_t *c = r->first_child;
    ASSERT_NE(c, nullptr);
    ASSERT_EQ(count_children(c), 1) << "adjacent text call-backs merge";
    EXPECT_EQ(c->first_child->kind, uint32_t{XD_DOM_TEXT});
    EXPECT_EQ(value(c->first_child), "one & two!");
    EXPECT_EQ(r->last_child, c->next_sibling);
    EXPECT_EQ(c->next_sibling->parent, r);
}

TEST(TreeModeTest, TrailingBlanksBecomeSpacesAndProcessingInstructionsJoin)
{
    Tree t("<?a b?><r><c>x\t\r\n</c><d>\t</d><?c d?></r>");
    ASSERT_EQ(t.result, 0);
    EXPECT_STREQ(t.doc->first_child->name, "a");
    const xd_dom_node_t *c = t.doc->first_child->next_sibling->first_child;
    EXPECT_EQ(value(c->first_child), "x  ") << "tab and line end turned into spaces";
    EXPECT_EQ(c->next_sibling->first_child, nullptr) << "a lone tab becomes a blank";
    EXPECT_STREQ(c->next_sibling->next_sibling->name, "c");
    EXPECT_EQ(value(c->next_sibling->next_sibling), "d");
}

TEST(TreeModeTest, ManyReferencesMergeIntoOneNode)
{
    std::string text = "<r>";
    std::string expected;
    for (int i = 0; i < 20000; ++i) {
        text += "a&amp;";
        expected += "a&";
    }
    text += "</r>";
    Tree t(text);
    ASSERT_EQ(t.result, 0);
    const xd_dom_node_t *r = t.doc->first_child;
    ASSERT_EQ(count_children(r), 1);
    EXPECT_EQ(value(r->first_child), expected);
}

TEST(TreeModeTest, Utf16DocumentsAreRead)
{
    std::u16string wide = u"\ufeff<r a=\"\u00e9\">\u20ac</r>";  // UTF-16 needs its mark
    std::string bytes(reinterpret_cast<const char *>(wide.data()), wide.size() * 2);
    Tree t(bytes);
    ASSERT_EQ(t.result, 0);
    const xd_dom_node_t *r = t.doc->first_child;
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(value(r->first_attribute), "\xC3\xA9");
    EXPECT_EQ(value(r->first_child), "\xE2\x82\xAC");
}

}  // namespace
