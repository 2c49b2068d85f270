#pragma once
// The opm-bench command line: edits and shows the bench file.

#include <iosfwd>
#include <string>
#include <vector>

namespace sim {

class BenchTool {
public:
    // Exit codes.
    static constexpr int kDone = 0;
    static constexpr int kBadUsage = 1;
    static constexpr int kWriteFailed = 2;

    // `arguments` without the program name. Results go to `out`, complaints to `err`.
    int Run(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err);

private:
    int Set(const std::string& name, const std::string& value, std::ostream& err);
    int Unset(const std::string& name, std::ostream& err);
    int Get(const std::string& name, std::ostream& out, std::ostream& err);
    int Show(std::ostream& out);
    int Keys(std::ostream& out);
    bool Write(const std::string& text, std::ostream& err);
    std::string ReadFile(bool& exists);

    std::string path;
};

}  // namespace sim
