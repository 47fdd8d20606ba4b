// Every heap allocation of a parse fails in turn: the program sees the
// events of a good parse up to some point and then at most one EXCEPTION 201
// and the end, or in tree mode a failure result or the whole tree; the parse
// leaves no block behind.
#include <cstdio>

#include <gtest/gtest.h>

#include "failing_allocator.h"
#include "parse_events.h"

namespace {

using alloc_sweep::Fault;
using cblxml_test::Event;

// Delivers `doc` as a COBOL program does, stopping after `stop` events with
// the clean-up call, and compares each event with `good` (without allocating).
int deliver(const std::string &doc, uint32_t flags, const std::vector<Event> &good, size_t stop)
{
    xd_parse_info *state = nullptr;
    void *address = const_cast<char *>(doc.data()), *text = nullptr;  // only read
    uint32_t length = static_cast<uint32_t>(doc.size()), textLength = 0;
    int faults = 0;
    bool matching = true;
    size_t i = 0;
    for (; i == 0 || (state != nullptr && i < stop && i <= good.size()); ++i) {
        unsigned char code[4] = {0xFF, 0xFF, 0xFF, 0xFF};
        char name[CBLXML_EVENT_NAME_LEN] = "#";
        CBL_XMLPARSE_INTERFACE(&state, &address, &text, &length, &textLength, code, name, &flags);
        const int32_t c = cblxml_test::big_endian_code(code);
        const char *t = text != nullptr ? static_cast<const char *>(text) : "";
        if (name[0] == '#')
            return Fault::SilentStop;  // not even an exception
        const Event *e = i < good.size() ? &good[i] : nullptr;
        const bool same = e != nullptr && e->code == c && e->text.size() == textLength &&
                          std::memcmp(e->name.data(), name, e->name.size()) == 0 &&
                          std::memcmp(e->text.data(), t, textLength) == 0;
        if (!same && (!matching || std::memcmp(name, "EXCEPTION ", 10) != 0 || c != 201))
            faults |= Fault::WrongData;  // not the good event, nor the one exception
        matching = matching && same;
    }
    if (state != nullptr)  // the program stops here
        CBL_XMLPARSE_INTERFACE(&state, nullptr, &text, nullptr, nullptr, nullptr, nullptr, nullptr);
    if (state != nullptr || i > good.size())
        faults |= Fault::BadState;  // not ended, or more events than the good run's
    else if (matching && i < std::min(stop, good.size()))
        faults |= Fault::SilentStop;
    std::free(text);
    return faults;
}

bool same(const char *a, const char *b)
{
    return a == b || (a != nullptr && b != nullptr && std::strcmp(a, b) == 0);
}

bool same_tree(const xd_dom_node_t *a, const xd_dom_node_t *b)
{
    for (; a != nullptr && b != nullptr; a = a->next_sibling, b = b->next_sibling) {
        if (a->kind != b->kind || !same(a->name, b->name) || !same(a->value, b->value) ||
            !same(a->namespace_uri, b->namespace_uri) ||
            !same_tree(a->first_attribute, b->first_attribute) ||
            !same_tree(a->first_child, b->first_child))
            return false;
    }
    return a == b;
}

// A tree-mode parse; its result. The caller frees the tree.
int32_t parse_tree(const std::string &doc, xd_dom_node_t **tree)
{
    xd_dom_parse_err_t error{}, *record = &error;
    const int32_t result = kvt_xe_xml_dom_parse(doc.data(), static_cast<uint32_t>(doc.size()), tree,
                                                &record, CBLXML_OPT_TREE);
    std::free(error.message);
    return result;
}

// Success only with the whole tree of a good parse (null when that failed).
int check_tree(const std::string &doc, const xd_dom_node_t *good)
{
    xd_dom_node_t *tree = nullptr;
    const int faults = parse_tree(doc, &tree) == 0 && !same_tree(tree, good) ? Fault::WrongData : 0;
    kvt_xe_xml_dom_free_node(tree, 0);
    return faults;
}

void expect_clean(const alloc_sweep::Tally &tally)
{
    std::printf("%ld points: %ld silent, %ld wrong data, %ld bad state, %ld leak, %ld crash\n",
                tally.points, tally.faults[0], tally.faults[1], tally.faults[2], tally.faults[3],
                tally.faults[4]);
    EXPECT_GT(tally.points, 50);
    EXPECT_EQ(tally.firstFault, "");
}

const std::string kVaried =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
    "<!DOCTYPE r [<!ENTITY e \"ent\"><!ATTLIST r a CDATA #IMPLIED>]>\n"
    "<!-- note --><r xmlns:p=\"urn:p\" a=\"1 &amp; 2\">\n <p:x b='&e;' c=\"&#233;\">t&#233;xt "
    "&e; more</p:x><?pi data?><![CDATA[<c>]]><e/>caf\xC3\xA9 &lt;&gt;</r>\n";
const std::string kMalformed = "<?xml version=\"1.0\"?><r><a x=\"1\">text</b></r>";
const std::string kLatin1 =
    "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><r>caf\xE9 &unknown; <x/></r>";
// References to entities of the external subset, which is never read (the
// declaration is closed at the comment behind it).
const std::string kSkipped = "<!DOCTYPE r SYSTEM \"r.dtd\" [<!ENTITY i \"in\">]><!--c-->"
                             "<r a=\"x&ext;y\">&laquo;caf\xC3\xA9 &amp;&ext;<s/>&ext;</r>";

TEST(AllocationFailure, EventMode)
{
    const struct {
        std::string doc;
        uint32_t flags;
        size_t stop;  // the program stops after this many events
    } cases[] = {
        {kVaried, 0, SIZE_MAX},
        {kVaried, 0, 12},
        {cblxml_test::national("<?xml version=\"1.0\"?><r a=\"v\">t&#x10400;&amp;caf\xC3\xA9"
                               "<s/></r>"),
         CBLXML_OPT_NATIONAL, SIZE_MAX},
        {cblxml_test::ebcdic("<r a=\"v\">caf\xC3\xA9 &amp; <s/></r>"), CBLXML_OPT_EBCDIC_DATA,
         SIZE_MAX},
        {kMalformed, 0, SIZE_MAX},
        {kLatin1, 0, SIZE_MAX},
        {kSkipped, 0, SIZE_MAX},
        {kVaried, CBLXML_OPT_VALIDATE, SIZE_MAX},
        // The progressive parse gives way to a whole-document one here.
        {"<?xml version=\"1.1\"\x85"
         "encoding=\"iso-8859-1\"?>\n<foo/>\n",
         0, SIZE_MAX},
    };
    for (const auto &c : cases) {
        const std::vector<Event> good = cblxml_test::parse_events(c.doc, c.flags, c.stop);
        ASSERT_FALSE(good.empty());
        expect_clean(alloc_sweep::sweep([&] { return deliver(c.doc, c.flags, good, c.stop); }));
    }
}

TEST(AllocationFailure, TreeMode)
{
    for (const std::string &doc : {kVaried, kMalformed, kLatin1, kSkipped}) {
        xd_dom_node_t *tree = nullptr;
        const xd_dom_node_t *good = parse_tree(doc, &tree) == 0 ? tree : nullptr;
        expect_clean(alloc_sweep::sweep([&] { return check_tree(doc, good); }));
        kvt_xe_xml_dom_free_node(tree, 0);
    }
}

}  // namespace
