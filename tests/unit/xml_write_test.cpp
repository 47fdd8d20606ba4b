// WRITE, the second WRITE form and write-document: golden documents (one
// table, files in tests/data/write compared byte for byte), and the statuses
// and tree positions of the writing operations.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "record_layout.h"
#include "xmlio_read_back.h"

using cblxml::layout::File;

namespace {

struct Value {
    const char *path;
    std::string bytes;
    std::vector<uint32_t> occurrence = {};
};

// A file whose document goes to a data item of `room` bytes.
struct Writer {
    File file;
    explicit Writer(std::initializer_list<std::string_view> records, uint32_t flags = 0,
                    size_t room = 1 << 16)
        : file(records)
    {
        file.use_document("", room);
        file.fcb().flags |= flags;
        EXPECT_EQ(file.open(XMLIO_OUTPUT), 0);
    }
    void set(const std::vector<Value> &values, size_t record = 1)
    {
        for (const Value &v : values)
            file.record(record).set(v.path, v.bytes, v.occurrence);
    }
    xmlio_fcb &fcb() { return file.fcb(); }
    void key(const char *path, size_t record = 1)
    {
        fcb().key_item = file.record(record).item(path);
    }
    // write-document; the text produced (the item cut to the status).
    std::string document()
    {
        const int32_t status = file.call(XMLIO_OP_WRITE_DOC);
        EXPECT_GT(status, 0);
        return status > 0 ? file.document().substr(0, static_cast<size_t>(status)) : "";
    }
};

std::string golden_path(const std::string &name)
{
    return std::string(CBLXML_TEST_DATA) + "/write/" + name + ".xml";
}

std::string read_golden(const std::string &name)
{
    std::ifstream in(golden_path(name), std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// Compares with the golden file; CBLXML_UPDATE_GOLDEN=1 rewrites it instead.
void expect_golden(const std::string &name, const std::string &text)
{
    if (std::getenv("CBLXML_UPDATE_GOLDEN") != nullptr)
        std::ofstream(golden_path(name), std::ios::binary) << text;
    EXPECT_EQ(text, read_golden(name));
}

const char *kOrder = "01 ORDER\n 05 ID pic=9(2)\n 05 NAME pic=X(6)";

const char *kShapes = R"(
01 shapes
  05 id attrs pic=X(3)
  05 kind attrs pic=X(2)
  05 only-text pic=X(3)
  05 one
    10 a pic=X
  05 two
    10 a pic=X
    10 b pic=X
  05 mixed
    10 - pic=X(2)
    10 a pic=X
    10 b pic=X
  05 mixed2
    10 - pic=X(2)
    10 a pic=X
    10 - pic=X(2)
  05 mixed3
    10 a pic=X
    10 - pic=X(2)
  05 run occurs=2 pic=X(2)
  05 empty-not-last pic=X
  05 empty-last pic=X)";
const std::vector<Value> kShapeValues = {
    {"id", "7"},       {"kind", "k"},     {"only-text", "t"}, {"one.a", "1"},
    {"two.a", "2"},    {"two.b", "3"},    {"mixed.-", "m"},   {"mixed.a", "4"},
    {"mixed.b", "5"},  {"mixed2.-", "x"}, {"mixed2.a", "6"},  {"mixed2.-#2", "z"},
    {"mixed3.a", "8"}, {"mixed3.-", "y"}, {"run", "", {1}},   {"run", "r", {2}},
};

const char *kNamespaces = R"(
01 root ns=urn:a
  05 same ns=urn:a pic=X(2)
  05 other ns=urn:b pic=X(2)
  05 plain
    10 p:item ns=urn:c pic=X(2)
  05 atts
    10 a attrs ns=urn:x pic=X(2)
    10 b attrs ns=urn:x pic=X(2)
    10 c attrs ns=urn:y pic=X(2)
    10 d attrs pic=X(2)
    10 - pic=X(2)
  05 atts2
    10 e attrs ns=urn:y pic=X(2)
    10 - pic=X(2))";

struct GoldenCase {
    const char *name;
    const char *layout;
    uint32_t flags;
    const char *doctype;
    std::vector<Value> values;
};

const GoldenCase kGolden[] = {
    {"order", kOrder, XMLIO_SCHEMA | XMLIO_NO_XSI, nullptr, {{"ID", "42"}, {"NAME", "ACME  "}}},
    // The DOCTYPE name is written as it stands, trailing spaces included.
    {"order_dtd", kOrder, 0, "ORDER  ", {{"ID", "42"}, {"NAME", "ACME"}}},
    {"order_no_namespace_xsi", kOrder, XMLIO_SCHEMA, nullptr, {{"ID", "01"}}},
    {"dtd_shapes", kShapes, 0, "shapes", kShapeValues},
    {"dtd_compact", kShapes, XMLIO_COMPACT, "shapes", kShapeValues},
    {"namespaces",
     kNamespaces,
     XMLIO_SCHEMA,
     "root.xsd  ",
     {{"same", "s"},
      {"other", "o"},
      {"p:item", "p"},
      {"a", "1"},
      {"b", "2"},
      {"c", "3"},
      {"d", "4"},
      {"atts.-", "t"},
      {"e", "5"},
      {"atts2.-", "u"}}},
    {"escaping",
     "01 esc\n 05 q attrs pic=X(8)\n 05 v pic=X(12)\n 05 lead pic=X(8)\n 05 gt pic=X(3)",
     XMLIO_SCHEMA | XMLIO_NO_XSI,
     nullptr,
     {{"q", "\"it's\""}, {"v", "a<b & c  "}, {"lead", "  lead"}, {"gt", "x>y"}}},
    // OPEN leaves every count at its maximum: all three occurrences.
    {"table",
     "01 list\n 05 entry occurs=3 pic=X(3)",
     XMLIO_SCHEMA | XMLIO_NO_XSI,
     nullptr,
     {{"entry", "e1", {1}}, {"entry", "e2", {2}}, {"entry", "e3", {3}}}},
    {"numeric",
     R"(
01 num
  05 disp pic=S9(3)V99
  05 bin pic=S9(4) usage=comp
  05 packed pic=S9(5) usage=packed
  05 native pic=9(4) usage=comp5
  05 cx pic=9(3) usage=compx
  05 single usage=comp1
  05 edited pic=ZZ9.99)",
     XMLIO_SCHEMA | XMLIO_NO_XSI,
     nullptr,
     {{"disp", "0123t"},
      {"bin", std::string("\xFB\x2E", 2)},
      {"packed", std::string("\x12\x34\x5C", 3)},
      {"native", std::string("\x2C\x01", 2)},
      {"cx", std::string("\x01\x00", 2)},
      {"single", std::string("\x00\x00\xC0\x3F", 4)},
      {"edited", "  5.00"}}},
};

