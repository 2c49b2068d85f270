#pragma once
// A throw-away instrument image on the simulated instrument, and opm-probe
// run from it. Paths of the build come from the build system. Every wait for
// a child process is bounded and says what it waited for.

#include <QDeadlineTimer>
#include <QProcess>
#include <QProcessEnvironment>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "Support/ScratchDirectory.h"

namespace e2e {

// Limits that matter only when something hangs.
constexpr int kLineLimitMs = 20000;
constexpr int kRunLimitMs = 120000;

// One line of opm-probe's output: dBm, unclamped dBm, range, normalised value.
struct Reading {
    double dBm = 0.0;
    int range = -1;
};

// Waits for the process within `limitMs`; otherwise kills it and says what hung.
inline bool Finish(QProcess& process, int limitMs, const std::string& what, std::string& error) {
    if (process.state() == QProcess::NotRunning || process.waitForFinished(limitMs)) return true;
    process.kill();
    process.waitForFinished(kLineLimitMs);
    error = what + " did not finish within " + std::to_string(limitMs / 1000) + " s";
    return false;
}

// A program of the image (opm-probe by default), read line by line: the '#'
// lines gather in the header.
class Probe {
public:
    Probe(std::unique_ptr<QProcess> process, std::string name)
        : process(std::move(process)), name(std::move(name)) {}
    ~Probe() { Stop(); }

    // The next reading; nothing when the probe ended or printed no reading for
    // a long time (lines that are not readings, "nan" among them, do not count).
    std::optional<Reading> Next() {
        const QDeadlineTimer deadline(kLineLimitMs);
        for (;;) {
            while (!process->canReadLine())
                if (process->state() == QProcess::NotRunning || deadline.hasExpired() ||
                    !process->waitForReadyRead(static_cast<int>(deadline.remainingTime())))
                    return std::nullopt;
            if (deadline.hasExpired()) return std::nullopt;
            if (std::optional<Reading> reading = Parse(process->readLine().trimmed().toStdString()))
                return reading;
        }
    }
    // Drops what the probe printed so far.
    void Drop() {
        process->waitForReadyRead(0);
        while (process->canReadLine()) Parse(process->readLine().trimmed().toStdString());
    }
    // Waits for the probe to end (interrupting it first if asked); its exit
    // code, or -1 with the reason in `errors`.
    int Stop(bool interrupt = true) {
        if (interrupt) process->terminate();
        if (!Finish(*process, interrupt ? kLineLimitMs : kRunLimitMs, name, errors))
            return -1;
        errors += process->readAllStandardError().toStdString();
        return process->exitStatus() == QProcess::NormalExit ? process->exitCode() : -1;
    }

    std::vector<std::string> header;
    std::string errors;

private:
    std::optional<Reading> Parse(const std::string& line) {
        std::istringstream text(line);
        Reading reading;
        double unclamped = 0.0;
        if (line.rfind('#', 0) == 0) header.push_back(line);
        if (text >> reading.dBm >> unclamped >> reading.range) return reading;
        return std::nullopt;
    }

    std::unique_ptr<QProcess> process;
    std::string name;
};

class ProbeImage {
public:
    // Assembles the image in a new temporary directory.
    ProbeImage() {
        QProcess make;
        make.setProcessChannelMode(QProcess::MergedChannels);
        make.start(OPM_MAKE_IMAGE, {OPM_BUILD_DIR, QString::fromStdString(dir)});
        std::string error;
        if (!Finish(make, kRunLimitMs, "make-image.sh", error) || make.exitCode() != 0)
            throw std::runtime_error("make-image.sh failed: " + error +
                                     make.readAll().toStdString());
        WriteBench("");
    }

    // Replaces bench.ini as an editor that saves atomically would; the ADC
    // converts without delay, so a measurement takes the meter's own pauses only.
    void WriteBench(const std::string& text) const {
        std::ofstream(dir + "bench.ini.new") << "[adc]\nconversionUs = 0\n" << text;
        std::filesystem::rename(dir + "bench.ini.new", dir + "bench.ini");
    }
    // `program` started from the image with `arguments`.
    std::unique_ptr<Probe> Start(const QStringList& arguments,
                                 const std::string& program = "opm-probe") const {
        auto process = std::make_unique<QProcess>();
        // The image's own bench and hive, whatever the caller's environment says.
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove("TAVIX_BENCH");
        environment.remove("TAVIX_REGISTRY");
        process->setProcessEnvironment(environment);
        // Run from elsewhere: the probe must find the image through its own path.
        process->setWorkingDirectory(
            QString::fromStdString(std::filesystem::temp_directory_path()));
        process->start(QString::fromStdString(dir + program), arguments);
        return std::make_unique<Probe>(std::move(process), program);
    }
    std::string ReadText(const std::string& relativePath) const {
        return ScratchDirectory::Read(dir + relativePath);
    }

    ScratchDirectory scratch;
    std::string dir = scratch.Root().string() + "/";
};

}  // namespace e2e
