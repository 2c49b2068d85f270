// The dialog toolkit: the screens' keys, the boxes' input scripts, the fatal
// error box, and the gallery that opens every screen and box in both language
// packs, checks that nothing leaves the application's 640x480 window or its own
// window and that no text is cut off, and with OPM_SCREENSHOTS=dir writes a
// picture of each for review.

#include <unistd.h>

#include <QAbstractButton>
#include <QDir>
#include <QKeySequence>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QThread>
#include <QTreeView>
#include <atomic>
#include <memory>

#include "Common/Toolkit/BaseDialog.h"
#include "Common/Toolkit/BitmapMenuKey.h"
#include "Common/Toolkit/ChangeValueDialog.h"
#include "Common/Toolkit/ColorStatic.h"
#include "Common/Toolkit/DigitEdit.h"
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
#include "Common/Toolkit/TextMenuKey.h"
#include "Common/Toolkit/ToolkitStyle.h"
#include "Common/Toolkit/VirtualKeyboard.h"
#include "Common/Toolkit/VirtualKeys.h"
#include "Common/ToolkitTestSupport.h"
#include "Common/Utilities/LanguageResources.h"
#include "Platform/LocalTime.h"
#include "Platform/PowerStatus.h"
#include "support/Screenshot.h"

using toolkittest::WaitUntil;

