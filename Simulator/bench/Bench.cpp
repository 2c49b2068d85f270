#include "Simulator/bench/Bench.h"

#include <sys/stat.h>

#include <cstdio>
#include <fstream>
#include <sstream>

#include "Simulator/bench/BenchFile.h"

namespace sim {

bool Bench::Stamp::operator==(const Stamp& other) const {
    return exists == other.exists && regular == other.regular && device == other.device &&
           inode == other.inode && size == other.size && modified.tv_sec == other.modified.tv_sec &&
           modified.tv_nsec == other.modified.tv_nsec;
}

Bench& Bench::Instance() {
    static Bench bench;
    return bench;
}

Bench::Stamp Bench::StampOf(const std::string& path) {
    struct stat info {};
    if (stat(path.c_str(), &info) != 0) return {};
    return {true, S_ISREG(info.st_mode), info.st_dev, info.st_ino, info.st_size, info.st_mtim};
}

// Problems go to standard error once per change of the file, not at every read.
void Bench::Reload(const Stamp& newStamp) {
    stamp = newStamp;
    loaded = true;
    if (!stamp.exists) {
        settings = std::make_shared<BenchSettings>();
        return;
    }
    std::ifstream file(path);
    if (!stamp.regular || !file) {
        std::fprintf(stderr, "bench: %s: cannot be read, using the defaults\n", path.c_str());
        settings = std::make_shared<BenchSettings>();
        return;
    }
    std::ostringstream text;
    text << file.rdbuf();
    BenchLoad load = ParseBench(text.str());
    for (const std::string& problem : load.problems)
        std::fprintf(stderr, "bench: %s: %s (ignored)\n", path.c_str(), problem.c_str());
    settings = std::make_shared<const BenchSettings>(std::move(load.settings));
}

std::shared_ptr<const BenchSettings> Bench::Settings() {
    std::lock_guard lock(mutex);
    if (path.empty()) path = DefaultBenchPath();
    const Stamp now = StampOf(path);
    if (!loaded || !(now == stamp)) Reload(now);
    return settings;
}

std::string Bench::Path() {
    std::lock_guard lock(mutex);
    if (path.empty()) path = DefaultBenchPath();
    return path;
}

void Bench::UsePath(const std::string& newPath) {
    std::lock_guard lock(mutex);
    path = newPath;
    loaded = false;
}

LaserBank::Result Bench::ApplyLaserWord(std::uint32_t word) {
    const std::shared_ptr<const BenchSettings> now = Settings();
    std::lock_guard lock(mutex);
    return lasers.Apply(word, *now);
}

LaserBank::State Bench::Lasers() {
    std::lock_guard lock(mutex);
    return lasers.Current();
}

int Bench::CountInitAttempt() {
    std::lock_guard lock(mutex);
    return ++initAttempts;
}

void Bench::ResetRun() {
    std::lock_guard lock(mutex);
    lasers = LaserBank();
    initAttempts = 0;
}

}  // namespace sim
