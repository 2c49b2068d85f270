// Opens the toolkit's screens and boxes in both language packs on the
// instrument's 640x480 screen, checks that nothing leaves the screen or its
// window and that no text is cut off, and with OPM_SCREENSHOTS=dir writes a
// picture of each for review.

#include <QAbstractButton>
#include <QDir>
#include <QLabel>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QTreeView>

#include "Common/Toolkit/BaseDialog.h"
#include "Common/Toolkit/ChangeValueDialog.h"
#include "Common/Toolkit/ColorStatic.h"
#include "Common/Toolkit/FatalErrorBox.h"
#include "Common/Toolkit/FileSystemBrowser.h"
#include "Common/Toolkit/FontCreator.h"
#include "Common/Toolkit/MenuKey.h"
#include "Common/Toolkit/Message.h"
#include "Common/Toolkit/MessageBoxEx.h"
#include "Common/Toolkit/PopupFrame.h"
#include "Common/Toolkit/ProcessingDialog.h"
#include "Common/Toolkit/QuestionDialog.h"
#include "Common/Toolkit/ScrollMarks.h"
#include "Common/Toolkit/SubmenuDialog.h"
#include "Common/Toolkit/VirtualKeyboard.h"
#include "Common/Toolkit/VirtualKeys.h"
#include "Common/ToolkitTestSupport.h"
#include "Common/Utilities/LanguageResources.h"
#include "Platform/LocalTime.h"
#include "Platform/PowerStatus.h"
#include "support/Screenshot.h"

namespace {

// The measuring screen with sample values at the fonts it uses: the soft-key
// row, the battery bar and the large colour readings a user sees most.
class SampleScreen : public CBaseDialog {
public:
    SampleScreen() : CBaseDialog(394) {}
    std::vector<CMenuKey*> keys;

protected:
    std::vector<CMenuKey*> GetMenuKeys() override {
        for (UINT id : {544u, 545u, 525u, 510u}) keys.push_back(CreateMenuKey(id, id));
        return keys;
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
        const std::tuple<int, const QFont*, QString> fields[] = {
            {1004, &medium, "1310 nm"},        {1020, &large, "-23.456 dBm"},
            {1023, &large, "4.517 uW"},        {1038, &small, ResourceString(51)},
            {1008, &medium, "  -3.00 dBm"},    {1036, &small, ResourceString(50)},
            {1022, &large, "-20.46 dB"},       {1113, &large, "1550 " + ResourceString(61340)}};
        for (const auto& [id, font, text] : fields) {
            GetDlgItem(id)->setFont(*font);
            SetDlgItemText(id, text);
            GetDlgItem(id)->show();
        }
        GetDlgItem(1112)->hide();
        return result;
    }

private:
    QFont large, medium, small;
    CColorStatic absolute, linear;
};

// What a person would call untidy: a window off the screen, a control outside
// its window, a text cut off by its control.
void ExpectTidy(QWidget* window) {
    SCOPED_TRACE(window->metaObject()->className());
    EXPECT_TRUE(CPopupFrame::ScreenRect().contains(window->frameGeometry()));
    for (QWidget* control : window->findChildren<QWidget*>()) {
        if (!control->isVisibleTo(window) || control->isWindow()) continue;
        const std::string name = control->objectName().toStdString();
        EXPECT_TRUE(window->rect().contains(QRect(control->mapTo(window, QPoint()), control->size())))
            << name << " lies outside its window";
        auto* button = qobject_cast<QAbstractButton*>(control);
        auto* label = qobject_cast<QLabel*>(control);
        if (button != nullptr && !button->text().isEmpty()) {  // its size hint holds the label
            EXPECT_LE(button->sizeHint().width(), button->width()) << name;
        }
        if (label == nullptr || label->wordWrap() || label->text().contains('<')) continue;
        const QFontMetrics metrics(label->font());
        for (const QString& line : label->text().split('\n'))
            EXPECT_LE(metrics.horizontalAdvance(line), label->contentsRect().width()) << name;
        EXPECT_LE(metrics.height() * (label->text().count('\n') + 1), label->contentsRect().height()) << name;
    }
}

bool Shows(QWidget* control, QColor colour) {
    const QImage picture = control->grab().toImage();
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            if (picture.pixelColor(x, y) == colour) return true;
    return false;
}

class GalleryTest : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override {
        ASSERT_TRUE(pack.Loaded());
        // Pictures that differ only where something changed: a fixed clock,
        // and mains power until a test gives the instrument a battery.
        platform::SetPowerSupplyRoot(powerSupplies.path().toStdString());
        platform::OverrideLocalTime([] { return SYSTEMTIME{2026, 11, 0, 22, 9, 5, 0, 0}; });
        ASSERT_TRUE(screen.Create());
        screen.move(CPopupFrame::ScreenRect().topLeft());
        screen.show();
        QApplication::setActiveWindow(&screen);
    }
    void TearDown() override {
        platform::SetPowerSupplyRoot("");
        platform::OverrideLocalTime({});
    }
    QString Name(const char* what) const { return QStringLiteral("%1-%2").arg(GetParam(), what); }
    // Checks and pictures the box `what` over the screen once it shows, then closes it.
    template <typename T>
    void Picture(const char* what, std::function<void(T*)> close, QWidget* outer = nullptr) {
        toolkittest::WhenShown<T>(what, [=, this](T* box) {
            ExpectTidy(box);
            screenshot::Save(Name(what), &screen, {outer, box});
            close(box);
        }, outer);
    }

