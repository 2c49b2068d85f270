#include "Platform/StreamDevice.h"

#include <cwctype>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>

#include "Platform/DebugOutput.h"
#include "Platform/Library.h"
#include "Platform/Registry.h"
#include "Platform/RegistryHive.h"
#include "Platform/StreamDeviceFaults.h"
#include "Platform/StreamDriver.h"
#include "Platform/WideText.h"

namespace {

constexpr const wchar_t* kBuiltInKey = L"Drivers\\BuiltIn\\";

// One activated driver: loaded and initialised once, kept while the process runs.
struct Device {
    std::wstring name;  // "OLT1"
    HMODULE library = nullptr;
    StreamContext context = 0;
    StreamOpenProc open = nullptr;
    StreamIoControlProc ioControl = nullptr;
    StreamCloseProc close = nullptr;
    StreamDeinitProc deinit = nullptr;
    StreamLastErrorProc lastError = nullptr;
    int openHandles = 0;

    DWORD DriverError() const {
        const DWORD error = lastError != nullptr ? lastError() : 0;
        return error != 0 ? error : static_cast<DWORD>(ERROR_GEN_FAILURE);
    }
};

struct OpenFile {
    std::shared_ptr<Device> device;
    StreamContext context = 0;
};

struct State {
    std::mutex mutex;
    std::map<std::wstring, std::shared_ptr<Device>> devices;
    // Handles are the addresses of OpenFile objects; only these are valid.
    std::map<HANDLE, std::shared_ptr<OpenFile>> handles;
};

State& Devices() {
    // Never destroyed: drivers and open handles last until the process ends.
    static State* const state = new State;
    return *state;
}

void Report(const std::wstring& text) {
    OutputDebugStringW((L"stream device: " + text + L"\n").c_str());
}

// "OLT1:" -> prefix "OLT", index 1: three characters, one digit, a colon.
bool ParseDeviceName(const std::wstring& name, std::wstring& prefix, DWORD& index) {
    if (name.size() != 5 || name[4] != L':' || !std::iswdigit(name[3])) return false;
    for (int i = 0; i < 3; ++i)
        if (!std::iswalnum(name[i])) return false;
    prefix = name.substr(0, 3);
    index = static_cast<DWORD>(name[3] - L'0');
    return true;
}

std::optional<std::wstring> ReadText(HKEY key, const wchar_t* value) {
    DWORD type = 0;
    DWORD size = 0;
    if (RegQueryValueExW(key, value, nullptr, &type, nullptr, &size) != ERROR_SUCCESS ||
        type != REG_SZ)
        return std::nullopt;
    std::wstring text(size / sizeof(WCHAR) + 1, L'\0');
    size = static_cast<DWORD>(text.size() * sizeof(WCHAR));
    if (RegQueryValueExW(key, value, nullptr, &type, reinterpret_cast<LPBYTE>(text.data()),
                         &size) != ERROR_SUCCESS)
        return std::nullopt;
    text.resize(std::wcslen(text.c_str()));
    return text;
}

// "Index" may be a DWORD or its decimal text.
std::optional<DWORD> ReadNumber(HKEY key, const wchar_t* value) {
    DWORD type = 0;
    DWORD number = 0;
    DWORD size = sizeof number;
    if (RegQueryValueExW(key, value, nullptr, &type, nullptr, &size) != ERROR_SUCCESS)
        return std::nullopt;
    if (type == REG_DWORD) {
        size = sizeof number;
        if (RegQueryValueExW(key, value, nullptr, &type, reinterpret_cast<LPBYTE>(&number),
                             &size) != ERROR_SUCCESS)
            return std::nullopt;
        return number;
    }
    const std::optional<std::wstring> text = ReadText(key, value);
    if (!text || text->empty()) return std::nullopt;
    try {
        size_t used = 0;
        const unsigned long parsed = std::stoul(*text, &used, 10);
        if (used != text->size()) return std::nullopt;
        return static_cast<DWORD>(parsed);
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

struct DriverEntry {
    std::wstring dll;
    std::wstring prefix;
};

// The device exists only when its key holds a complete, consistent entry.
std::optional<DriverEntry> FindDriverEntry(const std::wstring& keyName, const std::wstring& prefix,
                                           DWORD index) {
    const std::wstring path = kBuiltInKey + keyName;
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS ||
        key == nullptr)
        return std::nullopt;
    const std::optional<std::wstring> dll = ReadText(key, L"Dll");
    const std::optional<std::wstring> registeredPrefix = ReadText(key, L"Prefix");
    const std::optional<DWORD> registeredIndex = ReadNumber(key, L"Index");
    RegCloseKey(key);
    if (!dll || dll->empty() || !registeredPrefix || !registeredIndex) {
        Report(path + L": needs \"Dll\", \"Prefix\" and \"Index\"");
        return std::nullopt;
    }
    if (!platform::SameRegistryName(*registeredPrefix, prefix) || *registeredIndex != index) {
        Report(path + L": \"Prefix\" and \"Index\" do not name " + keyName);
        return std::nullopt;
    }
    return DriverEntry{*dll, *registeredPrefix};
}

template <typename Proc>
Proc Resolve(HMODULE library, const std::wstring& prefix, const wchar_t* entry) {
    return reinterpret_cast<Proc>(GetProcAddressW(library, (prefix + entry).c_str()));
}

// Loads and initialises the driver; on failure sets the last error.
std::shared_ptr<Device> Activate(const std::wstring& keyName, const DriverEntry& entry) {
    auto device = std::make_shared<Device>();
    device->name = keyName;
    device->library = LoadLibraryW(entry.dll.c_str());
    if (device->library == nullptr) {
        Report(keyName + L": cannot load " + entry.dll);
        SetLastError(ERROR_MOD_NOT_FOUND);
        return nullptr;
    }
    const auto init = Resolve<StreamInitProc>(device->library, entry.prefix, L"_Init");
    device->open = Resolve<StreamOpenProc>(device->library, entry.prefix, L"_Open");
    device->ioControl = Resolve<StreamIoControlProc>(device->library, entry.prefix, L"_IOControl");
    device->close = Resolve<StreamCloseProc>(device->library, entry.prefix, L"_Close");
    device->deinit = Resolve<StreamDeinitProc>(device->library, entry.prefix, L"_Deinit");
    device->lastError =
        Resolve<StreamLastErrorProc>(device->library, entry.prefix, L"_GetLastError");
    if (init == nullptr || device->open == nullptr || device->ioControl == nullptr ||
        device->close == nullptr || device->deinit == nullptr) {
        Report(keyName + L": " + entry.dll + L" lacks an entry point of the stream interface");
        FreeLibrary(device->library);
        SetLastError(ERROR_PROC_NOT_FOUND);
        return nullptr;
    }
    const std::wstring activeKey = kBuiltInKey + keyName;
    device->context = init(activeKey.c_str(), nullptr);
    if (device->context == 0) {
        const DWORD error = device->DriverError();
        FreeLibrary(device->library);
        SetLastError(error);
        return nullptr;
    }
    return device;
}

std::shared_ptr<OpenFile> Lookup(HANDLE handle) {
    State& state = Devices();
    std::lock_guard lock(state.mutex);
    const auto found = state.handles.find(handle);
    return found == state.handles.end() ? nullptr : found->second;
}

bool Consume(std::atomic<DWORD>& fault, DWORD& error) {
    error = fault.exchange(0);
    return error != 0;
}

}  // namespace

namespace platform {

StreamDeviceFaults& InjectStreamDeviceFaults() {
    static StreamDeviceFaults faults;
    return faults;
}

void DeactivateStreamDevices() {
    State& state = Devices();
    std::lock_guard lock(state.mutex);
    for (auto it = state.devices.begin(); it != state.devices.end();) {
        Device& device = *it->second;
        if (device.openHandles > 0) {
            ++it;
            continue;
        }
        device.deinit(device.context);
        FreeLibrary(device.library);
        it = state.devices.erase(it);
    }
}

}  // namespace platform

HANDLE CreateFileW(LPCWSTR name, DWORD access, DWORD shareMode, SECURITY_ATTRIBUTES* /*security*/,
                   DWORD creation, DWORD /*flags*/, HANDLE /*templateFile*/) {
    if (name == nullptr || creation != OPEN_EXISTING) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return INVALID_HANDLE_VALUE;
    }
    std::wstring prefix;
    DWORD index = 0;
    if (!ParseDeviceName(name, prefix, index)) {
        SetLastError(ERROR_FILE_NOT_FOUND);
        return INVALID_HANDLE_VALUE;
    }
    // Device names, like registry names, ignore case.
    std::wstring keyName = std::wstring(name).substr(0, 4);
    for (wchar_t& c : keyName) c = static_cast<wchar_t>(std::towupper(static_cast<wint_t>(c)));

