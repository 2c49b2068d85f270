#pragma once
// Loader of the OTDR hardware module library: loads it from the application
// directory, hands it the application's log file and length-unit object, and
// resolves its entry points into a table the device code calls through.
// The same area holds the probe of the Bluetooth driver "BTD0:".

#include <cstdint>

#include "Platform/Library.h"
#include "Support/NarrowString.h"

class TLogFile;
class TLenUnit;

// The extended initialisation block of DllInit2, field order fixed by the module.
struct DllInitParams {
    std::int32_t version;  // 1
    TLogFile* log;
    TLenUnit* lenUnit;
    const char* text1;
    const char* text2;
    const char* text3;
};

// Signatures of the entry points this program calls. The others are resolved
// only, so their pointers keep the generic type.
extern "C" {
using DllInitProc = int (*)(const char* directory, TLogFile* log, TLenUnit* lenUnit);
using DllInit2Proc = int (*)(const DllInitParams* params);
// 0 = success.
using InitOTDRProc = int (*)(int code, const char* idDll, int reserved);
// Command 715: (int* inOut, char** text); 741: (uint32* word, null) → 1 = success;
// 743: (int* count, uint16 (*list)[2]*) → the caller frees the list with delete[].
using ServiceFunctionProc = int (*)(int command, void* inOut, void* out);
}

class TModuleDll {
public:
    static constexpr const char* kModuleFileName = "tavix_otdr.dll";
    // Code of the single InitOTDR call this program makes.
    static constexpr int kInitOTDRCode = 109;
    // ServiceFunction commands.
    static constexpr int kReadHardwareId = 715;
    static constexpr int kSwitchLaser = 741;
    static constexpr int kListLasers = 743;

    // `directory` ends in its separator; bare file names are taken from it.
    explicit TModuleDll(const char* directory);
    // Frees the library. The process-wide loader is never destroyed, because
    // the module keeps the log file and the unit object it was given.
    ~TModuleDll();
    TModuleDll(const TModuleDll&) = delete;
    TModuleDll& operator=(const TModuleDll&) = delete;

    // Loads the library (a loaded one is freed first, and its entry points
    // cleared), initialises it with the log file and `lenUnit`, and resolves
    // the entry points. False when the library can't be loaded; the table is
    // then left as it was.
    bool Load(const char* fileName, TLenUnit* lenUnit);

    bool IsLoaded() const { return isLoaded != 0; }
    HMODULE Handle() const { return module; }
    const TNarrowString& Directory() const { return directory; }
    const TNarrowString& FileName() const { return fileName; }

    // The entry-point table: null where the library lacks the export.
    InitOTDRProc InitOTDR = nullptr;
    FARPROC InitOTDREx = nullptr;
    FARPROC MeasFull = nullptr;
    ServiceFunctionProc ServiceFunction = nullptr;
    FARPROC MeasStep = nullptr;
    FARPROC MeasStop = nullptr;
    FARPROC MeasPrepare = nullptr;
    FARPROC MD_AddContext = nullptr;
    FARPROC MD_AddDevice = nullptr;
    FARPROC MD_DeleteContext = nullptr;
    FARPROC MD_DeleteDevice = nullptr;
    FARPROC MD_InitOTDR = nullptr;
    FARPROC MD_MeasFull = nullptr;
    FARPROC MD_MeasStep = nullptr;
    FARPROC MD_MeasStop = nullptr;
    FARPROC MD_MeasPrepare = nullptr;
    FARPROC MD_ServiceFunction = nullptr;
    FARPROC GetSorSize = nullptr;
    FARPROC GetSorData = nullptr;
    FARPROC CreateSorPtr = nullptr;
    FARPROC DestroySorPtr = nullptr;

private:
    void Initialise(TLenUnit* lenUnit);
    void ResolveEntryPoints();
    void ClearEntryPoints();

    int isLoaded = 0;
    TNarrowString text1;
    TNarrowString text2;
    TNarrowString text3;
    // 0: initialised through DllInit; 1: through DllInit2. Always 0 here.
    int initMode = 0;
    HMODULE module = nullptr;
    TNarrowString directory;
    TNarrowString fileName;
};

// The process-wide loader: created by the device manager on first use and
// never deleted; null before that.
extern TModuleDll* ModuleDll;

// Bluetooth hardware status as the stack reports it (1 not present, 3 running,
// 4 shut down, 5 error, ...), read from the "BTD0:" driver. The driver is
// opened on first use and kept open. Returns 0 and sets `status`, or
// ERROR_SERVICE_NOT_ACTIVE (1062) when the driver can't be opened, or the
// driver's error code.
DWORD BthGetHardwareStatus(int* status);