namespace {

const UINT kCommands[] = {544, 545, 525, 510};

// The measuring screen's template with soft keys; their commands, the chain's
// hooks and the key operations all go into one trace.
class Screen : public CBaseDialog {
public:
    explicit Screen(UINT templateId = 394, size_t keyCount = 4)
        : CBaseDialog(templateId), keyCount(keyCount) {}
    using CBaseDialog::OnTimer;
    QStringList trace;
    std::vector<CMenuKey*> keys;
    bool consumeKeyDown = false, consumeOperations = true;
    QRect barWhenTextsSet;
    // Sample values at the fonts the measuring screen uses: the large colour
    // readings a user sees most.
    void ShowSamples() {
        FontCreator::CreateFont(large, 28, 700);
        FontCreator::CreateFont(medium, 24, 700);
        FontCreator::CreateCommonFont(small, 16, 700);
        absolute.SubclassDlgItem(1020, this);
        absolute.SetTextColor(0x0000FF);
        linear.SubclassDlgItem(1023, this);
        linear.SetTextColor(0xFF0000);
        const std::tuple<int, const QFont*, QString> fields[] = {
            {1004, &medium, "1310 nm"},     {1020, &large, "-23.456 dBm"},
            {1023, &large, "4.517 uW"},     {1038, &small, ResourceString(51)},
            {1008, &medium, "  -3.00 dBm"}, {1036, &small, ResourceString(50)},
            {1022, &large, "-20.46 dB"},    {1113, &large, "1550 " + ResourceString(61340)}};
        for (const auto& [id, font, text] : fields) {
            GetDlgItem(id)->setFont(*font);
            SetDlgItemText(id, text);
            GetDlgItem(id)->show();
        }
        GetDlgItem(1112)->hide();
    }

protected:
    std::vector<CMenuKey*> GetMenuKeys() override {
        trace << "keys";
        for (UINT id : std::vector<UINT>(kCommands, kCommands + keyCount)) {
            keys.push_back(CreateMenuKey(id, id));
            OnMenuCommand(id, [this, id] { trace << QStringLiteral("cmd%1").arg(id); });
        }
        return keys;
    }
    void OnStatusHook(UINT id) override { trace << QStringLiteral("status%1").arg(id); }
    void OnSetTexts() override {
        trace << "texts";
        barWhenTextsSet = GetBatteryBar().geometry();
    }
    void OnDestroy() override { trace << "destroy"; }
    bool OnKeyDown(UINT key, QKeyEvent*) override {
        trace << QStringLiteral("down%1").arg(key);
        return consumeKeyDown;
    }
    bool OnKeyUp(UINT key, QKeyEvent*) override {
        return Op(QStringLiteral("up%1").arg(key), false);
    }
    bool OnTabPressed() override { return Op("Tab"); }
    bool OnEnterPressed() override { return Op("Enter"); }
    bool OnEscapePressed() override { return Op("Esc"); }
    bool OnSpacePressed() override { return Op("Space"); }
    bool OnArrowPressed(int direction) override {
        return Op(QStringLiteral("arrow%1").arg(direction));
    }
    bool OnLButtonDown(QMouseEvent*) override { return Op("press", false); }
    bool OnLButtonUp(QMouseEvent*) override { return Op("release", false); }

private:
    QFont large, medium, small;
    CColorStatic absolute, linear;
    bool Op(const QString& name, bool consume = true) {
        trace << name;
        return consume && consumeOperations;
    }
    size_t keyCount;
};

// Keys by name; "tapN"/"offN" tap or disable soft key N; "consume" key-down
// hooks, "pass" the operations; "button" focuses a push button, "label" and
// "rlabel" click a label left and right, "box" opens a box over the screen and
// "boxtap" taps its button.
TEST(ScreenKeys, ReachTheOperationsAndTheSoftKeysOnce) {
    const std::pair<const char*, const char*> cases[] = {
        {"Tab Return Enter", "down9 Tab up9 down13 Enter up13 down13 Enter up13"},
        {"Esc Space", "down27 Esc up27 down32 Space up32"},
        {"Left Up Right Down",
         "down37 arrow0 up37 down38 arrow1 up38 down39 arrow2 up39 down40 arrow3 up40"},
        {"F1 F2 F3 F4",
         "down112 cmd544 up112 down113 cmd545 up113 down114 cmd525 up114 down115 cmd510 up115"},
        {"A Z 0 9 F5 Backspace Del Home End",
         "down65 up65 down90 up90 down48 up48 down57 up57 down0 up0 down8 up8 down46 up46 "
         "down36 up36 down35 up35"},
        {"tap2 tap0", "press release cmd525 press release cmd544"},
        {"off3 F4 tap3 tap0", "down115 up115 press release press release cmd544"},
        {"consume F1 Esc Left", "down112 up112 down27 up27 down37 up37"},
        {"pass Esc", "down27 Esc up27 closed"},
        {"button F2 Space", "down113 cmd545 up113 down32 Space up32"},
        {"button pass F2", "down113 cmd545 up113"},
        {"label rlabel", "press release"},
        {"box F1 boxtap", ""},
    };
    ScopedLanguagePack pack;
    for (const auto& [steps, expected] : cases) {
        Screen screen;
        ASSERT_TRUE(screen.Create());
        screen.show();
        screen.trace.clear();
        QWidget* target = &screen;
        auto* label = new QLabel("text", &screen);
        label->setGeometry(10, 100, 100, 30);
        QDialog box(&screen);
        auto* boxButton = new QPushButton("OK", &box);
        for (const QString& step : QString(steps).split(' ')) {
            if (step.startsWith("tap")) {
                QTest::mouseClick(screen.keys[step.mid(3).toInt()], Qt::LeftButton);
            } else if (step.startsWith("off")) {
                screen.keys[step.mid(3).toInt()]->setEnabled(false);
            } else if (step == "consume" || step == "pass") {
                (step == "consume" ? screen.consumeKeyDown : screen.consumeOperations) =
                    step == "consume";
            } else if (step == "button") {
                target = new QPushButton("B", &screen);
                QObject::connect(static_cast<QPushButton*>(target), &QPushButton::clicked,
                                 [&screen] { screen.trace << "clicked"; });
                target->show();
                target->setFocus();
            } else if (step.endsWith("label")) {
                label->show();
                QTest::mouseClick(label, step == "label" ? Qt::LeftButton : Qt::RightButton);
            } else if (step.startsWith("box")) {
                box.show();
                target = boxButton;
                if (step == "boxtap") QTest::mouseClick(boxButton, Qt::LeftButton);
            } else {
                const UINT key = VirtualKeyFromQt(QKeySequence(step)[0].key());
                EXPECT_EQ(VirtualKeyFromQt(QtKeyFromVirtualKey(key)), key) << qPrintable(step);
                QTest::keyClick(target, QKeySequence(step)[0].key());
            }
        }
        if (!screen.isVisible()) screen.trace << "closed";
        EXPECT_EQ(screen.trace.join(' '), expected) << steps;
    }
}

TEST(BaseDialog, InitialisesInTheChainsOrderWithTheBarOverItsPlaceholder) {
    ScopedLanguagePack pack;
    Screen screen;
    ASSERT_TRUE(screen.Create());
    EXPECT_EQ(screen.trace.join(' '), "keys status304 texts");
    EXPECT_TRUE(screen.IsTimerRunning(kStatusTimerId));
    for (unsigned slot = 0; slot < 4; ++slot)
        EXPECT_EQ(screen.GetMenuCtrl().GetCurrentKey(slot), screen.keys[slot]);
    EXPECT_EQ(screen.barWhenTextsSet, screen.GetDlgItem(IDC_BATTERY_BAR_PLACEHOLDER)->geometry());
    EXPECT_EQ(screen.GetBatteryBar().geometry(), QRect(436, 6, 196, 36));
    EXPECT_EQ(screen.children().last(), &screen.GetBatteryBar());
    EXPECT_EQ(screen.GetDlgItem(IDD_BATTARY_BAR), &screen.GetBatteryBar());
    // The status timer, stepped here, drives the hook; other timers do not.
    screen.OnTimer(kStatusTimerId);
    screen.OnTimer(kStatusTimerId + 1);
    EXPECT_EQ(screen.trace.join(' '), "keys status304 texts status304");
    // The soft-key row follows the bottom of a resized screen.
    screen.show();
    screen.resize(800, 600);
    EXPECT_TRUE(
        WaitUntil([&] { return screen.GetMenuCtrl().geometry() == QRect(0, 534, 800, 66); }));
    EXPECT_EQ(screen.keys[3]->x(), 3 * 200 + (200 - 152) / 2);
}

TEST(BaseDialog, AModalRunEndsWithItsResultAndDestroys) {
    ScopedLanguagePack pack;
    Screen screen;
    toolkittest::WhenShown<CBaseDialog>("the screen",
                                        [](CBaseDialog* shown) { shown->EndDialog(IDOK); });
    EXPECT_EQ(screen.DoModal(), IDOK);
    EXPECT_EQ(screen.trace.last(), "destroy");
    EXPECT_FALSE(screen.IsTimerRunning(kStatusTimerId));
    EXPECT_EQ(Screen(9999).DoModal(), -1);
}

class Submenu : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(screen.Create());
        screen.move(0, 0);
        screen.show();
        screen.activateWindow();
        focused->show();
        focused->setFocus();
        ASSERT_TRUE(WaitUntil([&] { return focused->hasFocus(); }));
    }
    // Runs the column; `script` runs once it is open.
    int Run(CSubmenuDialog& column, std::function<void()> script) {
        toolkittest::WhenShown<CSubmenuDialog>("the submenu",
                                               [script](CSubmenuDialog*) { script(); });
        return column.Show();
    }

    ScopedLanguagePack pack;
    Screen screen;
    QPushButton* focused = new QPushButton("focus", &screen);
};

