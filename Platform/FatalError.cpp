#include "Platform/FatalError.h"

#include <atomic>
#include <cstdlib>
#include <mutex>
#include <string_view>

#include "Platform/DebugOutput.h"
#include "Platform/WideText.h"

namespace {
std::mutex boxMutex;
platform::FatalErrorBox errorBox;
std::atomic<bool> failing{false};

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
    // A check that fails while the box of an earlier one is up must not stack boxes.
    if (failing.exchange(true)) std::exit(1);

    DebugBreak();
    const std::wstring text = platform::FromUtf8(FatalAssertionText(expression, file, line));
    OutputDebugStringW((text + L"\n").c_str());

    platform::FatalErrorBox box;
    {
        std::lock_guard lock(boxMutex);
        box = errorBox;
    }
    if (box) box(text);
    std::exit(1);
}

namespace platform {
void SetFatalErrorBox(FatalErrorBox box) {
    std::lock_guard lock(boxMutex);
    errorBox = std::move(box);
}
}  // namespace platform
