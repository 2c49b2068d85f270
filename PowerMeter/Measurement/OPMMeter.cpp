#include "PowerMeter/Measurement/OPMMeter.h"

#include <cmath>
#include <exception>
#include <limits>
#include <string>
#include <utility>

#include "Platform/FatalError.h"
#include "Platform/WideText.h"
#include "Support/IniFile.h"

namespace {

constexpr const char* kSourceFile = "OPMMeter";

constexpr int kLoopPauseMs = 300;
constexpr int kSamplePauseMs = 1;
constexpr int kZeroSettleMs = 200;
constexpr int kZeroRangePauseMs = 100;
constexpr const char* kUnknownWorkerFailure = "Unknown exception";

// Switch 0, 1, 2 per gain range; range 0 is the most sensitive.
constexpr bool kRangeSwitches[ZuOPMMeter::kRangesNum][3] = {
    {true, false, false},
    {true, false, true},
    {false, true, true},
};

// Truncation towards zero that stays defined for any float or double.
template <typename Real>
std::int32_t TruncateToInt(Real value) {
    if (std::isnan(value)) {
        return 0;
    }
    if (value >= static_cast<Real>(std::numeric_limits<std::int32_t>::max())) {
        return std::numeric_limits<std::int32_t>::max();
    }
    if (value <= static_cast<Real>(std::numeric_limits<std::int32_t>::min())) {
        return std::numeric_limits<std::int32_t>::min();
    }
    return static_cast<std::int32_t>(value);
}

// WavesNum is compared with the slot count as an unsigned number, so a
// negative count means every slot.
int CapWavesNum(int wavesNum) {
    return static_cast<unsigned>(wavesNum) > static_cast<unsigned>(ZuOPMMeter::kMaxWaves)
               ? ZuOPMMeter::kMaxWaves
               : wavesNum;
}

bool IsSlot(int slot) {
    return slot >= 0 && slot < ZuOPMMeter::kMaxWaves;
}

TNarrowString Indexed(const char* format, int index) {
    TNarrowString text;
    text.Format(format, index);
    return text;
}

}  // namespace

ZuOPMMeter::ZuOPMMeter(const TNarrowString& calibrationFile, const std::wstring& modelTag,
                       std::unique_ptr<COpmMeterBackend> backend, SleepFunction sleep)
    : calibrationFile(calibrationFile),
      modelTag(modelTag),
      backend(std::move(backend)),
      sleep(std::move(sleep)) {
    OPM_ASSERT_AT(this->backend.get() && "Wrong OPM meter backend", kSourceFile, 72);
    if (!this->sleep) {
        this->sleep = [](std::chrono::milliseconds pause) { std::this_thread::sleep_for(pause); };
    }
    LoadCalibration(this->calibrationFile.c_str());
    ActiveWaveLength.store(GetWaveLength(ActiveWaveLengthIndex.load()));
}

ZuOPMMeter::~ZuOPMMeter() {
    // Unlike Stop, the destructor must not leave a worker behind that still
    // uses the backend and the lock.
    stopRequested.store(true);
    if (worker.joinable()) {
        worker.join();
    }
    SaveUserState(nullptr);
}

void ZuOPMMeter::Start() {
    if (!stopRequested.load() && (running.load() || starting.load())) {
        return;
    }
    // One worker at a time: a stopped one may still be finishing its last
    // measurement, so a quick restart waits for it rather than being lost.
    if (worker.joinable()) {
        worker.join();
    }
    currentRange.store(1);
    stopRequested.store(false);
    SetRange(1);
    starting.store(true);
    worker = std::thread(&ZuOPMMeter::MeasurementLoop, this);
}

void ZuOPMMeter::Stop() {
    if (running.load() || starting.load()) {
        stopRequested.store(true);
    }
}

void ZuOPMMeter::StopAndWait() {
    Stop();
    if (worker.joinable()) {
        worker.join();
    }
}

