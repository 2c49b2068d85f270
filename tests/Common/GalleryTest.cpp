// Opens every dialog of the toolkit in both language packs on an
// instrument-sized screen, checks that nothing is clipped or placed off the
// screen, and with OPM_SCREENSHOTS=dir writes a picture of each for review.

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <QTest>
#include <QTimer>
#include <QTreeView>

#include "Common/Toolkit/BaseDialog.h"
#include "Common/Toolkit/ChangeValueDialog.h"
#include "Common/Toolkit/ColorStatic.h"
#include "Common/DialogTestSupport.h"
#include "Common/Toolkit/FatalErrorBox.h"
#include "Common/Toolkit/FileSystemBrowser.h"
#include "Common/Toolkit/FontCreator.h"
#include "Common/Utilities/LanguageResources.h"
#include "Common/Toolkit/Message.h"
#include "Common/Toolkit/MessageBoxEx.h"
#include "Common/Toolkit/PopupFrame.h"
#include "Common/Toolkit/ProcessingDialog.h"
#include "Common/Toolkit/QuestionDialog.h"
#include "Common/Toolkit/SubmenuDialog.h"
#include "Common/Toolkit/VirtualKeyboard.h"
#include "Common/Toolkit/VirtualKeys.h"
#include "Platform/LocalTime.h"
#include "Platform/PowerStatus.h"
#include "support/Screenshot.h"

namespace {

// The measuring screen's layout with sample values: the soft-key row, the
// battery bar and the large colour readings a user sees most.
class SampleScreen : public CBaseDialog {
public:
    SampleScreen() : CBaseDialog(394) {}

    CMenuKey* WavelengthKey() const { return wavelengthKey; }

protected:
    std::vector<CMenuKey*> GetMenuKeys() override {
        wavelengthKey = CreateMenuKey(544, 544);
        return {wavelengthKey, CreateMenuKey(545, 545), CreateMenuKey(525, 525),
                CreateMenuKey(510, 510)};
    }

    bool OnInitDialog() override {
        const bool result = CBaseDialog::OnInitDialog();
        FontCreator::CreateFont(large, 28, 700);
        FontCreator::CreateFont(medium, 24, 700);
        FontCreator::CreateCommonFont(small, 16, 700);
        absolute.SubclassDlgItem(1020, this);
        absolute.SetTextColor(0x0000FF);
        linear.SubclassDlgItem(1023, this);
        linear.SetTextColor(0xFF0000);
        const struct {
            int id;
            const QFont* font;
            QString text;
        } fields[] = {{1004, &medium, QStringLiteral("1310 nm")},
                      {1020, &large, QStringLiteral("-23.456 dBm")},
                      {1023, &large, QStringLiteral("4.517 uW")},
                      {1038, &small, ResourceString(51)},
                      {1008, &medium, QStringLiteral("  -3.00 dBm")},
                      {1036, &small, ResourceString(50)},
                      {1022, &large, QStringLiteral("-20.46 dB")},
                      {1113, &large, QStringLiteral("1550 ") + ResourceString(61340)}};
        for (const auto& field : fields) {
            GetDlgItem(field.id)->setFont(*field.font);
            SetDlgItemText(field.id, field.text);
        }
        GetDlgItem(1112)->hide();
        for (int shown : {1008, 1022, 1036, 1038, 1113, 1114}) GetDlgItem(shown)->show();
        return result;
    }

private:
    QFont large, medium, small;
    CColorStatic absolute, linear;
    CMenuKey* wavelengthKey = nullptr;
};

// What a person would call untidy: a box off the screen, a control outside its
// window, a text cut off by its control.
void ExpectTidy(QWidget* window) {
    SCOPED_TRACE(window->metaObject()->className());
    const QRect screen = CPopupFrame::ScreenRect();
    EXPECT_TRUE(screen.contains(window->frameGeometry()))
        << "window at " << window->frameGeometry().x() << "," << window->frameGeometry().y()
        << " size " << window->width() << "x" << window->height();
    for (QWidget* control : window->findChildren<QWidget*>()) {
        if (!control->isVisibleTo(window) || control->isWindow()) continue;
        const QRect inWindow(control->mapTo(window, QPoint(0, 0)), control->size());
        EXPECT_TRUE(window->rect().contains(inWindow))
            << control->objectName().toStdString() << " lies outside its window";
        // A key's own size hint holds its label with the style's padding.
        if (auto* button = qobject_cast<QAbstractButton*>(control)) {
            if (!button->text().isEmpty()) {
                EXPECT_LE(button->sizeHint().width(), button->width())
                    << "\"" << button->text().toStdString() << "\" is cut off in key "
                    << control->objectName().toStdString();
            }
            continue;
        }
        auto* label = qobject_cast<QLabel*>(control);
        if (label == nullptr || label->wordWrap()) continue;
        const QString text = label->text();
        const int room = label->contentsRect().width();
        if (text.isEmpty() || text.contains(QLatin1Char('<'))) continue;
        const QFontMetrics metrics(control->font());
        for (const QString& line : text.split(QLatin1Char('\n')))
            EXPECT_LE(metrics.horizontalAdvance(line), room)
                << "\"" << line.toStdString() << "\" is cut off in control "
                << control->objectName().toStdString();
    }
}

class GalleryTest : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override {
        ASSERT_TRUE(pack.Loaded());
        // Pictures that differ only where something changed: a fixed clock, and
        // mains power until a test gives the instrument a battery.
        ASSERT_TRUE(powerSupplies.isValid());
        platform::SetPowerSupplyRoot(powerSupplies.path().toStdString());
        platform::OverrideLocalTime([] {
            SYSTEMTIME time{};
            time.wYear = 2026;
            time.wMonth = 11;
            time.wDay = 22;
            time.wHour = 9;
            time.wMinute = 5;
            return time;
        });
        ASSERT_TRUE(screen.Create());
        screen.move(CPopupFrame::ScreenRect().topLeft());
        screen.show();
        QApplication::setActiveWindow(&screen);
    }

