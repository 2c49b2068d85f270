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

// Every conversion, name and attenuation factor of each unit, bit for bit;
// -1, 5 and 7 are outside the units and fall back as each operation documents.
TEST(LenUnitTest, ConvertsAndNamesInEachUnit) {
    const struct {
        int unit;
        double toKm, fromKm, shortUnit, attenuationFrom, attenuationTo;
        int decimals;
        const char *keyword, *name, *shortName, *attenuationName, *distance;
    } cases[] = {
        {-1, 1, 1, 1000, 0, 0, 0, "", "", "ft", "dB/", "1.23457 km"},
        {0, 1, 1, 1000, 1, 1, 5, "km", "km", "m", "dB/km", "1.23457 km"},
        {1, 0.001, 1000, 1000, 1, 1, 0, "mt", "m", "m", "dB/km", "1235 m"},
        {2, static_cast<double>(0.0003048f), 3280.84, 3280.84, 0.3048, 3.280839895013123, 0, "ft",
         "ft", "ft", "dB/kf", "4050 ft"},
        {3, 0.3048, 3.280839895013123, 3280.84, 0.3048, 3.280839895013123, 4, "kf", "kf", "ft",
         "dB/kf", "4.0504 kf"},
        {4, 1.609344, 0.621371192237334, 3280.84, 1.60933, 0.6213765977145769, 4, "mi", "mi", "ft",
         "dB/mi", "0.7671 mi"},
        {5, 1, 1, 1000, 0, 0, 0, "", "dB", "ft", "dB/", "1.23457 km"},
        {7, 1, 1, 1000, 0, 0, 0, "", "MM", "ft", "dB/", "1.23457 km"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.unit);
        TLenUnit u = Unit(c.unit), km;
        EXPECT_EQ(u.GetUnit(), c.unit);
        EXPECT_EQ(u.ToKm(1.0), c.toKm);
        EXPECT_EQ(u.FromKm(1.0), c.fromKm);
        EXPECT_EQ(u.KmToShortUnit(1.0), c.shortUnit);
        EXPECT_EQ(u.AttenuationFromKm(1.0), c.attenuationFrom);
        EXPECT_EQ(u.AttenuationToKm(1.0), c.attenuationTo);
        EXPECT_EQ(u.GetDecimals(), c.decimals);
        EXPECT_STREQ(u.GetUnitKeyword(), c.keyword);
        EXPECT_EQ(u.ParseUnitKeyword(c.keyword), c.unit > 0 && c.unit < 5 ? c.unit : 0);
        EXPECT_STREQ(u.GetUnitName(), c.name);
        EXPECT_STREQ(u.GetShortUnitName(), c.shortName);
        EXPECT_STREQ(u.GetAttenuationUnitName(), c.attenuationName);
        char text[64];
        EXPECT_EQ(u.FormatDistance(text, 1.23456789, true), static_cast<int>(strlen(c.distance)));
        EXPECT_STREQ(text, c.distance);
        km.FormatDistance(text, 1.23456789, c.unit, false);
        EXPECT_EQ(text + std::string(" "), std::string(c.distance).substr(0, strlen(text) + 1));
    }
}

// Each band starts half a step early, so a value that rounds up is written in the next band.
TEST(LenUnitTest, FormatRoundedPicksTheBandByMagnitude) {
    const struct {
        double x, magnitude;
        const char *plain, *stripped;
    } cases[] = {
        {1234, 1234, "1200", "12"},
        {949.9, 949.9, "950", "95"},
        {950, 950, "1000", "1"},
        {95, 95, "100", "1"},
        {94, 94, "94", "94"},
        {9.96, 9.96, "10", "1"},
        {9.4, 9.4, "9.4", "9.4"},
        {0.996, 0.996, "1.0", "1"},
        {0.94, 0.94, "0.94", "0.94"},
        {0.0996, 0.0996, "0.10", "0.1"},
        {0.094, 0.094, "0.094", "0.094"},
        {0.0, 0.0, "0.000", "0"},
        {-12.7, 12.7, "-12", "-12"},
        {-1234, 1234, "-1100", "-11"},
        {-0.8, 12, "0", "0"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.plain);
        char text[64];
        TLenUnit u;
        const int length = u.FormatRounded(text, c.x, c.magnitude, false);
        EXPECT_STREQ(text, c.plain);
        EXPECT_EQ(length, static_cast<int>(strlen(c.plain)));
        EXPECT_EQ(u.FormatRounded(text, c.x, c.magnitude, true), length);
        EXPECT_STREQ(text, c.stripped);
        if (c.x == c.magnitude) {
            u.FormatRounded(text, c.x);
            EXPECT_STREQ(text, c.plain);
        }
    }
}

