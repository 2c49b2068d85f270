#include "Simulator/bench/BenchIniText.h"

namespace sim {
namespace {

std::string Trimmed(std::string_view text) {
    const size_t first = text.find_first_not_of(" \t\r");
    if (first == std::string_view::npos) return {};
    const size_t last = text.find_last_not_of(" \t\r");
    return std::string(text.substr(first, last - first + 1));
}

bool IsComment(const std::string& trimmed) {
    return trimmed.empty() || trimmed[0] == ';' || trimmed[0] == '#';
}

bool IsHeader(const std::string& trimmed) {
    return trimmed.size() >= 2 && trimmed.front() == '[' && trimmed.back() == ']';
}

}  // namespace

BenchIniText::BenchIniText(std::string_view text) {
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string_view::npos) end = text.size();
        lines.push_back({std::string(text.substr(start, end - start)), {}, {}, false});
        start = end + 1;
    }
    Classify();
}

void BenchIniText::Classify() {
    std::string section;
    for (Line& line : lines) {
        const std::string trimmed = Trimmed(line.text);
        line.key.clear();
        line.header = IsHeader(trimmed);
        if (line.header) section = Trimmed(trimmed.substr(1, trimmed.size() - 2));
        line.section = section;
        const size_t equals = trimmed.find('=');
        if (!line.header && !IsComment(trimmed) && equals != std::string::npos)
            line.key = Trimmed(trimmed.substr(0, equals));
    }
}

std::vector<BenchIniText::Entry> BenchIniText::Entries() const {
    std::vector<Entry> entries;
    for (size_t i = 0; i < lines.size(); ++i) {
        const Line& line = lines[i];
        if (line.key.empty()) continue;
        const std::string trimmed = Trimmed(line.text);
        entries.push_back({line.section, line.key, Trimmed(trimmed.substr(trimmed.find('=') + 1)),
                           static_cast<int>(i + 1)});
    }
    return entries;
}

std::vector<BenchIniText::Problem> BenchIniText::Problems() const {
    std::vector<Problem> problems;
    for (size_t i = 0; i < lines.size(); ++i) {
        const Line& line = lines[i];
        const std::string trimmed = Trimmed(line.text);
        if (line.header || IsComment(trimmed)) continue;
        if (line.key.empty())
            problems.push_back({static_cast<int>(i + 1), "not a key = value line: " + trimmed});
        else if (line.section.empty())
            problems.push_back({static_cast<int>(i + 1), "key outside any [section]: " + line.key});
    }
    return problems;
}

void BenchIniText::Set(const std::string& section, const std::string& key,
                       const std::string& value) {
    const std::string text = key + " = " + value;
    // The last occurrence is the one that counts when the file is read.
    for (auto it = lines.rbegin(); it != lines.rend(); ++it)
        if (it->section == section && it->key == key) {
            it->text = text;
            return;
        }
    size_t insertAt = lines.size();
    bool found = false;
    for (size_t i = 0; i < lines.size(); ++i)
        if (lines[i].section == section && (lines[i].header || !lines[i].key.empty())) {
            insertAt = i + 1;
            found = true;
        }
    if (!found) {
        if (!lines.empty() && !Trimmed(lines.back().text).empty())
            lines.push_back({"", {}, {}, false});
        lines.push_back({"[" + section + "]", section, {}, true});
        insertAt = lines.size();
    }
    lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(insertAt),
                 {text, section, key, false});
    Classify();
}

bool BenchIniText::Remove(const std::string& section, const std::string& key) {
    bool removed = false;
    for (size_t i = lines.size(); i-- > 0;)
        if (lines[i].section == section && lines[i].key == key) {
            lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(i));
            removed = true;
        }
    return removed;
}

std::string BenchIniText::Text() const {
    std::string text;
    for (const Line& line : lines) text += line.text + "\n";
    return text;
}

}  // namespace sim
