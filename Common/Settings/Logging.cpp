#include "Common/Settings/Logging.h"

#include <atomic>

#include "Platform/FatalError.h"
#include "Platform/WideText.h"
#include "Support/LogFile.h"

namespace {
std::atomic<TLogFile*> installedLogFile{nullptr};
}

TLogFile& LogFile() {
    TLogFile* const LogFile = installedLogFile.load();
    OPM_ASSERT_AT(LogFile, "Logging", 14);
    return *LogFile;
}

void SetLogFile(TLogFile* logFile) {
    installedLogFile.store(logFile);
}

TLogFile* InstalledLogFile() {
    return installedLogFile.load();
}

void LogMessage(const char* text, const char* detail) {
    LogFile().Message('U', text, detail);
}

void LogMessage(const char* text, const std::wstring& detail) {
    LogMessage(text, platform::ToUtf8(detail).c_str());
}
