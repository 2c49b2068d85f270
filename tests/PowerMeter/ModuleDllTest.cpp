#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

#include "Common/Settings/Logging.h"
#include "FakeModuleFixture.h"
#include "Platform/Registry.h"
#include "Platform/StreamDevice.h"
#include "Platform/StreamDeviceFaults.h"
#include "PowerMeter/ModuleDll.h"
#include "Support/LenUnit.h"
#include "Support/LogFile.h"

namespace {

using devicetest::ReadFile;

class ModuleDllTest : public devicetest::FakeModuleFixture {
protected:
    void SetUp() override {
        log = std::make_unique<TLogFile>((dir / "PowerMeter.log").c_str(), 1, 0);
        SetLogFile(log.get());
    }
    void TearDown() override {
        SetLogFile(nullptr);
        FakeModuleFixture::TearDown();
    }
    std::string Log() const { return ReadFile(dir / "PowerMeter.log"); }

    std::unique_ptr<TLogFile> log;
    TLenUnit lenUnit;
};

TEST_F(ModuleDllTest, LoadHandsTheModuleTheLogAndUnitThenLogsAndResolves) {
    InstallModule("");
    LoadModule(&lenUnit);

    EXPECT_TRUE(ModuleDll->IsLoaded());
    EXPECT_EQ(FakeExport<const void* (*)()>(L"FakeModule_Log")(), log.get());
    EXPECT_EQ(FakeExport<const void* (*)()>(L"FakeModule_LenUnit")(), &lenUnit);
    EXPECT_STREQ(FakeExport<const char* (*)()>(L"FakeModule_Directory")(), dir.Path().c_str());

    // The module writes through the object it was given, before the loader's line.
    const std::string text = Log();
    const auto moduleLine = text.find("  M W\t fake module initialised " + dir.Path() + "\n");
    const auto loadedLine = text.find("  M M\t module loaded: " + dir.Path() + "tavix_otdr.dll\n");
    ASSERT_NE(moduleLine, std::string::npos) << text;
    ASSERT_NE(loadedLine, std::string::npos) << text;
    EXPECT_LT(moduleLine, loadedLine);

    EXPECT_NE(ModuleDll->InitOTDR, nullptr);
    EXPECT_NE(ModuleDll->ServiceFunction, nullptr);
    EXPECT_NE(ModuleDll->MeasFull, nullptr);
    EXPECT_NE(ModuleDll->MD_AddContext, nullptr);
    EXPECT_NE(ModuleDll->GetSorSize, nullptr);
    // What the module does not export stays null.
    EXPECT_EQ(ModuleDll->InitOTDREx, nullptr);
    EXPECT_EQ(ModuleDll->MD_ServiceFunction, nullptr);
    EXPECT_EQ(ModuleDll->DestroySorPtr, nullptr);
    EXPECT_EQ(ModuleCalls(), "DllInit;") << "loading calls nothing but DllInit";
}

TEST_F(ModuleDllTest, AMissingLibraryIsLoggedAsAnErrorAndLeavesEverythingUnset) {
    TModuleDll loader(dir.Path().c_str());
    EXPECT_FALSE(loader.Load(TModuleDll::kModuleFileName, &lenUnit));
    EXPECT_FALSE(loader.IsLoaded());
    EXPECT_EQ(loader.Handle(), nullptr);
    EXPECT_EQ(loader.InitOTDR, nullptr);
    EXPECT_EQ(loader.ServiceFunction, nullptr);
    EXPECT_NE(Log().find("  M E\t error loading module: " + dir.Path() + "tavix_otdr.dll\n"),
              std::string::npos)
        << Log();
}

TEST_F(ModuleDllTest, ANameWithAColonOrAnEmptyDirectoryIsTakenAsItStands) {
    const std::string deviceStyle = dir / "flash:/tavix_otdr.so";
    std::filesystem::create_directories(dir / "flash:");
    std::filesystem::copy_file(devicetest::kFakeModule, deviceStyle);
    devicetest::WriteFile(dir / "flash:/fake-module.ini", "");

    TModuleDll elsewhere("/nonexistent/");
    EXPECT_TRUE(elsewhere.Load((dir / "flash:/tavix_otdr.dll").c_str(), &lenUnit));

    TModuleDll noDirectory("");
    EXPECT_TRUE(noDirectory.Load(deviceStyle.c_str(), &lenUnit));
    EXPECT_NE(Log().find("module loaded: " + deviceStyle + "\n"), std::string::npos);
}

TEST_F(ModuleDllTest, ASecondLoadReplacesTheLibraryAndItsEntryPoints) {
    InstallModule("");
    LoadModule(&lenUnit);
    ASSERT_NE(ModuleDll->InitOTDR, nullptr);

    std::filesystem::create_directories(dir / "minimal");
    std::filesystem::copy_file(devicetest::kMinimalFakeModule, dir / "minimal/tavix_otdr.so");
    ASSERT_TRUE(ModuleDll->Load("minimal/tavix_otdr.dll", &lenUnit));
    EXPECT_EQ(ModuleDll->InitOTDR, nullptr);
    EXPECT_EQ(ModuleDll->ServiceFunction, nullptr);
    EXPECT_NE(ModuleDll->MeasFull, nullptr);

    // A failed load afterwards has freed the library: nothing may lead into it.
    EXPECT_FALSE(ModuleDll->Load("absent.dll", &lenUnit));
    EXPECT_EQ(ModuleDll->Handle(), nullptr);
    EXPECT_FALSE(ModuleDll->IsLoaded());
    EXPECT_EQ(ModuleDll->MeasFull, nullptr);
    EXPECT_EQ(ModuleDll->GetSorSize, nullptr);
}

TEST_F(ModuleDllTest, WithoutALogTheLoaderStillLoadsAndTheModuleGetsNull) {
    SetLogFile(nullptr);
    InstallModule("");
    LoadModule(&lenUnit);
    EXPECT_EQ(FakeExport<const void* (*)()>(L"FakeModule_Log")(), nullptr);
    EXPECT_EQ(Log(), "");
}

// The probe keeps its driver handle for the whole run, so one test walks
// through its life in order: no driver, then a driver, then a failing call.
TEST(BluetoothProbeTest, AnswersNotActiveUntilTheDriverExistsThenKeepsOneHandle) {
    int status = -1;
    platform::LoadHiveFromText("Windows Registry Editor Version 5.00\n");
    EXPECT_EQ(BthGetHardwareStatus(&status), static_cast<DWORD>(ERROR_SERVICE_NOT_ACTIVE));
    EXPECT_EQ(status, -1);

    platform::LoadHiveFromText(std::string("Windows Registry Editor Version 5.00\n\n") +
                               "[HKEY_LOCAL_MACHINE\\Drivers\\BuiltIn\\BTD0]\n"
                               "\"Dll\"=\"" FAKE_STREAM_DRIVER
                               "\"\n"
                               "\"Prefix\"=\"BTD\"\n\"Index\"=\"0\"\n");
    HMODULE driver = LoadLibraryW(platform::FromUtf8(FAKE_STREAM_DRIVER).c_str());
    ASSERT_NE(driver, nullptr);
    auto setStatus =
        reinterpret_cast<void (*)(int)>(GetProcAddressW(driver, L"FakeDriver_SetBluetoothStatus"));
    auto opens = reinterpret_cast<int (*)()>(GetProcAddressW(driver, L"FakeDriver_BluetoothOpens"));

    setStatus(4);
    EXPECT_EQ(BthGetHardwareStatus(&status), 0u);
    EXPECT_EQ(status, 4);
    setStatus(3);
    EXPECT_EQ(BthGetHardwareStatus(&status), 0u);
    EXPECT_EQ(status, 3);
    EXPECT_EQ(opens(), 1);

    platform::InjectStreamDeviceFaults().failNextIoControl = ERROR_DEVICE_NOT_CONNECTED;
    status = -1;
    EXPECT_EQ(BthGetHardwareStatus(&status), static_cast<DWORD>(ERROR_DEVICE_NOT_CONNECTED));
    EXPECT_EQ(status, -1);
    FreeLibrary(driver);
}

}  // namespace