// Keys go to the column ("screen:" ones to the screen underneath); "tapN"
// taps key N, "outside" a soft key of the screen; "?" checks that the column
// is still open with the focus on its current key.
TEST_F(Submenu, KeysAndTapsChooseOrCancelAndTheFocusGoesBack) {
    const struct {
        const char* steps;
        unsigned slot;
        int keys;
        size_t current;
        int disabled;
        int result;
        UINT chosen;
    } cases[] = {
        {"? Down ? Return", 0, 4, 1, -1, IDOK, 2},
        {"Down Space", 0, 3, 0, -1, IDOK, 1},
        {"Up ? Return", 0, 3, 0, -1, IDOK, 2},  // round from the first to the last
        {"Tab ? Return", 0, 3, 1, -1, IDOK, 1},
        {"tap2", 2, 3, 0, -1, IDOK, 2},
        {"Return tap1 ? Up Return", 0, 3, 1, 1, IDOK, 0},
        {"outside", 0, 3, 0, -1, IDCANCEL, 0},
        {"Esc", 0, 3, 0, -1, IDCANCEL, 0},
        {"F1 F2 F3 ? F4", 3, 3, 0, -1, IDCANCEL, 0},  // only the opening key closes it
        {"F2 F3 F4 ? F1", 0, 3, 0, -1, IDCANCEL, 0},
        {"screen:F2 screen:Down screen:Return", 0, 3, 0, -1, IDOK, 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.steps);
        CSubmenuDialog column(screen.keys[c.slot], VK_F1 + c.slot, &screen);
        for (int i = 0; i < c.keys; ++i)
            column.AddKey(UINT(i), QStringLiteral("%1 nm").arg(1300 + 10 * i));
        column.SetCurrentKey(c.current);
        if (c.disabled >= 0) column.GetKey(c.disabled)->setEnabled(false);
        const int result = Run(column, [&] {
            for (const QString& step : QString(c.steps).split(' ')) {
                if (step == "?") {
                    CTextMenuKey* current = column.GetKey(column.GetCurrentKey());
                    EXPECT_TRUE(column.isVisible());
                    EXPECT_TRUE(!current->isEnabled() ||
                                WaitUntil([&] { return current->hasFocus(); }));
                } else if (step.startsWith("tap")) {
                    QTest::mouseClick(column.GetKey(step.mid(3).toInt()), Qt::LeftButton);
                } else if (step == "outside") {
                    QTest::mouseClick(screen.keys[3], Qt::LeftButton);
                } else {
                    QTest::keyClick(
                        step.startsWith("screen:") ? static_cast<QWidget*>(&screen) : &column,
                        QKeySequence(step.mid(step.indexOf(':') + 1))[0].key());
                }
            }
        });
        EXPECT_EQ(result, c.result);
        EXPECT_EQ(column.GetSelectedId(), c.chosen);
        EXPECT_FALSE(column.isVisible());
        EXPECT_TRUE(screen.trace.filter("cmd").isEmpty());
        EXPECT_TRUE(WaitUntil([&] { return focused->hasFocus(); }));
    }
}

