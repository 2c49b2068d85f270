#include "Platform/AtomicFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace platform {
namespace {

std::string DirectoryOf(const std::string& path) {
    const size_t slash = path.find_last_of('/');
    if (slash == std::string::npos) return ".";
    if (slash == 0) return "/";
    return path.substr(0, slash);
}

// The rename is only durable once the directory entry itself is on disk.
bool SyncDirectory(const std::string& directory) {
    const int fd = open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return false;
    const bool synced = fsync(fd) == 0 || errno == EINVAL;
    close(fd);
    return synced;
}

}  // namespace

AtomicFileWriter::AtomicFileWriter(std::string targetPath)
    : target(std::move(targetPath)), temporary(target + ".tmp") {
    // One fixed name per target: a write cut short by a power loss leaves at
    // most one stale temporary, which the next write of the target replaces.
    const int fd = open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) return;
    stream = fdopen(fd, "w");
    if (stream == nullptr) {
        close(fd);
        unlink(temporary.c_str());
    }
}

AtomicFileWriter::~AtomicFileWriter() {
    if (stream != nullptr) {
        std::fclose(stream);
        unlink(temporary.c_str());
    }
}

bool AtomicFileWriter::Commit() {
    if (stream == nullptr) return false;
    bool written = std::fflush(stream) == 0 && std::ferror(stream) == 0;
    written = written && fsync(fileno(stream)) == 0;
    written = (std::fclose(stream) == 0) && written;
    stream = nullptr;
    if (!written || rename(temporary.c_str(), target.c_str()) != 0) {
        unlink(temporary.c_str());
        return false;
    }
    return SyncDirectory(DirectoryOf(target));
}

bool WriteFileAtomically(const std::string& path, std::string_view content) {
    AtomicFileWriter writer(path);
    if (writer.Stream() == nullptr) return false;
    if (std::fwrite(content.data(), 1, content.size(), writer.Stream()) != content.size())
        return false;
    return writer.Commit();
}

}  // namespace platform
