// The library as a host sees it: its exported symbols, its one-time parser
// initialisation, and the command-line tool's error handling.
#include <gtest/gtest.h>

#include <cstdlib>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <fstream>
#include <mutex>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "parse_events.h"

namespace {

std::string run(const std::string &command, int &status)
{
    std::string out;
    FILE *pipe = popen(command.c_str(), "r");
    if (pipe == nullptr)
        return out;
    char buffer[4096];
    size_t n;
    while ((n = fread(buffer, 1, sizeof buffer, pipe)) > 0)
        out.append(buffer, n);
    status = pclose(pipe);
    return out;
}

// The exported symbols are exactly what the version script names: every
// symbol matches one of its global names or prefixes (name*), every plain
// name is exported, and every prefix covers at least one symbol.
TEST(LibraryTest, ExportsWhatTheVersionScriptNames)
{
    std::ifstream map(CBLXML_EXPORTS_MAP);
    ASSERT_TRUE(map.good()) << CBLXML_EXPORTS_MAP;
    std::set<std::string> names, prefixes;
    bool global = false;
    for (std::string word; map >> word;) {
        if (word == "global:" || word == "local:") {
            global = word == "global:";
        } else if (global && word.size() > 1 && word.back() == ';') {
            word.pop_back();
            if (word.back() == '*')
                prefixes.insert(word.substr(0, word.size() - 1));
            else
                names.insert(word);
        }
    }
    ASSERT_TRUE(names.count("CBL_XMLIO_INTERFACE")) << "version script not read";
    int status = 0;
    const std::string out =
        run(std::string("nm -D --defined-only --format=posix ") + CBLXML_SHARED_LIB, status);
    ASSERT_EQ(status, 0) << out;
    std::set<std::string> symbols;
    std::istringstream lines(out);
    for (std::string name, type, rest; lines >> name >> type && std::getline(lines, rest);)
        if (std::string("TDBWV").find(type) != std::string::npos)
            symbols.insert(name);
    for (const std::string &name : names)
        EXPECT_TRUE(symbols.count(name)) << name << " is not exported";
    std::set<std::string> used;
    for (const std::string &symbol : symbols) {
        bool known = names.count(symbol) != 0;
        for (const std::string &prefix : prefixes) {
            if (symbol.rfind(prefix, 0) == 0) {
                known = true;
                used.insert(prefix);
            }
        }
        EXPECT_TRUE(known) << symbol << " is exported but the version script does not name it";
    }
    EXPECT_EQ(used, prefixes) << "a prefix of the version script matches nothing";
}

// The parser library is initialised once per process, under the run-time's
// lock, however many threads start parsing at once. The check runs in a fresh
// process (this test program again, with one test selected), where nothing
// has initialised the parser yet.
TEST(LibraryInitChild, CountsTheLocks)
{
    if (std::getenv("CBLXML_INIT_CHILD") == nullptr)
        GTEST_SKIP() << "runs only as the child of ParserIsInitialisedOnceUnderTheLock";
    static std::atomic<int> locks{0};
    static std::mutex mutex;
    cblxml_services services{};
    services.size = sizeof services;
    services.thread_lock = [] {
        mutex.lock();
        ++locks;
    };
    services.thread_unlock = [] { mutex.unlock(); };
    ASSERT_EQ(cblxml_register_services(&services), 0);
    std::vector<std::thread> threads;
    threads.reserve(4);
    std::atomic<int> good{0};
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            auto events = cblxml_test::parse_events("<a>x</a>");
            good += events.back().name == "END-OF-DOCUMENT";
        });
    for (auto &th : threads)
        th.join();
    EXPECT_EQ(good, 4);
    // Threads that raced to the first parse may each take the lock once
    // (and find the flag set); later parses never take it.
    EXPECT_GE(locks, 1);
    EXPECT_LE(locks, 4);
    const int before = locks;
    cblxml_test::parse_events("<b/>");
    EXPECT_EQ(locks, before);
    cblxml_register_services(nullptr);
}

TEST(LibraryTest, ParserIsInitialisedOnceUnderTheLock)
{
    int status = 0;
    std::string out = run("CBLXML_INIT_CHILD=1 /proc/" + std::to_string(getpid()) +
                              "/exe --gtest_filter=LibraryInitChild.* 2>&1",
                          status);
    EXPECT_EQ(WEXITSTATUS(status), 0) << out;
    EXPECT_NE(out.find("[  PASSED  ] 1 test"), std::string::npos) << out;
}

TEST(LibraryTest, ToolReportsBadUseWithStatusTwo)
{
    const std::string tool = CBLXML_PARSE_TOOL;
    const std::string sample = std::string(CBLXML_TEST_DATA) + "/../../examples/data/order.xml";
    struct {
        std::string args;
        int exit;
    } cases[] = {
        {"/no/such/file.xml", 2},     {"/", 2}, {"--bogus " + sample, 2},
        {"--options x " + sample, 2}, {"", 2},  {sample, 0},
        {"--national " + sample, 0},
    };
    for (const auto &c : cases) {
        int status = 0;
        std::string out = run(tool + " " + c.args + " 2>&1", status);
        EXPECT_EQ(WEXITSTATUS(status), c.exit) << c.args << "\n" << out;
        if (c.exit == 2)
            EXPECT_EQ(std::count(out.begin(), out.end(), '\n'), 1) << "one line: " << out;
        else
            EXPECT_NE(out.find("END-OF-DOCUMENT|0|"), std::string::npos) << out;
    }
}

}  // namespace
