#include "PowerMeter/Devices/ModuleDll.h"

#include <array>
#include <cstring>
#include <mutex>
#include <string>

#include "Common/Settings/Logging.h"
#include "Platform/BluetoothControlCodes.h"
#include "Platform/StreamDevice.h"
#include "Platform/WideText.h"
#include "Support/LogFile.h"

TModuleDll* ModuleDll = nullptr;

namespace {
constexpr char kLoaderSource = 'M';
constexpr const char* kLoadedText = "module loaded:";
constexpr const char* kLoadErrorText = "error loading module:";

// Looks an export up under its wide name, as the embedded OS does.
FARPROC Resolve(HMODULE module, const char* name) {
    return GetProcAddressW(module, platform::FromUtf8(name).c_str());
}

template <typename Proc>
void Bind(Proc& entry, HMODULE module, const char* name) {
    entry = reinterpret_cast<Proc>(Resolve(module, name));
}
}  // namespace

TModuleDll::TModuleDll(const char* directory) : directory(directory) {}

TModuleDll::~TModuleDll() {
    if (module != nullptr) FreeLibrary(module);
}

bool TModuleDll::Load(const char* name, TLenUnit* lenUnit) {
    fileName = name;
    if (module != nullptr) {
        FreeLibrary(module);
        module = nullptr;
        // The old entry points lead into the unloaded library.
        ClearEntryPoints();
        isLoaded = 0;
    }

    // A name with a drive or device prefix is taken as it stands.
    TNarrowString path = fileName;
    const std::string requested = fileName.c_str();
    if (!directory.IsEmpty() && requested.find(':') == std::string::npos)
        path = directory + fileName;

    module = LoadLibraryW(platform::FromUtf8(path.c_str()).c_str());
    TLogFile* log = InstalledLogFile();
    if (module == nullptr) {
        if (log != nullptr) log->Error(kLoaderSource, kLoadErrorText, path);
        return false;
    }

    Initialise(lenUnit);
    if (log != nullptr) log->Message(kLoaderSource, kLoadedText, path);
    ResolveEntryPoints();
    isLoaded = 1;
    return true;
}

void TModuleDll::Initialise(TLenUnit* lenUnit) {
    // A module without its initialisation entry point is not supported.
    if (initMode == 0) {
        auto init = reinterpret_cast<DllInitProc>(Resolve(module, "DllInit"));
        init(directory, InstalledLogFile(), lenUnit);
    } else {
        DllInitParams params{1, InstalledLogFile(), lenUnit, text1, text2, text3};
        auto init = reinterpret_cast<DllInit2Proc>(Resolve(module, "DllInit2"));
        init(&params);
    }
}

void TModuleDll::ClearEntryPoints() {
    InitOTDR = nullptr;
    InitOTDREx = MeasFull = MeasStep = MeasStop = MeasPrepare = nullptr;
    ServiceFunction = nullptr;
    MD_AddContext = MD_AddDevice = MD_DeleteContext = MD_DeleteDevice = MD_InitOTDR = nullptr;
    MD_MeasFull = MD_MeasStep = MD_MeasStop = MD_MeasPrepare = MD_ServiceFunction = nullptr;
    GetSorSize = GetSorData = CreateSorPtr = DestroySorPtr = nullptr;
}

void TModuleDll::ResolveEntryPoints() {
    Bind(InitOTDR, module, "InitOTDR");
    Bind(InitOTDREx, module, "InitOTDREx");
    Bind(MeasFull, module, "MeasFull");
    Bind(ServiceFunction, module, "ServiceFunction");
    Bind(MeasStep, module, "MeasStep");
    Bind(MeasStop, module, "MeasStop");
    Bind(MeasPrepare, module, "MeasPrepare");
    Bind(MD_AddContext, module, "MD_AddContext");
    Bind(MD_AddDevice, module, "MD_AddDevice");
    Bind(MD_DeleteContext, module, "MD_DeleteContext");
    Bind(MD_DeleteDevice, module, "MD_DeleteDevice");
    Bind(MD_InitOTDR, module, "MD_InitOTDR");
    Bind(MD_MeasFull, module, "MD_MeasFull");
    Bind(MD_MeasStep, module, "MD_MeasStep");
    Bind(MD_MeasStop, module, "MD_MeasStop");
    Bind(MD_MeasPrepare, module, "MD_MeasPrepare");
    Bind(MD_ServiceFunction, module, "MD_ServiceFunction");
    Bind(GetSorSize, module, "GetSorSize");
    Bind(GetSorData, module, "GetSorData");
    Bind(CreateSorPtr, module, "CreateSorPtr");
    Bind(DestroySorPtr, module, "DestroySorPtr");
}

namespace {
constexpr DWORD kBluetoothBufferSize = 32;

std::mutex bluetoothLock;
HANDLE bluetoothDriver = INVALID_HANDLE_VALUE;

// Opens "BTD0:" unless a handle is already kept; it stays open for the run.
HANDLE BluetoothDriver() {
    std::lock_guard guard(bluetoothLock);
    if (bluetoothDriver == INVALID_HANDLE_VALUE) {
        bluetoothDriver =
            CreateFileW(L"BTD0:", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                        nullptr, OPEN_EXISTING, 0, nullptr);
    }
    return bluetoothDriver;
}
}  // namespace

DWORD BthGetHardwareStatus(int* status) {
    const HANDLE driver = BluetoothDriver();
    if (driver == INVALID_HANDLE_VALUE) return ERROR_SERVICE_NOT_ACTIVE;

    // The driver answers in the input buffer; there is no output buffer.
    std::array<BYTE, kBluetoothBufferSize> buffer{};
    if (!DeviceIoControl(driver, IOCTL_BTD_HARDWARE_STATUS, buffer.data(), kBluetoothBufferSize, nullptr,
                         0, nullptr, nullptr))
        return GetLastError();
    std::int32_t word = 0;
    std::memcpy(&word, buffer.data(), sizeof word);
    if (status != nullptr) *status = word;
    return 0;
}
