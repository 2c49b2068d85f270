#include "Simulator/tools/BenchTool.h"

#include <fstream>
#include <iomanip>
#include <ostream>
#include <sstream>

#include "Platform/AtomicFile.h"
#include "Simulator/bench/BenchFile.h"
#include "Simulator/bench/BenchIniText.h"
#include "Simulator/bench/BenchKeys.h"
#include "Simulator/bench/FactoryIni.h"

namespace sim {
namespace {

constexpr const char* kUsage =
    "usage: opm-bench [--file BENCH] COMMAND\n"
    "  set KEY VALUE    change one key (peers.NAME \"HOST:PORT [{UUID};...]\" names an OBEX peer)\n"
    "  unset KEY        back to the default\n"
    "  get KEY          the value in force\n"
    "  show             every key, '*' where the file sets it\n"
    "  keys             every key with its meaning\n"
    "  factory          the model's etc_gui/opm.ini\n"
    "  path             the bench file in use\n"
    "The bench file is $TAVIX_BENCH, else bench.ini beside the simulator.\n";

struct Name {
    std::string section;
    std::string key;
};

Name Split(const std::string& name) {
    const size_t dot = name.find('.');
    if (dot == std::string::npos) return {name, {}};
    return {name.substr(0, dot), name.substr(dot + 1)};
}

bool IsPeer(const std::string& name) {
    return name.rfind(kPeersPrefix, 0) == 0;
}

}  // namespace

std::string BenchTool::ReadFile(bool& exists) {
    std::ifstream file(path);
    exists = static_cast<bool>(file);
    std::ostringstream text;
    if (exists) text << file.rdbuf();
    return text.str();
}

bool BenchTool::Write(const std::string& text, std::ostream& err) {
    if (platform::WriteFileAtomically(path, text)) return true;
    err << "opm-bench: cannot write " << path << "\n";
    return false;
}

int BenchTool::Set(const std::string& name, const std::string& value, std::ostream& err) {
    std::string canonical;
    std::string error;
    if (IsPeer(name)) {
        const std::string peer = name.substr(kPeersPrefix.size());
        if (!ValidPeerName(peer, error) || !ValidPeerValue(value, canonical, error)) {
            err << "opm-bench: " << error << "\n";
            return kBadUsage;
        }
    } else {
        const BenchKey* key = FindBenchKey(name);
        if (key == nullptr) {
            err << "opm-bench: unknown key " << name << " (see opm-bench keys)\n";
            return kBadUsage;
        }
        BenchSettings scratch;
        if (!SetBenchValue(scratch, *key, value, error)) {
            err << "opm-bench: " << error << "\n";
            return kBadUsage;
        }
        canonical = GetBenchValue(scratch, *key);
    }
    bool exists = false;
    BenchIniText ini(ReadFile(exists));
    const Name parts = Split(name);
    ini.Set(parts.section, parts.key, canonical);
    return Write(ini.Text(), err) ? kDone : kWriteFailed;
}

int BenchTool::Unset(const std::string& name, std::ostream& err) {
    if (!IsPeer(name) && FindBenchKey(name) == nullptr) {
        err << "opm-bench: unknown key " << name << " (see opm-bench keys)\n";
        return kBadUsage;
    }
    bool exists = false;
    BenchIniText ini(ReadFile(exists));
    const Name parts = Split(name);
    if (!exists || !ini.Remove(parts.section, parts.key)) return kDone;
    return Write(ini.Text(), err) ? kDone : kWriteFailed;
}

int BenchTool::Get(const std::string& name, std::ostream& out, std::ostream& err) {
    bool exists = false;
    const BenchLoad load = ParseBench(ReadFile(exists));
    if (IsPeer(name)) {
        for (const auto& [peer, address] : load.settings.peers)
            if (kPeersPrefix.data() + peer == name) {
                out << address << "\n";
                return kDone;
            }
        err << "opm-bench: no peer " << name.substr(kPeersPrefix.size()) << "\n";
        return kBadUsage;
    }
    const BenchKey* key = FindBenchKey(name);
    if (key == nullptr) {
        err << "opm-bench: unknown key " << name << " (see opm-bench keys)\n";
        return kBadUsage;
    }
    out << GetBenchValue(load.settings, *key) << "\n";
    return kDone;
}

int BenchTool::Show(std::ostream& out) {
    bool exists = false;
    const std::string text = ReadFile(exists);
    const BenchLoad load = ParseBench(text);
    const BenchSettings defaults;
    out << "bench file: " << path << (exists ? "" : " (absent: defaults)") << "\n";
    for (const BenchKey& key : BenchKeys()) {
        const std::string value = GetBenchValue(load.settings, key);
        const bool changed = value != GetBenchValue(defaults, key);
        out << (changed ? "* " : "  ") << std::left << std::setw(28) << key.name << value << "\n";
    }
    for (const auto& [peer, address] : load.settings.peers)
        out << "* " << std::left << std::setw(28) << (kPeersPrefix.data() + peer) << address
            << "\n";
    for (const std::string& problem : load.problems) out << "ignored: " << problem << "\n";
    return kDone;
}

int BenchTool::Keys(std::ostream& out) {
    const BenchSettings defaults;
    for (const BenchKey& key : BenchKeys())
        out << std::left << std::setw(28) << key.name << key.help << " [default "
            << GetBenchValue(defaults, key) << "]\n";
    out << std::left << std::setw(28) << "peers.NAME"
        << "an OBEX peer reached over TCP: HOST:PORT, then the services it offers as\n"
        << std::setw(28) << "" << "braced UUIDs separated by ';' (Object Push "
        << "{00001105-0000-1000-8000-00805f9b34fb})\n";
    return kDone;
}

int BenchTool::Run(const std::vector<std::string>& arguments, std::ostream& out,
                   std::ostream& err) {
    std::vector<std::string> args = arguments;
    path = DefaultBenchPath();
    if (args.size() >= 2 && args[0] == "--file") {
        path = args[1];
        args.erase(args.begin(), args.begin() + 2);
    }
    const std::string command = args.empty() ? "" : args[0];
    if (command == "set" && args.size() == 3) return Set(args[1], args[2], err);
    if (command == "unset" && args.size() == 2) return Unset(args[1], err);
    if (command == "get" && args.size() == 2) return Get(args[1], out, err);
    if (command == "show" && args.size() == 1) return Show(out);
    if (command == "keys" && args.size() == 1) return Keys(out);
    if (command == "factory" && args.size() == 1) {
        out << FactoryIniText(BenchSettings{});
        return kDone;
    }
    if (command == "path" && args.size() == 1) {
        out << path << "\n";
        return kDone;
    }
    if (command == "help" || command == "--help") {
        out << kUsage;
        return kDone;
    }
    err << kUsage;
    return kBadUsage;
}

}  // namespace sim
