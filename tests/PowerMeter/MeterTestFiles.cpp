#include "PowerMeter/MeterTestFiles.h"

#include <unistd.h>

#include <atomic>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace meter_test {

const char* const kFactoryFile =
    "[WaveLengths]\n"
    "WavesNum=3\n"
    "WaveLength0=1310\n"
    "WaveLength1=1550\n"
    "WaveLength2=850\n"
    "\n"
    "[Hardware]\n"
    "MaxADC=4096\n"
    "Resistor0=1024\n"
    "Resistor1=3072\n"
    "Resistor2=12288\n"
    "\n"
    "[FactoryCalibration]\n"
    "RefPowerCoeff=-0.5\n"
    "CalibrFreeCoeff=0.25\n"
    "ThreshSwitchUp=0.75\n"
    "ThreshSwitchDown=0.5\n"
    "WaveCentralCoeff0=1.5\n"
    "WaveCentralCoeff1=2\n"
    "WaveCentralCoeff2=-1\n"
    "\n"
    "[UserCalibration]\n"
    "Zero0=0\n"
    "Zero1=0\n"
    "Zero2=0\n"
    "\n"
    "[SoftwareState]\n"
    "ActiveWaveLength=1310\n"
    "ActiveWaveLengthIndex=0\n"
    "WaveLengthShift=0\n"
    "ReferenceLevel0=0\n"
    "ReferenceLevel1=0\n"
    "ReferenceLevel2=0\n"
    "\n";

TempDir::TempDir() {
    static std::atomic<int> counter{0};
    path = std::filesystem::temp_directory_path() /
           ("opm-meter-test-" + std::to_string(::getpid()) + "-" + std::to_string(++counter));
    std::filesystem::remove_all(path);
    std::filesystem::create_directories(path);
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

void WriteText(const std::string& file, const std::string& text) {
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out << text;
    if (!out) {
        throw std::runtime_error("cannot write " + file);
    }
}

std::string ReadText(const std::string& file) {
    std::ifstream in(file, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

}  // namespace meter_test
