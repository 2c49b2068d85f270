#include "ProbeImage.h"

#include <QProcessEnvironment>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace e2e {

namespace {
// Limits that matter only when something hangs.
constexpr int kLineLimitMs = 20000;
constexpr int kRunLimitMs = 180000;

QProcessEnvironment ImageEnvironment() {
    // The image's own bench and hive, whatever the caller's environment says.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove("TAVIX_BENCH");
    environment.remove("TAVIX_REGISTRY");
    return environment;
}

std::string Trimmed(QByteArray bytes) {
    return bytes.trimmed().toStdString();
}
}  // namespace

std::optional<Reading> ParseReading(const std::string& line) {
    std::istringstream text(line);
    Reading reading;
    if (!(text >> reading.dBm >> reading.unclamped >> reading.range >> reading.normalized))
        return std::nullopt;
    return reading;
}

ProbeImage::ProbeImage() {
    std::string pattern =
        (std::filesystem::temp_directory_path() / "opm-e2e-image-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
    dir = pattern + "/";
    QProcess make;
    make.setProcessChannelMode(QProcess::MergedChannels);
    make.start(OPM_MAKE_IMAGE, {OPM_BUILD_DIR, QString::fromStdString(dir)});
    if (!make.waitForFinished(kRunLimitMs) || make.exitCode() != 0)
        throw std::runtime_error("make-image.sh failed: " + make.readAll().toStdString());
    std::string error;
    if (!Bench("adc.conversionUs", "0", &error)) throw std::runtime_error(error);
}

ProbeImage::~ProbeImage() {
    std::error_code ignored;
    std::filesystem::remove_all(dir, ignored);
}

std::unique_ptr<QProcess> ProbeImage::Start(const QString& program, const QStringList& arguments) {
    auto process = std::make_unique<QProcess>();
    process->setProcessEnvironment(ImageEnvironment());
    // Run from elsewhere: the tools must find the image through their own path.
    process->setWorkingDirectory(QString::fromStdString(std::filesystem::temp_directory_path()));
    process->start(QString::fromStdString(dir) + program, arguments);
    return process;
}

bool ProbeImage::Bench(const std::string& key, const std::string& value, std::string* error) {
    std::unique_ptr<QProcess> bench =
        Start("opm-bench", {"set", QString::fromStdString(key), QString::fromStdString(value)});
    const bool done = bench->waitForFinished(kRunLimitMs);
    if (done && bench->exitStatus() == QProcess::NormalExit && bench->exitCode() == 0) return true;
    if (error != nullptr)
        *error = "opm-bench set " + key + " " + value + ": " +
                 bench->readAllStandardError().toStdString();
    return false;
}

ProbeRun ProbeImage::Probe(const QStringList& arguments) {
    std::unique_ptr<QProcess> probe = Start("opm-probe", arguments);
    ProbeRun run;
    if (!probe->waitForFinished(kRunLimitMs)) {
        probe->kill();
        probe->waitForFinished();
        run.errors = "opm-probe did not finish";
        return run;
    }
    run.exitCode = probe->exitStatus() == QProcess::NormalExit ? probe->exitCode() : -1;
    run.errors = probe->readAllStandardError().toStdString();
    std::istringstream out(probe->readAllStandardOutput().toStdString());
    for (std::string line; std::getline(out, line);) {
        if (line.rfind('#', 0) == 0)
            run.header.push_back(line);
        else if (auto reading = ParseReading(line))
            run.readings.push_back(*reading);
    }
    return run;
}

std::unique_ptr<ProbeSession> ProbeImage::Follow(const QStringList& arguments) {
    return std::make_unique<ProbeSession>(Start("opm-probe", QStringList{"--follow"} + arguments));
}

std::string ProbeImage::ReadText(const std::string& relativePath) const {
    std::ifstream file(dir + relativePath, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

ProbeSession::ProbeSession(std::unique_ptr<QProcess> started) : process(std::move(started)) {}

ProbeSession::~ProbeSession() {
    if (process->state() != QProcess::NotRunning) Stop();
}

std::optional<std::string> ProbeSession::NextLine() {
    while (!process->canReadLine()) {
        if (process->state() == QProcess::NotRunning || !process->waitForReadyRead(kLineLimitMs))
            return std::nullopt;
    }
    return Trimmed(process->readLine());
}

std::optional<Reading> ProbeSession::Next() {
    while (std::optional<std::string> line = NextLine()) {
        if (line->rfind('#', 0) == 0) {
            header.push_back(*line);
            continue;
        }
        if (auto reading = ParseReading(*line)) return reading;
    }
    return std::nullopt;
}

void ProbeSession::Drop() {
    process->waitForReadyRead(0);
    while (process->canReadLine()) {
        const std::string line = Trimmed(process->readLine());
        if (line.rfind('#', 0) == 0) header.push_back(line);
    }
}

int ProbeSession::Stop() {
    process->terminate();
    if (!process->waitForFinished(kLineLimitMs)) {
        process->kill();
        process->waitForFinished();
        return -1;
    }
    return process->exitStatus() == QProcess::NormalExit ? process->exitCode() : -1;
}

}  // namespace e2e
