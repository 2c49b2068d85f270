#include "PowerMeter/Measurement/LightSource.h"

#include <algorithm>

#include "Platform/FatalError.h"
#include "PowerMeter/Devices/ModuleDll.h"

CLightSource::CLightSource(const CLightSourceConfig& config)
    : config(config), states(config.GetLasersNum()) {}

void CLightSource::SwitchOn(std::size_t laserIndex, int mode) {
    OPM_ASSERT_AT(laserIndex < GetLasersNum(), "LightSource", 16);
    ClearStates();
    states[laserIndex] = LaserState{true, mode};
    std::uint32_t parameter = config.GetLaser(laserIndex).identifier;
    if (mode == 1) parameter |= kModeBit;
    SendLaserWord(parameter);
}

void CLightSource::SwitchOff() {
    ClearStates();
    // Identifier 0 addresses every laser.
    SendLaserWord(0);
}

CLightSource::LaserState CLightSource::GetLaserState(std::size_t laserIndex) const {
    OPM_ASSERT_AT(laserIndex < GetLasersNum(), "LightSource", 30);
    return states[laserIndex];
}

int CLightSource::GetLaserWaveLength(std::size_t laserIndex) const {
    OPM_ASSERT_AT(laserIndex < GetLasersNum(), "LightSource", 36);
    return config.GetLaser(laserIndex).wavelength;
}

bool CLightSource::IsAnyLaserOn() const {
    return std::any_of(states.begin(), states.end(), [](const LaserState& s) { return s.on; });
}

void CLightSource::ClearStates() {
    std::fill(states.begin(), states.end(), LaserState{});
}

void CLightSource::SendLaserWord(std::uint32_t parameter) {
    // A module without ServiceFunction fails like a refused command.
    int result = 0;
    if (ModuleDll != nullptr && ModuleDll->ServiceFunction != nullptr)
        result = ModuleDll->ServiceFunction(TModuleDll::kSwitchLaser, &parameter, nullptr);
    OPM_ASSERT_AT(result == 1, "LightSource", 60);
}