    QString Name(const char* what) const {
        return QStringLiteral("%1-%2").arg(QLatin1String(GetParam()), QLatin1String(what));
    }

    // Pictures the screen with `box` over it and checks the box's layout.
    void Picture(const char* what, QWidget* box) {
        ExpectTidy(box);
        const QString written = screenshot::Save(Name(what), &screen, {box});
        if (screenshot::Enabled()) {
            EXPECT_TRUE(QFile::exists(written)) << what;
        }
        pictured << what;
    }

    void TearDown() override {
        platform::SetPowerSupplyRoot("");
        platform::OverrideLocalTime({});
    }

    void SetBattery(int capacity, const char* status) {
        QDir battery(powerSupplies.filePath(QStringLiteral("BAT0")));
        ASSERT_TRUE(battery.mkpath(QStringLiteral(".")));
        const std::pair<const char*, QByteArray> files[] = {
            {"type", "Battery"}, {"capacity", QByteArray::number(capacity)}, {"status", status}};
        for (const auto& [name, value] : files) {
            QFile file(battery.filePath(QLatin1String(name)));
            ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
            file.write(value);
        }
    }

    QTemporaryDir powerSupplies;
    dialogtest::LanguagePack pack{GetParam()};
    SampleScreen screen;
    QStringList pictured;
};

TEST_P(GalleryTest, ScreenWithSoftKeysAndBatteryBar) {
    ExpectTidy(&screen);
    EXPECT_TRUE(screen.GetBatteryBar().isVisible());
    const QString written = screenshot::Save(Name("screen"), &screen);
    if (screenshot::Enabled()) {
        EXPECT_TRUE(QFile::exists(written));
    }
}

TEST_P(GalleryTest, BatteryBarStates) {
    const struct {
        const char* name;
        int capacity;
        const char* status;
        bool charging;
    } states[] = {{"battery-full", 96, "Discharging", false},
                  {"battery-charging", 40, "Charging", true},
                  {"battery-low", 8, "Discharging", false}};
    CBattaryBar& bar = screen.GetBatteryBar();
    for (const auto& state : states) {
        SetBattery(state.capacity, state.status);
        bar.Refresh();
        EXPECT_EQ(bar.Level(), state.capacity) << state.name;
        EXPECT_EQ(bar.IsCharging(), state.charging) << state.name;
        EXPECT_EQ(bar.ClockText(), QStringLiteral("09:05"));
        const QString written = screenshot::Save(Name(state.name), &bar);
        if (screenshot::Enabled()) {
            EXPECT_TRUE(QFile::exists(written)) << state.name;
        }
    }
}

