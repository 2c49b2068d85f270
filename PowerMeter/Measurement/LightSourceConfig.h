#pragma once
// Which lasers this model carries (identifier and wavelength of each) and the
// model switches NoOPM and NoVFL, read from the power meter's INI file. A
// per-model section overrides the common one laser by laser.

#include <cstdint>
#include <string>
#include <vector>

class TIniSection;

class CLightSourceConfig {
public:
    struct Laser {
        std::uint32_t identifier = 0;  // sent to the module; at least 1 for a described laser
        std::int32_t wavelength = 0;   // nm
    };

    // Reads `path`; throws CConfigError "Can't open and read config file"
    // when it can't be opened. `modelTag` names the per-model sections.
    CLightSourceConfig(const char* path, const std::wstring& modelTag);

    std::size_t GetLasersNum() const { return lasers.size(); }
    Laser GetLaser(std::size_t laserIndex) const;
    bool HasNoOPM() const { return noOPM; }
    bool HasNoVFL() const { return noVFL; }

private:
    // The lasers one section describes, up to the first gap in its keys.
    struct LaserList {
        bool countGiven = false;
        int count = 0;
        std::vector<Laser> lasers;
    };
    static LaserList ParseLasers(TIniSection* section);

    std::vector<Laser> lasers;
    bool noOPM = false;
    bool noVFL = false;
};

// Sets the model's NoOPM switch in `path` (section "LightSource_" + model
// tag, created when absent). False when the file can't be read or written.
// The light source reads it at the next start only.
bool WriteNoOPM(const char* path, const std::wstring& modelTag, int value);
