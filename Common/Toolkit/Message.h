#pragma once
// The toolkit's plain modal message: one text and an OK key, used for every
// error the user has to acknowledge (dialog template 348).

#include <QDialog>
#include <string>

#include "Common/Toolkit/PopupFrame.h"
#include "Platform/WinTypes.h"

class QLabel;
class QPushButton;

class CMessage : public QDialog {
    Q_OBJECT
public:
    static constexpr UINT IDD = 348;
    static constexpr int IDC_TEXT = 1192;

    CMessage(const std::wstring& text, QWidget* parent);
    // The text is string resource `textCode` of the language pack.
    CMessage(UINT textCode, QWidget* parent);

    // Runs the box modally; IDOK or IDCANCEL.
    int DoModal();

    const std::wstring& Text() const { return text; }

protected:
    void showEvent(QShowEvent* event) override;
    virtual void OnInitDialog();

private:
    static std::wstring LoadText(UINT textCode);

    std::wstring text;
    CPopupFrame frame;
    bool initialised = false;
};
