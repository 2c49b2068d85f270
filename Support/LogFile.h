#pragma once
// The diagnostic log. The OTDR module library writes through this object's
// virtual table, so the order of the virtual operations is an interface:
// add new ones only at the end. Every line is on storage (fdatasync) before
// the call that wrote it returns, so the log survives a crash or a power cut.

#include <cstdio>

class TLogFile {
public:
    // Opens `path` for rewriting ("wt") when `truncate` is non-zero, else for
    // appending. A failed open is silent: levelled writes then do nothing.
    TLogFile(const char* path, int truncate, int echoToStderr);
    TLogFile(const TLogFile&) = delete;
    TLogFile& operator=(const TLogFile&) = delete;

    // Bit 0 errors, bit 1 warnings, bit 2 messages; -1 enables all.
    virtual void SetLevels(int mask);  // slot 0
    // `source` names the writer ('U' application, 'M' module loader); a null
    // `detail` is written as an empty string.
    virtual void Error(char source, const char* text, const char* detail);    // slot 1
    virtual void Message(char source, const char* text, const char* detail);  // slot 2
    virtual void Warning(char source, const char* text, const char* detail);  // slot 3
    // Unlevelled, untimed lines; only for an opened log.
    virtual void WriteValue(const char* name, long value);          // slot 4
    virtual void WritePair(const char* first, const char* second);  // slot 5

    // Virtual so that deleting through a base pointer is safe, and declared
    // after every slot the module library uses so that their indices stay put.
    virtual ~TLogFile();

    bool IsOpen() const { return isOpen != 0; }

private:
    void WriteLevelled(char source, char level, const char* text, const char* detail);

    int isOpen;
    int errorsEnabled;
    int messagesEnabled;
    int warningsEnabled;
    std::FILE* stream;
    int headerWritten;
    int echoToStderr;
};
