#include "Common/Toolkit/KeyboardControlledDialog.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWidget>

#include "Common/Toolkit/VirtualKeys.h"

CKeyboardControlledDialog::CKeyboardControlledDialog(UINT templateId, QWidget* parent)
    : CDialog(templateId, parent) {
    // The application sees an event before the control it is meant for, so
    // the dialog gets every key, whichever of its controls has the focus and
    // whenever that control was created.
    qApp->installEventFilter(this);
}

CKeyboardControlledDialog::~CKeyboardControlledDialog() {
    if (qApp != nullptr) qApp->removeEventFilter(this);
}

bool CKeyboardControlledDialog::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
            break;
        default:
            return CDialog::eventFilter(watched, event);
    }
    auto* widget = qobject_cast<QWidget*>(watched);
    if (widget == nullptr || widget->window() != this) return false;
    if (IsPropagation(watched, event)) return false;
    return PreTranslateMessage(event);
}

CKeyboardControlledDialog::InputSignature CKeyboardControlledDialog::SignatureOf(
    const QEvent* event) {
    InputSignature signature;
    signature.type = event->type();
    signature.event = event;
    if (event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease) {
        signature.code = static_cast<const QKeyEvent*>(event)->key();
    } else {
        const auto* mouse = static_cast<const QMouseEvent*>(event);
        signature.code = mouse->button();
        signature.timestamp = mouse->timestamp();
        signature.globalPosition = mouse->globalPosition();
    }
    return signature;
}

bool CKeyboardControlledDialog::InputSignature::SameInput(const InputSignature& other) const {
    if (type != other.type || code != other.code) return false;
    if (type == QEvent::KeyPress || type == QEvent::KeyRelease) return event == other.event;
    return timestamp == other.timestamp && globalPosition == other.globalPosition;
}

bool CKeyboardControlledDialog::IsPropagation(QObject* receiver, QEvent* event) {
    const InputSignature signature = SignatureOf(event);
    bool toAncestor = false;
    if (lastReceiver && signature.SameInput(last)) {
        for (QObject* o = lastReceiver->parent(); o != nullptr && !toAncestor; o = o->parent())
            toAncestor = o == receiver;
    }
    last = signature;
    lastReceiver = receiver;
    return toAncestor;
}

bool CKeyboardControlledDialog::PreTranslateMessage(QEvent* event) {
    switch (event->type()) {
        case QEvent::KeyPress: {
            auto* key = static_cast<QKeyEvent*>(event);
            return DispatchKeyDown(VirtualKeyFromQt(key->key()), key);
        }
        case QEvent::KeyRelease: {
            auto* key = static_cast<QKeyEvent*>(event);
            return OnKeyUp(VirtualKeyFromQt(key->key()), key);
        }
        case QEvent::MouseButtonPress: {
            auto* mouse = static_cast<QMouseEvent*>(event);
            return mouse->button() == Qt::LeftButton && OnLButtonDown(mouse);
        }
        case QEvent::MouseButtonRelease: {
            auto* mouse = static_cast<QMouseEvent*>(event);
            return mouse->button() == Qt::LeftButton && OnLButtonUp(mouse);
        }
        default:
            return false;
    }
}

bool CKeyboardControlledDialog::DispatchKeyDown(UINT virtualKey, QKeyEvent* message) {
    if (OnKeyDown(virtualKey, message)) return true;

    using Operation = bool (*)(CKeyboardControlledDialog&);
    struct Entry {
        UINT virtualKey;
        Operation operation;
    };
    static constexpr Entry kKeyTable[] = {
        {VK_TAB, [](CKeyboardControlledDialog& d) { return d.OnTabPressed(); }},
        {VK_RETURN, [](CKeyboardControlledDialog& d) { return d.OnEnterPressed(); }},
        {VK_ESCAPE, [](CKeyboardControlledDialog& d) { return d.OnEscapePressed(); }},
        {VK_SPACE, [](CKeyboardControlledDialog& d) { return d.OnSpacePressed(); }},
        {VK_LEFT, [](CKeyboardControlledDialog& d) { return d.OnArrowPressed(kArrowLeft); }},
        {VK_UP, [](CKeyboardControlledDialog& d) { return d.OnArrowPressed(kArrowUp); }},
        {VK_RIGHT, [](CKeyboardControlledDialog& d) { return d.OnArrowPressed(kArrowRight); }},
        {VK_DOWN, [](CKeyboardControlledDialog& d) { return d.OnArrowPressed(kArrowDown); }},
        {VK_F1, [](CKeyboardControlledDialog& d) { return d.OnF1Pressed(); }},
        {VK_F2, [](CKeyboardControlledDialog& d) { return d.OnF2Pressed(); }},
        {VK_F3, [](CKeyboardControlledDialog& d) { return d.OnF3Pressed(); }},
        {VK_F4, [](CKeyboardControlledDialog& d) { return d.OnF4Pressed(); }},
    };
    for (const Entry& entry : kKeyTable) {
        if (entry.virtualKey == virtualKey) return entry.operation(*this);
    }
    // Any other key goes on to ordinary handling at once.
    return false;
}
