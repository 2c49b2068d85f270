#include <gtest/gtest.h>

#include <string>

#include "Support/LenUnit.h"
#include "Support/VtableSlot.h"

namespace {

TLenUnit Unit(int unit) {
    TLenUnit lenUnit;
    lenUnit.SetUnit(unit);
    return lenUnit;
}

// Each conversion applied to 1.0 must give its factor bit for bit.
TEST(LenUnitTest, ConversionFactorsAreExact) {
    TLenUnit u;
    EXPECT_EQ(u.KmToM(1.0), 1000.0);
    EXPECT_EQ(u.KmToFt(1.0), 3280.84);
    EXPECT_EQ(u.KmToKf(1.0), 3.280839895013123);
    EXPECT_EQ(u.KmToMi(1.0), 0.621371192237334);
    EXPECT_EQ(u.MToKm(1.0), 0.001);
    EXPECT_EQ(u.FtToKm(1.0), 0.00030479999259114265);
    EXPECT_EQ(u.FtToKm(1.0), static_cast<double>(0.0003048f));
    EXPECT_EQ(u.KfToKm(1.0), 0.3048);
    EXPECT_EQ(u.MiToKm(1.0), 1.609344);
}

TEST(LenUnitTest, FeetRoundTripIsDeliberatelyInexact) {
    TLenUnit u;
    EXPECT_EQ(u.KmToFt(1.0), 3280.84);
    EXPECT_NE(u.FtToKm(3280.84), 1.0);
    EXPECT_NEAR(u.FtToKm(3280.84), 1.0, 1e-7);
}

struct PerUnitCase {
    int unit;
    double toKmOf1;          // ToKm(1.0)
    double fromKmOf1;        // FromKm(1.0)
    double shortUnitOf1;     // KmToShortUnit(1.0)
    double attenuationFrom;  // AttenuationFromKm(1.0)
    double attenuationTo;    // AttenuationToKm(1.0)
    int decimals;
    const char* keyword;
    const char* name;
    const char* shortName;
    const char* attenuationName;
};

const PerUnitCase perUnitCases[] = {
    {-1, 1.0, 1.0, 1000.0, 0.0, 0.0, 0, "", "", "ft", "dB/"},
    {0, 1.0, 1.0, 1000.0, 1.0, 1.0, 5, "km", "km", "m", "dB/km"},
    {1, 0.001, 1000.0, 1000.0, 1.0, 1.0, 0, "mt", "m", "m", "dB/km"},
    {2, 0.00030479999259114265, 3280.84, 3280.84, 0.3048, 3.280839895013123, 0, "ft", "ft", "ft",
     "dB/kf"},
    {3, 0.3048, 3.280839895013123, 3280.84, 0.3048, 3.280839895013123, 4, "kf", "kf", "ft",
     "dB/kf"},
    {4, 1.609344, 0.621371192237334, 3280.84, 1.60933, 0.6213765977145769, 4, "mi", "mi", "ft",
     "dB/mi"},
    {5, 1.0, 1.0, 1000.0, 0.0, 0.0, 0, "", "dB", "ft", "dB/"},
    {7, 1.0, 1.0, 1000.0, 0.0, 0.0, 0, "", "MM", "ft", "dB/"},
};

class LenUnitPerUnit : public testing::TestWithParam<PerUnitCase> {};

TEST_P(LenUnitPerUnit, ConvertsAndNamesInItsUnit) {
    const PerUnitCase& c = GetParam();
    TLenUnit u = Unit(c.unit);
    EXPECT_EQ(u.GetUnit(), c.unit);
    EXPECT_EQ(u.ToKm(1.0), c.toKmOf1);
    EXPECT_EQ(u.ToKm(1.0, c.unit), c.toKmOf1);
    EXPECT_EQ(u.FromKm(1.0), c.fromKmOf1);
    EXPECT_EQ(u.FromKm(1.0, c.unit), c.fromKmOf1);
    EXPECT_EQ(u.KmToShortUnit(1.0), c.shortUnitOf1);
    EXPECT_EQ(u.AttenuationFromKm(1.0), c.attenuationFrom);
    EXPECT_EQ(u.AttenuationToKm(1.0), c.attenuationTo);
    EXPECT_EQ(u.GetDecimals(), c.decimals);
    EXPECT_EQ(u.GetDecimals(c.unit), c.decimals);
    EXPECT_STREQ(u.GetUnitKeyword(), c.keyword);
    EXPECT_STREQ(u.GetUnitName(), c.name);
    EXPECT_STREQ(u.GetShortUnitName(), c.shortName);
    EXPECT_STREQ(u.GetAttenuationUnitName(), c.attenuationName);
}

std::string UnitName(int unit) {
    return unit < 0 ? "Minus" + std::to_string(-unit) : std::to_string(unit);
}

INSTANTIATE_TEST_SUITE_P(Units, LenUnitPerUnit, testing::ValuesIn(perUnitCases),
                         [](const auto& info) { return "Unit" + UnitName(info.param.unit); });

struct DistanceCase {
    int unit;
    bool withName;
    const char* text;
};

class LenUnitFormatDistance : public testing::TestWithParam<DistanceCase> {};

TEST_P(LenUnitFormatDistance, UsesUnitDecimalsAndName) {
    const DistanceCase& c = GetParam();
    char text[64];
    TLenUnit u = Unit(c.unit);
    EXPECT_EQ(u.FormatDistance(text, 1.23456789, c.withName), static_cast<int>(strlen(c.text)));
    EXPECT_STREQ(text, c.text);
    TLenUnit other;
    EXPECT_EQ(other.FormatDistance(text, 1.23456789, c.unit, c.withName),
              static_cast<int>(strlen(c.text)));
    EXPECT_STREQ(text, c.text);
}

INSTANTIATE_TEST_SUITE_P(
    Units, LenUnitFormatDistance,
    testing::Values(DistanceCase{0, false, "1.23457"}, DistanceCase{0, true, "1.23457 km"},
                    DistanceCase{1, false, "1235"}, DistanceCase{1, true, "1235 m"},
                    DistanceCase{2, true, "4050 ft"}, DistanceCase{3, false, "4.0504"},
                    DistanceCase{3, true, "4.0504 kf"}, DistanceCase{4, true, "0.7671 mi"},
                    DistanceCase{7, true, "1.23457 km"}, DistanceCase{-3, false, "1.23457"}));

struct RoundedCase {
    double x;
    double magnitude;
    const char* plain;
    const char* stripped;
};

class LenUnitFormatRounded : public testing::TestWithParam<RoundedCase> {};

TEST_P(LenUnitFormatRounded, PicksBandByMagnitude) {
    const RoundedCase& c = GetParam();
    char text[64];
    TLenUnit u;
    const int length = u.FormatRounded(text, c.x, c.magnitude, false);
    EXPECT_STREQ(text, c.plain);
    EXPECT_EQ(length, static_cast<int>(strlen(c.plain)));
    // Stripping reports the length before it stripped.
    EXPECT_EQ(u.FormatRounded(text, c.x, c.magnitude, true), length);
    EXPECT_STREQ(text, c.stripped);
}

INSTANTIATE_TEST_SUITE_P(
    Values, LenUnitFormatRounded,
    testing::Values(RoundedCase{1234, 1234, "1200", "12"}, RoundedCase{949.9, 949.9, "950", "95"},
                    RoundedCase{950, 950, "1000", "1"}, RoundedCase{95, 95, "100", "1"},
                    RoundedCase{94, 94, "94", "94"}, RoundedCase{9.96, 9.96, "10", "1"},
                    RoundedCase{0.996, 0.996, "1.0", "1"},
                    RoundedCase{0.0996, 0.0996, "0.10", "0.1"},
                    RoundedCase{0.05, 0.05, "0.050", "0.05"}, RoundedCase{0.0, 0.0, "0.000", "0"},
                    RoundedCase{-12.7, 12.7, "-12", "-12"},
                    RoundedCase{-1234, 1234, "-1100", "-11"}, RoundedCase{-0.8, 12, "0", "0"},
                    RoundedCase{1e12, 1e12, "1000000000000", "1"}));

TEST(LenUnitTest, FormatRoundedShortFormUsesValueAsMagnitude) {
    char text[32];
    TLenUnit u;
    EXPECT_EQ(u.FormatRounded(text, 0.996), 3);
    EXPECT_STREQ(text, "1.0");
    // A negative value is its own, smaller magnitude.
    u.FormatRounded(text, -1234.0);
    EXPECT_STREQ(text, "-1234.000");
}

TEST(LenUnitTest, FormatAttenuationConvertsOnlyWhenAsked) {
    char text[32];
    TLenUnit u = Unit(duKF);
    EXPECT_EQ(u.FormatAttenuation(text, 1.0, false, true), 5);
    EXPECT_STREQ(text, "0.305");
    u.FormatAttenuation(text, 1.0, true, true);
    EXPECT_STREQ(text, "0.305 dB/kf");
    u.FormatAttenuation(text, 0.25, false, false);
    EXPECT_STREQ(text, "0.250");
    TLenUnit::SetDefaultAttenuationUnitName("dB/xx");
    u.FormatAttenuation(text, 0.25, true, false);
    TLenUnit::SetDefaultAttenuationUnitName("dB/km");
    EXPECT_STREQ(text, "0.250 dB/xx");
}

TEST(LenUnitTest, FibreLabelIsMultimodeOnlyFor651) {
    char text[32];
    TLenUnit u;
    EXPECT_EQ(u.FormatFiberLabel(text, 651, 3), 4);
    EXPECT_STREQ(text, "MM-3");
    u.FormatFiberLabel(text, 652, 12);
    EXPECT_STREQ(text, "SM-12");
}

TEST(LenUnitTest, ParsesOnlyNonDefaultKeywords) {
    TLenUnit u;
    const struct {
        const char* text;
        int unit;
    } cases[] = {{"km", 0}, {"m", 0},  {"mt", 1}, {"ft", 2},  {"kf", 3},
                 {"mi", 4}, {"MT", 0}, {"", 0},   {"mt ", 0}, {nullptr, 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text ? c.text : "(null)");
        EXPECT_EQ(u.ParseUnitKeyword(c.text), c.unit);
    }
    for (int unit = duMT; unit <= duMI; ++unit)
        EXPECT_EQ(u.ParseUnitKeyword(u.GetUnitKeyword(unit)), unit);
}

TEST(LenUnitTest, SharedNameTableAndItsReset) {
    TLenUnit u;
    const char* startup[] = {"km", "m", "ft", "kf", "mi", "dB", "ns", "MM", "SM"};
    for (int slot = 0; slot < 9; ++slot) EXPECT_STREQ(u.GetUnitName(slot), startup[slot]);
    EXPECT_STREQ(u.GetUnitName(9), "");
    EXPECT_STREQ(u.GetDbName(), "dB");
    EXPECT_STREQ(u.GetTimeName(), "ns");

    TLenUnit other;
    other.ResetUnitNames();
    // The table is process-wide: the first object sees the reset too.
    EXPECT_STREQ(u.GetDbName(), "db");
    for (int slot = 0; slot < 9; ++slot) {
        if (slot == 5) continue;
        EXPECT_STREQ(u.GetUnitName(slot), startup[slot]);
    }

    TLenUnit::InitUnitNames();
    EXPECT_STREQ(u.GetDbName(), "dB");
}

TEST(LenUnitTest, StartsInKilometres) {
    EXPECT_EQ(TLenUnit().GetUnit(), duKM);
}

// The OTDR module library calls through these slots.
TEST(LenUnitTest, VirtualSlotOrderIsTheModuleInterface) {
    using U = TLenUnit;
    EXPECT_EQ(VtableSlot(&U::KmToM), 0);
    EXPECT_EQ(VtableSlot(&U::KmToFt), 1);
    EXPECT_EQ(VtableSlot(&U::KmToKf), 2);
    EXPECT_EQ(VtableSlot(&U::KmToMi), 3);
    EXPECT_EQ(VtableSlot(&U::MToKm), 4);
    EXPECT_EQ(VtableSlot(&U::FtToKm), 5);
    EXPECT_EQ(VtableSlot(&U::KfToKm), 6);
    EXPECT_EQ(VtableSlot(&U::MiToKm), 7);
    EXPECT_EQ(VtableSlot(&U::ResetUnitNames), 8);
    EXPECT_EQ(VtableSlot(&U::SetUnit), 9);
    EXPECT_EQ(VtableSlot(&U::GetUnit), 10);
    EXPECT_EQ(VtableSlot(static_cast<const char* (U::*)(int)>(&U::GetUnitKeyword)), 11);
    EXPECT_EQ(VtableSlot(static_cast<const char* (U::*)()>(&U::GetUnitKeyword)), 12);
    EXPECT_EQ(VtableSlot(&U::ParseUnitKeyword), 13);
    EXPECT_EQ(VtableSlot(static_cast<double (U::*)(double)>(&U::ToKm)), 14);
    EXPECT_EQ(VtableSlot(static_cast<double (U::*)(double, int)>(&U::ToKm)), 15);
    EXPECT_EQ(VtableSlot(static_cast<double (U::*)(double)>(&U::FromKm)), 16);
    EXPECT_EQ(VtableSlot(static_cast<double (U::*)(double, int)>(&U::FromKm)), 17);
    EXPECT_EQ(VtableSlot(&U::KmToShortUnit), 18);
    EXPECT_EQ(VtableSlot(&U::AttenuationFromKm), 19);
    EXPECT_EQ(VtableSlot(&U::AttenuationToKm), 20);
    EXPECT_EQ(VtableSlot(static_cast<int (U::*)(int)>(&U::GetDecimals)), 21);
    EXPECT_EQ(VtableSlot(static_cast<int (U::*)()>(&U::GetDecimals)), 22);
    EXPECT_EQ(VtableSlot(static_cast<int (U::*)(char*, double, bool)>(&U::FormatDistance)), 23);
    EXPECT_EQ(VtableSlot(static_cast<int (U::*)(char*, double, int, bool)>(&U::FormatDistance)),
              24);
    EXPECT_EQ(VtableSlot(&U::FormatAttenuation), 25);
    EXPECT_EQ(VtableSlot(static_cast<int (U::*)(char*, double, double, bool)>(&U::FormatRounded)),
              26);
    EXPECT_EQ(VtableSlot(static_cast<int (U::*)(char*, double)>(&U::FormatRounded)), 27);
    EXPECT_EQ(VtableSlot(&U::FormatFiberLabel), 28);
    EXPECT_EQ(VtableSlot(static_cast<const char* (U::*)(int)>(&U::GetUnitName)), 29);
    EXPECT_EQ(VtableSlot(static_cast<const char* (U::*)()>(&U::GetUnitName)), 30);
    EXPECT_EQ(VtableSlot(&U::GetShortUnitName), 31);
    EXPECT_EQ(VtableSlot(&U::GetDbName), 32);
    EXPECT_EQ(VtableSlot(&U::GetAttenuationUnitName), 33);
    EXPECT_EQ(VtableSlot(&U::GetTimeName), 34);
}

}  // namespace
