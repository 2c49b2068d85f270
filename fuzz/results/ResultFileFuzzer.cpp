// Reads arbitrary bytes as a result file. Besides memory errors it checks
// that the element reader sees exactly what the property tree holds after
// read_json (elements, members, numbers), that the preview and Load agree
// with that tree, and that saving what was loaded is stable.

#include <stdlib.h>
#include <unistd.h>

#include <boost/property_tree/json_parser.hpp>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <limits>
#include <sstream>
#include <string>

#include "Platform/WideText.h"
#include "PowerMeter/Results/OPMDocument.h"
#include "PowerMeter/Results/ResultFile.h"

namespace {

using boost::property_tree::ptree;

const std::string& Path() {
    static const std::string path = [] {
        // tmpfs where there is one: the file is rewritten for every input.
        std::string pattern = access("/dev/shm", W_OK) == 0 ? "/dev/shm/results-fuzz-XXXXXX"
                                                            : "/tmp/results-fuzz-XXXXXX";
        if (!mkdtemp(pattern.data())) __builtin_trap();
        return pattern + "/input.txt";
    }();
    return path;
}

void Check(bool condition) {
    if (!condition) __builtin_trap();
}

resultfile::RawResult Raw(const ptree& element) {
    return {element.get<std::string>("Date", ""),    element.get<std::string>("Time", ""),
            element.get<std::string>("WaveLen", ""), element.get<std::string>("Abs", ""),
            element.get<std::string>("Ref", ""),     element.get<std::string>("Desc", "")};
}

bool Same(const resultfile::RawResult& a, const resultfile::RawResult& b) {
    return a.date == b.date && a.time == b.time && a.waveLength == b.waveLength &&
           a.absPower == b.absPower && a.refLevel == b.refLevel && a.description == b.description;
}

float Narrowed(double value) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    if (std::fabs(value) > std::numeric_limits<float>::max()) return value > 0 ? kInfinity : -kInfinity;
    return static_cast<float>(value);
}

bool SameNumber(float a, float b) {
    return a == b || (std::isnan(a) && std::isnan(b));
}

// The numbers as the tree's own conversions read them.
void CheckNumbers(const ptree& element, const OPMResult& result) {
    Check(result.waveLength == element.get<int>("WaveLen", 0));
    Check(SameNumber(result.absPower, Narrowed(element.get<double>("Abs", 0.0))));
    Check(SameNumber(result.refLevel, Narrowed(element.get<double>("Ref", 0.0))));
}

// The bytes the property tree's own writer makes of the results.
std::string TreeBytes(const std::vector<OPMResult>& results) {
    ptree array;
    for (const OPMResult& r : results) {
        char text[5][128];
        std::snprintf(text[0], sizeof text[0], "%d-%d-%d", r.year, r.month, r.day);
        std::snprintf(text[1], sizeof text[1], "%02d:%02d", r.hour, r.minute);
        std::snprintf(text[2], sizeof text[2], "%d", r.waveLength);
        std::snprintf(text[3], sizeof text[3], "%.2f", r.absPower);
        std::snprintf(text[4], sizeof text[4], "%.2f", r.refLevel);
        ptree item;
        for (int i = 0; i < 5; ++i)
            item.put(std::vector<const char*>{"Date", "Time", "WaveLen", "Abs", "Ref"}[i], text[i]);
        item.put("Desc", platform::ToUtf8(r.description));
        array.push_back({"", item});
    }
    ptree root;
    root.put_child("OLTS", array);
    std::ostringstream stream;
    boost::property_tree::write_json(stream, root, true);
    return stream.str();
}

std::string Listing(const COPMDocument& document) {
    std::vector<OPMResult> results;
    for (std::size_t i = 0; i < document.GetResultsCount(); ++i)
        results.push_back(document.GetResult(i));
    return resultfile::Serialise(results);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string& path = Path();
    std::ofstream(path, std::ios::binary | std::ios::trunc)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    const std::wstring widePath = platform::FromUtf8(path);

    std::wstring preview;
    const bool previewed = BuildPreview(widePath, preview);
    COPMDocument document;
    bool loaded = false, thrown = false;
    try {
        loaded = document.Load(widePath);
    } catch (const boost::property_tree::ptree_error&) {
        thrown = true;
    }

    std::string text;
    try {
        text = resultfile::ReadChecked(path);
    } catch (const boost::property_tree::json_parser_error&) {
        Check(thrown && !previewed);
        return 0;
    }
    ptree root;
    try {
        std::istringstream stream(text);
        boost::property_tree::read_json(stream, root);
    } catch (const boost::property_tree::json_parser_error&) {
        Check(thrown && !previewed);
        return 0;
    }

    const auto results = root.get_child_optional("OLTS");
    std::vector<resultfile::RawResult> walked;
    const resultfile::Scan scan =
        resultfile::Walk(text, path, [&](resultfile::RawResult&& e) { walked.push_back(e); });
    Check(scan.hasResults == static_cast<bool>(results) && thrown == !results);
    if (!results) return Check(!previewed), 0;

    std::vector<resultfile::RawResult> elements;
    std::vector<OPMResult> accepted;
    for (const auto& [key, element] : *results) {
        elements.push_back(Raw(element));
        if (const auto result = resultfile::ParseResult(elements.back())) {
            CheckNumbers(element, *result);
            accepted.push_back(*result);
        }
    }
    Check(scan.count == elements.size() && walked.size() == elements.size());
    for (std::size_t i = 0; i < elements.size(); ++i) Check(Same(walked[i], elements[i]));

    const auto expected = resultfile::PreviewOf(
        elements.size(), [&](std::size_t i) { return elements[i]; });
    Check(previewed == (!root.empty() && expected.has_value()));
    if (previewed) Check(preview == *expected);

    Check(loaded == !elements.empty());
    Check(document.GetResultsCount() == accepted.size());
    if (!loaded) return 0;
    // What was loaded saves, loads and saves again to the same bytes.
    const std::string saved = resultfile::Serialise(accepted);
    Check(saved == TreeBytes(accepted));
    Check(Listing(document) == saved);
    // A value beyond the float range loads as an infinity and saves as "inf",
    // which reads back as no number (0): only finite values come back.
    for (const OPMResult& r : accepted)
        if (!std::isfinite(r.absPower) || !std::isfinite(r.refLevel)) return 0;
    resultfile::Write(path, accepted);
    COPMDocument reloaded;
    reloaded.Load(widePath);
    Check(Listing(reloaded) == saved);
    return 0;
}
