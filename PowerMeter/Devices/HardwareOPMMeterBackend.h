#pragma once
// The power meter's backend on the stream driver "OLT1:". The device is
// opened once and stays open for the life of the process.

#include "Platform/WinTypes.h"
#include "PowerMeter/Measurement/OpmMeterBackend.h"

class CHardwareOpmMeterBackend : public COpmMeterBackend {
public:
    // Throws OPMMeterError "Can't create OLT1 driver file" when the device
    // can't be opened.
    CHardwareOpmMeterBackend();
    CHardwareOpmMeterBackend(const CHardwareOpmMeterBackend&) = delete;
    CHardwareOpmMeterBackend& operator=(const CHardwareOpmMeterBackend&) = delete;

    // A failed driver call is a hardware fault and ends the program.
    std::int32_t ReadPower(std::int32_t request) override;
    bool SetSwitch(int index, bool on) override;
    bool SetEnabled(bool enable) override;

private:
    HANDLE hOT;
};
