#include "Simulator/bench/BenchFile.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdlib>

#include "Simulator/bench/BenchIniText.h"
#include "Simulator/bench/BenchKeys.h"

namespace sim {

BenchLoad ParseBench(std::string_view text) {
    BenchLoad load;
    const BenchIniText ini(text);
    for (const BenchIniText::Problem& problem : ini.Problems())
        load.problems.push_back("line " + std::to_string(problem.line) + ": " + problem.text);
    for (const BenchIniText::Entry& entry : ini.Entries()) {
        if (entry.section.empty()) continue;  // already reported
        const std::string where = "line " + std::to_string(entry.line) + ": ";
        std::string error;
        if (entry.section == "peers") {
            std::string value;
            if (!ValidPeerName(entry.key, error) || !ValidPeerValue(entry.value, value, error)) {
                load.problems.push_back(where + error);
                continue;
            }
            auto& peers = load.settings.peers;
            auto same = [&](const auto& peer) { return peer.first == entry.key; };
            if (auto it = std::find_if(peers.begin(), peers.end(), same); it != peers.end())
                it->second = value;
            else
                peers.emplace_back(entry.key, value);
            continue;
        }
        const std::string name = entry.section + "." + entry.key;
        const BenchKey* key = FindBenchKey(name);
        if (key == nullptr) {
            load.problems.push_back(where + "unknown key " + name);
            continue;
        }
        if (!SetBenchValue(load.settings, *key, entry.value, error))
            load.problems.push_back(where + error);
    }
    return load;
}

std::string DefaultBenchPath() {
    if (const char* path = std::getenv("TAVIX_BENCH"); path != nullptr && *path != '\0')
        return path;
    // The bench belongs to the image the simulator's libraries were installed in.
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&DefaultBenchPath), &info) != 0 &&
        info.dli_fname != nullptr) {
        std::string library = info.dli_fname;
        const size_t slash = library.rfind('/');
        if (slash != std::string::npos) return library.substr(0, slash + 1) + "bench.ini";
    }
    return "bench.ini";
}

}  // namespace sim
