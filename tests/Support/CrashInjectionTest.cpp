// A writer killed at random instants must leave the old file or a new one,
// never a torn or empty one: the INI files through TIniFile::Save, the
// registry hive through RegFlushKey and the result files.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "Platform/Registry.h"
#include "PowerMeter/Results/ResultFile.h"
#include "Support/IniFile.h"
#include "Support/ScratchDirectory.h"

namespace {

constexpr int Kills = 300;
// Kills that found a temporary beside the file landed inside a write, between
// its start and its rename; without enough of them the rounds prove nothing.
// About half land there on an idle machine, a sixth under a sanitizer and load.
constexpr int MinKillsInsideAWrite = Kills / 10;
constexpr std::uint32_t StartMarker = 0xFFFFFFFFu;
using Writer = std::function<bool(std::uint32_t)>;

// Version n: its size and its lines change with n.
std::string Payload(std::uint32_t n, std::uint32_t i) {
    return std::string((n + i) % 50 + 10, static_cast<char>('a' + (n + i) % 26));
}

std::string ExpectedIni(std::uint32_t n) {
    std::string text = "[Run]\nVersion=" + std::to_string(n) + "\n\n[Data]\n";
    for (std::uint32_t i = 0; i < 20 + n % 40; ++i)
        text += "Key" + std::to_string(i) + "=" + Payload(n, i) + "\n";
    return text + "\n";
}

bool SaveIni(const std::string& path, std::uint32_t n) {
    TIniFile ini(path.c_str());
    ini.GetSection("Run")->SetInt("Version", static_cast<int>(n));
    for (std::uint32_t i = 0; i < 20 + n % 40; ++i)
        ini.GetSection("Data")
            ->GetEntry(("Key" + std::to_string(i)).c_str())
            ->SetString(Payload(n, i).c_str());
    return ini.Save() == 0;
}

const std::string HiveStart =
    "Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\Software\\Tavix]\n"
    "\"DefaultLanguageDLL\"=\"English.rcc\"\n\"Version\"=\"";

std::string ExpectedHive(std::uint32_t n) {
    return HiveStart + std::to_string(n) + "\"\n\"Payload\"=\"" + Payload(n, n % 700) + "\"\n";
}

bool WriteHive(std::uint32_t n) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"Software\\Tavix", 0, KEY_ALL_ACCESS, &key) != 0)
        return false;
    bool written = true;
    for (const auto& [name, text] :
         {std::pair{L"Version", std::to_string(n)}, std::pair{L"Payload", Payload(n, n % 700)}}) {
        const std::wstring wide(text.begin(), text.end());
        written = written &&
                  RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(wide.c_str()),
                                 (wide.size() + 1) * sizeof(WCHAR)) == 0;
    }
    written = written && RegFlushKey(key) == 0;
    return RegCloseKey(key) == 0 && written;
}

// Version n is the first result's year; the count and values change with n.
std::vector<OPMResult> Results(std::uint32_t n) {
    std::vector<OPMResult> results(n % 300 + 1,
                                   {.year = 2015, .description = std::wstring(n % 20, L'µ')});
    for (std::size_t i = 0; i < results.size(); ++i)
        results[i].waveLength = static_cast<int>(1310 + i),
        results[i].absPower = -0.25f * ((n + i) % 80);
    results[0].year = static_cast<int>(n);
    return results;
}

const std::string ResultsStart = "{\n    \"OLTS\": [\n        {\n            \"Date\": \"";

// The version a file holds if it is one complete version, else StartMarker.
std::uint32_t VersionIn(const std::string& text, const std::string& prefix,
                        const std::function<std::string(std::uint32_t)>& expected) {
    if (text.rfind(prefix, 0) != 0) return StartMarker;
    const auto n =
        static_cast<std::uint32_t>(std::strtoul(text.c_str() + prefix.size(), nullptr, 10));
    return text == expected(n) ? n : StartMarker;
}

