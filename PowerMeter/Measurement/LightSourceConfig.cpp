#include "PowerMeter/Measurement/LightSourceConfig.h"

#include <algorithm>

#include "Platform/FatalError.h"
#include "Platform/WideText.h"
#include "Support/ConfigError.h"
#include "Support/IniFile.h"
#include "Support/NarrowString.h"

namespace {
constexpr const char* kCannotRead = "Can't open and read config file";
constexpr const char* kCommonSection = "LightSource";
constexpr const char* kModelSectionPrefix = "LightSource_";
constexpr const char* kLasersNumKey = "LsLasersNum";
constexpr const char* kLaserIdKey = "LsLaserId%d";
constexpr const char* kLaserWaveLengthKey = "LsLaserWaveLength%d";
constexpr const char* kNoOPMKey = "NoOPM";
constexpr const char* kNoVFLKey = "NoVFL";

TNarrowString ModelSection(const std::wstring& modelTag) {
    return TNarrowString(kModelSectionPrefix) + platform::ToUtf8(modelTag).c_str();
}

// Only a model switch of exactly 1 is set; the common section's is ignored.
bool ModelSwitch(TIniSection* modelSection, const char* key) {
    if (modelSection == nullptr || modelSection->FindEntry(key) == nullptr) return false;
    return modelSection->GetInt(key, 0, false) == 1;
}
}  // namespace

CLightSourceConfig::CLightSourceConfig(const char* path, const std::wstring& modelTag) {
    TIniFile ini(path);
    if (ini.Load() != 0) throw CConfigError(kCannotRead);

    TIniSection* common = ini.FindSection(kCommonSection);
    TIniSection* model = ini.FindSection(ModelSection(modelTag));
    const LaserList a = common ? ParseLasers(common) : LaserList{};
    const LaserList b = model ? ParseLasers(model) : LaserList{};
    noOPM = ModelSwitch(model, kNoOPMKey);
    noVFL = ModelSwitch(model, kNoVFLKey);

    // LsLasersNum makes lasers exist; the descriptions only bound it.
    int count = b.countGiven ? b.count : (a.countGiven ? a.count : 0);
    const int described = static_cast<int>(std::max(a.lasers.size(), b.lasers.size()));
    count = std::clamp(count, 0, described);

    lasers.assign(static_cast<std::size_t>(count), Laser{});
    std::copy_n(a.lasers.begin(), std::min(a.lasers.size(), lasers.size()), lasers.begin());
    std::copy_n(b.lasers.begin(), std::min(b.lasers.size(), lasers.size()), lasers.begin());
}

CLightSourceConfig::Laser CLightSourceConfig::GetLaser(std::size_t laserIndex) const {
    OPM_ASSERT_AT(laserIndex < GetLasersNum(), "LightSourceConfig", 101);
    return lasers[laserIndex];
}

CLightSourceConfig::LaserList CLightSourceConfig::ParseLasers(TIniSection* section) {
    LaserList list;
    if (section->FindEntry(kLasersNumKey) != nullptr) {
        list.countGiven = true;
        list.count = section->GetInt(kLasersNumKey, 0, false);
    }
    for (int i = 0;; ++i) {
        TNarrowString idKey;
        idKey.Format(kLaserIdKey, i);
        if (section->FindEntry(idKey) == nullptr) break;
        const auto id = static_cast<std::uint32_t>(section->GetInt(idKey, 0, false));
        TNarrowString waveLengthKey;
        waveLengthKey.Format(kLaserWaveLengthKey, i);
        if (section->FindEntry(waveLengthKey) == nullptr) break;
        const int wavelen = section->GetInt(waveLengthKey, 0, false);
        OPM_ASSERT_AT(id >= 1, "LightSourceConfig", 131);
        OPM_ASSERT_AT(wavelen >= 0, "LightSourceConfig", 132);
        list.lasers.push_back(Laser{id, wavelen});
    }
    return list;
}

bool WriteNoOPM(const char* path, const std::wstring& modelTag, int value) {
    TIniFile ini(path);
    if (ini.Load() != 0) return false;
    TIniSection* section = ini.GetSection(ModelSection(modelTag));
    OPM_ASSERT_AT(section, "LightSourceConfig", 164);
    TIniEntry* key = section->GetEntry(kNoOPMKey);
    OPM_ASSERT_AT(key, "LightSourceConfig", 166);
    key->SetInt(value);
    return ini.Save() == 0;
}
