#pragma once
// The power meter's only way to the detector and its measuring circuit. The
// meter owns its backend and deletes it through this interface.

#include <cstdint>

class COpmMeterBackend {
public:
    virtual ~COpmMeterBackend() = default;

    // One raw reading of the detector; the meter always passes 128.
    virtual std::int32_t ReadPower(std::int32_t request) = 0;
    // Sets one of the three switches (0..2) of the transimpedance amplifier.
    virtual bool SetSwitch(int index, bool on) = 0;
    // Powers the power-meter hardware on or off.
    virtual bool SetEnabled(bool enable) = 0;
};
