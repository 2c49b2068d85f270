#pragma once
// The value editor's number as a row of fixed-width characters with a cursor:
// "%+0*.*lf" when the range admits negative values, "%0*.*lf" otherwise. The
// cursor stands on a digit or on the sign, never on the point; stepping a
// digit turns it round 0..9 without carrying, so the width never changes.

#include <string>

class CValueDigits {
public:
    CValueDigits(double value, double minValue, double maxValue, int decimals);

    const std::string& Text() const { return text; }
    int Cursor() const { return cursor; }
    bool Signed() const { return isSigned; }
    // The number the characters spell.
    double Value() const;
    bool InRange() const;

    void MoveLeft();
    void MoveRight();
    // Puts the cursor on the character at `index` if it can stand there.
    bool MoveTo(int index);
    void StepUp();
    void StepDown();
    // A typed character: a digit replaces the one under the cursor and the
    // cursor moves right; '+' or '-' sets the sign. False for anything else.
    bool Type(char typed);

    // The formats the edit shows the number with.
    static constexpr const char* kSignedFormat = "%+0*.*lf";
    static constexpr const char* kUnsignedFormat = "%0*.*lf";

private:
    bool Editable(int index) const;
    void Step(int delta);
    std::string Format(double value) const;

    double minValue;
    double maxValue;
    int decimals;
    bool isSigned;
    int width = 0;
    std::string text;
    int cursor = 0;
};