TEST(LenUnitTest, AttenuationFibreLabelAndSharedNames) {
    char text[32];
    TLenUnit u = Unit(duKF);
    EXPECT_EQ(u.FormatAttenuation(text, 1.0, true, true), 11);
    EXPECT_STREQ(text, "0.305 dB/kf");
    TLenUnit::SetDefaultAttenuationUnitName("dB/xx");
    EXPECT_EQ(u.FormatAttenuation(text, 0.25, false, false), 5);
    u.FormatAttenuation(text + 6, 0.25, true, false);
    TLenUnit::SetDefaultAttenuationUnitName("dB/km");
    EXPECT_STREQ(text + 6, "0.250 dB/xx");
    EXPECT_EQ(u.FormatFiberLabel(text, 651, 3), 4);
    EXPECT_STREQ(text, "MM-3");
    u.FormatFiberLabel(text, 652, 12);
    EXPECT_STREQ(text, "SM-12");
    EXPECT_STREQ(u.GetUnitName(8), "SM");
    EXPECT_STREQ(u.GetUnitName(9), "");
    EXPECT_STREQ(u.GetTimeName(), "ns");
    // The name table is process-wide: a reset through another object shows here.
    TLenUnit().ResetUnitNames();
    EXPECT_STREQ(u.GetDbName(), "db");
    EXPECT_STREQ(u.GetUnitName(0), "km");
    TLenUnit::InitUnitNames();
    EXPECT_STREQ(u.GetDbName(), "dB");
    EXPECT_EQ(u.ParseUnitKeyword(nullptr), duKM);
    EXPECT_EQ(u.ParseUnitKeyword("MT"), duKM);
}

// The OTDR module library calls through these slots, in this order.
TEST(LenUnitTest, VirtualSlotOrderIsTheModuleInterface) {
    using U = TLenUnit;
    const std::ptrdiff_t slots[] = {
        VtableSlot(&U::KmToM),
        VtableSlot(&U::KmToFt),
        VtableSlot(&U::KmToKf),
        VtableSlot(&U::KmToMi),
        VtableSlot(&U::MToKm),
        VtableSlot(&U::FtToKm),
        VtableSlot(&U::KfToKm),
        VtableSlot(&U::MiToKm),
        VtableSlot(&U::ResetUnitNames),
        VtableSlot(&U::SetUnit),
        VtableSlot(&U::GetUnit),
        VtableSlot(static_cast<const char* (U::*)(int)>(&U::GetUnitKeyword)),
        VtableSlot(static_cast<const char* (U::*)()>(&U::GetUnitKeyword)),
        VtableSlot(&U::ParseUnitKeyword),
        VtableSlot(static_cast<double (U::*)(double)>(&U::ToKm)),
        VtableSlot(static_cast<double (U::*)(double, int)>(&U::ToKm)),
        VtableSlot(static_cast<double (U::*)(double)>(&U::FromKm)),
        VtableSlot(static_cast<double (U::*)(double, int)>(&U::FromKm)),
        VtableSlot(&U::KmToShortUnit),
        VtableSlot(&U::AttenuationFromKm),
        VtableSlot(&U::AttenuationToKm),
        VtableSlot(static_cast<int (U::*)(int)>(&U::GetDecimals)),
        VtableSlot(static_cast<int (U::*)()>(&U::GetDecimals)),
        VtableSlot(static_cast<int (U::*)(char*, double, bool)>(&U::FormatDistance)),
        VtableSlot(static_cast<int (U::*)(char*, double, int, bool)>(&U::FormatDistance)),
        VtableSlot(&U::FormatAttenuation),
        VtableSlot(static_cast<int (U::*)(char*, double, double, bool)>(&U::FormatRounded)),
        VtableSlot(static_cast<int (U::*)(char*, double)>(&U::FormatRounded)),
        VtableSlot(&U::FormatFiberLabel),
        VtableSlot(static_cast<const char* (U::*)(int)>(&U::GetUnitName)),
        VtableSlot(static_cast<const char* (U::*)()>(&U::GetUnitName)),
        VtableSlot(&U::GetShortUnitName),
        VtableSlot(&U::GetDbName),
        VtableSlot(&U::GetAttenuationUnitName),
        VtableSlot(&U::GetTimeName)};
    for (std::ptrdiff_t slot = 0; slot < std::ssize(slots); ++slot) EXPECT_EQ(slots[slot], slot);
    EXPECT_EQ(std::ssize(slots), 35);
}

}  // namespace