    State& state = Devices();
    std::lock_guard lock(state.mutex);
    std::shared_ptr<Device>& device = state.devices[keyName];
    if (device == nullptr) {
        const std::optional<DriverEntry> entry = FindDriverEntry(keyName, prefix, index);
        if (!entry) {
            state.devices.erase(keyName);
            SetLastError(ERROR_FILE_NOT_FOUND);
            return INVALID_HANDLE_VALUE;
        }
        device = Activate(keyName, *entry);
        if (device == nullptr) {
            const DWORD error = GetLastError();
            state.devices.erase(keyName);
            SetLastError(error);
            return INVALID_HANDLE_VALUE;
        }
    }

    DWORD injected = 0;
    if (Consume(platform::InjectStreamDeviceFaults().failNextOpen, injected)) {
        SetLastError(injected);
        return INVALID_HANDLE_VALUE;
    }
    const StreamContext context = device->open(device->context, access, shareMode);
    if (context == 0) {
        SetLastError(device->DriverError());
        return INVALID_HANDLE_VALUE;
    }
    auto file = std::make_shared<OpenFile>(OpenFile{device, context});
    ++device->openHandles;
    const HANDLE handle = file.get();
    state.handles.emplace(handle, std::move(file));
    return handle;
}

BOOL DeviceIoControl(HANDLE device, DWORD code, LPVOID inBuffer, DWORD inSize, LPVOID outBuffer,
                     DWORD outSize, LPDWORD bytesReturned, OVERLAPPED* /*overlapped*/) {
    const std::shared_ptr<OpenFile> file = Lookup(device);
    if (file == nullptr) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    platform::StreamDeviceFaults& faults = platform::InjectStreamDeviceFaults();
    const DWORD onlyCode = faults.failIoControlCode.load();
    DWORD injected = 0;
    if ((onlyCode == 0 || onlyCode == code) && Consume(faults.failNextIoControl, injected)) {
        faults.failIoControlCode = 0;
        SetLastError(injected);
        return FALSE;
    }
    DWORD returned = 0;
    // The driver runs outside the table's lock: one slow read must not hold up other devices.
    const BOOL result =
        file->device->ioControl(file->context, code, static_cast<BYTE*>(inBuffer), inSize,
                                static_cast<BYTE*>(outBuffer), outSize, &returned);
    if (bytesReturned != nullptr) *bytesReturned = returned;
    if (!result) {
        SetLastError(file->device->DriverError());
        return FALSE;
    }
    return TRUE;
}

BOOL CloseHandle(HANDLE handle) {
    std::shared_ptr<OpenFile> file;
    {
        State& state = Devices();
        std::lock_guard lock(state.mutex);
        const auto found = state.handles.find(handle);
        if (found == state.handles.end()) {
            SetLastError(ERROR_INVALID_HANDLE);
            return FALSE;
        }
        file = found->second;
        state.handles.erase(found);
        --file->device->openHandles;
    }
    if (!file->device->close(file->context)) {
        SetLastError(file->device->DriverError());
        return FALSE;
    }
    return TRUE;
}
