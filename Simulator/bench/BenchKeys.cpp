#include "Simulator/bench/BenchKeys.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace sim {
namespace {

constexpr const char* kAdapterNames[] = {"unknown", "absent", "initializing",
                                         "running", "off",    "error"};

std::string Trimmed(std::string_view text) {
    const size_t first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) return {};
    const size_t last = text.find_last_not_of(" \t");
    return std::string(text.substr(first, last - first + 1));
}

bool ParseBool(const std::string& text, bool& value) {
    for (const char* yes : {"1", "true", "on", "yes"})
        if (text == yes) return value = true, true;
    for (const char* no : {"0", "false", "off", "no"})
        if (text == no) return value = false, true;
    return false;
}

bool ParseReal(const std::string& text, double& value) {
    if (text.empty()) return false;
    char* end = nullptr;
    errno = 0;
    value = std::strtod(text.c_str(), &end);
    return errno == 0 && *end == '\0' && std::isfinite(value);
}

// Decimal, or hexadecimal with 0x (control codes are written that way).
bool ParseWhole(const std::string& text, long long& value) {
    if (text.empty()) return false;
    char* end = nullptr;
    errno = 0;
    value = std::strtoll(text.c_str(), &end, 0);
    return errno == 0 && *end == '\0';
}

std::string FormatReal(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.10g", value);
    return text;
}

std::string RangeText(const BenchKey& key) {
    return FormatReal(key.min) + " .. " + FormatReal(key.max);
}

BenchField Field(const BenchKey& key, const BenchSettings& settings) {
    // The table hands out mutable fields; reading through them changes nothing.
    return key.field(const_cast<BenchSettings&>(settings));
}

#define OPM_BENCH_FIELD(expr) [](BenchSettings& s) -> BenchField { return &s.expr; }