void ZuOPMMeter::MeasurementLoop() {
    running.store(true);
    starting.store(false);
    std::unique_lock<std::recursive_mutex> guard(lock, std::defer_lock);
    // An exception leaving a std::thread would abort without a word; a
    // failing worker takes the fatal path with what it knows instead.
    try {
        backend->SetEnabled(true);
        guard.lock();
        while (!stopRequested.load()) {
            Pause(kLoopPauseMs);
            lastPower.store(MeasurePower());
            UpdateRange();
            NotifySubscribers();
            // Zeroing and reference calibration run between two iterations.
            guard.unlock();
            while (lockWaiters.load() > 0 && !stopRequested.load()) {
                std::this_thread::yield();
            }
            guard.lock();
        }
    } catch (const std::exception& error) {
        WorkerFailed(guard, error.what());
    } catch (...) {
        WorkerFailed(guard, kUnknownWorkerFailure);
    }
    running.store(false);
    guard.unlock();
    backend->SetEnabled(false);
}

void ZuOPMMeter::WorkerFailed(std::unique_lock<std::recursive_mutex>& guard, const char* what) {
    running.store(false);
    if (guard.owns_lock()) {
        guard.unlock();
    }
    // The hardware is switched off on the way out, as far as it still answers.
    try {
        backend->SetEnabled(false);
    } catch (...) {
    }
    FatalAssertion(what, kSourceFile, __LINE__);
}

std::unique_lock<std::recursive_mutex> ZuOPMMeter::LockBetweenIterations() {
    ++lockWaiters;
    std::unique_lock<std::recursive_mutex> guard(lock);
    --lockWaiters;
    return guard;
}

void ZuOPMMeter::Pause(int milliseconds) {
    sleep(std::chrono::milliseconds(milliseconds));
}

float ZuOPMMeter::AveragedAdc(int NumberOfAverages) {
    OPM_ASSERT_AT(NumberOfAverages > 0, kSourceFile, 225);
    const std::int32_t cap = TruncateToInt(MaxADC);
    // Wider than the 32 bits of the sum it replaces, so that no count overflows.
    std::int64_t sum = 0;
    for (int i = 0; i < NumberOfAverages; ++i) {
        Pause(kSamplePauseMs);
        const std::int32_t raw = backend->ReadPower(kReadRequest);
        sum += raw < cap ? raw : cap;
    }
    return static_cast<float>(sum) / static_cast<float>(NumberOfAverages);
}

float ZuOPMMeter::NormalizedPower(int NumberOfAverages) {
    const float x = (AveragedAdc(NumberOfAverages) - GetZero(currentRange.load())) / MaxADC;
    return x < 0.0f ? 1e-7f : x;
}

float ZuOPMMeter::MeasurePower() {
    const float normalized = NormalizedPower(kAverages);
    lastNormalized.store(normalized);
    const double power =
        10.0 * std::log10(static_cast<double>(normalized)) -
        10.0 * std::log10(static_cast<double>(GetRangeResistance(currentRange.load()))) +
        static_cast<double>(GetWaveCentralCoeff(ActiveWaveLengthIndex.load())) +
        static_cast<double>(CalibrFreeCoeff) + static_cast<double>(RefPowerCoeff);
    const float unclamped = static_cast<float>(power);
    lastPowerUnclamped.store(unclamped);
    return unclamped > kMinPower ? unclamped : kMinPower;
}

void ZuOPMMeter::UpdateRange() {
    const int range = currentRange.load();
    const float normalized = lastNormalized.load();
    if (range < 2 && normalized > ThreshSwitchUp) {
        SetRange(range + 1);
        return;
    }
    if (range < 1) {
        return;
    }
    // ThreshSwitchDown in the scale of the present range: switch down only
    // when the value would lie below it after the switch.
    const float down =
        (ThreshSwitchDown / GetRangeResistance(range - 1)) * GetRangeResistance(range);
    if (normalized < down) {
        SetRange(range - 1);
    }
}

