#include "Simulator/drivers/olt1/OltDevice.h"

#include <cstring>
#include <thread>

#include "Simulator/bench/Bench.h"
#include "Simulator/drivers/olt1/OltControlCodes.h"

namespace sim::olt {

bool OltDevice::IoControl(DWORD code, BYTE* in, DWORD inSize, BYTE* out, DWORD outSize,
                          DWORD& returned, DWORD& error) {
    returned = 0;
    const auto settings = Bench::Instance().Settings();
    if (settings->faults.failIoControl != 0 && settings->faults.failIoControl == code) {
        error = static_cast<DWORD>(settings->faults.failError);
        return false;
    }
    if (code == kReadPower) return ReadPower(in, inSize, out, outSize, returned, error);

    std::lock_guard lock(mutex);
    if (code == kEnable || code == kDisable) {
        frontEnd.SetEnabled(code == kEnable);
        return true;
    }
    for (const SwitchCode& entry : kSwitchCodes)
        if (entry.code == code) {
            frontEnd.Amplifier().SetSwitch(entry.index, entry.on);
            return true;
        }
    error = ERROR_NOT_SUPPORTED;
    return false;
}

bool OltDevice::ReadPower(BYTE* in, DWORD inSize, BYTE* out, DWORD outSize, DWORD& returned,
                          DWORD& error) {
    DWORD request = 0;
    if (in == nullptr || inSize < sizeof request || out == nullptr ||
        outSize < sizeof(std::int32_t)) {
        error = ERROR_INVALID_PARAMETER;
        return false;
    }
    std::memcpy(&request, in, sizeof request);
    if (request != kReadPhotodiode) {
        error = ERROR_INVALID_PARAMETER;
        return false;
    }

    std::lock_guard lock(mutex);
    const auto start = std::chrono::steady_clock::now();
    const auto settings = Bench::Instance().Settings();
    const std::int32_t counts =
        frontEnd.Convert(*settings, LightAtPort(*settings, Bench::Instance().Lasers()));
    // A conversion takes its time, as on the board: the caller's pace is the ADC's.
    std::this_thread::sleep_until(start +
                                  std::chrono::microseconds(settings->adc.conversionMicros));
    std::memcpy(out, &counts, sizeof counts);
    returned = sizeof counts;
    return true;
}

}  // namespace sim::olt
