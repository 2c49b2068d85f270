#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "Common/Settings/AppConfig.h"
#include "Platform/Registry.h"
#include "Support/FatalTextPattern.h"
#include "Support/ScratchDirectory.h"

namespace {

const std::string Hive =
    "Windows Registry Editor Version 5.00\n"
    "\n"
    "[HKEY_LOCAL_MACHINE\\Software\\Tavix]\n"
    "\"Text\"=\"hello world\"\n"
    "\"One\"=\"1\"\n"
    "\"Number\"=\"dword:00000010\"\n"
    "\"Dword\"=dword:00000010\n"
    "\n"
    "[HKEY_LOCAL_MACHINE\\Software\\Other]\n"
    "\"Text\"=\"elsewhere\"\n";

class AppConfigTest : public testing::Test {
protected:
    void SetUp() override {
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        platform::LoadHiveFromText(Hive, hivePath);
    }
    void TearDown() override { platform::InjectRegistryFaults() = {}; }

    std::wstring Stored(const std::wstring& name) {
        std::wstring text;
        EXPECT_TRUE(config.GetRegKeyValue(L"Software\\Tavix", name, text));
        return text;
    }
    bool HiveFileHas(const std::string& line) const {
        return ScratchDirectory::Read(hivePath).find(line) != std::string::npos;
    }

