#pragma once
// Window messages posted across threads. A window handle is weak: posting to
// a window that has gone is a no-op, never a crash. A posted message arrives
// on the receiver's thread as a WindowMessageEvent whose QEvent type is the
// message number (user messages lie in Qt's user event range).

#include <QEvent>
#include <optional>

#include "Platform/WinTypes.h"

class QObject;

struct WindowHandle;
using HWND = WindowHandle*;

constexpr UINT WM_USER = 0x0400;

class WindowMessageEvent : public QEvent {
public:
    WindowMessageEvent(UINT message, WPARAM wParam, LPARAM lParam);
    UINT Message() const { return static_cast<UINT>(type()); }
    WPARAM WParam() const { return wParam; }
    LPARAM LParam() const { return lParam; }

private:
    WPARAM wParam;
    LPARAM lParam;
};

// Returns the handle of a receiver, registering it on first use. The handle
// stays valid (and inert) after the object is destroyed.
HWND WindowHandleOf(QObject* receiver);
// Queues the message for the receiver; FALSE when the window has gone or the
// message number is outside the user event range.
BOOL PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// Asks the user-interface thread to quit with `exitCode`, as WM_QUIT does:
// every modal loop running now ends, and so does every one started later,
// at once. The first code posted is the one kept.
void PostQuitMessage(int exitCode);

namespace platform {
// The code of the first quit posted, if any.
std::optional<int> PendingQuitCode();
}  // namespace platform
