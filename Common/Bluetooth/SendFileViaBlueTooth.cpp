#include "Common/Bluetooth/SendFileViaBlueTooth.h"

#include <QApplication>
#include <QCoreApplication>
#include <QFile>
#include <QListWidget>
#include <QSignalBlocker>
#include <array>
#include <cwchar>
#include <cwctype>

#include "Common/Settings/AppConfig.h"
#include "Common/Toolkit/FontCreator.h"
#include "Common/Toolkit/MessageBoxEx.h"
#include "Common/Toolkit/ProcessingDialog.h"
#include "Common/Toolkit/TextMenuKey.h"
#include "Common/Utilities/LanguageResources.h"
#include "Platform/DebugOutput.h"
#include "Platform/FatalError.h"
#include "Platform/Registry.h"

namespace {
// The system's own texts, the same in every language.
constexpr const wchar_t* kErrorTitle = L"!";
constexpr const wchar_t* kNoComText = L"Error CoInitializeEx";
constexpr const wchar_t* kNoObexText = L"Error getting IObex object";
constexpr const wchar_t* kNotReadyText = L"Device not present or not ready";
constexpr const wchar_t* kNothingSelectedText = L"Nothing Selected";
constexpr const wchar_t* kRemoteNotReadyText = L"Remote Device not ready";
constexpr const wchar_t* kConnectText =
    L"Error getting Connect -- perhaps the server doesnt allow them";
constexpr const wchar_t* kPutText =
    L"Error getting Sending PUT -- perhaps the server doesnt allow them";
constexpr const wchar_t* kWriteFailedText =
    L"Write Failed -- could the server be in read-only mode?";
constexpr const wchar_t* kUnknownPortText = L"Unknown port type!";

// Device properties and the settings the last device is kept in. Each
// setting has a companion "<setting>Type" holding "REG_SZ" (text) or
// "REG_DWORD" (a 32-bit integer, stored as decimal text).
constexpr const wchar_t* kName = L"Name";
constexpr const wchar_t* kTransport = L"Transport";
constexpr const wchar_t* kAddress = L"Address";
constexpr const wchar_t* kPort = L"Port";
constexpr const wchar_t* kServiceUuid = L"ServiceUUID";
constexpr const wchar_t* kTypeSuffix = L"Type";
constexpr const wchar_t* kTextType = L"REG_SZ";
constexpr const wchar_t* kNumberType = L"REG_DWORD";
struct RememberedProperty {
    const wchar_t* property;
    const wchar_t* setting;
};
constexpr RememberedProperty kRemembered[] = {{kAddress, L"LastRemoteDeviceAddress"},
                                              {kName, L"LastRemoteDeviceName"},
                                              {kPort, L"LastRemoteDevicePort"},
                                              {kTransport, L"LastRemoteDeviceTransport"},
                                              {kServiceUuid, L"LastRemoteDeviceUUID"}};
// What a device is rebuilt from at open.
constexpr size_t kRestored[] = {0, 1, 3};

constexpr size_t kMaxPath = 260;
constexpr size_t kUuidLength = 38;
constexpr int kListFontHeight = 14;
constexpr int kListFontWeight = 400;

constexpr const char* kListStyle = R"(
QListWidget { color: #000000; background: #ffffff; }
QListWidget::item { min-height: 40px; }
QListWidget::item:selected { background: #0a2f6b; color: #ffffff; }
)";

QString Text(UINT id) {
    std::wstring text;
    const bool loaded = LoadResourceString(id, text);
    OPM_ASSERT(loaded && "Bluetooth sender text missing from the language pack");
    return QString::fromStdWString(text);
}

// "{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}", as a class identifier is written.
bool IsClassId(const std::wstring& text) {
    if (text.size() != kUuidLength || text.front() != L'{' || text.back() != L'}') return false;
    for (size_t i = 1; i + 1 < text.size(); ++i) {
        const bool dash = i == 9 || i == 14 || i == 19 || i == 24;
        if (dash ? text[i] != L'-' : !std::iswxdigit(text[i])) return false;
    }
    return true;
}

bool SameUuid(const std::wstring& entry, const wchar_t* uuid) {
    if (entry.size() < kUuidLength) return false;
    for (size_t i = 0; i < kUuidLength; ++i)
        if (std::towlower(entry[i]) != std::towlower(uuid[i])) return false;
    return true;
}

struct Services {
    bool objectPush = false;
    bool fileTransfer = false;
};

Services ScanServices(const std::wstring& list) {
    Services found;
    for (size_t start = 0; start <= list.size();) {
        size_t end = list.find(L';', start);
        if (end == std::wstring::npos) end = list.size();
        const std::wstring entry = list.substr(start, end - start);
        found.objectPush = found.objectPush || SameUuid(entry, obex::kObjectPushUuid);
        found.fileTransfer = found.fileTransfer || SameUuid(entry, obex::kFileTransferUuid);
        start = end + 1;
    }
    return found;
}

// The entry's text; none when the device is not to be listed. A device that
// changed keeps its entry whatever services it now names.
std::optional<QString> Label(const obex::PropertyBag& device, const std::wstring& name,
                             bool arrived) {
    const QString shown = QString::fromStdWString(name);
    if (const auto uuids = device.Text(kServiceUuid)) {
        const Services services = ScanServices(*uuids);
        if (arrived && !services.objectPush && !services.fileTransfer) return std::nullopt;
        return QStringLiteral("%1 <Ready:%2>").arg(shown, services.objectPush ? "YES" : "NO");
    }
    const auto port = device.Read(kPort);
    if (!port) return shown + QStringLiteral(":<unk>");
    if (const auto* text = std::get_if<std::wstring>(&*port))
        return shown + ':' + QString::fromStdWString(*text);
    if (const auto* number = std::get_if<std::int32_t>(&*port))
        return shown + ':' + QString::number(*number);
    return QString::fromWCharArray(kUnknownPortText);
}

// The Name header: what follows the last separator, or the whole path.
std::wstring BaseName(const std::wstring& path) {
    const size_t cut = path.find_last_of(L"/\\");
    if (cut == std::wstring::npos || cut + 1 == path.size()) return path;
    return path.substr(cut + 1);
}

void ShowBox(const std::wstring& text, QWidget* parent) {
    CMessageBoxEx box(text, kErrorTitle, 0, parent);
    box.SetKind(CMessageBoxEx::Kind::Error);
    box.DoModal();
}
}  // namespace

void CObexSink::Notify(int event, const obex::PropertyBagPtr& device) {
    if (!device) return;
    auto* reference = new obex::PropertyBagPtr(device);
    if (!PostMessageW(owner, kEventMessage, static_cast<WPARAM>(event),
                      reinterpret_cast<LPARAM>(reference)))
        delete reference;
}

CSendFileViaBlueTooth::CSendFileViaBlueTooth(CAppConfig& settings, QWidget* parent)
    : CBaseDialog(IDD, parent), settings(settings) {
    FontCreator::CreateCommonFont(listFont, kListFontHeight, kListFontWeight);
    FontCreator::CreateCommonFont(keyFont, 16, 700);
}

CSendFileViaBlueTooth::~CSendFileViaBlueTooth() {
    OnDestroy();
}

void CSendFileViaBlueTooth::OnDestroy() {
    closing = true;
    StopDiscovery();
    boundDevice.reset();
    obex.reset();
}

bool CSendFileViaBlueTooth::CheckBluetoothReady(QWidget* parent) {
    int state = obex::kStateUnknown;
    const std::unique_ptr<obex::Service> service = obex::CreateService();
    // Only a state that was read can tell that the hardware is not there.
    const bool ready = !service || service->HardwareStatus(&state) != ERROR_SUCCESS ||
                       (state != obex::kStateNotPresent && state != obex::kStateShutDown &&
                        state != obex::kStateError);
    if (!ready) ShowBox(kNotReadyText, parent);
    return ready;
}

bool CSendFileViaBlueTooth::OnInitDialog() {
    const bool result = CBaseDialog::OnInitDialog();
    deviceList = qobject_cast<QListWidget*>(GetDlgItem(IDC_DEVICE_LIST));
    OPM_ASSERT(deviceList && "The Bluetooth sender's template lacks its device list");
    deviceList->setFont(listFont);
    deviceList->setStyleSheet(QString::fromLatin1(kListStyle));
    deviceList->setFocus();
    connect(deviceList, &QListWidget::currentRowChanged, this,
            [this](int row) { OnSelectionChanged(row); });
    idleHint = GetDlgItemText(IDC_HINT);
    OnMenuCommand(ID_SEARCH, [this] { OnSearch(); });
    OnMenuCommand(ID_SEND, [this] { OnSend(); });
    OnMenuCommand(ID_CLOSE, [this] { EndDialog(IDCANCEL); });
    RefreshKeys();

    obex = obex::CreateService();
    if (!obex) {
        ShowError(kNoComText);
        return result;
    }
    if (!obex->Initialize()) {
        obex.reset();
        ShowError(kNoObexText);
        return result;
    }
    ListLastDevice();
    return result;
}

std::vector<CMenuKey*> CSendFileViaBlueTooth::GetMenuKeys() {
    const auto key = [this](UINT command, UINT caption) {
        return GetMenuCtrl().AddKey(
            std::make_unique<CTextMenuKey>(command, Text(caption), &keyFont));
    };
    searchKey = key(ID_SEARCH, IDS_SEARCH);
    sendKey = key(ID_SEND, IDS_SEND);
    closeKey = key(ID_CLOSE, IDS_CLOSE);
    return {searchKey, sendKey, nullptr, closeKey};
}

bool CSendFileViaBlueTooth::OnEscapePressed() {
    EndDialog(IDCANCEL);
    return true;
}

void CSendFileViaBlueTooth::ListLastDevice() {
    auto device = std::make_shared<obex::PropertyBag>();
    for (const size_t index : kRestored) {
        const RememberedProperty& remembered = kRemembered[index];
        std::wstring value;
        std::wstring type;
        if (!settings.GetRegKeyValue(settings.KeyPath(), remembered.setting, value)) return;
        settings.GetRegKeyValue(settings.KeyPath(), std::wstring(remembered.setting) + kTypeSuffix,
                                type);
        if (type == kNumberType)
            device->Write(remembered.property,
                          static_cast<std::int32_t>(std::wcstol(value.c_str(), nullptr, 10)));
        else
            device->Write(remembered.property, value);
    }
    lastDevice = device;
    OnObexEvent(obex::kDeviceArrived, device);
    // Ready to send to at once.
    if (RowOf(device.get()) >= 0) deviceList->setCurrentRow(RowOf(device.get()));
}

void CSendFileViaBlueTooth::RememberDevice(const obex::PropertyBag& device) {
    const auto SetRegKeyValue = [this](const std::wstring& key, const std::wstring& valueName,
                                       const std::wstring& text) {
        return settings.SetRegKeyValue(key, valueName, text);
    };
    const std::wstring& applicationSpecicKey = settings.KeyPath();
    for (const RememberedProperty& remembered : kRemembered) {
        const auto value = device.Read(remembered.property);
        if (!value) continue;
        const auto* number = std::get_if<std::int32_t>(&*value);
        const auto* text = std::get_if<std::wstring>(&*value);
        if (number == nullptr && text == nullptr) continue;
        std::wstring tempKey = std::wstring(remembered.setting) + kTypeSuffix;
        const std::wstring strType = number != nullptr ? kNumberType : kTextType;
        OPM_ASSERT(SetRegKeyValue(applicationSpecicKey, tempKey, strType));
        tempKey = remembered.setting;
        const std::wstring strVal = number != nullptr ? std::to_wstring(*number) : *text;
        OPM_ASSERT(SetRegKeyValue(applicationSpecicKey, tempKey, strVal));
    }
    // The device must survive a power cut as much as any other setting.
    RegFlushKey(HKEY_LOCAL_MACHINE);
}

bool CSendFileViaBlueTooth::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != CObexSink::kEventMessage) return CBaseDialog::OnMessage(message, wParam, lParam);
    const std::unique_ptr<obex::PropertyBagPtr> device(
        reinterpret_cast<obex::PropertyBagPtr*>(lParam));
    if (!closing && device && *device) OnObexEvent(static_cast<int>(wParam), *device);
    return true;
}

