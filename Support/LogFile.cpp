#include "Support/LogFile.h"

#include <unistd.h>

#include <string>

#include "Platform/AtomicFile.h"
#include "Platform/LocalTime.h"

namespace {

constexpr const char* HeaderRule = "-------------------------------------------------------------";
static_assert(std::char_traits<char>::length(HeaderRule) == 61);

// On storage, not only in the C library's or the kernel's buffers: the last
// lines before a power cut are the ones worth reading.
void Flush(std::FILE* stream) {
    std::fflush(stream);
    fdatasync(fileno(stream));
}

}  // namespace

TLogFile::TLogFile(const char* path, int truncate, int echoToStderr)
    : isOpen(0),
      errorsEnabled(1),
      messagesEnabled(1),
      warningsEnabled(1),
      stream(std::fopen(path, truncate ? "wt" : "at")),
      headerWritten(0),
      echoToStderr(echoToStderr) {
    isOpen = stream ? 1 : 0;
    // A file the open created exists after a power cut only once its name is on storage.
    if (isOpen) platform::SyncDirectoryOf(path);
}

TLogFile::~TLogFile() {
    if (isOpen) std::fclose(stream);
}

void TLogFile::SetLevels(int mask) {
    errorsEnabled = mask & 1;
    warningsEnabled = mask & 2;
    messagesEnabled = mask & 4;
}

void TLogFile::Error(char source, const char* text, const char* detail) {
    if (errorsEnabled) WriteLevelled(source, 'E', text, detail);
}

void TLogFile::Message(char source, const char* text, const char* detail) {
    if (messagesEnabled) WriteLevelled(source, 'M', text, detail);
}

void TLogFile::Warning(char source, const char* text, const char* detail) {
    if (warningsEnabled) WriteLevelled(source, 'W', text, detail);
}

// Callers must not use the unlevelled writes on an unopened log; a null
// stream is still refused rather than handed to the C library.
void TLogFile::WriteValue(const char* name, long value) {
    if (!stream) return;
    std::fprintf(stream, "%s = %ld\n", name, value);
    Flush(stream);
}

void TLogFile::WritePair(const char* first, const char* second) {
    if (!stream) return;
    std::fprintf(stream, "%s %s\n", first, second);
    Flush(stream);
}

void TLogFile::WriteLevelled(char source, char level, const char* text, const char* detail) {
    if (!isOpen) return;
    SYSTEMTIME now;
    GetLocalTime(&now);
    char timestamp[100];
    std::snprintf(timestamp, sizeof timestamp, "%02d.%02d.%d %02d:%02d:%02d'%03d", now.wDay,
                  now.wMonth, now.wYear, now.wHour, now.wMinute, now.wSecond, now.wMilliseconds);
    if (!text) text = "";
    if (!detail) detail = "";

    // The header goes to the first stream written only, never to the echo.
    if (!headerWritten) {
        std::fprintf(stream, "%s\n%s\n\n%s\n", HeaderRule, timestamp, HeaderRule);
        headerWritten = 1;
    }
    std::fprintf(stream, "%s  %c %c\t %s %s\n", timestamp, source, level, text, detail);
    Flush(stream);
    if (echoToStderr) {
        std::fprintf(stderr, "%s  %c %c\t %s %s\n", timestamp, source, level, text, detail);
        std::fflush(stderr);
    }
}
