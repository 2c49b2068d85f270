#pragma once
// A throw-away instrument image on the simulated instrument, with its bench
// and the opm-probe service tool run from it. Paths of the build come from
// the build system.

#include <QProcess>
#include <QStringList>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace e2e {

// One line of opm-probe's output.
struct Reading {
    double dBm = 0.0;
    double unclamped = 0.0;
    int range = -1;
    double normalized = 0.0;
};

struct ProbeRun {
    int exitCode = -1;
    std::vector<std::string> header;  // the '#' lines
    std::vector<Reading> readings;
    std::string errors;  // standard error
};

// opm-probe running with --follow, read line by line while the bench changes.
class ProbeSession {
public:
    explicit ProbeSession(std::unique_ptr<QProcess> process);
    ~ProbeSession();
    // The next reading; nothing when none arrives within a generous limit.
    std::optional<Reading> Next();
    // Drops what the probe printed so far.
    void Drop();
    // Interrupts the probe and waits for it; its exit code.
    int Stop();
    const std::vector<std::string>& Header() const { return header; }

private:
    std::optional<std::string> NextLine();
    std::unique_ptr<QProcess> process;
    std::vector<std::string> header;
};

class ProbeImage {
public:
    // Assembles the image in a new temporary directory and makes its ADC
    // convert without delay, so that a measurement takes its 300 ms only.
    ProbeImage();
    ~ProbeImage();
    ProbeImage(const ProbeImage&) = delete;
    ProbeImage& operator=(const ProbeImage&) = delete;

    const std::string& Dir() const { return dir; }
    // opm-bench set <key> <value>; false (with the reason in `error`) on failure.
    bool Bench(const std::string& key, const std::string& value, std::string* error = nullptr);
    ProbeRun Probe(const QStringList& arguments);
    std::unique_ptr<ProbeSession> Follow(const QStringList& arguments);
    std::string ReadText(const std::string& relativePath) const;

private:
    std::unique_ptr<QProcess> Start(const QString& program, const QStringList& arguments);
    std::string dir;
};

// Parses "dBm unclamped range normalized"; nothing for any other line.
std::optional<Reading> ParseReading(const std::string& line);

}  // namespace e2e