TEST(XmlWrite, GoldenDocuments)
{
    for (const GoldenCase &c : kGolden) {
        SCOPED_TRACE(c.name);
        Writer w({c.layout}, c.flags);
        w.set(c.values);
        std::string doctype = c.doctype != nullptr ? c.doctype : "";
        w.fcb().doctype_name = c.doctype != nullptr ? doctype.c_str() : nullptr;
        w.fcb().doctype_len = static_cast<uint32_t>(doctype.size());
        expect_golden(c.name, w.document());
        // write-document leaves no tree and no unsaved changes.
        EXPECT_EQ(w.fcb().doc, nullptr);
        EXPECT_EQ(w.fcb().flags & XMLIO_MODIFIED, 0u);
    }
}

// The text of a document as the golden files hold it, from lines.
std::string lines(std::initializer_list<const char *> parts)
{
    std::string text;
    for (const char *part : parts)
        text += std::string(part) + "\r\n";
    return text;
}

TEST(XmlWrite, DataItemAndHeldTree)
{
    // A document longer than its data item fills it exactly; the status
    // still counts every character.
    {
        Writer w({kOrder}, XMLIO_SCHEMA | XMLIO_NO_XSI, 20);
        w.set({{"ID", "42"}, {"NAME", "ACME"}});
        EXPECT_EQ(w.file.call(XMLIO_OP_WRITE_DOC),
                  static_cast<int32_t>(read_golden("order").size()));
        EXPECT_EQ(w.file.document(), read_golden("order").substr(0, 20));
    }
    // A held tree without unsaved changes is dropped: the record alone is
    // written. With changes the tree is written as it stands.
    for (const bool modified : {false, true}) {
        Writer w({kOrder}, XMLIO_SCHEMA | XMLIO_NO_XSI);
        w.set({{"ID", "01"}, {"NAME", "OLD"}});
        ASSERT_EQ(w.file.call(XMLIO_OP_WRITE), 0);
        w.set({{"NAME", "NEW"}});
        if (!modified)
            w.fcb().flags &= ~uint32_t{XMLIO_MODIFIED};
        EXPECT_NE(w.document().find(modified ? "<NAME>OLD</NAME>" : "<NAME>NEW</NAME>"),
                  std::string::npos);
    }
    // A record whose root does not match the held tree's is added as a
    // further element of the document (rec_read as a READ of record 2 sets it).
    Writer w({"01 a\n 05 x pic=X", "01 b\n 05 y pic=X"}, XMLIO_SCHEMA | XMLIO_NO_XSI);
    w.set({{"x", "1"}});
    w.set({{"y", "2"}}, 2);
    ASSERT_EQ(w.file.call(XMLIO_OP_WRITE), 0);
    w.fcb().rec_read = 2;
    EXPECT_EQ(w.document(), "<a>\r\n    <x>1</x>\r\n</a><b>\r\n    <y>2</y>\r\n</b>\r\n");
}