void ZuOPMMeter::SetRange(int range) {
    if (range >= 0 && range < kRangesNum) {
        for (int index = 0; index < 3; ++index) {
            backend->SetSwitch(index, kRangeSwitches[range][index]);
        }
    }
    currentRange.store(range);
}

void ZuOPMMeter::NotifySubscribers() {
    std::vector<HWND> receivers;
    {
        std::lock_guard<std::mutex> guard(observersLock);
        receivers = observers;
    }
    for (HWND window : receivers) {
        PostMessageW(window, WM_OPM_NEW_VALUE, reinterpret_cast<WPARAM>(this), 0);
    }
}

bool ZuOPMMeter::Subscribe(HWND window) {
    if (window == nullptr) {
        return false;
    }
    std::lock_guard<std::mutex> guard(observersLock);
    for (HWND known : observers) {
        if (known == window) {
            return false;
        }
    }
    observers.push_back(window);
    return true;
}

bool ZuOPMMeter::Unsubscribe(HWND window) {
    std::lock_guard<std::mutex> guard(observersLock);
    for (auto it = observers.begin(); it != observers.end(); ++it) {
        if (*it == window) {
            observers.erase(it);
            return true;
        }
    }
    return false;
}

bool ZuOPMMeter::IsSubscribed(HWND window) const {
    std::lock_guard<std::mutex> guard(observersLock);
    for (HWND known : observers) {
        if (known == window) {
            return true;
        }
    }
    return false;
}

bool ZuOPMMeter::ZeroCalibration() {
    auto guard = LockBetweenIterations();
    // Automatic ranging sits in range 2 only while light reaches the detector.
    if (currentRange.load() == 2) {
        return false;
    }
    Pause(kZeroSettleMs);
    for (int range = 0; range < kRangesNum; ++range) {
        SetRange(range);
        Pause(kZeroRangePauseMs);
        Zero[range] = AveragedAdc(kAverages);
        Pause(kZeroRangePauseMs);
    }
    SaveUserState(calibrationFile.c_str());
    return true;
}

bool ZuOPMMeter::CalibrateToReference(double referencePower, const char* path) {
    auto guard = LockBetweenIterations();
    // The inverse of the measurement: the last value would have read referencePower.
    const double coeff =
        referencePower - 10.0 * std::log10(static_cast<double>(lastNormalized.load())) +
        10.0 * std::log10(static_cast<double>(GetRangeResistance(currentRange.load()))) -
        static_cast<double>(RefPowerCoeff) - static_cast<double>(CalibrFreeCoeff);
    // A dark or absent reading (log of 0) would store an infinite coefficient
    // and spoil every later reading until the file is repaired by hand.
    if (!std::isfinite(coeff)) {
        return false;
    }
    const int slot = ActiveWaveLengthIndex.load();
    if (IsSlot(slot)) {
        WaveCentralCoeff[slot] = static_cast<float>(coeff);
    }
    return WriteWaveCentralCoeff(coeff, path);
}

void ZuOPMMeter::SetActiveWaveLengthIndex(int index) {
    ActiveWaveLengthIndex.store(index);
    ActiveWaveLength.store(GetWaveLength(index));
}

int ZuOPMMeter::GetWaveLength(int slot) const {
    return IsSlot(slot) ? WaveLength[slot] : 0;
}

float ZuOPMMeter::GetReferenceLevel(int slot) const {
    return IsSlot(slot) ? ReferenceLevel[slot] : 0.0f;
}

bool ZuOPMMeter::SetReferenceLevel(int slot, float level) {
    if (!IsSlot(slot)) {
        return false;
    }
    ReferenceLevel[slot] = level;
    return true;
}

float ZuOPMMeter::GetWaveCentralCoeff(int slot) const {
    return IsSlot(slot) ? WaveCentralCoeff[slot] : 0.0f;
}

