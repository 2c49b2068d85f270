#pragma once
// One line of an INI section: a key and an optional value. A null value (no
// '=' on the line, or created by a lookup and never set) is distinct from an
// empty one.

class TIniEntry {
public:
    // `key` null is taken as the empty key; `value` may be null.
    TIniEntry(const char* key, const char* value);
    ~TIniEntry();
    TIniEntry(const TIniEntry&) = delete;
    TIniEntry& operator=(const TIniEntry&) = delete;

    const char* GetKey() const { return key; }
    // Null when the entry has no value.
    const char* GetValue() const { return value; }

    // The value, or `defaultValue` when it is null or empty.
    const char* GetString(const char* defaultValue) const;
    // "%d" scan; the default when null, empty or nothing converts.
    int GetInt(int defaultValue) const;
    // "%lg" scan; the default when null or nothing converts.
    double GetDouble(double defaultValue) const;

    void SetInt(int newValue);
    // "%lg": six significant digits, shortest form.
    void SetDouble(double newValue);
    // Copies `text`; null makes the value null.
    void SetString(const char* text);

private:
    char* key;
    char* value;
};
