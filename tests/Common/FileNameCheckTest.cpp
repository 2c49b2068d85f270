#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include "Common/DialogTestSupport.h"
#include "Common/Utilities/FileNameCheck.h"

namespace {

struct NameCase {
    const wchar_t* name;
    bool accepted;
    const wchar_t* complaint;
};

class FileNameCheckTest : public testing::TestWithParam<NameCase> {
protected:
    void SetUp() override {
        ASSERT_TRUE(pack.Loaded());
        ASSERT_TRUE(directory.isValid());
        QFile existing(directory.filePath(QStringLiteral("span1.txt")));
        ASSERT_TRUE(existing.open(QIODevice::WriteOnly));
    }

    dialogtest::LanguagePack pack;
    QTemporaryDir directory;
};

TEST_P(FileNameCheckTest, AcceptsOrSaysWhyNot) {
    const CFileNameCheck check(directory.path().toStdWString(), {L"txt"}, {L"meas", L"trace"});
    std::wstring complaint = L"unchanged";
    EXPECT_EQ(check(GetParam().name, complaint), GetParam().accepted);
    EXPECT_EQ(complaint, GetParam().complaint);
}

INSTANTIATE_TEST_SUITE_P(
    Names, FileNameCheckTest,
    testing::Values(
        NameCase{L"temp", true, L"unchanged"}, NameCase{L"span 2", true, L"unchanged"},
        NameCase{L"span1.bak", true, L"unchanged"}, NameCase{L"measure", true, L"unchanged"},
        NameCase{L"", false, L"Please enter a name."},
        NameCase{L"   ", false, L"Please enter a name."},
        NameCase{L"a/b", false, L"A name must not contain the character /."},
        NameCase{L"a\\b", false, L"A name must not contain the character \\."},
        NameCase{L"why?", false, L"A name must not contain the character ?."},
        NameCase{L"MEAS", false, L"The name MEAS is reserved. Please choose another name."},
        NameCase{L"trace", false, L"The name trace is reserved. Please choose another name."},
        NameCase{L"span1", false,
                 L"A file span1.txt already exists. Please choose another name."}));

TEST(FileNameCheckPathTest, TakesADirectoryWithBackslashes) {
    dialogtest::LanguagePack pack;
    QTemporaryDir directory;
    QFile existing(directory.filePath(QStringLiteral("a.txt")));
    ASSERT_TRUE(existing.open(QIODevice::WriteOnly));
    const CFileNameCheck check(
        directory.path().replace(QLatin1Char('/'), QLatin1Char('\\')).toStdWString(), {L"txt"}, {});
    std::wstring complaint;
    EXPECT_FALSE(check(L"a", complaint));
    EXPECT_TRUE(check(L"b", complaint));
}

}  // namespace
