#include "Common/Toolkit/MessageBoxEx.h"

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QTimerEvent>

#include "Common/Toolkit/DialogResults.h"
#include "Common/Toolkit/FontCreator.h"
#include "Common/Toolkit/MessageLayout.h"
#include "Common/Utilities/LanguageResources.h"
#include "Platform/DebugOutput.h"
#include "Platform/FatalError.h"

namespace {
constexpr const char* kOkFormat = "OK(%u)";
constexpr const char* kOk = "OK";

const char* CaptionColour(CMessageBoxEx::Kind kind) {
    switch (kind) {
        case CMessageBoxEx::Kind::Error:
            return "#b00000";
        case CMessageBoxEx::Kind::Warning:
            return "#b35900";
        default:
            return "#0a2f6b";
    }
}

bool IsUserInput(QEvent::Type type) {
    return type == QEvent::KeyPress || type == QEvent::MouseButtonPress ||
           type == QEvent::TouchBegin;
}
}  // namespace

CMessageBoxEx::CMessageBoxEx(const std::wstring& text, const std::wstring& title, unsigned seconds,
                             QWidget* parent, bool showOk)
    : QDialog(parent),
      title(title),
      text(text),
      secondsLeft(seconds),
      showOk(showOk),
      frame(*this, true) {}

CMessageBoxEx::~CMessageBoxEx() {
    OnDestroy();
}

int CMessageBoxEx::DoModal() {
    platform::Trace(L"box " + title + L": " + text);
    return exec() == QDialog::Accepted ? IDOK : IDCANCEL;
}

QString CMessageBoxEx::OkLabel() const {
    return okBtn != nullptr ? okBtn->text() : QString();
}

void CMessageBoxEx::showEvent(QShowEvent* event) {
    if (!initialised) {
        initialised = true;
        OnInitDialog();
    }
    QDialog::showEvent(event);
}

void CMessageBoxEx::OnInitDialog() {
    savedFocus = QApplication::focusWidget();

    const bool templateLoaded = LoadDialogTemplate(IDD, frame.Client());
    OPM_ASSERT(templateLoaded && "Message box template missing from the language pack");
    textCtrl = qobject_cast<QLabel*>(GetDlgItem(frame.Client(), IDC_TEXT));
    okBtn = qobject_cast<QPushButton*>(GetDlgItem(frame.Client(), IDOK));
    OPM_ASSERT(textCtrl && okBtn);
    textCtrl->setText(QString::fromStdWString(text));
    QFont font;
    FontCreator::CreateCommonFont(font, 14, 400);
    textCtrl->setFont(font);
    setFont(font);
    okBtn->setFont(font);

    frame.SetCaption(QString::fromStdWString(title));
    frame.SetCaptionColour(QString::fromLatin1(CaptionColour(kind)));
    SetOkLabel();
    Layout();
    if (!showOk) okBtn->hide();
    connect(okBtn, &QPushButton::clicked, this, &QDialog::accept);
    okBtn->setDefault(true);
    okBtn->setFocus();
    CPopupFrame::Mark(okBtn, true);

    installEventFilter(this);
    for (QWidget* child : findChildren<QWidget*>()) child->installEventFilter(this);

    if (secondsLeft != 0) timerId = SetTimer(kCountdownTimerId, kCountdownPeriodMs);
}

void CMessageBoxEx::SetOkLabel() {
    if (okBtn == nullptr) return;
    okBtn->setText(secondsLeft != 0 ? QString::asprintf(kOkFormat, secondsLeft)
                                    : QString::fromLatin1(kOk));
}

void CMessageBoxEx::Layout() {
    CMessageLayout::Arrange(frame, *textCtrl, *okBtn, parentWidget());
}

void CMessageBoxEx::OnTimer(UINT id) {
    if (id != kCountdownTimerId || secondsLeft == 0) return;
    --secondsLeft;
    SetOkLabel();
    if (secondsLeft == 0) accept();
}

UINT CMessageBoxEx::SetTimer(UINT id, UINT periodMs) {
    qtTimerId = startTimer(static_cast<int>(periodMs));
    return qtTimerId != 0 ? id : 0;
}

void CMessageBoxEx::KillTimer(UINT) {
    if (qtTimerId != 0) killTimer(qtTimerId);
    qtTimerId = 0;
}

void CMessageBoxEx::timerEvent(QTimerEvent* event) {
    if (event->timerId() == qtTimerId && qtTimerId != 0) {
        OnTimer(timerId);
        return;
    }
    QDialog::timerEvent(event);
}

bool CMessageBoxEx::eventFilter(QObject* watched, QEvent* event) {
    if (IsUserInput(event->type())) InterruptCountdown();
    return QDialog::eventFilter(watched, event);
}

void CMessageBoxEx::InterruptCountdown() {
    if (timerId != 0) {
        KillTimer(timerId);
        timerId = 0;
    }
    secondsLeft = 0;
    SetOkLabel();
}

void CMessageBoxEx::done(int result) {
    QDialog::done(result);
    OnDestroy();
}

void CMessageBoxEx::OnDestroy() {
    if (destroyed || !initialised) return;
    destroyed = true;
    if (timerId != 0) {
        KillTimer(timerId);
        timerId = 0;
    }
    if (savedFocus) savedFocus->setFocus();
}
