#pragma once
// The toolkit's file screen: a tree of one storage location at a time (the
// instrument's data folder, or a removable disk), browsed with the arrows,
// Enter opening and closing folders and Space marking files. The Storage key
// switches the location, Send hands the marked files to the derived dialog,
// Close (or Escape) leaves. A derived dialog adds its own commands (save,
// open, preview) through the hooks and its own soft keys.

#include <QFont>
#include <QString>
#include <functional>
#include <vector>

#include "Common/Toolkit/BaseDialog.h"
#include "Common/Toolkit/FileIcons.h"

class QFileSystemModel;
class QModelIndex;
class QTreeView;

class CFileSystemBrowser : public CBaseDialog {
    Q_OBJECT
public:
    static constexpr UINT IDD = 354;
    static constexpr int IDC_TITLE = 1010;
    static constexpr int IDC_TREE = 1501;
    // Command ids of the browser's own soft keys.
    static constexpr UINT ID_STORAGE = 1551;
    static constexpr UINT ID_SEND = 1552;
    static constexpr UINT ID_CLOSE = 1553;
    // Captions of those keys and the names of the locations.
    static constexpr UINT IDS_STORAGE = 61370;
    static constexpr UINT IDS_SEND = 61371;
    static constexpr UINT IDS_CLOSE = 61372;
    static constexpr UINT IDS_DATA_FOLDER = 61373;
    static constexpr UINT IDS_REMOVABLE_DISK = 61374;

    struct Location {
        QString label;
        QString path;
    };
    using LocationSource = std::function<std::vector<Location>()>;

    explicit CFileSystemBrowser(UINT templateId = IDD, QWidget* parent = nullptr);
    ~CFileSystemBrowser() override;

    // The instrument's data folder (beside the program, made when missing).
    static QString DataFolder();
    // The data folder and every removable disk mounted now.
    static std::vector<Location> DefaultLocations();
    // Where the locations come from; asked again whenever Storage is pressed.
    void SetLocationSource(LocationSource source) { locationSource = std::move(source); }

    const std::vector<Location>& Locations() const { return locations; }
    size_t CurrentLocation() const { return currentLocation; }
    void ShowLocation(size_t index);
    // Shows the location holding `path` and makes it the current item.
    bool SelectPath(const QString& path);

    // The current item; empty when there is none.
    QString CurrentPath() const;
    // The current item when it is a folder, else the folder it lies in.
    QString CurrentDirectory() const;
    // The marked files, or the current item when it is a file and none is marked.
    std::vector<QString> SelectedFiles() const;

    QTreeView* Tree() const { return tree; }
    QFileSystemModel* Model() const { return model; }

protected:
    bool OnInitDialog() override;
    std::vector<CMenuKey*> GetMenuKeys() override;
    bool OnEnterPressed() override;
    bool OnSpacePressed() override;
    bool OnEscapePressed() override;

    // What a derived dialog adds: the current item changed; a file was
    // opened with Enter; the marked files are to be sent.
    virtual void OnCurrentChanged(const QString& /*path*/) {}
    virtual void OnFileActivated(const QString& /*path*/) {}
    virtual void OnSendFiles(const std::vector<QString>& /*files*/) {}

    // A text soft key with the caption of string resource `captionId`.
    CMenuKey* CreateTextKey(UINT commandId, UINT captionId);
    // The browser's own keys, for a derived dialog's GetMenuKeys.
    CMenuKey* StorageKey();
    CMenuKey* SendKey();
    CMenuKey* CloseKey();

private:
    void OnStorage();
    void OnSend();
    void ShowTitle();
    QString PathOf(const QModelIndex& index) const;
    void MakeCurrent(const QModelIndex& index);

    LocationSource locationSource;
    std::vector<Location> locations;
    size_t currentLocation = 0;
    QString titleText;
    QString pendingPath;
    QFont keyFont;
    CFileIcons icons;
    QFileSystemModel* model = nullptr;
    QTreeView* tree = nullptr;
    CMenuKey* storageKey = nullptr;
    CMenuKey* sendKey = nullptr;
    CMenuKey* closeKey = nullptr;
};
