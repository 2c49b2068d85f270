#include "Common/Toolkit/NotifyEvent.h"

CNotifyEvent::CNotifyEvent(WPARAM wParam, NMHDR* header)
    : QEvent(EventType()), wParam(wParam), header(header) {}

QEvent::Type CNotifyEvent::EventType() {
    static const auto type = static_cast<QEvent::Type>(QEvent::registerEventType());
    return type;
}
