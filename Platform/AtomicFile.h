#pragma once
// Whole-file rewrites that survive a power cut at any instant: the content
// goes to a temporary file beside the target ("<target>.tmp"), is synced,
// renamed over the target, and the directory is synced. Readers see the old
// file or the new one, never a torn or empty one. The target keeps its mode; a
// target without write permission is not replaced; a symbolic link is written
// through to its destination, beside which the temporary then lives.

#include <atomic>
#include <cstdio>
#include <string>
#include <string_view>

namespace platform {

class AtomicFileWriter {
public:
    explicit AtomicFileWriter(std::string targetPath);
    ~AtomicFileWriter();  // discards the temporary file unless committed
    AtomicFileWriter(const AtomicFileWriter&) = delete;
    AtomicFileWriter& operator=(const AtomicFileWriter&) = delete;

    // Stream to write the new content to; null if the target may not be
    // written or the temporary file could not be created (missing directory,
    // no permission, no space).
    FILE* Stream() const { return stream; }
    // Makes the new content the target's. False leaves the old file in place;
    // a failed directory flush after the rename is reported on the debug
    // output only, since the content has been replaced.
    bool Commit();

private:
    std::string target;
    std::string temporary;
    FILE* stream = nullptr;
};

bool WriteFileAtomically(const std::string& path, std::string_view content);

// Puts the directory entry of `path` on storage, so that a file just created
// survives a power cut. False when the directory could not be flushed.
bool SyncDirectoryOf(const std::string& path);

// Fault injection for tests: arms one failure of the next such step.
struct AtomicFileFaults {
    std::atomic<bool> failNextDirectorySync{false};
};
AtomicFileFaults& InjectAtomicFileFaults();

}  // namespace platform
