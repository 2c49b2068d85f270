#include "Platform/DebugOutput.h"

#include <csignal>
#include <cstdio>
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
