#pragma once
// Conversions between the platform's wide strings and UTF-8 narrow strings.

#include <string>
#include <string_view>

namespace platform {
std::string ToUtf8(std::wstring_view text);
std::wstring FromUtf8(std::string_view text);
// False when the bytes are not well-formed UTF-8 (FromUtf8 would replace some).
bool IsUtf8(std::string_view text);
}  // namespace platform
