#pragma once
// Helpers shared by the device tests: throw-away directories, small files and
// the pattern of a fatal assertion's text.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include "Platform/FatalError.h"

namespace devicetest {

// A directory of its own for one test, removed with everything in it.
class TempDir {
public:
    TempDir() {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "opm-device-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
        path = pattern + "/";
    }
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    // With its trailing '/'.
    const std::string& Path() const { return path; }
    std::string operator/(const std::string& name) const { return path + name; }

private:
    std::string path;
};

inline void WriteFile(const std::string& path, const std::string& text) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << text;
}

inline std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

// The exact text of a failed assertion, escaped for a death test's regex.
inline std::string AssertionPattern(const char* expression, const char* file, int line) {
    const std::string text = FatalAssertionText(expression, file, line);
    std::string pattern;
    for (char c : text) {
        if (std::string("\\^$.|?*+()[]{}").find(c) != std::string::npos) pattern += '\\';
        pattern += c;
    }
    return pattern;
}

}  // namespace devicetest
