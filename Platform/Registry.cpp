#include "Platform/Registry.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include "Platform/AtomicFile.h"
#include "Platform/DebugOutput.h"
#include "Platform/ModulePath.h"
#include "Platform/RegistryHive.h"
#include "Platform/WideText.h"

struct RegistryKey {
    std::wstring path;
};

namespace {

constexpr const wchar_t* kRootName = L"HKEY_LOCAL_MACHINE";
RegistryKey localMachine{kRootName};

struct State {
    std::recursive_mutex mutex;
    bool loaded = false;
    std::string path;
    platform::RegistryHive hive;
    platform::RegistryFaults faults;
};

State& Registry() {
    static State state;
    return state;
}

void ReportRejectedLine(const std::string& path, int number, const std::string& line) {
    const std::string text =
        "registry: " + path + ":" + std::to_string(number) + ": line ignored: " + line + "\n";
    OutputDebugStringW(platform::FromUtf8(text).c_str());
}

void Replace(State& state, const std::string& text, const std::string& path) {
    state.hive = platform::RegistryHive::Parse(
        text, [&](int number, const std::string& line) { ReportRejectedLine(path, number, line); });
    state.path = path;
    state.loaded = true;
}

// The registry is read from its file on first use, as the OS does at boot.
State& LoadedRegistry() {
    State& state = Registry();
    if (!state.loaded) platform::LoadHive(platform::DefaultHivePath());
    return state;
}

bool IsValidKey(HKEY key) {
    return key == HKEY_LOCAL_MACHINE || key != nullptr;
}

bool Consume(bool& fault) {
    const bool armed = fault;
    fault = false;
    return armed;
}

}  // namespace

const HKEY HKEY_LOCAL_MACHINE = &localMachine;

LONG RegOpenKeyExW(HKEY root, LPCWSTR subKey, DWORD /*options*/, REGSAM /*access*/, PHKEY result) {
    if (result == nullptr || root != HKEY_LOCAL_MACHINE) return ERROR_INVALID_PARAMETER;
    State& state = LoadedRegistry();
    std::lock_guard lock(state.mutex);
    std::wstring path = kRootName;
    if (subKey != nullptr && *subKey != L'\0') path += L"\\" + std::wstring(subKey);
    if (!state.hive.KeyExists(path)) return ERROR_FILE_NOT_FOUND;
    if (Consume(state.faults.nullHandleOnNextOpen)) {
        *result = nullptr;
        return ERROR_SUCCESS;
    }
    *result = new RegistryKey{path};
    return ERROR_SUCCESS;
}

LONG RegQueryValueExW(HKEY key, LPCWSTR valueName, LPDWORD /*reserved*/, LPDWORD type, LPBYTE data,
                      LPDWORD dataSize) {
    if (!IsValidKey(key)) return ERROR_INVALID_HANDLE;
    State& state = LoadedRegistry();
    std::lock_guard lock(state.mutex);
    platform::RegistryKeyData* keyData = state.hive.FindKey(key->path);
    if (keyData == nullptr) return ERROR_FILE_NOT_FOUND;
    const platform::RegistryValue* value =
        platform::RegistryHive::FindValue(*keyData, valueName ? valueName : L"");
    if (value == nullptr) return ERROR_FILE_NOT_FOUND;

    std::basic_string<BYTE> bytes;
    if (value->type == REG_DWORD) {
        bytes.assign(reinterpret_cast<const BYTE*>(&value->number), sizeof(DWORD));
    } else {
        bytes.assign(reinterpret_cast<const BYTE*>(value->text.c_str()),
                     (value->text.size() + 1) * sizeof(WCHAR));
    }
    if (type != nullptr) *type = value->type;
    if (dataSize == nullptr) return data == nullptr ? ERROR_SUCCESS : ERROR_INVALID_PARAMETER;
    if (data == nullptr) {
        *dataSize = static_cast<DWORD>(bytes.size());
        return ERROR_SUCCESS;
    }
    if (*dataSize < bytes.size()) {
        *dataSize = static_cast<DWORD>(bytes.size());
        return ERROR_MORE_DATA;
    }
    size_t delivered = bytes.size();
    if (Consume(state.faults.shortNextRead) && delivered >= sizeof(WCHAR))
        delivered -= sizeof(WCHAR);
    std::memcpy(data, bytes.data(), delivered);
    *dataSize = static_cast<DWORD>(delivered);
    return ERROR_SUCCESS;
}

