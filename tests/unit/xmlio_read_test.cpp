// READ, START and READ NEXT: golden record areas, statuses, CGI input from a
// pipe, and sequential reading, on layouts made by the record-layout builder.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "platform/platform.h"
#include "record_layout.h"

using cblxml::layout::File;

namespace {

std::string hex(const std::string &bytes)
{
    static const char kDigits[] = "0123456789abcdef";
    std::string out;
    for (const unsigned char c : bytes) {
        out += kDigits[c >> 4];
        out += kDigits[c & 15];
    }
    return out;
}

std::string area(File &file, size_t record = 1)
{
    const auto &bytes = file.record(record).area();
    return std::string(bytes.begin(), bytes.end());
}

const char *kOrder = R"(01 order
  05 id pic=X(5)
  05 cust
    10 name pic=X(8)
    10 city pic=X(6)
  05 note pic=X(4))";

// UTF-16LE with a byte-order mark.
std::string utf16le(const std::string &utf8)
{
    const std::u16string units = cblxml::platform::utf8_to_utf16(utf8.data(), utf8.size());
    return "\xFF\xFE" + std::string(reinterpret_cast<const char *>(units.data()), units.size() * 2);
}

const std::string kZoe = "<order><id>7</id><cust><name>Zo\xC3\xAB</name><city>Oslo</city></cust>"
                         "<note>hi</note></order>";

struct Golden {
    const char *what;
    const char *layout;
    std::string document;
    std::string area;              // the record area after READ
    std::vector<uint32_t> counts;  // empty: not compared
};

const Golden kGolden[] = {
    {"nested groups",
     kOrder,
     "<order>\n  <id>A1</id>\n  <cust><name>Ann Lee</name><city>Oslo</city></cust>\n"
     "  <note>hi</note>\n</order>",
     "A1   Ann Lee Oslo  hi  ",
     {1, 1, 1, 1, 1, 1}},
    {"named and wildcard attribute holders",
     R"(01 item
       05 id attrs pic=X(4)
       05 qty attrs pic=9(3)
       05 - attrs anyname occurs=2
         10 - getname namelen=6 pic=X(6)
         10 - getns nslen=8 pic=X(8)
         10 - pic=X(5)
       05 - pic=X(6))",
     R"(<item xmlns:p="urn:pp" id="K9" p:colour="red" qty="7" size="XL">text</item>)",
     "K9  007coloururn:pp  red  size          XL   text  ",
     {1, 1, 1, 2, 0, 0, 0, 0, 0, 0, 0}},
    {"element name and namespace receivers",
     R"(01 doc
       05 - getname namelen=10 pic=X(10)
       05 - getns nslen=12 pic=X(12)
       05 - pic=X(3))",
     R"(<p:doc xmlns:p="urn:example">abc</p:doc>)",
     "doc       urn:example abc",
     {}},
    {"text, a processing instruction and more text",
     R"(01 msg
       05 - pic=X(4)
       05 - pic=X(4)
       05 - pi pic=X(12)
       05 - pic=X(6))",
     "<msg>abcdef<?fmt bold?>tail</msg>",
     "abcdef  fmt bold    tail  ",
     {}},
    {"a table of 5 fed 7 and one fed 3",
     R"(01 list
       05 n occurs=5 pic=X(2)
       05 m occurs=5 pic=X(2))",
     "<list><n>1</n><n>2</n><m>a</m><n>3</n><n>4</n><n>5</n><n>6</n><m>b</m><n>7</n><m>c</m>"
     "</list>",
     "1 2 3 4 5 a b c     ",
     {1, 5, 3}},
    {"numeric usages and a national item",
     R"(01 nums
       05 a pic=S9(3)
       05 b pic=9(4)
       05 c pic=S9(3)V99 usage=packed
       05 d pic=S9(4) usage=binary
       05 e pic=9(4) usage=comp5
       05 f pic=N(3))",
     "<nums><a>-12</a><b>42</b><c>-1.5</c><d>-2</d><e>300</e><f>\xC3\xA9</f></nums>",
     std::string("01r0042\x00\x15\x0D\xFF\xFE\x2C\x01\xE9\x00\x20\x00\x20\x00", 20),
     {}},
    {"a namespace matched by its prefix",
     R"(01 root ns=urn:a
       05 v ns=urn:a pic=X(3))",
     R"(<root xmlns="urn:a:v2"><v xmlns="urn:b">no</v><v>ok</v></root>)",
     "ok ",
     {}},
    {"UTF-8",
     kOrder,
     "<?xml version=\"1.0\" encoding=\"UTF-8\"?>" + kZoe,
     "7    Zo\xC3\xAB    Oslo  hi  ",
     {}},
    {"UTF-16",
     kOrder,
     utf16le("<?xml version=\"1.0\" encoding=\"UTF-16\"?>" + kZoe),
     "7    Zo\xC3\xAB    Oslo  hi  ",
     {}},
    {"ISO-8859-1 through the string conversion",
     kOrder,
     "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><order><cust><name>Zo\xEB</name></cust>"
     "</order>",
     "     Zo\xC3\xAB              ",
     {}},
};

