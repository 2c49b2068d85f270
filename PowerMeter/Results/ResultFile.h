#pragma once
// The result file on disk: a JSON object whose member "OLTS" is an array of
// results, each one an object of six text members (Date, Time, WaveLen, Abs,
// Ref, Desc). Text is UTF-8, in the file and in its name. Writing replaces the
// file atomically; reading refuses hostile files (too large, nested too deep,
// not UTF-8) before the recursive JSON parser sees them. No user interface
// here: the document's SaveAs and Load add the name entry and the question.

// The errors Load and SaveAs throw, for their callers to catch.
#include <boost/property_tree/exceptions.hpp>
#include <boost/property_tree/json_parser.hpp>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "PowerMeter/Results/OPMDocument.h"

// Settings value: the full path of the file last saved.
constexpr wchar_t LastSavedPathValue[] = L"PowerMeter_LastSavedPath";

// Fills `text` with the short summary the file dialog shows for the file:
// the dates of the first and last results, the count and the last twelve
// values. False when the file cannot be shown; never throws.
bool BuildPreview(const std::wstring& path, std::wstring& text);

namespace resultfile {

// Far above any real document (100,000 results make about 13 MB) and far
// below what would strain the instrument's memory: a file beyond it is not
// one of ours, and reading it whole would only hurt.
constexpr std::size_t kMaxFileSize = 64u << 20;
// Root object, the results array, one result object. Deeper nesting is never
// written by us and would only feed the recursive parser.
constexpr int kMaxNesting = 3;

// The six members of one element as text, a missing member read as empty.
struct RawResult {
    std::string date, time, waveLength, absPower, refLevel, description;
};

// The file's exact bytes for `results`, pretty printed.
std::string Serialise(const std::vector<OPMResult>& results);
// Writes the file atomically. Throws json_parser_error ("cannot open file",
// "write error") and leaves an existing file as it was.
void Write(const std::string& path, const std::vector<OPMResult>& results);

// The whole file after the hostile-file checks. Throws json_parser_error.
std::string ReadChecked(const std::string& path);

// What a walk over a file's text found.
struct Scan {
    bool hasResults = false;  // the first "OLTS" member was found
    std::size_t count = 0;    // its elements
};
// Parses `text` (checked) as JSON and hands every element of the first "OLTS"
// member, in file order, to `element`. Reads exactly what the property tree
// would hold, without building it. Throws json_parser_error on bad syntax.
Scan Walk(const std::string& text, const std::string& path,
          const std::function<void(RawResult&&)>& element);

// One element as a result, or nothing when its Date or Time is malformed.
std::optional<OPMResult> ParseResult(const RawResult& raw);

// The preview of an "OLTS" array of `count` elements; `element(i)` is asked
// only for the first and the last thirteen. Nothing when it can't be shown.
std::optional<std::wstring> PreviewOf(std::size_t count,
                                      const std::function<RawResult(std::size_t)>& element);

}  // namespace resultfile
