#include <gtest/gtest.h>

#include <string>

#include "Support/IniFile.h"
#include "Support/ScratchDirectory.h"

namespace {

class IniFileTest : public testing::Test {
protected:
    // Loads `content` from a file and returns what Save writes back.
    std::string RoundTrip(const std::string& content) {
        ScratchDirectory::Write(input, content);
        TIniFile ini(input.c_str());
        EXPECT_EQ(ini.Load(), 0);
        EXPECT_EQ(ini.Save(output.c_str()), 0);
        return ScratchDirectory::Read(output);
    }

    ScratchDirectory dir;
    std::string input = dir.Path("in.ini");
    std::string output = dir.Path("out.ini");
};

struct RoundTripCase {
    const char* name;
    std::string file;
    std::string saved;
};

class IniFileRoundTrip : public IniFileTest, public testing::WithParamInterface<RoundTripCase> {};

TEST_P(IniFileRoundTrip, SavesWhatTheReaderKept) {
    EXPECT_EQ(RoundTrip(GetParam().file), GetParam().saved);
}

const RoundTripCase roundTripCases[] = {
    {"LaterKeyWinsInPlace", "[S]\na=1\nb=x\na=2\n", "[S]\na=2\nb=x\n\n"},
    {"CommentsKeptTwice", "[S]\n;x=1\n;x=1\n#c\n", "[S]\n;x=1\n;x=1\n#c\n\n"},
    {"NoTrimmingAroundEquals", "Key = 5\n", "Key = 5\n\n"},
    {"FirstEqualsSplits", "a=1=2\n", "a=1=2\n\n"},
    {"LineWithoutEqualsHasNoValue", "flag\nflag\n", "flag\n\n"},
    {"EmptyValueKept", "k=\n", "k=\n\n"},
    {"HeaderWithoutBracketLosesLastChar", "[Sect\nk=v\n", "[Sec]\nk=v\n\n"},
    {"UnnamedSectionFirstWithoutHeader", "top=1\n[S]\nk=v\n", "top=1\n\n[S]\nk=v\n\n"},
    {"CarriageReturnsRemoved", "[S]\r\nk=v\r\n\r\n", "[S]\nk=v\n\n"},
    {"OnlyOneCarriageReturnRemoved", "k=v\r\r\n", "k=v\r\n\n"},
    {"BlankLinesNormalised", "a=1\n\n\n[S]\n\nb=2\n\n", "a=1\n\n[S]\nb=2\n\n"},
    {"RepeatedHeaderContinuesSection", "[S]\na=1\n[T]\nb=2\n[S]\nc=3\n",
     "[S]\na=1\nc=3\n\n[T]\nb=2\n\n"},
    {"LastLineWithoutNewlineLosesChar", "[S]\nkey=value", "[S]\nkey=valu\n\n"},
    {"LoneBracketIsTheUnnamedSection", "a=1\n[S]\nb=2\n[\nc=3\n", "a=1\nc=3\n\n[S]\nb=2\n\n"},
    {"EmptySectionLeftOut", "[Empty]\n[S]\nk=v\n", "[S]\nk=v\n\n"},
    {"CaseSensitiveKeys", "k=1\nK=2\n", "k=1\nK=2\n\n"},
    {"EmptyFile", "", ""},
};

INSTANTIATE_TEST_SUITE_P(Lines, IniFileRoundTrip, testing::ValuesIn(roundTripCases),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(IniFileTest, BlanksAroundEqualsBelongToKeyAndValue) {
    ScratchDirectory::Write(input, "Key = 5\n");
    TIniFile ini(input.c_str());
    ASSERT_EQ(ini.Load(), 0);
    TIniSection* section = ini.FindSection("");
    ASSERT_NE(section, nullptr);
    EXPECT_EQ(section->FindEntry("Key"), nullptr);
    TIniEntry* entry = section->FindEntry("Key ");
    ASSERT_NE(entry, nullptr);
    EXPECT_STREQ(entry->GetValue(), " 5");
}

TEST_F(IniFileTest, LongLineArrivesInPiecesOf255) {
    const std::string line = "k=" + std::string(298, 'x');
    ScratchDirectory::Write(input, line + "\n");
    TIniFile ini(input.c_str());
    ASSERT_EQ(ini.Load(), 0);
    TIniSection* section = ini.FindSection("");
    ASSERT_EQ(section->Count(), 2);
    // First piece: 255 characters, its last one removed as if it were the newline.
    EXPECT_STREQ(section->EntryAt(0)->GetKey(), "k");
    EXPECT_EQ(std::string(section->EntryAt(0)->GetValue()), std::string(252, 'x'));
    EXPECT_EQ(std::string(section->EntryAt(1)->GetKey()), std::string(45, 'x'));
    EXPECT_EQ(section->EntryAt(1)->GetValue(), nullptr);
}

TEST_F(IniFileTest, MissingFileKeepsContents) {
    TIniFile ini(dir.Path("absent.ini").c_str());
    ini.GetSection("S")->SetInt("k", 7);
    EXPECT_EQ(ini.Load(), 1);
    EXPECT_EQ(ini.GetSection("S")->GetInt("k", 0, false), 7);
}

TEST_F(IniFileTest, LoadReplacesEarlierContents) {
    ScratchDirectory::Write(input, "[New]\nk=1\n");
    TIniFile ini(input.c_str());
    ini.GetSection("Old")->SetInt("k", 7);
    ASSERT_EQ(ini.Load(), 0);
    EXPECT_EQ(ini.FindSection("Old"), nullptr);
    EXPECT_NE(ini.FindSection("New"), nullptr);
}

TEST_F(IniFileTest, SaveIntoMissingDirectoryFails) {
    TIniFile ini(dir.Path("no/such/dir/x.ini").c_str());
    ini.GetSection("S")->SetInt("k", 1);
    EXPECT_EQ(ini.Save(), 1);
}

TEST_F(IniFileTest, SaveReplacesFileAndLeavesNothingBeside) {
    ScratchDirectory::Write(input, "old content that is much longer than the new one\n");
    TIniFile ini(input.c_str());
    ini.GetSection("S")->SetInt("k", 1);
    ASSERT_EQ(ini.Save(), 0);
    EXPECT_EQ(ScratchDirectory::Read(input), "[S]\nk=1\n\n");
    int files = 0;
    for ([[maybe_unused]] const auto& item : std::filesystem::directory_iterator(dir.Root()))
        ++files;
    EXPECT_EQ(files, 1);
}

TEST_F(IniFileTest, NewKeysAndSectionsGoAtTheEnd) {
    ScratchDirectory::Write(input, "[A]\nx=1\n[B]\ny=2\n");
    TIniFile ini(input.c_str());
    ASSERT_EQ(ini.Load(), 0);
    ini.GetSection("C")->SetInt("z", 3);
    ini.GetSection("A")->SetInt("w", 4);
    ini.SetDouble("B", "y", 2.5);
    ASSERT_EQ(ini.Save(output.c_str()), 0);
    EXPECT_EQ(ScratchDirectory::Read(output), "[A]\nx=1\nw=4\n\n[B]\ny=2.5\n\n[C]\nz=3\n\n");
}

TEST_F(IniFileTest, LookupCreatesValuelessKeyWrittenAlone) {
    TIniFile ini(output.c_str());
    TIniSection* section = ini.GetSection("S");
    EXPECT_EQ(section->GetInt("absent", 42, true), 42);
    EXPECT_EQ(ini.GetDouble("S", "real", 1.5), 1.5);
    ASSERT_EQ(ini.Save(), 0);
    EXPECT_EQ(ScratchDirectory::Read(output), "[S]\nabsent\nreal\n\n");
}

TEST_F(IniFileTest, EmptySectionsWrittenOnlyWhenAsked) {
    TIniFile ini(output.c_str());
    ini.GetSection("Empty");
    ASSERT_EQ(ini.Save(), 0);
    EXPECT_EQ(ScratchDirectory::Read(output), "");
    ini.SetWriteEmptySections(true);
    ASSERT_EQ(ini.Save(), 0);
    // The unnamed section exists only after a load; here just the named one.
    EXPECT_EQ(ScratchDirectory::Read(output), "[Empty]\n\n");
}

TEST_F(IniFileTest, SectionLookupIsExactAndOrdered) {
    ScratchDirectory::Write(input, "[b]\n[B]\n[a]\n");
    TIniFile ini(input.c_str());
    ASSERT_EQ(ini.Load(), 0);
    ASSERT_EQ(ini.SectionCount(), 4);
    const char* expected[] = {"", "b", "B", "a"};
    for (int i = 0; i < 4; ++i) EXPECT_STREQ(ini.SectionAt(i)->GetName(), expected[i]);
    EXPECT_EQ(ini.SectionAt(4), nullptr);
    EXPECT_EQ(ini.FindSection("A"), nullptr);
    EXPECT_EQ(ini.GetSection("B"), ini.SectionAt(2));
}

TEST_F(IniFileTest, ExplicitPathDoesNotReplaceStoredOne) {
    ScratchDirectory::Write(input, "k=1\n");
    TIniFile ini(output.c_str());
    ASSERT_EQ(ini.Load(input.c_str()), 0);
    EXPECT_STREQ(ini.GetPath(), output.c_str());
    ASSERT_EQ(ini.Save(), 0);
    EXPECT_EQ(ScratchDirectory::Read(output), "k=1\n\n");
}

}  // namespace
