#include <QDir>
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QSet>
#include <QTemporaryDir>

#include "Common/Toolkit/ToolkitStyle.h"
#include "Common/ToolkitTestSupport.h"
#include "Common/Utilities/FileNameCheck.h"
#include "Common/Utilities/LanguageResources.h"
#include "Platform/Library.h"

namespace {

QSet<QString> PackContents(const char* pack) {
    ScopedLanguagePack language(pack);
    const QString root = platform::ResourceRoot(AfxGetResourceHandle());
    QSet<QString> contents;
    QFile strings(root + "/strings.txt");
    EXPECT_TRUE(strings.open(QIODevice::ReadOnly)) << pack;
    for (const QByteArray& line : strings.readAll().split('\n'))
        if (!line.isEmpty() && !line.startsWith('#')) contents << line.left(line.indexOf('\t'));
    for (const char* folder : {"/templates", "/bitmaps"})
        for (const QString& entry : QDir(root + folder).entryList(QDir::Files))
            contents << folder + ('/' + entry);
    return contents;
}

TEST(LanguagePacks, HoldTheSameEntriesAndEveryoneTheSystemAsksFor) {
    EXPECT_EQ(PackContents("english"), PackContents("german"));
    for (const char* pack : {"english", "german"}) {
        ScopedLanguagePack language(pack);
        for (UINT id : {50, 51, 53, 57, 34977, 61331, 61332, 61333, 61334, 61336, 61337, 61340})
            EXPECT_FALSE(ResourceString(id).isEmpty()) << pack << " string " << id;
        QDialog screen;
        ASSERT_TRUE(LoadDialogTemplate(394, &screen)) << pack;
        EXPECT_EQ(screen.size(), CToolkitStyle::kScreenSize);
        for (int id : {1000, 1004, 1008, 1020, 1022, 1023, 1036, 1038, 1078, 1112, 1113, 1114})
            EXPECT_NE(GetDlgItem(&screen, id), nullptr) << pack << " control " << id;
        for (UINT id : {478u, 510u, 525u, 544u, 545u})
            EXPECT_EQ(LoadResourceBitmap(id).size(), CToolkitStyle::kKeySize) << pack << id;
        for (UINT id : {572u, 573u, 574u, 575u})
            EXPECT_EQ(LoadResourceBitmap(id).size(), CToolkitStyle::kBadgeSize) << pack << id;
    }
    ScopedLanguagePack german("german");
    EXPECT_EQ(ResourceString(53), "Kein Leistungsmesser");
}

TEST(LanguageResources, ReadsTheTestPacksOddLinesAndBothKindsOfTemplate) {
    ScopedLanguagePack language(OPM_TOOLKIT_TEST_PACK);
    ASSERT_TRUE(language.Loaded());
    EXPECT_EQ(ResourceString(1), "line one\nline two\tand a tab, a backslash \\ and \\q kept");
    std::wstring empty = L"x";
    EXPECT_TRUE(LoadResourceString(2, empty));
    EXPECT_EQ(empty, L"");
    EXPECT_TRUE(ResourceString(3).isNull());  // no tab
    EXPECT_EQ(ResourceString(4), "second");   // the later line wins

    QDialog grid;
    ASSERT_TRUE(LoadDialogTemplate(512, &grid));
    EXPECT_EQ(grid.windowTitle(), "Grid");
    EXPECT_EQ(GetDlgItem(&grid, 603)->parentWidget(), &grid);
    EXPECT_EQ(GetDlgItem(&grid, 603)->geometry(), QRect(40, 160, 180, 60));
    EXPECT_TRUE(GetDlgItem(&grid, 606)->isHidden());
    EXPECT_FALSE(GetDlgItem(&grid, 605)->isHidden());
    // A box over the dialog keeps its control ids to itself.
    auto* box = new QDialog(&grid);
    auto* boxLabel = new QLabel(box);
    boxLabel->setObjectName("601");
    EXPECT_NE(GetDlgItem(&grid, 601), boxLabel);
    EXPECT_EQ(GetDlgItem(box, 601), boxLabel);

    QDialog laidOut;
    ASSERT_TRUE(LoadDialogTemplate(500, &laidOut));
    EXPECT_EQ(laidOut.windowTitle(), "Laid out");
    ASSERT_NE(qobject_cast<QLabel*>(GetDlgItem(&laidOut, 501)), nullptr);
    laidOut.resize(400, 300);
    laidOut.show();
    // Its layout still owns the controls: they follow the dialog's width.
    EXPECT_TRUE(toolkittest::WaitUntil([&] { return GetDlgItem(&laidOut, 502)->width() > 300; }));
}

struct NameCase {
    const wchar_t* name;
    const wchar_t* complaint;  // null: accepted
};

class FileNameCheckTest : public testing::TestWithParam<NameCase> {};

TEST_P(FileNameCheckTest, AcceptsOrSaysWhyNot) {
    ScopedLanguagePack language;
    QTemporaryDir directory;
    QFile existing(directory.filePath(QStringLiteral("span1.txt")));
    ASSERT_TRUE(existing.open(QIODevice::WriteOnly));
    // The directory as the old system wrote it, with backslashes.
    const CFileNameCheck check(directory.path().replace('/', '\\').toStdWString(), {L"txt"},
                               {L"meas", L"trace"});
    std::wstring complaint = L"unchanged";
    EXPECT_EQ(check(GetParam().name, complaint), GetParam().complaint == nullptr);
    EXPECT_EQ(complaint, GetParam().complaint ? GetParam().complaint : L"unchanged");
}

INSTANTIATE_TEST_SUITE_P(
    Names, FileNameCheckTest,
    testing::Values(NameCase{L"temp", nullptr}, NameCase{L"span 2", nullptr},
                    NameCase{L"span1.bak", nullptr}, NameCase{L"measure", nullptr},
                    NameCase{L"   ", L"Please enter a name."},
                    NameCase{L"", L"Please enter a name."},
                    NameCase{L"a/b", L"A name must not contain the character /."},
                    NameCase{L"a\\b", L"A name must not contain the character \\."},
                    NameCase{L"why?", L"A name must not contain the character ?."},
                    NameCase{L"MEAS", L"The name MEAS is reserved. Please choose another name."},
                    NameCase{L"trace", L"The name trace is reserved. Please choose another name."},
                    NameCase{L"span1",
                             L"A file span1.txt already exists. Please choose another name."}));

}  // namespace
