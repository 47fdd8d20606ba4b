// Every file operation end to end: whole programs as generated code would
// run them (files, data items, the CGI streams in a child process), every
// status of the interface, and the memory a block holds over many rounds.
#include <gtest/gtest.h>

#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "record_layout.h"
#include "xmlio_read_back.h"

using cblxml::layout::File;

namespace {

// Each order is a record: its id attribute and its text, 9 bytes.
const char *kOrders = "01 orders\n 05 order occurs=20\n  10 id attrs pic=X(3)\n  10 - pic=X(6)";
const char *kKey = "order";

std::string orders(std::initializer_list<const char *> records)
{
    std::string text = "<orders>";
    for (const std::string r : records)
        text += "<order id=\"" + r.substr(0, 3) + "\">" + r.substr(3) + "</order>";
    return text + "</orders>";
}
const std::string kFour = orders({"001one", "002two", "003three", "004four"});

constexpr int32_t kPositive = 1000;  // a status: any count above 0

struct Step {
    uint8_t op;
    int32_t status;
    const char *record = nullptr;  // set into order before the call (WRITE, REWRITE, 9, 10)
    uint32_t occurrence = 0;       // START; the open mode for OPEN
    const char *want = nullptr;    // the order's bytes after the call
};

struct Program {
    const char *what;
    const char *file;  // "tmp": a file of its own; else a name; null: a data item
    std::string before;
    uint8_t mode;  // 0: never opened
    uint32_t flags;
    std::vector<Step> steps;
    std::vector<std::string> after = {};  // the document read back; empty: not read
    const char *contains = nullptr;       // the document holds this text
};

std::string file_text(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

void run(const Program &p)
{
    SCOPED_TRACE(p.what);
    const std::string path = ::testing::TempDir() + "xmlio_update.xml";
    File file({kOrders});
    if (p.file == nullptr) {
        file.use_document(p.before, 4096);
    } else {
        std::remove(path.c_str());
        if (!p.before.empty())
            std::ofstream(path, std::ios::binary) << p.before;
        file.use_file(std::string(p.file) == "tmp" ? path : p.file);
    }
    xmlio_fcb &fcb = file.fcb();
    fcb.flags |= p.flags;
    fcb.key_item = file.record(1).item(kKey);
    if (p.mode != 0)
        file.open(p.mode);
    for (size_t i = 0; i < p.steps.size(); ++i) {
        const Step &s = p.steps[i];
        SCOPED_TRACE("step " + std::to_string(i + 1));
        const std::string record = s.record != nullptr ? s.record : "";
        if (s.record != nullptr)
            file.record(1).set(kKey, record);
        fcb.arg2_len = static_cast<uint32_t>(record.size());
        fcb.key_occurrence = s.occurrence;
        const int32_t status = s.op == XMLIO_OP_OPEN ? file.open(static_cast<uint8_t>(s.occurrence))
                                                     : file.call(s.op, record.c_str());
        EXPECT_EQ(s.status == kPositive ? status > 0 : status == s.status, true) << status;
        if (s.want != nullptr) {
            EXPECT_EQ(cblxml_test::occurrence_bytes(file.record(1), kKey), s.want);
        }
    }
    // Whatever happened, CLOSE releases all and the block opens again.
    file.close();
    EXPECT_TRUE(fcb.doc == nullptr && fcb.stream == nullptr && fcb.read_buf == nullptr &&
                fcb.dm_handle == nullptr);
    const std::string text = p.file == nullptr ? file.document() : file_text(path);
    if (p.contains != nullptr) {
        EXPECT_NE(text.find(p.contains), std::string::npos) << text;
    }
    if (!p.after.empty()) {
        int32_t end = 0;
        EXPECT_EQ(cblxml_test::read_back(kOrders, kKey, text, end), p.after);
        EXPECT_EQ(end, XMLIO_ST_NO_CURRENT);
    }
    std::remove(path.c_str());
}

std::vector<Step> many_writes(int n)
{
    std::vector<Step> steps;
    static std::vector<std::string> records;
    records.clear();
    for (int i = 1; i <= n; ++i)
        records.push_back(std::string(3 - std::to_string(i).size(), '0') + std::to_string(i) +
                          "rec");
    for (const std::string &r : records)
        steps.push_back({XMLIO_OP_WRITE, 0, r.c_str()});
    steps.push_back({XMLIO_OP_WRITE_DOC, kPositive});
    steps.push_back({XMLIO_OP_CLOSE, 0});
    return steps;
}

std::vector<std::string> many_records(int n)
{
    std::vector<std::string> out;
    for (int i = 1; i <= n; ++i)
        out.push_back(std::string(3 - std::to_string(i).size(), '0') + std::to_string(i) +
                      "rec   ");
    return out;
}

// The update in place, on a file and on a data item alike: the positioned
// node comes first after START, DELETE moves on to the next sibling so READ
// NEXT skips nothing, and the shorter document replaces the old one whole.
const std::vector<Step> kUpdate = {
    {XMLIO_OP_START, XMLIO_ST_NO_DOCUMENT},
    {XMLIO_OP_READ, 1, nullptr, 0, "001one   "},
    {XMLIO_OP_START, 0, nullptr, 2},
    {XMLIO_OP_READ_NEXT, 0, nullptr, 0, "002two   "},
    {XMLIO_OP_REWRITE, 0, "002TWO"},
    {XMLIO_OP_READ_NEXT, 0, nullptr, 0, "003three "},
    {XMLIO_OP_DELETE, 0},
    {XMLIO_OP_READ_NEXT, 0, nullptr, 0, "004four  "},
    {XMLIO_OP_READ_NEXT, XMLIO_ST_NO_CURRENT},
    {XMLIO_OP_WRITE_DOC, kPositive},
};
const std::vector<std::string> kUpdated = {"001one   ", "002TWO   ", "004four  "};
const std::vector<std::string> kOriginal = {"001one   ", "002two   ", "003three ", "004four  "};
constexpr uint32_t kPlain = XMLIO_SCHEMA | XMLIO_NO_XSI;  // no DOCTYPE, no xsi attributes

TEST(XmlFilePrograms, EndToEnd)
{
    const Program programs[] = {
        {"OPEN OUTPUT, WRITE many, write-document; then read to the end", "tmp", "", XMLIO_OUTPUT,
         kPlain, many_writes(15), many_records(15)},
        {"OPEN I-O on a file: READ, START, REWRITE, DELETE", "tmp", kFour, XMLIO_IO, kPlain,
         kUpdate, kUpdated},
        {"the same on a data item", nullptr, kFour, XMLIO_IO, kPlain, kUpdate, kUpdated},
        {"CLOSE after an unwritten REWRITE: -10, the file as it was",
         "tmp",
         kFour,
         XMLIO_IO,
         kPlain,
         {{XMLIO_OP_READ, 1}, {XMLIO_OP_REWRITE, 0, "001ONE"}, {XMLIO_OP_CLOSE, -10}},
         kOriginal},
        // A position mode of 1 or more inserts the new version before the
        // old one: it stands where the old one stood.
        {"REWRITE straight after START keeps the place",
         nullptr,
         kFour,
         XMLIO_IO,
         kPlain,
         {{XMLIO_OP_READ, 1},
          {XMLIO_OP_START, 0, nullptr, 3},
          {XMLIO_OP_REWRITE, 0, "003THREE"},
          {XMLIO_OP_WRITE_DOC, kPositive}},
         {"001one   ", "002two   ", "003THREE ", "004four  "}},
        {"DELETE of the last record: READ NEXT -7, WRITE -8",
         nullptr,
         orders({"001one", "002two"}),
         XMLIO_IO,
         kPlain,
         {{XMLIO_OP_READ, 1},
          {XMLIO_OP_START, 0, nullptr, 2},
          {XMLIO_OP_DELETE, 0},
          {XMLIO_OP_READ_NEXT, XMLIO_ST_NO_CURRENT},
          {XMLIO_OP_DELETE, XMLIO_ST_NO_CURRENT},
          {XMLIO_OP_WRITE, XMLIO_ST_NO_POSITION, "003new"},
          {XMLIO_OP_INSERT_TEXT, XMLIO_ST_NO_POSITION, "t"},
          {XMLIO_OP_WRITE_DOC, kPositive}},
         {"001one   "}},
        // Into an empty file the first insert makes the document node; an
        // instruction without a space has no data; text ends in CR LF.
        {"processing instructions and text into an empty file",
         "tmp",
         "",
         XMLIO_OUTPUT,
         kPlain,
         {{XMLIO_OP_INSERT_PI, 0, "style href=\"a\""},
          {XMLIO_OP_INSERT_PI, 0, "bare"},
          {XMLIO_OP_INSERT_TEXT, 0, "note"},
          {XMLIO_OP_WRITE_DOC, kPositive}},
         {},
         "<?style href=\"a\"?>\r\n<?bare?>\r\nnote\r\n<orders>"},
        {"compact text gets no line end",
         nullptr,
         kFour,
         XMLIO_IO,
         kPlain | XMLIO_COMPACT,
         {{XMLIO_OP_READ, 1},
          {XMLIO_OP_START, 0, nullptr, 1},
          {XMLIO_OP_INSERT_TEXT, 0, "x"},
          {XMLIO_OP_INSERT_PI, 0, "p d"},
          {XMLIO_OP_WRITE_DOC, kPositive}},
         kOriginal,
         "<orders>x<?p d?><order id=\"001\">one</order>"},
    };
    for (const Program &p : programs)
        run(p);
}

// Every status of the interface, each from the call that provokes it.
TEST(XmlFilePrograms, Statuses)
{
    const Program rows[] = {
        {"-1: any call but OPEN on a fresh block", nullptr, kFour, 0, 0, {{XMLIO_OP_READ, -1}}},
        {"-1: write-document on a closed file",
         "tmp",
         "",
         XMLIO_OUTPUT,
         0,
         {{XMLIO_OP_CLOSE, 0}, {XMLIO_OP_WRITE_DOC, -1}}},
        {"-2: opcode 13", nullptr, kFour, XMLIO_INPUT, 0, {{13, -2}}},
        {"-2: write-document on input",
         nullptr,
         kFour,
         XMLIO_INPUT,
         0,
         {{XMLIO_OP_READ, 1}, {XMLIO_OP_WRITE_DOC, -2}}},
        {"-3: EXTEND of a data item",
         nullptr,
         kFour,
         0,
         0,
         {{XMLIO_OP_OPEN, -3, nullptr, XMLIO_EXTEND}}},
        {"-4: OPEN of a missing file",
         "/nonexistent/x.xml",
         "",
         0,
         0,
         {{XMLIO_OP_OPEN, -4, nullptr, XMLIO_INPUT}}},
        {"-5: DELETE, REWRITE, START, READ NEXT before READ",
         nullptr,
         kFour,
         XMLIO_IO,
         0,
         {{XMLIO_OP_DELETE, -5},
          {XMLIO_OP_REWRITE, -5},
          {XMLIO_OP_START, -5},
          {XMLIO_OP_READ_NEXT, -5}}},
        {"-6: no element for the key",
         nullptr,
         "<orders/>",
         XMLIO_IO,
         0,
         {{XMLIO_OP_READ, 1}, {XMLIO_OP_DELETE, -6}, {XMLIO_OP_REWRITE, -6}}},
        {"-9: READ of a malformed document",
         nullptr,
         "<orders>",
         XMLIO_INPUT,
         0,
         {{XMLIO_OP_READ, -9}}},
        {"-10: READ with unwritten changes, which it clears",
         "tmp",
         kFour + kFour,
         XMLIO_IO,
         0,
         {{XMLIO_OP_READ, 1},
          {XMLIO_OP_INSERT_TEXT, 0, "t"},
          {XMLIO_OP_READ, -10},
          {XMLIO_OP_CLOSE, 0}}},
        {"-11, -12: READ and write-document of an HTTP name",
         "http://example.com/x.xml",
         "",
         XMLIO_OUTPUT,
         0,
         {{XMLIO_OP_READ, -11}, {XMLIO_OP_WRITE_DOC, -12}}},
        {"-13: a stream failing while READ reads",
         "/proc/self/mem",
         "",
         XMLIO_INPUT,
         0,
         {{XMLIO_OP_READ, -13}}},
        // -15 at CLOSE takes the place of -10.
        {"-14 after write-document to a full device, -15 at CLOSE",
         "/dev/full",
         "",
         XMLIO_OUTPUT,
         kPlain,
         {{XMLIO_OP_WRITE, 0, "001one"}, {XMLIO_OP_WRITE_DOC, -14}, {XMLIO_OP_CLOSE, -15}}},
        {"READ gives the record number, write-document the characters",
         nullptr,
         kFour,
         XMLIO_IO,
         kPlain,
         {{XMLIO_OP_READ, 1}, {XMLIO_OP_INSERT_TEXT, 0, "t"}, {XMLIO_OP_WRITE_DOC, kPositive}}},
    };
    for (const Program &p : rows)
        run(p);
}

// CLOSE leaves the unsaved-changes flag set; the next OPEN clears it.
TEST(XmlFilePrograms, UnsavedFlagLastsUntilTheNextOpen)
{
    File file({kOrders});
    file.use_document(kFour);
    file.fcb().key_item = file.record(1).item(kKey);
    ASSERT_EQ(file.open(XMLIO_IO), 0);
    ASSERT_EQ(file.call(XMLIO_OP_READ), 1);
    ASSERT_EQ(file.call(XMLIO_OP_DELETE), 0);
    EXPECT_EQ(file.close(), XMLIO_ST_UNWRITTEN);
    EXPECT_NE(file.fcb().flags & XMLIO_MODIFIED, 0u);
    ASSERT_EQ(file.open(XMLIO_INPUT), 0);
    EXPECT_EQ(file.fcb().flags & XMLIO_MODIFIED, 0u);
    EXPECT_EQ(file.close(), 0);
}

// 10,000 rounds of OPEN, READ, READ NEXT, DELETE, REWRITE and CLOSE (-10)
// on one block hold no more heap at the end than after the first round. The
// parser's own caches settle over the first rounds (a bare parse in a loop
// grows the same way, by under 2 KB); a leak of one allocation a round would
// be 160 KB or more.
TEST(XmlFileMemory, ManyRoundsHoldNoMore)
{
    File file({kOrders});
    file.use_document(kFour);
    file.fcb().key_item = file.record(1).item(kKey);
    bool ok = true;
    auto round = [&] {
        ok = ok && file.open(XMLIO_IO) == 0 && file.call(XMLIO_OP_READ) == 1 &&
             file.call(XMLIO_OP_READ_NEXT) == 0 && file.call(XMLIO_OP_DELETE) == 0 &&
             file.call(XMLIO_OP_REWRITE) == 0 && file.close() == XMLIO_ST_UNWRITTEN;
    };
    round();
    const size_t first = mallinfo2().uordblks;
    for (int i = 1; i < 10000; ++i)
        round();
    EXPECT_TRUE(ok);
    EXPECT_LE(mallinfo2().uordblks, first + 4096);
}

// A CGI program in a child process: standard input and output are pipes,
// CONTENT_LENGTH says how much of the input is the request (the parent
// keeps the pipe open, so reading past it would hang), and the answer is a
// document on standard output.
TEST(XmlFilePrograms, CgiChildProcess)
{
    const std::string request = orders({"007ask"});
    int in[2], out[2];
    ASSERT_EQ(pipe(in), 0);
    ASSERT_EQ(pipe(out), 0);
    const pid_t child = fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        dup2(in[0], STDIN_FILENO);
        dup2(out[1], STDOUT_FILENO);
        close(in[1]);
        close(out[0]);
        setenv("CONTENT_LENGTH", std::to_string(request.size()).c_str(), 1);
        bool ok = true;
        {
            File cgi({kOrders});
            cgi.use_file(":CGI:");
            cgi.fcb().key_item = cgi.record(1).item(kKey);
            ok = cgi.open(XMLIO_INPUT) == 0 && cgi.call(XMLIO_OP_READ) == 1 &&
                 cblxml_test::occurrence_bytes(cgi.record(1), kKey) == "007ask   " &&
                 cgi.close() == 0;
        }
        File answer({kOrders});
        answer.use_file(":cgi:");
        answer.fcb().flags |= kPlain;
        answer.fcb().key_item = answer.record(1).item(kKey);
        answer.record(1).set(kKey, "007yes");
        ok = ok && answer.open(XMLIO_OUTPUT) == 0 && answer.call(XMLIO_OP_WRITE) == 0 &&
             answer.call(XMLIO_OP_WRITE_DOC) > 0 && answer.close() == 0;
        _exit(ok ? 0 : 1);
    }
    close(in[0]);
    close(out[1]);
    ASSERT_EQ(write(in[1], request.data(), request.size()), static_cast<ssize_t>(request.size()));
    std::string answer;
    char buffer[512];
    for (ssize_t n; (n = read(out[0], buffer, sizeof buffer)) > 0;)
        answer.append(buffer, static_cast<size_t>(n));
    int status = 0;
    waitpid(child, &status, 0);
    close(in[1]);
    close(out[0]);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_EQ(answer, "<orders>\r\n    <order id=\"007\">yes</order>\r\n</orders>\r\n");
}

}  // namespace
