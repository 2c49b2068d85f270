#include <QDialog>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QSet>
#include <memory>

#include "Common/Utilities/LanguageResources.h"
#include "Common/Toolkit/ToolkitStyle.h"
#include "Common/ToolkitTestSupport.h"
#include "Platform/Library.h"
#include "support/LanguagePack.h"

namespace {

const char* const kPacks[] = {"english", "german"};

// Every numbered string the system's code asks for.
const UINT kSystemStrings[] = {50,    51,    53,    57,    34977, 61331, 61332,
                               61333, 61334, 61336, 61337, 61340, 61341};

QSet<QString> StringIds(const QString& root) {
    QFile file(root + "/strings.txt");
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << root.toStdString();
    QSet<QString> ids;
    for (const QByteArray& line : file.readAll().split('\n')) {
        if (line.isEmpty() || line.startsWith('#')) continue;
        ids.insert(QString::fromUtf8(line.left(line.indexOf('\t'))));
    }
    return ids;
}

QSet<QString> Entries(const QString& directory) {
    const QStringList list = QDir(directory).entryList(QDir::Files);
    return QSet<QString>(list.begin(), list.end());
}

}  // namespace

TEST(LanguagePacks, HoldEveryNumberedStringOfTheSystem) {
    for (const char* pack : kPacks) {
        ScopedLanguagePack language(pack);
        ASSERT_TRUE(language.Loaded()) << pack;
        for (UINT id : kSystemStrings) {
            std::wstring text;
            EXPECT_TRUE(LoadResourceString(id, text)) << pack << " string " << id;
            EXPECT_FALSE(text.empty()) << pack << " string " << id;
        }
    }
}

TEST(LanguagePacks, GermanHoldsWhatEnglishHolds) {
    QSet<QString> strings[2], templates[2], bitmaps[2];
    for (int i = 0; i < 2; ++i) {
        ScopedLanguagePack language(kPacks[i]);
        const QString root = platform::ResourceRoot(AfxGetResourceHandle());
        strings[i] = StringIds(root);
        templates[i] = Entries(root + "/templates");
        bitmaps[i] = Entries(root + "/bitmaps");
    }
    EXPECT_EQ(strings[0], strings[1]);
    EXPECT_EQ(templates[0], templates[1]);
    EXPECT_EQ(bitmaps[0], bitmaps[1]);
    for (const char* name : {"372.ui", "381.ui", "394.ui"})
        EXPECT_TRUE(templates[0].contains(name)) << name;
}

TEST(LanguagePacks, TextsDifferBetweenLanguages) {
    QString english, german;
    {
        ScopedLanguagePack language("english");
        english = ResourceString(53);
    }
    {
        ScopedLanguagePack language("german");
        german = ResourceString(53);
    }
    EXPECT_EQ(english, "No power meter");
    EXPECT_EQ(german, "Kein Leistungsmesser");
}

TEST(LanguagePacks, MeasuringScreenTemplateHasEveryControlTheScreenUses) {
    for (const char* pack : kPacks) {
        ScopedLanguagePack language(pack);
        QDialog dialog;
        ASSERT_TRUE(LoadDialogTemplate(394, &dialog)) << pack;
        EXPECT_EQ(dialog.size(), CToolkitStyle::kScreenSize);
        for (int id : {1000, 1004, 1008, 1020, 1022, 1023, 1036, 1038, 1078, 1112, 1113, 1114})
            EXPECT_NE(GetDlgItem(&dialog, id), nullptr) << pack << " control " << id;
    }
}

TEST(LanguagePacks, KeyFacesAndOverlaysHaveTheKeySizes) {
    for (const char* pack : kPacks) {
        ScopedLanguagePack language(pack);
        for (UINT id : {478u, 510u, 525u, 544u, 545u})
            EXPECT_EQ(LoadResourceBitmap(id).size(), CToolkitStyle::kKeySize) << pack << " " << id;
        for (UINT id : {572u, 573u, 574u, 575u})
            EXPECT_EQ(LoadResourceBitmap(id).size(), CToolkitStyle::kBadgeSize)
                << pack << " " << id;
    }
}

