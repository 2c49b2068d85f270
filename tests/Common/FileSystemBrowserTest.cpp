#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileSystemModel>
#include <QLabel>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeView>

#include "Common/DialogTestSupport.h"
#include "Common/Toolkit/FileSystemBrowser.h"
#include "Common/Utilities/LanguageResources.h"
#include "Common/Toolkit/MessageBoxEx.h"
#include "Common/Toolkit/SubmenuDialog.h"
#include "Platform/ModulePath.h"

namespace {

// A derived dialog as the result file screen is one: it records what the
// browser hands over.
class RecordingBrowser : public CFileSystemBrowser {
public:
    using CFileSystemBrowser::CFileSystemBrowser;

    std::vector<QString> sent;
    QStringList activated;
    QStringList currents;

protected:
    void OnSendFiles(const std::vector<QString>& files) override { sent = files; }
    void OnFileActivated(const QString& path) override { activated << path; }
    void OnCurrentChanged(const QString& path) override { currents << path; }
};

class FileSystemBrowserTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(pack.Loaded());
        ASSERT_TRUE(flash.isValid() && usb.isValid());
        Touch(flash.filePath(QStringLiteral("a.txt")));
        Touch(flash.filePath(QStringLiteral("b.txt")));
        ASSERT_TRUE(QDir(flash.path()).mkpath(QStringLiteral("2015/march")));
        Touch(flash.filePath(QStringLiteral("2015/march/span.txt")));
        Touch(usb.filePath(QStringLiteral("copy.txt")));

        browser.SetLocationSource([this] {
            return std::vector<CFileSystemBrowser::Location>{
                {QStringLiteral("Flash"), flash.path()}, {QStringLiteral("USB"), usb.path()}};
        });
        ASSERT_TRUE(browser.Create());
        browser.show();
    }

    static void Touch(const QString& path) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
    }

    QModelIndex IndexOf(const QString& path) { return browser.Model()->index(path); }
    int RowsShown() { return browser.Model()->rowCount(browser.Tree()->rootIndex()); }

    dialogtest::LanguagePack pack;
    QTemporaryDir flash;
    QTemporaryDir usb;
    RecordingBrowser browser;
};

TEST_F(FileSystemBrowserTest, ShowsTheFirstLocationWithItsNameInTheTitle) {
    QTRY_COMPARE_WITH_TIMEOUT(RowsShown(), 3, 10000);
    EXPECT_EQ(browser.Tree()->rootIndex(), IndexOf(flash.path()));
    auto* title = qobject_cast<QLabel*>(GetDlgItem(&browser, CFileSystemBrowser::IDC_TITLE));
    ASSERT_NE(title, nullptr);
    EXPECT_TRUE(title->text().endsWith(QStringLiteral(": Flash"))) << title->text().toStdString();
    QTRY_VERIFY_WITH_TIMEOUT(browser.Tree()->currentIndex().isValid(), 10000);
}

TEST_F(FileSystemBrowserTest, SelectsAPathDeepInTheTree) {
    const QString span = flash.filePath(QStringLiteral("2015/march/span.txt"));
    browser.SelectPath(span);
    QTRY_COMPARE_WITH_TIMEOUT(browser.CurrentPath(), span, 10000);
    EXPECT_TRUE(browser.Tree()->isExpanded(IndexOf(flash.filePath(QStringLiteral("2015")))));
    EXPECT_EQ(browser.CurrentDirectory(), flash.filePath(QStringLiteral("2015/march")));
    EXPECT_EQ(browser.currents.last(), span);
}

TEST_F(FileSystemBrowserTest, SpaceMarksFilesAndSendHandsThemOver) {
    QTRY_COMPARE_WITH_TIMEOUT(RowsShown(), 3, 10000);
    const QString a = flash.filePath(QStringLiteral("a.txt"));
    const QString b = flash.filePath(QStringLiteral("b.txt"));
    for (const QString& file : {a, b}) {
        ASSERT_TRUE(browser.SelectPath(file));
        QTest::keyClick(browser.Tree(), Qt::Key_Space);
    }
    QTest::keyClick(browser.Tree(), Qt::Key_F2);
    std::vector<QString> sent = browser.sent;
    std::sort(sent.begin(), sent.end());
    EXPECT_EQ(sent, (std::vector<QString>{a, b}));

    // Space again unmarks; with nothing marked the current file is sent.
    QTest::keyClick(browser.Tree(), Qt::Key_Space);
    ASSERT_TRUE(browser.SelectPath(a));
    QTest::keyClick(browser.Tree(), Qt::Key_Space);
    ASSERT_TRUE(browser.SelectPath(b));
    QTest::keyClick(browser.Tree(), Qt::Key_F2);
    EXPECT_EQ(browser.sent, std::vector<QString>{b});
}

