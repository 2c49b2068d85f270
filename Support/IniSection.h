#pragma once
// A named, ordered list of INI entries. The empty name is the unnamed
// section at the top of a file. Lookups are exact, case-sensitive and return
// the first match.

#include "Support/IniEntry.h"
#include "Support/PtrArray.h"

class TIniSection {
public:
    explicit TIniSection(const char* name);
    ~TIniSection();
    TIniSection(const TIniSection&) = delete;
    TIniSection& operator=(const TIniSection&) = delete;

    const char* GetName() const { return name; }

    // Null when absent; never creates.
    TIniEntry* FindEntry(const char* key) const;
    // Creates the entry with a null value at the end when absent.
    TIniEntry* GetEntry(const char* key);

    // Without `create`, an absent key gives the default and stays absent.
    int GetInt(const char* key, int defaultValue, bool create);
    double GetDouble(const char* key, double defaultValue);
    void SetInt(const char* key, int value);
    void SetDouble(const char* key, double value);

    int Count() const;
    // Null when `index` is not below Count().
    TIniEntry* EntryAt(int index) const;
    void Clear();

    // Adds one file line: split at the first '=', nothing trimmed. Comment
    // lines (';' or '#') are always appended; otherwise a repeated key takes
    // the new value in the place of its first occurrence.
    void AddLine(const char* line);

private:
    char* name;
    TPtrArray<TIniEntry> entries;
};
