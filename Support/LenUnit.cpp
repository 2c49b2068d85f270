#include "Support/LenUnit.h"

#include <cmath>
#include <cstdio>
#include <cstring>

namespace {

constexpr double KmToMFactor = 1000.0;
constexpr double KmToFtFactor = 3280.84;
constexpr double KmToKfFactor = 3.280839895013123;
constexpr double KmToMiFactor = 0.621371192237334;
constexpr double MToKmFactor = 0.001;
// The single-precision constant widened, as the instrument has always used it:
// FtToKm(KmToFt(1.0)) is therefore not exactly 1.0.
constexpr double FtToKmFactor = static_cast<double>(0.0003048f);
constexpr double KfToKmFactor = 0.3048;
constexpr double MiToKmFactor = 1.609344;

constexpr int UnitCount = 5;

// Per unit index: attenuation per km into the unit's dB/kf or dB/mi, and back.
// The mile factors differ from the distance ones on purpose.
constexpr double AttenuationFromKmFactors[UnitCount] = {1.0, 1.0, 0.3048, 0.3048, 1.60933};
constexpr double AttenuationToKmFactors[UnitCount] = {1.0, 1.0, 3.280839895013123,
                                                      3.280839895013123, 0.6213765977145769};

// Per unit index, called through the virtual slots; km needs no conversion.
using Conversion = double (TLenUnit::*)(double);
constexpr Conversion FromKmConversions[UnitCount] = {nullptr, &TLenUnit::KmToM, &TLenUnit::KmToFt,
                                                     &TLenUnit::KmToKf, &TLenUnit::KmToMi};
constexpr Conversion ToKmConversions[UnitCount] = {nullptr, &TLenUnit::MToKm, &TLenUnit::FtToKm,
                                                   &TLenUnit::KfToKm, &TLenUnit::MiToKm};
constexpr int NameSlots = 9;
constexpr int NameSize = 16;
constexpr int DbSlot = 5;
constexpr int TimeSlot = 6;

constexpr const char* Keywords[UnitCount] = {"km", "mt", "ft", "kf", "mi"};
constexpr int Decimals[UnitCount] = {5, 0, 0, 4, 4};
constexpr const char* StartupNames[NameSlots] = {"km", "m",  "ft", "kf", "mi",
                                                 "dB", "ns", "MM", "SM"};
constexpr const char* AttenuationNames[UnitCount] = {"dB/km", "dB/km", "dB/kf", "dB/kf", "dB/mi"};

// Shared by every instance, as the module library expects.
char unitNames[NameSlots][NameSize] = {"km", "m", "ft", "kf", "mi", "dB", "ns", "MM", "SM"};
char defaultAttenuationName[NameSize] = "dB/km";

void CopyName(char* slot, const char* name) {
    std::strncpy(slot, name, NameSize - 1);
    slot[NameSize - 1] = '\0';
}

bool IsUnit(int unit) {
    return unit >= duKM && unit <= duMI;
}

// truncate() of the band's rule, kept in double so that no value is out of
// range for the conversion; + 0.0 turns -0 into the 0 an integer would print.
double Truncate(double x) {
    return std::trunc(x) + 0.0;
}

}  // namespace

TLenUnit::~TLenUnit() = default;

double TLenUnit::KmToM(double x) {
    return x * KmToMFactor;
}
double TLenUnit::KmToFt(double x) {
    return x * KmToFtFactor;
}
double TLenUnit::KmToKf(double x) {
    return x * KmToKfFactor;
}
double TLenUnit::KmToMi(double x) {
    return x * KmToMiFactor;
}
double TLenUnit::MToKm(double x) {
    return x * MToKmFactor;
}
double TLenUnit::FtToKm(double x) {
    return x * FtToKmFactor;
}
double TLenUnit::KfToKm(double x) {
    return x * KfToKmFactor;
}
double TLenUnit::MiToKm(double x) {
    return x * MiToKmFactor;
}

void TLenUnit::ResetUnitNames() {
    for (int slot = 0; slot < NameSlots; ++slot) CopyName(unitNames[slot], StartupNames[slot]);
    // Deliberately not the start-up text.
    CopyName(unitNames[DbSlot], "db");
}

void TLenUnit::SetUnit(int newUnit) {
    unit = newUnit;
}
int TLenUnit::GetUnit() {
    return unit;
}

const char* TLenUnit::GetUnitKeyword(int index) {
    return IsUnit(index) ? Keywords[index] : "";
}
const char* TLenUnit::GetUnitKeyword() {
    return GetUnitKeyword(unit);
}

int TLenUnit::ParseUnitKeyword(const char* text) {
    if (!text) return duKM;
    // "km" is deliberately not matched: it is the fallback.
    for (int index = duMT; index <= duMI; ++index)
        if (std::strcmp(text, Keywords[index]) == 0) return index;
    return duKM;
}

