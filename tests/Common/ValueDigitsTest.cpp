#include <gtest/gtest.h>

#include <limits>

#include "Common/Toolkit/ValueDigits.h"

namespace {

struct FormatCase {
    double value, minValue, maxValue;
    int decimals;
    const char* text;
    int cursor;  // starts on the units digit
};

class ValueDigitsFormatTest : public testing::TestWithParam<FormatCase> {};

TEST_P(ValueDigitsFormatTest, ShowsAFixedWidthNumber) {
    const FormatCase& c = GetParam();
    const CValueDigits digits(c.value, c.minValue, c.maxValue, c.decimals);
    EXPECT_EQ(digits.Text(), c.text);
    EXPECT_EQ(digits.Cursor(), c.cursor);
}

INSTANTIATE_TEST_SUITE_P(Formats, ValueDigitsFormatTest,
                         testing::Values(
                             // The reference editor: "%+0*.*lf", width from the range.
                             FormatCase{-12.34, -99.0, 99.0, 2, "-12.34", 2},
                             FormatCase{5.0, -99.0, 99.0, 2, "+05.00", 2},
                             // Manual calibration: three decimals.
                             FormatCase{-23.4567, -99.9, 99.99, 3, "-23.457", 2},
                             FormatCase{0.0, -99.9, 99.99, 3, "+00.000", 2},
                             // No negative values: "%0*.*lf", no sign.
                             FormatCase{7.5, 0.0, 250.0, 1, "007.5", 2},
                             FormatCase{42.0, 1.0, 9999.0, 0, "0042", 3},
                             // A start value wider than the range widens the edit.
                             FormatCase{-123.0, -99.0, 99.0, 1, "-123.0", 3}));

TEST(ValueDigitsTest, CursorSkipsThePointAndStopsAtTheEnds) {
    CValueDigits digits(-12.34, -99.0, 99.0, 2);  // "-12.34", cursor on '2'
    digits.MoveRight();
    EXPECT_EQ(digits.Cursor(), 4);
    digits.MoveRight();
    EXPECT_EQ(digits.Cursor(), 5);
    digits.MoveRight();
    EXPECT_EQ(digits.Cursor(), 5);
    for (int i = 0; i < 5; ++i) digits.MoveLeft();
    EXPECT_EQ(digits.Cursor(), 0);   // the sign
    EXPECT_FALSE(digits.MoveTo(3));  // the point
    EXPECT_TRUE(digits.MoveTo(1));
    EXPECT_EQ(digits.Cursor(), 1);
}

TEST(ValueDigitsTest, UnsignedNumbersHaveNoSignPosition) {
    CValueDigits digits(7.5, 0.0, 250.0, 1);  // "007.5"
    for (int i = 0; i < 5; ++i) digits.MoveLeft();
    EXPECT_EQ(digits.Cursor(), 0);
    digits.StepDown();
    EXPECT_EQ(digits.Text(), "907.5");
    EXPECT_FALSE(digits.Type('-'));
}

TEST(ValueDigitsTest, StepsTurnTheDigitRoundWithoutCarry) {
    CValueDigits digits(19.0, -99.0, 99.0, 1);  // "+19.0", cursor on '9'
    digits.StepUp();
    EXPECT_EQ(digits.Text(), "+10.0");
    digits.StepDown();
    EXPECT_EQ(digits.Text(), "+19.0");
    digits.MoveLeft();
    digits.StepDown();
    digits.StepDown();
    EXPECT_EQ(digits.Text(), "+99.0");
    digits.MoveLeft();
    digits.StepUp();
    EXPECT_EQ(digits.Text(), "-99.0");
    EXPECT_DOUBLE_EQ(digits.Value(), -99.0);
}

TEST(ValueDigitsTest, TypedDigitsOverwriteAndAdvance) {
    CValueDigits digits(0.0, -99.9, 99.99, 3);  // "+00.000"
    digits.MoveTo(0);
    EXPECT_TRUE(digits.Type('-'));
    EXPECT_TRUE(digits.Type('1'));  // the sign is not a digit: the digit goes right of it
    for (char c : {'2', '3', '4', '5'}) EXPECT_TRUE(digits.Type(c));
    EXPECT_EQ(digits.Text(), "-12.345");
    EXPECT_EQ(digits.Cursor(), 6);
    // The last digit keeps the cursor and takes every further digit.
    EXPECT_TRUE(digits.Type('9'));
    EXPECT_EQ(digits.Text(), "-12.349");
    EXPECT_TRUE(digits.Type('5'));
    EXPECT_FALSE(digits.Type('x'));
    EXPECT_DOUBLE_EQ(digits.Value(), -12.345);
}

TEST(ValueDigitsTest, RangeIsInclusive) {
    struct Case {
        double value;
        bool inRange;
    };
    for (const Case c : {Case{-99.9, true}, Case{99.99, true}, Case{-99.901, false},
                         Case{99.991, false}, Case{0.0, true}}) {
        const CValueDigits digits(c.value, -99.9, 99.99, 3);
        EXPECT_EQ(digits.InRange(), c.inRange) << c.value;
    }
}

TEST(ValueDigitsTest, ANonFiniteStartShowsZero) {
    const CValueDigits digits(std::numeric_limits<double>::quiet_NaN(), -99.0, 99.0, 2);
    EXPECT_EQ(digits.Text(), "+00.00");
}

}  // namespace
