#pragma once
// The bench file as lines: a change rewrites one line (or adds one) and
// leaves the person's comments, order and spacing alone.

#include <string>
#include <string_view>
#include <vector>

namespace sim {

class BenchIniText {
public:
    struct Entry {
        std::string section;
        std::string key;
        std::string value;
        int line = 0;  // 1-based
    };
    struct Problem {
        int line = 0;
        std::string text;
    };

    explicit BenchIniText(std::string_view text = {});

    // Key = value lines in file order; a repeated key appears twice, the later wins.
    std::vector<Entry> Entries() const;
    // Lines that are neither a section, a key = value pair, a comment nor blank.
    std::vector<Problem> Problems() const;

    void Set(const std::string& section, const std::string& key, const std::string& value);
    // False when the key was not there.
    bool Remove(const std::string& section, const std::string& key);

    std::string Text() const;

private:
    struct Line {
        std::string text;
        std::string section;  // the section the line lies in
        std::string key;      // empty unless a key = value line
        bool header = false;
    };
    void Classify();
    std::vector<Line> lines;
};

}  // namespace sim
