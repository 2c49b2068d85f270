#include "Platform/Library.h"

#include <dlfcn.h>

#include <QResource>
#include <atomic>
#include <mutex>
#include <string>

#include "Platform/DebugOutput.h"
#include "Platform/LastError.h"
#include "Platform/ModulePath.h"
#include "Platform/WideText.h"

struct LoadedModule {
    void* shared = nullptr;  // dlopen handle of a shared object
    QString packFile;        // a language pack's .rcc file
    QString root;            // where the pack is mapped in the resource tree
};

namespace {
std::atomic<HMODULE> resourceHandle{nullptr};
std::atomic<int> nextPackNumber{1};

bool EndsWith(const std::string& text, const std::string& suffix) {
    if (text.size() < suffix.size()) return false;
    for (size_t i = 0; i < suffix.size(); ++i) {
        const char c = text[text.size() - suffix.size() + i];
        if (std::tolower(static_cast<unsigned char>(c)) != suffix[i]) return false;
    }
    return true;
}

void Report(const std::string& what) {
    OutputDebugStringW(platform::FromUtf8(what + "\n").c_str());
}

HMODULE LoadLanguagePack(const std::string& path) {
    auto* module = new LoadedModule;
    module->packFile = QString::fromStdString(path);
    module->root = QStringLiteral("/res%1").arg(nextPackNumber++);
    if (!QResource::registerResource(module->packFile, module->root)) {
        Report("LoadLibrary: cannot register language pack " + path);
        delete module;
        SetLastError(ERROR_MOD_NOT_FOUND);
        return nullptr;
    }
    return module;
}

HMODULE LoadSharedObject(const std::string& path) {
    void* shared = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (shared == nullptr) {
        const char* error = dlerror();
        Report("LoadLibrary: " + std::string(error ? error : path));
        SetLastError(ERROR_MOD_NOT_FOUND);
        return nullptr;
    }
    auto* module = new LoadedModule;
    module->shared = shared;
    return module;
}
}  // namespace

namespace platform {

std::string ResolveLibraryPath(const std::wstring& fileName) {
    std::string path = ToUtf8(fileName);
    if (EndsWith(path, ".dll")) path.replace(path.size() - 4, 4, ".so");
    // Never a search path, never a current directory (the embedded OS has
    // none): anything relative lies below the executable's directory.
    if (path.empty() || path[0] != '/') path = ApplicationDirectory() + path;
    return path;
}

QString ResourceRoot(HMODULE module) {
    if (module == nullptr || module->root.isEmpty()) return {};
    return QStringLiteral(":") + module->root;
}

}  // namespace platform

HMODULE LoadLibraryW(LPCWSTR fileName) {
    if (fileName == nullptr || *fileName == L'\0') {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return nullptr;
    }
    const std::string path = platform::ResolveLibraryPath(fileName);
    return EndsWith(path, ".rcc") ? LoadLanguagePack(path) : LoadSharedObject(path);
}

FARPROC GetProcAddressW(HMODULE module, LPCWSTR procName) {
    if (module == nullptr || module->shared == nullptr || procName == nullptr) {
        SetLastError(ERROR_PROC_NOT_FOUND);
        return nullptr;
    }
    void* symbol = dlsym(module->shared, platform::ToUtf8(procName).c_str());
    if (symbol == nullptr) SetLastError(ERROR_PROC_NOT_FOUND);
    return reinterpret_cast<FARPROC>(symbol);
}

BOOL FreeLibrary(HMODULE module) {
    if (module == nullptr) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    bool released = true;
    if (module->shared != nullptr) released = dlclose(module->shared) == 0;
    if (!module->root.isEmpty())
        released = QResource::unregisterResource(module->packFile, module->root);
    HMODULE expected = module;
    resourceHandle.compare_exchange_strong(expected, nullptr);
    delete module;
    return released ? TRUE : FALSE;
}

void AfxSetResourceHandle(HMODULE module) {
    resourceHandle = module;
}

HMODULE AfxGetResourceHandle() {
    return resourceHandle;
}
