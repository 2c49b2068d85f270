#pragma once
// First link of the screens' chain: sees every key and touch of the dialog
// and its controls before they do, turns them into virtual operations by the
// key table, and lets what is not consumed go on to ordinary handling.

#include <QPointF>
#include <QPointer>

#include "Common/Toolkit/Dialog.h"

class QKeyEvent;
class QMouseEvent;

class CKeyboardControlledDialog : public CDialog {
    Q_OBJECT
public:
    explicit CKeyboardControlledDialog(UINT templateId, QWidget* parent = nullptr);
    ~CKeyboardControlledDialog() override;

protected:
    // The key operations, in their order. Each returns true when it consumed
    // the input; the defaults consume nothing.
    virtual bool OnF1Pressed() { return false; }
    virtual bool OnF2Pressed() { return false; }
    virtual bool OnF3Pressed() { return false; }
    virtual bool OnF4Pressed() { return false; }
    // direction: kArrowLeft 0, kArrowUp 1, kArrowRight 2, kArrowDown 3.
    virtual bool OnArrowPressed(int /*direction*/) { return false; }
    virtual bool OnSpacePressed() { return false; }
    virtual bool OnEscapePressed() { return false; }
    virtual bool OnEnterPressed() { return false; }
    virtual bool OnTabPressed() { return false; }
    virtual bool OnLButtonUp(QMouseEvent* /*message*/) { return false; }
    virtual bool OnLButtonDown(QMouseEvent* /*message*/) { return false; }
    // Sees every key-down first; a consumed key goes no further.
    virtual bool OnKeyDown(UINT /*virtualKey*/, QKeyEvent* /*message*/) { return false; }
    virtual bool OnKeyUp(UINT /*virtualKey*/, QKeyEvent* /*message*/) { return false; }

    // The pre-translation of one input event meant for this dialog.
    bool PreTranslateMessage(QEvent* event);
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool DispatchKeyDown(UINT virtualKey, QKeyEvent* message);
    bool IsPropagation(QObject* receiver, QEvent* event);

    // An input event that a control ignores travels on to its parents (a key
    // as the same object, a touch as a copy); it is dispatched only where it
    // first arrived.
    struct InputSignature {
        QEvent::Type type = QEvent::None;
        const QEvent* event = nullptr;
        quint64 timestamp = 0;
        int code = 0;
        QPointF globalPosition;
        bool SameInput(const InputSignature& other) const;
    };
    static InputSignature SignatureOf(const QEvent* event);
    InputSignature last;
    QPointer<QObject> lastReceiver;
};
