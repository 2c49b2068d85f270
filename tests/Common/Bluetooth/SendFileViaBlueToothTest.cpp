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

using Properties = std::initializer_list<std::pair<const wchar_t*, obex::Property>>;
obex::PropertyBagPtr Device(Properties values) {
    auto device = std::make_shared<obex::PropertyBag>();
    for (const auto& [name, value] : values) device->Write(name, value);
    return device;
}

class Sender : public testing::Test {
protected:
    void SetUp() override { obextest::Install(s); }
    void TearDown() override { obex::SetServiceFactory(nullptr); }
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
        for (int row = 0; row < d.DeviceList()->count(); ++row)
            rows << (row == d.DeviceList()->currentRow() ? ">" : "") +
                        d.DeviceList()->item(row)->text();
        return rows.join('|') + (d.SendAllowed() ? " sendable" : "");
    }
    std::wstring Remembered(const std::wstring& name) {
        std::wstring value, type;
        config.GetRegKeyValue(kKey, L"LastRemoteDevice" + name, value);
        config.GetRegKeyValue(kKey, L"LastRemoteDevice" + name + L"Type", type);
        return name + L"=" + value + L" " + type;
    }
    ScratchDirectory dir;
    obextest::Script s;
    CAppConfig config{kKey, 0};
    QStringList boxes;
};

TEST_F(Sender, ListsWhatASearchFindsRelabelsChangesAndRemembersTheDeviceSentTo) {
    platform::LoadHiveFromText("[HKEY_LOCAL_MACHINE\\Software\\Tavix]\n");
    const auto phone = Device({{L"Name", L"Phone"}, {L"Transport", bt}, {L"Address", L"A1"}});
    const auto laptop = Device({{L"Name", L"Laptop"}, {L"Transport", bt}});
    const std::wstring headset = L"{0000111e-0000-1000-8000-00805f9b34fb}";
    // clang-format off
    const std::pair<int, obex::PropertyBagPtr> found[] = {{5, phone}, {5, laptop},
        {5, Device({{L"Name", L"Headset"}, {L"Transport", bt}, {L"ServiceUUID", headset}})},
        {5, Device({{L"Name", L"Meter"}, {L"Transport", obex::kTcpTransport}, {L"Port", 12}})},
        {5, Device({{L"Name", L"Cam"}, {L"Transport", bt}, {L"Port", L"ch3"}})},
        {5, Device({{L"Name", L"Box"}, {L"Transport", bt}})},
        {5, Device({{L"Name", L"Bad"}, {L"Transport", L"{715ad7d6}"}})},
        {5, Device({{L"Name", 7}, {L"Transport", bt}})}};
    // clang-format on
    ScratchDirectory::Write(dir.Path("a.txt"), "abc");
    phone->Write(L"ServiceUUID", ftp), laptop->Write(L"ServiceUUID", headset + L";" + push);
    ScopedLanguagePack pack;
    CSendFileViaBlueTooth d(config);
    d.filePath = QString::fromStdString(dir.Path("a.txt")).toStdWString();
    d.Create(), d.show(), QTest::keyClick(&d, Qt::Key_F1);
    // The service's own thread reports what it finds.
    std::thread([&] {
        for (const auto& [e, bag] : found) s.sink->Notify(e, bag);
    }).join();
    ASSERT_TRUE(toolkittest::WaitUntil([&] { return d.DeviceList()->count() == 5; }));
    d.DeviceList()->setCurrentRow(0);
    phone->Write(L"ServiceUUID", ftp + L";" + push), laptop->Write(L"ServiceUUID", ftp);
    std::thread([&] { s.sink->Notify(7, phone), s.sink->Notify(7, laptop); }).join();
    s.sink->Notify(5, Device({{L"Name", L"Late"}, {L"Transport", bt}}));
    ASSERT_TRUE(toolkittest::WaitUntil([&] { return d.DeviceList()->count() == 6; }));
    screenshot::Save("bt-sender-english", &d);
    EXPECT_EQ(Listed(d),
              ">Phone <Ready:YES>|Laptop <Ready:YES>|Meter:12|Cam:ch3|Box:<unk>|"
              "Late:<unk> sendable");
    d.DeviceList()->setCurrentRow(2), QTest::keyClick(&d, Qt::Key_F2);
    EXPECT_EQ(s.calls, L" status bind Meter connect(a.txt,3) put(a.txt,3) write3 commit end");
    EXPECT_EQ(Remembered(L"Port") + Remembered(L"Name"), L"Port=12 REG_DWORDName=Meter REG_SZ");
}

