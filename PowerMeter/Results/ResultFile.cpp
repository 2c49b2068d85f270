#include "PowerMeter/Results/ResultFile.h"

#include <sys/stat.h>

#include <array>
#include <boost/property_tree/json_parser.hpp>
#include <boost/property_tree/json_parser/detail/read.hpp>
#include <boost/property_tree/ptree.hpp>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <memory>
#include <string_view>

#include "Platform/AtomicFile.h"
#include "Platform/WideText.h"
#include "Support/NarrowString.h"

namespace resultfile {
namespace {

using boost::property_tree::json_parser_error;

constexpr const char* kResults = "OLTS";
constexpr std::array<const char*, 6> kKeys{"Date", "Time", "WaveLen", "Abs", "Ref", "Desc"};
// Each member's line up to its value, as the pretty printer indents it.
constexpr std::array<std::string_view, 6> kMemberStarts{
    "            \"Date\": \"", "            \"Time\": \"", "            \"WaveLen\": \"",
    "            \"Abs\": \"",  "            \"Ref\": \"",  "            \"Desc\": \""};

std::string DateText(const OPMResult& r) {
    return std::to_string(r.year) + "-" + std::to_string(r.month) + "-" + std::to_string(r.day);
}

// printf's "%02d" and "%.2f" without the cost of parsing a format for each
// of half a million values.
std::string TwoDigits(int value) {
    return value >= 0 && value < 10 ? "0" + std::to_string(value) : std::to_string(value);
}

// The largest float has 39 digits before the point: the buffer always holds it.
std::string Hundredths(float value) {
    char buffer[64];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, static_cast<double>(value),
                                      std::chars_format::fixed, 2);
    return std::string(buffer, result.ptr);
}

std::string Utf8(const std::wstring& text) {
    for (const wchar_t c : text)
        // wchar_t is signed on x86-64 and unsigned on arm64.
        if (static_cast<std::uint32_t>(c) >= 0x80) return platform::ToUtf8(text);
    return std::string(text.begin(), text.end());
}

bool IsBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

// Surrounding white space and a leading '+' are allowed; anything else that
// is not part of the number makes it not a number.
std::string_view NumberText(std::string_view text) {
    while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
    if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
    return text;
}

int Integer(std::string_view text) {
    text = NumberText(text);
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size() ? value : 0;
}

float Number(std::string_view text) {
    text = NumberText(text);
    // from_chars would take "inf" and "nan"; a file's number is digits.
    const std::size_t digit = text.find_first_of("0123456789");
    if (digit == std::string_view::npos || text.find_first_of("iInN") != std::string_view::npos)
        return 0.0f;
    double value = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return 0.0f;
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    if (std::fabs(value) > std::numeric_limits<float>::max())
        return value > 0 ? kInfinity : -kInfinity;
    return static_cast<float>(value);
}

// The first `count` parts of `text` split at `separator`; false when it has
// fewer. Every separator splits, so empty parts count.
template <std::size_t count>
bool Split(std::string_view text, char separator, std::array<std::string_view, count>& parts) {
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t end = text.find(separator);
        parts[i] = text.substr(0, end);
        if (end == std::string_view::npos) return i + 1 == count;
        text.remove_prefix(end + 1);
    }
    return true;
}

bool NeedsNoEscape(unsigned char u) {
    return u == 0x20 || u == 0x21 || (u >= 0x23 && u <= 0x2E) || (u >= 0x30 && u <= 0x5B) ||
           u >= 0x5D;
}

// As the property tree's writer escapes: bytes from 0x80 up stay as they are.
// Runs that need no escape go in whole; they are nearly all of a file.
void AppendEscaped(std::string& out, std::string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        std::size_t run = i;
        while (run < text.size() && NeedsNoEscape(static_cast<unsigned char>(text[run]))) ++run;
        out.append(text.data() + i, run - i);
        if ((i = run) == text.size()) break;
        const char c = text[i];
        const auto u = static_cast<unsigned char>(c);
        out += '\\';
        switch (c) {
            case '\b':
                out += 'b';
                break;
            case '\f':
                out += 'f';
                break;
            case '\n':
                out += 'n';
                break;
            case '\r':
                out += 'r';
                break;
            case '\t':
                out += 't';
                break;
            case '/':
                out += '/';
                break;
            case '"':
                out += '"';
                break;
            case '\\':
                out += '\\';
                break;
            default:
                out += "u00";
                out += "0123456789ABCDEF"[u >> 4];
                out += "0123456789ABCDEF"[u & 15];
        }
    }
}