TEST_F(Submenu, OpensAboveItsKeyAsWideAsItsWidestCaptionWithinTheScreen) {
    for (unsigned slot : {0u, 3u}) {
        CSubmenuDialog column(screen.keys[slot], VK_F1 + slot, &screen);
        column.AddKey(0, "1310 nm");
        if (slot == 3) column.AddKey(1, "Switch every laser off at once");
        Run(column, [&] {
            const QRect anchor(screen.keys[slot]->mapToGlobal(QPoint(0, 0)),
                               screen.keys[slot]->size());
            const QRect placed = column.geometry();
            EXPECT_EQ(placed.bottom() + 1, anchor.top());
            EXPECT_EQ(placed.height(), int(column.GetKeysCount()) * CSubmenuDialog::kKeyHeight);
            // Left edges aligned, or as wide as the widest caption and kept on the screen.
            const QRect expected = slot == 0 ? QRect(anchor.left(), 0, anchor.width(), 1)
                                             : QRect(0, 0, column.GetKey(1)->NeededWidth(), 1);
            EXPECT_EQ(placed.width(), expected.width());
            EXPECT_EQ(slot == 0 ? placed.left() : placed.right(),
                      slot == 0 ? expected.left() : screen.geometry().right());
            EXPECT_EQ(column.GetKey(column.GetKeysCount()), nullptr);
            QTest::keyClick(&column, Qt::Key_Escape);
        });
    }
}

TEST_F(Submenu, ALongColumnShowsWhatFitsScrolledToTheCurrentKey) {
    CSubmenuDialog column(screen.keys[0], VK_F1, &screen);
    for (int i = 0; i < 14; ++i) column.AddKey(UINT(i), QStringLiteral("%1 nm").arg(1250 + 25 * i));
    column.SetCurrentKey(12);
    Run(column, [&] {
        // 480 / 48: ten keys fit; the current one is the last of them.
        EXPECT_EQ(column.VisibleKeysNum(), 10u);
        EXPECT_EQ(column.FirstVisibleKey(), 3u);
        EXPECT_EQ(column.geometry().top(), screen.geometry().top());
        EXPECT_EQ(column.GetKey(12)->y(), 9 * CSubmenuDialog::kKeyHeight);
        EXPECT_TRUE(column.GetKey(3)->isVisible() && column.GetKey(12)->isVisible());
        EXPECT_FALSE(column.GetKey(2)->isVisible() || column.GetKey(13)->isVisible());
        EXPECT_TRUE(column.ScrollMarks()->MoreAbove() && column.ScrollMarks()->MoreBelow());
        QTest::keyClick(&column, Qt::Key_Down);
        EXPECT_EQ(column.FirstVisibleKey(), 4u);
        EXPECT_TRUE(column.GetKey(13)->isVisible());
        EXPECT_FALSE(column.ScrollMarks()->MoreBelow());
        QTest::keyClick(&column, Qt::Key_Down);  // round to the first
        EXPECT_EQ(column.FirstVisibleKey(), 0u);
        EXPECT_FALSE(column.ScrollMarks()->MoreAbove());
        QTest::keyClick(&column, Qt::Key_Up);
        EXPECT_EQ(column.FirstVisibleKey(), 4u);
        QTest::keyClick(&column, Qt::Key_Return);
    });
    EXPECT_EQ(column.GetSelectedId(), 13u);
}

constexpr int kText = 1192;  // the text of every message box

