#include <gtest/gtest.h>

#include "Support/IniSection.h"

namespace {

TEST(IniSectionTest, FindNeverCreatesGetAppends) {
    TIniSection section("S");
    EXPECT_EQ(section.FindEntry("a"), nullptr);
    EXPECT_EQ(section.Count(), 0);
    TIniEntry* a = section.GetEntry("a");
    TIniEntry* b = section.GetEntry("b");
    EXPECT_EQ(a->GetValue(), nullptr);
    EXPECT_EQ(section.GetEntry("a"), a);
    EXPECT_EQ(section.Count(), 2);
    EXPECT_EQ(section.EntryAt(0), a);
    EXPECT_EQ(section.EntryAt(1), b);
    EXPECT_EQ(section.EntryAt(2), nullptr);
    EXPECT_EQ(section.EntryAt(-1), nullptr);
}

TEST(IniSectionTest, GetIntCreatesOnlyWhenAsked) {
    TIniSection section("S");
    EXPECT_EQ(section.GetInt("k", 9, false), 9);
    EXPECT_EQ(section.FindEntry("k"), nullptr);
    EXPECT_EQ(section.GetInt("k", 9, true), 9);
    ASSERT_NE(section.FindEntry("k"), nullptr);
    EXPECT_EQ(section.FindEntry("k")->GetValue(), nullptr);
    section.SetInt("k", 3);
    EXPECT_EQ(section.GetInt("k", 9, false), 3);
}

TEST(IniSectionTest, GetDoubleAlwaysCreates) {
    TIniSection section("S");
    EXPECT_EQ(section.GetDouble("d", 0.25), 0.25);
    ASSERT_EQ(section.Count(), 1);
    section.SetDouble("d", 1.5);
    EXPECT_EQ(section.GetDouble("d", 0.25), 1.5);
    EXPECT_STREQ(section.EntryAt(0)->GetValue(), "1.5");
}

TEST(IniSectionTest, AddLineReplacesKeysButAppendsComments) {
    TIniSection section("S");
    const char* lines[] = {"a=1", ";a=1", "b", "a=2", ";a=1", "b=", "#note", "=x"};
    for (const char* line : lines) section.AddLine(line);
    struct {
        const char* key;
        const char* value;
    } expected[] = {{"a", "2"}, {";a", "1"}, {"b", ""}, {";a", "1"}, {"#note", nullptr}, {"", "x"}};
    ASSERT_EQ(section.Count(), 6);
    for (int i = 0; i < 6; ++i) {
        SCOPED_TRACE(i);
        EXPECT_STREQ(section.EntryAt(i)->GetKey(), expected[i].key);
        if (expected[i].value)
            EXPECT_STREQ(section.EntryAt(i)->GetValue(), expected[i].value);
        else
            EXPECT_EQ(section.EntryAt(i)->GetValue(), nullptr);
    }
}

TEST(IniSectionTest, LaterLineWithoutEqualsClearsValue) {
    TIniSection section("S");
    section.AddLine("k=1");
    section.AddLine("k");
    ASSERT_EQ(section.Count(), 1);
    EXPECT_EQ(section.EntryAt(0)->GetValue(), nullptr);
}

TEST(IniSectionTest, ClearRemovesEverything) {
    TIniSection section("S");
    section.SetInt("a", 1);
    section.SetInt("b", 2);
    section.Clear();
    EXPECT_EQ(section.Count(), 0);
    EXPECT_EQ(section.FindEntry("a"), nullptr);
    section.SetInt("c", 3);
    EXPECT_EQ(section.Count(), 1);
}

TEST(IniSectionTest, NameIsCopied) {
    char name[] = "Name";
    TIniSection section(name);
    name[0] = 'X';
    EXPECT_STREQ(section.GetName(), "Name");
    EXPECT_STREQ(TIniSection(nullptr).GetName(), "");
}

}  // namespace