TEST(XmlWrite, ParseCheckAndStreams)
{
    // The check validates: the mixed shapes' trailing "|" does not parse
    // back (-9, nothing is written, the tree is kept); a DTD of element
    // content does.
    {
        Writer w({kShapes}, XMLIO_VERIFY);
        w.set(kShapeValues);
        EXPECT_EQ(w.file.call(XMLIO_OP_WRITE_DOC), XMLIO_ST_PARSE_FAILED);
        EXPECT_EQ(w.file.document(), std::string(1 << 16, ' '));
        EXPECT_NE(w.fcb().doc, nullptr);
    }
    {
        Writer w({kOrder}, XMLIO_VERIFY);
        w.fcb().doctype_name = "ORDER";
        w.fcb().doctype_len = 5;
        EXPECT_GT(w.file.call(XMLIO_OP_WRITE_DOC), 0);
    }
    // A file receives the text; /dev/full reports the failed write.
    const std::string path = ::testing::TempDir() + "xml_write_order.xml";
    for (const std::string &name : {path, std::string("/dev/full")}) {
        File file({kOrder});
        file.use_file(name);
        file.fcb().flags |= XMLIO_SCHEMA | XMLIO_NO_XSI;
        ASSERT_EQ(file.open(XMLIO_OUTPUT), 0);
        file.record(1).set("ID", "42");
        file.record(1).set("NAME", "ACME");
        EXPECT_EQ(file.call(XMLIO_OP_WRITE), 0);
        const int32_t status = file.call(XMLIO_OP_WRITE_DOC);
        if (name == path) {
            EXPECT_GT(status, 0);
            EXPECT_EQ(file.close(), 0);
            std::ifstream in(path, std::ios::binary);
            EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), read_golden("order"));
        } else {
            EXPECT_EQ(status, XMLIO_ST_WRITE_ERROR);
        }
    }
}

const char *kOrders = R"(
01 orders
  05 order occurs=5
    10 id attrs pic=X(2)
    10 line occurs=3
      15 sku pic=X(2))";