void CSendFileViaBlueTooth::OnObexEvent(int event, const obex::PropertyBagPtr& propertyBag) {
    const auto name = propertyBag->Text(kName);
    const auto transport = propertyBag->Text(kTransport);
    if (!name || !transport || !IsClassId(*transport)) return;
    if (event == obex::kDeviceArrived) {
        const auto label = Label(*propertyBag, *name, true);
        if (!label) return;
        auto* item = new QListWidgetItem(*label);
        item->setData(Qt::UserRole, QVariant::fromValue(quintptr(propertyBag.get())));
        devices.push_front(propertyBag);
        deviceList->addItem(item);
        TraceEntry(deviceList->count() - 1);
    } else if (event == obex::kDeviceChanged && propertyBag->Read(kAddress)) {
        const int row = RowOf(propertyBag.get());
        if (row < 0) return;
        const int current = deviceList->currentRow();
        // Replaced in place: the entry keeps its position and its selection.
        const QSignalBlocker quiet(deviceList);
        delete deviceList->takeItem(row);
        auto* item = new QListWidgetItem(*Label(*propertyBag, *name, false));
        item->setData(Qt::UserRole, QVariant::fromValue(quintptr(propertyBag.get())));
        deviceList->insertItem(row, item);
        deviceList->setCurrentRow(current);
        TraceEntry(row);
    }
}