// Each row: the last device in the settings, the service's script, the key,
// the files; then the calls, the boxes and the address remembered.
TEST_F(Sender, SendsTheRememberedDeviceTheFilesInChunksAndSaysWhatFailed) {
    // clang-format off
    const std::string named = "\"LastRemoteDeviceName\"=\"Desk\"\n\"LastRemoteDeviceTransport\"=\"" +
                              QString::fromStdWString(bt).toStdString() + "\"\n",
        desk = "\"LastRemoteDeviceAddress\"=\"A1\"\n" + named,
        number = "\"LastRemoteDeviceAddress\"=\"4660\"\n\"LastRemoteDeviceAddressType\"=\"REG_DWORD\"\n" + named;
    for (const auto& [name, size] : {std::pair{"10k", 10000}, {"4999", 4999}, {"dir\\3", 3}})
        ScratchDirectory::Write(dir.Path(name), std::string(size, 'x'));
    const QString refused = "Error getting Connect -- perhaps the server doesnt allow them|"
                            "Error getting Sending PUT -- perhaps the server doesnt allow them",
        notReady = "Device not present or not ready", gone = QString::fromStdString(dir.Path("gone")),
        readOnly = "Write Failed -- could the server be in read-only mode?";
    const std::wstring sent = L" bind Desk connect(10k,10000) put(10k,10000) write5000 write5000";
    struct Row { std::string hive; obextest::Script script; Qt::Key key; std::vector<const char*> files;
                 std::wstring calls; QString shown, address; } rows[] = {
        {desk, {}, Qt::Key_F2, {"10k"}, sent + L" commit end", "", "A1 REG_SZ"},
        {number, {}, Qt::Key_F2, {"4999", "gone", "10k"},
         L" bind Desk connect(4999,4999) put(4999,4999) write4999 commit end", gone, "4660 REG_DWORD"},
        {desk, {.connect = false}, Qt::Key_F2, {"dir\\3"}, L" bind Desk connect(3,3) end", refused, "A1 REG_SZ"},
        {desk, {.failingWrite = 1}, Qt::Key_F2, {"10k"}, sent + L" end", readOnly, "A1 REG_SZ"},
        {desk, {.bind = false}, Qt::Key_F2, {"10k"}, L" bind Desk", "Remote Device not ready", "A1 "},
        {desk, {}, Qt::Key_F2, {}, L"", "Nothing Selected", "A1 "},
        {"", {}, Qt::Key_F2, {"10k"}, L"", "", " "},
        {"", {.state = 1}, Qt::Key_F1, {}, L" status", notReady, " "},
        {"", {.state = 4}, Qt::Key_F1, {}, L" status", notReady, " "},
        {"", {.state = 5}, Qt::Key_F1, {}, L" status", notReady, " "},
        {"", {.state = -1}, Qt::Key_F1, {}, L" status", "", " "},
        {"", {.init = false}, Qt::Key_F1, {}, L" status", "Error getting IObex object", " "},
        {"", {.service = false}, Qt::Key_F1, {}, L"", "Error CoInitializeEx", " "}};
    // clang-format on
    for (const Row& row : rows) {
        SCOPED_TRACE(row.shown.toStdString() + std::to_string(row.script.state));
        ScopedLanguagePack pack{&row == rows ? "german" : "english"};
        platform::LoadHiveFromText("[HKEY_LOCAL_MACHINE\\Software\\Tavix]\n" + row.hive);
        s = row.script, boxes.clear();
        CSendFileViaBlueTooth d(config);
        for (const char* file : row.files)
            (row.files.size() == 1 ? d.filePath : d.filePaths.emplace_back()) =
                QString::fromStdString(dir.Path(file)).toStdWString();
        Answer(row.shown.isEmpty() ? 0 : row.shown.count('|') + 1);
        d.Create(), d.show();
        EXPECT_EQ(Listed(d), row.hive.empty() ? "" : ">Desk:<unk> sendable");
        if (&row == rows) screenshot::Save("bt-sender-german", &d);
        if (row.files.empty()) d.DeviceList()->setCurrentRow(-1);
        QTest::keyClick(&d, row.key);
        EXPECT_EQ(s.calls, row.calls);
        EXPECT_EQ(boxes.join('|'), row.shown);
        EXPECT_EQ(Remembered(L"Address"), L"Address=" + row.address.toStdWString());
    }
}

}  // namespace