[[noreturn]] void Fail(const std::string& message, const std::string& path) {
    throw json_parser_error(message, path, 0);
}

std::wstring Wide(const std::string& text) {
    for (const char c : text)
        if (static_cast<unsigned char>(c) >= 0x80) return platform::FromUtf8(text);
    return std::wstring(text.begin(), text.end());
}

// Well-formed UTF-8 (no overlong forms, surrogates or code points beyond
// U+10FFFF), checked in place: a decoder would first build a copy of the
// whole file.
bool IsUtf8(std::string_view text) {
    const auto* p = reinterpret_cast<const unsigned char*>(text.data());
    const auto* const end = p + text.size();
    while (p < end) {
        if (*p < 0x80) {
            ++p;
            continue;
        }
        int trailing = 0;
        unsigned low = 0x80, high = 0xBF;  // allowed range of the first trailing byte
        if (*p >= 0xC2 && *p <= 0xDF)
            trailing = 1;
        else if (*p >= 0xE0 && *p <= 0xEF)
            trailing = 2, low = *p == 0xE0 ? 0xA0 : 0x80, high = *p == 0xED ? 0x9F : 0xBF;
        else if (*p >= 0xF0 && *p <= 0xF4)
            trailing = 3, low = *p == 0xF0 ? 0x90 : 0x80, high = *p == 0xF4 ? 0x8F : 0xBF;
        else
            return false;
        if (end - p <= trailing || p[1] < low || p[1] > high) return false;
        for (int i = 2; i <= trailing; ++i)
            if ((p[i] & 0xC0) != 0x80) return false;
        p += trailing + 1;
    }
    return true;
}

// Brackets outside strings; the parser recurses once per level.
int Nesting(std::string_view text) {
    int depth = 0, deepest = 0;
    bool inString = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (inString) {
            if (c == '\\')
                ++i;
            else if (c == '"')
                inString = false;
        } else if (c == '"') {
            inString = true;
        } else if (c == '{' || c == '[') {
            deepest = std::max(deepest, ++depth);
        } else if (c == '}' || c == ']') {
            --depth;
        }
    }
    return deepest;
}

// The property tree's JSON reader callbacks, keeping of the tree only the
// elements of the first "OLTS" member of the root, and of each element the
// first of each of the six members, as the tree's lookups would find them.
class ElementCollector {
public:
    using char_type = char;

    explicit ElementCollector(const std::function<void(RawResult&&)>& sink) : sink(sink) {}

    void on_null() { NewValue() = "null"; }
    void on_boolean(bool b) { NewValue() = b ? "true" : "false"; }
    template <typename Range>
    void on_number(Range units) {
        NewValue().assign(units.begin(), units.end());
    }
    void on_begin_number() { NewValue(); }
    void on_digit(char d) { CurrentValue() += d; }
    void on_end_number() {}
    void on_begin_string() { NewValue(); }
    template <typename Range>
    void on_code_units(Range units) {
        CurrentValue().append(units.begin(), units.end());
    }
    void on_code_unit(char c) { CurrentValue() += c; }
    void on_end_string() {}
    void on_begin_array() { NewTree().kind = Array; }
    void on_end_array() { EndTree(); }
    void on_begin_object() { NewTree().kind = Object; }
    void on_end_object() { EndTree(); }

    // Hands over the last element.
    Scan Finish() {
        Deliver();
        return scan;
    }

private:
    enum Kind { Array, Object, Key, Leaf };
    enum Role { Root, Results, Element, Member, Other };
    struct Layer {
        Kind kind;
        Role role;
        std::string* data;
    };

    void Deliver() {
        if (!pending) return;
        pending = false;
        sink(std::move(element));
    }

    Layer Child(Role parent) {
        switch (parent) {
            case Root:
                if (keyBuffer == kResults && !scan.hasResults) {
                    scan.hasResults = true;
                    return {Leaf, Results, &scratch};
                }
                return {Leaf, Other, &scratch};
            case Results:
                Deliver();
                element = RawResult{};
                seen = {};
                pending = true;
                ++scan.count;
                return {Leaf, Element, &scratch};
            case Element:
                for (std::size_t i = 0; i < kKeys.size(); ++i) {
                    if (keyBuffer != kKeys[i] || seen[i]) continue;
                    seen[i] = true;
                    return {Leaf, Member, &Field(i)};
                }
                return {Leaf, Other, &scratch};
            default:
                return {Leaf, Other, &scratch};
        }
    }