LONG RegSetValueExW(HKEY key, LPCWSTR valueName, DWORD /*reserved*/, DWORD type, const BYTE* data,
                    DWORD dataSize) {
    if (!IsValidKey(key)) return ERROR_INVALID_HANDLE;
    if (type != REG_SZ && type != REG_DWORD) return ERROR_NOT_SUPPORTED;
    if (data == nullptr && dataSize != 0) return ERROR_INVALID_PARAMETER;
    State& state = LoadedRegistry();
    std::lock_guard lock(state.mutex);
    if (Consume(state.faults.failNextSet)) return ERROR_ACCESS_DENIED;
    if (!state.hive.KeyExists(key->path)) return ERROR_FILE_NOT_FOUND;

    platform::RegistryValue value;
    value.name = valueName ? valueName : L"";
    value.type = type;
    if (type == REG_DWORD) {
        if (dataSize != sizeof(DWORD)) return ERROR_INVALID_PARAMETER;
        std::memcpy(&value.number, data, sizeof(DWORD));
    } else {
        std::wstring text(dataSize / sizeof(WCHAR), L'\0');
        if (!text.empty()) std::memcpy(text.data(), data, text.size() * sizeof(WCHAR));
        // The stored string ends at its terminator, as REG_SZ readers expect.
        text.resize(std::wcslen(text.c_str()));
        value.text = text;
    }
    platform::RegistryKeyData& keyData = state.hive.AddKey(key->path);
    if (platform::RegistryValue* existing = platform::RegistryHive::FindValue(keyData, value.name))
        *existing = value;
    else
        keyData.values.push_back(value);
    return ERROR_SUCCESS;
}

LONG RegFlushKey(HKEY key) {
    if (!IsValidKey(key)) return ERROR_INVALID_HANDLE;
    State& state = LoadedRegistry();
    std::lock_guard lock(state.mutex);
    if (Consume(state.faults.failNextFlush)) return ERROR_GEN_FAILURE;
    // A hive made in memory without a file has nothing to persist to.
    if (state.path.empty()) return ERROR_SUCCESS;
    return platform::WriteFileAtomically(state.path, state.hive.Serialize()) ? ERROR_SUCCESS
                                                                             : ERROR_GEN_FAILURE;
}

LONG RegCloseKey(HKEY key) {
    State& state = Registry();
    {
        std::lock_guard lock(state.mutex);
        if (Consume(state.faults.failNextClose)) {
            if (key != HKEY_LOCAL_MACHINE) delete key;
            return ERROR_INVALID_HANDLE;
        }
    }
    if (key == nullptr) return ERROR_INVALID_HANDLE;
    if (key != HKEY_LOCAL_MACHINE) delete key;
    return ERROR_SUCCESS;
}

namespace platform {

std::string DefaultHivePath() {
    if (const char* path = std::getenv("TAVIX_REGISTRY"); path != nullptr && *path != '\0')
        return path;
    return ApplicationDirectory() + "registry.reg";
}

bool LoadHive(const std::string& path) {
    State& state = Registry();
    std::lock_guard lock(state.mutex);
    std::string text;
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    bool read = fd >= 0;
    char buffer[16384];
    while (read) {
        const ssize_t got = ::read(fd, buffer, sizeof buffer);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) {
            read = got == 0;
            break;
        }
        text.append(buffer, static_cast<size_t>(got));
    }
    const int error = errno;
    if (fd >= 0) close(fd);
    if (!read) {
        // An empty registry only shows later, as a missing resource: say why here.
        const std::string message =
            "registry: cannot read " + path + ": " + std::strerror(error) + "\n";
        OutputDebugStringW(platform::FromUtf8(message).c_str());
    }
    Replace(state, read ? text : std::string(), path);
    // A missing file is an empty registry, not a failure.
    return read || error == ENOENT || error == ENOTDIR;
}

void LoadHiveFromText(const std::string& text, const std::string& path) {
    State& state = Registry();
    std::lock_guard lock(state.mutex);
    Replace(state, text, path);
}

std::string HiveAsText() {
    State& state = LoadedRegistry();
    std::lock_guard lock(state.mutex);
    return state.hive.Serialize();
}

std::string HivePath() {
    State& state = LoadedRegistry();
    std::lock_guard lock(state.mutex);
    return state.path;
}

void CreateRegistryKey(const std::wstring& fullPath) {
    State& state = LoadedRegistry();
    std::lock_guard lock(state.mutex);
    state.hive.AddKey(fullPath);
}

void DeleteRegistryKey(const std::wstring& fullPath) {
    State& state = LoadedRegistry();
    std::lock_guard lock(state.mutex);
    state.hive.DeleteKey(fullPath);
}

RegistryFaults& InjectRegistryFaults() {
    return Registry().faults;
}

}  // namespace platform
