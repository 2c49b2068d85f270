#include <gtest/gtest.h>

#include <string>

#include "Support/IniEntry.h"

namespace {

struct ConversionCase {
    const char* value;  // null: an entry without value
    const char* asString;
    int asInt;
    double asDouble;
};

// Defaults used below: "dflt", -1, -1.5.
const ConversionCase conversionCases[] = {
    {nullptr, "dflt", -1, -1.5}, {"", "dflt", -1, -1.5},    {"12abc", "12abc", 12, 12.0},
    {"abc", "abc", -1, -1.5},    {" 5", " 5", 5, 5.0},      {"-7", "-7", -7, -7.0},
    {"3.75", "3.75", 3, 3.75},   {"1e3", "1e3", 1, 1000.0}, {"0x10", "0x10", 0, 16.0},
};

class IniEntryConversion : public testing::TestWithParam<ConversionCase> {};

TEST_P(IniEntryConversion, FallsBackToDefaultOnlyWhenNothingConverts) {
    const ConversionCase& c = GetParam();
    TIniEntry entry("k", c.value);
    EXPECT_STREQ(entry.GetString("dflt"), c.asString);
    EXPECT_EQ(entry.GetInt(-1), c.asInt);
    EXPECT_DOUBLE_EQ(entry.GetDouble(-1.5), c.asDouble);
}

INSTANTIATE_TEST_SUITE_P(Values, IniEntryConversion, testing::ValuesIn(conversionCases));

struct DoubleTextCase {
    double value;
    const char* text;
};

class IniEntryDoubleText : public testing::TestWithParam<DoubleTextCase> {};

TEST_P(IniEntryDoubleText, WritesSixSignificantDigitsShortest) {
    TIniEntry entry("k", nullptr);
    entry.SetDouble(GetParam().value);
    EXPECT_STREQ(entry.GetValue(), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Values, IniEntryDoubleText,
                         testing::Values(DoubleTextCase{0.1, "0.1"}, DoubleTextCase{100.0, "100"},
                                         DoubleTextCase{-0.5, "-0.5"},
                                         DoubleTextCase{1234567.0, "1.23457e+06"},
                                         DoubleTextCase{0.00001234, "1.234e-05"},
                                         DoubleTextCase{-76.123456, "-76.1235"}));

TEST(IniEntryTest, SetIntWritesDecimal) {
    TIniEntry entry("k", "old");
    entry.SetInt(-42);
    EXPECT_STREQ(entry.GetValue(), "-42");
    entry.SetInt(2147483647);
    EXPECT_STREQ(entry.GetValue(), "2147483647");
}

TEST(IniEntryTest, SetStringCopiesAndNullClearsValue) {
    std::string text = "first";
    TIniEntry entry("k", nullptr);
    entry.SetString(text.c_str());
    text[0] = 'F';
    EXPECT_STREQ(entry.GetValue(), "first");
    entry.SetString(nullptr);
    EXPECT_EQ(entry.GetValue(), nullptr);
}

TEST(IniEntryTest, SettingFromOwnValueIsSafe) {
    TIniEntry entry("k", "self");
    entry.SetString(entry.GetValue());
    EXPECT_STREQ(entry.GetValue(), "self");
}

TEST(IniEntryTest, NullKeyIsEmptyKey) {
    TIniEntry entry(nullptr, "v");
    EXPECT_STREQ(entry.GetKey(), "");
}

}  // namespace
