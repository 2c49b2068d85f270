#pragma once
// The application's access to the process-wide log file.

#include <string>

class TLogFile;

// The installed log; fatal when there is none.
TLogFile& LogFile();
// Installs the log the application object created, or removes it (null).
// The caller keeps ownership.
void SetLogFile(TLogFile* logFile);
// The installed log, or null: for code that writes only when a log exists.
TLogFile* InstalledLogFile();

// Writes a message line from the application (source 'U'); a null detail is
// written as an empty one.
void LogMessage(const char* text, const char* detail = nullptr);
// The same with a wide detail (file and library names), written as UTF-8.
void LogMessage(const char* text, const std::wstring& detail);
