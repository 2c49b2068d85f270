#pragma once
// What the stand-in "OLT1:" driver exports besides the stream interface.

#include <cstdint>

#include "Platform/WinTypes.h"

struct MeterTestDriverCall {
    DWORD code;
    DWORD inSize;
    DWORD outSize;
    std::int32_t input;         // first word of the input buffer, if any
    std::int32_t outputBefore;  // the output word as the caller prepared it
};

extern "C" {
// Forgets the recorded calls; reads answer `reading` from now on.
void MeterTestDriverReset(std::int32_t reading);
// Copies up to `capacity` calls and returns how many there are.
int MeterTestDriverCalls(MeterTestDriverCall* buffer, int capacity);

using MeterTestDriverResetProc = void (*)(std::int32_t);
using MeterTestDriverCallsProc = int (*)(MeterTestDriverCall*, int);
}
