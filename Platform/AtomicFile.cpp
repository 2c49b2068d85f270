#include "Platform/AtomicFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "Platform/DebugOutput.h"
#include "Platform/WideText.h"

namespace platform {
namespace {

std::string DirectoryOf(const std::string& path) {
    const size_t slash = path.find_last_of('/');
    if (slash == std::string::npos) return ".";
    if (slash == 0) return "/";
    return path.substr(0, slash);
}

// A link is written through: its destination gets the new content and the
// link stays. Empty when the chain cannot be followed.
std::string Destination(const std::string& path) {
    namespace fs = std::filesystem;
    fs::path current = path;
    std::error_code error;
    for (int hop = 0; hop < 40; ++hop) {
        if (!fs::is_symlink(fs::symlink_status(current, error))) return current.string();
        const fs::path link = fs::read_symlink(current, error);
        if (error) return {};
        current = link.is_absolute() ? link : current.parent_path() / link;
    }
    errno = ELOOP;
    return {};
}

// The rename is only durable once the directory entry itself is on disk.
bool SyncDirectory(const std::string& directory) {
    if (InjectAtomicFileFaults().failNextDirectorySync.exchange(false)) {
        errno = EIO;
        return false;
    }
    const int fd = open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return false;
    const bool synced = fsync(fd) == 0 || errno == EINVAL;
    const int error = errno;
    close(fd);
    errno = error;
    return synced;
}

}  // namespace

AtomicFileWriter::AtomicFileWriter(std::string targetPath) : target(Destination(targetPath)) {
    if (target.empty()) return;
    temporary = target + ".tmp";
    mode_t mode = 0644;
    struct stat existing {};
    if (stat(target.c_str(), &existing) == 0) {
        // What an open for writing would refuse, a rename must refuse too. The
        // write bits decide for the superuser, whom access() lets through.
        if ((existing.st_mode & 0222) == 0 || access(target.c_str(), W_OK) != 0) {
            errno = EACCES;
            return;
        }
        mode = existing.st_mode & 07777;
    }
    // One fixed name per target: a write cut short by a power loss leaves at
    // most one stale temporary, which the next write of the target replaces.
    const int fd = open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (fd < 0) return;
    stream = fdopen(fd, "w");
    // fchmod, unlike open, is not narrowed by the umask: the file keeps its mode.
    if (stream == nullptr || fchmod(fd, mode) != 0) {
        if (stream != nullptr)
            std::fclose(stream);
        else
            close(fd);
        stream = nullptr;
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
    // The new content is in place; only its survival of a power cut is in doubt.
    const std::string directory = DirectoryOf(target);
    if (!SyncDirectory(directory)) {
        const std::string text =
            "atomic file: " + directory + ": directory not flushed: " + std::strerror(errno) + "\n";
        OutputDebugStringW(FromUtf8(text).c_str());
    }
    return true;
}

bool WriteFileAtomically(const std::string& path, std::string_view content) {
    AtomicFileWriter writer(path);
    if (writer.Stream() == nullptr) return false;
    if (std::fwrite(content.data(), 1, content.size(), writer.Stream()) != content.size())
        return false;
    return writer.Commit();
}

bool SyncDirectoryOf(const std::string& path) {
    return SyncDirectory(DirectoryOf(path));
}

AtomicFileFaults& InjectAtomicFileFaults() {
    static AtomicFileFaults faults;
    return faults;
}

}  // namespace platform
