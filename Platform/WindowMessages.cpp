#include "Platform/WindowMessages.h"

#include <QCoreApplication>
#include <QObject>
#include <QThread>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

struct WindowHandle {
    QObject* target;  // null once the window has gone
};

namespace {
// Handles are kept for the whole run so that a stale one stays safe to use.
struct HandleTable {
    std::mutex mutex;
    std::unordered_map<QObject*, WindowHandle*> byObject;
    std::vector<std::unique_ptr<WindowHandle>> all;
};

std::mutex quitMutex;
std::optional<int> pendingQuit;

HandleTable& Table() {
    static HandleTable table;
    return table;
}
}  // namespace

WindowMessageEvent::WindowMessageEvent(UINT message, WPARAM wParam, LPARAM lParam)
    : QEvent(static_cast<QEvent::Type>(message)), wParam(wParam), lParam(lParam) {}

HWND WindowHandleOf(QObject* receiver) {
    if (receiver == nullptr) return nullptr;
    HandleTable& table = Table();
    std::lock_guard lock(table.mutex);
    auto found = table.byObject.find(receiver);
    if (found != table.byObject.end()) return found->second;

    table.all.push_back(std::make_unique<WindowHandle>(WindowHandle{receiver}));
    WindowHandle* handle = table.all.back().get();
    table.byObject.emplace(receiver, handle);
    // Direct connection: runs inside ~QObject, before its posted events are dropped.
    QObject::connect(receiver, &QObject::destroyed, [receiver, handle] {
        HandleTable& t = Table();
        std::lock_guard guard(t.mutex);
        handle->target = nullptr;
        t.byObject.erase(receiver);
    });
    return handle;
}

BOOL PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (window == nullptr) return FALSE;
    if (message < QEvent::User || message > QEvent::MaxUser) return FALSE;
    HandleTable& table = Table();
    std::lock_guard lock(table.mutex);
    if (window->target == nullptr) return FALSE;
    QCoreApplication::postEvent(window->target, new WindowMessageEvent(message, wParam, lParam));
    return TRUE;
}

void PostQuitMessage(int exitCode) {
    {
        std::lock_guard lock(quitMutex);
        if (!pendingQuit) pendingQuit = exitCode;
    }
    // Ending the thread's event processing ends each of its running loops and
    // makes any loop started afterwards return at once, which is what the
    // modal loops of the embedded OS do once they have seen WM_QUIT.
    if (QCoreApplication* app = QCoreApplication::instance()) app->thread()->exit(exitCode);
}

namespace platform {
std::optional<int> PendingQuitCode() {
    std::lock_guard lock(quitMutex);
    return pendingQuit;
}
}  // namespace platform
