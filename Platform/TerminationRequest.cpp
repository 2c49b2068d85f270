#include "Platform/TerminationRequest.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QSocketNotifier>
#include <cerrno>

namespace {
// The self-pipe: a signal handler may only write(2); the notifier turns the
// byte into a call on the application's thread.
int pipeEnds[2] = {-1, -1};

void HandleSignal(int) {
    const int savedErrno = errno;
    const char byte = 1;
    [[maybe_unused]] const ssize_t written = write(pipeEnds[1], &byte, 1);
    errno = savedErrno;
}
}  // namespace

namespace platform {
void OnTerminationRequest(std::function<void()> onRequest) {
    QCoreApplication* app = QCoreApplication::instance();
    if (app == nullptr || pipeEnds[0] >= 0) return;
    if (pipe2(pipeEnds, O_CLOEXEC | O_NONBLOCK) != 0) return;
    auto* notifier = new QSocketNotifier(pipeEnds[0], QSocketNotifier::Read, app);
    QObject::connect(notifier, &QSocketNotifier::activated, app, [onRequest = std::move(onRequest)] {
        char bytes[16];
        while (read(pipeEnds[0], bytes, sizeof bytes) > 0) {
        }
        onRequest();
    });
    struct sigaction action = {};
    action.sa_handler = HandleSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGINT, &action, nullptr);
}
}  // namespace platform
