#include "Common/Toolkit/FileSystemBrowser.h"

#include <QDir>
#include <QFileSystemModel>
#include <QHeaderView>
#include <QLabel>
#include <QStorageInfo>
#include <QTreeView>
#include <memory>

#include "Common/Toolkit/FileIcons.h"
#include "Common/Toolkit/FontCreator.h"
#include "Common/Toolkit/MessageBoxEx.h"
#include "Common/Toolkit/SubmenuDialog.h"
#include "Common/Toolkit/TextMenuKey.h"
#include "Common/Toolkit/VirtualKeys.h"
#include "Common/Utilities/LanguageResources.h"
#include "Platform/FatalError.h"
#include "Platform/ModulePath.h"

namespace {
constexpr const wchar_t* kNoFiles = L"No files";
constexpr const char* kDataFolderName = "data";
// Where removable disks are mounted on the instrument (and by desktop automounters).
constexpr const char* kRemovableMountPoints[] = {"/media/", "/run/media/", "/mnt/"};

QString Text(UINT id) {
    std::wstring text;
    const bool loaded = LoadResourceString(id, text);
    OPM_ASSERT(loaded && "File browser text missing from the language pack");
    return QString::fromStdWString(text);
}

constexpr const char* kTreeStyle = R"(
QTreeView { font-weight: bold; }
QTreeView::item { min-height: 36px; color: #000000; }
QTreeView::item:selected { background: #0a2f6b; color: #ffffff; }
QTreeView::item:focus { background: #ffcc00; color: #000000; }
QTreeView::item:selected:focus { background: #0a2f6b; color: #ffcc00; }
)";
}  // namespace

CFileSystemBrowser::CFileSystemBrowser(UINT templateId, QWidget* parent)
    : CBaseDialog(templateId, parent), locationSource(&CFileSystemBrowser::DefaultLocations) {}

CFileSystemBrowser::~CFileSystemBrowser() = default;

QString CFileSystemBrowser::DataFolder() {
    const QString folder =
        QString::fromStdString(platform::ApplicationDirectory()) + QLatin1String(kDataFolderName);
    QDir().mkpath(folder);
    return folder;
}

std::vector<CFileSystemBrowser::Location> CFileSystemBrowser::DefaultLocations() {
    std::vector<Location> found{{Text(IDS_DATA_FOLDER), DataFolder()}};
    for (const QStorageInfo& volume : QStorageInfo::mountedVolumes()) {
        if (!volume.isValid() || !volume.isReady()) continue;
        const QString mountPoint = volume.rootPath() + QLatin1Char('/');
        for (const char* prefix : kRemovableMountPoints) {
            if (!mountPoint.startsWith(QLatin1String(prefix))) continue;
            const QString name =
                volume.name().isEmpty() ? QDir(volume.rootPath()).dirName() : volume.name();
            found.push_back({Text(IDS_REMOVABLE_DISK).arg(name), volume.rootPath()});
            break;
        }
    }
    return found;
}

bool CFileSystemBrowser::OnInitDialog() {
    const bool result = CBaseDialog::OnInitDialog();
    tree = qobject_cast<QTreeView*>(GetDlgItem(IDC_TREE));
    OPM_ASSERT(tree && "The file browser's template lacks its tree");
    if (auto* title = qobject_cast<QLabel*>(GetDlgItem(IDC_TITLE))) titleText = title->text();

    model = new QFileSystemModel(this);
    model->setReadOnly(true);
    model->setFilter(QDir::AllDirs | QDir::Files | QDir::NoDotAndDotDot);
    model->setIconProvider(&icons);
    tree->setModel(model);
    for (int column = 1; column < model->columnCount(); ++column) tree->hideColumn(column);
    tree->setHeaderHidden(true);
    tree->setSelectionMode(QAbstractItemView::MultiSelection);
    tree->setStyleSheet(QString::fromLatin1(kTreeStyle));
    QFont treeFont;
    FontCreator::CreateCommonFont(treeFont, 16, 700);
    tree->setFont(treeFont);
    tree->setIconSize(QSize(CFileIcons::kSize, CFileIcons::kSize));
    tree->setIndentation(28);
    connect(tree->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex& current) { OnCurrentChanged(PathOf(current)); });
    // A folder is read in the background: a path asked for before it was
    // read is made current once it is there.
    connect(model, &QFileSystemModel::directoryLoaded, this, [this](const QString&) {
        if (!pendingPath.isEmpty()) SelectPath(pendingPath);
        if (!tree->currentIndex().isValid() && model->rowCount(tree->rootIndex()) > 0)
            MakeCurrent(model->index(0, 0, tree->rootIndex()));
    });

    OnMenuCommand(ID_STORAGE, [this] { OnStorage(); });
    OnMenuCommand(ID_SEND, [this] { OnSend(); });
    OnMenuCommand(ID_CLOSE, [this] { EndDialog(IDCANCEL); });

    locations = locationSource();
    ShowLocation(0);
    tree->setFocus();
    return result;
}

CMenuKey* CFileSystemBrowser::CreateTextKey(UINT commandId, UINT captionId) {
    if (keyFont.resolveMask() == 0) FontCreator::CreateCommonFont(keyFont, 16, 700);
    return GetMenuCtrl().AddKey(
        std::make_unique<CTextMenuKey>(commandId, Text(captionId), &keyFont));
}

CMenuKey* CFileSystemBrowser::StorageKey() {
    if (storageKey == nullptr) storageKey = CreateTextKey(ID_STORAGE, IDS_STORAGE);
    return storageKey;
}

CMenuKey* CFileSystemBrowser::SendKey() {
    if (sendKey == nullptr) sendKey = CreateTextKey(ID_SEND, IDS_SEND);
    return sendKey;
}

CMenuKey* CFileSystemBrowser::CloseKey() {
    if (closeKey == nullptr) closeKey = CreateTextKey(ID_CLOSE, IDS_CLOSE);
    return closeKey;
}

std::vector<CMenuKey*> CFileSystemBrowser::GetMenuKeys() {
    return {StorageKey(), SendKey(), nullptr, CloseKey()};
}

void CFileSystemBrowser::ShowLocation(size_t index) {
    if (index >= locations.size() || tree == nullptr) return;
    currentLocation = index;
    const QString& root = locations[index].path;
    tree->clearSelection();
    tree->setRootIndex(model->setRootPath(root));
    MakeCurrent(QModelIndex());
    if (model->rowCount(tree->rootIndex()) > 0) MakeCurrent(model->index(0, 0, tree->rootIndex()));
    ShowTitle();
}

void CFileSystemBrowser::ShowTitle() {
    if (currentLocation >= locations.size()) return;
    SetDlgItemText(IDC_TITLE, titleText.isEmpty() ? locations[currentLocation].label
                                                  : titleText + QStringLiteral(": ") +
                                                        locations[currentLocation].label);
}

bool CFileSystemBrowser::SelectPath(const QString& path) {
    if (tree == nullptr || path.isEmpty()) return false;
    const QString wanted = QDir::cleanPath(path);
    for (size_t i = 0; i < locations.size(); ++i) {
        const QString root = QDir::cleanPath(locations[i].path);
        if (wanted != root && !wanted.startsWith(root + QLatin1Char('/'))) continue;
        if (i != currentLocation) ShowLocation(i);
        const QModelIndex found = model->index(wanted);
        if (!found.isValid()) {
            pendingPath = path;
            return false;
        }
        pendingPath.clear();
        for (QModelIndex up = found.parent(); up.isValid() && up != tree->rootIndex();
             up = up.parent())
            tree->expand(up);
        MakeCurrent(found);
        tree->scrollTo(found);
        return true;
    }
    return false;
}

// Moving the current item never marks or unmarks a file: only Space and a
// tap do.
void CFileSystemBrowser::MakeCurrent(const QModelIndex& index) {
    tree->selectionModel()->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
}

QString CFileSystemBrowser::PathOf(const QModelIndex& index) const {
    return index.isValid() ? QDir::cleanPath(model->filePath(index)) : QString();
}

QString CFileSystemBrowser::CurrentPath() const {
    return tree != nullptr ? PathOf(tree->currentIndex()) : QString();
}

QString CFileSystemBrowser::CurrentDirectory() const {
    if (tree == nullptr) return {};
    const QModelIndex current = tree->currentIndex();
    if (!current.isValid())
        return currentLocation < locations.size() ? locations[currentLocation].path : QString();
    return QDir::cleanPath(model->isDir(current) ? model->filePath(current)
                                                 : model->fileInfo(current).path());
}

std::vector<QString> CFileSystemBrowser::SelectedFiles() const {
    std::vector<QString> files;
    if (tree == nullptr) return files;
    for (const QModelIndex& index : tree->selectionModel()->selectedRows())
        if (!model->isDir(index)) files.push_back(PathOf(index));
    const QModelIndex current = tree->currentIndex();
    if (files.empty() && current.isValid() && !model->isDir(current))
        files.push_back(PathOf(current));
    return files;
}

bool CFileSystemBrowser::OnEnterPressed() {
    const QModelIndex current = tree->currentIndex();
    if (!current.isValid()) return true;
    if (model->isDir(current))
        tree->setExpanded(current, !tree->isExpanded(current));
    else
        OnFileActivated(PathOf(current));
    return true;
}

bool CFileSystemBrowser::OnSpacePressed() {
    const QModelIndex current = tree->currentIndex();
    if (current.isValid() && !model->isDir(current))
        tree->selectionModel()->select(current,
                                       QItemSelectionModel::Toggle | QItemSelectionModel::Rows);
    return true;
}

bool CFileSystemBrowser::OnEscapePressed() {
    EndDialog(IDCANCEL);
    return true;
}

void CFileSystemBrowser::OnStorage() {
    locations = locationSource();
    if (locations.empty()) return;
    // The column closes again on the function key of the slot that opened it.
    UINT openingKey = VK_F1;
    for (unsigned slot = 0; slot < CMenuCtrl::keysNum; ++slot)
        if (GetMenuCtrl().GetCurrentKey(slot) == StorageKey()) openingKey = VK_F1 + slot;
    CSubmenuDialog menu(StorageKey(), openingKey, this);
    for (size_t i = 0; i < locations.size(); ++i)
        menu.AddKey(static_cast<UINT>(i), locations[i].label);
    menu.SetCurrentKey(std::min(currentLocation, locations.size() - 1));
    if (menu.Show() == IDOK) ShowLocation(menu.GetSelectedId());
}

void CFileSystemBrowser::OnSend() {
    const std::vector<QString> files = SelectedFiles();
    if (files.empty()) {
        CMessageBoxEx box(kNoFiles, L"!", 0, this);
        box.DoModal();
        return;
    }
    OnSendFiles(files);
}
