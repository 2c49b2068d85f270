// The entry points of the simulated OTDR module library (tavix_otdr.so).

#include <cstdint>

#include "Simulator/module/OtdrModule.h"

namespace {
// Field order fixed by the loader's extended initialisation block.
struct DllInitParams {
    std::int32_t version;
    TLogFile* log;
    TLenUnit* lenUnit;
    const char* text1;
    const char* text2;
    const char* text3;
};
constexpr std::int32_t kInitParamsVersion = 1;
}  // namespace

#define OPM_NOT_AVAILABLE(name)                                 \
    int name() {                                                \
        return sim::OtdrModule::Instance().NotAvailable(#name); \
    }

extern "C" {

int DllInit(const char* directory, TLogFile* log, TLenUnit* lenUnit) {
    return sim::OtdrModule::Instance().Init(directory, log, lenUnit);
}

int DllInit2(const DllInitParams* params) {
    if (params == nullptr || params->version != kInitParamsVersion)
        return sim::OtdrModule::kNotAvailable;
    return sim::OtdrModule::Instance().Init(nullptr, params->log, params->lenUnit);
}

int InitOTDR(int code, const char* idDll, int /*reserved*/) {
    return sim::OtdrModule::Instance().InitOtdr(code, idDll);
}

int ServiceFunction(int command, void* inOut, void* out) {
    return sim::OtdrModule::Instance().Service(command, inOut, out);
}

// Resolved by the application but never called: the simulated board measures no traces.
OPM_NOT_AVAILABLE(InitOTDREx)
OPM_NOT_AVAILABLE(MeasFull)
OPM_NOT_AVAILABLE(MeasStep)
OPM_NOT_AVAILABLE(MeasStop)
OPM_NOT_AVAILABLE(MeasPrepare)
OPM_NOT_AVAILABLE(MD_AddContext)
OPM_NOT_AVAILABLE(MD_AddDevice)
OPM_NOT_AVAILABLE(MD_DeleteContext)
OPM_NOT_AVAILABLE(MD_DeleteDevice)
OPM_NOT_AVAILABLE(MD_InitOTDR)
OPM_NOT_AVAILABLE(MD_MeasFull)
OPM_NOT_AVAILABLE(MD_MeasStep)
OPM_NOT_AVAILABLE(MD_MeasStop)
OPM_NOT_AVAILABLE(MD_MeasPrepare)
OPM_NOT_AVAILABLE(MD_ServiceFunction)
OPM_NOT_AVAILABLE(GetSorSize)
OPM_NOT_AVAILABLE(GetSorData)
OPM_NOT_AVAILABLE(CreateSorPtr)
OPM_NOT_AVAILABLE(DestroySorPtr)
}

#undef OPM_NOT_AVAILABLE
