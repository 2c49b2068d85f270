#pragma once
// An INI file held in memory as ordered sections of ordered entries. A load
// followed by a save keeps comments, unknown keys and their order; blank
// lines are normalised to one after each section.

#include "Support/IniSection.h"
#include "Support/NarrowString.h"
#include "Support/PtrArray.h"

class TIniFile {
public:
    // Stores the path; touches no file.
    explicit TIniFile(const char* path);
    ~TIniFile();
    TIniFile(const TIniFile&) = delete;
    TIniFile& operator=(const TIniFile&) = delete;

    // 0 on success, 1 when the file can't be opened (the contents stay as they
    // were). A null path means the stored one. Files end with a newline: the
    // last character of every line is dropped unread.
    int Load(const char* path = nullptr);
    // 0 on success, 1 when the file can't be created. The old file is
    // replaced atomically, so a power cut leaves the old or the new content.
    int Save(const char* path = nullptr);

    TIniSection* FindSection(const char* name) const;
    // Creates the section empty at the end when absent.
    TIniSection* GetSection(const char* name);

    double GetDouble(const char* section, const char* key, double defaultValue);
    void SetDouble(const char* section, const char* key, double value);

    int SectionCount() const { return sections.Count(); }
    // Null when `index` is not below SectionCount().
    TIniSection* SectionAt(int index) const;

    const TNarrowString& GetPath() const { return path; }
    // Sections without entries are left out of a save unless this is set.
    void SetWriteEmptySections(bool write) { writeEmptySections = write; }

private:
    TNarrowString path;
    bool writeEmptySections = false;
    TPtrArray<TIniSection> sections;
};
