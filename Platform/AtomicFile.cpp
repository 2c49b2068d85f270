#include "Platform/AtomicFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

namespace platform {
namespace {

std::string DirectoryOf(const std::string& path)
{
    const size_t slash = path.find_last_of('/');
    if (slash == std::string::npos) return ".";
    if (slash == 0) return "/";
    return path.substr(0, slash);
}

// The rename is only durable once the directory entry itself is on disk.
bool SyncDirectory(const std::string& directory)
{
    const int fd = open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return false;
    const bool synced = fsync(fd) == 0 || errno == EINVAL;
    close(fd);
    return synced;
}

}  // namespace

AtomicFileWriter::AtomicFileWriter(std::string targetPath) : target(std::move(targetPath))
{
    std::vector<char> name(target.begin(), target.end());
    const std::string suffix = ".tmp-XXXXXX";
    name.insert(name.end(), suffix.begin(), suffix.end());
    name.push_back('\0');
    const int fd = mkostemp(name.data(), O_CLOEXEC);
    if (fd < 0) return;
    fchmod(fd, 0644);
    temporary = name.data();
    stream = fdopen(fd, "w");
    if (stream == nullptr) {
        close(fd);
        unlink(temporary.c_str());
        temporary.clear();
    }
}

AtomicFileWriter::~AtomicFileWriter()
{
    if (stream != nullptr) {
        std::fclose(stream);
        unlink(temporary.c_str());
    }
}

bool AtomicFileWriter::Commit()
{
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

bool WriteFileAtomically(const std::string& path, std::string_view content)
{
    AtomicFileWriter writer(path);
    if (writer.Stream() == nullptr) return false;
    if (std::fwrite(content.data(), 1, content.size(), writer.Stream()) != content.size())
        return false;
    return writer.Commit();
}

}  // namespace platform
