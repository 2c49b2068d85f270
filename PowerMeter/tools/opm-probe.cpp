// opm-probe: the power meter without the screen, for a technician at the
// bench. It runs from the instrument image (its own directory), brings the
// devices up exactly as the application does, writes the same log, and
// prints one line per measurement. See --help.

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <optional>
#include <string>

#include "Common/Settings/AppConfig.h"
#include "Common/Settings/CommonConfig.h"
#include "Common/Settings/Logging.h"
#include "Common/Toolkit/IUserNotifier.h"
#include "Platform/WideText.h"
#include "Platform/WindowMessages.h"
#include "PowerMeter/PowerMeter.h"
#include "PowerMeter/Devices/PowerMeterDeviceManager.h"
#include "Support/LenUnit.h"
#include "Support/LogFile.h"

namespace {

// Exit codes; 1 and 2 are the application's own quit codes.
enum ExitCode {
    kOk = 0,
    kOtdrFailed = 1,
    kNoDevices = 2,
    kBadUsage = 3,
    kOperationFailed = 4,
    kNoPowerMeter = 5,
    kNoMeasurement = 6,
};

constexpr const char* kLogFileName = "PowerMeter.log";
constexpr const wchar_t* kSettingsKey = L"Software\\Tavix";
constexpr int kAllLogLevels = -1;

std::atomic<bool> interrupted{false};

extern "C" void OnInterrupt(int) {
    interrupted = true;
}

struct ProbeOptions {
    int count = 10;
    bool follow = false;
    int settle = 3;
    int timeoutSeconds = 10;
    std::optional<int> wavelengthSlot;
    bool zero = false;
    std::optional<double> calibrateTo;
    std::optional<int> resetDefault;
    // Laser index and mode; index -1 switches every laser off.
    std::optional<std::pair<int, int>> laser;
};

class ConsoleNotifier : public IUserNotifier {
public:
    void ShowMessage(const std::wstring& text) override {
        std::fprintf(stderr, "opm-probe: %s\n", platform::ToUtf8(text).c_str());
    }
};

int Fail(ExitCode code, const std::string& text) {
    std::fprintf(stderr, "opm-probe: %s\n", text.c_str());
    return code;
}

// Receives the meter's WM_OPM_NEW_VALUE and remembers the gain range each
// value was measured in: the meter steps its range after every value, so a
// value's own range is the one the meter held after the value before.
class MeasurementReceiver : public QObject {
public:
    MeasurementReceiver(ZuOPMMeter& meter, int timeoutSeconds)
        : meter(meter), timeoutMs(timeoutSeconds * 1000) {}

    // Forgets values posted before an operation changed the meter.
    void Restart() {
        QCoreApplication::removePostedEvents(this, WM_OPM_NEW_VALUE);
        rangeBefore = meter.GetCurrentRange();
    }

    // Runs the event loop until `count` new values arrived; false on a
    // timeout or an interruption.
    bool WaitFor(int count) {
        for (int i = 0; i < count; ++i)
            if (!WaitForOne()) return false;
        return true;
    }

    bool WaitForOne() {
        QEventLoop loop;
        bool arrived = false;
        waiting = [&] {
            arrived = true;
            loop.quit();
        };
        QTimer timeout;
        timeout.setSingleShot(true);
        QObject::connect(&timeout, &QTimer::timeout, &loop, &QEventLoop::quit);
        timeout.start(timeoutMs);
        QTimer interruptPoll;
        QObject::connect(&interruptPoll, &QTimer::timeout, &loop, [&loop] {
            if (interrupted) loop.quit();
        });
        interruptPoll.start(100);
        loop.exec();
        waiting = nullptr;
        timedOut = !arrived && !interrupted;
        return arrived;
    }

