#pragma once
// Whole-file rewrites that survive a power cut at any instant: the content
// goes to a temporary file beside the target ("<target>.tmp"), is synced, renamed over the
// target, and the directory is synced. Readers see the old file or the new
// one, never a torn or empty one.

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

    // Stream to write the new content to; null if the temporary file could
    // not be created (missing directory, no permission, no space).
    FILE* Stream() const { return stream; }
    // Makes the new content the target's. False leaves the old file in place.
    bool Commit();

private:
    std::string target;
    std::string temporary;
    FILE* stream = nullptr;
};

bool WriteFileAtomically(const std::string& path, std::string_view content);

}  // namespace platform