    ScratchDirectory dir;
    std::string hivePath = dir.Path("registry.reg");
    CAppConfig config{L"Software\\Tavix", 1};
};

struct ReadCase {
    std::wstring text;
    int asInt;
    unsigned asUnsigned;
    bool asBool;
};

class AppConfigTypedRead : public AppConfigTest, public testing::WithParamInterface<ReadCase> {};

TEST_P(AppConfigTypedRead, ParsesTextThroughAStream) {
    ASSERT_TRUE(config.SetRegKeyValue(L"Software\\Tavix", L"Value", GetParam().text));
    EXPECT_EQ(config.GetValue<int>(L"Value"), GetParam().asInt);
    EXPECT_EQ(config.GetValue<unsigned>(L"Value"), GetParam().asUnsigned);
    EXPECT_EQ(config.GetValue<bool>(L"Value"), GetParam().asBool);
    EXPECT_EQ(config.GetValue<std::wstring>(L"Value"), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Texts, AppConfigTypedRead,
                         testing::Values(ReadCase{L"1", 1, 1u, true}, ReadCase{L"0", 0, 0u, false},
                                         ReadCase{L"abc", 0, 0u, false},
                                         ReadCase{L"", 0, 0u, false},
                                         ReadCase{L"-5", -5, 4294967291u, true},
                                         ReadCase{L" 42x", 42, 42u, true},
                                         ReadCase{L"4000000000", 2147483647, 4000000000u, true}));

TEST_F(AppConfigTest, MissingValueOrKeyIsNotFound) {
    EXPECT_EQ(config.GetValue<int>(L"Absent"), std::nullopt);
    EXPECT_EQ(config.GetValue<bool>(L"Absent"), std::nullopt);
    EXPECT_EQ(config.GetValue<std::wstring>(L"Absent"), std::nullopt);
    EXPECT_EQ(config.GetString(L"Absent", L"fallback"), L"fallback");
    EXPECT_EQ(config.GetString(L"Text", L"fallback"), L"hello world");

    CAppConfig missing(L"Software\\Nobody", 1);
    EXPECT_EQ(missing.GetValue<int>(L"One"), std::nullopt);
    EXPECT_FALSE(missing.SetRegKeyValue(L"Software\\Nobody", L"One", L"2"));
    // The key is never created.
    EXPECT_EQ(platform::HiveAsText().find("Nobody"), std::string::npos);
}

TEST_F(AppConfigTest, ReadsOnlyItsOwnKey) {
    CAppConfig other(L"Software\\Other", 0);
    EXPECT_EQ(other.GetValue<std::wstring>(L"Text"), L"elsewhere");
    EXPECT_EQ(config.GetValue<std::wstring>(L"Text"), L"hello world");
}

TEST_F(AppConfigTest, ValueOfAnotherTypeReadsAsTerminatedText) {
    std::wstring text = L"previous";
    EXPECT_TRUE(config.GetRegKeyValue(L"Software\\Tavix", L"Dword", text));
    EXPECT_LE(text.size(), 1u);
    EXPECT_EQ(Stored(L"Number"), L"dword:00000010");
}

struct WriteCase {
    const char* name;
    std::function<void(CAppConfig&)> write;
    std::wstring stored;
};

class AppConfigWrite : public AppConfigTest, public testing::WithParamInterface<WriteCase> {};

TEST_P(AppConfigWrite, StoresTheStreamText) {
    GetParam().write(config);
    EXPECT_EQ(Stored(L"Value"), GetParam().stored);
}

INSTANTIATE_TEST_SUITE_P(
    Types, AppConfigWrite,
    testing::Values(
        WriteCase{"True", [](CAppConfig& c) { c.SetValue(L"Value", true); }, L"1"},
        WriteCase{"False", [](CAppConfig& c) { c.SetValue(L"Value", false); }, L"0"},
        WriteCase{"Negative", [](CAppConfig& c) { c.SetValue(L"Value", -1234567); }, L"-1234567"},
        WriteCase{"Unsigned", [](CAppConfig& c) { c.SetValue(L"Value", 4000000000u); },
                  L"4000000000"},
        WriteCase{"String",
                  [](CAppConfig& c) { c.SetValue(L"Value", std::wstring(L"\\Storage Card\\ä")); },
                  L"\\Storage Card\\ä"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(AppConfigTest, OneWrittenReadsAsTrueAndAsOne) {
    config.SetValue(L"Flag", L"1");
    EXPECT_EQ(config.GetValue<bool>(L"Flag"), true);
    EXPECT_EQ(config.GetValue<int>(L"Flag"), 1);
}

class RecordingObserver : public IAppConfigObserver {
public:
    RecordingObserver(std::vector<std::string>& calls, std::string name)
        : calls(calls), name(std::move(name)) {}
    void OnConfigValueChanged(CAppConfig* changed, const std::wstring& valueName) override {
        lastConfig = changed;
        calls.push_back(name + ":" + std::string(valueName.begin(), valueName.end()));
        if (onChange) onChange();
    }
    std::vector<std::string>& calls;
    std::string name;
    CAppConfig* lastConfig = nullptr;
    std::function<void()> onChange;
};

TEST_F(AppConfigTest, ChangedValueIsFlushedThenObserversToldInOrder) {
    std::vector<std::string> calls;
    RecordingObserver first(calls, "first"), second(calls, "second");
    config.AddObserver(&first);
    config.AddObserver(&second);
    first.onChange = [&] { EXPECT_TRUE(HiveFileHas("\"Count\"=\"3\"")); };

    config.SetValue(L"Count", 3);
    EXPECT_THAT(calls, testing::ElementsAre("first:Count", "second:Count"));
    EXPECT_EQ(first.lastConfig, &config);
    EXPECT_TRUE(HiveFileHas("\"Count\"=\"3\""));
}

TEST_F(AppConfigTest, UnchangedValueIsNeitherWrittenNorFlushedNorTold) {
    std::vector<std::string> calls;
    RecordingObserver observer(calls, "o");
    config.AddObserver(&observer);
    config.SetValue(L"One", 1);
    config.SetValue(L"One", true);
    config.SetValue(L"Text", std::wstring(L"hello world"));
    EXPECT_TRUE(calls.empty());
    EXPECT_FALSE(std::filesystem::exists(hivePath));
    // A write that fails would be fatal: prove none was attempted.
    platform::InjectRegistryFaults().failNextSet = true;
    config.SetValue(L"One", 1);
    EXPECT_TRUE(platform::InjectRegistryFaults().failNextSet);
}

TEST_F(AppConfigTest, UnparsableValueEqualToZeroCountsAsUnchanged) {
    std::vector<std::string> calls;
    RecordingObserver observer(calls, "o");
    config.AddObserver(&observer);
    config.SetValue(L"Text", 0);
    EXPECT_TRUE(calls.empty());
    EXPECT_EQ(Stored(L"Text"), L"hello world");
}

TEST_F(AppConfigTest, WithoutFlushModeTheHiveFileIsNotWritten) {
    CAppConfig unflushed(L"Software\\Tavix", 0);
    unflushed.SetValue(L"Count", 3);
    EXPECT_EQ(unflushed.GetValue<int>(L"Count"), 3);
    EXPECT_FALSE(std::filesystem::exists(hivePath));
}

TEST_F(AppConfigTest, RemovedObserversAreNotTold) {
    std::vector<std::string> calls;
    RecordingObserver first(calls, "first"), second(calls, "second"), third(calls, "third");
    config.AddObserver(&first);
    config.AddObserver(&second);
    config.AddObserver(&third);
    config.RemoveObserver(&third);
    // An observer may unsubscribe another while being told.
    first.onChange = [&] { config.RemoveObserver(&second); };
    config.SetValue(L"Count", 1);
    EXPECT_THAT(calls, testing::ElementsAre("first:Count"));
    config.SetValue(L"Count", 2);
    EXPECT_THAT(calls, testing::ElementsAre("first:Count", "first:Count"));
}

TEST_F(AppConfigTest, DeletedKeyReadsNothingAndFirstWriteIsFatal) {
    platform::DeleteRegistryKey(L"HKEY_LOCAL_MACHINE\\Software\\Tavix");
    EXPECT_EQ(config.GetValue<int>(L"One"), std::nullopt);
    EXPECT_EQ(config.GetValue<std::wstring>(L"Text"), std::nullopt);
    EXPECT_EXIT(
        config.SetValue(L"One", 2), testing::ExitedWithCode(1),
        FatalTextPattern("SetRegKeyValue(applicationSpecicKey, key, strVal)", "AppConfig", 167));
}

struct FaultCase {
    const char* name;
    std::function<void()> arm;
    std::function<void(CAppConfig&)> act;
    const char* expression;
    int line;
};

class AppConfigFault : public AppConfigTest, public testing::WithParamInterface<FaultCase> {};

TEST_P(AppConfigFault, IsFatalWithItsAssertion) {
    const FaultCase& c = GetParam();
    EXPECT_EXIT(
        {
            c.arm();
            c.act(config);
        },
        testing::ExitedWithCode(1), FatalTextPattern(c.expression, "AppConfig", c.line));
}

platform::RegistryFaults& Faults() {
    return platform::InjectRegistryFaults();
}

INSTANTIATE_TEST_SUITE_P(
    Registry, AppConfigFault,
    testing::Values(
        FaultCase{"FailingCloseAfterRead", [] { Faults().failNextClose = true; },
                  [](CAppConfig& c) { c.GetValue<int>(L"One"); },
                  "RegCloseKey(key) == ERROR_SUCCESS", 11},
        FaultCase{"FailingCloseAfterMissingValue", [] { Faults().failNextClose = true; },
                  [](CAppConfig& c) { c.GetValue<int>(L"Absent"); },
                  "RegCloseKey(key) == ERROR_SUCCESS", 11},
        FaultCase{"FailingCloseAfterWrite", [] { Faults().failNextClose = true; },
                  [](CAppConfig& c) { c.SetRegKeyValue(L"Software\\Tavix", L"X", L"1"); },
                  "RegCloseKey(key) == ERROR_SUCCESS", 11},
        FaultCase{"NullHandleOnRead", [] { Faults().nullHandleOnNextOpen = true; },
                  [](CAppConfig& c) { c.GetString(L"Text", L""); }, "hKey", 32},
        FaultCase{"NullHandleOnWrite", [] { Faults().nullHandleOnNextOpen = true; },
                  [](CAppConfig& c) { c.SetRegKeyValue(L"Software\\Tavix", L"X", L"1"); }, "hKey",
                  62},
        FaultCase{"ShortRead", [] { Faults().shortNextRead = true; },
                  [](CAppConfig& c) { c.GetValue<std::wstring>(L"Text"); },
                  "requiredDataSize == actualyWritedDataSize", 53},
        FaultCase{"RefusedWrite", [] { Faults().failNextSet = true; },
                  [](CAppConfig& c) { c.SetValue(L"One", 5); },
                  "SetRegKeyValue(applicationSpecicKey, key, strVal)", 167},
        FaultCase{"NullObserver", [] {},
                  [](CAppConfig& c) {
                      c.AddObserver(nullptr);
                      c.SetValue(L"One", 5);
                  },
                  "*it", 237}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(AppConfigTest, FailedFlushKeepsValueInMemory) {
    Faults().failNextFlush = true;
    config.SetValue(L"Count", 7);
    EXPECT_EQ(config.GetValue<int>(L"Count"), 7);
    EXPECT_FALSE(std::filesystem::exists(hivePath));
}

}  // namespace