TEST(LanguageResources, MissingEntriesLeaveTheirTargetAlone) {
    ScopedLanguagePack language("english");
    std::wstring text = L"unchanged";
    EXPECT_FALSE(LoadResourceString(9, text));
    EXPECT_EQ(text, L"unchanged");
    EXPECT_TRUE(ResourceString(9).isNull());
    QDialog dialog;
    EXPECT_FALSE(LoadDialogTemplate(9, &dialog));
    EXPECT_TRUE(dialog.children().isEmpty());
    EXPECT_TRUE(LoadResourceBitmap(9).isNull());
}

TEST(LanguageResources, NothingWithoutACurrentPack) {
    const HMODULE previous = AfxGetResourceHandle();
    AfxSetResourceHandle(nullptr);
    std::wstring text;
    EXPECT_FALSE(LoadResourceString(53, text));
    QDialog dialog;
    EXPECT_FALSE(LoadDialogTemplate(394, &dialog));
    EXPECT_TRUE(LoadResourceBitmap(478).isNull());
    AfxSetResourceHandle(previous);
}

TEST(LanguageResources, StringLinesAreUnescapedAndFaultyLinesSkipped) {
    ScopedLanguagePack language(OPM_TOOLKIT_TEST_PACK);
    ASSERT_TRUE(language.Loaded());
    EXPECT_EQ(ResourceString(1), "line one\nline two\tand a tab, a backslash \\ and \\q kept");
    std::wstring empty = L"x";
    EXPECT_TRUE(LoadResourceString(2, empty));
    EXPECT_EQ(empty, L"");
    // "3 no tab at all" has no tab; the later of two lines for 4 wins.
    EXPECT_TRUE(ResourceString(3).isNull());
    EXPECT_EQ(ResourceString(4), "second");
}

TEST(LanguageResources, FixedGeometryTemplateGivesItsControlsToTheDialog) {
    ScopedLanguagePack language(OPM_TOOLKIT_TEST_PACK);
    QDialog dialog;
    ASSERT_TRUE(LoadDialogTemplate(512, &dialog));
    EXPECT_EQ(dialog.windowTitle(), "Grid");
    QWidget* button = GetDlgItem(&dialog, 603);
    ASSERT_NE(button, nullptr);
    EXPECT_EQ(button->parentWidget(), &dialog);
    EXPECT_EQ(button->geometry(), QRect(40, 160, 180, 60));
    EXPECT_TRUE(GetDlgItem(&dialog, 606)->isHidden());
    EXPECT_FALSE(GetDlgItem(&dialog, 605)->isHidden());
}

TEST(LanguageResources, LaidOutTemplateKeepsItsLayout) {
    ScopedLanguagePack language(OPM_TOOLKIT_TEST_PACK);
    QDialog dialog;
    ASSERT_TRUE(LoadDialogTemplate(500, &dialog));
    EXPECT_EQ(dialog.windowTitle(), "Laid out");
    auto* label = qobject_cast<QLabel*>(GetDlgItem(&dialog, 501));
    auto* button = qobject_cast<QPushButton*>(GetDlgItem(&dialog, 502));
    ASSERT_NE(label, nullptr);
    ASSERT_NE(button, nullptr);
    dialog.resize(400, 300);
    dialog.show();
    ProcessEvents();
    // The layout still owns them: they follow the dialog's width.
    EXPECT_GT(button->width(), 300);
}

TEST(LanguageResources, ControlIdsOfBoxesOverADialogStayTheirOwn) {
    ScopedLanguagePack language("english");
    QDialog screen;
    ASSERT_TRUE(LoadDialogTemplate(394, &screen));
    auto* box = new QDialog(&screen);
    auto* boxText = new QLabel(box);
    boxText->setObjectName("1192");
    auto* boxKey = new QLabel(box);
    boxKey->setObjectName("1020");
    EXPECT_EQ(GetDlgItem(&screen, 1192), nullptr);
    EXPECT_NE(GetDlgItem(&screen, 1020), boxKey);
    EXPECT_EQ(GetDlgItem(box, 1020), boxKey);
}
