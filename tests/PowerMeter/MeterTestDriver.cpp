// A stand-in "OLT1:" driver for the hardware backend's tests: it answers a
// read with a reading the test sets and records every control call, which
// the test fetches through the library's own exports.

#include "PowerMeter/MeterTestDriver.h"

#include <cstring>
#include <mutex>
#include <vector>

#include "Platform/StreamDriver.h"

namespace {

std::mutex mutex;
std::vector<MeterTestDriverCall> calls;
std::int32_t reading = 0;

}  // namespace

extern "C" {

StreamContext OLT_Init(const wchar_t*, const void*) {
    return 1;
}

StreamContext OLT_Open(StreamContext, DWORD, DWORD) {
    return 1;
}

BOOL OLT_IOControl(StreamContext, DWORD code, BYTE* in, DWORD inSize, BYTE* out, DWORD outSize,
                   DWORD* bytesReturned) {
    std::lock_guard guard(mutex);
    MeterTestDriverCall call{code, inSize, outSize, 0, 0};
    if (in != nullptr && inSize >= sizeof(std::int32_t)) {
        std::memcpy(&call.input, in, sizeof(std::int32_t));
    }
    if (out != nullptr && outSize >= sizeof(std::int32_t)) {
        std::memcpy(&call.outputBefore, out, sizeof(std::int32_t));
        std::memcpy(out, &reading, sizeof(std::int32_t));
    }
    calls.push_back(call);
    if (bytesReturned != nullptr) {
        *bytesReturned = out != nullptr ? outSize : 0;
    }
    return TRUE;
}

BOOL OLT_Close(StreamContext) {
    return TRUE;
}

BOOL OLT_Deinit(StreamContext) {
    return TRUE;
}

void MeterTestDriverReset(std::int32_t newReading) {
    std::lock_guard guard(mutex);
    calls.clear();
    reading = newReading;
}

int MeterTestDriverCalls(MeterTestDriverCall* buffer, int capacity) {
    std::lock_guard guard(mutex);
    const int count = static_cast<int>(calls.size());
    for (int index = 0; index < count && index < capacity; ++index) {
        buffer[index] = calls[index];
    }
    return count;
}
}