    std::string& Field(std::size_t i) {
        std::string* fields[] = {&element.date,     &element.time,     &element.waveLength,
                                 &element.absPower, &element.refLevel, &element.description};
        return *fields[i];
    }

    Layer& NewTree() {
        if (stack.empty()) {
            stack.push_back({Leaf, Root, &scratch});
            return stack.back();
        }
        Layer& top = stack.back();
        switch (top.kind) {
            case Array:
                keyBuffer.clear();
                stack.push_back(Child(top.role));
                return stack.back();
            case Key:
                top.kind = Object;
                stack.push_back(Child(top.role));
                return stack.back();
            case Leaf:
                stack.pop_back();
                return NewTree();
            default:  // an object's member starts with its key, never here
                stack.push_back({Leaf, Other, &scratch});
                return stack.back();
        }
    }

    std::string& NewValue() {
        if (stack.empty()) {
            std::string& data = *NewTree().data;
            data.clear();
            return data;
        }
        Layer& top = stack.back();
        switch (top.kind) {
            case Leaf:
                stack.pop_back();
                return NewValue();
            case Object:
                top.kind = Key;
                keyBuffer.clear();
                return keyBuffer;
            default: {
                std::string& data = *NewTree().data;
                data.clear();
                return data;
            }
        }
    }

    std::string& CurrentValue() {
        return stack.back().kind == Key ? keyBuffer : *stack.back().data;
    }

    void EndTree() {
        if (stack.back().kind == Leaf) stack.pop_back();
        stack.pop_back();
    }

    const std::function<void(RawResult&&)>& sink;
    std::vector<Layer> stack;
    std::string keyBuffer;
    std::string scratch;
    RawResult element;
    std::array<bool, kKeys.size()> seen{};
    bool pending = false;
    Scan scan;
};

}  // namespace

// The property tree's pretty printer, written out for this one layout: a tree
// of 100,000 results took seconds to build and print, this takes a tenth of
// a second. The bytes are the same, escapes included. The text goes to
// `flush` in pieces of about 64 KB: a whole file held in memory would cost
// its size again in fresh pages at every save.
namespace {

template <typename Flush>
bool Print(const std::vector<OPMResult>& results, Flush flush) {
    constexpr std::size_t kPiece = 64 * 1024;
    if (results.empty()) return flush(std::string_view("{\n    \"OLTS\": \"\"\n}\n"));
    std::string text = "{\n    \"OLTS\": [\n";
    text.reserve(kPiece + 4096);
    for (std::size_t i = 0; i < results.size(); ++i) {
        const OPMResult& r = results[i];
        const std::string values[] = {DateText(r),
                                      TwoDigits(r.hour) + ":" + TwoDigits(r.minute),
                                      std::to_string(r.waveLength),
                                      Hundredths(r.absPower),
                                      Hundredths(r.refLevel),
                                      Utf8(r.description)};
        text += "        {\n";
        for (std::size_t k = 0; k < kKeys.size(); ++k) {
            text += kMemberStarts[k];
            AppendEscaped(text, values[k]);
            text += k + 1 < kKeys.size() ? "\",\n" : "\"\n";
        }
        text += i + 1 < results.size() ? "        },\n" : "        }\n";
        if (text.size() >= kPiece) {
            if (!flush(std::string_view(text))) return false;
            text.clear();
        }
    }
    text += "    ]\n}\n";
    return flush(std::string_view(text));
}

}  // namespace

std::string Serialise(const std::vector<OPMResult>& results) {
    std::string text;
    Print(results, [&](std::string_view piece) { return text.append(piece), true; });
    return text;
}

void Write(const std::string& path, const std::vector<OPMResult>& results) {
    platform::AtomicFileWriter writer(path);
    if (writer.Stream() == nullptr) Fail("cannot open file", path);
    const bool written = Print(results, [&](std::string_view piece) {
        return std::fwrite(piece.data(), 1, piece.size(), writer.Stream()) == piece.size();
    });
    if (!written || !writer.Commit()) Fail("write error", path);
}

