// Parses arbitrary text as a registry hive. Besides memory errors it checks
// that rejected lines carry valid, increasing line numbers, and that the
// serialised hive is a fixed point: rejected lines are kept verbatim, so it
// parses and serialises to the same text, also through LoadHiveFromText.

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
    const platform::RegistryHive again =
        platform::RegistryHive::Parse(serialized, [](int, const std::string&) {});
    Check(again.Serialize() == serialized);

    platform::LoadHiveFromText(serialized);
    Check(platform::HiveAsText() == serialized);
    return 0;
}
