// The application as a user meets it, on the simulated instrument and the
// offscreen platform: from launch to the first value on the screen (median
// of ten launches), then, while it measures with nobody at the keys, its
// resident memory and its share of one core.
//
// Goals: first value within 0.8 s, at most 40 MB resident, at most 1 % of a
// core. The screen's texts are read through OPM_TRACE.

#include <signal.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr int kLaunches = 10;
constexpr int kSettleMs = 3000;
constexpr int kCpuWindowMs = 20000;
// The absolute value's control on the measuring screen.
constexpr const char* kShownValue = "shown 394/1020: ";

QProcess* Launch(const QString& image) {
    auto* process = new QProcess;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QT_QPA_PLATFORM", "offscreen");
    environment.insert("OPM_TRACE", "1");
    environment.remove("TAVIX_BENCH");
    environment.remove("TAVIX_REGISTRY");
    process->setProcessEnvironment(environment);
    process->start(image + "/PowerMeter", {});
    return process;
}

// Milliseconds until the first value is on the screen; -1 when none came.
qint64 WaitForFirstValue(QProcess& process, const QElapsedTimer& clock) {
    const QDeadlineTimer deadline(20000);
    QByteArray seen;
    while (!deadline.hasExpired() && process.state() != QProcess::NotRunning) {
        process.waitForReadyRead(50);
        seen += process.readAllStandardError();
        if (seen.contains(kShownValue)) return clock.elapsed();
    }
    return -1;
}

void Stop(QProcess* process) {
    process->terminate();
    if (!process->waitForFinished(10000)) process->kill();
    process->waitForFinished(5000);
    delete process;
}

long FieldOf(const std::string& path, const std::string& name) {
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);)
        if (line.rfind(name, 0) == 0) return std::stol(line.substr(name.size()));
    return -1;
}

// User plus system time of the process in clock ticks.
long CpuTicks(qint64 pid) {
    std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
    std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    std::istringstream fields(text.substr(text.rfind(')') + 2));
    std::string field;
    long utime = 0, stime = 0;
    for (int index = 3; fields >> field; ++index) {
        if (index == 14) utime = std::stol(field);
        if (index == 15) {
            stime = std::stol(field);
            break;
        }
    }
    return utime + stime;
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QTemporaryDir image;
    QProcess make;
    make.start(OPM_MAKE_IMAGE, {"--fresh", OPM_BUILD_DIR, image.path()});
    if (!make.waitForFinished(120000) || make.exitCode() != 0) {
        std::fprintf(stderr, "app-bench: the image could not be made\n");
        return 1;
    }

    std::vector<qint64> firstValue;
    for (int launch = 0; launch < kLaunches; ++launch) {
        QElapsedTimer clock;
        clock.start();
        QProcess* process = Launch(image.path());
        const qint64 ms = WaitForFirstValue(*process, clock);
        Stop(process);
        if (ms < 0) {
            std::fprintf(stderr, "app-bench: launch %d showed no value within 20 s\n", launch + 1);
            return 1;
        }
        firstValue.push_back(ms);
    }
    std::sort(firstValue.begin(), firstValue.end());
    std::printf("start to first value: median %lld ms (min %lld, max %lld, %d launches; goal 800)\n",
                static_cast<long long>((firstValue[kLaunches / 2 - 1] + firstValue[kLaunches / 2]) / 2),
                static_cast<long long>(firstValue.front()), static_cast<long long>(firstValue.back()),
                kLaunches);

    QElapsedTimer clock;
    clock.start();
    QProcess* process = Launch(image.path());
    if (WaitForFirstValue(*process, clock) < 0) return 1;
    QThread::msleep(kSettleMs);
    const qint64 pid = process->processId();
    const long rssKb = FieldOf("/proc/" + std::to_string(pid) + "/status", "VmRSS:");
    const long ticksBefore = CpuTicks(pid);
    QElapsedTimer window;
    window.start();
    // Keep draining the trace so the program never blocks on a full pipe.
    while (window.elapsed() < kCpuWindowMs) {
        process->waitForReadyRead(200);
        process->readAllStandardError();
    }
    const long ticks = CpuTicks(pid) - ticksBefore;
    const double cpuPercent =
        100.0 * (static_cast<double>(ticks) / static_cast<double>(sysconf(_SC_CLK_TCK))) /
        (static_cast<double>(window.elapsed()) / 1000.0);
    Stop(process);
    std::printf("resident memory while measuring: %.1f MB (goal 40)\n", rssKb / 1024.0);
    std::printf("CPU while measuring, keys idle: %.2f %% of one core over %d s (goal 1)\n",
                cpuPercent, kCpuWindowMs / 1000);
    return 0;
}
