// A writer killed at random instants must leave the old file or a new one,
// never a torn or empty one: the INI files through TIniFile::Save and the
// registry hive through RegFlushKey.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <iostream>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "Platform/Registry.h"
#include "Support/IniFile.h"
#include "Support/ScratchDirectory.h"

namespace {

constexpr int Kills = 300;
constexpr std::uint32_t StartMarker = 0xFFFFFFFFu;

// Content of version `n`: its size and its lines change with n.
std::string PayloadLine(std::uint32_t n, int i) {
    return std::string(static_cast<std::size_t>((n + i) % 50 + 10),
                       static_cast<char>('a' + (n + i) % 26));
}

std::string ExpectedIni(std::uint32_t n) {
    std::string text = "[Run]\nVersion=" + std::to_string(n) + "\n\n[Data]\n";
    for (int i = 0; i < static_cast<int>(20 + n % 40); ++i)
        text += "Key" + std::to_string(i) + "=" + PayloadLine(n, i) + "\n";
    return text + "\n";
}

bool SaveIniVersion(const std::string& path, std::uint32_t n) {
    TIniFile ini(path.c_str());
    ini.GetSection("Run")->SetInt("Version", static_cast<int>(n));
    TIniSection* data = ini.GetSection("Data");
    for (int i = 0; i < static_cast<int>(20 + n % 40); ++i)
        data->GetEntry(("Key" + std::to_string(i)).c_str())->SetString(PayloadLine(n, i).c_str());
    return ini.Save() == 0;
}

const std::string InitialHive =
    "Windows Registry Editor Version 5.00\n\n"
    "[HKEY_LOCAL_MACHINE\\Software\\Tavix]\n"
    "\"DefaultLanguageDLL\"=\"English.rcc\"\n";

std::wstring HivePayload(std::uint32_t n) {
    return std::wstring(static_cast<std::size_t>(n % 700 + 1), static_cast<wchar_t>(L'A' + n % 26));
}

bool SetHiveValue(HKEY key, const wchar_t* name, const std::wstring& text) {
    return RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                          static_cast<DWORD>((text.size() + 1) * sizeof(WCHAR))) == ERROR_SUCCESS;
}

bool WriteHiveVersion(std::uint32_t n) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"Software\\Tavix", 0, KEY_ALL_ACCESS, &key) !=
        ERROR_SUCCESS)
        return false;
    const bool set = SetHiveValue(key, L"Version", std::to_wstring(n)) &&
                     SetHiveValue(key, L"Payload", HivePayload(n));
    const bool flushed = set && RegFlushKey(HKEY_LOCAL_MACHINE) == ERROR_SUCCESS;
    return RegCloseKey(key) == ERROR_SUCCESS && flushed;
}

// The hive text a complete flush of version `n` leaves, computed in memory.
std::string ExpectedHive(std::uint32_t n) {
    platform::LoadHiveFromText(InitialHive);
    HKEY key = nullptr;
    EXPECT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"Software\\Tavix", 0, KEY_ALL_ACCESS, &key),
              ERROR_SUCCESS);
    EXPECT_TRUE(SetHiveValue(key, L"Version", std::to_wstring(n)));
    EXPECT_TRUE(SetHiveValue(key, L"Payload", HivePayload(n)));
    RegCloseKey(key);
    return platform::HiveAsText();
}

// Version value of the loaded hive; none gives a value no writer uses.
std::uint32_t HiveVersion() {
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"Software\\Tavix", 0, KEY_ALL_ACCESS, &key) !=
        ERROR_SUCCESS)
        return StartMarker;
    DWORD size = 0;
    std::wstring text;
    if (RegQueryValueExW(key, L"Version", nullptr, nullptr, nullptr, &size) == ERROR_SUCCESS) {
        std::vector<WCHAR> buffer(size / sizeof(WCHAR) + 1, L'\0');
        if (RegQueryValueExW(key, L"Version", nullptr, nullptr,
                             reinterpret_cast<BYTE*>(buffer.data()), &size) == ERROR_SUCCESS)
            text = buffer.data();
    }
    RegCloseKey(key);
    return text.empty() ? StartMarker : static_cast<std::uint32_t>(std::stoul(text));
}

struct Round {
    std::vector<std::uint32_t> completed;  // versions whose write returned
};

// Forks a writer that prepares itself, announces its start, then writes
// versions first, first + 1, ... and reports each completed one; kills it
// after `delay`.
Round RunAndKill(const std::function<void()>& prepare,
                 const std::function<bool(std::uint32_t)>& writeVersion, std::uint32_t first,
                 std::chrono::microseconds delay) {
    int channel[2];
    if (pipe(channel) != 0) throw std::runtime_error("pipe failed");
    const pid_t child = fork();
    if (child < 0) throw std::runtime_error("fork failed");
    if (child == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        close(channel[0]);
        prepare();
        if (::write(channel[1], &StartMarker, sizeof StartMarker) != sizeof StartMarker) _exit(3);
        for (std::uint32_t n = first;; ++n) {
            if (!writeVersion(n)) _exit(2);
            if (::write(channel[1], &n, sizeof n) != sizeof n) _exit(3);
        }
    }
    close(channel[1]);
    std::uint32_t marker = 0;
    const bool started = read(channel[0], &marker, sizeof marker) == sizeof marker;
    std::this_thread::sleep_for(delay);
    kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    Round round;
    std::uint32_t n;
    while (read(channel[0], &n, sizeof n) == sizeof n) round.completed.push_back(n);
    close(channel[0]);
    EXPECT_TRUE(started && marker == StartMarker);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL)
        << "the writer ended by itself, status " << status;
    return round;
}

