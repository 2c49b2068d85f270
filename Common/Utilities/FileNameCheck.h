#pragma once
// The name check the virtual keyboard runs on OK when it names a result file:
// a name must be given, must be a valid file name, must not be one of the
// words other result types use for their own files, and must not name a file
// that already lies in the target directory with one of the extensions.

#include <string>
#include <vector>

class CFileNameCheck {
public:
    // String resources of the complaints.
    static constexpr unsigned IDS_NAME_EMPTY = 61360;
    static constexpr unsigned IDS_NAME_BAD_CHARACTER = 61361;
    static constexpr unsigned IDS_NAME_EXISTS = 61362;
    static constexpr unsigned IDS_NAME_RESERVED = 61363;

    // `directory` may use either slash; `extensions` come without the point.
    CFileNameCheck(std::wstring directory, std::vector<std::wstring> extensions,
                   std::vector<std::wstring> reservedWords);

    // True when `name` will do; otherwise `complaint` says why not.
    bool operator()(const std::wstring& name, std::wstring& complaint) const;

private:
    std::wstring directory;
    std::vector<std::wstring> extensions;
    std::vector<std::wstring> reservedWords;
};
