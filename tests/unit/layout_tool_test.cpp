// cblxml-layout on bad copybooks: one line in the form compilers use,
// FILE:LINE:COLUMN: message, and exit status 2; nothing written.
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "copybook.h"

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

// The builder derives length, digits, scale and class from PICTURE and
// usage alone; the tool gives them as GnuCOBOL lays the copybook out. Both
// must agree: binary sizes by the 9s (1 to 2 digits take one byte), edited
// digit positions (9, Z, *, P and a floating string), the class of a
// PICTURE that mixes X with insertion symbols.
TEST(LayoutTool, BuilderDerivesWhatTheCopybookReaderLaysOut)
{
    const char *copybook = R"(       01 R.
          05 B1 PIC 9 COMP.
          05 B2 PIC S99 COMP-5.
          05 B10 PIC 9(10) COMP-5.
          05 D1 PIC S9(3)V9 SIGN LEADING SEPARATE.
          05 E1 PIC X(2)B9.
          05 E2 PIC ZZ9.99.
          05 E3 PIC ---9.
          05 E4 PIC $$,$$9.99CR.
          05 E5 PIC **9.
          05 A1 PIC A(3).
)";
    namespace layout = cblxml::layout;
    const auto book = cblxml::copybook::read_copybook(copybook, false);
    std::vector<layout::Item> given = cblxml::copybook::record_items(book, 0);
    std::vector<layout::Item> derived = given;
    for (layout::Item &item : derived) {
        item.length = item.offset = std::nullopt;
        item.digits = item.scale = item.class_source = std::nullopt;
    }
    const layout::Record expected(given), got(derived);
    // SIGN LEADING SEPARATE is sign byte 3, which the data map reads as a
    // leading separate sign.
    EXPECT_EQ(int{expected.item("D1")->sign_position}, 3);
    ASSERT_EQ(expected.size(), got.size());
    for (size_t i = 1; i < got.size(); ++i) {
        const IDESC *e = expected.item_at(i), *g = got.item_at(i);
        SCOPED_TRACE(given[i].picture);
        // Packed fields, copied out to compare.
        EXPECT_EQ(uint32_t{g->length}, uint32_t{e->length});
        EXPECT_EQ(uint32_t{g->offset}, uint32_t{e->offset});
        EXPECT_EQ(int{g->digits}, int{e->digits});
        EXPECT_EQ(int{g->scale}, int{e->scale});
        EXPECT_EQ(int{g->class_source}, int{e->class_source});
    }
}

}  // namespace