float ZuOPMMeter::GetResistor(int index) const {
    return index >= 0 && index < kRangesNum ? Resistor[index] : 0.0f;
}

float ZuOPMMeter::GetZero(int range) const {
    return range >= 0 && range < kRangesNum ? Zero[range] : 0.0f;
}

float ZuOPMMeter::GetRangeResistance(int range) const {
    switch (range) {
        case 0:
            return Resistor[2] + Resistor[1] + Resistor[0];
        case 1:
            return Resistor[1] + Resistor[0];
        case 2:
            return Resistor[0];
        default:
            return 0.0f;
    }
}

// Calibration file -----------------------------------------------------------

const char* ZuOPMMeter::PathOrDefault(const char* path) const {
    return path != nullptr ? path : calibrationFile.c_str();
}

TNarrowString ZuOPMMeter::ModelSectionName() const {
    TNarrowString name("FactoryCalibration_");
    name.Append(platform::ToUtf8(modelTag).c_str());
    return name;
}

void ZuOPMMeter::LoadCalibration(const char* path) {
    TIniFile ini(path);
    ini.Load(path);  // an unreadable file leaves every value at its default

    ReadWaveLengthTable(ini.GetSection("WaveLengths"));

    TIniSection* hardware = ini.GetSection("Hardware");
    MaxADC = static_cast<float>(hardware->GetDouble("MaxADC", 0.0));
    for (int index = 0; index < kRangesNum; ++index) {
        Resistor[index] =
            static_cast<float>(hardware->GetDouble(Indexed("Resistor%d", index), 0.0));
    }

    ReadFactoryCalibration(ini);

    TIniSection* user = ini.GetSection("UserCalibration");
    for (int range = 0; range < kRangesNum; ++range) {
        Zero[range] = static_cast<float>(user->GetDouble(Indexed("Zero%d", range), 0.0));
    }

    TIniSection* state = ini.GetSection("SoftwareState");
    ActiveWaveLength.store(state->GetInt("ActiveWaveLength", 1550, true));
    ActiveWaveLengthIndex.store(state->GetInt("ActiveWaveLengthIndex", 0, true));
    WaveLengthShift.store(state->GetInt("WaveLengthShift", 0, true));
    for (int slot = 0; slot < WavesNum; ++slot) {
        ReferenceLevel[slot] =
            static_cast<float>(state->GetDouble(Indexed("ReferenceLevel%d", slot), 0.0));
    }
}

void ZuOPMMeter::ReadWaveLengthTable(TIniSection* section) {
    WavesNum = CapWavesNum(section->GetInt("WavesNum", 0, true));
    for (int slot = 0; slot < WavesNum; ++slot) {
        WaveLength[slot] = TruncateToInt(section->GetDouble(Indexed("WaveLength%d", slot), 0.0));
    }
}

void ZuOPMMeter::ReadFactorySection(TIniSection* section) {
    struct Coefficient {
        const char* key;
        float ZuOPMMeter::*field;
        double notANumber;
    };
    static constexpr Coefficient kCoefficients[] = {
        {"RefPowerCoeff", &ZuOPMMeter::RefPowerCoeff, 0.0},
        {"CalibrFreeCoeff", &ZuOPMMeter::CalibrFreeCoeff, 0.0},
        {"ThreshSwitchUp", &ZuOPMMeter::ThreshSwitchUp, 0.95},
        {"ThreshSwitchDown", &ZuOPMMeter::ThreshSwitchDown, 0.95},
    };
    // An absent key keeps the value in force, so a per-model section only
    // overrides what it names.
    for (const Coefficient& coefficient : kCoefficients) {
        if (const TIniEntry* entry = section->FindEntry(coefficient.key)) {
            this->*coefficient.field = static_cast<float>(entry->GetDouble(coefficient.notANumber));
        }
    }
    for (int slot = 0; slot < WavesNum; ++slot) {
        if (const TIniEntry* entry = section->FindEntry(Indexed("WaveCentralCoeff%d", slot))) {
            WaveCentralCoeff[slot] = static_cast<float>(entry->GetDouble(0.0));
        }
    }
}

