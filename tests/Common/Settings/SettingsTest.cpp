#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "Common/Settings/AppConfig.h"
#include "Common/Settings/CommonConfig.h"
#include "Platform/Registry.h"
#include "Support/ScratchDirectory.h"

namespace {

std::string Hive(const std::string& values) {
    return "Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\Software\\Tavix]\n" +
           values + "\n[HKEY_LOCAL_MACHINE\\Software\\Other]\n\"Text\"=\"elsewhere\"\n";
}

// A fatal check, matched on its expression and file, whatever the line.
testing::Matcher<const std::string&> Fatal(const std::string& expression, const char* file) {
    return testing::HasSubstr(expression + "\nFile: " + file + "\n");
}

class AppConfigTest : public testing::Test {
protected:
    void SetUp() override {
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        platform::LoadHiveFromText(
            Hive("\"Text\"=\"hello world\"\n\"One\"=\"1\"\n\"Dword\"=dword:00000010\n"), hivePath);
    }
    void TearDown() override { platform::InjectRegistryFaults() = {}; }

    bool HiveFileHas(const std::string& line) const {
        return std::filesystem::exists(hivePath) &&
               ScratchDirectory::Read(hivePath).find(line) != std::string::npos;
    }

    ScratchDirectory dir;
    std::string hivePath = dir.Path("registry.reg");
    CAppConfig config{L"Software\\Tavix", 1};
    std::vector<std::string> told;
};

TEST_F(AppConfigTest, ParsesTheStoredTextAsTheTypeAsked) {
    const struct {
        std::wstring text;
        int asInt;
        unsigned asUnsigned;
        bool asBool;
    } cases[] = {{L"1", 1, 1u, true},
                 {L"0", 0, 0u, false},
                 {L"abc", 0, 0u, false},
                 {L"", 0, 0u, false},
                 {L"-5", -5, 4294967291u, true},
                 {L" 42x", 42, 42u, true},
                 {L"4000000000", 2147483647, 4000000000u, true}};
    for (const auto& c : cases) {
        ASSERT_TRUE(config.SetRegKeyValue(L"Software\\Tavix", L"Value", c.text));
        EXPECT_EQ(config.GetValue<int>(L"Value"), c.asInt);
        EXPECT_EQ(config.GetValue<unsigned>(L"Value"), c.asUnsigned);
        EXPECT_EQ(config.GetValue<bool>(L"Value"), c.asBool);
        EXPECT_EQ(config.GetValue<std::wstring>(L"Value"), c.text);
        EXPECT_EQ(config.GetString(L"Value", L"default"), c.text);
    }
}

TEST_F(AppConfigTest, ReadsOnlyItsOwnExistingKeyAndValues) {
    EXPECT_EQ(config.GetValue<int>(L"Absent"), std::nullopt);
    EXPECT_EQ(config.GetValue<std::wstring>(L"Absent"), std::nullopt);
    EXPECT_EQ(config.GetString(L"Absent", L"fallback"), L"fallback");
    EXPECT_EQ(CAppConfig(L"Software\\Other", 0).GetValue<std::wstring>(L"Text"), L"elsewhere");
    std::wstring text = L"previous";  // data of another type reads as a terminated string
    EXPECT_TRUE(config.GetRegKeyValue(L"Software\\Tavix", L"Dword", text));
    EXPECT_LE(text.size(), 1u);
    CAppConfig missing(L"Software\\Nobody", 1);
    EXPECT_EQ(missing.GetValue<int>(L"One"), std::nullopt);
    EXPECT_FALSE(missing.SetRegKeyValue(L"Software\\Nobody", L"One", L"2"));
    EXPECT_EQ(platform::HiveAsText().find("Nobody"), std::string::npos);  // never created
}

TEST_F(AppConfigTest, WritesTheTextFlushesAndTellsTheObserversInOrder) {
    struct Observer : IAppConfigObserver {
        Observer(std::vector<std::string>& told, std::string name) : told(told), name(name) {}
        void OnConfigValueChanged(CAppConfig* changed, const std::wstring& value) override {
            told.push_back(name + ":" + std::string(value.begin(), value.end()));
            if (onChange) onChange(changed);
        }
        std::vector<std::string>& told;
        std::string name;
        std::function<void(CAppConfig*)> onChange;
    } first(told, "first"), second(told, "second"), third(told, "third");
    for (Observer* o : {&first, &second, &third}) config.AddObserver(o);
    config.RemoveObserver(&third);
    first.onChange = [&](CAppConfig* changed) {
        EXPECT_EQ(changed, &config);
        EXPECT_TRUE(HiveFileHas("\"Int\"=\"-1234567\""));  // flushed before telling
        config.RemoveObserver(&second);  // an observer may unsubscribe another meanwhile
    };
    config.SetValue(L"Int", -1234567);
    first.onChange = {};
    config.SetValue(L"Bool", true);
    config.SetValue(L"Off", false);
    config.SetValue(L"Unsigned", 4000000000u);
    config.SetValue(L"Text", L"\\Storage Card\\ä");
    EXPECT_THAT(told, testing::ElementsAre("first:Int", "first:Bool", "first:Off", "first:Unsigned",
                                           "first:Text"));
    for (const char* line : {"\"Bool\"=\"1\"", "\"Off\"=\"0\"", "\"Unsigned\"=\"4000000000\""})
        EXPECT_TRUE(HiveFileHas(line)) << line;
    EXPECT_EQ(config.GetValue<std::wstring>(L"Text"), L"\\Storage Card\\ä");
}

TEST_F(AppConfigTest, UnchangedOrUnflushedValuesLeaveTheHiveFileAlone) {
    struct : IAppConfigObserver {
        void OnConfigValueChanged(CAppConfig*, const std::wstring&) override { ADD_FAILURE(); }
    } observer;
    config.AddObserver(&observer);
    platform::InjectRegistryFaults().failNextSet = true;  // a write would be fatal
    config.SetValue(L"One", 1);
    config.SetValue(L"One", true);
    config.SetValue(L"Text", std::wstring(L"hello world"));
    config.SetValue(L"Text", 0);  // unparsable text reads as 0
    config.RemoveObserver(&observer);
    platform::InjectRegistryFaults() = {};
    CAppConfig(L"Software\\Tavix", 0).SetValue(L"Count", 3);
    platform::InjectRegistryFaults().failNextFlush = true;
    config.SetValue(L"Other", 7);
    EXPECT_EQ(config.GetValue<int>(L"Count"), 3);
    EXPECT_EQ(config.GetValue<int>(L"Other"), 7);
    EXPECT_EQ(config.GetString(L"Text", L""), L"hello world");
    EXPECT_FALSE(std::filesystem::exists(hivePath));
}

TEST_F(AppConfigTest, RegistryFaultsAreFatal) {
    using F = platform::RegistryFaults;
    const auto read = [](CAppConfig& c) { c.GetValue<std::wstring>(L"Text"); };
    const auto write = [](CAppConfig& c) { c.SetRegKeyValue(L"Software\\Tavix", L"X", L"1"); };
    const char* const refused = "SetRegKeyValue(applicationSpecicKey, key, strVal)";
    const std::tuple<bool F::*, void (*)(CAppConfig&), const char*> faults[] = {
        {&F::failNextClose, read, "RegCloseKey(key) == ERROR_SUCCESS"},
        {&F::failNextClose, [](CAppConfig& c) { c.GetValue<int>(L"Absent"); },
         "RegCloseKey(key) == ERROR_SUCCESS"},
        {&F::nullHandleOnNextOpen, read, "hKey"},
        {&F::nullHandleOnNextOpen, write, "hKey"},
        {&F::shortNextRead, read, "requiredDataSize == actualyWritedDataSize"},
        {&F::failNextSet, [](CAppConfig& c) { c.SetValue(L"One", 5); }, refused}};
    for (const auto& [fault, act, expression] : faults)
        EXPECT_EXIT((platform::InjectRegistryFaults().*fault = true, act(config)),
                    testing::ExitedWithCode(1), Fatal(expression, "AppConfig"));
    // A deleted key reads nothing and its first write is fatal.
    platform::DeleteRegistryKey(L"HKEY_LOCAL_MACHINE\\Software\\Tavix");
    EXPECT_EQ(config.GetValue<int>(L"One"), std::nullopt);
    EXPECT_EXIT(config.SetValue(L"One", 2), testing::ExitedWithCode(1),
                Fatal(refused, "AppConfig"));
}

TEST_F(AppConfigTest, ANullObserverIsFatal) {
    config.AddObserver(nullptr);
    EXPECT_EXIT(config.SetValue(L"One", 5), testing::ExitedWithCode(1), Fatal("*it", "AppConfig"));
}

TEST(CommonConfig, TheDistanceUnitIsTheStoredOneOrKilometresAndOutOfRangeIsFatal) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const std::pair<const char*, int> units[] = {{"", duKM},   {"0", duKM}, {"1", duMT},
                                                 {"2", duFT},  {"3", duKF}, {"4", duMI},
                                                 {"mi", duKM}, {"5", -1},   {"-1", -1}};
    for (const auto& [stored, unit] : units) {
        platform::LoadHiveFromText(
            Hive(*stored ? "\"UIDistanceUnit\"=\"" + std::string(stored) + "\"" : ""));
        CAppConfig config(L"Software\\Tavix", 1);
        if (unit >= 0)
            EXPECT_EQ(GetDistanceUnit(config), unit) << stored;
        else
            EXPECT_EXIT(GetDistanceUnit(config), testing::ExitedWithCode(1),
                        Fatal("rawUnit >= duKM && rawUnit <= duMI", "CommonConfig"));
    }
}

}  // namespace