    bool TimedOut() const { return timedOut; }
    int LastRange() const { return lastRange; }

protected:
    bool event(QEvent* event) override {
        if (event->type() != static_cast<QEvent::Type>(WM_OPM_NEW_VALUE))
            return QObject::event(event);
        lastRange = rangeBefore;
        rangeBefore = meter.GetCurrentRange();
        if (waiting) waiting();
        return true;
    }

private:
    ZuOPMMeter& meter;
    int timeoutMs;
    int rangeBefore = 1;
    int lastRange = 1;
    bool timedOut = false;
    std::function<void()> waiting;
};

void PrintMeasurement(const ZuOPMMeter& meter, int range) {
    std::printf("%.3f %.3f %d %.6e\n", meter.GetLastPower(), meter.GetLastPowerUnclamped(), range,
                meter.GetLastNormalizedValue());
    std::fflush(stdout);
}

void PrintDevices(const CPowerMeterDeviceManager& manager) {
    if (const CLightSource* source = manager.GetLightSource()) {
        std::printf("# light source: %zu lasers", source->GetLasersNum());
        for (std::size_t i = 0; i < source->GetLasersNum(); ++i)
            std::printf("%s%d nm", i == 0 ? " (" : ", ", source->GetLaserWaveLength(i));
        std::printf("%s\n", source->GetLasersNum() > 0 ? ")" : "");
    } else {
        std::printf("# light source: none\n");
    }
    if (const ZuOPMMeter* meter = manager.GetPowerMeter()) {
        std::printf("# power meter: model %s, %d wavelengths",
                    platform::ToUtf8(meter->GetModelTag()).c_str(), meter->GetWavelengthsNum());
        for (int i = 0; i < meter->GetWavelengthsNum(); ++i)
            std::printf("%s%d", i == 0 ? " (" : ", ", meter->GetWaveLength(i));
        std::printf("%s\n", meter->GetWavelengthsNum() > 0 ? " nm)" : "");
    } else {
        std::printf("# power meter: none\n");
    }
    std::fflush(stdout);
}

std::optional<ProbeOptions> ParseOptions(const QCoreApplication& app, std::string& error) {
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Brings the power meter up from this instrument image, as the application does, and "
        "prints one line per measurement:\n  dBm  unclamped-dBm  range  normalised-value\n"
        "Exit codes: 1 OTDR board failed, 2 neither meter nor light source, 3 bad usage, "
        "4 an operation failed, 5 no power meter, 6 no measurement arrived.");
    parser.addHelpOption();
    const QCommandLineOption count({"n", "count"}, "Measurements to print (default 10).", "n");
    const QCommandLineOption follow({"f", "follow"}, "Print until interrupted.");
    const QCommandLineOption settle(
        {"s", "settle"}, "Measurements let pass after start and after zeroing (default 3).", "n");
    const QCommandLineOption wavelength({"w", "wavelength"}, "Measure at wavelength slot.", "slot");
    const QCommandLineOption zero({"z", "zero"}, "Zero the meter first; no light at the input.");
    const QCommandLineOption calibrate(
        {"c", "calibrate"}, "Calibrate the active wavelength to this reference power at the input.",
        "dBm");
    const QCommandLineOption reset(
        {"r", "reset-default"},
        "Copy default calibration set n (1: PM1, 2: PM2) over the model's and reread it.", "n");
    const QCommandLineOption laser({"l", "laser"},
                                   "Switch laser i on in mode 0 (continuous) or 1 (modulated), "
                                   "or every laser off.",
                                   "i[:mode]|off");
    const QCommandLineOption timeout({"t", "timeout"},
                                     "Give up when no measurement arrives for s seconds "
                                     "(default 10).",
                                     "s");
    parser.addOptions({count, follow, settle, wavelength, zero, calibrate, reset, laser, timeout});
    // process() would exit with 1, which here means the board failed: bad usage has its own code.
    if (!parser.parse(app.arguments())) {
        error = parser.errorText().toStdString();
        return std::nullopt;
    }
    if (parser.isSet("help")) parser.showHelp(0);

    ProbeOptions options;
    auto integer = [&](const QCommandLineOption& option, int min, int& out) {
        if (!parser.isSet(option)) return true;
        bool ok = false;
        out = parser.value(option).toInt(&ok);
        if (ok && out >= min) return true;
        error = "bad value for --" + option.names().last().toStdString() + ": " +
                parser.value(option).toStdString();
        return false;
    };
    int slot = 0;
    int set = 0;
    if (!integer(count, 0, options.count) || !integer(settle, 0, options.settle) ||
        !integer(timeout, 1, options.timeoutSeconds) || !integer(wavelength, 0, slot) ||
        !integer(reset, 1, set))
        return std::nullopt;
    if (parser.isSet(wavelength)) options.wavelengthSlot = slot;
    if (parser.isSet(reset)) options.resetDefault = set;
    options.follow = parser.isSet(follow);
    options.zero = parser.isSet(zero);
    if (parser.isSet(calibrate)) {
        bool ok = false;
        options.calibrateTo = parser.value(calibrate).toDouble(&ok);
        if (!ok) {
            error = "bad reference power: " + parser.value(calibrate).toStdString();
            return std::nullopt;
        }
    }
    if (parser.isSet(laser)) {
        const QString text = parser.value(laser);
        const QStringList parts = text.split(':');
        bool indexOk = false;
        bool modeOk = true;
        const int index = parts[0].toInt(&indexOk);
        const int mode = parts.size() > 1 ? parts[1].toInt(&modeOk) : 0;
        if (text == "off") {
            options.laser = std::make_pair(-1, 0);
        } else if (indexOk && modeOk && index >= 0 && parts.size() <= 2 &&
                   (mode == 0 || mode == 1)) {
            options.laser = std::make_pair(index, mode);
        } else {
            error = "bad laser: " + text.toStdString() + " (expected i, i:0, i:1 or off)";
            return std::nullopt;
        }
    }
    return options;
}

