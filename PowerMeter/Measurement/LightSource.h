#pragma once
// On/off state and mode of each laser of the light source, and the switching
// commands to the OTDR module. At most one laser is on: switching one on
// switches the others off, in the module too.

#include <cstddef>
#include <cstdint>
#include <vector>

#include "PowerMeter/Measurement/LightSourceConfig.h"

class CLightSource {
public:
    struct LaserState {
        bool on = false;
        int mode = 0;  // 0 or 1; mode 1 sets the mode bit of the command
    };

    // Bit of the 741 parameter word that selects mode 1.
    static constexpr std::uint32_t kModeBit = 256;

    // Keeps a reference to `config`, which must outlive the light source.
    explicit CLightSource(const CLightSourceConfig& config);

    std::size_t GetLasersNum() const { return config.GetLasersNum(); }
    LaserState GetLaserState(std::size_t laserIndex) const;
    int GetLaserWaveLength(std::size_t laserIndex) const;
    bool IsAnyLaserOn() const;

    // Switches laser `laserIndex` on in `mode` and every other laser off.
    void SwitchOn(std::size_t laserIndex, int mode);
    // Switches every laser off.
    void SwitchOff();

private:
    // Sends command 741; the module must answer 1.
    static void SendLaserWord(std::uint32_t parameter);
    void ClearStates();

    const CLightSourceConfig& config;
    std::vector<LaserState> states;
};