std::vector<BenchKey> MakeKeys() {
    std::vector<BenchKey> keys = {
        {"input.enabled", "light on the meter's port from the external source (0 = dark)", 0, 1,
         OPM_BENCH_FIELD(input.enabled)},
        {"input.dBm", "external source power at the port, dBm", -200, 30,
         OPM_BENCH_FIELD(input.dBm)},
        {"input.wavelength", "external source wavelength, nm", 400, 2000,
         OPM_BENCH_FIELD(input.wavelength)},
        {"loopback.enabled", "patch cord from the laser port to the meter's port", 0, 1,
         OPM_BENCH_FIELD(loopback.enabled)},
        {"loopback.lossDb", "loss of that patch cord, dB", 0, 100,
         OPM_BENCH_FIELD(loopback.lossDb)},
        {"laser1.id", "identifier of laser slot 1 (0 = no laser)", 0, 255,
         OPM_BENCH_FIELD(lasers[0].id)},
        {"laser1.wavelength", "its wavelength, nm", 400, 2000,
         OPM_BENCH_FIELD(lasers[0].wavelength)},
        {"laser1.dBm", "its continuous output power, dBm", -60, 20, OPM_BENCH_FIELD(lasers[0].dBm)},
        {"laser2.id", "identifier of laser slot 2 (0 = no laser)", 0, 255,
         OPM_BENCH_FIELD(lasers[1].id)},
        {"laser2.wavelength", "its wavelength, nm", 400, 2000,
         OPM_BENCH_FIELD(lasers[1].wavelength)},
        {"laser2.dBm", "its continuous output power, dBm", -60, 20, OPM_BENCH_FIELD(lasers[1].dBm)},
        {"laser3.id", "identifier of laser slot 3 (0 = no laser)", 0, 255,
         OPM_BENCH_FIELD(lasers[2].id)},
        {"laser3.wavelength", "its wavelength, nm", 400, 2000,
         OPM_BENCH_FIELD(lasers[2].wavelength)},
        {"laser3.dBm", "its continuous output power, dBm", -60, 20, OPM_BENCH_FIELD(lasers[2].dBm)},
        {"noise.adcCounts", "ADC noise, rms counts per conversion", 0, 100000,
         OPM_BENCH_FIELD(noise.adcCounts)},
        {"noise.relative", "optical signal noise, rms fraction of the signal", 0, 1,
         OPM_BENCH_FIELD(noise.relative)},
        {"noise.seed", "seed of the noise generator", 0, 2147483647, OPM_BENCH_FIELD(noise.seed)},
        {"detector.dark_pA", "photodiode dark current, pA", 0, 1e6,
         OPM_BENCH_FIELD(detector.darkPicoAmps)},
        {"detector.responsivityScale", "factor on the photodiode's responsivity", 0, 10,
         OPM_BENCH_FIELD(detector.responsivityScale)},
        {"adc.offset0", "ADC offset in range 0 (most sensitive), counts", -100000, 100000,
         OPM_BENCH_FIELD(adc.offsetCounts[0])},
        {"adc.offset1", "ADC offset in range 1, counts", -100000, 100000,
         OPM_BENCH_FIELD(adc.offsetCounts[1])},
        {"adc.offset2", "ADC offset in range 2 (least sensitive), counts", -100000, 100000,
         OPM_BENCH_FIELD(adc.offsetCounts[2])},
        {"adc.conversionUs", "time one power read takes, microseconds", 0, 1000000,
         OPM_BENCH_FIELD(adc.conversionMicros)},
        {"module.board", "first field of the module's identification", 0, 0,
         OPM_BENCH_FIELD(module.board)},
        {"module.hardwareId", "second field: the board's hardware id", 0, 0,
         OPM_BENCH_FIELD(module.hardwareId)},
        {"module.firmware", "third field: firmware version", 0, 0,
         OPM_BENCH_FIELD(module.firmware)},
        {"module.modelTag", "fourth field: the model tag naming the factory sections", 0, 0,
         OPM_BENCH_FIELD(module.modelTag)},
        {"module.idDll", "ID_DLL that InitOTDR accepts (empty: any)", 0, 0,
         OPM_BENCH_FIELD(module.idDll)},
        {"faults.initOtdrFailures", "InitOTDR fails this many times in each run", 0, 1000,
         OPM_BENCH_FIELD(faults.initOtdrFailures)},
        {"faults.noOlt1", "the power meter's driver finds no hardware", 0, 1,
         OPM_BENCH_FIELD(faults.noOlt1)},
        {"faults.failIoControl", "driver control code that fails (0 = none)", 0, 4294967295.0,
         OPM_BENCH_FIELD(faults.failIoControl)},
        {"faults.failError", "error code that failing call reports", 1, 65535,
         OPM_BENCH_FIELD(faults.failError)},
        {"bluetooth.adapter", "adapter state: unknown, absent, initializing, running, off, error",
         0, 5, OPM_BENCH_FIELD(bluetooth.adapter)},
    };
    return keys;
}

#undef OPM_BENCH_FIELD

struct Setter {
    const BenchKey& key;
    const std::string& text;
    std::string& error;

    bool InRange(double value) const {
        if (value >= key.min && value <= key.max) return true;
        error = std::string(key.name) + ": " + text + " is outside " + RangeText(key);
        return false;
    }
    bool Malformed(const char* what) const {
        error = std::string(key.name) + ": '" + text + "' is not " + what;
        return false;
    }

    bool operator()(bool* field) const {
        bool value = false;
        if (!ParseBool(text, value)) return Malformed("0 or 1");
        *field = value;
        return true;
    }
    bool operator()(int* field) const {
        long long value = 0;
        if (!ParseWhole(text, value)) return Malformed("a whole number");
        if (!InRange(static_cast<double>(value))) return false;
        *field = static_cast<int>(value);
        return true;
    }
    bool operator()(double* field) const {
        double value = 0;
        if (!ParseReal(text, value)) return Malformed("a number");
        if (!InRange(value)) return false;
        *field = value;
        return true;
    }
    bool operator()(std::uint32_t* field) const {
        long long value = 0;
        if (!ParseWhole(text, value)) return Malformed("a control code (e.g. 0x80062003)");
        if (!InRange(static_cast<double>(value))) return false;
        *field = static_cast<std::uint32_t>(value);
        return true;
    }
    bool operator()(std::string* field) const {
        for (char c : text)
            if (static_cast<unsigned char>(c) < 0x20) return Malformed("printable text");
        *field = text;
        return true;
    }
    bool operator()(AdapterState* field) const {
        for (std::uint32_t state = 0; state < std::size(kAdapterNames); ++state)
            if (text == kAdapterNames[state] || text == std::to_string(state)) {
                *field = static_cast<AdapterState>(state);
                return true;
            }
        return Malformed("one of unknown, absent, initializing, running, off, error");
    }
};

