#pragma once
// The one optical bench of the process, shared by the module library and the
// drivers (they all link this library, so they see the same lasers). The
// bench file is looked at on every access and re-read when it changed, so a
// change takes effect at the next driver read.

#include <sys/types.h>

#include <cstdint>
#include <ctime>
#include <memory>
#include <mutex>
#include <string>

#include "Simulator/bench/BenchSettings.h"
#include "Simulator/bench/LaserBank.h"

namespace sim {

class Bench {
public:
    static Bench& Instance();

    // The bench as the file holds it now; defaults when it is missing or unreadable.
    std::shared_ptr<const BenchSettings> Settings();
    std::string Path();
    // Takes the bench from another file from now on (tests, the tool's --file).
    void UsePath(const std::string& path);

    LaserBank::Result ApplyLaserWord(std::uint32_t word);
    LaserBank::State Lasers();

    // Numbers the InitOTDR calls of this run: 1 for the first.
    int CountInitAttempt();
    // Back to the state of a fresh run: lasers off, no InitOTDR call seen.
    void ResetRun();

private:
    struct Stamp {
        bool exists = false;
        bool regular = false;
        dev_t device = 0;
        ino_t inode = 0;
        off_t size = 0;
        timespec modified{};
        bool operator==(const Stamp& other) const;
    };
    static Stamp StampOf(const std::string& path);
    void Reload(const Stamp& stamp);

    std::mutex mutex;
    std::string path;
    bool loaded = false;
    Stamp stamp;
    std::shared_ptr<const BenchSettings> settings = std::make_shared<BenchSettings>();
    LaserBank lasers;
    int initAttempts = 0;
};

}  // namespace sim