// What the list shows, for a run driven from outside (OPM_TRACE).
void CSendFileViaBlueTooth::TraceEntry(int row) const {
    platform::Trace(QStringLiteral("listed %1/%2: %3 %4")
                        .arg(IDD)
                        .arg(IDC_DEVICE_LIST)
                        .arg(row)
                        .arg(deviceList->item(row)->text())
                        .toStdWString());
}

int CSendFileViaBlueTooth::RowOf(const obex::PropertyBag* device) const {
    for (int row = 0; row < deviceList->count(); ++row)
        if (deviceList->item(row)->data(Qt::UserRole).value<quintptr>() == quintptr(device))
            return row;
    return -1;
}

obex::PropertyBagPtr CSendFileViaBlueTooth::DeviceAt(int row) const {
    const QListWidgetItem* item = deviceList->item(row);
    if (item == nullptr) return nullptr;
    const auto wanted = item->data(Qt::UserRole).value<quintptr>();
    for (const obex::PropertyBagPtr& device : devices)
        if (quintptr(device.get()) == wanted) return device;
    return nullptr;
}

// The device used last may be sent to straight away, without a search.
void CSendFileViaBlueTooth::OnSelectionChanged(int row) {
    if (row < 0) return;
    if (!discovering && (!lastDevice || DeviceAt(row) != lastDevice)) return;
    sendAllowed = true;
    RefreshKeys();
}

