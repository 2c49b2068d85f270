// Result files: their exact bytes, what loading accepts, refuses and asks,
// the preview, hostile files, and saving through the name entry.

#include <QLabel>
#include <QLineEdit>
#include <boost/property_tree/exceptions.hpp>
#include <filesystem>

#include "Common/Settings/AppConfig.h"
#include "Common/Toolkit/DialogResults.h"
#include "Common/Toolkit/QuestionDialog.h"
#include "Common/Toolkit/VirtualKeyboard.h"
#include "Common/ToolkitTestSupport.h"
#include "Platform/Registry.h"
#include "Platform/WideText.h"
#include "PowerMeter/PowerMeter.h"
#include "PowerMeter/Results/ResultFile.h"
#include "Support/ScratchDirectory.h"

namespace {

OPMResult Result(int year, int month, int day, int hour, int minute, int waveLength, float abs,
                 float ref, std::wstring description = {}) {
    return {0, minute, hour, day, month, year, 0, 0, 0, waveLength, abs, ref, description};
}

std::string Element(const std::string& date, const std::string& time, const std::string& rest) {
    return "{\"Date\": \"" + date + "\", \"Time\": \"" + time + "\"" + rest + "}";
}

std::string File(const std::vector<std::string>& elements) {
    std::string text = "{\"OLTS\": [";
    for (const std::string& e : elements) text += (text.back() == '[' ? "" : ",") + e;
    return text + "]}";
}

// The document's results as "<date> <time> <nm> <abs> <ref> <desc>" lines.
std::string Listing(const COPMDocument& document) {
    std::string text;
    char line[160];
    for (size_t i = 0; i < document.GetResultsCount(); ++i) {
        const OPMResult& r = document.GetResult(i);
        std::snprintf(line, sizeof line, "%d-%d-%d %d:%d %d %g %g %s|", r.year, r.month, r.day,
                      r.hour, r.minute, r.waveLength, r.absPower, r.refLevel,
                      platform::ToUtf8(r.description).c_str());
        text += line;
    }
    return text;
}

class ResultFile : public testing::Test {
protected:
    void SetUp() override {
        platform::LoadHiveFromText(
            "Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\Software\\Tavix]\n");
        SetAppConfig(&config);
    }
    void TearDown() override { SetAppConfig(nullptr); }

    std::wstring Wide(const std::string& name) const { return platform::FromUtf8(dir.Path(name)); }
    std::wstring Put(const std::string& name, const std::string& content) const {
        ScratchDirectory::Write(dir.Path(name), content);
        return Wide(name);
    }
    std::wstring Preview(const std::wstring& path) const {
        std::wstring text = L"unchanged";
        return BuildPreview(path, text) ? text : L"(false)";
    }

