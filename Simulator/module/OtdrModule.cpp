#include "Simulator/module/OtdrModule.h"

#include <cstdio>

#include "Simulator/bench/Bench.h"
#include "Support/LogFile.h"

namespace sim {
namespace {

constexpr int kInitCode = 109;
constexpr int kReadIdentification = 715;
constexpr int kSwitchLaser = 741;
constexpr int kListLasers = 743;

// Codes InitOTDR answers with when the board does not come up.
constexpr int kBoardSilent = 3;
constexpr int kWrongCode = 2;
constexpr int kIdRejected = 4;

constexpr const char* kReady = "simulated OTDR module ready, bench:";
constexpr const char* kBoardReady = "OTDR board ready:";
constexpr const char* kBoardSilentText = "OTDR board does not answer:";
constexpr const char* kWrongCodeText = "InitOTDR called with an unknown code:";
constexpr const char* kIdRejectedText = "InitOTDR: ID_DLL not accepted by this board:";
constexpr const char* kIdentification = "identification:";
constexpr const char* kLaserOn = "laser on:";
constexpr const char* kLasersOff = "lasers off";
constexpr const char* kLaserRefused = "laser command refused:";
constexpr const char* kUnknownCommand = "unknown service function:";
constexpr const char* kNotAvailableText = "entry point not available in the simulated module:";

std::string Hex(std::uint32_t value) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%X", value);
    return text;
}

}  // namespace

OtdrModule& OtdrModule::Instance() {
    static OtdrModule module;
    return module;
}

void OtdrModule::Message(const char* text, const std::string& detail) {
    if (log != nullptr) log->Message(kLogSource, text, detail.c_str());
}

void OtdrModule::Error(const char* text, const std::string& detail) {
    if (log != nullptr) log->Error(kLogSource, text, detail.c_str());
}

int OtdrModule::Init(const char* newDirectory, TLogFile* newLog, TLenUnit* newLenUnit) {
    std::lock_guard lock(mutex);
    directory = newDirectory != nullptr ? newDirectory : "";
    log = newLog;
    lenUnit = newLenUnit;
    Bench::Instance().ResetRun();
    Message(kReady, Bench::Instance().Path());
    return 0;
}

int OtdrModule::InitOtdr(int code, const char* idDll) {
    std::lock_guard lock(mutex);
    const auto settings = Bench::Instance().Settings();
    const int attempt = Bench::Instance().CountInitAttempt();
    if (code != kInitCode) {
        Error(kWrongCodeText, std::to_string(code));
        return kWrongCode;
    }
    if (attempt <= settings->faults.initOtdrFailures) {
        Error(kBoardSilentText, "attempt " + std::to_string(attempt) + " (bench fault: " +
                                    std::to_string(settings->faults.initOtdrFailures) +
                                    " failures)");
        return kBoardSilent;
    }
    const std::string id = idDll != nullptr ? idDll : "";
    if (!settings->module.idDll.empty() && id != settings->module.idDll) {
        Error(kIdRejectedText, "'" + id + "'");
        return kIdRejected;
    }
    Message(kBoardReady, settings->module.board + " " + settings->module.hardwareId + " " +
                             settings->module.modelTag);
    return 0;
}

int OtdrModule::Service(int command, void* inOut, void* out) {
    std::lock_guard lock(mutex);
    switch (command) {
        case kReadIdentification:
            return ReadIdentification(inOut, out);
        case kSwitchLaser:
            return SwitchLaser(inOut, out);
        case kListLasers:
            return ListLasers(inOut, out);
        default:
            Error(kUnknownCommand, std::to_string(command));
            return 0;
    }
}

// Four fields joined by '+': board, hardware id, firmware, model tag.
int OtdrModule::ReadIdentification(void* inOut, void* out) {
    if (out == nullptr) return 0;
    const auto settings = Bench::Instance().Settings();
    const BenchSettings::Module& module = settings->module;
    const std::string text =
        module.board + "+" + module.hardwareId + "+" + module.firmware + "+" + module.modelTag;
    const char* answer = answers.insert(text).first->c_str();
    *static_cast<const char**>(out) = answer;
    if (inOut != nullptr) *static_cast<int*>(inOut) = static_cast<int>(text.size());
    Message(kIdentification, text);
    return 1;
}

int OtdrModule::SwitchLaser(void* inOut, void* /*out*/) {
    if (inOut == nullptr) return 0;
    const std::uint32_t word = *static_cast<const std::uint32_t*>(inOut);
    const LaserBank::Result result = Bench::Instance().ApplyLaserWord(word);
    if (result != LaserBank::Result::Done) {
        Error(kLaserRefused,
              "word " + Hex(word) +
                  (result == LaserBank::Result::UnknownLaser ? ": no such laser" : ": bad bits"));
        return 0;
    }
    const LaserBank::State state = Bench::Instance().Lasers();
    if (state.id == 0) {
        Message(kLasersOff);
        return 1;
    }
    const auto settings = Bench::Instance().Settings();
    std::string detail = "id " + std::to_string(state.id);
    for (const LaserSettings& laser : settings->lasers)
        if (laser.id == state.id) detail += ", " + std::to_string(laser.wavelength) + " nm";
    detail += state.mode == 1 ? ", modulated" : ", continuous";
    Message(kLaserOn, detail);
    return 1;
}

// Each laser as (identifier, wavelength in nm); the caller frees the list with delete[].
int OtdrModule::ListLasers(void* inOut, void* out) {
    if (inOut == nullptr || out == nullptr) return 0;
    const auto settings = Bench::Instance().Settings();
    int count = 0;
    for (const LaserSettings& laser : settings->lasers) count += laser.id != 0 ? 1 : 0;
    auto* list = new std::uint16_t[count > 0 ? count : 1][2];
    int index = 0;
    for (const LaserSettings& laser : settings->lasers)
        if (laser.id != 0) {
            list[index][0] = static_cast<std::uint16_t>(laser.id);
            list[index][1] = static_cast<std::uint16_t>(laser.wavelength);
            ++index;
        }
    *static_cast<int*>(inOut) = count;
    *static_cast<std::uint16_t(**)[2]>(out) = list;
    return 1;
}

int OtdrModule::NotAvailable(const char* entryPoint) {
    std::lock_guard lock(mutex);
    Error(kNotAvailableText, entryPoint);
    return kNotAvailable;
}

}  // namespace sim