std::string ReadChecked(const std::string& path) {
    const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
    struct stat status {};
    if (!file || fstat(fileno(file.get()), &status) != 0 || S_ISDIR(status.st_mode))
        Fail("cannot open file", path);
    const auto tooLarge = [&] {
        Fail("file is larger than " + std::to_string(kMaxFileSize >> 20) +
                 " MB, too large for a result file",
             path);
    };
    if (static_cast<unsigned long long>(status.st_size) > kMaxFileSize) tooLarge();
    // Read to the end rather than trust the size: a growing file may be longer.
    std::string text(static_cast<std::size_t>(status.st_size), '\0');
    std::size_t length = std::fread(text.data(), 1, text.size(), file.get());
    char extra[4096];
    for (std::size_t n;
         length == text.size() && (n = std::fread(extra, 1, sizeof extra, file.get())) > 0;) {
        text.append(extra, n);
        length = text.size();
        if (length > kMaxFileSize) tooLarge();
    }
    if (std::ferror(file.get())) Fail("read error", path);
    text.resize(length);
    if (!IsUtf8(text)) Fail("text is not valid UTF-8", path);
    if (Nesting(text) > kMaxNesting)
        Fail("nested deeper than " + std::to_string(kMaxNesting) + " levels, not a result file",
             path);
    return text;
}

Scan Walk(const std::string& text, const std::string& path,
          const std::function<void(RawResult&&)>& element) {
    namespace detail = boost::property_tree::json_parser::detail;
    ElementCollector collector(element);
    detail::utf8_utf8_encoding encoding;
    detail::read_json_internal(text.data(), text.data() + text.size(), encoding, collector, path);
    return collector.Finish();
}

std::optional<OPMResult> ParseResult(const RawResult& raw) {
    std::array<std::string_view, 3> date;
    std::array<std::string_view, 2> time;
    if (!Split(raw.date, '-', date) || !Split(raw.time, ':', time)) return std::nullopt;
    OPMResult result;
    result.year = Integer(date[0]);
    result.month = Integer(date[1]);
    result.day = Integer(date[2]);
    result.hour = Integer(time[0]);
    result.minute = Integer(time[1]);
    result.waveLength = Integer(raw.waveLength);
    result.absPower = Number(raw.absPower);
    result.refLevel = Number(raw.refLevel);
    result.description = Wide(raw.description);
    return result;
}

std::optional<std::wstring> PreviewOf(std::size_t count,
                                      const std::function<RawResult(std::size_t)>& element) {
    if (count == 0) return std::nullopt;
    const std::optional<OPMResult> first = ParseResult(element(0));
    if (!first) return std::nullopt;
    std::string text = DateText(*first) + "/";
    std::size_t k = 0;
    if (const std::optional<OPMResult> last = ParseResult(element(count - 1))) {
        text += DateText(*last) + "\n";
    } else if (count != 1) {
        if (const std::optional<OPMResult> before = ParseResult(element(count - 2))) {
            text += DateText(*before) + "\n";
            k = 1;
        }
    }
    text += TNarrowString().Format("size %zu\n", count - k).c_str();
    for (std::size_t i = count > 12 ? count - 12 : 0; i < count; ++i) {
        const std::optional<OPMResult> r = ParseResult(element(i));
        if (!r) continue;
        if (r->refLevel != 0.0f)
            text += TNarrowString()
                        .Format("%d Ref %.2f\n", r->waveLength,
                                static_cast<double>(r->absPower - r->refLevel))
                        .c_str();
        else if (r->absPower != 0.0f)
            text += TNarrowString()
                        .Format("%d Abs %.2f\n", r->waveLength, static_cast<double>(r->absPower))
                        .c_str();
        else
            text += "err format\n";
    }
    return platform::FromUtf8(text);
}

}  // namespace resultfile

bool BuildPreview(const std::wstring& path, std::wstring& text) {
    using namespace resultfile;
    // The first element and a ring of the last thirteen: the preview asks for
    // no others, and a large file's elements are not all kept.
    constexpr std::size_t kRing = 13;
    RawResult first;
    std::array<RawResult, kRing> ring;
    std::size_t count = 0;
    try {
        const std::string narrowPath = platform::ToUtf8(path);
        const Scan scan = Walk(ReadChecked(narrowPath), narrowPath, [&](RawResult&& element) {
            if (count == 0) first = element;
            ring[count++ % kRing] = std::move(element);
        });
        if (!scan.hasResults) return false;
        const std::optional<std::wstring> preview =
            PreviewOf(count, [&](std::size_t i) { return i == 0 ? first : ring[i % kRing]; });
        if (!preview) return false;
        text = *preview;
        return true;
    } catch (const std::exception&) {
        return false;
    }
}