    ScopedLanguagePack pack{"english"};
    CAppConfig config{L"Software\\Tavix", 0};
    ScratchDirectory dir;
    COPMDocument document;
};

const std::vector<OPMResult> kTwoResults{Result(2015, 2, 15, 9, 5, 1310, -12.34f, 0.0f),
                                         Result(2015, 2, 15, 9, 6, 1550, -20.5f, -3.0f, L"span A")};

TEST_F(ResultFile, BytesOfTwoResultsAndOfAnEmptyDocument) {
    EXPECT_EQ(resultfile::Serialise(kTwoResults),
              "{\n    \"OLTS\": [\n"
              "        {\n            \"Date\": \"2015-2-15\",\n            \"Time\": \"09:05\",\n"
              "            \"WaveLen\": \"1310\",\n            \"Abs\": \"-12.34\",\n"
              "            \"Ref\": \"0.00\",\n            \"Desc\": \"\"\n        },\n"
              "        {\n            \"Date\": \"2015-2-15\",\n            \"Time\": \"09:06\",\n"
              "            \"WaveLen\": \"1550\",\n            \"Abs\": \"-20.50\",\n"
              "            \"Ref\": \"-3.00\",\n            \"Desc\": \"span A\"\n        }\n"
              "    ]\n}\n");
    EXPECT_EQ(resultfile::Serialise({}), "{\n    \"OLTS\": \"\"\n}\n");
}

// Written by the writer, read back by Load: the month stays 0-based, the
// values come back rounded, UTF-8 text is kept as it is, raw in the file.
TEST_F(ResultFile, RoundTrip) {
    const std::string path = dir.Path("round.txt");
    resultfile::Write(path, {Result(2016, 0, 7, 23, 59, 1625, -12.345678f, -3.004f,
                                    L"Spleiß Nord – Ø 9 µm \"q\" \\ /"),
                             Result(2015, 11, 31, 0, 0, 850, 0.0f, 0.0f)});
    ASSERT_TRUE(document.Load(platform::FromUtf8(path)));
    EXPECT_EQ(Listing(document),
              "2016-0-7 23:59 1625 -12.35 -3 Spleiß Nord – Ø 9 µm \"q\" \\ /|"
              "2015-11-31 0:0 850 0 0 |");
    EXPECT_EQ(document.GetDirectory() + document.GetFileName(), Wide("round.txt"));
}

// What loading a well-formed file gives: the result, the listing, whether the
// name was taken.
TEST_F(ResultFile, LoadAcceptsRefusesAndDefaults) {
    struct Case {
        std::string content, listing;  // no listing: not loaded
    };
    const std::string ok = ", \"WaveLen\": \"1310\", \"Abs\": \"-1.5\", \"Ref\": \"0.00\"";
    for (const auto& [content, listing] : {
             Case{resultfile::Serialise({}), ""},
             Case{"{\"OLTS\": []}", ""},
             Case{File({Element("2015-2-15", "12", ok), Element("2015-2-15", "12:01", ok)}),
                  "2015-2-15 12:1 1310 -1.5 0 |"},
             Case{File({Element("2015-2", "12:00", ok), Element("", "12:00", ok),
                        Element("1-2-3-4", "5:6:7", ok)}),
                  "1-2-3 5:6 1310 -1.5 0 |"},
             Case{File({Element("1-2-3", "4:5",
                                ", \"WaveLen\": 1550, \"Abs\": \"-1e1\", \"Ref\": \"1310nm\""),
                        Element("1-2-3", "4:5", ", \"WaveLen\": \"nan\", \"Abs\": \"inf\""),
                        "\"not an object\"", "[\"1-2-3\"]"}),
                  "1-2-3 4:5 1550 -10 0 |1-2-3 4:5 0 0 0 |"},
         }) {
        SCOPED_TRACE(content);
        document.Clear(), document.AddResult(Result(1, 1, 1, 1, 1, 1, 1, 1, L"kept"));
        const bool loaded = !listing.empty();
        if (loaded)
            toolkittest::WhenShown<CQuestionDialog>("the load question",
                                                    [](CQuestionDialog* q) { q->accept(); });
        EXPECT_EQ(document.Load(Put("a.txt", content)), loaded);
        EXPECT_EQ(Listing(document), loaded ? listing : "1-1-1 1:1 1 1 1 kept|");
        EXPECT_EQ(document.GetFileName(), L"a.txt");
        document.Clear();
        EXPECT_EQ(document.Load(Put("b.txt", content)), loaded);  // empty: no question
    }
}

// Files that are not result files: an error the caller can show, the
// document as it was (name included), and no preview.
TEST_F(ResultFile, RefusedFilesThrowAndLeaveTheDocumentAlone) {
    ScratchDirectory::Write(dir.Path("large.txt"), File({}));
    std::filesystem::resize_file(dir.Path("large.txt"), resultfile::kMaxFileSize + 1);
    using Case = std::tuple<const char*, std::string, const char*>;  // file, content, error
    for (const auto& [name, content, message] : {
             Case{"missing.txt", "", "cannot open file"},
             Case{"large.txt", "", "larger than 64 MB"},
             Case{"deep.txt", "{\"OLTS\": [{\"Date\": {}}]}", "nested deeper than 3 levels"},
             Case{"latin1.txt", File({Element("1-2-3", "4:5", ", \"Desc\": \"Splei\xdf\"")}),
                  "not valid UTF-8"},
             Case{"broken.txt", "{\"OLTS\": [}", "expected value"},
             Case{"other.txt", "{\"Results\": []}", "No such node (OLTS)"},
         }) {
        document.Clear(), document.AddResult(Result(1, 1, 1, 1, 1, 1, 1, 1));
        const std::wstring wide = content.empty() ? Wide(name) : Put(name, content);
        try {
            document.Load(wide);
            ADD_FAILURE() << "loaded";
        } catch (const boost::property_tree::ptree_error& error) {
            EXPECT_THAT(error.what(), testing::HasSubstr(message));
        }
        EXPECT_EQ(document.GetResultsCount(), 1u);
        EXPECT_EQ(document.GetFileName(), L"");
        EXPECT_EQ(Preview(wide), L"(false)");
    }
}

TEST_F(ResultFile, Preview) {
    const std::string r1310 = ", \"WaveLen\": \"1310\", \"Abs\": \"-12.34\", \"Ref\": \"0.00\"";
    const std::string r1550 = ", \"WaveLen\": \"1550\", \"Abs\": \"-20.50\", \"Ref\": \"-3.00\"";
    std::vector<OPMResult> twenty;
    for (int i = 0; i < 20; ++i)
        twenty.push_back(Result(2015, 2, i + 1, 9, i, 1310 + i, -1.0f * i, 0));
    resultfile::Write(dir.Path("twenty.txt"), twenty);
    std::wstring lines;
    for (int i = 8; i < 20; ++i)
        lines += std::to_wstring(1310 + i) + L" Abs -" + std::to_wstring(i) + L".00\n";
    using Case = std::pair<std::wstring, std::wstring>;  // file, preview
    for (const auto& [path, text] : {
             Case{Put("three.txt", File({Element("2015-2-15", "09:05", r1310),
                                         Element("2015-2-15", "09:06",
                                                 ", \"WaveLen\": \"1550\", \"Abs\": "
                                                 "\"-20.50\", \"Ref\": \"0.00\""),
                                         Element("2015-2-15", "09:07", r1550)})),
                  L"2015-2-15/2015-2-15\nsize 3\n1310 Abs -12.34\n"
                  L"1550 Abs -20.50\n1550 Ref -17.50\n"},
             Case{Wide("twenty.txt"), L"2015-2-1/2015-2-20\nsize 20\n" + lines},
             // The last refused: the one before names the end and is not counted.
             Case{Put("last.txt", File({Element("2015-2-1", "1:2", r1310),
                                        Element("2015-2-2", "1:2", ", \"Abs\": \"0\""),
                                        Element("2015-2-3", "12", r1310)})),
                  L"2015-2-1/2015-2-2\nsize 2\n1310 Abs -12.34\nerr format\n"},
             Case{Put("ends.txt",
                      File({Element("2015-2-1", "1:2", r1550), Element("2015-2", "1:2", r1310),
                            Element("2015-2", "1:2", r1310)})),
                  L"2015-2-1/size 3\n1550 Ref -17.50\n"},
             Case{Put("one.txt", File({Element("2015-2-1", "1", r1550)})), L"(false)"},
             Case{Put("empty.txt", resultfile::Serialise({})), L"(false)"},
         }) {
        EXPECT_EQ(Preview(path), text) << platform::ToUtf8(path);
    }
}

// The name entry: the offered name taken, a typed one, a cancel; the question
// on loading comes right after a save too; a write that fails.
TEST_F(ResultFile, SaveAsThroughTheNameEntryThenLoadAsks) {
    document.AddResult(kTwoResults[0]);
    const std::wstring directory = platform::FromUtf8(dir.Root().string());
    using Step = std::tuple<const char*, bool, const char*>;  // typed, saved, file
    for (const auto& [typed, saved, file] :
         {Step{nullptr, true, "temp.txt"}, Step{"Nord", true, "Nord.txt"},
          Step{"cancel", false, "Nord.txt"}}) {
        SCOPED_TRACE(file);
        QString title;
        toolkittest::WhenShown<CVirtualKeyboard>(
            "the name entry", [&, typed = typed](CVirtualKeyboard* keyboard) {
                title = keyboard->windowTitle();
                auto* edit = keyboard->findChild<QLineEdit*>();
                if (typed == nullptr) return QTest::keyClick(edit, Qt::Key_Return);
                if (std::string(typed) == "cancel") return QTest::keyClick(edit, Qt::Key_Escape);
                edit->clear(), QTest::keyClicks(edit, typed), QTest::keyClick(edit, Qt::Key_Return);
            });
        EXPECT_EQ(document.SaveAs(directory), saved);
        EXPECT_EQ(title, "File name");
        const std::wstring full = directory + L"/" + platform::FromUtf8(file);
        EXPECT_EQ(config.GetValue<std::wstring>(LastSavedPathValue), full);
        EXPECT_EQ(document.GetDirectory() + L"/" + document.GetFileName(), full);
        EXPECT_EQ(ScratchDirectory::Read(platform::ToUtf8(full)),
                  resultfile::Serialise({kTwoResults[0]}));
    }
    ASSERT_TRUE(document.IsSaved());
    for (const int answer : {IDNO, IDYES}) {
        QString question;
        toolkittest::WhenShown<CQuestionDialog>("the load question", [&](CQuestionDialog* box) {
            question = box->findChild<QLabel*>("1192")->text().replace('\n', ' ');  // wrapped
            answer == IDYES ? box->accept() : box->reject();
        });
        EXPECT_EQ(document.Load(Put("two.txt", resultfile::Serialise(kTwoResults))),
                  answer == IDYES);
        EXPECT_EQ(question, "DO YOU REALLY WANT TO OPEN FILE?UNSAVED DATA WILL BE LOST!");
        EXPECT_EQ(document.GetResultsCount(), answer == IDYES ? 2u : 1u);
    }
    // A failed write names the file, but neither marks it saved nor remembers it.
    toolkittest::WhenShown<CVirtualKeyboard>("the name entry", [](auto* k) { k->accept(); });
    EXPECT_THROW(document.SaveAs(directory + L"/no"), boost::property_tree::json_parser_error);
    EXPECT_EQ(document.GetDirectory() + L"/" + document.GetFileName(), directory + L"/no/temp.txt");
    EXPECT_EQ(config.GetValue<std::wstring>(LastSavedPathValue), directory + L"/Nord.txt");
}

}  // namespace