TEST(XmlRead, GoldenRecordAreas)
{
    for (const Golden &g : kGolden) {
        File file{"01 other pic=X", g.layout};
        file.use_document(g.document);
        ASSERT_EQ(file.open(XMLIO_INPUT), 0) << g.what;
        EXPECT_EQ(file.call(XMLIO_OP_READ), 2) << g.what;
        EXPECT_EQ(file.fcb().rec_read, 2u) << g.what;
        EXPECT_EQ(hex(area(file, 2)), hex(g.area)) << g.what;
        if (!g.counts.empty()) {
            EXPECT_EQ(file.record(2).counts(), g.counts) << g.what;
        }
        EXPECT_EQ(file.close(), 0);
    }
}

// The run-time's string conversion fails its probe: values are moved as
// plain bytes. Leading blanks reach the item through an attribute value.
TEST(XmlRead, PlainMoveWithoutStringConversion)
{
    cblxml_services table{};
    table.size = sizeof table;
    table.string_convert = [](const char *, int32_t, const void *, uint32_t, void *,
                              uint32_t *) -> int32_t { return 1; };
    ASSERT_EQ(cblxml_register_services(&table), 0);
    File file{R"(01 r
        05 a attrs pic=9(5)
        05 b attrs pic=9(5)
        05 c attrs pic=S9(5) sign=2
        05 d attrs pic=X(4)
        05 e attrs pic=9(3)V9
        05 - pic=X(3))"};
    file.use_document(R"(<r a="  007" b="1 2" c="  007" d="abcdef" e="12"> x</r>)");
    ASSERT_EQ(file.open(XMLIO_INPUT), 0);
    EXPECT_EQ(file.call(XMLIO_OP_READ), 1);
    // Right-justified and zero-filled only for the unsigned integer item.
    EXPECT_EQ(area(file), "0000700012  007abcd12  x  ");
    file.close();
    cblxml_register_services(nullptr);
}