QString TextOf(QWidget* box, int id = kText) {
    auto* label = qobject_cast<QLabel*>(GetDlgItem(box, id));
    return label != nullptr ? label->text() : QString();
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

// A box from its description: "message:<text>", "message:53" (from the pack),
// "countdown:<seconds>[:hidden]", "question", "editor:<title>:<value>:<min>:
// <max>:<decimals>", "keyboard:<text>[:checked]", "browser".
std::shared_ptr<QDialog> MakeBox(const QString& description) {
    const QStringList a = description.split(':');
    const std::wstring text = a.value(1).toStdWString();
    if (a[0] == "message" && a[1] == "53") return std::make_shared<CMessage>(53u, nullptr);
    if (a[0] == "message") return std::make_shared<CMessage>(text, nullptr);
    if (a[0] == "countdown")
        return std::make_shared<SteppedMessageBox>(L"Saved", L"!", a[1].toUInt(), nullptr,
                                                   a.size() == 2);
    if (a[0] == "question") return std::make_shared<CQuestionDialog>(L"REALLY?", nullptr);
    if (a[0] == "editor")
        return std::make_shared<CChangeValueDialog>(text, a[2].toDouble(), a[3].toDouble(),
                                                    a[4].toDouble(), a[5].toInt(), nullptr);
    if (a[0] == "keyboard") {
        auto box = std::make_shared<CVirtualKeyboard>(L"File name", text, nullptr);
        if (a.size() > 2)
            box->SetNameCheck([](const std::wstring& name, std::wstring& complaint) {
                if (name == L"meas") complaint = L"The name meas is reserved.";
                return name != L"meas";
            });
        return box;
    }
    return std::make_shared<RecordingBrowser>();
}

template <typename T>
int Modal(QDialog* box) {
    auto* typed = dynamic_cast<T*>(box);
    return typed != nullptr ? typed->DoModal() : 0;
}

int DoModal(QDialog* box) {
    return Modal<CMessage>(box) + Modal<CMessageBoxEx>(box) + Modal<CQuestionDialog>(box) +
           Modal<CChangeValueDialog>(box) + Modal<CVirtualKeyboard>(box) +
           Modal<CFileSystemBrowser>(box);
}

// What "?" notes while the box runs, and (`end`) what it ends with.
QString Observe(QDialog* box, bool end) {
    if (auto* m = dynamic_cast<SteppedMessageBox*>(box))
        return end ? m->Timers()
                   : m->OkLabel() + (GetDlgItem(m, IDOK)->isVisibleTo(m) ? "" : "(hidden)");
    if (auto* m = dynamic_cast<CMessage*>(box)) return end ? TextOf(m) : "";
    if (auto* q = dynamic_cast<CQuestionDialog*>(box))
        return end ? "" : QString::number(GetDlgItem(q, IDCANCEL)->property("marked").toBool());
    if (auto* e = dynamic_cast<CChangeValueDialog*>(box))
        return end ? QString::number(e->GetValue()) : QString::fromStdString(e->Digits().Text());
    if (auto* k = dynamic_cast<CVirtualKeyboard*>(box))
        return end ? QString::fromStdWString(k->GetText()) : QString::number(k->MarkedKey());
    auto* b = static_cast<RecordingBrowser*>(box);  // "<location>:<current item>[+ when open]"
    const QModelIndex current = b->Tree()->currentIndex();
    const QString title = TextOf(b, CFileSystemBrowser::IDC_TITLE);
    return end ? b->events.join(' ')
               : title.mid(title.lastIndexOf(' ') + 1) + ':' + current.data().toString() +
                     (b->Tree()->isExpanded(current) ? "+" : "");
}

// The steps only one box knows: the countdown's "tick" and "tick304", the
// editor's "cellN" (a tap on digit cell N), the keyboard's "@x" (a tap on the
// key captioned x), the browser's "/path" (made current).
void Special(QDialog* box, const QString& step) {
    if (auto* m = dynamic_cast<SteppedMessageBox*>(box)) return m->Tick(step == "tick" ? 777 : 304);
    if (auto* e = dynamic_cast<CChangeValueDialog*>(box)) {
        auto* edit = qobject_cast<CDigitEdit*>(GetDlgItem(e, CChangeValueDialog::IDC_VALUE));
        return QTest::mouseClick(edit, Qt::LeftButton, {},
                                 edit->CellRect(step.mid(4).toInt()).center());
    }
    if (step[0] == '@') {
        for (auto* key : box->findChildren<QPushButton*>())
            if (key->text() == step.mid(1)) return QTest::mouseClick(key, Qt::LeftButton);
        ADD_FAILURE() << "no key " << qPrintable(step);
        return;
    }
    auto* b = static_cast<RecordingBrowser*>(box);
    const QString path = QDir(b->Locations()[b->CurrentLocation()].path).filePath(step.mid(1));
    b->SelectPath(path);
    EXPECT_TRUE(toolkittest::WaitUntil([&] { return b->CurrentPath() == path; }))
        << qPrintable(path);
}

// Steps: a key by name, "#id" a tap on a control, "'text" typed ('_' a
// blank), "?" a note of what the box shows, "!keys" a box the next step opens
// over this one (its text noted, the comma-separated keys sent to it), or one
// of the box's own.
void Play(QDialog* box, const QString& steps, QStringList& trace) {
    for (const QString& step : steps.split(' ')) {
        QWidget* focus = box->focusWidget() != nullptr ? box->focusWidget() : box;
        if (step == "?") {
            trace << Observe(box, false);
        } else if (step.startsWith('#')) {
            QTest::mouseClick(GetDlgItem(box, step.mid(1).toInt()), Qt::LeftButton);
        } else if (step.startsWith('\'')) {
            QTest::keyClicks(focus, step.mid(1).replace('_', ' '));
        } else if (step.startsWith('!')) {
            const QStringList keys = step.mid(1).split(',');
            toolkittest::WhenShown<QDialog>(
                "a box over the box",
                [&trace, keys](QDialog* over) {
                    if (!TextOf(over).isEmpty()) trace << TextOf(over);
                    for (const QString& key : keys)
                        QTest::keyClick(over, QKeySequence(key)[0].key());
                },
                box);
        } else if (step[0].isLower() || step[0] == '@' || step[0] == '/') {
            Special(box, step);
        } else {
            QTest::keyClick(focus, QKeySequence(step)[0].key());
        }
    }
}

struct Script {
    const char* name;
    const char* box;
    const char* steps;
    int code;
    const char* trace;
};

class DialogScript : public testing::TestWithParam<Script> {};

TEST_P(DialogScript, EndsWithItsResult) {
    ScopedLanguagePack pack;
    const std::shared_ptr<QDialog> box = MakeBox(GetParam().box);
    QTemporaryDir flash, usb;  // the browser's
    QDir(flash.path()).mkpath("2015/march");
    for (const QString& file : {flash.filePath("a.txt"), flash.filePath("b.txt"),
                                flash.filePath("2015/march/span.txt"), usb.filePath("copy.txt")})
        ASSERT_TRUE(QFile(file).open(QIODevice::WriteOnly));
    if (auto* browser = dynamic_cast<CFileSystemBrowser*>(box.get()))
        browser->SetLocationSource([&] {
            return std::vector<CFileSystemBrowser::Location>{{"Flash", flash.path()},
                                                             {"USB", usb.path()}};
        });
    QStringList trace;
    toolkittest::WhenShown<QDialog>(GetParam().name,
                                    [&](QDialog* shown) { Play(shown, GetParam().steps, trace); });
    const int code = DoModal(box.get());
    EXPECT_EQ(code, GetParam().code);
    if (!Observe(box.get(), true).isEmpty()) trace << Observe(box.get(), true);
    EXPECT_EQ(trace.join(' '), GetParam().trace);
}

// Taps: #1 OK, #2 Cancel, #1192 the text; the editor's #1201 cursor left,
// #1203 digit up, #1204 digit down; the keyboard's #1410 backspace, #1411
// shift, #1412 space, #1413 cursor left.
const Script kScripts[] = {
    {"MessageOk", "message:Can't create OLT1 driver file", "Return", IDOK,
     "Can't create OLT1 driver file"},
    {"MessageEscape", "message:x", "Esc", IDCANCEL, "x"},
    {"MessageTap", "message:53", "#1", IDOK, "No power meter"},
    {"CountdownEndsWithOk", "countdown:3", "? tick ? tick ? tick ?", IDOK,
     "OK(3) OK(2) OK(1) OK started 777/1000 killed 777"},
    {"NoSecondsNoCountdown", "countdown:0", "? tick ? Return", IDOK, "OK OK started - killed -"},
    {"AKeyStopsTheCount", "countdown:5", "tick ? Down ? tick ? Return", IDOK,
     "OK(4) OK OK started 777/1000 killed 777"},
    {"ATapStopsTheCount", "countdown:5", "#1192 ? tick ? Left Return", IDOK,
     "OK OK started 777/1000 killed 777"},
    {"HiddenOkOtherTimer", "countdown:2:hidden", "tick304 ? Esc", IDCANCEL,
     "OK(2)(hidden) started 777/1000 killed 777"},
    {"QuestionStartsOnNo", "question", "? Return", IDNO, "1"},
    {"QuestionLeftIsYes", "question", "Left ? Return", IDYES, "0"},
    {"QuestionSpace", "question", "Left Space", IDYES, ""},
    {"QuestionBackToNoOrEscape", "question", "Left Right Left Esc", IDNO, ""},
    {"QuestionTapYes", "question", "#1", IDYES, ""},
    {"EditorArrows", "editor:Ref = :-3.25:-99:99:2",
     "? Up Up Left Up Right Right Down Left Left Left Up ? Return", IDOK, "-03.25 +15.15 15.15"},
    {"EditorTyped", "editor:P, dBm:-10:-99.9:99.99:3", "Left Left - 2 3 4 5 6 Enter", IDOK,
     "-23.456"},
    {"EditorRefusesOutOfRange", "editor:P, dBm:99.99:-99.9:99.99:3",
     "Right Right Right Up !Return Return ? Down Return", IDOK,
     "P, dBm\n-99.900...99.990. +99.991 99.99"},
    {"EditorCancelKey", "editor:Ref = :-3.25:-99:99:2", "Up #2", IDCANCEL, "-3.25"},
    {"EditorTouch", "editor:Ref = :1:-99:99:2", "cell4 #1203 #1201 #1204 ? #1", IDOK, "+00.10 0.1"},
    {"KeyboardTyped", "keyboard:temp", "Backspace 'ting_span_A ? Return", IDOK, "1 temting span A"},
    // From OK (bottom left): up to Shift, 'z', 'a', 'q'; 'w'; '2'; down to OK.
    {"KeyboardArrows", "keyboard:",
     "Up Up Up Up Return Right Return Up Return Down Down Down Down Down Down ? Return", IDOK,
     "1 qw2"},
    {"KeyboardTouch", "keyboard:", "#1411 @A #1411 @b #1412 @1 #1413 #1410 #1", IDOK, "Ab1"},
    {"KeyboardEscape", "keyboard:temp", "'xyz Esc", IDCANCEL, "temp"},
    {"KeyboardNameCheck", "keyboard:meas:checked", "!Return Return '1 Return", IDOK,
     "The name meas is reserved. meas1"},
    {"BrowserCloseKey", "browser", "/a.txt ? F4", IDCANCEL, "Flash:a.txt"},
    {"BrowserSendsMarkedOrCurrent", "browser",
     "/a.txt Space /b.txt Space F2 Space /a.txt Space /b.txt F2 Esc", IDCANCEL,
     "sent a.txt sent b.txt sent b.txt"},
    {"BrowserNoFiles", "browser", "/2015 !Return F2 Esc", IDCANCEL, "No files"},
    {"BrowserEnter", "browser", "/2015 Return ? Return ? /2015/march/span.txt ? Return Esc",
     IDCANCEL, "Flash:2015+ Flash:2015 Flash:span.txt opened span.txt"},
    {"BrowserStorage", "browser", "!Down,Return F1 /copy.txt ? Esc", IDCANCEL, "USB:copy.txt"},
};

INSTANTIATE_TEST_SUITE_P(Boxes, DialogScript, testing::ValuesIn(kScripts),
                         [](const auto& info) { return std::string(info.param.name); });

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
            // 10 pixels from the top, the key 20 below it, a 30-pixel margin.
            QWidget* ok = GetDlgItem(box.get(), IDOK);
            EXPECT_EQ(label->y(), 10);
            EXPECT_EQ(ok->y(), label->geometry().bottom() + 1 + 20);
            EXPECT_EQ(label->parentWidget()->height(), label->height() + ok->height() + 60);
            box->close();
        }
    }
}

