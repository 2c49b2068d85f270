#include "Platform/ModulePath.h"

#include <unistd.h>

#include <algorithm>
#include <climits>
#include <mutex>

#include "Platform/LastError.h"
#include "Platform/WideText.h"

namespace {
std::mutex overrideMutex;
std::wstring overriddenPath;

std::wstring ExecutablePath() {
    {
        std::lock_guard lock(overrideMutex);
        if (!overriddenPath.empty()) return overriddenPath;
    }
    char buffer[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", buffer, sizeof buffer - 1);
    if (length <= 0) return {};
    return platform::FromUtf8(std::string_view(buffer, static_cast<size_t>(length)));
}
}  // namespace

DWORD GetModuleFileNameW(void* /*module*/, LPWSTR buffer, DWORD size) {
    if (buffer == nullptr || size == 0) {
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return 0;
    }
    const std::wstring path = ExecutablePath();
    if (path.empty()) {
        buffer[0] = L'\0';
        SetLastError(ERROR_FILE_NOT_FOUND);
        return 0;
    }
    // Like the embedded OS: a short buffer gets the truncated, terminated name.
    const DWORD copied = static_cast<DWORD>(std::min<size_t>(path.size(), size - 1));
    path.copy(buffer, copied);
    buffer[copied] = L'\0';
    if (copied < path.size()) SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return copied;
}

namespace platform {
std::string ApplicationDirectory() {
    const std::string path = ToUtf8(ExecutablePath());
    const size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? std::string("./") : path.substr(0, slash + 1);
}

void OverrideModuleFileName(const std::wstring& path) {
    std::lock_guard lock(overrideMutex);
    overriddenPath = path;
}
}  // namespace platform
