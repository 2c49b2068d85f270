#pragma once
// Helpers shared by the device tests: throw-away directories, small files and
// the pattern of a fatal assertion's text.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>

#include "Platform/FatalError.h"

namespace devicetest {

// Directories still alive when the process ends: a death test's child ends
// through exit(), which skips the destructors of the test's own objects.
class LiveTempDirs {
public:
    static LiveTempDirs& Get() {
        static LiveTempDirs dirs;
        return dirs;
    }
    ~LiveTempDirs() {
        for (const std::string& path : paths) Remove(path);
    }
    void Add(const std::string& path) { paths.insert(path); }
    void Release(const std::string& path) {
        paths.erase(path);
        Remove(path);
    }

private:
    static void Remove(const std::string& path) {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    std::set<std::string> paths;
};

// A directory of its own for one test, removed with everything in it.
class TempDir {
public:
    TempDir() {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "opm-device-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
        path = pattern + "/";
        LiveTempDirs::Get().Add(path);
    }
    ~TempDir() { LiveTempDirs::Get().Release(path); }
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
