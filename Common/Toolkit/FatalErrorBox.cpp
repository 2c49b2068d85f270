#include "Common/Toolkit/FatalErrorBox.h"

#include <QApplication>
#include <QEventLoop>
#include <QMessageBox>
#include <QMetaObject>
#include <QSemaphore>
#include <QThread>
#include <QTimer>
#include <condition_variable>
#include <memory>
#include <mutex>

#include "Common/Toolkit/PopupFrame.h"
#include "Platform/FatalError.h"

namespace {
constexpr const char* kTitle = "Unrecoverable error";
constexpr const char* kStyle = R"(
QMessageBox { background: #ffffff; border: 4px solid #b00000; }
QLabel { color: #000000; font-size: 17px; }
QLabel#qt_msgbox_label { font-size: 22px; font-weight: bold; color: #b00000; }
QPushButton { color: #000000; background: #ffcc00; border: 3px solid #000000; border-radius: 4px;
              min-width: 100px; min-height: 40px; font-size: 20px; font-weight: bold; }
)";

// How long a failing worker waits for the UI thread to take its box up. A UI
// thread that is itself blocked (waiting for that worker, say) never does, and
// the process must still end.
constexpr int kPickUpTimeoutMs = 3000;

// One box at a time. A failure while a box is up is mostly a consequence of
// the first and its text is on the debug output already: it shows no box but
// waits until that box is closed, so that the box stays up until it is read
// and the process ends only then. Never destroyed: threads may still wait on
// it while the process ends.
struct BoxState {
    std::mutex mutex;
    std::condition_variable closedChanged;
    bool up = false;
    unsigned closedBoxes = 0;
};
BoxState& State() {
    static auto* state = new BoxState;
    return *state;
}

void MarkClosed() {
    {
        std::lock_guard lock(State().mutex);
        if (!State().up) return;
        State().up = false;
        ++State().closedBoxes;
    }
    State().closedChanged.notify_all();
}

// Platforms that draw nowhere a person could read the box.
bool IsHeadlessPlatform(const QString& name) {
    return name == QLatin1String("offscreen") || name == QLatin1String("minimal");
}
}  // namespace

void CFatalErrorBox::Install() {
    platform::SetFatalErrorBox([](const std::wstring& text) {
        if (CanShow()) Show(text);
    });
}

bool CFatalErrorBox::CanShow() {
    return qobject_cast<QApplication*>(QCoreApplication::instance()) != nullptr &&
           !IsHeadlessPlatform(QGuiApplication::platformName());
}

void CFatalErrorBox::Show(const std::wstring& text) {
    QCoreApplication* app = QCoreApplication::instance();
    if (app == nullptr) return;
    {
        std::unique_lock lock(State().mutex);
        if (State().up) {
            const unsigned closedBefore = State().closedBoxes;
            lock.unlock();
            WaitUntilClosed(closedBefore);
            return;
        }
        State().up = true;
    }
    if (QThread::currentThread() == app->thread()) {
        ShowOnGuiThread(text);
        return;
    }

    struct Handshake {
        QSemaphore pickedUp;
        QSemaphore closed;
    };
    auto handshake = std::make_shared<Handshake>();
    QMetaObject::invokeMethod(
        app,
        [handshake, text] {
            handshake->pickedUp.release();
            ShowOnGuiThread(text);
            handshake->closed.release();
        },
        Qt::QueuedConnection);
    if (handshake->pickedUp.tryAcquire(1, kPickUpTimeoutMs)) handshake->closed.acquire();
}

// The instrument's screen has no window manager to draw a title bar, so the
// title is also the box's first, bold line and the box draws its own frame.
// Nothing here comes from the language pack: the pack may be what failed.
void CFatalErrorBox::ShowOnGuiThread(const std::wstring& text) {
    QWidget* parent = QApplication::activeWindow();
    QMessageBox box(QMessageBox::Critical, QString::fromLatin1(kTitle), QString::fromLatin1(kTitle),
                    QMessageBox::Ok, parent, Qt::Dialog | Qt::FramelessWindowHint);
    box.setInformativeText(QString::fromStdWString(text));
    box.setTextFormat(Qt::PlainText);
    box.setAttribute(Qt::WA_StyledBackground);
    box.setStyleSheet(QString::fromLatin1(kStyle));
    box.move(CPopupFrame::PlaceOver(box.sizeHint(), parent).topLeft());
    // Closed as soon as the user closes it, even while a later failure's wait
    // keeps this exec() from returning.
    QObject::connect(&box, &QDialog::finished, [] { MarkClosed(); });
    box.exec();
    MarkClosed();
}

void CFatalErrorBox::WaitUntilClosed(unsigned closedBefore) {
    const auto closed = [closedBefore] { return State().closedBoxes != closedBefore; };
    if (QThread::currentThread() != QCoreApplication::instance()->thread()) {
        std::unique_lock lock(State().mutex);
        State().closedChanged.wait(lock, closed);
        return;
    }
    // The UI thread, most likely a timer under the first box's own loop:
    // blocking here would freeze that box for good, so events go on.
    QEventLoop loop;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &loop, [&loop, closed] {
        std::lock_guard lock(State().mutex);
        if (closed()) loop.quit();
    });
    poll.start(10);
    loop.exec();
}
