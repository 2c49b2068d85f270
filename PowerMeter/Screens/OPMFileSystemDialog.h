#pragma once
// The result files (template 396): the toolkit's file browser with the
// document's save and open commands and, beside the tree, a preview of the
// current file. Save asks for a name and writes the results into the current
// folder; Open (or Enter on a file) loads the file and closes the dialog with
// IDOK so that the caller refreshes its views. F3 opens a column with the
// browser's Storage and Send; Send hands the marked files (or the current
// one) to the Bluetooth sender. It opens on the file saved last.

#include <QFont>
#include <QString>
#include <string>
#include <vector>

#include "Common/Toolkit/FileSystemBrowser.h"

class COPMFileSystemDialog : public CFileSystemBrowser {
    Q_OBJECT
public:
    static constexpr UINT IDD = 396;
    static constexpr int IDC_PREVIEW = 1502;
    static constexpr int IDC_PREVIEW_CAPTION = 1503;
    static constexpr UINT ID_SAVE = 1561;
    static constexpr UINT ID_OPEN = 1562;
    static constexpr UINT ID_MORE = 1563;
    static constexpr UINT IDS_SAVE = 61420;
    static constexpr UINT IDS_OPEN = 61421;
    static constexpr UINT IDS_MORE = 61422;
    // Not the screen's status timer 304.
    static constexpr UINT kPreviewTimerId = 305;
    // Long enough that holding an arrow through a folder reads no file.
    static constexpr UINT kPreviewDelayMs = 250;

    explicit COPMFileSystemDialog(QWidget* parent = nullptr);
    ~COPMFileSystemDialog() override;

protected:
    bool OnInitDialog() override;
    std::vector<CMenuKey*> GetMenuKeys() override;
    void OnTimer(UINT timerId) override;
    void OnCurrentChanged(const QString& path) override;
    void OnFileActivated(const QString& path) override;
    void OnSendFiles(const std::vector<QString>& files) override;

    // The preview text of the file; false when it can't be shown.
    virtual bool MakePreview(const QString& path, std::wstring& text);

private:
    void Save();
    void Open(const QString& path);
    void ShowPreview();
    void SelectLastSaved();
    void ShowError(const char* what);
    void OnMore();

    QFont previewFont;
    CMenuKey* moreKey = nullptr;
};