TEST(XmlWrite, WriteInsertsIntoTheHeldTree)
{
    Writer w({kOrders, "01 other\n 05 z pic=X"}, XMLIO_SCHEMA | XMLIO_NO_XSI);
    w.key("order");
    // Each WRITE goes after the current node while the position mode is
    // below 1 (-1 included), before it from 1 on. The key element keeps its
    // text and attributes only.
    const std::pair<const char *, uint32_t> writes[] = {{"1", 0}, {"2", 0xFFFFFFFF}, {"0", 1}};
    for (const auto &[id, mode] : writes) {
        w.set({{"id", id}, {"sku", "S" + std::string(id)}});
        if (w.fcb().doc != nullptr)
            w.fcb().doc->position_mode = mode;
        ASSERT_EQ(w.file.call(XMLIO_OP_WRITE), 0);
    }
    // A deeper key item goes into its parent group (the current order, 0);
    // the second form keeps the subtree, and the next one is its sibling.
    w.key("line");
    w.fcb().doc->position_mode = 0;
    for (const char *sku : {"A1", "A2"}) {
        w.set({{"sku", sku}});
        ASSERT_EQ(w.file.call(XMLIO_OP_WRITE_KEEP), 0);
    }
    // Statuses: another record than the one read; no current node; no place.
    w.fcb().rec_no = 2;
    EXPECT_EQ(w.file.call(XMLIO_OP_WRITE), XMLIO_ST_NO_MATCH);
    w.fcb().rec_read = 2;
    w.key("z", 2);
    EXPECT_EQ(w.file.call(XMLIO_OP_WRITE), XMLIO_ST_NO_POSITION);
    xd_dom_node_t *current = w.fcb().doc->current;
    w.fcb().doc->current = nullptr;
    EXPECT_EQ(w.file.call(XMLIO_OP_WRITE), XMLIO_ST_NO_POSITION);
    w.fcb().doc->current = current;
    w.fcb().rec_no = w.fcb().rec_read = 1;
    EXPECT_EQ(w.document(), lines({"<orders>", "    <order id=\"1\"/>", "    <order id=\"0\">",
                                   "        <line>", "            <sku>A1</sku>", "        </line>",
                                   "        <line>", "            <sku>A2</sku>", "        </line>",
                                   "    </order>", "    <order id=\"2\"/>", "</orders>"}));
}

TEST(XmlWrite, AttributeHolderInsert)
{
    Writer w({R"(
01 el
  05 hhhhhhhhhhhh attrs anyname anyns ns=uuuuuuuuuuuu
    10 - getname pic=X(12)
    10 - getns pic=X(12)
    10 - pic=X(3)
  05 - pic=X(2))"},
             XMLIO_SCHEMA | XMLIO_NO_XSI);
    w.key("hhhhhhhhhhhh");
    w.set({{"-#1", "id"}, {"-#2", "urn:abcdefgh"}, {"-#3", "v1"}, {"-#4", "t"}});
    ASSERT_EQ(w.file.call(XMLIO_OP_WRITE), 0);
    xml_doc_anchor_t *anchor = w.fcb().doc;
    ASSERT_EQ(anchor->current->kind, uint32_t{XD_DOM_ELEMENT});
    // On an attribute, the holder inserts an attribute after it. Its
    // namespace is cut where the trimmed name ("id2") ends: "urn".
    anchor->current = anchor->current->first_attribute;
    w.set({{"-#1", "id2"}, {"-#3", "v2"}});
    ASSERT_EQ(w.file.call(XMLIO_OP_WRITE), 0);
    EXPECT_EQ(anchor->current->kind, uint32_t{XD_DOM_ATTRIBUTE});
    EXPECT_EQ(w.document(), "<el xmlns:ns1=\"urn:abcdefgh\" xmlns:ns2=\"urn\" ns1:id=\"v1\" "
                            "ns2:id2=\"v2\">t</el>\r\n");
}

// READ and READ NEXT give every record back, field by field (the bytes of
// the key item's first occurrence), then the end of the file.
void expect_read_back(const char *layout, const char *key, const std::string &text,
                      const std::vector<std::string> &records)
{
    int32_t end = 0;
    EXPECT_EQ(cblxml_test::read_back(layout, key, text, end), records);
    EXPECT_EQ(end, XMLIO_ST_NO_CURRENT);
}

