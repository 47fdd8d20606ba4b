// Every file operation end to end: whole programs as generated code runs
// them (files, data items, the CGI streams in a child process), the statuses
// they provoke, and the heap a block holds over many rounds.
#include <gtest/gtest.h>

#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>

#include "xmlio_read_back.h"

using cblxml::layout::File;

namespace {

// Each order is a record: its id attribute and its text, 9 bytes.
const char *kOrders = "01 orders\n 05 order occurs=20\n  10 id attrs pic=X(3)\n  10 - pic=X(6)";
const std::string kFour = "<orders><order id=\"001\">one</order><order id=\"002\">two</order>"
                          "<order id=\"003\">three</order><order id=\"004\">four</order></orders>";
constexpr uint32_t kPlain = XMLIO_SCHEMA | XMLIO_NO_XSI;  // no DOCTYPE, no xsi attributes

// A program is a script of calls, "op[@n][(record)]=status[:bytes]": n is
// START's occurrence or OPEN's mode, the record is set before the call (and
// is the text of 9 and 10), status "+" is any count above 0, and the bytes
// are the order id's after the call; '_' in a record is a space. "flag=0" /
// "flag=1" checks flag 0x40.
struct Program {
    const char *what;
    const char *file;  // "tmp": a file of its own; else a name; null: a data item
    std::string before;
    uint32_t flags;
    const char *script;
    const char *after = nullptr;     // the ids read back, e.g. "001 002", or null
    const char *contains = nullptr;  // the document holds this text
};

void run(const Program &p)
{
    SCOPED_TRACE(p.what);
    static const std::map<std::string, uint8_t> kOps = {
        {"open", 1},    {"close", 2},    {"wdoc", 3}, {"read", 4}, {"start", 5},
        {"next", 6},    {"write", 7},    {"keep", 8}, {"pi", 9},   {"text", 10},
        {"delete", 11}, {"rewrite", 12}, {"op13", 13}};
    const std::string path = ::testing::TempDir() + "xmlio_update.xml";
    std::remove(path.c_str());
    File file({kOrders});
    if (p.file == nullptr) {
        file.use_document(p.before, 4096);
    } else {
        if (!p.before.empty())
            std::ofstream(path, std::ios::binary) << p.before;
        file.use_file(std::string(p.file) == "tmp" ? path : p.file);
    }
    xmlio_fcb &fcb = file.fcb();
    fcb.flags |= p.flags;
    fcb.key_item = file.record(1).item("order");
    std::istringstream script(p.script);
    for (std::string call; script >> call;) {
        SCOPED_TRACE(call);
        const size_t eq = call.find('='), at = call.find('@'), paren = call.find('(');
        const std::string name = call.substr(0, std::min({eq, at, paren}));
        const size_t colon = call.find(':', eq);
        const std::string status = call.substr(eq + 1, colon - eq - 1);
        if (name == "flag") {
            EXPECT_EQ((fcb.flags & XMLIO_MODIFIED) != 0, status == "1");
            continue;
        }
        const uint32_t n = at != std::string::npos ? std::stoul(call.substr(at + 1)) : 0;
        std::string record;
        if (paren != std::string::npos) {
            record = call.substr(paren + 1, call.find(')') - paren - 1);
            std::replace(record.begin(), record.end(), '_', ' ');
            file.record(1).set("order", record);
        }
        fcb.arg2_len = static_cast<uint32_t>(record.size());
        fcb.key_occurrence = n;
        const uint8_t op = kOps.at(name);
        const int32_t got =
            op == 1 ? file.open(static_cast<uint8_t>(n)) : file.call(op, record.c_str());
        EXPECT_TRUE(status == "+" ? got > 0 : got == std::stoi(status)) << got;
        if (colon != std::string::npos) {
            EXPECT_EQ(cblxml_test::occurrence_bytes(file.record(1), "order").substr(0, 3),
                      call.substr(colon + 1));
        }
    }
    // Whatever happened, CLOSE releases everything.
    file.close();
    EXPECT_TRUE(fcb.doc == nullptr && fcb.stream == nullptr && fcb.read_buf == nullptr &&
                fcb.dm_handle == nullptr);
    std::ifstream in(path, std::ios::binary);
    const std::string text =
        p.file == nullptr ? file.document() : std::string(std::istreambuf_iterator<char>(in), {});
    if (p.contains != nullptr) {
        EXPECT_NE(text.find(p.contains), std::string::npos) << text;
    }
    if (p.after != nullptr) {
        int32_t end = 0;
        std::string ids;
        for (const std::string &r : cblxml_test::read_back(kOrders, "order", text, end))
            ids += (ids.empty() ? "" : " ") + r.substr(0, 3) + (r.substr(3, 1) == "X" ? "X" : "");
        EXPECT_EQ(ids, p.after);
        EXPECT_EQ(end, XMLIO_ST_NO_CURRENT);
    }
    std::remove(path.c_str());
}

// START positions on the node READ NEXT gives first; DELETE moves to the
// next sibling, so READ NEXT skips nothing; the shorter document replaces
// the old one whole.
const char *kUpdate = "open@3=0 start=-5 read=1:001 start@2=0 next=0:002 rewrite(002X)=0 "
                      "next=0:003 delete=0 next=0:004 next=-7 wdoc=+ close=0";

TEST(XmlFilePrograms, EndToEnd)
{
    const Program programs[] = {
        {"OUTPUT: WRITE many, write-document", "tmp", "", kPlain,
         "open@2=0 write(001)=0 write(002)=0 write(003)=0 write(004)=0 write(005)=0 write(006)=0 "
         "wdoc=+ close=0",
         "001 002 003 004 005 006"},
        {"I-O file: READ, START, REWRITE, DELETE", "tmp", kFour, kPlain, kUpdate, "001 002X 004"},
        {"I-O data item: the same", nullptr, kFour, kPlain, kUpdate, "001 002X 004"},
        {"CLOSE after an unwritten REWRITE", "tmp", kFour, kPlain,
         "open@3=0 read=1 rewrite(001X)=0 close=-10 flag=1 open@3=0 flag=0", "001 002 003 004"},
        {"REWRITE after START (position mode 3) keeps the place", nullptr, kFour, kPlain,
         "open@3=0 read=1 start@3=0 rewrite(003X)=0 wdoc=+", "001 002 003X 004"},
        {"DELETE of the last record", nullptr, kFour, kPlain,
         "open@3=0 read=1 start@4=0 delete=0 next=-7 delete=-7 write(005)=-8 text(t)=-8 wdoc=+",
         "001 002 003"},
        {"an empty file: the document node first; a PI without data", "tmp", "", kPlain,
         "open@2=0 pi(style)=0 pi(b)=0 text(note)=0 wdoc=+", nullptr,
         "<?style?>\r\n<?b?>\r\nnote\r\n<orders>"},
        {"compact: no line end", nullptr, kFour, kPlain | XMLIO_COMPACT,
         "open@3=0 read=1 start@1=0 text(x)=0 pi(p_d)=0 wdoc=+", "001 002 003 004",
         "<orders>x<?p d?><order id=\"001\">"},
        // The statuses that the programs above do not provoke.
        {"-2, -6: write-document on input, no element for the key", nullptr, "<orders/>", 0,
         "open@1=0 read=1 wdoc=-2 delete=-6 rewrite=-6 op13=-2"},
        {"-10: READ with unwritten changes", "tmp", kFour + kFour, 0,
         "open@3=0 read=1 text(t)=0 read=-10 flag=0 close=0"},
        {"-11, -12: an HTTP name", "http://host/x", "", 0, "open@2=-4 read=-11 wdoc=-12"},
        {"-14 then -15 (not -10) on a full device", "/dev/full", "", kPlain,
         "open@2=0 write(001)=0 wdoc=-14 close=-15"},
    };
    for (const Program &p : programs)
        run(p);
}

// 10,000 rounds on one block hold no more heap than after the first. The
// parser's own caches settle over the first rounds (a bare parse in a loop
// grows by under 2 KB); one leaked allocation a round would be 160 KB.
TEST(XmlFilePrograms, ManyRoundsHoldNoMore)
{
    File file({kOrders});
    file.use_document(kFour);
    file.fcb().key_item = file.record(1).item("order");
    bool ok = true;
    size_t first = 0;
    for (int i = 0; i < 10000; ++i) {
        ok = ok && file.open(XMLIO_IO) == 0 && file.call(XMLIO_OP_READ) == 1 &&
             file.call(XMLIO_OP_READ_NEXT) == 0 && file.call(XMLIO_OP_DELETE) == 0 &&
             file.call(XMLIO_OP_REWRITE) == 0 && file.close() == XMLIO_ST_UNWRITTEN;
        first = i == 0 ? mallinfo2().uordblks : first;
    }
    EXPECT_TRUE(ok);
    EXPECT_LE(mallinfo2().uordblks, first + 4096);
}

// A CGI program in a child: standard input and output are pipes, and the
// parent keeps the input open, so reading past CONTENT_LENGTH would hang.
TEST(XmlFilePrograms, CgiChildProcess)
{
    const std::string request = "<orders><order id=\"007\">ask</order></orders>";
    int in[2], out[2];
    ASSERT_TRUE(pipe(in) == 0 && pipe(out) == 0);
    const pid_t child = fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        dup2(in[0], STDIN_FILENO);
        dup2(out[1], STDOUT_FILENO);
        close(out[1]);
        setenv("CONTENT_LENGTH", std::to_string(request.size()).c_str(), 1);
        File cgi({kOrders});
        cgi.use_file(":CGI:");
        cgi.fcb().key_item = cgi.record(1).item("order");
        bool ok = cgi.open(XMLIO_INPUT) == 0 && cgi.call(XMLIO_OP_READ) == 1 && cgi.close() == 0;
        cgi.fcb().flags |= kPlain;
        cgi.record(1).set("order",
                          cblxml_test::occurrence_bytes(cgi.record(1), "order").substr(0, 6) + "!");
        ok = ok && cgi.open(XMLIO_OUTPUT) == 0 && cgi.call(XMLIO_OP_WRITE) == 0 &&
             cgi.call(XMLIO_OP_WRITE_DOC) > 0 && cgi.close() == 0;
        _exit(ok ? 0 : 1);
    }
    close(out[1]);
    ASSERT_EQ(write(in[1], request.data(), request.size()), static_cast<ssize_t>(request.size()));
    std::string answer;
    char buffer[512];
    for (ssize_t n; (n = read(out[0], buffer, sizeof buffer)) > 0;)
        answer.append(buffer, static_cast<size_t>(n));
    int status = 1;
    waitpid(child, &status, 0);
    close(in[0]);
    close(in[1]);
    close(out[0]);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(answer, "<orders>\r\n    <order id=\"007\">ask!</order>\r\n</orders>\r\n");
}

}  // namespace
