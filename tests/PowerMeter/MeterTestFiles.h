#pragma once
// Calibration files for the meter tests: a private temporary directory per
// test and a factory file whose numbers are exact in binary, so that
// thresholds can be hit exactly. Ranges: R(0) = 16384, R(1) = 4096,
// R(2) = 1024; full scale 4096 counts; slot 0 adds 1.5 + 0.25 - 0.5 dB.

#include <filesystem>
#include <string>

namespace meter_test {

extern const char* const kFactoryFile;

class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    std::string File(const std::string& name) const { return (path / name).string(); }

private:
    std::filesystem::path path;
};

void WriteText(const std::string& file, const std::string& text);
// Empty when the file can't be read.
std::string ReadText(const std::string& file);

}  // namespace meter_test
