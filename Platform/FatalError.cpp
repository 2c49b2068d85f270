#include "Platform/FatalError.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <mutex>
#include <string_view>
#include <thread>

#include "Platform/DebugOutput.h"
#include "Platform/WideText.h"

namespace {
std::mutex boxMutex;
platform::FatalErrorBox errorBox;

// Exit handlers must run once: a thread that fails while another is already
// ending the process waits for the end instead.
[[noreturn]] void EndProcess() {
    static std::atomic<bool> ending{false};
    thread_local bool endingHere = false;
    if (endingHere) std::_Exit(1);  // a check failing inside an exit handler
    if (!ending.exchange(true)) {
        endingHere = true;
        std::exit(1);
    }
    for (;;) std::this_thread::sleep_for(std::chrono::hours(1));
}

// The name a technician knows the source by: no directory, no extension.
std::string_view SourceName(std::string_view file) {
    const size_t slash = file.find_last_of("/\\");
    if (slash != std::string_view::npos) file.remove_prefix(slash + 1);
    const size_t dot = file.find_last_of('.');
    if (dot != std::string_view::npos && dot > 0) file = file.substr(0, dot);
    return file;
}
}  // namespace

std::string FatalAssertionText(const char* expression, const char* file, int line) {
    std::string text = expression ? expression : "";
    text += "\nFile: ";
    text += SourceName(file ? file : "");
    text += "\nLine: ";
    text += std::to_string(line);
    text += "\nApplication will be closed";
    return text;
}

void FatalAssertion(const char* expression, const char* file, int line) {
    DebugBreak();
    const std::wstring text = platform::FromUtf8(FatalAssertionText(expression, file, line));
    OutputDebugStringW((text + L"\n").c_str());

    platform::FatalErrorBox box;
    {
        std::lock_guard lock(boxMutex);
        box = errorBox;
    }
    // The box keeps one box at a time: for a later failure it returns once
    // the first box has been closed.
    if (box) box(text);
    EndProcess();
}

namespace platform {
void SetFatalErrorBox(FatalErrorBox box) {
    std::lock_guard lock(boxMutex);
    errorBox = std::move(box);
}
}  // namespace platform