void ZuOPMMeter::ReadFactoryCalibration(TIniFile& ini) {
    if (TIniSection* common = ini.FindSection("FactoryCalibration")) {
        ReadFactorySection(common);
    }
    TIniSection* model = ini.FindSection(ModelSectionName());
    if (model == nullptr) {
        return;
    }
    ReadFactorySection(model);
    if (const TIniEntry* mode = model->FindEntry("Mode")) {
        TNarrowString name("WaveLengths_");
        name.Append(mode->GetString("PM2"));
        if (TIniSection* waves = ini.FindSection(name)) {
            ReadWaveLengthTable(waves);
        }
    }
}

bool ZuOPMMeter::ReloadFactoryCalibration(const char* path) {
    auto guard = LockBetweenIterations();
    TIniFile ini(PathOrDefault(path));
    if (ini.Load() != 0) {
        return false;
    }
    ReadFactoryCalibration(ini);
    return true;
}

bool ZuOPMMeter::SaveUserState(const char* path) {
    TIniFile ini(PathOrDefault(path));
    if (ini.Load() != 0) {
        return false;
    }
    TIniSection* user = ini.GetSection("UserCalibration");
    for (int range = 0; range < kRangesNum; ++range) {
        user->SetDouble(Indexed("Zero%d", range), static_cast<double>(Zero[range]));
    }
    TIniSection* state = ini.GetSection("SoftwareState");
    state->SetInt("ActiveWaveLength", ActiveWaveLength.load());
    state->SetInt("ActiveWaveLengthIndex", ActiveWaveLengthIndex.load());
    state->SetInt("WaveLengthShift", WaveLengthShift.load());
    for (int slot = 0; slot < WavesNum; ++slot) {
        state->SetDouble(Indexed("ReferenceLevel%d", slot),
                         static_cast<double>(ReferenceLevel[slot]));
    }
    return ini.Save() == 0;
}

bool ZuOPMMeter::WriteWaveCentralCoeff(double value, const char* path) {
    TIniFile ini(PathOrDefault(path));
    if (ini.Load() != 0) {
        return false;
    }
    TIniSection* section = ini.GetSection(ModelSectionName());
    OPM_ASSERT_AT(section, kSourceFile, 417);
    TIniEntry* key = section->GetEntry(Indexed("WaveCentralCoeff%d", ActiveWaveLengthIndex.load()));
    OPM_ASSERT_AT(key, kSourceFile, 421);
    key->SetDouble(value);
    return ini.Save() == 0;
}

bool ZuOPMMeter::ResetFactoryCalibrationToDefault(const char* path, int setNumber) {
    TIniFile ini(PathOrDefault(path));
    if (ini.Load() != 0) {
        return false;
    }
    const TIniSection* source = ini.FindSection(Indexed("FactoryCalibration_xxxxPM%d", setNumber));
    if (source == nullptr) {
        return false;
    }
    // Copied out first: the destination may be the source itself.
    std::vector<std::pair<std::string, std::string>> lines;
    std::vector<bool> hasValue;
    for (int index = 0; index < source->Count(); ++index) {
        const TIniEntry* entry = source->EntryAt(index);
        lines.emplace_back(entry->GetKey(), entry->GetValue() ? entry->GetValue() : "");
        hasValue.push_back(entry->GetValue() != nullptr);
    }
    TIniSection* section = ini.GetSection(ModelSectionName());
    OPM_ASSERT_AT(section, kSourceFile, 497);
    section->Clear();
    for (std::size_t index = 0; index < lines.size(); ++index) {
        section->GetEntry(lines[index].first.c_str())
            ->SetString(hasValue[index] ? lines[index].second.c_str() : nullptr);
    }
    return ini.Save() == 0;
}
