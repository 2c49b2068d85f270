#include "Common/Toolkit/ValueDigits.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace {
std::string Printf(const char* format, int width, int decimals, double value) {
    char buffer[400];
    std::snprintf(buffer, sizeof buffer, format, width, decimals, value);
    return buffer;
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}
}  // namespace

CValueDigits::CValueDigits(double value, double minValue, double maxValue, int decimals)
    : minValue(minValue),
      maxValue(maxValue),
      decimals(std::clamp(decimals, 0, 9)),
      isSigned(minValue < 0.0) {
    // A value that can't be shown (a meter reading of NaN, say) starts at the
    // range's nearest end to zero instead.
    if (!std::isfinite(value)) value = std::clamp(0.0, minValue, maxValue);
    // Wide enough for both ends of the range and for the start value.
    for (double shown : {minValue, maxValue, value}) {
        if (!std::isfinite(shown)) continue;
        width = std::max(width, static_cast<int>(Format(shown).size()));
    }
    text = Format(value);
    // Start on the units digit: the one a user changes most.
    const auto point = text.find('.');
    cursor = static_cast<int>(point == std::string::npos ? text.size() : point) - 1;
    if (!Editable(cursor)) MoveRight();
}

std::string CValueDigits::Format(double value) const {
    // Magnitudes only: a negative value printed unsigned would carry a '-'.
    if (!isSigned) value = std::fabs(value);
    return Printf(isSigned ? kSignedFormat : kUnsignedFormat, width, decimals, value);
}

double CValueDigits::Value() const {
    return std::strtod(text.c_str(), nullptr);
}

bool CValueDigits::InRange() const {
    const double value = Value();
    return value >= minValue && value <= maxValue;
}

bool CValueDigits::Editable(int index) const {
    if (index < 0 || index >= static_cast<int>(text.size())) return false;
    const char c = text[static_cast<size_t>(index)];
    return IsDigit(c) || (isSigned && index == 0 && (c == '+' || c == '-'));
}

void CValueDigits::MoveLeft() {
    for (int i = cursor - 1; i >= 0; --i)
        if (Editable(i)) {
            cursor = i;
            return;
        }
}

void CValueDigits::MoveRight() {
    for (int i = cursor + 1; i < static_cast<int>(text.size()); ++i)
        if (Editable(i)) {
            cursor = i;
            return;
        }
}

bool CValueDigits::MoveTo(int index) {
    if (!Editable(index)) return false;
    cursor = index;
    return true;
}

void CValueDigits::StepUp() {
    Step(+1);
}
void CValueDigits::StepDown() {
    Step(-1);
}

void CValueDigits::Step(int delta) {
    if (!Editable(cursor)) return;
    char& c = text[static_cast<size_t>(cursor)];
    if (IsDigit(c)) {
        c = static_cast<char>('0' + (c - '0' + delta + 10) % 10);
    } else {
        c = c == '+' ? '-' : '+';
    }
}

bool CValueDigits::Type(char typed) {
    if (IsDigit(typed)) {
        if (!IsDigit(text[static_cast<size_t>(cursor)])) MoveRight();
        if (!IsDigit(text[static_cast<size_t>(cursor)])) return false;
        text[static_cast<size_t>(cursor)] = typed;
        MoveRight();
        return true;
    }
    if (isSigned && (typed == '+' || typed == '-')) {
        text[0] = typed;
        return true;
    }
    return false;
}