TEST(XmlRead, Statuses)
{
    const struct {
        const char *what;
        const char *file;  // null: the document is held in a data item
        std::string document;
        uint32_t flags;
        int32_t status;
        const char *area;  // null: the area is not compared
    } rows[] = {
        {"an empty data item", nullptr, "", 0, XMLIO_ST_NO_CURRENT, nullptr},
        {"an empty file", "/dev/null", "", 0, XMLIO_ST_NO_CURRENT, nullptr},
        {"blank text", nullptr, "  \n ", 0, XMLIO_ST_NO_CURRENT, nullptr},
        {"a comment only", nullptr, "<!-- c -->", 0, XMLIO_ST_NO_CURRENT, nullptr},
        {"malformed", nullptr, "<r><a>x</r>", 0, XMLIO_ST_PARSE_FAILED, nullptr},
        {"bad byte", nullptr, "<r>\x01</r>", 0, XMLIO_ST_PARSE_FAILED, nullptr},
        {"an HTTP name", "http://example.com/doc.xml", "", 0, XMLIO_ST_URL_READ, nullptr},
        {"a stream error (EIO)", "/proc/self/mem", "", 0, XMLIO_ST_READ_ERROR, nullptr},
        {"unwritten changes: still read", nullptr, "<r><a>x</a></r>", XMLIO_MODIFIED,
         XMLIO_ST_UNWRITTEN, "x "},
        {"a root no layout matches", nullptr, "<q><a>x</a></q>", 0, 0, "  "},
        {"read validates", nullptr, "<!DOCTYPE r [<!ELEMENT r EMPTY>]><r><a>x</a></r>",
         XMLIO_VALIDATE_READ, XMLIO_ST_PARSE_FAILED, nullptr},
    };
    for (const auto &row : rows) {
        File file{"01 r\n 05 a pic=X(2)"};
        if (row.file != nullptr)
            file.use_file(row.file);
        else
            file.use_document(row.document);
        file.open(XMLIO_INPUT);  // the HTTP name fails here and keeps its flag
        file.fcb().flags |= row.flags;
        EXPECT_EQ(file.call(XMLIO_OP_READ), row.status) << row.what;
        EXPECT_EQ(file.fcb().flags & XMLIO_MODIFIED, 0u) << row.what;
        if (row.area != nullptr) {
            EXPECT_EQ(area(file), row.area) << row.what;
        }
        const bool failed = row.status == XMLIO_ST_READ_ERROR;
        EXPECT_EQ(file.close(), failed ? XMLIO_ST_CLOSE_ERROR : 0) << row.what;
        if (row.file != nullptr && row.file[0] == '/') {
            EXPECT_EQ(file.call(XMLIO_OP_READ), XMLIO_ST_NOT_OPEN) << "closed";
        }
    }
}

// A document of exactly `size` bytes whose item text begins "xxxxxx".
std::string sized_document(size_t size)
{
    return "<r><a>" + std::string(size - 17, 'x') + "end</a></r>";
}

// ":CGI:" input from standard input, here a pipe that a thread fills; each
// READ's status and, on success, the record area.
TEST(XmlReadCgi, ReadsTheInputStream)
{
    const std::string two = "<r><a>\xC3\xA9t\xC3\xA9</a>\n</r>\n<r><a>\xC3\xA9\xC3\xA9</a></r>";
    using Reads = std::vector<std::pair<int32_t, std::string>>;
    const Reads one_x = {{1, "x     "}, {XMLIO_ST_NO_CURRENT, ""}};
    const Reads whole = {{1, "xxxxxx"}, {XMLIO_ST_NO_CURRENT, ""}};
    // The first document ends on a line of non-ASCII text and the second
    // is followed on its own line by the third: the parser counts columns
    // in UTF-16 units, the rest of the text starts at a byte offset.
    const Reads three = {
        {1, "\xC3\xA9t\xC3\xA9 "}, {1, "\xC3\xA9\xC3\xA9  "}, {1, "two   "}, {-7, ""}};
    const struct {
        std::string stream;
        const char *content_length;  // null: unset
        Reads reads;
    } rows[] = {
        {"<r><a>x</a><a>y</a></r>", nullptr, one_x},
        {"<r><a>x</a><a>y</a></r>", "0", one_x},
        {"<r><a>x</a><a>y</a></r>", "abc", one_x},
        {"<r><a>x</a><a>y</a></r>", "11", {{XMLIO_ST_PARSE_FAILED, ""}}},  // cut, malformed
        {sized_document(4096), nullptr, whole},
        {sized_document(1 << 20), nullptr, whole},
        {two + "<r><a>two</a></r>\n", nullptr, three},
        {two + "<?xml version=\"1.0\"?><r><a>two</a></r>\n", nullptr, three},
    };
    for (const auto &row : rows) {
        int fds[2];
        ASSERT_EQ(pipe(fds), 0);
        const int saved = dup(STDIN_FILENO);
        dup2(fds[0], STDIN_FILENO);
        close(fds[0]);
        std::thread writer([fd = fds[1], &row] {
            for (size_t at = 0; at < row.stream.size();) {
                const ssize_t n = write(fd, row.stream.data() + at, row.stream.size() - at);
                if (n <= 0)
                    break;
                at += static_cast<size_t>(n);
            }
            close(fd);
        });
        if (row.content_length != nullptr)
            setenv("CONTENT_LENGTH", row.content_length, 1);
        else
            unsetenv("CONTENT_LENGTH");
        File file{"01 r\n 05 a pic=X(6)"};
        file.use_file(":cgi:");
        ASSERT_EQ(file.open(XMLIO_INPUT), 0);
        for (const auto &[status, text] : row.reads) {
            EXPECT_EQ(file.call(XMLIO_OP_READ), status) << row.stream.substr(0, 40);
            if (status > 0) {
                EXPECT_EQ(area(file), text) << row.stream.substr(0, 40);
            }
        }
        file.close();
        writer.join();
        dup2(saved, STDIN_FILENO);
        close(saved);
    }
    unsetenv("CONTENT_LENGTH");
}