int BoxesUp() {
    int boxes = 0;
    for (QWidget* window : QApplication::topLevelWidgets())
        boxes += qobject_cast<QMessageBox*>(window) != nullptr && window->isVisible();
    return boxes;
}

TEST(FatalErrorBoxTest, ShowsTheTextTitledUnrecoverableErrorWithTheErrorIcon) {
    QString shown;
    toolkittest::WhenShown<QMessageBox>("the fatal error box", [&](QMessageBox* box) {
        shown = box->windowTitle() + "|" + box->text() + "|" + box->informativeText() +
                (box->icon() == QMessageBox::Critical ? "|error icon" : "");
        box->accept();
    });
    // From a worker thread: the UI thread shows it, the worker waits for it.
    std::unique_ptr<QThread> worker(
        QThread::create([] { CFatalErrorBox::Show(L"hKey\nFile: AppConfig\nLine: 32"); }));
    worker->start();
    EXPECT_TRUE(toolkittest::WaitUntil([&] { return worker->isFinished(); }) && worker->wait());
    EXPECT_EQ(shown,
              "Unrecoverable error|Unrecoverable error|hKey\nFile: AppConfig\nLine: 32|error icon");
}

// A check failing under the box (a timer of its loop) and one on a worker
// thread: neither ends the process nor puts up a box of its own; the process
// ends once the first box is closed.
void FailThreeTimes() {
    alarm(20);  // the child fails rather than hangs
    static std::atomic<int> failures{0};
    platform::SetFatalErrorBox([](const std::wstring& text) {
        ++failures;
        CFatalErrorBox::Show(text);
    });
    QThread* worker = QThread::create([] { OPM_ASSERT_AT(false, "Worker", 3); });
    QTimer underTheBox;
    QObject::connect(&underTheBox, &QTimer::timeout, [&] {
        if (BoxesUp() == 0) return;
        underTheBox.stop();
        worker->start();
        OPM_ASSERT_AT(false, "Timer", 2);
    });
    QTimer closer;
    QObject::connect(&closer, &QTimer::timeout, [&] {
        if (failures < 3) return;
        closer.stop();
        QTest::qWait(100);  // time for a box that should not be there
        std::fprintf(stderr, "boxes up: %d, closing the first\n", BoxesUp());
        for (QWidget* window : QApplication::topLevelWidgets())
            if (auto* box = qobject_cast<QMessageBox*>(window)) box->accept();
    });
    underTheBox.start(5);
    closer.start(5);
    OPM_ASSERT_AT(false, "First", 1);
}

