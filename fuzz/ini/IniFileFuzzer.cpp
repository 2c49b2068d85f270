// Loads arbitrary bytes as an INI file. Besides memory errors it checks that
// lookups find every key the loader kept, and that saving is stable: a saved
// file loads and saves to the same bytes again.

#include <stdlib.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

#include "Support/IniFile.h"

namespace {

std::string ScratchDirectory() {
    // tmpfs where there is one: every save syncs, and the disk need not see that.
    std::string pattern =
        access("/dev/shm", W_OK) == 0 ? "/dev/shm/ini-fuzz-XXXXXX" : "/tmp/ini-fuzz-XXXXXX";
    if (!mkdtemp(pattern.data())) __builtin_trap();
    return pattern;
}

const std::string& Directory() {
    static const std::string directory = ScratchDirectory();
    return directory;
}

std::string Read(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void Check(bool condition) {
    if (!condition) __builtin_trap();
}

bool IsComment(const char* key) {
    return key[0] == ';' || key[0] == '#';
}

// A line kept with a trailing carriage return loses it on the next load:
// the one case where a second round trip may differ, by design.
bool EndsInCarriageReturn(const TIniEntry& entry) {
    const char* text = entry.GetValue() ? entry.GetValue() : entry.GetKey();
    const std::size_t length = std::strlen(text);
    return length > 0 && text[length - 1] == '\r';
}

bool Exercise(TIniFile& ini) {
    bool stable = true;
    for (int s = 0; s < ini.SectionCount(); ++s) {
        TIniSection* section = ini.SectionAt(s);
        Check(ini.FindSection(section->GetName()) == section);
        for (int e = 0; e < section->Count(); ++e) {
            const TIniEntry* entry = section->EntryAt(e);
            if (!IsComment(entry->GetKey())) Check(section->FindEntry(entry->GetKey()) == entry);
            entry->GetString("");
            entry->GetInt(0);
            entry->GetDouble(0.0);
            if (EndsInCarriageReturn(*entry)) stable = false;
        }
    }
    return stable;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string input = Directory() + "/input.ini";
    const std::string first = Directory() + "/first.ini";
    const std::string second = Directory() + "/second.ini";
    {
        std::ofstream file(input, std::ios::binary | std::ios::trunc);
        file.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    }

    TIniFile ini(input.c_str());
    Check(ini.Load() == 0);
    const bool stable = Exercise(ini);
    Check(ini.Save(first.c_str()) == 0);

    TIniFile reloaded(first.c_str());
    Check(reloaded.Load() == 0);
    Exercise(reloaded);
    Check(reloaded.Save(second.c_str()) == 0);
    if (stable) Check(Read(first) == Read(second));
    return 0;
}
