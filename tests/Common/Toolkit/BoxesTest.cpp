#include <QKeySequence>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTreeView>
#include <memory>

#include "Common/Toolkit/ChangeValueDialog.h"
#include "Common/Toolkit/DigitEdit.h"
#include "Common/Toolkit/FileSystemBrowser.h"
#include "Common/Toolkit/Message.h"
#include "Common/Toolkit/MessageBoxEx.h"
#include "Common/Toolkit/MessageNotifier.h"
#include "Common/Toolkit/ProcessingDialog.h"
#include "Common/Toolkit/QuestionDialog.h"
#include "Common/Toolkit/ValueDigits.h"
#include "Common/Toolkit/VirtualKeyboard.h"
#include "Common/ToolkitTestSupport.h"
#include "Common/Utilities/LanguageResources.h"
#include "Platform/ModulePath.h"

namespace {

constexpr int kText = 1192;  // the text of every message box

QString TextOf(QWidget* box, int id = kText) {
    auto* label = qobject_cast<QLabel*>(GetDlgItem(box, id));
    return label != nullptr ? label->text() : QString();
}

QString TitleOf(QWidget* browser) {
    return TextOf(browser, CFileSystemBrowser::IDC_TITLE);
}

// The countdown's clock, driven by the test.
class SteppedMessageBox : public CMessageBoxEx {
public:
    using CMessageBoxEx::CMessageBoxEx;
    void Tick(UINT id = kCountdownTimerId) { OnTimer(id); }
    QString Timers() const { return QStringLiteral("started %1 killed %2").arg(started, killed); }
    QString started = "-", killed = "-";

protected:
    UINT SetTimer(UINT id, UINT periodMs) override {
        started = QStringLiteral("%1/%2").arg(id).arg(periodMs);
        return id;
    }
    void KillTimer(UINT id) override { killed = QString::number(id); }
};

class RecordingBrowser : public CFileSystemBrowser {
public:
    QStringList events;

protected:
    void OnSendFiles(const std::vector<QString>& files) override {
        for (const QString& file : files) events << "sent " + QFileInfo(file).fileName();
    }
    void OnFileActivated(const QString& path) override {
        events << "opened " + QFileInfo(path).fileName();
    }
};

// A box as the script drives it: what it ends with, what "?" notes while it
// runs, and the steps only it knows.
struct Box {
    std::shared_ptr<QDialog> dialog;
    std::function<int()> run;
    std::function<QString()> observe;
    std::function<QString()> result = [] { return QString(); };
    std::function<void(const QString&)> special = [](const QString&) {};
};

template <typename T>
Box Make(std::shared_ptr<T> dialog, std::function<QString()> observe,
         std::function<QString()> result = {}) {
    Box box{dialog, [dialog] { return dialog->DoModal(); }, observe};
    if (result) box.result = result;
    return box;
}

Box Message(CMessage* message) {
    std::shared_ptr<CMessage> box(message);
    return Make(box, [] { return QString(); }, [box] { return TextOf(box.get()); });
}

Box Countdown(unsigned seconds, bool showOk = true) {
    auto box = std::make_shared<SteppedMessageBox>(L"Saved", L"!", seconds, nullptr, showOk);
    Box driven = Make(
        box,
        [box] {
            const bool shown = GetDlgItem(box.get(), IDOK)->isVisibleTo(box.get());
            return box->OkLabel() + (shown ? "" : "(hidden)");
        },
        [box] { return box->Timers(); });
    driven.special = [box](const QString& step) { box->Tick(step == "tick" ? 777 : 304); };
    return driven;
}

Box Question() {
    auto box = std::make_shared<CQuestionDialog>(L"REALLY OPEN? UNSAVED DATA WILL BE LOST!", nullptr);
    return Make(box, [box] { return QString::number(GetDlgItem(box.get(), IDCANCEL)->property("marked").toBool()); });
}

Box ValueEditor(const wchar_t* title, double value, double minValue, double maxValue, int decimals) {
    auto box = std::make_shared<CChangeValueDialog>(title, value, minValue, maxValue, decimals, nullptr);
    Box driven = Make(
        box, [box] { return QString::fromStdString(box->Digits().Text()); },
        [box] { return QString::number(box->GetValue()); });
    driven.special = [box](const QString& step) {  // "cell4": a tap on the fifth cell
        auto* edit = qobject_cast<CDigitEdit*>(GetDlgItem(box.get(), CChangeValueDialog::IDC_VALUE));
        QTest::mouseClick(edit, Qt::LeftButton, {}, edit->CellRect(step.mid(4).toInt()).center());
    };
    return driven;
}

Box Keyboard(const wchar_t* text, bool checked = false) {
    auto box = std::make_shared<CVirtualKeyboard>(L"File name", text, nullptr);
    if (checked)
        box->SetNameCheck([](const std::wstring& name, std::wstring& complaint) {
            if (name == L"meas") complaint = L"The name meas is reserved.";
            return name != L"meas";
        });
    Box driven = Make(
        box, [box] { return QString::number(box->MarkedKey()); },
        [box] { return QString::fromStdWString(box->GetText()); });
    driven.special = [box](const QString& step) {  // "@x": a tap on the key captioned x
        for (auto* key : box->findChildren<QPushButton*>())
            if (key->text() == step.mid(1)) return QTest::mouseClick(key, Qt::LeftButton);
        ADD_FAILURE() << "no key " << step.toStdString();
    };
    return driven;
}

Box Browser() {
    auto folders = std::make_shared<std::pair<QTemporaryDir, QTemporaryDir>>();
    const QDir flash(folders->first.path());
    flash.mkpath("2015/march");
    for (const QString& file : {flash.filePath("a.txt"), flash.filePath("b.txt"),
                                flash.filePath("2015/march/span.txt"),
                                folders->second.filePath("copy.txt")})
        EXPECT_TRUE(QFile(file).open(QIODevice::WriteOnly)) << file.toStdString();
    auto box = std::make_shared<RecordingBrowser>();
    box->SetLocationSource([folders] {
        return std::vector<CFileSystemBrowser::Location>{{"Flash", folders->first.path()},
                                                         {"USB", folders->second.path()}};
    });
    Box driven = Make(
        box,
        [box] {  // "<location in the title>:<current item>", "+" when open
            const QModelIndex current = box->Tree()->currentIndex();
            const QString title = TitleOf(box.get());
            return title.mid(title.lastIndexOf(' ') + 1) + ':' + current.data().toString() +
                   (box->Tree()->isExpanded(current) ? "+" : "");
        },
        [box] { return box->events.join(' '); });
    driven.special = [box, folders](const QString& step) {  // "/path": make it current
        const QString path = QDir(box->Locations()[box->CurrentLocation()].path).filePath(step.mid(1));
        box->SelectPath(path);
        EXPECT_TRUE(toolkittest::WaitUntil([&] { return box->CurrentPath() == path; })) << path.toStdString();
    };
    return driven;
}

QString Tap(int id) {
    return QStringLiteral("#%1").arg(id);
}

// Steps: a key by name, "#id" a tap on a control, "'text" typed text, "?" a
// note of what the box shows, "!keys" a box that the next step opens over
// this one (its text noted, the comma-separated keys sent to it), anything
// else the box's own.
struct Script {
    const char* name;
    std::function<Box()> make;
    QStringList steps;
    int code;
    QString trace;
};

void Play(QDialog* box, const Box& driven, const QStringList& steps, QStringList& trace) {
    for (const QString& step : steps) {
        QWidget* focus = box->focusWidget() != nullptr ? box->focusWidget() : box;
        if (step == "?") {
            trace << driven.observe();
        } else if (step.startsWith('#')) {
            QTest::mouseClick(GetDlgItem(box, step.mid(1).toInt()), Qt::LeftButton);
        } else if (step.startsWith('\'')) {
            QTest::keyClicks(focus, step.mid(1));
        } else if (step.startsWith('!')) {
            const QStringList keys = step.mid(1).split(',', Qt::SkipEmptyParts);
            toolkittest::WhenShown<QDialog>("a box over the box", [&trace, keys](QDialog* over) {
                if (!TextOf(over).isEmpty()) trace << TextOf(over);
                for (const QString& key : keys) QTest::keyClick(over, QKeySequence(key)[0].key());
            }, box);
        } else if (step[0].isLower() || step[0] == '@' || step[0] == '/') {
            driven.special(step);
        } else {
            QTest::keyClick(focus, QKeySequence(step)[0].key());
        }
    }
}

class DialogScript : public testing::TestWithParam<Script> {};

TEST_P(DialogScript, EndsWithItsResult) {
    ScopedLanguagePack pack;
    const Box driven = GetParam().make();
    QStringList trace;
    toolkittest::WhenShown<QDialog>(GetParam().name, [&](QDialog* box) {
        Play(box, driven, GetParam().steps, trace);
    });
    EXPECT_EQ(driven.run(), GetParam().code);
    if (!driven.result().isEmpty()) trace << driven.result();
    EXPECT_EQ(trace.join(' '), GetParam().trace);
}

const Script kScripts[] = {
    {"MessageOk", [] { return Message(new CMessage(L"Can't create OLT1 driver file", nullptr)); },
     {"Return"}, IDOK, "Can't create OLT1 driver file"},
    {"MessageTap", [] { return Message(new CMessage(L"x", nullptr)); }, {Tap(IDOK)}, IDOK, "x"},
    {"MessageEscape", [] { return Message(new CMessage(L"x", nullptr)); }, {"Esc"}, IDCANCEL, "x"},
    {"MessageFromThePack", [] { return Message(new CMessage(53u, nullptr)); }, {"Return"}, IDOK,
     "No power meter"},
    {"CountdownEndsWithOk", [] { return Countdown(3); }, {"?", "tick", "?", "tick", "?", "tick", "?"},
     IDOK, "OK(3) OK(2) OK(1) OK started 777/1000 killed 777"},
    {"NoSecondsNoCountdown", [] { return Countdown(0); }, {"?", "tick", "?", "Return"}, IDOK,
     "OK OK started - killed -"},
    {"OtherTimersLeaveTheCount", [] { return Countdown(2); }, {"tick304", "?", "Esc"}, IDCANCEL,
     "OK(2) started 777/1000 killed 777"},
    {"AKeyStopsTheCount", [] { return Countdown(5); }, {"tick", "?", "Down", "?", "tick", "?", "Return"},
     IDOK, "OK(4) OK OK started 777/1000 killed 777"},
    {"ATapStopsTheCount", [] { return Countdown(5); }, {Tap(kText), "?", "tick", "?", "Left", "Return"},
     IDOK, "OK OK started 777/1000 killed 777"},
    {"HiddenOk", [] { return Countdown(2, false); }, {"?", "Esc"}, IDCANCEL,
     "OK(2)(hidden) started 777/1000 killed 777"},
    {"QuestionStartsOnNo", [] { return Question(); }, {"?", "Return"}, IDNO, "1"},
    {"QuestionLeftIsYes", [] { return Question(); }, {"Left", "?", "Return"}, IDYES, "0"},
    {"QuestionSpace", [] { return Question(); }, {"Left", "Space"}, IDYES, ""},
    {"QuestionBackToNo", [] { return Question(); }, {"Left", "Right", "Enter"}, IDNO, ""},
    {"QuestionEscape", [] { return Question(); }, {"Left", "Esc"}, IDNO, ""},
    {"QuestionTapYes", [] { return Question(); }, {Tap(IDOK)}, IDYES, ""},
    {"QuestionTapNo", [] { return Question(); }, {Tap(IDCANCEL)}, IDNO, ""},
    {"EditorArrows", [] { return ValueEditor(L"Ref = ", -3.25, -99, 99, 2); },
     {"?", "Up", "Up", "Left", "Up", "Right", "Right", "Down", "Left", "Left", "Left", "Up", "?",
      "Return"},
     IDOK, "-03.25 +15.15 15.15"},
    {"EditorTyped", [] { return ValueEditor(L"P, dBm", -10, -99.9, 99.99, 3); },
     {"Left", "Left", "-", "2", "3", "4", "5", "6", "Enter"}, IDOK, "-23.456"},
    {"EditorRefusesOutOfRange", [] { return ValueEditor(L"P, dBm", 99.99, -99.9, 99.99, 3); },
     {"Right", "Right", "Right", "Up", "!Return", "Return", "?", "Down", "Return"}, IDOK,
     "P, dBm\n-99.900...99.990. +99.991 99.99"},
    {"EditorEscape", [] { return ValueEditor(L"Ref = ", -3.25, -99, 99, 2); }, {"Up", "Esc"},
     IDCANCEL, "-3.25"},
    {"EditorCancelKey", [] { return ValueEditor(L"Ref = ", -3.25, -99, 99, 2); },
     {"Up", Tap(IDCANCEL)}, IDCANCEL, "-3.25"},
    {"EditorTouch", [] { return ValueEditor(L"Ref = ", 1, -99, 99, 2); },
     {"cell4", Tap(CChangeValueDialog::IDC_DIGIT_UP), Tap(CChangeValueDialog::IDC_CURSOR_LEFT),
      Tap(CChangeValueDialog::IDC_DIGIT_DOWN), "?", Tap(IDOK)},
     IDOK, "+00.10 0.1"},
    {"KeyboardTyped", [] { return Keyboard(L"temp"); },
     {"Backspace", "'ting span A", "?", "Return"}, IDOK, "1 temting span A"},
    // From OK (bottom left): up to Shift, 'z', 'a', 'q'; 'w'; '2'; down to OK.
    {"KeyboardArrows", [] { return Keyboard(L""); },
     {"Up", "Up", "Up", "Up", "Return", "Right", "Return", "Up", "Return", "Down", "Down", "Down",
      "Down", "Down", "Down", "?", "Return"},
     IDOK, "1 qw2"},
    {"KeyboardTouch", [] { return Keyboard(L""); },
     {Tap(CVirtualKeyboard::IDC_SHIFT), "@A", Tap(CVirtualKeyboard::IDC_SHIFT), "@b",
      Tap(CVirtualKeyboard::IDC_SPACE), "@1", Tap(CVirtualKeyboard::IDC_CURSOR_LEFT),
      Tap(CVirtualKeyboard::IDC_BACKSPACE), Tap(IDOK)},
     IDOK, "Ab1"},
    {"KeyboardEscape", [] { return Keyboard(L"temp"); }, {"'xyz", "Esc"}, IDCANCEL, "temp"},
    {"KeyboardNameCheck", [] { return Keyboard(L"meas", true); },
     {"!Return", "Return", "'1", "Return"}, IDOK, "The name meas is reserved. meas1"},
    {"BrowserEscape", Browser, {"/a.txt", "?", "Esc"}, IDCANCEL, "Flash:a.txt"},
    {"BrowserCloseKey", Browser, {"F4"}, IDCANCEL, ""},
    {"BrowserSendsMarkedOrCurrent", Browser,
     {"/a.txt", "Space", "/b.txt", "Space", "F2", "Space", "/a.txt", "Space", "/b.txt", "F2", "Esc"},
     IDCANCEL, "sent a.txt sent b.txt sent b.txt"},
    {"BrowserNoFiles", Browser, {"/2015", "!Return", "F2", "Esc"}, IDCANCEL, "No files"},
    {"BrowserEnter", Browser,
     {"/2015", "Return", "?", "Return", "?", "/2015/march/span.txt", "?", "Return", "Esc"},
     IDCANCEL, "Flash:2015+ Flash:2015 Flash:span.txt opened span.txt"},
    {"BrowserStorage", Browser, {"!Down,Return", "F1", "/copy.txt", "?", "Esc"}, IDCANCEL,
     "USB:copy.txt"},
};

INSTANTIATE_TEST_SUITE_P(Boxes, DialogScript, testing::ValuesIn(kScripts),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(DialogScript, TheBrowsersDataFolderComesFirst) {
    ScopedLanguagePack pack;
    QTemporaryDir image;
    platform::OverrideModuleFileName(image.filePath("PowerMeter").toStdWString());
    const auto locations = CFileSystemBrowser::DefaultLocations();
    platform::OverrideModuleFileName(L"");
    ASSERT_FALSE(locations.empty());
    EXPECT_EQ(locations.front().label, "Flash");
    EXPECT_EQ(locations.front().path, image.filePath("data"));
    EXPECT_TRUE(QDir(locations.front().path).exists());
}

TEST(Boxes, ACountdownBoxGivesTheFocusBackWhenItCloses) {
    ScopedLanguagePack pack;
    QWidget screen;
    auto* field = new QLineEdit(&screen);
    auto* other = new QLineEdit(&screen);
    screen.show();
    QApplication::setActiveWindow(&screen);
    field->setFocus();
    SteppedMessageBox box(L"Done", L"!", 1, &screen);
    toolkittest::WhenShown<CMessageBoxEx>("the countdown box", [&](CMessageBoxEx*) {
        other->setFocus();  // moved while the box is up
        box.Tick();
    });
    EXPECT_EQ(box.DoModal(), IDOK);
    EXPECT_EQ(screen.focusWidget(), field);
}

TEST(Boxes, TheUserNotifierShowsAMessageOverTheActiveWindow) {
    ScopedLanguagePack pack;
    QWidget screen;
    screen.show();
    QApplication::setActiveWindow(&screen);
    QString shown;
    toolkittest::WhenShown<CMessage>("the notifier's message", [&](CMessage* box) {
        shown = TextOf(box) + (box->parentWidget() == &screen ? " over the screen" : "");
        QTest::keyClick(box, Qt::Key_Escape);
    });
    CMessageNotifier notifier;
    static_cast<IUserNotifier&>(notifier).ShowMessage(L"No connection with the OTDR!");
    EXPECT_EQ(shown, "No connection with the OTDR! over the screen");
}

TEST(Boxes, TheProcessingBoxShowsAtOnceTurnsAndCloses) {
    ScopedLanguagePack pack;
    QWidget screen;
    screen.setGeometry(100, 50, 640, 480);
    screen.show();
    CProcessingDialog busy(&screen);
    for (int round = 0; round < 2; ++round) {  // built once, shown again
        busy.Create();
        EXPECT_TRUE(busy.isVisible() && !busy.isModal());
        EXPECT_EQ(busy.frameGeometry().center(), screen.frameGeometry().center());
        EXPECT_EQ(TextOf(&busy), "Please wait...");
        const int phase = busy.Phase();
        EXPECT_TRUE(toolkittest::WaitUntil([&] { return busy.Phase() != phase; }));
        busy.Close();
        EXPECT_FALSE(busy.isVisible());
    }
    EXPECT_EQ(busy.findChildren<QLabel*>().size(), 2);
    CProcessingDialog zeroing(nullptr, L"Zeroing...");
    zeroing.Create();
    EXPECT_EQ(TextOf(&zeroing), "Zeroing...");
}

struct DigitsCase {
    double value, minValue, maxValue;
    int decimals;
    const char* text;
    int cursor;  // starts on the units digit
};

TEST(ValueDigits, ShowAFixedWidthNumberWithTheCursorOnTheUnits) {
    const DigitsCase cases[] = {
        {-12.34, -99.0, 99.0, 2, "-12.34", 2},  {5.0, -99.0, 99.0, 2, "+05.00", 2},
        {-23.4567, -99.9, 99.99, 3, "-23.457", 2}, {7.5, 0.0, 250.0, 1, "007.5", 2},  // unsigned
        {42.0, 1.0, 9999.0, 0, "0042", 3},      {-123.0, -99.0, 99.0, 1, "-123.0", 3},
        {std::nan(""), -99.0, 99.0, 2, "+00.00", 2}};
    for (const DigitsCase& c : cases) {
        const CValueDigits digits(c.value, c.minValue, c.maxValue, c.decimals);
        EXPECT_EQ(digits.Text(), c.text);
        EXPECT_EQ(digits.Cursor(), c.cursor) << c.text;
    }
    for (const auto& [value, inRange] : {std::pair{-99.9, true}, {99.99, true}, {0.0, true},
                                         {-99.901, false}, {99.991, false}})
        EXPECT_EQ(CValueDigits(value, -99.9, 99.99, 3).InRange(), inRange) << value;
}

TEST(ValueDigits, StepsTurnOneDigitRoundAndTheSignFlips) {
    CValueDigits digits(19.0, -99.0, 99.0, 1);  // "+19.0"
    digits.StepUp();
    EXPECT_EQ(digits.Text(), "+10.0");
    digits.StepDown();
    digits.MoveLeft();
    digits.StepDown();
    digits.StepDown();
    EXPECT_EQ(digits.Text(), "+99.0");
    digits.MoveLeft();
    digits.StepUp();
    EXPECT_EQ(digits.Text(), "-99.0");
    EXPECT_FALSE(digits.MoveTo(3));  // the point
    for (int i = 0; i < 9; ++i) digits.MoveRight();
    EXPECT_EQ(digits.Cursor(), 4);  // stops at the end
    CValueDigits unsignedDigits(7.5, 0.0, 250.0, 1);
    EXPECT_FALSE(unsignedDigits.Type('-'));
    EXPECT_TRUE(unsignedDigits.MoveTo(0));
    unsignedDigits.StepDown();
    EXPECT_EQ(unsignedDigits.Text(), "907.5");
}

// Wrapping and centring against the application's window, parent given or not,
// on a monitor larger than that window, and against a window at the screen's
// edge.
TEST(BoxPlacement, BoxesWrapAndCentreWithinTheApplicationsWindow) {
    ScopedLanguagePack pack;
    QWidget window;
    window.setGeometry(100, 50, 640, 480);
    window.show();
    QApplication::setActiveWindow(&window);
    const std::wstring text =
        L"Error during factory calibration data changing to def: the calibration file could not "
        L"be written because the flash memory is full or write protected";
    for (QWidget* parent : {&window, static_cast<QWidget*>(nullptr)}) {
        const std::unique_ptr<QDialog> boxes[] = {
            std::make_unique<CMessage>(text, parent),
            std::make_unique<CMessageBoxEx>(text, L"!", 0, parent),
            std::make_unique<CQuestionDialog>(text, parent)};
        for (const auto& box : boxes) {
            SCOPED_TRACE(box->metaObject()->className());
            box->show();
            EXPECT_TRUE(window.frameGeometry().contains(box->frameGeometry()));
            EXPECT_NEAR(box->frameGeometry().center().x(), window.frameGeometry().center().x(), 1);
            auto* label = qobject_cast<QLabel*>(GetDlgItem(box.get(), kText));
            EXPECT_GT(label->text().count('\n'), 0);
            for (const QString& line : label->text().split('\n'))
                EXPECT_LE(QFontMetrics(label->font()).horizontalAdvance(line), 640 * 2 / 3);
            box->close();
        }
    }
}

TEST(BoxPlacement, TheMessageBoxesOwnLayout) {
    ScopedLanguagePack pack;
    QWidget window;
    window.setGeometry(0, 0, 640, 480);
    auto* corner = new QWidget(&window, Qt::Window);
    corner->setGeometry(520, 390, 120, 90);
    window.show();
    corner->show();
    for (QWidget* parent : {&window, corner}) {
        SteppedMessageBox box(L"Error ocurred during manual calibrating", L"!", 0, parent);
        box.show();
        // Over its parent; centred in the window when that would leave it.
        EXPECT_EQ(box.frameGeometry().center(), window.frameGeometry().center());
        auto* text = qobject_cast<QLabel*>(GetDlgItem(&box, kText));
        QWidget* ok = GetDlgItem(&box, IDOK);
        const QWidget* client = text->parentWidget();
        EXPECT_EQ(text->y(), 10);
        EXPECT_EQ(ok->y(), text->geometry().bottom() + 1 + 20);
        EXPECT_NEAR(ok->geometry().center().x(), client->width() / 2, 1);
        EXPECT_EQ(client->height(), text->height() + ok->height() + 60);
        EXPECT_EQ(text->width(), client->width() - 60);
        box.close();
    }
}

}  // namespace
