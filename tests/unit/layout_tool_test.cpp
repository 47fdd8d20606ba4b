// cblxml-layout on bad copybooks: one line in the form compilers use,
// FILE:LINE:COLUMN: message, and exit status 2; nothing written.
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

TEST(LayoutTool, BadInputGetsOneLocatedLineAndStatusTwo)
{
    const struct {
        const char *copybook;  // fixed format; "|" ends a line
        const char *message;
    } cases[] = {
        {"       01 R.|          05 A PIC X FOO.", "2:22: unknown clause FOO"},
        {"       01 R.|          05 A PIC 9(X).", "2:20: PICTURE 9(X) does not parse"},
        {"       01 R.|          05 A PIC X(4) COMP.",
         "2:20: PICTURE X(4) does not fit USAGE COMP"},
        {"       01 R.|          05 A.|             10 B PIC X.|           07 C PIC X.",
         "4:12: level 07 does not fit: the items of A have level 10"},
        {"       01 R.|          05 A PIC X.|             10 B PIC X.",
         "3:14: level 10 does not fit: A is an elementary item"},
        {"       05 A PIC X.", "1:8: the first item must have level 01"},
        {"       01 R.|          05 A.", "2:11: A needs a PICTURE clause"},
        {"       01 R.|      *> xml: name=1abc|          05 A PIC X.",
         "2:20: '1abc' is not a valid XML name"},
        {"       01 R.|          05 A PIC X.          *> xml: name=a colour=red",
         "2:47: unknown XML directive 'colour=red'"},
        {"       01 R.|          05 1ST PIC X.",
         "2:11: the data name 1ST is not a valid XML name; give one with *> xml: name=..."},
        {"       01 R.|          05 A PIC X.|       66 B RENAMES A.",
         "3:8: RENAMES (level 66) is not supported"},
        {"       01 R.|          05 A PIC X.|          05 B REDEFINES C PIC X.",
         "3:11: REDEFINES C does not name the item before"},
    };
    const auto dir =
        std::filesystem::temp_directory_path() / ("cblxml-layout-test-" + std::to_string(getpid()));
    std::filesystem::create_directories(dir);
    const std::string input = (dir / "bad.cpy").string();
    for (const auto &c : cases) {
        std::string text = c.copybook;
        for (char &ch : text)
            ch = ch == '|' ? '\n' : ch;
        std::ofstream(input) << text << '\n';
        const std::string command =
            "cd " + dir.string() + " && " + CBLXML_LAYOUT_TOOL + " " + input + " 2>&1";
        FILE *pipe = popen(command.c_str(), "r");
        ASSERT_NE(pipe, nullptr);
        char out[512] = "";
        out[fread(out, 1, sizeof out - 1, pipe)] = 0;
        const int status = pclose(pipe);
        EXPECT_EQ(WEXITSTATUS(status), 2) << c.copybook;
        EXPECT_EQ(std::string(out), input + ":" + c.message + "\n") << c.copybook;
        EXPECT_FALSE(std::filesystem::exists(dir / "bad-xml.cpy")) << c.copybook;
    }
    std::filesystem::remove_all(dir);
}

}  // namespace