double TLenUnit::ToKm(double x) {
    return ToKm(x, unit);
}

double TLenUnit::ToKm(double x, int fromUnit) {
    const Conversion convert = IsUnit(fromUnit) ? ToKmConversions[fromUnit] : nullptr;
    return convert ? (this->*convert)(x) : x;
}

double TLenUnit::FromKm(double x) {
    return FromKm(x, unit);
}

double TLenUnit::FromKm(double x, int toUnit) {
    const Conversion convert = IsUnit(toUnit) ? FromKmConversions[toUnit] : nullptr;
    return convert ? (this->*convert)(x) : x;
}

double TLenUnit::KmToShortUnit(double x) {
    return (unit == duFT || unit == duKF || unit == duMI) ? KmToFt(x) : KmToM(x);
}

double TLenUnit::AttenuationFromKm(double x) {
    return IsUnit(unit) ? x * AttenuationFromKmFactors[unit] : 0.0;
}

double TLenUnit::AttenuationToKm(double x) {
    return IsUnit(unit) ? x * AttenuationToKmFactors[unit] : 0.0;
}

int TLenUnit::GetDecimals(int ofUnit) {
    return IsUnit(ofUnit) ? Decimals[ofUnit] : 0;
}
int TLenUnit::GetDecimals() {
    return GetDecimals(unit);
}

int TLenUnit::FormatDistance(char* text, double km, bool withName) {
    return FormatDistance(text, km, unit, withName);
}

int TLenUnit::FormatDistance(char* text, double km, int inUnit, bool withName) {
    // Anything but a known unit is written as km.
    const int shown = IsUnit(inUnit) ? inUnit : duKM;
    const double value = FromKm(km, shown);
    const int decimals = Decimals[shown];
    if (withName) return std::sprintf(text, "%.*lf %s", decimals, value, unitNames[shown]);
    return std::sprintf(text, "%.*lf", decimals, value);
}

int TLenUnit::FormatAttenuation(char* text, double dbPerKm, bool withName, bool convert) {
    const double value = convert ? AttenuationFromKm(dbPerKm) : dbPerKm;
    if (!withName) return std::sprintf(text, "%.*lf", 3, value);
    const char* name = convert ? GetAttenuationUnitName() : defaultAttenuationName;
    return std::sprintf(text, "%.*lf %s", 3, value, name);
}

int TLenUnit::FormatRounded(char* text, double x, double magnitude, bool stripZeros) {
    // Each threshold adds half a step of the next band, so a value that would
    // round up into that band is already written in it.
    int written;
    if (magnitude + 50.0 >= 1000.0)
        written = std::sprintf(text, "%.0f", Truncate(x * 0.01 + 0.5) * 100.0);
    else if (magnitude + 5.0 >= 100.0)
        written = std::sprintf(text, "%.0f", Truncate(x * 0.1 + 0.5) * 10.0);
    else if (magnitude + 0.5 >= 10.0)
        written = std::sprintf(text, "%.0f", Truncate(x + 0.5));
    else if (magnitude + 0.05 >= 1.0)
        written = std::sprintf(text, "%0.1lf", x);
    else if (magnitude + 0.005 >= 0.1)
        written = std::sprintf(text, "%0.2lf", x);
    else
        written = std::sprintf(text, "%0.3lf", x);

    if (stripZeros) {
        int end = written;
        while (end > 1 && text[end - 1] == '0') --end;
        if (end > 1 && text[end - 1] == '.') --end;
        text[end] = '\0';
    }
    return written;
}

int TLenUnit::FormatRounded(char* text, double x) {
    return FormatRounded(text, x, x, false);
}

int TLenUnit::FormatFiberLabel(char* text, int fiberCode, int number) {
    // 651 is the multimode fibre code; every other code is single-mode.
    return std::sprintf(text, "%s-%d", fiberCode == 651 ? "MM" : "SM", number);
}

const char* TLenUnit::GetUnitName(int index) {
    return (index >= 0 && index < NameSlots) ? unitNames[index] : "";
}

const char* TLenUnit::GetUnitName() {
    return GetUnitName(unit);
}

const char* TLenUnit::GetShortUnitName() {
    return (unit == duKM || unit == duMT) ? "m" : "ft";
}

const char* TLenUnit::GetDbName() {
    return unitNames[DbSlot];
}

const char* TLenUnit::GetAttenuationUnitName() {
    return IsUnit(unit) ? AttenuationNames[unit] : "dB/";
}

const char* TLenUnit::GetTimeName() {
    return unitNames[TimeSlot];
}

void TLenUnit::InitUnitNames() {
    for (int slot = 0; slot < NameSlots; ++slot) CopyName(unitNames[slot], StartupNames[slot]);
}

void TLenUnit::SetDefaultAttenuationUnitName(const char* name) {
    CopyName(defaultAttenuationName, name ? name : "");
}
