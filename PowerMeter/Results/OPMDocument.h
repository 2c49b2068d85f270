#pragma once
// The results the user has taken since the start or the last load, and the
// views that follow them. One document lives for the whole run; only the
// user-interface thread touches it.

#include <string>
#include <vector>

class COPMDocument;

// One reading. The first nine fields are the broken-down local time with the
// year made full (2015) and the month left counted from 0, as every reader
// and writer of results expects.
struct OPMResult {
    int second = 0;
    int minute = 0;
    int hour = 0;
    int day = 0;
    int month = 0;
    int year = 0;
    int weekDay = 0;
    int yearDay = 0;
    int isDst = 0;
    int waveLength = 0;     // nm
    float absPower = 0.0f;  // dBm
    float refLevel = 0.0f;  // dBm; 0 when the reference display was off
    std::wstring description;
};

class CPMDocumentObserver {
public:
    virtual ~CPMDocumentObserver() = default;
    // changeCode 1: a result was added.
    virtual void OnDocumentChanged(COPMDocument* document, int changeCode) = 0;
};

class COPMDocument {
public:
    static constexpr int kResultAdded = 1;

    COPMDocument() = default;
    // Fatal while an observer is still registered: a view must not outlive
    // the document it watches.
    ~COPMDocument();
    COPMDocument(const COPMDocument&) = delete;
    COPMDocument& operator=(const COPMDocument&) = delete;

    void AddObserver(CPMDocumentObserver* observer);
    void RemoveObserver(CPMDocumentObserver* observer);

    // A result from the meter's last reading, stamped now; notifies.
    void AddCurrentResult();
    // Appends a copy; no notification, `saved` untouched (loading).
    void AddResult(const OPMResult& result);
    void Clear() { results.clear(); }
    // A description typed in the results list; the document changes, so the
    // next save carries it. No notification: the list made the change.
    void SetDescription(size_t index, const std::wstring& description);

    size_t GetResultsCount() const { return results.size(); }
    const OPMResult& GetResult(size_t index) const;

    const std::wstring& GetFileName() const { return fileName; }
    const std::wstring& GetDirectory() const { return directory; }
    bool IsSaved() const { return saved; }

    // Asks for a name (virtual keyboard, "temp" offered) and writes the
    // results to <targetDirectory>/<name>.txt. False when the entry was
    // cancelled. A write failure throws json_parser_error, after fileName and
    // directory have been set but before `saved`.
    bool SaveAs(const std::wstring& targetDirectory);
    // Replaces the results with the file's after asking, when the document
    // holds any. False when the file holds no results (the name is still
    // taken) or the user declined. An unreadable, invalid, hostile or
    // "OLTS"-less file throws a ptree_error; the results stay as they were.
    bool Load(const std::wstring& path);

protected:
    void Notify(int changeCode);

    std::vector<OPMResult> results;
    std::vector<CPMDocumentObserver*> observers;
    std::wstring directory;
    std::wstring fileName;
    bool saved = false;
};
