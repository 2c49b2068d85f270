#pragma once
// The registry's content: keys in file order, each with its values in order.
// Pure data and text conversion; the Reg* calls in Registry.cpp add handles,
// persistence and fault injection on top.

#include <cstddef>
#include <string>
#include <vector>

#include "Platform/WinTypes.h"

namespace platform {

struct RegistryValue {
    std::wstring name;
    DWORD type = 1;     // REG_SZ or REG_DWORD
    std::wstring text;  // REG_SZ content
    DWORD number = 0;   // REG_DWORD content
};

struct RegistryKeyData {
    // Full path, root included, as first written. Empty for lines that belong
    // to no key: those before the first header, or a rejected header and the
    // lines below it.
    std::wstring path;
    std::vector<RegistryValue> values;
    // Lines that did not parse, verbatim (line end included): bad input is
    // skipped, never lost, so a rewrite of the file puts them back.
    std::vector<std::string> unparsed;
};

class RegistryHive {
public:
    // Parses .reg text. Every line that does not parse is passed to `reject`
    // with its 1-based number and kept aside for Serialize.
    template <typename Reject>
    static RegistryHive Parse(const std::string& text, Reject reject);
    std::string Serialize() const;

    RegistryKeyData* FindKey(const std::wstring& path);
    // A key exists when it is listed or when a listed key lies below it.
    bool KeyExists(const std::wstring& path) const;
    RegistryKeyData& AddKey(const std::wstring& path);
    void DeleteKey(const std::wstring& path);  // with every key below it

    static RegistryValue* FindValue(RegistryKeyData& key, const std::wstring& name);

private:
    bool ParseLine(const std::string& line, std::ptrdiff_t& current);
    void KeepLine(const std::string& rawLine, std::ptrdiff_t& current);
    // A block of lines that belong to no key; its index.
    std::ptrdiff_t AddUnnamedBlock();
    std::vector<RegistryKeyData> keys;
};

// Case-insensitive comparison, as registry names compare.
bool SameRegistryName(const std::wstring& a, const std::wstring& b);

template <typename Reject>
RegistryHive RegistryHive::Parse(const std::string& text, Reject reject) {
    RegistryHive hive;
    std::ptrdiff_t current = -1;  // index of the block the lines go to
    size_t start = 0;
    int number = 0;
    while (start <= text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        const std::string raw = text.substr(start, end - start);
        std::string line = raw;
        ++number;
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (!hive.ParseLine(line, current)) {
            hive.KeepLine(raw, current);
            reject(number, line);
        }
        if (end == text.size()) break;
        start = end + 1;
    }
    return hive;
}

}  // namespace platform
