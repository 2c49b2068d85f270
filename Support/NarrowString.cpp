#include "Support/NarrowString.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace {

// Sized for every name and path the program formats; a longer result is
// measured here and then formatted in full into its own buffer.
constexpr int ScratchSize = 1024;
thread_local char scratch[ScratchSize];

char* NewBuffer(std::int32_t length) {
    char* buffer = new char[length + 1];
    buffer[length] = '\0';
    return buffer;
}

}  // namespace

TNarrowString::TNarrowString() : buffer(NewBuffer(0)), length(0) {}

TNarrowString::TNarrowString(const char* text) : buffer(nullptr), length(0) {
    Assign(text, text ? static_cast<std::int32_t>(std::strlen(text)) : 0);
}

TNarrowString::TNarrowString(int value) : buffer(nullptr), length(0) {
    char digits[16];
    const int written = std::snprintf(digits, sizeof digits, "%d", value);
    Assign(digits, written);
}

TNarrowString::TNarrowString(const TNarrowString& other) : buffer(nullptr), length(0) {
    Assign(other.buffer, other.length);
}

TNarrowString& TNarrowString::operator=(const TNarrowString& other) {
    if (this != &other) Assign(other.buffer, other.length);
    return *this;
}

TNarrowString& TNarrowString::operator=(const char* text) {
    // Copy first: `text` may point into our own buffer.
    TNarrowString copy(text);
    Assign(copy.buffer, copy.length);
    return *this;
}

TNarrowString::~TNarrowString() {
    delete[] buffer;
}

TNarrowString& TNarrowString::operator+=(const TNarrowString& other) {
    return Append(other.buffer);
}

TNarrowString& TNarrowString::Append(const char* text) {
    if (!text || !*text) return *this;
    const auto added = static_cast<std::int32_t>(std::strlen(text));
    char* joined = NewBuffer(length + added);
    std::memcpy(joined, buffer, length);
    std::memcpy(joined + length, text, added);
    delete[] buffer;
    buffer = joined;
    length += added;
    return *this;
}

TNarrowString& TNarrowString::Format(const char* format, ...) {
    if (!format) return *this;
    va_list args;
    va_start(args, format);
    va_list again;
    va_copy(again, args);
    const int needed = std::vsnprintf(scratch, ScratchSize, format, args);
    va_end(args);
    if (needed > 0) {
        char* formatted = NewBuffer(needed);
        std::vsnprintf(formatted, needed + 1, format, again);
        delete[] buffer;
        buffer = formatted;
        length = needed;
    }
    va_end(again);
    return *this;
}

void TNarrowString::Assign(const char* text, std::int32_t textLength) {
    char* copy = NewBuffer(textLength);
    if (textLength > 0) std::memcpy(copy, text, textLength);
    delete[] buffer;
    buffer = copy;
    length = textLength;
}

TNarrowString operator+(const TNarrowString& left, const TNarrowString& right) {
    TNarrowString joined(left);
    joined += right;
    return joined;
}
