#pragma once
// Conversions between the platform's wide strings and UTF-8 narrow strings.

#include <string>
#include <string_view>

namespace platform {
std::string ToUtf8(std::wstring_view text);
std::wstring FromUtf8(std::string_view text);
}  // namespace platform
