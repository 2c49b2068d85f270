// The Bluetooth sender against a scripted OBEX service that notes every call.

#include <QLabel>
#include <QListWidget>
#include <thread>

#include "Common/Bluetooth/SendFileViaBlueTooth.h"
#include "Common/Settings/AppConfig.h"
#include "Common/Toolkit/MessageBoxEx.h"
#include "Common/ToolkitTestSupport.h"
#include "Platform/Registry.h"
#include "Support/ScratchDirectory.h"
#include "support/Screenshot.h"

namespace {
using obex::PropertyBagPtr;

// What the service answers, and what was asked of it.
struct Script {
    int state = obex::kStateRunning;
    bool init = true, bind = true, connect = true, put = true;
    int failingWrite = -1;
    std::vector<std::pair<int, PropertyBagPtr>> found;  // told from a thread of their own
    std::shared_ptr<obex::Sink> sink;
    std::string calls;
};

std::string Of(const obex::HeaderCollection& h) {
    return "(" + QString::fromStdWString(h.name).toStdString() + "," +
           std::to_string(h.length.value_or(0)) + ")";
}

struct FakeStream : obex::PutStream {
    explicit FakeStream(Script& s) : s(s) {}
    bool Write(const std::uint8_t*, std::size_t size) override {
        return s.calls += " write" + std::to_string(size), writes++ != s.failingWrite;
    }
    bool Commit() override { return s.calls += " commit", true; }
    Script& s;
    int writes = 0;
};

struct FakeDevice : obex::Device {
    explicit FakeDevice(Script& s) : s(s) {}
    bool Connect(const obex::HeaderCollection& h) override {
        return s.calls += " connect" + Of(h), s.connect;
    }
    std::unique_ptr<obex::PutStream> Put(const obex::HeaderCollection& h) override {
        s.calls += " put" + Of(h);
        return s.put ? std::make_unique<FakeStream>(s) : nullptr;
    }
    void EndExchange(const obex::HeaderCollection&) override { s.calls += " end"; }
    Script& s;
};

struct FakeService : obex::Service {
    explicit FakeService(Script& s) : s(s) {}
    ~FakeService() override { Unadvise(); }
    bool Initialize() override { return s.init; }
    bool Advise(std::shared_ptr<obex::Sink> sink) override { return s.sink = sink, true; }
    void Unadvise() override {
        if (finder.joinable()) finder.join();
    }
    bool StartDeviceEnum() override {
        finder = std::thread([sink = s.sink, found = s.found] {
            for (const auto& [event, device] : found) sink->Notify(event, device);
        });
        return true;
    }
    void StopDeviceEnum() override {}
    std::unique_ptr<obex::Device> BindToDevice(const PropertyBagPtr& device) override {
        const auto address = device->Read(L"Address").value_or(0);
        s.calls += " bind " + (address.index() ? "#" + std::to_string(std::get<1>(address))
                                               : QString::fromStdWString(std::get<0>(address))
                                                     .toStdString());
        return s.bind ? std::make_unique<FakeDevice>(s) : nullptr;
    }
    DWORD HardwareStatus(int* state) override {
        return *state = s.state, s.state < 0 ? ERROR_GEN_FAILURE : ERROR_SUCCESS;
    }
    Script& s;
    std::thread finder;
};

PropertyBagPtr Bag(std::initializer_list<std::pair<const wchar_t*, obex::Property>> values) {
    auto bag = std::make_shared<obex::PropertyBag>();
    for (const auto& [name, value] : values) bag->Write(name, value);
    return bag;
}

const std::wstring bt = obex::kBluetoothTransport, push = obex::kObjectPushUuid,
                   ftp = obex::kFileTransferUuid;
const std::string kTavix = "[HKEY_LOCAL_MACHINE\\Software\\Tavix]\n";

// A box nobody answers fails the test and is closed, rather than hang it.
struct Unanswered : QTimer {
    Unanswered() {
        setSingleShot(true), start(2 * toolkittest::kDeadlineMs);
        connect(this, &QTimer::timeout, [] {
            ADD_FAILURE() << "a box nobody answers";
            toolkittest::CloseAllBoxes();
        });
    }
};

class Sender : public testing::Test {
protected:
    void SetUp() override {
        obex::SetServiceFactory([this] { return std::make_unique<FakeService>(script); });
    }
    void TearDown() override { obex::SetServiceFactory(nullptr); }
    void Hive(const std::string& values) {
        platform::LoadHiveFromText("Windows Registry Editor Version 5.00\n\n" + kTavix + values);
    }
    // Answers the next `left` boxes with Enter, noting their texts.
    void Answer(int left) {
        if (left > 0)
            toolkittest::WhenShown<CMessageBoxEx>("a message box", [this, left](CMessageBoxEx* box) {
                boxes << box->findChild<QLabel*>("1192")->text().replace('\n', ' ');
                QTest::keyClick(box, Qt::Key_Return);
                Answer(left - 1);
            });
    }
    QString Listed(CSendFileViaBlueTooth& d) {
        QStringList rows;
        for (int row = 0; row < d.DeviceList()->count(); ++row)
            rows << (row == d.DeviceList()->currentRow() ? ">" : "") + d.DeviceList()->item(row)->text();
        return rows.join('|') + (d.SendAllowed() ? " sendable" : "");
    }
    QString Remembered(const char* value) {
        std::wstring text, type;
        config.GetRegKeyValue(L"Software\\Tavix", L"LastRemoteDevice" + QString(value).toStdWString(), text);
        config.GetRegKeyValue(L"Software\\Tavix", L"LastRemoteDevice" + QString(value).toStdWString() + L"Type", type);
        return QString("%1=%2 %3").arg(value, QString::fromStdWString(text), QString::fromStdWString(type));
    }
    ScratchDirectory dir;
    Script script;
    CAppConfig config{L"Software\\Tavix", 0};
    QStringList boxes;
};

TEST_F(Sender, ListsWhatASearchFindsRelabelsChangesAndRemembersTheDeviceSentTo) {
    Hive("");
    const auto phone = Bag({{L"Name", L"Phone"}, {L"Transport", bt}, {L"Address", L"A1"}});
    const auto laptop = Bag({{L"Name", L"Laptop"}, {L"Transport", bt}});
    script.found = {{5, phone}, {5, laptop},
        {5, Bag({{L"Name", L"Headset"}, {L"Transport", bt}, {L"ServiceUUID", L"{0000111e-0000-1000-8000-00805f9b34fb}"}})},
        {5, Bag({{L"Name", L"Meter"}, {L"Transport", obex::kTcpTransport}, {L"Address", L"10.0.0.9"}, {L"Port", 12}})},
        {5, Bag({{L"Name", L"Cam"}, {L"Transport", bt}, {L"Port", L"ch3"}})},
        {5, Bag({{L"Name", L"Box"}, {L"Transport", bt}})},
        {5, Bag({{L"Name", L"Bad"}, {L"Transport", L"{715ad7d6}"}})}, {5, Bag({{L"Name", 7}, {L"Transport", bt}})}};
    ScratchDirectory::Write(dir.Path("a.txt"), std::string(3, 'a'));
    for (const char* language : {"english", "german"}) {
        ScopedLanguagePack pack{language};
        phone->Write(L"ServiceUUID", ftp);
        laptop->Write(L"ServiceUUID", L"{0000111F-0000-1000-8000-00805F9B34FB};" + push);
        Unanswered guard;
        CSendFileViaBlueTooth d(config);
        d.filePath = QString::fromStdString(dir.Path("a.txt")).toStdWString();
        d.Create(), d.show();
        QTest::keyClick(&d, Qt::Key_F1);
        ASSERT_TRUE(toolkittest::WaitUntil([&] { return d.DeviceList()->count() == 5; }));
        d.DeviceList()->setCurrentRow(0);
        phone->Write(L"ServiceUUID", ftp + L";" + push), laptop->Write(L"ServiceUUID", ftp);
        std::thread([&] { script.sink->Notify(7, phone), script.sink->Notify(7, laptop); }).join();
        script.sink->Notify(5, Bag({{L"Name", L"Late"}, {L"Transport", bt}}));
        ASSERT_TRUE(toolkittest::WaitUntil([&] { return d.DeviceList()->count() == 6; }));
        screenshot::Save(QString("bt-sender-%1").arg(language), &d);
        EXPECT_EQ(Listed(d), ">Phone <Ready:YES>|Laptop <Ready:YES>|Meter:12|Cam:ch3|Box:<unk>|"
                             "Late:<unk> sendable");
        d.DeviceList()->setCurrentRow(2);
        QTest::keyClick(&d, Qt::Key_F2);
        script.sink.reset();
    }
    EXPECT_EQ(script.calls, " bind 10.0.0.9 connect(a.txt,3) put(a.txt,3) write3 commit end"
                            " bind 10.0.0.9 connect(a.txt,3) put(a.txt,3) write3 commit end");
    EXPECT_EQ(QStringList({Remembered("Address"), Remembered("Port"), Remembered("Name")}).join(' '),
              "Address=10.0.0.9 REG_SZ Port=12 REG_DWORD Name=Meter REG_SZ");
}

TEST_F(Sender, SendsTheRememberedDeviceTheFilesInChunksAndSaysWhatFailed) {
    const std::string named = "\"LastRemoteDeviceName\"=\"Desk\"\n\"LastRemoteDeviceTransport\"=\"" +
                              QString::fromStdWString(bt).toStdString() + "\"\n",
                      desk = "\"LastRemoteDeviceAddress\"=\"A1\"\n" + named;
    for (const auto& [name, size] : {std::pair{"10k.txt", 10000}, {"4999.txt", 4999}, {"dir\\3.txt", 3}})
        ScratchDirectory::Write(dir.Path(name), std::string(size, 'x'));
    const QString gone = QString::fromStdString(dir.Path("gone.txt"));
    struct Row {
        std::string hive;
        std::function<void(Script&)> tweak;
        std::vector<const char*> files;
        std::string calls;
        QStringList shown;
        QString remembered;
    } rows[] = {
        {desk, {}, {"10k.txt"}, " bind A1 connect(10k.txt,10000) put(10k.txt,10000) write5000 write5000 commit end", {}, "A1 REG_SZ"},
        {"\"LastRemoteDeviceAddress\"=\"4660\"\n\"LastRemoteDeviceAddressType\"=\"REG_DWORD\"\n" + named, {},
         {"4999.txt", "gone.txt", "10k.txt"}, " bind #4660 connect(4999.txt,4999) put(4999.txt,4999) write4999 commit end",
         {gone}, "4660 REG_DWORD"},
        {desk, [](Script& s) { s.connect = false; }, {"dir\\3.txt"}, " bind A1 connect(3.txt,3) end",
         {"Error getting Connect -- perhaps the server doesnt allow them",
          "Error getting Sending PUT -- perhaps the server doesnt allow them"}, "A1 REG_SZ"},
        {desk, [](Script& s) { s.put = false; }, {"4999.txt"}, " bind A1 connect(4999.txt,4999) put(4999.txt,4999) end",
         {"Error getting Connect -- perhaps the server doesnt allow them",
          "Error getting Sending PUT -- perhaps the server doesnt allow them"}, "A1 REG_SZ"},
        {desk, [](Script& s) { s.failingWrite = 1; }, {"10k.txt"}, " bind A1 connect(10k.txt,10000) put(10k.txt,10000) write5000 write5000 end",
         {"Write Failed -- could the server be in read-only mode?"}, "A1 REG_SZ"},
        {desk, [](Script& s) { s.bind = false; }, {"10k.txt"}, " bind A1", {"Remote Device not ready"}, "A1 "},
        {desk, {}, {"none"}, "", {"Nothing Selected"}, "A1 "},
        {"", {}, {"10k.txt"}, "", {}, " "}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.calls);
        ScopedLanguagePack pack;
        Hive(row.hive), script = {}, boxes.clear();
        if (row.tweak) row.tweak(script);
        Unanswered guard;
        CSendFileViaBlueTooth d(config);
        for (const char* file : row.files)
            (row.files.size() == 1 ? d.filePath : d.filePaths.emplace_back()) = QString::fromStdString(dir.Path(file)).toStdWString();
        d.Create(), d.show();
        EXPECT_EQ(Listed(d), row.hive.empty() ? "" : ">Desk:<unk> sendable");
        if (row.files[0] == std::string("none")) d.DeviceList()->setCurrentRow(-1);
        Answer(row.shown.size());
        QTest::keyClick(&d, Qt::Key_F2);
        EXPECT_EQ(script.calls, row.calls);
        EXPECT_EQ(boxes, row.shown);
        EXPECT_EQ(Remembered("Address"), "Address=" + row.remembered);
    }
}

TEST_F(Sender, SaysWhenTheStackIsMissingOrNotReady) {
    ScopedLanguagePack pack;
    Hive("");
    for (const auto& [state, init, factory, shown] :
         {std::tuple{1, true, true, "Device not present or not ready"}, {4, true, true, "Device not present or not ready"},
          {5, true, true, "Device not present or not ready"}, {0, true, true, ""}, {3, true, true, ""},
          {-1, true, true, ""}, {3, false, true, "Error getting IObex object"}, {3, true, false, "Error CoInitializeEx"}}) {
        script.state = state, script.init = init, boxes.clear();
        if (!factory) obex::SetServiceFactory(nullptr);
        Answer(QString(shown).isEmpty() ? 0 : 1);
        Unanswered guard;
        if (init) {
            EXPECT_EQ(CSendFileViaBlueTooth::CheckBluetoothReady(nullptr), !QString(shown).startsWith("Device"));
        }
        if (!init || !factory) {
            CSendFileViaBlueTooth d(config);
            d.Create();
        }
        EXPECT_EQ(boxes.join(""), shown) << state;
    }
}

}  // namespace
