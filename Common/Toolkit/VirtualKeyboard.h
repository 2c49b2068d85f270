#pragma once
// Modal text entry (dialog template 353): a title, the text being entered and
// an on-screen keyboard. The arrows move the marked key and Enter presses it;
// a tap presses a key; a PC keyboard types straight into the text (after which
// Enter confirms). An optional name check may refuse the text on OK.

#include <QDialog>
#include <QPointer>
#include <functional>
#include <string>
#include <vector>

#include "Common/Toolkit/PopupFrame.h"
#include "Platform/WinTypes.h"

class QLineEdit;
class QPushButton;

class CVirtualKeyboard : public QDialog {
    Q_OBJECT
public:
    static constexpr UINT IDD = 353;
    static constexpr int IDC_TEXT = 1301;
    static constexpr int IDC_BACKSPACE = 1410;
    static constexpr int IDC_SHIFT = 1411;
    static constexpr int IDC_SPACE = 1412;
    static constexpr int IDC_CURSOR_LEFT = 1413;
    static constexpr int IDC_CURSOR_RIGHT = 1414;
    // Character keys carry ids from here on; their caption is the character.
    static constexpr int IDC_FIRST_CHARACTER = 1420;
    static constexpr int IDC_LAST_CHARACTER = 1499;
    static constexpr int kMaxLength = 64;

    // True when the text will do; otherwise the complaint is shown and the
    // keyboard stays open.
    using NameCheck = std::function<bool(const std::wstring& text, std::wstring& complaint)>;

    CVirtualKeyboard(const std::wstring& title, const std::wstring& initialText, QWidget* parent);

    void SetNameCheck(NameCheck check) { nameCheck = std::move(check); }
    // Runs the entry modally; IDOK or IDCANCEL.
    int DoModal();
    // The entered text after OK, the initial text otherwise.
    const std::wstring& GetText() const { return text; }

    // The key the arrows have marked (its control id).
    int MarkedKey() const;

protected:
    virtual void OnInitDialog();
    // A key as a virtual key; true when the keyboard used it.
    virtual bool OnKeyDown(UINT virtualKey);
    virtual void OnOK();
    virtual void OnCancel();

    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void reject() override;
    void done(int result) override;

private:
    void Press(QPushButton* key);
    void Mark(QPushButton* key);
    void MoveMark(int direction);
    void SetShifted(bool shifted);

    std::wstring title;
    std::wstring text;
    NameCheck nameCheck;
    QPointer<QWidget> savedFocus;

    CPopupFrame frame;
    QLineEdit* edit = nullptr;
    std::vector<QPushButton*> keys;
    std::vector<QPushButton*> characterKeys;
    QPushButton* marked = nullptr;
    bool shifted = false;
    bool initialised = false;
};