// Forks a writer that prepares itself, announces its start, then writes
// versions first, first + 1, ... reporting each completed one; kills it after
// `delay`. Returns the versions whose write returned.
std::vector<std::uint32_t> RunAndKill(const std::function<void()>& prepare, const Writer& write,
                                      std::uint32_t first, std::chrono::microseconds delay) {
    int channel[2];
    if (pipe(channel) != 0) throw std::runtime_error("pipe failed");
    const pid_t child = fork();
    if (child < 0) throw std::runtime_error("fork failed");
    if (child == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        close(channel[0]);
        prepare();
        if (::write(channel[1], &StartMarker, sizeof StartMarker) != sizeof StartMarker) _exit(3);
        for (std::uint32_t n = first;; ++n)
            if (!write(n) || ::write(channel[1], &n, sizeof n) != sizeof n) _exit(2);
    }
    close(channel[1]);
    std::uint32_t n = 0;
    // A writer that dies before its start closes the pipe: no wait for ever.
    EXPECT_TRUE(read(channel[0], &n, sizeof n) == sizeof n && n == StartMarker);
    std::this_thread::sleep_for(delay);
    kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << "status " << status;
    std::vector<std::uint32_t> completed;
    while (read(channel[0], &n, sizeof n) == sizeof n) completed.push_back(n);
    close(channel[0]);
    return completed;
}

void KillRepeatedly(const std::string& path, const std::function<void()>& prepare,
                    const Writer& write, const std::function<std::uint32_t()>& version) {
    // Kill instants spread over about two whole writes, timed on this disk.
    const auto start = std::chrono::steady_clock::now();
    for (std::uint32_t n = 1; n <= 5; ++n) ASSERT_TRUE(write(n));
    const auto spread = std::chrono::duration_cast<std::chrono::microseconds>(
                            std::chrono::steady_clock::now() - start) *
                        2 / 5;
    std::mt19937 random(20150305);
    std::uniform_int_distribution<long> delay(0, spread.count());
    std::uint32_t onDisk = version();
    int inside = 0, round = 0;
    // A loaded machine stretches the writes unevenly: kill on, within a bound,
    // until enough kills have landed inside one.
    for (; (round < Kills || inside < MinKillsInsideAWrite) && round < 4 * Kills &&
           !testing::Test::HasFailure();
         ++round) {
        // A temporary left by the previous kill must not count for this one.
        std::filesystem::remove(path + ".tmp");
        const auto completed =
            RunAndKill(prepare, write, onDisk + 1, std::chrono::microseconds(delay(random)));
        // The last version finished, or the one being written when the kill came.
        const std::uint32_t last = completed.empty() ? onDisk : completed.back();
        const std::uint32_t found = version();
        ASSERT_TRUE(found == last || found == last + 1)
            << "round " << round << ": found " << found << ", last completed " << last << "\n"
            << ScratchDirectory::Read(path);
        inside += std::filesystem::exists(path + ".tmp");
        onDisk = found;
    }
    EXPECT_GE(inside, MinKillsInsideAWrite)
        << "of " << round << " kills, writes of about " << spread.count() << " us / 2";
}

TEST(CrashInjectionTest, IniFileIsAlwaysOneCompleteVersion) {
    ScratchDirectory dir;
    const std::string path = dir.Path("opm.ini");
    KillRepeatedly(
        path, [] {}, [&](std::uint32_t n) { return SaveIni(path, n); },
        [&] { return VersionIn(ScratchDirectory::Read(path), "[Run]\nVersion=", ExpectedIni); });
}

TEST(CrashInjectionTest, RegistryHiveIsAlwaysOneCompleteVersion) {
    ScratchDirectory dir;
    const std::string path = dir.Path("registry.reg");
    ScratchDirectory::Write(path, ExpectedHive(0));
    ASSERT_TRUE(platform::LoadHive(path));
    KillRepeatedly(
        path, [&] { platform::LoadHive(path); }, WriteHive,
        [&] { return VersionIn(ScratchDirectory::Read(path), HiveStart, ExpectedHive); });
}

TEST(CrashInjectionTest, ResultFileIsAlwaysOneCompleteVersion) {
    ScratchDirectory dir;
    const std::string path = dir.Path("results.txt");
    KillRepeatedly(
        path, [] {},
        [&](std::uint32_t n) {
            resultfile::Write(path, Results(n));
            return true;
        },
        [&] {
            return VersionIn(ScratchDirectory::Read(path), ResultsStart,
                             [](std::uint32_t n) { return resultfile::Serialise(Results(n)); });
        });
}

}  // namespace