const char *kOrders = R"(01 orders
  05 order
    10 id attrs pic=X(2)
    10 item occurs=3 pic=X(2)
  05 total pic=9(3))";

const char *kOrdersDocument = R"(<orders>
  <order id="1"><item>a</item></order>
  <order id="2"><item>b</item><item>c</item></order>
  <!-- between -->
  <order id="3"/>
  <total>7</total>
</orders>)";

TEST(XmlReadNext, EachRecordOnceThenEndOfFile)
{
    File file{kOrders};
    file.use_document(kOrdersDocument);
    file.fcb().key_item = file.record(1).item("order");
    ASSERT_EQ(file.open(XMLIO_INPUT), 0);
    EXPECT_EQ(file.call(XMLIO_OP_READ_NEXT), XMLIO_ST_NO_DOCUMENT);
    EXPECT_EQ(file.call(XMLIO_OP_READ), 1);
    EXPECT_EQ(area(file), "1 a     007");
    // Slots: orders, order, id, item, total.
    EXPECT_EQ(file.record(1).counts(), (std::vector<uint32_t>{1, 1, 1, 1, 1}));
    EXPECT_EQ(file.call(XMLIO_OP_READ_NEXT), 0);
    EXPECT_EQ(area(file), "2 b c   007");
    EXPECT_EQ(file.record(1).counts(), (std::vector<uint32_t>{1, 1, 1, 2, 1}))
        << "the counts outside the key item survive";
    EXPECT_EQ(file.call(XMLIO_OP_READ_NEXT), 0);
    EXPECT_EQ(area(file), "3 b c   007");
    EXPECT_EQ(file.record(1).counts(), (std::vector<uint32_t>{1, 1, 1, 0, 1}));
    EXPECT_EQ(file.call(XMLIO_OP_READ_NEXT), XMLIO_ST_NO_CURRENT);
    EXPECT_EQ(file.call(XMLIO_OP_READ_NEXT), XMLIO_ST_NO_CURRENT);
    file.fcb().rec_no = 2;
    EXPECT_EQ(file.call(XMLIO_OP_READ_NEXT), XMLIO_ST_NO_MATCH);
    EXPECT_EQ(file.call(XMLIO_OP_START), XMLIO_ST_NO_MATCH);
    EXPECT_EQ(file.close(), 0);
}

TEST(XmlStart, PositionsByKeyAndOccurrence)
{
    const struct {
        uint32_t occurrence;
        int32_t start;
        const char *next;  // the id READ NEXT then reads; null: -7
    } rows[] = {
        {0, 0, "2 "},                  // occurrence 0: READ NEXT walks on from the first
        {1, 0, "1 "},                  // the positioned node itself first
        {3, 0, "3 "},                  // the third of the run
        {4, XMLIO_ST_NO_MATCH, "2 "},  // past the run: the position stays
    };
    for (const auto &row : rows) {
        File file{kOrders};
        file.use_document(kOrdersDocument);
        file.fcb().key_item = file.record(1).item("order");
        ASSERT_EQ(file.open(XMLIO_INPUT), 0);
        EXPECT_EQ(file.call(XMLIO_OP_START), XMLIO_ST_NO_DOCUMENT);
        ASSERT_EQ(file.call(XMLIO_OP_READ), 1);
        file.fcb().key_occurrence = row.occurrence;
        EXPECT_EQ(file.call(XMLIO_OP_START), row.start) << row.occurrence;
        EXPECT_EQ(file.call(XMLIO_OP_READ_NEXT), 0) << row.occurrence;
        EXPECT_EQ(area(file).substr(0, 2), row.next) << row.occurrence;
        file.close();
    }
}

