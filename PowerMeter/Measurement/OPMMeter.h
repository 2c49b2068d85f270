#pragma once
// The optical power meter: a worker thread reads the detector through its
// backend, averages, removes the dark offset of the gain range, converts to
// dBm with the calibration of the active wavelength, steps the gain range and
// posts WM_OPM_NEW_VALUE to every subscribed window. All persistent values
// live in one INI file (hardware constants, wavelength table, factory and
// user calibration, software state).

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "Platform/WindowMessages.h"
#include "PowerMeter/Measurement/OpmMeterBackend.h"
#include "Support/NarrowString.h"

class TIniFile;
class TIniSection;

// Posted after every measurement: wParam is the meter, lParam 0.
constexpr UINT WM_OPM_NEW_VALUE = WM_USER + 27;

class ZuOPMMeter {
public:
    static constexpr int kMaxWaves = 10;
    static constexpr int kRangesNum = 3;
    static constexpr int kAverages = 60;
    static constexpr std::int32_t kReadRequest = 128;
    // The meter's deliberate floor: anything at or below it reads as it.
    static constexpr float kMinPower = -76.0f;

    // Every pause of the meter goes through this, so that tests and the
    // benchmark can pace the worker without real time.
    using SleepFunction = std::function<void(std::chrono::milliseconds)>;

    // Takes ownership of `backend`, which must not be null. Loads the whole
    // calibration file; a missing or unreadable file gives the defaults.
    ZuOPMMeter(const TNarrowString& calibrationFile, const std::wstring& modelTag,
               std::unique_ptr<COpmMeterBackend> backend, SleepFunction sleep = {});
    // Stops the worker and waits for it, then saves the user state.
    virtual ~ZuOPMMeter();
    ZuOPMMeter(const ZuOPMMeter&) = delete;
    ZuOPMMeter& operator=(const ZuOPMMeter&) = delete;

    // Starts measuring on the worker thread unless it already measures. A
    // worker that was asked to stop is waited for first. An exception leaving
    // the worker ends the program through the fatal path with its text.
    void Start();
    // Asks the worker to end after its current iteration; does not wait.
    void Stop();
    // Stop, then waits for the worker to end: nothing measures or posts once
    // it returns.
    void StopAndWait();
    bool IsRunning() const { return running.load(); }

    // Dark offsets of all three ranges; false (nothing changed) in range 2.
    bool ZeroCalibration();
    // Makes the last measurement read `referencePower` dBm at the active
    // wavelength and writes the coefficient to the per-model factory section.
    // False, with nothing changed, when the last reading gives no finite
    // coefficient (a dark input or no measurement yet).
    bool CalibrateToReference(double referencePower, const char* path = nullptr);

    // Calibration file operations; a null path means the meter's own file.
    bool SaveUserState(const char* path = nullptr);
    bool ReloadFactoryCalibration(const char* path = nullptr);
    bool WriteWaveCentralCoeff(double value, const char* path = nullptr);
    // Copies default set `setNumber` (1 = PM1, 2 = PM2) over the per-model
    // section; the meter's fields change only on the next reload.
    bool ResetFactoryCalibrationToDefault(const char* path, int setNumber);

    // Windows that receive WM_OPM_NEW_VALUE. Subscribing twice is one subscription.
    bool Subscribe(HWND window);
    bool Unsubscribe(HWND window);
    bool IsSubscribed(HWND window) const;

    // Last value in dBm, clamped below at kMinPower.
    float GetLastPower() const { return lastPower.load(); }
    float GetLastPowerUnclamped() const { return lastPowerUnclamped.load(); }
    // Last photocurrent as a fraction of full scale, after the zero offset.
    float GetLastNormalizedValue() const { return lastNormalized.load(); }
    int GetCurrentRange() const { return currentRange.load(); }

    int GetWavelengthsNum() const { return WavesNum; }
    // Stores the index unchecked; the screen checks it against the slot count.
    void SetActiveWaveLengthIndex(int index);
    int GetActiveWaveLengthIndex() const { return ActiveWaveLengthIndex.load(); }
    int GetActiveWaveLength() const { return ActiveWaveLength.load(); }
    // Slots outside the ten read as wavelength 0.
    int GetWaveLength(int slot) const;
    int GetWaveLengthShift() const { return WaveLengthShift.load(); }
    void SetWaveLengthShift(int shift) { WaveLengthShift.store(shift); }
    float GetReferenceLevel(int slot) const;
    // False for a slot outside the ten.
    bool SetReferenceLevel(int slot, float level);

    // Calibration values as loaded or calibrated.
    float GetWaveCentralCoeff(int slot) const;
    float GetRefPowerCoeff() const { return RefPowerCoeff; }
    float GetCalibrFreeCoeff() const { return CalibrFreeCoeff; }
    float GetThreshSwitchUp() const { return ThreshSwitchUp; }
    float GetThreshSwitchDown() const { return ThreshSwitchDown; }
    float GetMaxADC() const { return MaxADC; }
    float GetResistor(int index) const;
    float GetZero(int range) const;
    // R(range) of the conversion: the feedback resistance of a gain range.
    float GetRangeResistance(int range) const;

    const std::wstring& GetModelTag() const { return modelTag; }
    const char* GetCalibrationFile() const { return calibrationFile.c_str(); }

private:
    void LoadCalibration(const char* path);
    void ReadWaveLengthTable(TIniSection* section);
    void ReadFactorySection(TIniSection* section);
    void ReadFactoryCalibration(TIniFile& ini);
    TNarrowString ModelSectionName() const;
    const char* PathOrDefault(const char* path) const;

    void MeasurementLoop();
    // Ends the program through the fatal path after disabling the hardware.
    [[noreturn]] void WorkerFailed(std::unique_lock<std::recursive_mutex>& guard, const char* what);
    float MeasurePower();
    void UpdateRange();
    void SetRange(int range);
    float AveragedAdc(int NumberOfAverages);
    float NormalizedPower(int NumberOfAverages);
    void NotifySubscribers();
    // Takes the meter lock between two iterations of a running worker.
    std::unique_lock<std::recursive_mutex> LockBetweenIterations();
    void Pause(int milliseconds);

    std::atomic<float> lastPower{0.0f};
    mutable std::mutex observersLock;
    std::vector<HWND> observers;
    std::array<float, kMaxWaves> ReferenceLevel{};
    float MaxADC = 0.0f;
    std::array<float, kRangesNum> Zero{};
    std::array<float, kRangesNum> Resistor{};
    std::array<float, kMaxWaves> WaveCentralCoeff{};
    float RefPowerCoeff = 0.0f;
    float CalibrFreeCoeff = 0.0f;
    std::atomic<int> ActiveWaveLength{0};
    std::atomic<int> WaveLengthShift{0};
    std::atomic<int> currentRange{0};
    std::atomic<float> lastPowerUnclamped{0.0f};
    std::atomic<float> lastNormalized{0.0f};
    float ThreshSwitchUp = 0.0f;
    float ThreshSwitchDown = 0.0f;
    std::atomic<bool> running{false};
    std::atomic<bool> stopRequested{false};
    // Between Start and the worker setting `running`, so that a Stop in that
    // window still ends the worker.
    std::atomic<bool> starting{false};
    std::thread worker;
    TNarrowString calibrationFile;
    std::atomic<int> ActiveWaveLengthIndex{0};
    std::array<int, kMaxWaves> WaveLength{};
    int WavesNum = 0;
    std::wstring modelTag;
    std::unique_ptr<COpmMeterBackend> backend;
    std::recursive_mutex lock;
    std::atomic<int> lockWaiters{0};
    SleepFunction sleep;
};
