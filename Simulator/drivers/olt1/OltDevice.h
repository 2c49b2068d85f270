#pragma once
// The simulated "OLT1:" device: the power-meter port's front end behind the
// driver's control codes.

#include <chrono>
#include <mutex>

#include "Platform/WinTypes.h"
#include "Simulator/bench/PowerMeterFrontEnd.h"

namespace sim::olt {

class OltDevice {
public:
    // False with `error` set when the call fails, as the driver reports it.
    bool IoControl(DWORD code, BYTE* in, DWORD inSize, BYTE* out, DWORD outSize, DWORD& returned,
                   DWORD& error);

private:
    bool ReadPower(BYTE* in, DWORD inSize, BYTE* out, DWORD outSize, DWORD& returned, DWORD& error);

    std::mutex mutex;
    PowerMeterFrontEnd frontEnd;
};

}  // namespace sim::olt
