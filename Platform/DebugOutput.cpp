#include "Platform/DebugOutput.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "Platform/WideText.h"

void OutputDebugStringW(LPCWSTR text) {
    if (text == nullptr) return;
    const std::string narrow = platform::ToUtf8(text);
    std::fwrite(narrow.data(), 1, narrow.size(), stderr);
    std::fflush(stderr);
}

void DebugBreak() {
    if (platform::IsDebuggerAttached()) std::raise(SIGTRAP);
}

namespace platform {
bool IsDebuggerAttached() {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.rfind("TracerPid:", 0) == 0) return std::stoi(line.substr(10)) != 0;
    }
    return false;
}
}  // namespace platform

namespace platform {
bool Tracing() {
    static const bool tracing = [] {
        const char* value = std::getenv("OPM_TRACE");
        return value != nullptr && std::string(value) == "1";
    }();
    return tracing;
}

void Trace(const std::wstring& line) {
    if (Tracing()) OutputDebugStringW((line + L"\n").c_str());
}
}  // namespace platform
