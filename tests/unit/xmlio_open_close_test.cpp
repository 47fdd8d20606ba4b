// CBL_XMLIO_INTERFACE: the block checks, OPEN and CLOSE, on real files and on
// a host's recording file services.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "record_layout.h"

using cblxml::layout::File;

namespace {

const char *kRecord = "01 rec\n05 t occurs=2 pic=X";

// A host's file services that record what OPEN and CLOSE ask of them.
struct Host {
    std::vector<std::pair<std::string, int32_t>> opened;  // resolved name, mode
    std::vector<int32_t> seeks;                           // whence
    bool fail_resolve = false, fail_open = false, fail_seek = false;
    int resolved = 0, released = 0, streams = 0;
    int32_t error_code = 0;
    const char *ebcdic_code_page = nullptr;  // set: DMInit cannot start
} host;

int32_t fake_close(cblxml_stream *stream)
{
    --host.streams;
    delete stream;
    return 0;
}
int32_t fake_ok(cblxml_stream *) { return 0; }
int64_t fake_seek(cblxml_stream *, int64_t, int32_t whence)
{
    host.seeks.push_back(whence);
    return host.fail_seek ? -1 : 0;
}
const cblxml_stream_ops kFakeOps = {fake_close, nullptr, fake_seek, nullptr, fake_ok, nullptr};

cblxml_services host_services()
{
    cblxml_services table{};
    table.size = sizeof table;
    table.resolve_name = [](const char *name, uint32_t length, char *, int32_t) -> void * {
        if (host.fail_resolve)
            return nullptr;
        ++host.resolved;
        return new std::string(name, length);
    };
    table.release_name = [](void *handle) {
        ++host.released;
        delete static_cast<std::string *>(handle);
    };
    table.open_stream = [](int32_t, void *handle, int32_t mode, char *) -> cblxml_stream * {
        host.opened.emplace_back(*static_cast<std::string *>(handle), mode);
        if (host.fail_open)
            return nullptr;
        ++host.streams;
        return new cblxml_stream{&kFakeOps, host.error_code};
    };
    table.get_env = [](const char *name) -> const char * {
        if (host.ebcdic_code_page == nullptr)
            return std::getenv(name);
        return std::strcmp(name, "CBLXML_PROGRAM_DATA") == 0 ? "EBCDIC" : host.ebcdic_code_page;
    };
    return table;
}

class HostFiles : public ::testing::Test {
protected:
    void SetUp() override
    {
        host = Host{};
        const cblxml_services table = host_services();
        ASSERT_EQ(cblxml_register_services(&table), 0);
    }
    void TearDown() override
    {
        EXPECT_EQ(host.resolved, host.released) << "a name handle was not released";
        EXPECT_EQ(host.streams, 0) << "a stream was left open";
        cblxml_register_services(nullptr);
    }
};

TEST_F(HostFiles, AFreshBlockAnswersOnlyOpen)
{
    for (uint8_t opcode : {0, 2, 3, 4, 9, 10, 12, 13}) {
        File file{kRecord};
        file.fcb().opcode = opcode;
        // Byte for byte, padding included: a copy through memcpy keeps it.
        xmlio_fcb before;
        std::memcpy(&before, &file.fcb(), sizeof before);
        before.status = XMLIO_ST_NOT_OPEN;
        EXPECT_EQ(file.call(opcode, "x"), XMLIO_ST_NOT_OPEN);
        // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison)
        EXPECT_EQ(std::memcmp(&before, &file.fcb(), sizeof before), 0) << int{opcode};
        EXPECT_EQ(file.entries()[0].link_flags, 0u);
    }
}

TEST_F(HostFiles, OnceOpenOtherOpcodesAnswerAndOnlyInsertsTakeTheSecondArgument)
{
    File file{kRecord};
    file.use_document("<a/>");
    ASSERT_EQ(file.open(XMLIO_INPUT), 0);
    EXPECT_EQ(file.fcb().stream, nullptr);
    EXPECT_NE(file.fcb().dm_handle, nullptr);
    EXPECT_EQ(file.record(1).counts(), std::vector<uint32_t>(2, XML_COUNT_NONE));
    const char *text = "pi data";
    for (int opcode = 0; opcode <= 14; ++opcode) {
        // WRITE builds a tree on any open file (write-document on input is -2).
        if (opcode == XMLIO_OP_OPEN || opcode == XMLIO_OP_CLOSE || opcode == XMLIO_OP_WRITE ||
            opcode == XMLIO_OP_WRITE_KEEP)
            continue;
        file.fcb().arg2 = nullptr;
        const int32_t status = file.call(static_cast<uint8_t>(opcode), text);
        // Opcodes 0 and past 12, and write-document on input, are refused;
        // the others run (their own tests say how).
        if (opcode == 0 || opcode == XMLIO_OP_WRITE_DOC || opcode > XMLIO_OP_REWRITE) {
            EXPECT_EQ(status, XMLIO_ST_BAD_OPCODE) << opcode;
        }
        const bool takes = opcode == XMLIO_OP_INSERT_PI || opcode == XMLIO_OP_INSERT_TEXT;
        EXPECT_EQ(file.fcb().arg2, takes ? text : nullptr) << opcode;
    }
    EXPECT_EQ(file.close(), XMLIO_ST_UNWRITTEN) << "the inserts were not written";
    // OPEN again does not link again.
    file.entries()[0].link_flags = 0;
    EXPECT_EQ(file.open(XMLIO_INPUT), 0);
    EXPECT_EQ(file.entries()[0].link_flags, 0u);
    EXPECT_EQ(file.open(XMLIO_INPUT), XMLIO_ST_OPEN_FAILED) << "already open";
    file.close();
    EXPECT_EQ(file.open(XMLIO_EXTEND), XMLIO_ST_BAD_MODE);
}

TEST_F(HostFiles, OpenResolvesNamesAsTheModeSays)
{
    const uint32_t none = 0;
    const struct {
        const char *name;
        uint8_t mode;
        int32_t status;
        uint32_t flag;         // XMLIO_URL or XMLIO_CGI, left set
        const char *resolved;  // null: nothing resolved
        int32_t run_mode;
    } cases[] = {
        {"HtTp://host/doc", XMLIO_INPUT, -4, XMLIO_URL, nullptr, 0},
        {"see http://host", XMLIO_EXTEND, -3, XMLIO_URL, nullptr, 0},
        {"p://x", XMLIO_INPUT, 0, none, "p://x", 1},
        {"https://host", XMLIO_OUTPUT, 0, none, "https://host", 10},
        {":CGI:", XMLIO_INPUT, 0, XMLIO_CGI, ":CI:", 1},
        {":cgi:out", XMLIO_OUTPUT, 0, XMLIO_CGI, ":CO:", 10},
        {":CgI:data", XMLIO_IO, 0, XMLIO_CGI, ":CgI", 3},
        {":cgi:", XMLIO_EXTEND, 0, XMLIO_CGI, ":cgi", 3},
        {"doc.xml", XMLIO_EXTEND, 0, none, "doc.xml", 3},
        {"doc.xml", 0, -3, none, nullptr, 0},
        {"doc.xml", 5, -3, none, nullptr, 0},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.name) + " mode " + std::to_string(c.mode));
        host.opened.clear();
        host.seeks.clear();
        File file{kRecord};
        file.use_file(c.name);
        EXPECT_EQ(file.open(c.mode), c.status);
        EXPECT_EQ(file.fcb().flags & (XMLIO_URL | XMLIO_CGI), c.flag);
        if (c.resolved == nullptr) {
            EXPECT_TRUE(host.opened.empty());
            continue;
        }
        ASSERT_EQ(host.opened.size(), 1u);
        EXPECT_EQ(host.opened[0].first, c.resolved);
        EXPECT_EQ(host.opened[0].second, c.run_mode);
        EXPECT_EQ(host.seeks, c.mode == XMLIO_EXTEND ? std::vector<int32_t>{CBLXML_SEEK_END}
                                                     : std::vector<int32_t>{});
        EXPECT_EQ(file.close(), 0);
        EXPECT_EQ(file.fcb().stream, nullptr);
        EXPECT_EQ(file.fcb().dm_handle, nullptr);
    }
}