// What the probe does once the devices are up; returns the exit code.
int RunProbe(CPowerMeterDeviceManager& manager, const ProbeOptions& options) {
    ZuOPMMeter* meter = manager.GetPowerMeter();
    CLightSource* source = manager.GetLightSource();

    if (options.resetDefault) {
        if (meter == nullptr) return Fail(kNoPowerMeter, "no power meter to reset");
        if (!meter->ResetFactoryCalibrationToDefault(nullptr, *options.resetDefault))
            return Fail(kOperationFailed, "Error during factory calibration data changing to def");
        if (!meter->ReloadFactoryCalibration(nullptr))
            return Fail(kOperationFailed, "Error during factory calibration data rereading");
    }
    if (options.wavelengthSlot) {
        if (meter == nullptr) return Fail(kNoPowerMeter, "no power meter");
        if (*options.wavelengthSlot >= meter->GetWavelengthsNum())
            return Fail(kBadUsage, "no wavelength slot " + std::to_string(*options.wavelengthSlot) +
                                       " (the meter has " +
                                       std::to_string(meter->GetWavelengthsNum()) + ")");
        meter->SetActiveWaveLengthIndex(*options.wavelengthSlot);
    }
    bool laserSwitchedOn = false;
    if (options.laser) {
        const int index = options.laser->first;
        if (source == nullptr) return Fail(kOperationFailed, "no light source");
        if (index >= 0 && static_cast<std::size_t>(index) >= source->GetLasersNum())
            return Fail(kBadUsage, "no laser " + std::to_string(index) + " (the light source has " +
                                       std::to_string(source->GetLasersNum()) + ")");
        if (index < 0) {
            source->SwitchOff();
        } else {
            source->SwitchOn(static_cast<std::size_t>(index), options.laser->second);
            laserSwitchedOn = true;
        }
    }

    const bool measuring =
        options.count > 0 || options.follow || options.zero || options.calibrateTo.has_value();
    if (!measuring) return kOk;
    if (meter == nullptr) return Fail(kNoPowerMeter, "no power meter on this unit");

    std::printf("# wavelength %d nm\n# dBm unclamped range normalized\n",
                meter->GetActiveWaveLength());
    std::fflush(stdout);

    MeasurementReceiver receiver(*meter, options.timeoutSeconds);
    meter->Subscribe(WindowHandleOf(&receiver));
    meter->Start();
    receiver.Restart();
    int result = kOk;
    auto measure = [&](int count) {
        if (receiver.WaitFor(count)) return true;
        if (receiver.TimedOut()) result = Fail(kNoMeasurement, "no measurement arrived");
        return false;
    };

    // The first value shows that the worker runs; zeroing waits for it.
    bool ok = measure(1);
    if (ok && options.zero) {
        if (!meter->ZeroCalibration()) {
            result = Fail(kOperationFailed, "can't zero: light reaches the input (range 2)");
            ok = false;
        }
        receiver.Restart();
    }
    ok = ok && measure(options.settle);
    if (ok && options.calibrateTo) {
        if (!meter->CalibrateToReference(*options.calibrateTo, nullptr)) {
            result = Fail(kOperationFailed, "Error ocurred during manual calibrating");
            ok = false;
        }
        receiver.Restart();
    }
    for (int printed = 0; ok && (options.follow || printed < options.count); ++printed) {
        ok = measure(1);
        if (ok) PrintMeasurement(*meter, receiver.LastRange());
    }

    meter->Stop();
    meter->Unsubscribe(WindowHandleOf(&receiver));
    if (laserSwitchedOn) source->SwitchOff();
    return result;
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    std::string error;
    const std::optional<ProbeOptions> options = ParseOptions(app, error);
    if (!options) return Fail(kBadUsage, error);
    std::signal(SIGINT, OnInterrupt);
    std::signal(SIGTERM, OnInterrupt);

    // The process-wide objects, made as the application object makes them.
    TLenUnit lenUnit;
    SetLenUnit(&lenUnit);
    const std::string directory = platform::ToUtf8(ComputeApplicationDirectory());
    TLogFile log((directory + kLogFileName).c_str(), 1, 0);
    log.SetLevels(kAllLogLevels);
    SetLogFile(&log);
    CAppConfig config(kSettingsKey, 1);
    lenUnit.SetUnit(GetDistanceUnit(config));

    int result = kOk;
    {
        ConsoleNotifier notifier;
        CPowerMeterDeviceManager manager(config, notifier);
        const bool otdrReady = manager.Init();
        PrintDevices(manager);
        if (!otdrReady)
            result = Fail(kOtdrFailed, "OTDR initialization failure");
        else if (manager.GetPowerMeter() == nullptr && manager.GetLightSource() == nullptr)
            result = Fail(kNoDevices, "neither power meter nor light source");
        else
            result = RunProbe(manager, *options);
    }
    SetLogFile(nullptr);
    SetLenUnit(nullptr);
    return result;
}
