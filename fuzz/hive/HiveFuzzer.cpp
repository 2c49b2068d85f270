// Parses arbitrary text as a registry hive. Besides memory errors it checks
// that rejected lines carry valid, increasing line numbers, and that the
// serialised hive is a fixed point: it parses without a rejected line and
// serialises to the same text, also through LoadHiveFromText.

#include <cstdint>
#include <string>

#include "Platform/Registry.h"
#include "Platform/RegistryHive.h"

namespace {

void Check(bool condition) {
    if (!condition) __builtin_trap();
}

std::size_t LineCount(const std::string& text) {
    std::size_t lines = 1;
    for (char c : text) lines += c == '\n';
    return lines;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const std::size_t lines = LineCount(text);
    int previous = 0;
    const platform::RegistryHive hive =
        platform::RegistryHive::Parse(text, [&](int number, const std::string&) {
            Check(number > previous && static_cast<std::size_t>(number) <= lines);
            previous = number;
        });

    const std::string serialized = hive.Serialize();
    bool rejected = false;
    const platform::RegistryHive again = platform::RegistryHive::Parse(
        serialized, [&](int, const std::string&) { rejected = true; });
    Check(!rejected);
    Check(again.Serialize() == serialized);

    // The public entry point on text that parses: nothing to report, same hive.
    platform::LoadHiveFromText(serialized);
    Check(platform::HiveAsText() == serialized);
    return 0;
}
