#pragma once
// The value editor (dialog template 352): a number in a fixed-width row of
// large digits with a digit cursor. Left/Right move the cursor, Up/Down turn
// the digit, digits typed on a keyboard overwrite it; a tap on a digit puts
// the cursor there. OK refuses a value outside the range with a message;
// cancel gives the start value back.

#include <QDialog>
#include <string>

#include "Common/Toolkit/PopupFrame.h"
#include "Common/Toolkit/ValueDigits.h"
#include "Platform/WinTypes.h"

class CDigitEdit;
class QLabel;

class CChangeValueDialog : public QDialog {
    Q_OBJECT
public:
    static constexpr UINT IDD = 352;
    static constexpr int IDC_VALUE = 1195;
    static constexpr int IDC_RANGE = 1196;
    static constexpr int IDC_CURSOR_LEFT = 1201;
    static constexpr int IDC_CURSOR_RIGHT = 1202;
    static constexpr int IDC_DIGIT_UP = 1203;
    static constexpr int IDC_DIGIT_DOWN = 1204;
    static constexpr const char* kRangeMessageFormat = "%s\n%.*lf...%.*lf.";

    CChangeValueDialog(const std::wstring& title, double value, double minValue, double maxValue,
                       int decimals, QWidget* parent);

    // Runs the editor modally; IDOK with the entered value, or IDCANCEL.
    int DoModal();
    // The entered value after OK, the start value after cancel.
    double GetValue() const { return value; }

    const CValueDigits& Digits() const { return digits; }
    // The message OK shows for a value outside the range.
    std::wstring RangeMessage() const;

protected:
    virtual void OnInitDialog();
    // A key as a virtual key, with the character it types; true when used.
    virtual bool OnKeyDown(UINT virtualKey, QChar typed);
    virtual void OnOK();
    virtual void OnCancel();

    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void reject() override;

private:
    void ShowDigits();

    std::wstring title;
    double startValue;
    double value;
    double minValue;
    double maxValue;
    int decimals;
    CValueDigits digits;

    CPopupFrame frame;
    CDigitEdit* edit = nullptr;
    bool initialised = false;
};
