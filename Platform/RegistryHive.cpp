#include "Platform/RegistryHive.h"

#include <algorithm>
#include <cstdio>
#include <cwctype>

#include "Platform/WideText.h"

namespace platform {
namespace {

constexpr const char* kHeader = "Windows Registry Editor Version 5.00";

bool StartsWithKey(const std::wstring& path, const std::wstring& prefix) {
    if (path.size() <= prefix.size() || path[prefix.size()] != L'\\') return false;
    return SameRegistryName(path.substr(0, prefix.size()), prefix);
}

// Reads a quoted string starting at `pos` (on the opening quote); returns the
// position after the closing quote, or npos when it is malformed.
size_t ReadQuoted(const std::string& line, size_t pos, std::string& out) {
    if (pos >= line.size() || line[pos] != '"') return std::string::npos;
    out.clear();
    for (size_t i = pos + 1; i < line.size(); ++i) {
        const char c = line[i];
        if (c == '"') return i + 1;
        if (c == '\\') {
            if (++i >= line.size()) return std::string::npos;
            const char escaped = line[i];
            if (escaped == 'n')
                out += '\n';
            else if (escaped == '\\' || escaped == '"')
                out += escaped;
            else
                return std::string::npos;
        } else {
            out += c;
        }
    }
    return std::string::npos;
}

std::string Quote(const std::wstring& text) {
    std::string out = "\"";
    for (char c : ToUtf8(text)) {
        if (c == '"' || c == '\\') out += '\\';
        if (c == '\n') {
            out += "\\n";
            continue;
        }
        out += c;
    }
    return out + "\"";
}

bool ParseDword(const std::string& digits, DWORD& number) {
    if (digits.empty() || digits.size() > 8) return false;
    number = 0;
    for (char c : digits) {
        const int nibble = (c >= '0' && c <= '9')   ? c - '0'
                           : (c >= 'a' && c <= 'f') ? c - 'a' + 10
                           : (c >= 'A' && c <= 'F') ? c - 'A' + 10
                                                    : -1;
        if (nibble < 0) return false;
        number = number << 4 | static_cast<DWORD>(nibble);
    }
    return true;
}

}  // namespace

bool SameRegistryName(const std::wstring& a, const std::wstring& b) {
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(), [](wchar_t x, wchar_t y) {
               return std::towlower(static_cast<wint_t>(x)) ==
                      std::towlower(static_cast<wint_t>(y));
           });
}

bool RegistryHive::ParseLine(const std::string& line, std::ptrdiff_t& current) {
    if (line.empty()) return true;
    // Decoding would replace the bytes, and the next write would lose them.
    if (!IsUtf8(line)) return false;
    if (line[0] == ';' || line == kHeader) return true;
    if (line[0] == '[') {
        if (line.size() < 3 || line.back() != ']' || line[1] == '-') {
            // What follows a rejected header belongs to no key, not to the one above.
            current = AddUnnamedBlock();
            return false;
        }
        current = &AddKey(FromUtf8(line.substr(1, line.size() - 2))) - keys.data();
        return true;
    }
    if (current < 0 || keys[static_cast<size_t>(current)].path.empty()) return false;
    RegistryKeyData& key = keys[static_cast<size_t>(current)];

    RegistryValue value;
    size_t pos = 0;
    if (line[0] == '@') {
        pos = 1;
    } else {
        std::string name;
        pos = ReadQuoted(line, 0, name);
        if (pos == std::string::npos) return false;
        value.name = FromUtf8(name);
    }
    if (pos >= line.size() || line[pos] != '=') return false;
    ++pos;
    if (line.compare(pos, 6, "dword:") == 0) {
        value.type = 4;
        if (!ParseDword(line.substr(pos + 6), value.number)) return false;
    } else {
        std::string text;
        const size_t after = ReadQuoted(line, pos, text);
        if (after != line.size()) return false;
        value.text = FromUtf8(text);
    }
    if (RegistryValue* existing = FindValue(key, value.name))
        *existing = value;
    else
        key.values.push_back(value);
    return true;
}

void RegistryHive::KeepLine(const std::string& rawLine, std::ptrdiff_t& current) {
    if (current < 0) current = AddUnnamedBlock();
    keys[static_cast<size_t>(current)].unparsed.push_back(rawLine);
}

std::ptrdiff_t RegistryHive::AddUnnamedBlock() {
    keys.push_back(RegistryKeyData{});
    return static_cast<std::ptrdiff_t>(keys.size()) - 1;
}

std::string RegistryHive::Serialize() const {
    std::string out = std::string(kHeader) + "\n";
    for (const RegistryKeyData& key : keys) {
        out += "\n";
        if (!key.path.empty()) out += "[" + ToUtf8(key.path) + "]\n";
        for (const RegistryValue& value : key.values) {
            out += value.name.empty() ? std::string("@") : Quote(value.name);
            if (value.type == 4) {
                char digits[16];
                std::snprintf(digits, sizeof digits, "dword:%08x", value.number);
                out += std::string("=") + digits + "\n";
            } else {
                out += "=" + Quote(value.text) + "\n";
            }
        }
        for (const std::string& line : key.unparsed) out += line + "\n";
    }
    return out;
}

RegistryKeyData* RegistryHive::FindKey(const std::wstring& path) {
    for (RegistryKeyData& key : keys)
        if (SameRegistryName(key.path, path)) return &key;
    return nullptr;
}

bool RegistryHive::KeyExists(const std::wstring& path) const {
    return std::any_of(keys.begin(), keys.end(), [&](const RegistryKeyData& key) {
        return SameRegistryName(key.path, path) || StartsWithKey(key.path, path);
    });
}

RegistryKeyData& RegistryHive::AddKey(const std::wstring& path) {
    if (RegistryKeyData* existing = FindKey(path)) return *existing;
    keys.push_back(RegistryKeyData{path, {}, {}});
    return keys.back();
}

void RegistryHive::DeleteKey(const std::wstring& path) {
    std::erase_if(keys, [&](const RegistryKeyData& key) {
        return SameRegistryName(key.path, path) || StartsWithKey(key.path, path);
    });
}

RegistryValue* RegistryHive::FindValue(RegistryKeyData& key, const std::wstring& name) {
    for (RegistryValue& value : key.values)
        if (SameRegistryName(value.name, name)) return &value;
    return nullptr;
}

}  // namespace platform
