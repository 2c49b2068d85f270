#pragma once
// SIGTERM and SIGINT as a request to the user-interface thread: the service
// manager and a terminal stop the program the same way as its own quit, so
// that it ends through its ordinary close path instead of dying mid-write.

#include <functional>

namespace platform {
// Installs the handlers once; `onRequest` then runs on the thread of the
// application object, from its event loop, once per signal. Needs a
// QCoreApplication.
void OnTerminationRequest(std::function<void()> onRequest);
}  // namespace platform