TEST_F(HostFiles, FailedOpensHoldNothing)
{
    bool Host::*failures[] = {&Host::fail_resolve, &Host::fail_open, &Host::fail_seek};
    for (bool Host::*failure : failures) {
        host.*failure = true;
        File file{kRecord};
        file.use_file("doc.xml");
        EXPECT_EQ(file.open(XMLIO_EXTEND), XMLIO_ST_OPEN_FAILED);
        EXPECT_EQ(file.fcb().stream, nullptr);
        EXPECT_EQ(file.fcb().dm_handle, nullptr);
        host.*failure = false;
    }
}

// DMInit failing leaves -4 in the flags and 0 in the status; the block then
// answers -1 to everything but OPEN.
TEST_F(HostFiles, DataMapFailureGoesIntoTheFlags)
{
    host.ebcdic_code_page = "NO-SUCH-CODE-PAGE";
    File file{kRecord};
    file.use_file("doc.xml");
    EXPECT_EQ(file.open(XMLIO_INPUT), 0);
    EXPECT_EQ(file.fcb().flags, static_cast<uint32_t>(-4));
    EXPECT_EQ(file.fcb().dm_handle, nullptr);
    EXPECT_EQ(file.call(XMLIO_OP_READ), XMLIO_ST_NOT_OPEN);
    EXPECT_EQ(file.close(), XMLIO_ST_NOT_OPEN);
}

