#pragma once
// Minimal owned 8-bit string for paths and formatted section and key names.

#include <cstdint>

class TNarrowString {
public:
    TNarrowString();
    // A null text gives the empty string.
    TNarrowString(const char* text);  // NOLINT: implicit like the C string it wraps
    explicit TNarrowString(int value);
    TNarrowString(const TNarrowString& other);
    TNarrowString& operator=(const TNarrowString& other);
    TNarrowString& operator=(const char* text);
    ~TNarrowString();

    TNarrowString& operator+=(const TNarrowString& other);
    TNarrowString& Append(const char* text);

    // printf-style; leaves the string unchanged when `format` is null or the
    // result is empty. Measures into a per-thread scratch buffer first, so
    // concurrent use from several threads is safe.
    TNarrowString& Format(const char* format, ...) __attribute__((format(printf, 2, 3)));

    const char* c_str() const { return buffer; }
    operator const char*() const { return buffer; }  // NOLINT: drop-in for C string APIs
    std::int32_t GetLength() const { return length; }
    bool IsEmpty() const { return length == 0; }

private:
    void Assign(const char* text, std::int32_t textLength);

    char* buffer;
    std::int32_t length;
};

TNarrowString operator+(const TNarrowString& left, const TNarrowString& right);
