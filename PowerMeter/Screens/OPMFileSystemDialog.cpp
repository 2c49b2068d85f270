#include "PowerMeter/Screens/OPMFileSystemDialog.h"

#include <QFileInfo>
#include <QLabel>
#include <boost/property_tree/exceptions.hpp>

#include "Common/Bluetooth/SendFileViaBlueTooth.h"
#include "Common/Settings/AppConfig.h"
#include "Common/Toolkit/FontCreator.h"
#include "Common/Toolkit/MessageBoxEx.h"
#include "Common/Toolkit/SubmenuDialog.h"
#include "Common/Toolkit/VirtualKeys.h"
#include "Common/Utilities/LanguageResources.h"
#include "PowerMeter/PowerMeter.h"
#include "PowerMeter/Results/OPMDocument.h"
#include "PowerMeter/Results/ResultFile.h"

namespace {
// The system's own texts.
constexpr const wchar_t* kPreviewError = L"Error to load file";
constexpr const wchar_t* kNoFiles = L"No files";
constexpr const wchar_t* kErrorTitle = L"Error";

// The slot of the column with Storage and Send.
constexpr unsigned kMoreSlot = 2;

// Fourteen lines (two dates, the count and twelve results) fill the box.
constexpr int kPreviewFontHeight = 12;
}  // namespace

COPMFileSystemDialog::COPMFileSystemDialog(QWidget* parent) : CFileSystemBrowser(IDD, parent) {
    FontCreator::CreateCommonFont(previewFont, kPreviewFontHeight, 700);
}

COPMFileSystemDialog::~COPMFileSystemDialog() = default;

bool COPMFileSystemDialog::OnInitDialog() {
    const bool result = CFileSystemBrowser::OnInitDialog();
    if (QWidget* preview = GetDlgItem(IDC_PREVIEW)) preview->setFont(previewFont);
    OnMenuCommand(ID_SAVE, [this] { Save(); });
    OnMenuCommand(ID_OPEN, [this] { Open(CurrentPath()); });
    OnMenuCommand(ID_MORE, [this] { OnMore(); });
    SelectLastSaved();
    return result;
}

std::vector<CMenuKey*> COPMFileSystemDialog::GetMenuKeys() {
    moreKey = CreateTextKey(ID_MORE, IDS_MORE);
    return {CreateTextKey(ID_SAVE, IDS_SAVE), CreateTextKey(ID_OPEN, IDS_OPEN), moreKey,
            CloseKey()};
}

// The chosen command runs as the browser's own key in the column's slot, so
// that the storage column opens from where this one did.
void COPMFileSystemDialog::OnMore() {
    CSubmenuDialog column(moreKey, VK_F1 + kMoreSlot, this);
    column.AddKey(ID_STORAGE, ResourceString(IDS_STORAGE));
    column.AddKey(ID_SEND, ResourceString(IDS_SEND));
    if (column.Show() != IDOK) return;
    CMenuKey* chosen = column.GetSelectedId() == ID_SEND ? SendKey() : StorageKey();
    GetMenuCtrl().ReplaceKey(moreKey, chosen);
    GetMenuCtrl().PressKey(kMoreSlot);
    GetMenuCtrl().ReplaceKey(chosen, moreKey);
}

void COPMFileSystemDialog::OnSendFiles(const std::vector<QString>& files) {
    if (!CSendFileViaBlueTooth::CheckBluetoothReady(this)) return;
    CSendFileViaBlueTooth sender(AppConfig(), this);
    if (files.size() == 1) {
        sender.filePath = files.front().toStdWString();
    } else {
        for (const QString& file : files) sender.filePaths.push_back(file.toStdWString());
    }
    sender.DoModal();
}

// The saved file, or its folder when the file has gone; a place that is no
// longer there leaves the data folder shown.
void COPMFileSystemDialog::SelectLastSaved() {
    const QFileInfo last(QString::fromStdWString(AppConfig().GetString(LastSavedPathValue, L"")));
    if (last.filePath().isEmpty()) return;
    for (const QFileInfo& place : {last, QFileInfo(last.absolutePath())}) {
        if (place.exists()) {
            SelectPath(place.absoluteFilePath());
            return;
        }
    }
}

void COPMFileSystemDialog::OnCurrentChanged(const QString& /*path*/) {
    // A preview of the item left behind must not stand beside the new one.
    SetDlgItemText(IDC_PREVIEW, QString());
    SetTimer(kPreviewTimerId, kPreviewDelayMs);
}

void COPMFileSystemDialog::OnTimer(UINT timerId) {
    if (timerId != kPreviewTimerId) return CFileSystemBrowser::OnTimer(timerId);
    KillTimer(kPreviewTimerId);
    ShowPreview();
}

void COPMFileSystemDialog::ShowPreview() {
    const QString path = CurrentPath();
    if (!QFileInfo(path).isFile()) return SetDlgItemText(IDC_PREVIEW, QString());
    std::wstring text;
    SetDlgItemText(IDC_PREVIEW,
                   QString::fromStdWString(MakePreview(path, text) ? text : kPreviewError));
}

bool COPMFileSystemDialog::MakePreview(const QString& path, std::wstring& text) {
    return BuildPreview(path.toStdWString(), text);
}

void COPMFileSystemDialog::OnFileActivated(const QString& path) {
    Open(path);
}

void COPMFileSystemDialog::Save() {
    const QString directory = CurrentDirectory();
    if (directory.isEmpty()) return;
    COPMDocument& document = OPMDocument();
    try {
        if (!document.SaveAs(directory.toStdWString())) return;
    } catch (const boost::property_tree::ptree_error& error) {
        return ShowError(error.what());
    }
    SelectPath(QString::fromStdWString(document.GetDirectory() + L"/" + document.GetFileName()));
}

void COPMFileSystemDialog::Open(const QString& path) {
    if (!QFileInfo(path).isFile()) {
        CMessageBoxEx box(kNoFiles, L"!", 0, this);
        box.DoModal();
        return;
    }
    try {
        // The caller refreshes its views from the document it now holds.
        if (OPMDocument().Load(path.toStdWString())) EndDialog(IDOK);
    } catch (const boost::property_tree::ptree_error& error) {
        ShowError(error.what());
    }
}

void COPMFileSystemDialog::ShowError(const char* what) {
    CMessageBoxEx box(QString::fromUtf8(what).toStdWString(), kErrorTitle, 0, this);
    box.SetKind(CMessageBoxEx::Kind::Error);
    box.DoModal();
}