TEST_P(GalleryTest, Submenu) {
    CSubmenuDialog menu(screen.WavelengthKey(), VK_F1, &screen);
    for (UINT slot = 0; slot < 6; ++slot)
        menu.AddKey(
            slot, QStringLiteral("%1 nm").arg(std::array{850, 1300, 1310, 1490, 1550, 1625}[slot]));
    menu.SetCurrentKey(2);
    dialogtest::WhenModalShown<CSubmenuDialog>([&](CSubmenuDialog* shown) {
        Picture("submenu", shown);
        QTest::keyClick(shown, Qt::Key_Escape);
    });
    EXPECT_EQ(menu.Show(), IDCANCEL);
    EXPECT_EQ(pictured, QStringList{"submenu"});
}

TEST_P(GalleryTest, Messages) {
    CMessage plain(L"Can't create OLT1 driver file", &screen);
    dialogtest::WhenModalShown<CMessage>([&](CMessage* box) {
        Picture("message", box);
        box->accept();
    });
    plain.DoModal();

    struct {
        const char* name;
        const wchar_t* text;
        const wchar_t* title;
        unsigned seconds;
        CMessageBoxEx::Kind kind;
    } const boxes[] = {
        {"message-box-warning", L">-50dBm!", L"Warning!", 0, CMessageBoxEx::Kind::Warning},
        {"message-box-countdown", L"Remote Device not ready", L"!", 3, CMessageBoxEx::Kind::Plain},
        {"message-box-error",
         L"Error during factory calibration data changing to def. Write Failed -- could the "
         L"server be in read-only mode?",
         L"!", 0, CMessageBoxEx::Kind::Error},
    };
    for (const auto& entry : boxes) {
        CMessageBoxEx box(entry.text, entry.title, entry.seconds, &screen);
        box.SetKind(entry.kind);
        dialogtest::WhenModalShown<CMessageBoxEx>([&](CMessageBoxEx* shown) {
            Picture(entry.name, shown);
            shown->accept();
        });
        EXPECT_EQ(box.DoModal(), IDOK);
    }
    EXPECT_EQ(pictured.size(), 4);
}

TEST_P(GalleryTest, Question) {
    CQuestionDialog question(L"DO YOU REALLY WANT TO OPEN FILE?UNSAVED DATA WILL BE LOST!",
                             &screen);
    dialogtest::WhenModalShown<CQuestionDialog>([&](CQuestionDialog* box) {
        Picture("question", box);
        QTest::keyClick(box, Qt::Key_Escape);
    });
    EXPECT_EQ(question.DoModal(), IDNO);
    EXPECT_EQ(pictured.size(), 1);
}

TEST_P(GalleryTest, Processing) {
    CProcessingDialog busy(&screen);
    busy.Create();
    Picture("processing", &busy);
    busy.Close();
    EXPECT_EQ(pictured.size(), 1);
}

TEST_P(GalleryTest, ValueEditorAndItsRangeMessage) {
    CChangeValueDialog editor(L"P, dBm", -23.456, -99.9, 99.99, 3, &screen);
    dialogtest::WhenModalShown<CChangeValueDialog>([&](CChangeValueDialog* box) {
        Picture("value-editor", box);
        // Turn -23.456 into -99.956, below the range: one digit after another.
        for (int steps : {7, 6, 5}) {
            QTest::keyClick(box, steps == 7 ? Qt::Key_Left : Qt::Key_Right);
            for (int i = 0; i < steps; ++i) QTest::keyClick(box, Qt::Key_Up);
        }
        EXPECT_EQ(box->Digits().Text(), "-99.956");
        dialogtest::WhenModalShown<CMessage>(
            [&](CMessage* message) {
                ExpectTidy(message);
                screenshot::Save(Name("value-editor-range"), &screen, {box, message});
                pictured << "value-editor-range";
                message->accept();
                QTest::keyClick(box, Qt::Key_Escape);
            },
            box);
        QTest::keyClick(box, Qt::Key_Return);
    });
    EXPECT_EQ(editor.DoModal(), IDCANCEL);
    EXPECT_EQ(pictured, (QStringList{"value-editor", "value-editor-range"}));
}