    QTemporaryDir powerSupplies;
    ScopedLanguagePack pack{GetParam()};
    SampleScreen screen;
};

TEST_P(GalleryTest, MeasuringScreenAndTheBatteryStates) {
    screen.keys[1]->setDown(true);  // as under a finger, and without a meter
    screen.keys[3]->setEnabled(false);
    ExpectTidy(&screen);
    // Colour references are blue-green-red: the absolute reading is red.
    EXPECT_TRUE(Shows(screen.GetDlgItem(1020), Qt::red));
    EXPECT_TRUE(Shows(screen.GetDlgItem(1023), Qt::blue));
    screenshot::Save(Name("screen"), &screen);

    CBattaryBar& bar = screen.GetBatteryBar();
    EXPECT_TRUE(bar.OnMainsWithoutBattery());
    EXPECT_EQ(bar.Level(), -1);
    QImage before = bar.grab().toImage();
    const std::tuple<const char*, int, QByteArray> states[] = {
        {"battery-full", 96, "Discharging"}, {"battery-charging", 96, "Charging"},
        {"battery-low", 8, "Discharging"}};
    for (const auto& [name, capacity, status] : states) {
        QDir battery(powerSupplies.filePath("BAT0"));
        battery.mkpath(".");
        for (const auto& [file, value] : {std::pair<const char*, QByteArray>{"type", "Battery"},
                                          {"capacity", QByteArray::number(capacity)}, {"status", status}}) {
            QFile out(battery.filePath(file));
            ASSERT_TRUE(out.open(QIODevice::WriteOnly | QIODevice::Truncate));
            out.write(value);
        }
        bar.Refresh();
        EXPECT_EQ(bar.Level(), capacity) << name;
        EXPECT_EQ(bar.IsCharging(), status == "Charging") << name;
        EXPECT_EQ(bar.ClockText(), "09:05");
        EXPECT_NE(bar.grab().toImage(), before) << name;  // each state looks different
        before = bar.grab().toImage();
        screenshot::Save(Name(name), &bar);
    }
}

TEST_P(GalleryTest, SubmenusShortAndScrolled) {
    CSubmenuDialog references(screen.keys[2], VK_F3, &screen);
    for (UINT id : {61332u, 61331u, 61333u, 61334u}) references.AddKey(id, ResourceString(id));
    Picture<CSubmenuDialog>("submenu", [](CSubmenuDialog* menu) { QTest::keyClick(menu, Qt::Key_Escape); });
    EXPECT_EQ(references.Show(), IDCANCEL);

    CSubmenuDialog wavelengths(screen.keys[0], VK_F1, &screen);
    for (int i = 0; i < 14; ++i) wavelengths.AddKey(UINT(i), QStringLiteral("%1 nm").arg(1250 + 25 * i));
    wavelengths.SetCurrentKey(12);
    Picture<CSubmenuDialog>("submenu-long", [](CSubmenuDialog* menu) {
        EXPECT_TRUE(menu->ScrollMarks()->MoreAbove() && menu->ScrollMarks()->MoreBelow());
        QTest::keyClick(menu, Qt::Key_Escape);
    });
    EXPECT_EQ(wavelengths.Show(), IDCANCEL);
}