struct Getter {
    std::string operator()(bool* field) const { return *field ? "1" : "0"; }
    std::string operator()(int* field) const { return std::to_string(*field); }
    std::string operator()(double* field) const { return FormatReal(*field); }
    std::string operator()(std::uint32_t* field) const {
        char text[16];
        std::snprintf(text, sizeof text, "0x%08X", *field);
        return text;
    }
    std::string operator()(std::string* field) const { return *field; }
    std::string operator()(AdapterState* field) const { return AdapterStateName(*field); }
};

}  // namespace

const std::vector<BenchKey>& BenchKeys() {
    static const std::vector<BenchKey> keys = MakeKeys();
    return keys;
}

const BenchKey* FindBenchKey(std::string_view name) {
    for (const BenchKey& key : BenchKeys())
        if (name == key.name) return &key;
    return nullptr;
}

bool SetBenchValue(BenchSettings& settings, const BenchKey& key, std::string_view text,
                   std::string& error) {
    const std::string value = Trimmed(text);
    return std::visit(Setter{key, value, error}, key.field(settings));
}

std::string GetBenchValue(const BenchSettings& settings, const BenchKey& key) {
    return std::visit(Getter{}, Field(key, settings));
}

bool ValidPeerName(std::string_view name, std::string& error) {
    if (name.empty()) return error = "a peer needs a name (peers.<name>)", false;
    for (char c : name)
        if (static_cast<unsigned char>(c) <= ' ' || c == '=' || c == '[' || c == ']')
            return error =
                       "peer name '" + std::string(name) + "' has a blank or a reserved character",
                   false;
    return true;
}

namespace {
// "{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}", as a device's service list holds them.
bool IsBracedUuid(std::string_view text) {
    if (text.size() != 38 || text.front() != '{' || text.back() != '}') return false;
    for (size_t i = 1; i < 37; ++i) {
        const bool dash = i == 9 || i == 14 || i == 19 || i == 24;
        if (dash ? text[i] != '-' : !std::isxdigit(static_cast<unsigned char>(text[i])))
            return false;
    }
    return true;
}
}  // namespace

bool ValidPeerValue(std::string_view value, std::string& canonical, std::string& error) {
    const std::string text = Trimmed(value);
    const size_t blank = text.find_first_of(" \t");
    const std::string address = text.substr(0, blank);
    const std::string services = blank == std::string::npos ? "" : Trimmed(text.substr(blank));
    const size_t colon = address.rfind(':');
    long long port = 0;
    if (colon == std::string::npos || colon == 0 ||
        !ParseWhole(address.substr(colon + 1), port) || port < 1 || port > 65535) {
        error = "peer address '" + address + "' is not host:port (port 1 .. 65535)";
        return false;
    }
    for (size_t start = 0; !services.empty() && start <= services.size();) {
        const size_t end = std::min(services.find(';', start), services.size());
        if (!IsBracedUuid(services.substr(start, end - start))) {
            error = "peer services '" + services + "' are not braced UUIDs separated by ';'";
            return false;
        }
        start = end + 1;
    }
    canonical = services.empty() ? address : address + " " + services;
    return true;
}

const char* AdapterStateName(AdapterState state) {
    const auto index = static_cast<std::uint32_t>(state);
    return index < std::size(kAdapterNames) ? kAdapterNames[index] : "unknown";
}

}  // namespace sim
