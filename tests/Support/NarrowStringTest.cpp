#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "Support/NarrowString.h"

namespace {

TEST(NarrowStringTest, EmptyStringsOwnATerminator) {
    const char* none = nullptr;
    for (const TNarrowString& s : {TNarrowString(), TNarrowString(none), TNarrowString("")}) {
        ASSERT_NE(s.c_str(), nullptr);
        EXPECT_STREQ(s.c_str(), "");
        EXPECT_EQ(s.GetLength(), 0);
        EXPECT_TRUE(s.IsEmpty());
    }
}

TEST(NarrowStringTest, IntegersInDecimal) {
    EXPECT_STREQ(TNarrowString(0), "0");
    EXPECT_STREQ(TNarrowString(-123), "-123");
    EXPECT_STREQ(TNarrowString(INT_MIN), "-2147483648");
    EXPECT_EQ(TNarrowString(INT_MAX).GetLength(), 10);
}

TEST(NarrowStringTest, CopiesAreIndependent) {
    TNarrowString original("path");
    TNarrowString copy(original);
    TNarrowString assigned;
    assigned = original;
    original.Append("/x");
    EXPECT_STREQ(copy, "path");
    EXPECT_STREQ(assigned, "path");
    EXPECT_STREQ(original, "path/x");
    EXPECT_EQ(original.GetLength(), 6);
}

TEST(NarrowStringTest, SelfAssignmentAndSelfAppendKeepContent) {
    TNarrowString s("ab");
    TNarrowString& alias = s;
    s = alias;
    EXPECT_STREQ(s, "ab");
    s = s.c_str() + 1;
    EXPECT_STREQ(s, "b");
    s += s;
    EXPECT_STREQ(s, "bb");
}

TEST(NarrowStringTest, JoinsPathPieces) {
    const TNarrowString dir("/opt/tavix/");
    const TNarrowString path = dir + "etc_gui/" + "opm.ini";
    EXPECT_STREQ(path, "/opt/tavix/etc_gui/opm.ini");
    EXPECT_EQ(path.GetLength(), 26);
}

TEST(NarrowStringTest, FormatReplacesContent) {
    TNarrowString name("old");
    name.Format("WaveCentralCoeff%d", 3);
    EXPECT_STREQ(name, "WaveCentralCoeff3");
    EXPECT_EQ(name.GetLength(), 17);
    name.Format("%s_%s", name.c_str(), "x");
    EXPECT_STREQ(name, "WaveCentralCoeff3_x");
}

TEST(NarrowStringTest, FormatWithoutResultLeavesStringUnchanged) {
    TNarrowString name("kept");
    const char* noFormat = nullptr;
    name.Format(noFormat);
    EXPECT_STREQ(name, "kept");
    name.Format("%s", "");
    EXPECT_STREQ(name, "kept");
}

TEST(NarrowStringTest, FormatBeyondScratchSizeIsComplete) {
    const std::string longText(5000, 'q');
    TNarrowString s;
    s.Format("<%s>", longText.c_str());
    EXPECT_EQ(s.GetLength(), 5002);
    EXPECT_EQ(std::string(s.c_str()), "<" + longText + ">");
}

}  // namespace