TEST_F(FileSystemBrowserTest, SendWithoutAFileSaysNoFiles) {
    const QString folder = flash.filePath(QStringLiteral("2015"));
    browser.SelectPath(folder);
    QTRY_COMPARE_WITH_TIMEOUT(browser.CurrentPath(), folder, 10000);
    QString shown;
    dialogtest::WhenModalShown<CMessageBoxEx>([&](CMessageBoxEx* box) {
        shown = qobject_cast<QLabel*>(GetDlgItem(box, CMessageBoxEx::IDC_TEXT))->text();
        QTest::keyClick(box, Qt::Key_Return);
    });
    QTest::keyClick(browser.Tree(), Qt::Key_F2);
    EXPECT_EQ(shown, QStringLiteral("No files"));
    EXPECT_TRUE(browser.sent.empty());
}

TEST_F(FileSystemBrowserTest, EnterOpensFoldersAndActivatesFiles) {
    const QString folder = flash.filePath(QStringLiteral("2015"));
    browser.SelectPath(folder);
    QTRY_COMPARE_WITH_TIMEOUT(browser.CurrentPath(), folder, 10000);
    QTest::keyClick(browser.Tree(), Qt::Key_Return);
    EXPECT_TRUE(browser.Tree()->isExpanded(IndexOf(folder)));
    QTest::keyClick(browser.Tree(), Qt::Key_Return);
    EXPECT_FALSE(browser.Tree()->isExpanded(IndexOf(folder)));

    const QString a = flash.filePath(QStringLiteral("a.txt"));
    ASSERT_TRUE(browser.SelectPath(a));
    QTest::keyClick(browser.Tree(), Qt::Key_Return);
    EXPECT_EQ(browser.activated, QStringList{a});
}

TEST_F(FileSystemBrowserTest, TheStorageKeySwitchesToAnotherLocation) {
    dialogtest::WhenModalShown<CSubmenuDialog>([](CSubmenuDialog* menu) {
        EXPECT_EQ(menu->GetKeysCount(), 2u);
        QTest::keyClick(menu, Qt::Key_Down);
        QTest::keyClick(menu, Qt::Key_Return);
    });
    QTest::keyClick(browser.Tree(), Qt::Key_F1);
    EXPECT_EQ(browser.CurrentLocation(), 1u);
    EXPECT_EQ(browser.Tree()->rootIndex(), IndexOf(usb.path()));
    QTRY_COMPARE_WITH_TIMEOUT(RowsShown(), 1, 10000);
    const QString copy = usb.filePath(QStringLiteral("copy.txt"));
    EXPECT_TRUE(browser.SelectPath(copy));
    EXPECT_EQ(browser.CurrentPath(), copy);
}

TEST_F(FileSystemBrowserTest, EscapeLeaves) {
    QTest::keyClick(browser.Tree(), Qt::Key_Escape);
    EXPECT_FALSE(browser.isVisible());
    EXPECT_EQ(browser.result(), IDCANCEL);
}

TEST_F(FileSystemBrowserTest, TheCloseKeyLeaves) {
    QTest::keyClick(browser.Tree(), Qt::Key_F4);
    EXPECT_FALSE(browser.isVisible());
    EXPECT_EQ(browser.result(), IDCANCEL);
}

TEST(FileSystemBrowserLocationsTest, TheDataFolderComesFirst) {
    dialogtest::LanguagePack pack;
    QTemporaryDir image;
    platform::OverrideModuleFileName(image.filePath(QStringLiteral("PowerMeter")).toStdWString());
    const auto locations = CFileSystemBrowser::DefaultLocations();
    platform::OverrideModuleFileName(L"");
    ASSERT_FALSE(locations.empty());
    EXPECT_EQ(locations.front().label, QStringLiteral("Flash"));
    EXPECT_EQ(locations.front().path, image.filePath(QStringLiteral("data")));
    EXPECT_TRUE(QDir(locations.front().path).exists());
}

}  // namespace
