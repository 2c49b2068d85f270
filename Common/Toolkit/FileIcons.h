#pragma once
// Folder and file pictures of the file browser, drawn in the toolkit's high
// contrast rather than taken from a desktop icon theme the instrument lacks.

#include <QAbstractFileIconProvider>
#include <QIcon>

class CFileIcons : public QAbstractFileIconProvider {
public:
    static constexpr int kSize = 28;

    CFileIcons();

    QIcon icon(IconType type) const override;
    QIcon icon(const QFileInfo& info) const override;

private:
    static QIcon DrawFolder();
    static QIcon DrawFile();

    QIcon folder;
    QIcon file;
};
