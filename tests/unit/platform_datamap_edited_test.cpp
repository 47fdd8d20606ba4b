// The data map's edited items: numeric-edited and alphanumeric-edited items
// receive values edited by their PICTURE.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>

#include "datamap.h"

namespace {

using namespace cblxml_test;

struct EditCase {
    const char *picture;
    uint32_t class_code;
    std::string text;
    std::string item;
};

dm_item_desc edited(uint32_t class_code, const char *picture, uint32_t length) {
    return describe(class_code, DM_USAGE_DISPLAY, length, 0, 0, false, 0, picture);
}

class EditedItems : public ::testing::TestWithParam<EditCase> {};

TEST_P(EditedItems, EditByPicture) {
    const EditCase &c = GetParam();
    MapHandle map = open_map(1);
    ASSERT_NE(map, nullptr);
    const dm_item_desc desc =
        edited(c.class_code, c.picture, static_cast<uint32_t>(c.item.size()));
    int32_t status = -1;
    EXPECT_EQ(store(map.get(), desc, c.text, &status), c.item) << c.picture << " " << c.text;
    EXPECT_EQ(status, 0) << c.picture;
    // What an edited item gives is its stored text.
    char text[64];
    uint32_t length = sizeof text;
    ASSERT_EQ(DMGetCblData(map.get(), &desc, c.item.data(), DM_FORM_UTF8, text, &length), 0);
    EXPECT_EQ(std::string(text, length - 1), c.item);
}

constexpr uint32_t kNum = DM_CLASS_NUMERIC_EDITED;
constexpr uint32_t kAlnum = DM_CLASS_ALNUM_EDITED;

INSTANTIATE_TEST_SUITE_P(
    Numeric, EditedItems,
    ::testing::Values(EditCase{"ZZZ9.99", kNum, "5", "   5.00"},
                      EditCase{"Z(3)9.99", kNum, "1234.567", "1234.56"},
                      EditCase{"Z,ZZ9.99", kNum, "1234.5", "1,234.50"},
                      EditCase{"Z,ZZ9.99", kNum, "12", "   12.00"},
                      EditCase{"ZZZ.ZZ", kNum, "0", "      "},
                      EditCase{"ZZZ.ZZ", kNum, "0.05", "   .05"},
                      EditCase{"***9.99", kNum, "5", "***5.00"},
                      EditCase{"**,**9", kNum, "12", "****12"},
                      EditCase{"$$$9.99", kNum, "0.5", "  $0.50"},
                      EditCase{"$$,$$9.99", kNum, "123", "  $123.00"},
                      EditCase{"$$,$$9.99", kNum, "12345", "$2,345.00"},
                      EditCase{"$ZZ9", kNum, "7", "$  7"},
                      EditCase{"+++9", kNum, "-5", "  -5"},
                      EditCase{"+++9", kNum, "5", "  +5"},
                      EditCase{"---9", kNum, "5", "   5"},
                      EditCase{"ZZ9-", kNum, "-5", "  5-"},
                      EditCase{"-ZZ9", kNum, "-5", "-  5"},
                      EditCase{"+ZZ9", kNum, "5", "+  5"},
                      EditCase{"ZZ9CR", kNum, "-5", "  5CR"},
                      EditCase{"ZZ9cr", kNum, "5", "  5  "},
                      EditCase{"ZZ9DB", kNum, "-12", " 12DB"},
                      EditCase{"99/99/99", kNum, "123199", "12/31/99"},
                      EditCase{"999B999", kNum, "1234", "001 234"},
                      EditCase{"9990", kNum, "12", "0120"},
                      EditCase{"zz9v99", kNum, "1.5", "  150"}));

INSTANTIATE_TEST_SUITE_P(Alphanumeric, EditedItems,
                         ::testing::Values(EditCase{"XXBXX", kAlnum, "abcd", "ab cd"},
                                           EditCase{"99/99/9999", kAlnum, "12312024", "12/31/2024"},
                                           EditCase{"X(3)0X", kAlnum, "abcd", "abc0d"},
                                           EditCase{"XBX", kAlnum, "a", "a  "},
                                           EditCase{"XXBX", kAlnum, "a\xC3\xA9" "b", "a\xC3\xA9 b"}));

TEST(DataMapEdited, CommaDecimalPointSwapsThePictureSymbols) {
    MapHandle map = open_map(1, ',');
    ASSERT_NE(map, nullptr);
    const dm_item_desc desc = edited(kNum, "Z.ZZ9,99", 8);
    int32_t status = -1;
    EXPECT_EQ(store(map.get(), desc, "1234,5", &status), "1.234,50");
    EXPECT_EQ(status, 0);
}

TEST(DataMapEdited, EbcdicDataIsEditedInItsCodePage) {
    MapHandle map = open_map(3);
    ASSERT_NE(map, nullptr);
    const dm_item_desc desc = edited(kNum, "-Z9.9", 5);
    int32_t status = -1;
    EXPECT_EQ(store(map.get(), desc, "-1.5", &status), "\x60\x40\xF1\x4B\xF5");
    EXPECT_EQ(status, 0);
}

TEST(DataMapEdited, NationalEditedItemsHoldUtf16) {
    MapHandle map = open_map(0);
    ASSERT_NE(map, nullptr);
    dm_item_desc desc = edited(kNum, "ZZ9.99", 12);
    desc.usage_code = DM_USAGE_NATIONAL;
    int32_t status = -1;
    const std::string item = store(map.get(), desc, "7.5", &status);
    std::u16string units(6, u'\0');
    std::memcpy(units.data(), item.data(), item.size());
    EXPECT_EQ(units, u"  7.50");
    EXPECT_EQ(status, 0);
}

struct BadPicture {
    uint32_t class_code;
    const char *picture;
    std::string text;
};

TEST(DataMapEdited, BadPictureOrTextLeavesSpaces) {
    MapHandle map = open_map(1);
    ASSERT_NE(map, nullptr);
    const BadPicture cases[] = {
        {kNum, nullptr, "1"},         {kNum, "", "1"},         {kNum, "Z(3", "1"},
        {kNum, "(3)9", "1"},          {kNum, "9(0)", "1"},     {kNum, "9(99999999999)", "1"},
        {kNum, "XX9", "1"},           {kNum, "ZZ9", "abc"},    {kAlnum, "X(2)Q", "ab"},
        {kAlnum, "X(", "ab"},
    };
    for (const BadPicture &c : cases) {
        const dm_item_desc desc = edited(c.class_code, c.picture, 4);
        int32_t status = -1;
        EXPECT_EQ(store(map.get(), desc, c.text, &status), "    ")
            << (c.picture ? c.picture : "(null)");
        EXPECT_EQ(status, 1);
    }
}

TEST(DataMapEdited, AlphanumericEditedWithoutPictureMovesPlainly) {
    MapHandle map = open_map(1);
    ASSERT_NE(map, nullptr);
    const dm_item_desc desc = edited(kAlnum, nullptr, 4);
    int32_t status = -1;
    EXPECT_EQ(store(map.get(), desc, "ab", &status), "ab  ");
    EXPECT_EQ(status, 0);
}

} // namespace
