#include "Common/Toolkit/VirtualKeyboard.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QStyle>
#include <limits>

#include "Common/Toolkit/DialogResults.h"
#include "Common/Toolkit/FontCreator.h"
#include "Common/Toolkit/Message.h"
#include "Common/Toolkit/VirtualKeys.h"
#include "Common/Utilities/LanguageResources.h"
#include "Platform/FatalError.h"

namespace {
// The keyboard focus stays in the text so that a PC keyboard types there;
// the marked key shows the focus mark instead.
constexpr const char* kMarkStyle = R"(
QPushButton { padding: 0px 2px; }
QPushButton[latched="true"] { background: #0a2f6b; color: #ffffff; }
QLineEdit { border: 3px solid #000000; padding: 0 8px; }
)";

int IdOf(const QWidget* control) {
    return control->objectName().toInt();
}

bool IsPrintable(const QString& typed) {
    return !typed.isEmpty() && typed.at(0).isPrint();
}
}  // namespace

CVirtualKeyboard::CVirtualKeyboard(const std::wstring& title, const std::wstring& initialText,
                                   QWidget* parent)
    : QDialog(parent), title(title), text(initialText), frame(*this, true) {}

int CVirtualKeyboard::DoModal() {
    return exec() == QDialog::Accepted ? IDOK : IDCANCEL;
}

int CVirtualKeyboard::MarkedKey() const {
    return marked != nullptr ? IdOf(marked) : 0;
}

void CVirtualKeyboard::showEvent(QShowEvent* event) {
    if (!initialised) {
        initialised = true;
        OnInitDialog();
    }
    QDialog::showEvent(event);
}

void CVirtualKeyboard::OnInitDialog() {
    savedFocus = QApplication::focusWidget();
    const bool templateLoaded = LoadDialogTemplate(IDD, frame.Client());
    OPM_ASSERT(templateLoaded && "Virtual keyboard template missing from the language pack");
    edit = qobject_cast<QLineEdit*>(GetDlgItem(frame.Client(), IDC_TEXT));
    OPM_ASSERT(edit);
    setStyleSheet(styleSheet() + QString::fromLatin1(kMarkStyle));

    QFont textFont;
    FontCreator::CreateFont(textFont, 28, 700);
    edit->setFont(textFont);
    edit->setMaxLength(kMaxLength);
    edit->setText(QString::fromStdWString(text));

    QFont keyFont;
    FontCreator::CreateCommonFont(keyFont, 20, 700);
    for (QPushButton* key : frame.Client()->findChildren<QPushButton*>()) {
        key->setFocusPolicy(Qt::NoFocus);
        key->setFont(keyFont);
        keys.push_back(key);
        const int id = IdOf(key);
        if (id >= IDC_FIRST_CHARACTER && id <= IDC_LAST_CHARACTER) characterKeys.push_back(key);
        connect(key, &QPushButton::clicked, this, [this, key] {
            Mark(key);
            Press(key);
        });
    }
    for (int required : {IDOK, IDCANCEL, IDC_BACKSPACE, IDC_SHIFT, IDC_SPACE})
        OPM_ASSERT(GetDlgItem(frame.Client(), required) != nullptr);

    frame.SetCaption(QString::fromStdWString(title));
    frame.ResizeClient(frame.Client()->size());
    setGeometry(CPopupFrame::PlaceOver(size(), parentWidget()));
    Mark(qobject_cast<QPushButton*>(GetDlgItem(frame.Client(), IDOK)));

    edit->setFocus();
    edit->end(false);
    installEventFilter(this);
    for (QWidget* child : findChildren<QWidget*>()) child->installEventFilter(this);
}

void CVirtualKeyboard::Mark(QPushButton* key) {
    if (key == nullptr || key == marked) return;
    CPopupFrame::Mark(marked, false);
    CPopupFrame::Mark(key, true);
    marked = key;
}

// The nearest key in the direction: along a row for Left and Right, the
// nearest row first and then the nearest key in it for Up and Down.
void CVirtualKeyboard::MoveMark(int direction) {
    if (marked == nullptr) return;
    const QPoint from = marked->geometry().center();
    const bool horizontal = direction == kArrowLeft || direction == kArrowRight;
    const int sign = direction == kArrowLeft || direction == kArrowUp ? -1 : 1;
    QPushButton* best = nullptr;
    long bestScore = std::numeric_limits<long>::max();
    for (QPushButton* key : keys) {
        if (key == marked || !key->isVisible() || !key->isEnabled()) continue;
        const QPoint to = key->geometry().center();
        const int along = sign * (horizontal ? to.x() - from.x() : to.y() - from.y());
        const int across = std::abs(horizontal ? to.y() - from.y() : to.x() - from.x());
        if (along <= 0) continue;
        if (horizontal && across > marked->height() / 2) continue;
        const long score = horizontal ? along : static_cast<long>(along) * 10000 + across;
        if (score < bestScore) {
            bestScore = score;
            best = key;
        }
    }
    Mark(best);
}

void CVirtualKeyboard::SetShifted(bool on) {
    shifted = on;
    for (QPushButton* key : characterKeys)
        key->setText(on ? key->text().toUpper() : key->text().toLower());
    if (auto* shift = qobject_cast<QPushButton*>(GetDlgItem(frame.Client(), IDC_SHIFT))) {
        // The key names the case it switches to.
        shift->setText(on ? QStringLiteral("abc") : QStringLiteral("ABC"));
        shift->setProperty("latched", on);
        shift->style()->unpolish(shift);
        shift->style()->polish(shift);
    }
}

void CVirtualKeyboard::Press(QPushButton* key) {
    switch (IdOf(key)) {
        case IDOK:
            OnOK();
            return;
        case IDCANCEL:
            OnCancel();
            return;
        case IDC_BACKSPACE:
            edit->backspace();
            return;
        case IDC_SHIFT:
            SetShifted(!shifted);
            return;
        case IDC_SPACE:
            edit->insert(QStringLiteral(" "));
            return;
        case IDC_CURSOR_LEFT:
            edit->cursorBackward(false);
            return;
        case IDC_CURSOR_RIGHT:
            edit->cursorForward(false);
            return;
        default:
            edit->insert(key->text());
            return;
    }
}

bool CVirtualKeyboard::OnKeyDown(UINT virtualKey) {
    switch (virtualKey) {
        case VK_LEFT:
            MoveMark(kArrowLeft);
            return true;
        case VK_UP:
            MoveMark(kArrowUp);
            return true;
        case VK_RIGHT:
            MoveMark(kArrowRight);
            return true;
        case VK_DOWN:
            MoveMark(kArrowDown);
            return true;
        case VK_RETURN:
            if (marked != nullptr) Press(marked);
            return true;
        case VK_ESCAPE:
            OnCancel();
            return true;
        default:
            return false;
    }
}

void CVirtualKeyboard::OnOK() {
    const std::wstring entered = edit->text().toStdWString();
    std::wstring complaint;
    if (nameCheck && !nameCheck(entered, complaint)) {
        CMessage box(complaint, this);
        box.DoModal();
        return;
    }
    text = entered;
    accept();
}

void CVirtualKeyboard::OnCancel() {
    QDialog::reject();
}

void CVirtualKeyboard::reject() {
    OnCancel();
}

void CVirtualKeyboard::done(int result) {
    QDialog::done(result);
    if (savedFocus) savedFocus->setFocus();
}

bool CVirtualKeyboard::eventFilter(QObject* watched, QEvent* event) {
    // A dialog that opens hands its focus over as if by Tab, and a text field
    // then selects all of itself: the entry goes on after the text instead.
    if (watched == edit && event->type() == QEvent::FocusIn &&
        static_cast<QFocusEvent*>(event)->reason() == Qt::TabFocusReason) {
        QFocusEvent plain(QEvent::FocusIn, Qt::OtherFocusReason);
        QCoreApplication::sendEvent(edit, &plain);
        return true;
    }
    if (event->type() == QEvent::KeyPress && edit != nullptr) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (OnKeyDown(VirtualKeyFromQt(key->key()))) return true;
        // Typed on a PC keyboard: the text takes it, and Enter now confirms.
        if (watched == edit && IsPrintable(key->text()))
            Mark(qobject_cast<QPushButton*>(GetDlgItem(frame.Client(), IDOK)));
    }
    return QDialog::eventFilter(watched, event);
}
