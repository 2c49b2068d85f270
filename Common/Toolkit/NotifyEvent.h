#pragma once
// A control's notification to its parent (the old system's WM_NOTIFY): sent,
// not posted, so the parent has handled it when the send returns.

#include <QEvent>

#include "Platform/WinTypes.h"
#include "Platform/WindowMessages.h"

constexpr UINT WM_NOTIFY = 0x004E;
// The message number of a reflected notification entry in a screen's table.
constexpr UINT OCM_NOTIFY = WM_NOTIFY + 0xBC00;

struct NMHDR {
    HWND hwndFrom;  // the window the notification is for
    UINT idFrom;    // the id of the control that notifies
    UINT code;      // what happened; a soft key's command id
};

class CNotifyEvent : public QEvent {
public:
    CNotifyEvent(WPARAM wParam, NMHDR* header);
    static QEvent::Type EventType();

    WPARAM WParam() const { return wParam; }
    NMHDR* Header() const { return header; }

private:
    WPARAM wParam;
    NMHDR* header;
};
