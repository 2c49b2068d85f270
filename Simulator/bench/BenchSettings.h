#pragma once
// Everything a test or a trainer can set on the optical bench, with the
// defaults of the simulated model. The bench file overrides these key by key.

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace sim {

// Adapter states as the Bluetooth driver reports them (0..5).
enum class AdapterState : std::uint32_t {
    Unknown = 0,
    NotPresent = 1,
    Initializing = 2,
    Running = 3,
    ShutDown = 4,
    Error = 5,
};

struct LaserSettings {
    int id = 0;          // identifier the module is commanded with; 0: no laser in this slot
    int wavelength = 0;  // nm
    double dBm = 0.0;    // continuous output power
};

struct BenchSettings {
    struct Input {
        bool enabled = true;  // false: the meter's port is dark
        double dBm = -20.0;
        int wavelength = 1550;
    } input;

    struct Loopback {
        bool enabled = false;  // a patch cord from the laser port to the meter's port
        double lossDb = 3.0;
    } loopback;

    std::array<LaserSettings, 3> lasers{{{1, 1310, -3.0}, {2, 1550, -3.0}, {3, 1625, -3.0}}};

    struct Noise {
        double adcCounts = 3.0;   // rms, per conversion
        double relative = 0.002;  // rms, of the optical signal
        int seed = 1;
    } noise;

    struct Detector {
        double darkPicoAmps = 20.0;
        double responsivityScale = 1.0;  // ageing or a dirty window
    } detector;

    struct Adc {
        std::array<double, 3> offsetCounts{1800.0, 1400.0, 1000.0};  // per range
        int conversionMicros = 1000;                                 // a read blocks this long
    } adc;

    struct Module {
        std::string board = "OTDR-SIM";
        std::string hardwareId = "TVX-SIM-0001";
        std::string firmware = "1.0.0";
        std::string modelTag = "SIM1PM2";
        std::string idDll;  // ID_DLL that InitOTDR accepts; empty accepts any
    } module;

    struct Faults {
        int initOtdrFailures = 0;         // InitOTDR fails this many times per run
        bool noOlt1 = false;              // the power meter's driver finds no hardware
        std::uint32_t failIoControl = 0;  // control code that fails; 0: none
        int failError = 31;               // error code of that failure
    } faults;

    struct Bluetooth {
        AdapterState adapter = AdapterState::Running;
    } bluetooth;

    // Named OBEX peers reached over TCP, in file order: name -> "host:port"
    // and, after a blank, the braced service UUIDs separated by ';'.
    std::vector<std::pair<std::string, std::string>> peers;
};

}  // namespace sim
