// The data map's numeric items: DISPLAY with every sign position, binary,
// packed and floating point, in native and EBCDIC data. Golden item bytes.
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <memory>
#include <string>

#include "datamap.h"

namespace {

using namespace cblxml_test;

constexpr int32_t kNative = 1;
constexpr int32_t kEbcdic = 3;

enum SignPosition : uint32_t { kTrailing = 1, kLeading = 2, kTrailingSep = 3, kLeadingSep = 4 };

dm_item_desc numeric(uint32_t usage, uint32_t length, uint32_t digits, uint32_t scale = 0,
                     bool is_signed = false, uint32_t sign_position = 0) {
    return describe(DM_CLASS_NUMERIC, usage, length, digits, scale, is_signed, sign_position);
}

dm_item_desc display(uint32_t length, uint32_t digits, uint32_t scale = 0, bool is_signed = false,
                     uint32_t sign_position = 0) {
    return numeric(DM_USAGE_DISPLAY, length, digits, scale, is_signed, sign_position);
}

std::string bytes_of(double value) {
    std::string bytes(sizeof value, '\0');
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

std::string bytes_of(float value) {
    std::string bytes(sizeof value, '\0');
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

std::string machine_order(std::string big_endian) {
    if (__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__)
        return std::string(big_endian.rbegin(), big_endian.rend());
    return big_endian;
}

struct NumericCase {
    const char *what;
    int32_t kind;
    dm_item_desc desc;
    std::string text;
    std::string item;
    std::string back; // the text the item gives
};

class NumericItems : public ::testing::TestWithParam<NumericCase> {};

TEST_P(NumericItems, StoreGoldenBytesAndGiveTheirValue) {
    const NumericCase &c = GetParam();
    MapHandle map = open_map(c.kind);
    ASSERT_NE(map, nullptr);
    std::string item(c.desc.length, '\x55');
    EXPECT_EQ(DMSetCblData(map.get(), &c.desc, item.data(), DM_FORM_UTF8, c.text.data(),
                           static_cast<uint32_t>(c.text.size())),
              0)
        << c.what;
    EXPECT_EQ(item, c.item) << c.what;
    int32_t status = -1;
    EXPECT_EQ(fetch(map.get(), c.desc, c.item, DM_FORM_UTF8, &status), c.back) << c.what;
    EXPECT_EQ(status, 0) << c.what;
}

INSTANTIATE_TEST_SUITE_P(
    Display, NumericItems,
    ::testing::Values(
        NumericCase{"unsigned", kNative, display(5, 5), "123", "00123", "123"},
        NumericCase{"blanks around", kNative, display(5, 5), "  42  ", "00042", "42"},
        NumericCase{"unsigned takes the absolute value", kNative, display(3, 3), "-7", "007", "7"},
        NumericCase{"trailing embedded minus", kNative, display(5, 5, 2, true, kTrailing), "-1.5",
                    "0015p", "-1.50"},
        NumericCase{"trailing embedded plus", kNative, display(5, 5, 2, true, kTrailing), "1.5",
                    "00150", "1.50"},
        NumericCase{"sign code 0 when signed", kNative, display(3, 3, 0, true, 0), "-9", "00y",
                    "-9"},
        NumericCase{"leading embedded", kNative, display(3, 3, 0, true, kLeading), "-12", "p12",
                    "-12"},
        NumericCase{"trailing separate", kNative, display(4, 3, 0, true, kTrailingSep), "-12",
                    "012-", "-12"},
        NumericCase{"leading separate", kNative, display(4, 3, 0, true, kLeadingSep), "12",
                    "+012", "12"},
        NumericCase{"cut on both sides", kNative, display(4, 4, 1), "12345.67", "3456", "345.6"},
        NumericCase{"decimals padded", kNative, display(4, 4, 3), ".5", "0500", "0.500"},
        NumericCase{"grouping ignored", kNative, display(6, 6, 1), "1,234.5", "012345", "1234.5"},
        NumericCase{"trailing minus", kNative, display(3, 3, 0, true, kTrailing), "12-", "01r",
                    "-12"},
        NumericCase{"trailing CR", kNative, display(3, 3, 0, true, kTrailing), "12 CR", "01r",
                    "-12"},
        NumericCase{"negative zero is zero", kNative, display(2, 2, 0, true, kTrailing), "-0",
                    "00", "0"},
        NumericCase{"ebcdic unsigned", kEbcdic, display(3, 3), "12", "\xF0\xF1\xF2", "12"},
        NumericCase{"ebcdic plus zone", kEbcdic, display(3, 3, 0, true, kTrailing), "12",
                    "\xF0\xF1\xC2", "12"},
        NumericCase{"ebcdic minus zone", kEbcdic, display(3, 3, 0, true, kTrailing), "-12",
                    "\xF0\xF1\xD2", "-12"},
        NumericCase{"ebcdic leading separate", kEbcdic, display(3, 2, 0, true, kLeadingSep), "-5",
                    "\x60\xF0\xF5", "-5"}));

INSTANTIATE_TEST_SUITE_P(
    Binary, NumericItems,
    ::testing::Values(
        NumericCase{"binary negative", kNative, numeric(DM_USAGE_BINARY, 2, 4, 0, true), "-2",
                    "\xFF\xFE", "-2"},
        NumericCase{"binary big-endian", kNative, numeric(DM_USAGE_BINARY, 2, 4, 0, true), "1234",
                    std::string("\x04\xD2", 2), "1234"},
        NumericCase{"binary cut to digits", kNative, numeric(DM_USAGE_BINARY, 2, 4), "12345",
                    std::string("\x09\x29", 2), "2345"},
        NumericCase{"binary unsigned absolute", kNative, numeric(DM_USAGE_BINARY, 2, 4), "-5",
                    std::string("\x00\x05", 2), "5"},
        NumericCase{"binary with decimals", kEbcdic, numeric(DM_USAGE_BINARY, 4, 5, 2, true),
                    "-1.5", "\xFF\xFF\xFF\x6A", "-1.50"},
        NumericCase{"binary one byte", kNative, numeric(DM_USAGE_BINARY, 1, 2, 0, true), "-1",
                    "\xFF", "-1"},
        NumericCase{"largest 8-byte", kNative, numeric(DM_USAGE_BINARY, 8, 0, 0, true),
                    "9223372036854775807", "\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF",
                    "9223372036854775807"},
        NumericCase{"smallest 8-byte", kNative, numeric(DM_USAGE_BINARY, 8, 0, 0, true),
                    "-9223372036854775808", std::string("\x80\0\0\0\0\0\0\0", 8),
                    "-9223372036854775808"},
        NumericCase{"largest unsigned 8-byte", kNative, numeric(DM_USAGE_BINARY, 8, 0),
                    "18446744073709551615", std::string(8, '\xFF'), "18446744073709551615"},
        NumericCase{"comp-5 machine order", kNative, numeric(DM_USAGE_COMP5, 4, 9, 0, true), "-2",
                    machine_order("\xFF\xFF\xFF\xFE"), "-2"},
        NumericCase{"comp-5 positive", kNative, numeric(DM_USAGE_COMP5, 2, 4), "258",
                    machine_order(std::string("\x01\x02", 2)), "258"},
        NumericCase{"comp-x unsigned", kNative, numeric(DM_USAGE_COMPX, 2, 0, 0, true), "65535",
                    "\xFF\xFF", "65535"},
        NumericCase{"comp-x three bytes", kNative, numeric(DM_USAGE_COMPX, 3, 0), "65536",
                    std::string("\x01\x00\x00", 3), "65536"}));

INSTANTIATE_TEST_SUITE_P(
    Packed, NumericItems,
    ::testing::Values(
        NumericCase{"packed minus", kNative, numeric(DM_USAGE_PACKED, 3, 5, 0, true), "-123",
                    std::string("\x00\x12\x3D", 3), "-123"},
        NumericCase{"packed plus", kNative, numeric(DM_USAGE_PACKED, 3, 5, 0, true), "123",
                    std::string("\x00\x12\x3C", 3), "123"},
        NumericCase{"packed unsigned", kEbcdic, numeric(DM_USAGE_PACKED, 3, 5), "-123",
                    std::string("\x00\x12\x3F", 3), "123"},
        NumericCase{"packed decimals", kNative, numeric(DM_USAGE_PACKED, 3, 5, 2, true), "12.34",
                    std::string("\x01\x23\x4C", 3), "12.34"},
        NumericCase{"packed cut to digits", kNative, numeric(DM_USAGE_PACKED, 2, 3, 0, true),
                    "98765", std::string("\x76\x5C", 2), "765"},
        NumericCase{"comp-6", kNative, numeric(DM_USAGE_COMP6, 2, 4), "123",
                    std::string("\x01\x23", 2), "123"},
        NumericCase{"comp-6 odd digits", kNative, numeric(DM_USAGE_COMP6, 2, 3, 1), "-45.6",
                    std::string("\x04\x56", 2), "45.6"}));

INSTANTIATE_TEST_SUITE_P(
    Floating, NumericItems,
    ::testing::Values(
        NumericCase{"comp-1", kNative, numeric(DM_USAGE_COMP1, 4, 0), "1.5", bytes_of(1.5f),
                    "1.5"},
        NumericCase{"comp-1 shortest text", kNative, numeric(DM_USAGE_COMP1, 4, 0), "0.1",
                    bytes_of(0.1f), "0.1"},
        NumericCase{"comp-2", kNative, numeric(DM_USAGE_COMP2, 8, 0), " -0.1 ", bytes_of(-0.1),
                    "-0.1"},
        NumericCase{"comp-2 exponent", kNative, numeric(DM_USAGE_COMP2, 8, 0), "1e20",
                    bytes_of(1e20), "1E+20"},
        NumericCase{"comp-2 plus sign", kEbcdic, numeric(DM_USAGE_COMP2, 8, 0), "+2.50",
                    bytes_of(2.5), "2.5"}));

TEST(DataMapNumeric, CommaDecimalPoint) {
    MapHandle map = open_map(kNative, ',');
    ASSERT_NE(map, nullptr);
    const dm_item_desc desc = display(6, 6, 1);
    std::string item(6, ' ');
    const std::string text = "1.234,5";
    ASSERT_EQ(DMSetCblData(map.get(), &desc, item.data(), DM_FORM_UTF8, text.data(),
                           static_cast<uint32_t>(text.size())),
              0);
    EXPECT_EQ(item, "012345");
    int32_t status = -1;
    EXPECT_EQ(fetch(map.get(), desc, item, DM_FORM_UTF8, &status), "1234,5");
    const dm_item_desc real = numeric(DM_USAGE_COMP2, 8, 0);
    EXPECT_EQ(fetch(map.get(), real, bytes_of(2.5), DM_FORM_DOUBLE, &status), "2,5");
}

TEST(DataMapNumeric, FloatFormsGiveNoTerminator) {
    MapHandle map = open_map(kNative);
    ASSERT_NE(map, nullptr);
    const dm_item_desc desc = numeric(DM_USAGE_COMP1, 4, 0);
    const std::string item = bytes_of(-2.25f);
    char text[5];
    uint32_t length = sizeof text;
    ASSERT_EQ(DMGetCblData(map.get(), &desc, item.data(), DM_FORM_FLOAT, text, &length), 0);
    EXPECT_EQ(std::string(text, length), "-2.25");
    int32_t status = -1;
    const dm_item_desc wide = numeric(DM_USAGE_COMP2, 8, 0);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(fetch(map.get(), wide, bytes_of(nan), DM_FORM_DOUBLE, &status), "NaN");
    EXPECT_EQ(fetch(map.get(), wide, bytes_of(-std::numeric_limits<double>::infinity()), DM_FORM_DOUBLE, &status), "-INF");
}

struct RefusedCase {
    const char *what;
    int32_t kind;
    dm_item_desc desc;
    std::string text;
    std::string item; // the defined value left behind
};

class RefusedText : public ::testing::TestWithParam<RefusedCase> {};

TEST_P(RefusedText, StoresZeroAndReportsFailure) {
    const RefusedCase &c = GetParam();
    MapHandle map = open_map(c.kind);
    ASSERT_NE(map, nullptr);
    std::string item(c.desc.length, '\x55');
    EXPECT_EQ(DMSetCblData(map.get(), &c.desc, item.data(), DM_FORM_UTF8, c.text.data(),
                           static_cast<uint32_t>(c.text.size())),
              1)
        << c.what;
    EXPECT_EQ(item, c.item) << c.what;
}

INSTANTIATE_TEST_SUITE_P(
    Cases, RefusedText,
    ::testing::Values(
        RefusedCase{"letters", kNative, display(4, 4), "12a", "0000"},
        RefusedCase{"empty", kNative, display(2, 2), "", "00"},
        RefusedCase{"only a sign", kNative, display(2, 2), "-", "00"},
        RefusedCase{"two decimal points", kNative, display(3, 3, 1), "1.2.3", "000"},
        RefusedCase{"two signs", kNative, display(3, 3, 0, true, kTrailing), "-12-", "000"},
        RefusedCase{"ebcdic zero", kEbcdic, display(2, 2, 0, true, kTrailing), "x",
                    "\xF0\xC0"},
        RefusedCase{"separate sign zero", kNative, display(3, 2, 0, true, kLeadingSep), "?",
                    "+00"},
        RefusedCase{"packed zero", kNative, numeric(DM_USAGE_PACKED, 2, 3, 0, true), "x",
                    std::string("\x00\x0C", 2)},
        RefusedCase{"binary too long", kNative, numeric(DM_USAGE_BINARY, 9, 0), "1",
                    std::string(9, '\0')},
        RefusedCase{"comp-1 of the wrong size", kNative, numeric(DM_USAGE_COMP1, 8, 0), "1",
                    std::string(8, '\0')},
        RefusedCase{"float text", kNative, numeric(DM_USAGE_COMP2, 8, 0), "1.5x",
                    std::string(8, '\0')},
        RefusedCase{"sign code out of range", kNative, display(3, 3, 0, true, 9), "1", "000"}));

TEST(DataMapNumeric, InvalidItemDataGivesNoText) {
    MapHandle map = open_map(kNative);
    ASSERT_NE(map, nullptr);
    int32_t status = 0;
    EXPECT_EQ(fetch(map.get(), numeric(DM_USAGE_PACKED, 2, 3, 0, true),
                    std::string("\x12\x34", 2), DM_FORM_UTF8, &status),
              "");
    EXPECT_EQ(status, 1);
    EXPECT_EQ(fetch(map.get(), numeric(DM_USAGE_PACKED, 2, 3, 0, true),
                    std::string("\x1A\x3C", 2), DM_FORM_UTF8, &status),
              "");
    EXPECT_EQ(status, 1);
    EXPECT_EQ(fetch(map.get(), display(2, 2), "1\xFF", DM_FORM_UTF8, &status), "");
    EXPECT_EQ(status, 1);
    // Spaces in a DISPLAY item read as zeros.
    EXPECT_EQ(fetch(map.get(), display(3, 3), " 1 ", DM_FORM_UTF8, &status), "10");
    EXPECT_EQ(status, 0);
}

} // namespace