// The search itself, on one tree: runs, depth, attribute holders.
TEST(XmlSearch, RunsDepthAndHolders)
{
    File file{R"(01 r
        05 g
          10 k pic=X
          10 id attrs pic=X
        05 k pic=X)"};
    file.use_document("<r><g>t<k>1</k><k>2</k><?p?><k>3</k><k>4</k></g><k>top</k>"
                      "<g id=\"a\">x<k>5</k></g></r>");
    ASSERT_EQ(file.open(XMLIO_INPUT), 0);
    ASSERT_EQ(file.call(XMLIO_OP_READ), 1);
    xd_dom_node_t *root = file.fcb().doc->current;
    xml_rec_entry_t *entry = file.entries();
    IDESC *k = file.record(1).item("g.k");
    xd_dom_node_t *g = root->first_child;
    std::vector<xd_dom_node_t *> ks;
    for (xd_dom_node_t *n = g->first_child; n != nullptr; n = n->next_sibling)
        if (n->kind == XD_DOM_ELEMENT)
            ks.push_back(n);
    ASSERT_EQ(ks.size(), 4u);
    for (xd_dom_node_t *from : ks) {
        EXPECT_EQ(kvt_xe_xml_dom_search(from, k, entry, 3), ks[2]);
        EXPECT_EQ(kvt_xe_xml_dom_search(from, k, entry, 5), nullptr);
        EXPECT_EQ(kvt_xe_xml_dom_search(from, k, entry, 0), from);
    }
    // From the root: the first k below a g, never the k at the wrong depth.
    EXPECT_EQ(kvt_xe_xml_dom_search(root, k, entry, 0), ks[0]);
    xd_dom_node_t *top = g->next_sibling;
    EXPECT_EQ(kvt_xe_xml_dom_search(top, k, entry, 0), nullptr);
    EXPECT_EQ(kvt_xe_xml_dom_search(top, file.record(1).item_at(4), entry, 0), top);
    // An attribute holder searched from a text node: its element first,
    // then the elements below.
    IDESC *id = file.record(1).item("id");
    xd_dom_node_t *text = g->first_child;
    ASSERT_EQ(text->kind, XD_DOM_TEXT);
    xd_dom_node_t *second_g = top->next_sibling;
    EXPECT_EQ(kvt_xe_xml_dom_search(text, id, entry, 0), nullptr);
    EXPECT_EQ(kvt_xe_xml_dom_search(root, id, entry, 1), second_g->first_attribute);
    EXPECT_EQ(kvt_xe_xml_dom_search(second_g->first_child, id, entry, 0),
              second_g->first_attribute);
    file.close();
}

}  // namespace

// A document whose tree outgrows the small blocks (several MiB of nodes):
// every record reads back in order, names and texts from blocks of both
// sizes.
TEST(XmlReadNext, LargeTreeReadsEveryRecord)
{
    constexpr int kLines = 40000;
    std::string document = "<batch>\n";
    for (int i = 0; i < kLines; ++i)
        document += "<v n=\"" + std::to_string(i % 7) + "\">" + std::to_string(i) + "</v>\n";
    document += "</batch>";
    File file{R"(01 batch
  05 v
    10 n attrs pic=9
    10 - pic=9(5))"};
    file.use_document(document);
    file.fcb().key_item = file.record(1).item("v");
    ASSERT_EQ(file.open(XMLIO_INPUT), 0);
    int32_t status = file.call(XMLIO_OP_READ);
    int read = 0;
    for (; status == 0 || (read == 0 && status == 1); status = file.call(XMLIO_OP_READ_NEXT)) {
        char expected[24];
        std::snprintf(expected, sizeof expected, "%d%05d", read % 7, read);
        ASSERT_EQ(area(file), expected) << "record " << read;
        ++read;
    }
    EXPECT_EQ(status, XMLIO_ST_NO_CURRENT);
    EXPECT_EQ(read, kLines);
    EXPECT_EQ(file.close(), 0);
}