void CSendFileViaBlueTooth::RefreshKeys() {
    sendKey->setEnabled(sendAllowed);
    SetDlgItemText(IDC_HINT, discovering ? Text(IDS_SEARCHING) : idleHint);
}

void CSendFileViaBlueTooth::StopDiscovery() {
    if (discovering && obex) {
        obex->Unadvise();
        obex->StopDeviceEnum();
    }
    discovering = false;
    // Events posted before the sink was let go still own their references.
    QCoreApplication::sendPostedEvents(this, static_cast<int>(CObexSink::kEventMessage));
}

void CSendFileViaBlueTooth::ForgetDevices() {
    deviceList->clear();
    devices.clear();
    lastDevice.reset();
}

void CSendFileViaBlueTooth::OnSearch() {
    if (!CheckBluetoothReady(this)) return;
    if (discovering) {
        StopDiscovery();
        sink.reset();
        ForgetDevices();
        obex = obex::CreateService();
        if (!obex || !obex->Initialize()) {
            obex.reset();
            RefreshKeys();
            return ShowError(kNoObexText);
        }
    }
    deviceList->clear();
    boundDevice.reset();

    sink = std::make_shared<CObexSink>(WindowHandleOf(this));
    discovering = true;
    sendAllowed = false;
    RefreshKeys();
    if (!obex || !obex->Advise(sink)) {
        discovering = false;
        return RefreshKeys();
    }
    if (!obex->StartDeviceEnum()) ShowError(kNoObexText);
}

void CSendFileViaBlueTooth::OnSend() {
    if (!sendAllowed) return;
    const int selected = deviceList->currentRow();
    const int count = deviceList->count();
    QWidget* foreground = QApplication::activeWindow();
    CProcessingDialog processing(foreground != nullptr ? foreground : this);
    processing.Create();
    if (selected < 0 || selected >= count) {
        processing.Close();
        return ShowError(kNothingSelectedText);
    }
    StopDiscovery();
    RefreshKeys();

    const obex::PropertyBagPtr device = DeviceAt(selected);
    boundDevice = obex && device ? obex->BindToDevice(device) : nullptr;
    if (!boundDevice) {
        processing.Close();
        return ShowError(kRemoteNotReadyText);
    }
    RememberDevice(*device);

    if (filePaths.empty()) {
        SendFile(filePath, true);
    } else {
        for (const std::wstring& path : filePaths)
            if (!SendFile(path, true)) break;
    }
    boundDevice->EndExchange(obex::HeaderCollection{});
    processing.Close();
}

bool CSendFileViaBlueTooth::SendFile(const std::wstring& path, bool connectFirst) {
    const std::wstring copied = path.substr(0, kMaxPath);
    QFile file(QString::fromStdWString(copied));
    if (!file.open(QIODevice::ReadOnly)) {
        ShowError(copied);
        return false;
    }
    const obex::HeaderCollection headers{BaseName(copied), static_cast<std::uint32_t>(file.size())};
    std::unique_ptr<obex::PutStream> stream;
    if (boundDevice && (!connectFirst || boundDevice->Connect(headers)))
        stream = boundDevice->Put(headers);
    if (!stream) {
        // The PUT never started either, and both are said, in this order.
        ShowError(kConnectText);
        ShowError(kPutText);
        return true;
    }

    std::array<std::uint8_t, kChunkSize> chunk{};
    bool sent = true;
    for (;;) {
        const qint64 read = file.read(reinterpret_cast<char*>(chunk.data()), kChunkSize);
        if (read < 0 || (read > 0 && !stream->Write(chunk.data(), static_cast<size_t>(read)))) {
            sent = false;
            break;
        }
        if (read < static_cast<qint64>(kChunkSize)) break;
    }
    if (sent) sent = stream->Commit();
    if (!sent) ShowError(kWriteFailedText);
    return true;
}

void CSendFileViaBlueTooth::ShowError(const std::wstring& text) {
    ShowBox(text, this);
}
