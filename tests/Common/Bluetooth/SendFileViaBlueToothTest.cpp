// The Bluetooth sender against a scripted OBEX service.

#include <QLabel>
#include <QListWidget>
#include <thread>

#include "Common/Bluetooth/ScriptedObexService.h"
#include "Common/Bluetooth/SendFileViaBlueTooth.h"
#include "Common/Settings/AppConfig.h"
#include "Common/Toolkit/MessageBoxEx.h"
#include "Common/ToolkitTestSupport.h"
#include "Platform/Registry.h"
#include "Support/ScratchDirectory.h"
#include "support/Screenshot.h"

namespace {
const std::wstring bt = obex::kBluetoothTransport, push = obex::kObjectPushUuid,
                   ftp = obex::kFileTransferUuid, kKey = L"Software\\Tavix";
// clang-format off
const std::string kHive = "[HKEY_LOCAL_MACHINE\\Software\\Tavix]\n", kDesk = "\"LastRemoteDeviceName\"=\"Desk\"\n"
    "\"LastRemoteDeviceTransport\"=\"{715ad7d6-a3a3-4556-95ed-d2850592e82a}\"\n\"LastRemoteDeviceAddress\"=";
// clang-format on

using Properties = std::initializer_list<std::pair<const wchar_t*, obex::Property>>;
obex::PropertyBagPtr Device(Properties values) {
    auto device = std::make_shared<obex::PropertyBag>();
    for (const auto& [name, value] : values) device->Write(name, value);
    return device;
}

class Sender : public testing::Test {
protected:
    // Answers the next `left` boxes with Enter, noting their texts.
    void Answer(int left) {
        if (left == 0) return;
        toolkittest::WhenShown<CMessageBoxEx>("a message box", [this, left](CMessageBoxEx* box) {
            boxes << box->findChild<QLabel*>("1192")->text().replace('\n', ' ');
            QTest::keyClick(box, Qt::Key_Return), Answer(left - 1);
        });
    }
    // The entries, the selected one marked, and whether Send works.
    QString Listed(CSendFileViaBlueTooth& d) {
        QStringList rows;
        for (QListWidgetItem* item : d.DeviceList()->findItems("*", Qt::MatchWildcard))
            rows << (item->isSelected() ? ">" : "") + item->text();
        return rows.join('|') + (d.SendAllowed() ? " sendable" : "");
    }
    std::wstring Wide(const char* f) { return QString::fromStdString(dir.Path(f)).toStdWString(); }
    ScratchDirectory dir;
    obextest::Script s;
    const std::shared_ptr<void> served = obextest::Install(s);
    CAppConfig config{kKey, 0};
    QStringList boxes;
};

// The device remembered is listed at open; a search starts the list afresh.
TEST_F(Sender, ListsWhatASearchFindsAndRelabelsChanges) {
    platform::LoadHiveFromText(kHive + kDesk + "\"A1\"\n");
    const std::wstring headset = L"{0000111e-0000-1000-8000-00805f9b34fb}";
    // clang-format off
    const auto phone = Device({{L"Name", L"Phone"}, {L"Transport", bt}, {L"Address", L"A1"}, {L"ServiceUUID", ftp}}),
        laptop = Device({{L"Name", L"Laptop"}, {L"Transport", bt}, {L"Address", L"A2"}, {L"ServiceUUID", headset + L";" + push}});
    const obex::PropertyBagPtr found[] = {phone, laptop,
        Device({{L"Name", L"Headset"}, {L"Transport", bt}, {L"ServiceUUID", headset}}),
        Device({{L"Name", L"Meter"}, {L"Transport", obex::kTcpTransport}, {L"Port", 12}}),
        Device({{L"Name", L"Cam"}, {L"Transport", bt}, {L"Port", L"ch3"}}),
        Device({{L"Name", L"Box"}, {L"Transport", bt}}),
        Device({{L"Name", L"Short"}, {L"Transport", L"{715ad7d6}"}}),
        Device({{L"Name", L"Bad"}, {L"Transport", L"{715ad7d6-a3a3-4556-95ed-d2850592e82g}"}}),
        Device({{L"Name", 7}, {L"Transport", bt}})};
    // clang-format on
    ScratchDirectory::Write(dir.Path("a.txt"), "abc");
    ScopedLanguagePack pack{"german"};
    CSendFileViaBlueTooth d(config);
    d.filePath = Wide("a.txt");
    d.Create(), d.show(), QTest::keyClick(&d, Qt::Key_F1);
    // Reported from threads of the service's own.
    for (const auto& bag : found) std::thread(&obex::Sink::Notify, s.sink.get(), 5, bag).join();
    QCoreApplication::sendPostedEvents();
    d.DeviceList()->setCurrentRow(0);
    phone->Write(L"ServiceUUID", ftp + L";" + push), laptop->Write(L"ServiceUUID", headset);
    s.sink->Notify(7, phone), s.sink->Notify(7, laptop), QCoreApplication::sendPostedEvents();
    screenshot::Save("bt-sender-german", &d);
    EXPECT_EQ(Listed(d),
              ">Phone <Ready:YES>|Laptop <Ready:NO>|Meter:12|Cam:ch3|Box:<unk> sendable");
    d.DeviceList()->setCurrentRow(2), QTest::keyClick(&d, Qt::Key_F2);
    EXPECT_EQ(s.calls, L" status bind Meter connect(a.txt,3) put(a.txt,3) write3 commit end");
}

// Each row: the address in the settings, the script, the key, the files; then
// the calls, the address remembered with its type, and the boxes.
TEST_F(Sender, SendsTheRememberedDeviceTheFilesInChunksAndSaysWhatFailed) {
    for (const auto& [name, size] : {std::pair{"10k", 10000}, {"4999", 4999}, {"dir\\3", 3}})
        ScratchDirectory::Write(dir.Path(name), std::string(size, 'x'));
    // clang-format off
    const QString gone = QString::fromStdString(dir.Path("gone")), refused =
        "Error getting Connect -- perhaps the server doesnt allow them|Error getting Sending PUT -- perhaps the server doesnt allow them";
    const std::wstring sent = L" bind Desk connect(10k,10000) put(10k,10000) write5000 write5000";
    struct Row { std::string address; obextest::Script script; Qt::Key key; std::vector<const char*> files;
                 std::wstring calls; QString shown; } rows[] = {
        {"\"A1\"", {}, Qt::Key_F2, {"10k"}, sent + L" commit end|A1 REG_SZ", ""},
        {"\"4660\"\n\"LastRemoteDeviceAddressType\"=\"REG_DWORD\"", {}, Qt::Key_F2, {"4999", "gone", "10k"},
         L" bind Desk connect(4999,4999) put(4999,4999) write4999 commit end|4660 REG_DWORD", gone},
        {"\"A1\"", {.connect = false}, Qt::Key_F2, {"dir\\3"}, L" bind Desk connect(3,3) end|A1 REG_SZ", refused},
        {"\"A1\"", {.failingWrite = 1}, Qt::Key_F2, {"10k"}, sent + L" end|A1 REG_SZ",
         "Write Failed -- could the server be in read-only mode?"},
        {"\"A1\"", {.bind = false}, Qt::Key_F2, {"10k"}, L" bind Desk|A1 ", "Remote Device not ready"},
        {"\"A1\"", {}, Qt::Key_F2, {}, L"|A1 ", "Nothing Selected"},
        {"", {}, Qt::Key_F2, {"10k"}, L"| ", ""},
        {"", {.state = 1}, Qt::Key_F1, {}, L" status| ", "Device not present or not ready"},
        {"", {.state = 4}, Qt::Key_F1, {}, L" status| ", "Device not present or not ready"},
        {"", {.state = 5}, Qt::Key_F1, {}, L" status| ", "Device not present or not ready"},
        {"", {.state = -1}, Qt::Key_F1, {}, L" status| ", ""},
        {"", {.init = false}, Qt::Key_F1, {}, L" status| ", "Error getting IObex object"},
        {"", {.service = false}, Qt::Key_F1, {}, L"| ", "Error CoInitializeEx"}};
    // clang-format on
    ScopedLanguagePack pack;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.shown.toStdString() + std::to_string(row.script.state));
        platform::LoadHiveFromText(kHive + (row.address.empty() ? "" : kDesk + row.address + "\n"));
        s = row.script, boxes.clear();
        CSendFileViaBlueTooth d(config);
        for (const char* file : row.files)
            (row.files.size() == 1 ? d.filePath : d.filePaths.emplace_back()) = Wide(file);
        Answer(row.shown.isEmpty() ? 0 : row.shown.count('|') + 1);
        d.Create(), d.show();
        EXPECT_EQ(Listed(d), row.address.empty() ? "" : ">Desk:<unk> sendable");
        if (&row == rows) screenshot::Save("bt-sender-english", &d);
        if (row.files.empty()) d.DeviceList()->setCurrentRow(-1);
        QTest::keyClick(&d, row.key);
        std::wstring address, type;
        config.GetRegKeyValue(kKey, L"LastRemoteDeviceAddress", address);
        config.GetRegKeyValue(kKey, L"LastRemoteDeviceAddressType", type);
        EXPECT_EQ(s.calls + L"|" + address + L" " + type, row.calls);
        EXPECT_EQ(boxes.join('|'), row.shown);
    }
}

}  // namespace