TEST_F(HostFiles, CloseReportsStreamErrorsAndUnwrittenChangesAndReleasesAll)
{
    const struct {
        int32_t error_code;
        bool modified;
        int32_t status;
    } cases[] = {{18, false, -15}, {31, true, -15}, {7, true, -10}, {0, false, 0}};
    for (const auto &c : cases) {
        host.error_code = c.error_code;
        File file{kRecord};
        file.use_file("doc.xml");
        ASSERT_EQ(file.open(XMLIO_IO), 0);
        xmlio_fcb &fcb = file.fcb();
        fcb.doc = static_cast<xml_doc_anchor_t *>(std::calloc(1, sizeof(xml_doc_anchor_t)));
        ASSERT_EQ(kvt_xe_xml_dom_doc_node(&fcb.doc->document), 0);
        fcb.read_buf = static_cast<char *>(std::malloc(16));
        fcb.read_buf_len = 16;
        if (c.modified)
            fcb.flags |= XMLIO_MODIFIED;
        EXPECT_EQ(file.close(), c.status) << c.error_code;
        EXPECT_EQ(fcb.doc, nullptr);
        EXPECT_EQ(fcb.read_buf, nullptr);
        EXPECT_EQ(fcb.read_buf_len, 0u);
        EXPECT_EQ((fcb.flags & XMLIO_MODIFIED) != 0, c.modified);
    }
}

// The default services on real files.
class RealFiles : public ::testing::Test {
protected:
    void SetUp() override
    {
        char pattern[] = "/tmp/cblxml-files-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        dir = pattern;
    }
    void TearDown() override
    {
        std::remove(path("doc.xml").c_str());
        rmdir(dir.c_str());
    }
    std::string path(const char *name) const { return dir + "/" + name; }
    std::string dir;
};

std::string contents(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    std::stringstream out;
    out << in.rdbuf();
    return out.str();
}

TEST_F(RealFiles, EveryModeOpensWhereItShould)
{
    const struct {
        uint8_t mode;
        const char *before;  // null: no file
        const char *after;   // after writing "XY"; null: the open fails
    } cases[] = {
        {XMLIO_INPUT, "abc", "abc"}, {XMLIO_INPUT, nullptr, nullptr},
        {XMLIO_OUTPUT, "abc", "XY"}, {XMLIO_IO, nullptr, "XY"},
        {XMLIO_IO, "abc", "XYc"},    {XMLIO_EXTEND, "abc", "abcXY"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(int{c.mode});
        const std::string name = path("doc.xml");
        std::remove(name.c_str());
        if (c.before != nullptr)
            std::ofstream(name) << c.before;
        File file{kRecord};
        file.use_file(name + "   ");
        const int32_t status = file.open(c.mode);
        if (c.after == nullptr) {
            EXPECT_EQ(status, XMLIO_ST_OPEN_FAILED);
            continue;
        }
        ASSERT_EQ(status, 0);
        cblxml_stream *stream = file.fcb().stream;
        if (c.mode == XMLIO_INPUT) {
            char buffer[8] = {};
            EXPECT_EQ(stream->ops->read(stream, buffer, sizeof buffer), 3);
            EXPECT_STREQ(buffer, "abc");
        } else {
            EXPECT_EQ(stream->ops->write(stream, "XY", 2), 0);
        }
        EXPECT_EQ(file.close(), 0);
        EXPECT_EQ(contents(name), c.after);
    }
}

TEST_F(RealFiles, AFullDeviceFailsTheCloseAndStandardStreamsStayOpen)
{
    File full{kRecord};
    full.use_file("/dev/full");
    ASSERT_EQ(full.open(XMLIO_OUTPUT), 0);
    cblxml_stream *stream = full.fcb().stream;
    EXPECT_EQ(stream->ops->write(stream, "x", 1), -1);
    EXPECT_EQ(stream->error_code, CBLXML_STREAM_NO_ROOM);
    EXPECT_EQ(full.close(), XMLIO_ST_CLOSE_ERROR);

    File cgi{kRecord};
    cgi.use_file(":cGi:");
    ASSERT_EQ(cgi.open(XMLIO_OUTPUT), 0);
    EXPECT_EQ(cgi.close(), 0);
    EXPECT_NE(fcntl(STDOUT_FILENO, F_GETFD), -1);

    File directory{kRecord};
    directory.use_file(dir);
    EXPECT_EQ(directory.open(XMLIO_INPUT), XMLIO_ST_OPEN_FAILED);
}

}  // namespace
