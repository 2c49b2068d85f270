#include "Common/Utilities/FileNameCheck.h"

#include <QDir>
#include <QFileInfo>
#include <QString>

#include "Common/Utilities/LanguageResources.h"
#include "Platform/FatalError.h"

namespace {
constexpr const char* kForbidden = "\\/:*?\"<>|";

QString Complaint(unsigned id) {
    std::wstring text;
    const bool loaded = LoadResourceString(id, text);
    OPM_ASSERT(loaded && "Name check text missing from the language pack");
    return QString::fromStdWString(text);
}
}  // namespace

CFileNameCheck::CFileNameCheck(std::wstring directory, std::vector<std::wstring> extensions,
                               std::vector<std::wstring> reservedWords)
    : directory(std::move(directory)),
      extensions(std::move(extensions)),
      reservedWords(std::move(reservedWords)) {}

bool CFileNameCheck::operator()(const std::wstring& wideName, std::wstring& complaint) const {
    const QString name = QString::fromStdWString(wideName);
    if (name.trimmed().isEmpty()) {
        complaint = Complaint(IDS_NAME_EMPTY).toStdWString();
        return false;
    }
    for (const QChar c : name) {
        if (c.unicode() < 32 || QLatin1String(kForbidden).contains(c)) {
            complaint = Complaint(IDS_NAME_BAD_CHARACTER).arg(c).toStdWString();
            return false;
        }
    }
    for (const std::wstring& word : reservedWords) {
        if (name.compare(QString::fromStdWString(word), Qt::CaseInsensitive) == 0) {
            complaint = Complaint(IDS_NAME_RESERVED).arg(name).toStdWString();
            return false;
        }
    }
    const QDir target(
        QString::fromStdWString(directory).replace(QLatin1Char('\\'), QLatin1Char('/')));
    for (const std::wstring& extension : extensions) {
        const QString fileName = name + QLatin1Char('.') + QString::fromStdWString(extension);
        if (QFileInfo::exists(target.filePath(fileName))) {
            complaint = Complaint(IDS_NAME_EXISTS).arg(fileName).toStdWString();
            return false;
        }
    }
    return true;
}
