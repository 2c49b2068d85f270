#include "Common/Toolkit/Dialog.h"

#include <QAbstractButton>
#include <QLabel>
#include <QLineEdit>
#include <QTextEdit>
#include <QTimerEvent>

#include "Common/Toolkit/NotifyEvent.h"
#include "Common/Utilities/LanguageResources.h"
#include "Platform/DebugOutput.h"

namespace {
void TraceShown(UINT templateId, int controlId, const QString& before, const QString& text) {
    if (before == text) return;
    platform::Trace(
        QStringLiteral("shown %1/%2: %3").arg(templateId).arg(controlId).arg(text).toStdWString());
}
}  // namespace

CDialog::CDialog(UINT templateId, QWidget* parent) : QDialog(parent), templateId(templateId) {}

CDialog::~CDialog() = default;

bool CDialog::Create() {
    if (created) return true;
    if (!LoadDialogTemplate(templateId, this)) return false;
    created = true;
    OnInitDialog();
    return true;
}

int CDialog::DoModal() {
    if (!Create()) return -1;
    const int result = exec();
    for (auto it = timers.begin(); it != timers.end(); it = timers.erase(it))
        QObject::killTimer(it->second);
    OnDestroy();
    return result;
}

void CDialog::EndDialog(int result) {
    done(result);
}

QWidget* CDialog::GetDlgItem(int controlId) const {
    return ::GetDlgItem(const_cast<CDialog*>(this), controlId);
}

void CDialog::SetDlgItemText(int controlId, const QString& text) {
    QWidget* control = GetDlgItem(controlId);
    // The old text is read only for the trace, never on the measuring path.
    if (control != nullptr && platform::Tracing())
        TraceShown(templateId, controlId, GetDlgItemText(controlId), text);
    if (auto* label = qobject_cast<QLabel*>(control))
        label->setText(text);
    else if (auto* edit = qobject_cast<QLineEdit*>(control))
        edit->setText(text);
    else if (auto* button = qobject_cast<QAbstractButton*>(control))
        button->setText(text);
    else if (auto* textEdit = qobject_cast<QTextEdit*>(control))
        textEdit->setPlainText(text);
}

QString CDialog::GetDlgItemText(int controlId) const {
    QWidget* control = GetDlgItem(controlId);
    if (auto* label = qobject_cast<QLabel*>(control)) return label->text();
    if (auto* edit = qobject_cast<QLineEdit*>(control)) return edit->text();
    if (auto* button = qobject_cast<QAbstractButton*>(control)) return button->text();
    if (auto* textEdit = qobject_cast<QTextEdit*>(control)) return textEdit->toPlainText();
    return {};
}

void CDialog::DdxText(bool saveAndValidate, int controlId, std::wstring& value) {
    if (saveAndValidate)
        value = GetDlgItemText(controlId).toStdWString();
    else
        SetDlgItemText(controlId, QString::fromStdWString(value));
}

UINT CDialog::SetTimer(UINT timerId, UINT elapseMs) {
    KillTimer(timerId);
    const int qtId = startTimer(static_cast<int>(elapseMs));
    if (qtId == 0) return 0;
    timers[timerId] = qtId;
    return timerId;
}

bool CDialog::KillTimer(UINT timerId) {
    const auto it = timers.find(timerId);
    if (it == timers.end()) return false;
    QObject::killTimer(it->second);
    timers.erase(it);
    return true;
}

bool CDialog::IsTimerRunning(UINT timerId) const {
    return timers.count(timerId) != 0;
}

void CDialog::timerEvent(QTimerEvent* event) {
    for (const auto& [id, qtId] : timers) {
        if (qtId == event->timerId()) {
            OnTimer(id);
            return;
        }
    }
    QDialog::timerEvent(event);
}

bool CDialog::event(QEvent* event) {
    if (event->type() == CNotifyEvent::EventType()) {
        auto* notify = static_cast<CNotifyEvent*>(event);
        return OnNotify(notify->WParam(), notify->Header());
    }
    if (event->type() >= QEvent::User) {
        if (auto* message = dynamic_cast<WindowMessageEvent*>(event)) {
            OnMessage(message->Message(), message->WParam(), message->LParam());
            return true;
        }
    }
    return QDialog::event(event);
}