const char *kRoundTrip = R"(
01 orders
  05 order occurs=9
    10 id attrs pic=9(3)
    10 name pic=X(8)
    10 amount pic=S9(5)V99 usage=packed
    10 qty pic=S9(4) usage=comp
    10 line occurs=2
      15 sku pic=X(4)
      15 price pic=9(3)V9 usage=comp5)";

const std::vector<std::vector<Value>> kRoundTripRecords = {
    {{"id", "001"},
     {"name", "ACME"},
     {"amount", std::string("\x00\x12\x34\x5D", 4)},
     {"qty", std::string("\x00\x07", 2)},
     {"sku", "A1", {1, 1}},
     {"price", std::string("\x0F\x27", 2), {1, 1}},
     {"sku", "A2", {1, 2}},
     {"price", std::string("\x01\x00", 2), {1, 2}}},
    {{"id", "002"},
     {"name", "a<b & c"},
     {"amount", std::string("\x00\x00\x00\x0C", 4)},
     {"qty", std::string("\xFF\xFF", 2)},
     {"sku", "B1", {1, 1}},
     {"sku", "", {1, 2}},
     {"price", std::string("\x00\x00", 2), {1, 2}}},
    {{"id", "003"}, {"name", "third"}, {"qty", std::string("\x00\x03", 2)}},
};

// Several records into one document: the key item is the table of orders
// under the document element, so the first WRITE cuts the built tree down to
// the first order and every later WRITE inserts a sibling after the current
// one; the second WRITE form keeps each order's subtree (the first form would
// keep only its attributes and text). Read back, every record comes back.
TEST(XmlWrite, RoundTripRecords)
{
    Writer w({kRoundTrip}, XMLIO_SCHEMA);
    w.key("order");
    std::vector<std::string> written;
    for (const auto &record : kRoundTripRecords) {
        w.set(record);
        written.push_back(cblxml_test::occurrence_bytes(w.file.record(1), "order"));
        ASSERT_EQ(w.file.call(XMLIO_OP_WRITE_KEEP), 0);
    }
    const std::string text = w.document();
    expect_golden("roundtrip", text);
    expect_read_back(kRoundTrip, "order", text, written);

    // Updated in place: REWRITE the second record, DELETE the third; the
    // shorter document replaces the old one whole. The tree read back keeps
    // its schema-location attribute, so the xsi attributes are not written
    // a second time.
    const std::string path = ::testing::TempDir() + "xml_write_roundtrip.xml";
    std::ofstream(path, std::ios::binary) << text;
    File file({kRoundTrip});
    file.use_file(path);
    file.fcb().flags |= XMLIO_SCHEMA | XMLIO_NO_XSI;
    file.fcb().key_item = file.record(1).item("order");
    ASSERT_EQ(file.open(XMLIO_IO), 0);
    ASSERT_EQ(file.call(XMLIO_OP_READ), 1);
    file.fcb().key_occurrence = 2;
    ASSERT_EQ(file.call(XMLIO_OP_START), 0);
    ASSERT_EQ(file.call(XMLIO_OP_READ_NEXT), 0);
    file.record(1).set("name", "CHANGED");
    written[1] = cblxml_test::occurrence_bytes(file.record(1), "order");
    written.pop_back();
    EXPECT_EQ(file.call(XMLIO_OP_REWRITE), 0);
    ASSERT_EQ(file.call(XMLIO_OP_READ_NEXT), 0);
    EXPECT_EQ(file.call(XMLIO_OP_DELETE), 0);
    EXPECT_GT(file.call(XMLIO_OP_WRITE_DOC), 0);
    EXPECT_EQ(file.close(), 0);
    std::ifstream in(path, std::ios::binary);
    expect_read_back(kRoundTrip, "order", std::string(std::istreambuf_iterator<char>(in), {}),
                     written);
    std::remove(path.c_str());
}

}  // namespace