TEST_P(GalleryTest, Boxes) {
    const auto accept = [](QDialog* box) { box->accept(); };
    Picture<CMessage>("message", accept);
    CMessage(L"Can't create OLT1 driver file", &screen).DoModal();
    const std::tuple<const char*, const wchar_t*, const wchar_t*, unsigned, CMessageBoxEx::Kind> boxes[] = {
        {"message-box-warning", L">-50dBm!", L"Warning!", 0, CMessageBoxEx::Kind::Warning},
        {"message-box-countdown", L"Remote Device not ready", L"!", 3, CMessageBoxEx::Kind::Plain},
        {"message-box-error",
         L"Error during factory calibration data changing to def. Write Failed -- could the server "
         L"be in read-only mode?", L"!", 0, CMessageBoxEx::Kind::Error}};
    for (const auto& [name, text, title, seconds, kind] : boxes) {
        CMessageBoxEx box(text, title, seconds, &screen);
        box.SetKind(kind);
        Picture<CMessageBoxEx>(name, accept);
        EXPECT_EQ(box.DoModal(), IDOK);
    }
    Picture<CQuestionDialog>("question", accept);
    CQuestionDialog(L"DO YOU REALLY WANT TO OPEN FILE?UNSAVED DATA WILL BE LOST!", &screen).DoModal();
    CProcessingDialog busy(&screen);
    busy.Create();
    ExpectTidy(&busy);
    screenshot::Save(Name("processing"), &screen, {&busy});
    busy.Close();
    Picture<QMessageBox>("fatal-error", accept);
    CFatalErrorBox::Show(L"batteryBarPlaceholder && \"Did you forget to add IDC_BATTERY_BAR_PLACEHOLDER "
                         L"to dialog in editor ?\"\nFile: BaseDialog\nLine: 104\nApplication will be closed");
}

TEST_P(GalleryTest, EditorsAndTheirMessages) {
    CChangeValueDialog editor(L"P, dBm", -23.456, -99.9, 99.99, 3, &screen);
    toolkittest::WhenShown<CChangeValueDialog>("the value editor", [&](CChangeValueDialog* box) {
        ExpectTidy(box);
        screenshot::Save(Name("value-editor"), &screen, {box});
        // -23.456 to -99.956, below the range, one digit after another.
        for (const QString& key : QString("Left Down Down Down Right Down Down Down Down Right Down "
                                          "Down Down Down Down").split(' '))
            QTest::keyClick(box, QKeySequence(key)[0].key());
        EXPECT_EQ(box->Digits().Text(), "-99.956");
        Picture<CMessage>("value-editor-range", [box](CMessage* message) {
            message->accept();
            QTest::keyClick(box, Qt::Key_Escape);
        }, box);
        QTest::keyClick(box, Qt::Key_Return);
    });
    EXPECT_EQ(editor.DoModal(), IDCANCEL);
    CVirtualKeyboard keyboard(ResourceString(34977).toStdWString(), L"temp", &screen);
    Picture<CVirtualKeyboard>("virtual-keyboard", [](CVirtualKeyboard* box) {
        QTest::keyClick(box, Qt::Key_Up);
        QTest::keyClick(box, Qt::Key_Escape);
    });
    EXPECT_EQ(keyboard.DoModal(), IDCANCEL);
}

TEST_P(GalleryTest, FileBrowser) {
    QTemporaryDir data;
    QDir(data.path()).mkpath("2015/march");
    for (const char* file : {"span A.txt", "span B.txt", "2015/march/link 3.txt", "temp.txt"})
        ASSERT_TRUE(QFile(data.filePath(file)).open(QIODevice::WriteOnly));
    CFileSystemBrowser browser;
    browser.SetLocationSource([&] {
        return std::vector<CFileSystemBrowser::Location>{
            {ResourceString(CFileSystemBrowser::IDS_DATA_FOLDER), data.path()},
            {ResourceString(CFileSystemBrowser::IDS_REMOVABLE_DISK).arg("KINGSTON"), QDir::tempPath()}};
    });
    ASSERT_TRUE(browser.Create());
    browser.move(CPopupFrame::ScreenRect().topLeft());
    browser.show();
    browser.SelectPath(data.filePath("2015/march/link 3.txt"));
    EXPECT_TRUE(toolkittest::WaitUntil([&] { return browser.CurrentPath().endsWith("link 3.txt"); }));
    ExpectTidy(&browser);
    screenshot::Save(Name("file-browser"), &browser);
    toolkittest::WhenShown<CSubmenuDialog>("the storage menu", [&](CSubmenuDialog* menu) {
        ExpectTidy(menu);
        screenshot::Save(Name("file-browser-storage"), &browser, {menu});
        QTest::keyClick(menu, Qt::Key_Escape);
    });
    QTest::keyClick(browser.Tree(), Qt::Key_F1);
}

INSTANTIATE_TEST_SUITE_P(Languages, GalleryTest, testing::Values("english", "german"),
                         [](const auto& info) { return std::string(info.param); });

}  // namespace
