#include "Support/IniFile.h"

#include <cstdio>
#include <cstring>

#include "Platform/AtomicFile.h"

namespace {

// The format's line buffer: a longer line arrives in pieces, each a line.
constexpr int LineBufferSize = 256;

void WriteSection(std::FILE* stream, const TIniSection& section) {
    if (section.GetName()[0] != '\0') std::fprintf(stream, "[%s]\n", section.GetName());
    for (int i = 0; i < section.Count(); ++i) {
        const TIniEntry* entry = section.EntryAt(i);
        if (entry->GetValue())
            std::fprintf(stream, "%s=%s\n", entry->GetKey(), entry->GetValue());
        else
            std::fprintf(stream, "%s\n", entry->GetKey());
    }
    std::fputs("\n", stream);
}

}  // namespace

TIniFile::TIniFile(const char* path) : path(path) {}

TIniFile::~TIniFile() = default;

int TIniFile::Load(const char* loadPath) {
    std::FILE* file = std::fopen(loadPath ? loadPath : path.c_str(), "rt");
    if (!file) return 1;

    sections.Clear();
    TIniSection* current = GetSection("");
    char line[LineBufferSize];
    while (std::fgets(line, LineBufferSize, file)) {
        std::size_t length = std::strlen(line);
        // Unconditionally: a last line without its newline loses a real character.
        if (length > 0) line[--length] = '\0';
        if (length > 0 && line[length - 1] == '\r') line[--length] = '\0';
        if (length == 0) continue;
        if (line[0] == '[') {
            // The closing bracket is assumed, not checked.
            line[--length] = '\0';
            current = GetSection(length > 0 ? line + 1 : "");
        } else {
            current->AddLine(line);
        }
    }
    std::fclose(file);
    return 0;
}

int TIniFile::Save(const char* savePath) {
    platform::AtomicFileWriter writer(savePath ? savePath : path.c_str());
    std::FILE* stream = writer.Stream();
    if (!stream) return 1;
    for (int i = 0; i < sections.Count(); ++i) {
        const TIniSection* section = sections.At(i);
        if (section->Count() == 0 && !writeEmptySections) continue;
        WriteSection(stream, *section);
    }
    return writer.Commit() ? 0 : 1;
}

TIniSection* TIniFile::FindSection(const char* name) const {
    if (!name) return nullptr;
    for (int i = 0; i < sections.Count(); ++i) {
        TIniSection* section = sections.At(i);
        if (std::strcmp(section->GetName(), name) == 0) return section;
    }
    return nullptr;
}

TIniSection* TIniFile::GetSection(const char* name) {
    if (TIniSection* existing = FindSection(name)) return existing;
    auto* created = new TIniSection(name);
    sections.Append(created);
    return created;
}

double TIniFile::GetDouble(const char* section, const char* key, double defaultValue) {
    return GetSection(section)->GetDouble(key, defaultValue);
}

void TIniFile::SetDouble(const char* section, const char* key, double value) {
    GetSection(section)->SetDouble(key, value);
}

TIniSection* TIniFile::SectionAt(int index) const {
    return (index >= 0 && index < sections.Count()) ? sections.At(index) : nullptr;
}
