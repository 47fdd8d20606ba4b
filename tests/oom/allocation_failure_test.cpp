// Every heap allocation of a parse fails in turn: the program sees the
// events of a good parse up to some point and then at most one EXCEPTION
// 201 and the end, or in tree mode a failure result or the whole tree, and
// the parse leaves no block behind.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cblxml.h"
#include "failing_allocator.h"

namespace {

using alloc_sweep::Fault;

struct Event {
    std::string name, text;
    int32_t code;
};

// Delivers the events of `doc` as a COBOL program does. With `good` null it
// records them into `seen` (a good run); else it compares each with `good`
// without allocating and returns the faults found. `stop` events in, the
// program stops and makes the clean-up call.
int deliver(const std::string &doc, uint32_t flags, const std::vector<Event> *good,
            std::vector<Event> *seen = nullptr, size_t stop = SIZE_MAX)
{
    xd_parse_info *state = nullptr;
    void *address = const_cast<char *>(doc.data()), *text = nullptr;  // only read
    uint32_t length = static_cast<uint32_t>(doc.size()), textLength = 0;
    int faults = 0;
    bool oom = false, matching = true;
    size_t i = 0;
    for (; i == 0 || (state != nullptr && i < stop); ++i) {
        unsigned char code[4] = {0xFF, 0xFF, 0xFF, 0xFF};
        char name[CBLXML_EVENT_NAME_LEN];
        std::memset(name, '#', sizeof name);
        CBL_XMLPARSE_INTERFACE(&state, &address, &text, &length, &textLength, code, name,
                               &flags);
        const int32_t c = static_cast<int32_t>(uint32_t{code[0]} << 24 | code[1] << 16 |
                                               code[2] << 8 | code[3]);
        const char *t = text != nullptr ? static_cast<const char *>(text) : "";
        if (good == nullptr) {
            seen->push_back({std::string(name, sizeof name), std::string(t, textLength), c});
            continue;
        }
        if (name[0] == '#')
            return faults | Fault::SilentStop;  // no event at all
        const bool same = i < good->size() && (*good)[i].code == c &&
                          std::memcmp((*good)[i].name.data(), name, sizeof name) == 0 &&
                          (*good)[i].text.size() == textLength &&
                          std::memcmp((*good)[i].text.data(), t, textLength) == 0;
        if (!same && (oom || !matching || std::memcmp(name, "EXCEPTION ", 10) != 0 || c != 201))
            faults |= Fault::WrongData;
        oom = !same;
        matching = matching && same;
    }
    if (state != nullptr) {
        if (i < stop)
            faults |= Fault::BadState;  // events past the good run's
        CBL_XMLPARSE_INTERFACE(&state, nullptr, &text, nullptr, nullptr, nullptr, nullptr,
                               nullptr);
        if (state != nullptr)
            faults |= Fault::BadState;
    } else if (good != nullptr && matching && i < std::min(stop, good->size())) {
        faults |= Fault::SilentStop;
    }
    std::free(text);
    return faults;
}

bool same_text(const char *a, const char *b)
{
    return a == b || (a != nullptr && b != nullptr && std::strcmp(a, b) == 0);
}

bool same_tree(const xd_dom_node_t *a, const xd_dom_node_t *b)
{
    for (; a != nullptr && b != nullptr; a = a->next_sibling, b = b->next_sibling) {
        if (a->kind != b->kind || !same_text(a->name, b->name) || !same_text(a->value, b->value) ||
            !same_text(a->namespace_uri, b->namespace_uri) ||
            !same_tree(a->first_attribute, b->first_attribute) ||
            !same_tree(a->first_child, b->first_child))
            return false;
    }
    return a == b;
}

// A tree-mode parse: a failure result, or success with the whole tree.
int build_tree(const std::string &doc, const xd_dom_node_t *good, xd_dom_node_t **keep = nullptr)
{
    xd_dom_node_t *tree = nullptr;
    xd_dom_parse_err_t error{};
    xd_dom_parse_err_t *record = &error;
    const int32_t result = kvt_xe_xml_dom_parse(doc.data(), static_cast<uint32_t>(doc.size()),
                                                &tree, &record, CBLXML_OPT_TREE);
    const int faults = result == 0 && good != nullptr && !same_tree(tree, good) ? Fault::WrongData : 0;
    std::free(error.message);
    if (keep != nullptr)
        *keep = tree;
    else
        kvt_xe_xml_dom_free_node(tree, 0);
    return faults;
}

const std::string kVaried =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
    "<!DOCTYPE r [<!ENTITY e \"ent\"><!ATTLIST r a CDATA #IMPLIED>]>\n"
    "<!-- note --><r xmlns:p=\"urn:p\" a=\"1 &amp; 2\">\n"
    " <p:x b='&e;' c=\"&#233;\">t&#233;xt &e; more</p:x><?pi data?>"
    "<![CDATA[<c>]]><e/>caf\xC3\xA9 &lt;&gt;</r>\n";

std::string national(const std::string &ascii)
{
    std::string out;
    for (char c : ascii)
        out += {c, '\0'};
    return out;
}

void expect_clean(const alloc_sweep::Tally &tally)
{
    std::printf("points %ld: silent %ld, wrong data %ld, bad state %ld, leak %ld, crash %ld\n",
                tally.points, tally.faults[0], tally.faults[1], tally.faults[2],
                tally.faults[3], tally.faults[4]);
    EXPECT_GT(tally.points, 50);
    EXPECT_EQ(tally.firstFault, "");
}

TEST(AllocationFailure, EventModeDocuments)
{
    const struct {
        std::string doc;
        uint32_t flags;
        size_t stop;  // the program stops after this many events
    } cases[] = {
        {kVaried, 0, SIZE_MAX},
        {kVaried, 0, 12},
        {national("<?xml version=\"1.0\"?><r a=\"v\">t&#x10400;&amp;caf\xE9<s/></r>"),
         CBLXML_OPT_NATIONAL, SIZE_MAX},
        {"<?xml version=\"1.0\"?><r><a x=\"1\">text</b></r>", 0, SIZE_MAX},
    };
    for (const auto &c : cases) {
        std::vector<Event> good;
        deliver(c.doc, c.flags, nullptr, &good, c.stop);
        ASSERT_GT(good.size(), 3u);
        expect_clean(alloc_sweep::sweep([&] { return deliver(c.doc, c.flags, &good, nullptr, c.stop); }));
    }
}

TEST(AllocationFailure, TreeMode)
{
    xd_dom_node_t *good = nullptr;
    build_tree(kVaried, nullptr, &good);
    ASSERT_NE(good, nullptr);
    expect_clean(alloc_sweep::sweep([&] { return build_tree(kVaried, good); }));
    kvt_xe_xml_dom_free_node(good, 0);
}

} // namespace
