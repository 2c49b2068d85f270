#pragma once
// The bench file's keys: one table that the file reader, the opm-bench tool
// and its help text all use, so a key means the same everywhere.

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "Simulator/bench/BenchSettings.h"

namespace sim {

using BenchField = std::variant<bool*, int*, double*, std::uint32_t*, std::string*, AdapterState*>;

struct BenchKey {
    const char* name;  // "section.key"
    const char* help;
    double min = 0.0;  // numeric keys only
    double max = 0.0;
    BenchField (*field)(BenchSettings&);
};

const std::vector<BenchKey>& BenchKeys();
const BenchKey* FindBenchKey(std::string_view name);

// Peers are the one open-ended section: "peers.<name>" = "host:port" and,
// after a blank, the services it offers as braced UUIDs separated by ';'.
constexpr std::string_view kPeersPrefix = "peers.";

// Stores a value given as text; false leaves the settings unchanged and says why.
bool SetBenchValue(BenchSettings& settings, const BenchKey& key, std::string_view text,
                   std::string& error);
std::string GetBenchValue(const BenchSettings& settings, const BenchKey& key);

// Checks a peer's value; a valid one is returned trimmed in `canonical`.
bool ValidPeerValue(std::string_view value, std::string& canonical, std::string& error);
bool ValidPeerName(std::string_view name, std::string& error);

const char* AdapterStateName(AdapterState state);

}  // namespace sim
