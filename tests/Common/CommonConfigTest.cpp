#include <gtest/gtest.h>

#include <string>

#include "Common/Settings/CommonConfig.h"
#include "Platform/Registry.h"
#include "Support/FatalTextPattern.h"

namespace {

void LoadHiveWithUnit(const char* unitLine) {
    platform::LoadHiveFromText(std::string("Windows Registry Editor Version 5.00\n\n"
                                           "[HKEY_LOCAL_MACHINE\\Software\\Tavix]\n") +
                               unitLine + "\n");
}

struct UnitCase {
    const char* line;
    TDistanceUnit unit;
};

class DistanceUnitRead : public testing::TestWithParam<UnitCase> {};

TEST_P(DistanceUnitRead, UsesStoredUnitOrKilometres) {
    LoadHiveWithUnit(GetParam().line);
    CAppConfig config(L"Software\\Tavix", 1);
    EXPECT_EQ(GetDistanceUnit(config), GetParam().unit);
}

INSTANTIATE_TEST_SUITE_P(Values, DistanceUnitRead,
                         testing::Values(UnitCase{"", duKM},
                                         UnitCase{"\"UIDistanceUnit\"=\"0\"", duKM},
                                         UnitCase{"\"UIDistanceUnit\"=\"1\"", duMT},
                                         UnitCase{"\"UIDistanceUnit\"=\"2\"", duFT},
                                         UnitCase{"\"UIDistanceUnit\"=\"3\"", duKF},
                                         UnitCase{"\"UIDistanceUnit\"=\"4\"", duMI},
                                         UnitCase{"\"UIDistanceUnit\"=\"mi\"", duKM}));

class DistanceUnitOutOfRange : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_P(DistanceUnitOutOfRange, IsFatal) {
    EXPECT_EXIT(
        {
            LoadHiveWithUnit(GetParam());
            CAppConfig config(L"Software\\Tavix", 1);
            GetDistanceUnit(config);
        },
        testing::ExitedWithCode(1),
        FatalTextPattern("rawUnit >= duKM && rawUnit <= duMI", "CommonConfig", 18));
}

INSTANTIATE_TEST_SUITE_P(Values, DistanceUnitOutOfRange,
                         testing::Values("\"UIDistanceUnit\"=\"5\"", "\"UIDistanceUnit\"=\"-1\"",
                                         "\"UIDistanceUnit\"=\"99999999999\""));

}  // namespace
