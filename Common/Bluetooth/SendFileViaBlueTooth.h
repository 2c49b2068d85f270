#pragma once
// The Bluetooth sender (template 397): searches for devices that take OBEX
// pushes, lists them as they are found, and sends the given file (or files)
// to the one the user picks with PUT in 5000-byte chunks. The device used
// last is remembered in the settings store and listed as soon as the screen
// opens, ready to be sent to without a search. F1 searches, F2 sends, F4 (or
// Escape) closes. Device events come from the OBEX service's own thread as
// window message 2025; everything else runs on the user-interface thread.

#include <QFont>
#include <forward_list>
#include <memory>
#include <string>
#include <vector>

#include "Common/Bluetooth/ObexService.h"
#include "Common/Toolkit/BaseDialog.h"

class CAppConfig;
class CMenuKey;
class QListWidget;

// Receives the service's device events on any thread and hands each to the
// owner window as message 2025: the event in wParam, in lParam a heap
// `obex::PropertyBagPtr*` (a counted reference of its own) that the handler
// deletes. It touches nothing of the dialog.
class CObexSink : public obex::Sink {
public:
    static constexpr UINT kEventMessage = 2025;

    explicit CObexSink(HWND owner) : owner(owner) {}
    void Notify(int event, const obex::PropertyBagPtr& device) override;

private:
    const HWND owner;
};

class CSendFileViaBlueTooth : public CBaseDialog {
    Q_OBJECT
public:
    static constexpr UINT IDD = 397;
    static constexpr int IDC_TITLE = 1010;
    static constexpr int IDC_DEVICE_LIST = 1601;
    static constexpr int IDC_HINT = 1602;
    static constexpr int IDC_CAPTION = 1603;
    static constexpr UINT ID_SEARCH = 1611;
    static constexpr UINT ID_SEND = 1612;
    static constexpr UINT ID_CLOSE = 1613;
    static constexpr UINT IDS_SEARCH = 61430;
    static constexpr UINT IDS_SEND = 61431;
    static constexpr UINT IDS_CLOSE = 61432;
    static constexpr UINT IDS_SEARCHING = 61433;
    static constexpr size_t kChunkSize = 5000;

    // The last device is read from and written to `settings`.
    explicit CSendFileViaBlueTooth(CAppConfig& settings, QWidget* parent = nullptr);
    ~CSendFileViaBlueTooth() override;

    // Whether the stack's hardware can be used now; when not, says so in a
    // box over `parent`. The file dialog asks before it opens the sender.
    static bool CheckBluetoothReady(QWidget* parent);

    // The single file to send, and the files that, when given, are sent
    // instead, in order.
    std::wstring filePath;
    std::vector<std::wstring> filePaths;

    QListWidget* DeviceList() const { return deviceList; }
    bool Discovering() const { return discovering; }
    bool SendAllowed() const { return sendAllowed; }

    // The commands of the soft keys.
    void OnSearch();
    void OnSend();
    // Sends one file to the bound device; false only when it can't be opened.
    bool SendFile(const std::wstring& path, bool connectFirst);

protected:
    bool OnInitDialog() override;
    void OnDestroy() override;
    std::vector<CMenuKey*> GetMenuKeys() override;
    bool OnEscapePressed() override;
    bool OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    void OnObexEvent(int event, const obex::PropertyBagPtr& propertyBag);

private:
    void ListLastDevice();
    void RememberDevice(const obex::PropertyBag& device);
    void OnSelectionChanged(int row);
    // Ends the search: no more events, none left waiting in the queue.
    void StopDiscovery();
    void ForgetDevices();
    obex::PropertyBagPtr DeviceAt(int row) const;
    int RowOf(const obex::PropertyBag* device) const;
    void TraceEntry(int row) const;
    void RefreshKeys();
    void ShowError(const std::wstring& text);

    CAppConfig& settings;
    QListWidget* deviceList = nullptr;
    // Newest first; keeps the bags the list's entries point at alive.
    std::forward_list<obex::PropertyBagPtr> devices;
    std::unique_ptr<obex::Service> obex;
    std::shared_ptr<CObexSink> sink;
    std::unique_ptr<obex::Device> boundDevice;
    // The device read back from the settings store at open.
    obex::PropertyBagPtr lastDevice;
    bool discovering = false;
    bool sendAllowed = false;
    bool closing = false;
    QFont listFont;
    QFont keyFont;
    CMenuKey* searchKey = nullptr;
    CMenuKey* sendKey = nullptr;
    CMenuKey* closeKey = nullptr;
    QString idleHint;
};
