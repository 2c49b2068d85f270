#include <gtest/gtest.h>

#include <string>

#include "Support/IniFile.h"
#include "Support/ScratchDirectory.h"

namespace {

class IniFileTest : public testing::Test {
protected:
    ScratchDirectory dir;
    std::string input = dir.Path("in.ini");
    std::string output = dir.Path("out.ini");
};

// What Save writes after a Load of each file: the reader's rules in one table.
TEST_F(IniFileTest, SavesWhatTheReaderKept) {
    const struct {
        std::string file, saved;
    } cases[] = {
        {"[S]\na=1\nb=x\na=2\n", "[S]\na=2\nb=x\n\n"},         // a later key wins in place
        {"[S]\n;x=1\n;x=1\n#c\n", "[S]\n;x=1\n;x=1\n#c\n\n"},  // comments kept, twice
        {"Key = 5\na=1=2\nflag\nflag\nk=\n", "Key = 5\na=1=2\nflag\nk=\n\n"},
        {"[Sect\nk=v\n", "[Sec]\nk=v\n\n"},  // the closing bracket is assumed
        {"top=1\n[S]\nk=v\n", "top=1\n\n[S]\nk=v\n\n"},
        {"[S]\r\nk=v\r\n\r\nv=k\r\r\n", "[S]\nk=v\nv=k\r\n\n"},
        {"a=1\n\n\n[S]\n\nb=2\n\n", "a=1\n\n[S]\nb=2\n\n"},
        {"[S]\na=1\n[T]\nb=2\n[S]\nc=3\n", "[S]\na=1\nc=3\n\n[T]\nb=2\n\n"},
        {"[S]\nkey=value", "[S]\nkey=valu\n\n"},  // the last character is taken for the newline
        {"a=1\n[S]\nb=2\n[\nc=3\n", "a=1\nc=3\n\n[S]\nb=2\n\n"},
        {"[Empty]\n[S]\nk=v\nK=w\n", "[S]\nk=v\nK=w\n\n"},
        {"k=" + std::string(298, 'x') + "\n",  // the 256-byte buffer cuts a long line
         "k=" + std::string(252, 'x') + "\n" + std::string(45, 'x') + "\n\n"},
        {"", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        ScratchDirectory::Write(input, c.file);
        TIniFile ini(output.c_str());
        ini.GetSection("Gone")->SetInt("k", 7);
        ASSERT_EQ(ini.Load(input.c_str()), 0);
        EXPECT_EQ(ini.FindSection("Gone"), nullptr);
        ASSERT_EQ(ini.Save(), 0);
        EXPECT_EQ(ScratchDirectory::Read(output), c.saved);
    }
}

TEST_F(IniFileTest, ValuesConvertAndLookupsCreateOnlyWhereDocumented) {
    ScratchDirectory::Write(input, "[S]\ni=12abc\nd=1e3\nbad=abc\nnone\nempty=\n[b]\n[B]\n");
    TIniFile ini(input.c_str());
    ASSERT_EQ(ini.Load(), 0);
    TIniSection* s = ini.FindSection("S");
    EXPECT_EQ(s->GetInt("i", -1, false), 12);
    EXPECT_EQ(s->GetInt("bad", -1, false), -1);
    EXPECT_EQ(s->GetInt("empty", -1, false), -1);
    EXPECT_EQ(s->GetInt("absent", -1, false), -1);
    EXPECT_EQ(s->FindEntry("absent"), nullptr);
    EXPECT_EQ(s->GetInt("created", 42, true), 42);
    EXPECT_EQ(ini.GetDouble("S", "d", 0), 1000.0);
    EXPECT_EQ(ini.GetDouble("S", "none", 1.5), 1.5);
    EXPECT_STREQ(s->FindEntry("empty")->GetString("dflt"), "dflt");
    ini.SetDouble("S", "real", -76.123456);
    ini.SetDouble("New", "big", 1234567.0);
    ini.GetSection("Empty");
    EXPECT_EQ(ini.SectionCount(), 6);
    EXPECT_STREQ(ini.SectionAt(3)->GetName(), "B");
    EXPECT_EQ(ini.SectionAt(6), nullptr);
    EXPECT_EQ(ini.SectionAt(-1), nullptr);
    EXPECT_EQ(ini.FindSection(nullptr), nullptr);
    ASSERT_EQ(ini.Save(output.c_str()), 0);
    EXPECT_EQ(ScratchDirectory::Read(output),
              "[S]\ni=12abc\nd=1e3\nbad=abc\nnone\nempty=\ncreated\nreal=-76.1235\n\n"
              "[New]\nbig=1.23457e+06\n\n");
    ini.SetWriteEmptySections(true);
    ASSERT_EQ(ini.Save(output.c_str()), 0);
    EXPECT_NE(ScratchDirectory::Read(output).find("\n[b]\n\n[B]\n\n"), std::string::npos);
    EXPECT_STREQ(ini.GetPath(), input.c_str());
}

TEST_F(IniFileTest, MissingFilesFailAndKeepTheContents) {
    TIniFile ini(dir.Path("no/such/dir/x.ini").c_str());
    ini.GetSection("S")->SetInt("k", 7);
    EXPECT_EQ(ini.Load(), 1);
    EXPECT_EQ(ini.GetSection("S")->GetInt("k", 0, false), 7);
    EXPECT_EQ(ini.Save(), 1);
}

}  // namespace