TEST(FatalErrorBoxDeathTest, LaterChecksWaitUntilTheFirstBoxIsClosed) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(FailThreeTimes(), testing::ExitedWithCode(1),
                "File: First.*boxes up: 1, closing the first\n");
}

// What a person would call untidy: a window off the instrument's screen (the
// gallery's screen, at the desktop's origin), a control outside its window, a
// text cut off by its control.
void ExpectTidy(QWidget* window) {
    SCOPED_TRACE(window->metaObject()->className());
    EXPECT_TRUE(QRect(QPoint(0, 0), CToolkitStyle::kScreenSize).contains(window->frameGeometry()));
    for (QWidget* control : window->findChildren<QWidget*>()) {
        if (!control->isVisibleTo(window) || control->isWindow()) continue;
        const std::string name = control->objectName().toStdString();
        EXPECT_TRUE(
            window->rect().contains(QRect(control->mapTo(window, QPoint()), control->size())))
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
        EXPECT_LE(metrics.height() * (label->text().count('\n') + 1),
                  label->contentsRect().height())
            << name;
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
        screen.ShowSamples();
        screen.move(0, 0);
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
        toolkittest::WhenShown<T>(
            what,
            [=, this](T* box) {
                ExpectTidy(box);
                screenshot::Save(Name(what), &screen, {outer, box});
                close(box);
            },
            outer);
    }

    QTemporaryDir powerSupplies;
    ScopedLanguagePack pack{GetParam()};
    Screen screen;
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
    const std::tuple<const char*, int, QByteArray> states[] = {{"battery-full", 96, "Discharging"},
                                                               {"battery-charging", 96, "Charging"},
                                                               {"battery-low", 8, "Discharging"}};
    for (const auto& [name, capacity, status] : states) {
        QDir(powerSupplies.path()).mkpath("BAT0");
        for (const auto& [file, value] : {std::pair<const char*, QByteArray>{"type", "Battery"},
                                          {"capacity", QByteArray::number(capacity)},
                                          {"status", status}}) {
            QFile out(powerSupplies.filePath("BAT0/") + file);
            ASSERT_TRUE(out.open(QIODevice::WriteOnly) && out.write(value) > 0);
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

TEST_P(GalleryTest, Boxes) {
    const std::pair<std::string, const char*> boxes[] = {
        {"message", "message:Can't create OLT1 driver file"},
        {"message-long",
         "message:Error during factory calibration data changing to def. Write Failed -- could "
         "the server be in read-only mode?"},
        {"countdown", "countdown:3"},
        {"question", "question"},
        {"value-editor", "editor:P, dBm:-99.956:-99.9:99.99:3"},
        {"virtual-keyboard", "keyboard:temp"},
        {"file-browser", "browser"}};
    QTemporaryDir data;
    for (const auto& [name, description] : boxes) {
        const std::shared_ptr<QDialog> box = MakeBox(description);
        if (auto* browser = dynamic_cast<CFileSystemBrowser*>(box.get())) {
            browser->move(0, 0);  // a screen of its own
            browser->SetLocationSource([&] {
                return std::vector<CFileSystemBrowser::Location>{
                    {ResourceString(CFileSystemBrowser::IDS_DATA_FOLDER), data.path()},
                    {ResourceString(CFileSystemBrowser::IDS_REMOVABLE_DISK).arg("KINGSTON"),
                     QDir::tempPath()}};
            });
        }
        Picture<QDialog>(
            name.c_str(),
            [this](QDialog* shown) {
                // The editor's start value lies below its range: OK shows the range;
                // the browser's F1 its storage menu.
                const bool browser = shown->inherits("CFileSystemBrowser");
                if (shown->inherits("CChangeValueDialog"))
                    Picture<CMessage>(
                        "value-editor-range", [](CMessage* m) { m->accept(); }, shown);
                if (browser)
                    Picture<CSubmenuDialog>(
                        "file-browser-storage", [](auto* m) { QTest::keyClick(m, Qt::Key_Escape); },
                        shown);
                QTest::keyClick(shown->focusWidget(), browser ? Qt::Key_F1 : Qt::Key_Return);
                if (shown->isVisible()) QTest::keyClick(shown, Qt::Key_Escape);
            },
            &screen);
        DoModal(box.get());
    }
    Picture<QMessageBox>("fatal-error", [](QMessageBox* box) {
        EXPECT_EQ(box->windowTitle(), "Unrecoverable error");
        box->accept();
    });
    CFatalErrorBox::Show(
        L"batteryBarPlaceholder && \"Did you forget to add IDC_BATTERY_BAR_PLACEHOLDER "
        L"to dialog in editor ?\"\nFile: BaseDialog\nLine: 104\nApplication will be closed");
}

INSTANTIATE_TEST_SUITE_P(Languages, GalleryTest, testing::Values("english", "german"),
                         [](const auto& info) { return std::string(info.param); });

}  // namespace
