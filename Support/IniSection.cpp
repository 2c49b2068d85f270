#include "Support/IniSection.h"

#include <cstring>
#include <string>

TIniSection::TIniSection(const char* name) {
    const char* text = name ? name : "";
    const std::size_t size = std::strlen(text) + 1;
    this->name = new char[size];
    std::memcpy(this->name, text, size);
}

TIniSection::~TIniSection() {
    delete[] name;
}

TIniEntry* TIniSection::FindEntry(const char* key) const {
    if (!key) return nullptr;
    for (int i = 0; i < entries.Count(); ++i) {
        TIniEntry* entry = entries.At(i);
        if (std::strcmp(entry->GetKey(), key) == 0) return entry;
    }
    return nullptr;
}

TIniEntry* TIniSection::GetEntry(const char* key) {
    if (TIniEntry* existing = FindEntry(key)) return existing;
    auto* created = new TIniEntry(key, nullptr);
    entries.Append(created);
    return created;
}

int TIniSection::GetInt(const char* key, int defaultValue, bool create) {
    if (!create) {
        const TIniEntry* entry = FindEntry(key);
        return entry ? entry->GetInt(defaultValue) : defaultValue;
    }
    return GetEntry(key)->GetInt(defaultValue);
}

double TIniSection::GetDouble(const char* key, double defaultValue) {
    return GetEntry(key)->GetDouble(defaultValue);
}

void TIniSection::SetInt(const char* key, int value) {
    GetEntry(key)->SetInt(value);
}

void TIniSection::SetDouble(const char* key, double value) {
    GetEntry(key)->SetDouble(value);
}

int TIniSection::Count() const {
    return entries.Count();
}

TIniEntry* TIniSection::EntryAt(int index) const {
    return (index >= 0 && index < entries.Count()) ? entries.At(index) : nullptr;
}

void TIniSection::Clear() {
    entries.Clear();
}

void TIniSection::AddLine(const char* line) {
    const char* separator = std::strchr(line, '=');
    const std::string key = separator ? std::string(line, separator) : std::string(line);
    const char* value = separator ? separator + 1 : nullptr;

    const bool comment = line[0] == ';' || line[0] == '#';
    if (!comment) {
        if (TIniEntry* existing = FindEntry(key.c_str())) {
            existing->SetString(value);
            return;
        }
    }
    entries.Append(new TIniEntry(key.c_str(), value));
}
