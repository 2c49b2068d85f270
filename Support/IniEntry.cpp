#include "Support/IniEntry.h"

#include <cstdio>
#include <cstring>

namespace {

char* Duplicate(const char* text) {
    if (!text) return nullptr;
    const std::size_t size = std::strlen(text) + 1;
    char* copy = new char[size];
    std::memcpy(copy, text, size);
    return copy;
}

}  // namespace

TIniEntry::TIniEntry(const char* key, const char* value)
    : key(Duplicate(key ? key : "")), value(Duplicate(value)) {}

TIniEntry::~TIniEntry() {
    delete[] key;
    delete[] value;
}

const char* TIniEntry::GetString(const char* defaultValue) const {
    return (value && *value) ? value : defaultValue;
}

int TIniEntry::GetInt(int defaultValue) const {
    if (!value || !*value) return defaultValue;
    int parsed = 0;
    return std::sscanf(value, "%d", &parsed) == 1 ? parsed : defaultValue;
}

double TIniEntry::GetDouble(double defaultValue) const {
    if (!value) return defaultValue;
    double parsed = 0.0;
    return std::sscanf(value, "%lg", &parsed) == 1 ? parsed : defaultValue;
}

void TIniEntry::SetInt(int newValue) {
    char text[16];
    std::snprintf(text, sizeof text, "%d", newValue);
    SetString(text);
}

void TIniEntry::SetDouble(double newValue) {
    // Large enough for "%lg" of any double, inf and nan included.
    char text[64];
    std::snprintf(text, sizeof text, "%lg", newValue);
    SetString(text);
}

void TIniEntry::SetString(const char* text) {
    char* copy = Duplicate(text);
    delete[] value;
    value = copy;
}