// Runs the kill rounds; `check` verifies the file and returns the version it holds.
// Average duration of one complete write on this machine's disk.
std::chrono::microseconds TimeOneWrite(const std::function<bool(std::uint32_t)>& writeVersion) {
    constexpr int Samples = 5;
    const auto start = std::chrono::steady_clock::now();
    for (std::uint32_t n = 1; n <= Samples; ++n) EXPECT_TRUE(writeVersion(n));
    return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() -
                                                                 start) /
           Samples;
}

void KillRepeatedly(const std::function<void()>& prepare,
                    const std::function<bool(std::uint32_t)>& writeVersion,
                    const std::function<std::uint32_t()>& check, std::uint32_t onDisk,
                    std::chrono::microseconds writeDuration) {
    // Kill instants spread over the start-up and about three whole writes, so
    // that they land before, inside and between writes on any disk.
    const auto spread = writeDuration.count() * 3 + 1000;
    std::mt19937 random(20150305);
    std::uniform_int_distribution<long> delay(0, spread);
    int roundsWithoutCompletedWrite = 0;
    int roundsEndingInFlight = 0;
    std::uint32_t next = onDisk + 1;
    for (int round = 0; round < Kills; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        const Round result =
            RunAndKill(prepare, writeVersion, next, std::chrono::microseconds(delay(random)));
        // The file holds the last version the writer finished, or the one it
        // was writing when it died; before any finished, possibly the old one.
        const std::uint32_t last = result.completed.empty() ? onDisk : result.completed.back();
        const std::uint32_t found = check();
        ASSERT_TRUE(found == last || found == (result.completed.empty() ? next : last + 1))
            << "found version " << found << ", last completed " << last;
        if (result.completed.empty()) ++roundsWithoutCompletedWrite;
        if (found != last) ++roundsEndingInFlight;
        next = std::max(found, last) + 1;
        onDisk = found;
        if (testing::Test::HasFailure()) return;
    }
    std::cout << Kills << " kills within " << spread << " us of the start, one write "
              << writeDuration.count() << " us; " << next << " versions written; "
              << roundsWithoutCompletedWrite << " kills before the first completed write, "
              << roundsEndingInFlight << " after a rename not yet reported\n";
}

class CrashInjectionTest : public testing::Test {
protected:
    ScratchDirectory dir;
};

TEST_F(CrashInjectionTest, IniFileIsAlwaysOneCompleteVersion) {
    const std::string path = dir.Path("opm.ini");
    const std::string calibration = dir.Path("calibration.ini");
    const auto writeDuration =
        TimeOneWrite([&](std::uint32_t n) { return SaveIniVersion(calibration, n); });
    ASSERT_TRUE(SaveIniVersion(path, 0));
    KillRepeatedly([] {}, [&](std::uint32_t n) { return SaveIniVersion(path, n); },
                   [&]() -> std::uint32_t {
                       TIniFile ini(path.c_str());
                       EXPECT_EQ(ini.Load(), 0);
                       const int version = ini.GetSection("Run")->GetInt("Version", -1, false);
                       EXPECT_GE(version, 0) << ScratchDirectory::Read(path);
                       EXPECT_EQ(ScratchDirectory::Read(path),
                                 ExpectedIni(static_cast<std::uint32_t>(version)));
                       return static_cast<std::uint32_t>(version);
                   },
                   0, writeDuration);
}

TEST_F(CrashInjectionTest, RegistryHiveIsAlwaysOneCompleteVersion) {
    const std::string path = dir.Path("registry.reg");
    platform::LoadHiveFromText(InitialHive, dir.Path("calibration.reg"));
    const auto writeDuration = TimeOneWrite(WriteHiveVersion);
    ScratchDirectory::Write(path, ExpectedHive(0));
    KillRepeatedly([&] { platform::LoadHive(path); }, WriteHiveVersion,
                   [&]() -> std::uint32_t {
                       const std::string text = ScratchDirectory::Read(path);
                       testing::internal::CaptureStderr();
                       EXPECT_TRUE(platform::LoadHive(path));
                       // Every line parses: nothing was reported as skipped.
                       EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
                       const std::uint32_t version = HiveVersion();
                       EXPECT_EQ(text, ExpectedHive(version));
                       return version;
                   },
                   0, writeDuration);
}

}  // namespace