TEST_P(GalleryTest, VirtualKeyboard) {
    CVirtualKeyboard keyboard(ResourceString(34977).toStdWString(), L"temp", &screen);
    dialogtest::WhenModalShown<CVirtualKeyboard>([&](CVirtualKeyboard* box) {
        QTest::keyClick(box, Qt::Key_Up);
        QTest::keyClick(box, Qt::Key_Up);
        Picture("virtual-keyboard", box);
        QTest::keyClick(box, Qt::Key_Escape);
    });
    EXPECT_EQ(keyboard.DoModal(), IDCANCEL);
    EXPECT_EQ(pictured.size(), 1);
}

TEST_P(GalleryTest, FileBrowser) {
    QTemporaryDir data;
    ASSERT_TRUE(QDir(data.path()).mkpath(QStringLiteral("2015/march")));
    for (const char* file : {"span A.txt", "span B.txt", "2015/march/link 3.txt", "temp.txt"}) {
        QFile touched(data.filePath(QLatin1String(file)));
        ASSERT_TRUE(touched.open(QIODevice::WriteOnly));
    }
    CFileSystemBrowser browser(CFileSystemBrowser::IDD, nullptr);
    browser.SetLocationSource([&] {
        return std::vector<CFileSystemBrowser::Location>{
            {ResourceString(CFileSystemBrowser::IDS_DATA_FOLDER), data.path()},
            {ResourceString(CFileSystemBrowser::IDS_REMOVABLE_DISK).arg(QStringLiteral("KINGSTON")),
             QDir::tempPath()}};
    });
    ASSERT_TRUE(browser.Create());
    browser.move(CPopupFrame::ScreenRect().topLeft());
    browser.show();
    const QString span = data.filePath(QStringLiteral("2015/march/link 3.txt"));
    browser.SelectPath(span);
    QTRY_COMPARE_WITH_TIMEOUT(browser.CurrentPath(), span, 10000);
    ExpectTidy(&browser);
    const QString written = screenshot::Save(Name("file-browser"), &browser);
    if (screenshot::Enabled()) {
        EXPECT_TRUE(QFile::exists(written));
    }

    dialogtest::WhenModalShown<CSubmenuDialog>([&](CSubmenuDialog* menu) {
        ExpectTidy(menu);
        screenshot::Save(Name("file-browser-storage"), &browser, {menu});
        QTest::keyClick(menu, Qt::Key_Escape);
    });
    QTest::keyClick(browser.Tree(), Qt::Key_F1);
    EXPECT_EQ(browser.CurrentLocation(), 0u);
}

TEST_P(GalleryTest, FatalErrorBox) {
    dialogtest::WhenModalShown<QMessageBox>([&](QMessageBox* box) {
        Picture("fatal-error", box);
        box->accept();
    });
    CFatalErrorBox::Show(
        L"batteryBarPlaceholder && \"Did you forget to add "
        L"IDC_BATTERY_BAR_PLACEHOLDER to dialog in editor ?\"\nFile: "
        L"BaseDialog\nLine: 104\nApplication will be closed");
    EXPECT_EQ(pictured.size(), 1);
}

INSTANTIATE_TEST_SUITE_P(Languages, GalleryTest, testing::Values("english", "german"),
                         [](const testing::TestParamInfo<const char*>& info) {
                             return std::string(info.param);
                         });

}  // namespace

// The instrument's screen: 640x480, no window frames. The offscreen platform
// is given that screen unless the caller chose another platform.
int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    QTemporaryFile config(QDir::tempPath() + QStringLiteral("/opm-gallery-XXXXXX.json"));
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    if ((platform.isEmpty() || platform == "offscreen") && config.open()) {
        config.write(R"({"windowFrameMargins": false, "screens": [{"name": "instrument",
            "x": 0, "y": 0, "width": 640, "height": 480, "logicalDpi": 96, "dpr": 1}]})");
        config.flush();
        qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + config.fileName().toLocal8Bit());
    }
    QApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
