#pragma once
// The yes/no question box (dialog template 350): the text over a Yes and a No
// key. Left and Right move between the keys, Enter presses the marked one,
// Escape answers no. The No key starts marked: the questions warn of loss.

#include <QDialog>
#include <string>

#include "Common/Toolkit/PopupFrame.h"
#include "Platform/WinTypes.h"

class QLabel;
class QPushButton;

class CQuestionDialog : public QDialog {
    Q_OBJECT
public:
    static constexpr UINT IDD = 350;
    static constexpr int IDC_TEXT = 1192;

    CQuestionDialog(const std::wstring& text, QWidget* parent);

    // The key Enter would press.
    QPushButton* MarkedKey() const { return marked; }
    // Runs the box modally; IDYES or IDNO.
    int DoModal();
    // Asks and returns true for yes.
    static bool Ask(const std::wstring& text, QWidget* parent);

protected:
    virtual void OnInitDialog();
    // A key of the box as a virtual key; true when the box used it.
    virtual bool OnKeyDown(UINT virtualKey);

    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void MarkKey(QPushButton* key);

    std::wstring text;
    CPopupFrame frame;
    QPushButton* okBtn = nullptr;
    QPushButton* cancelBtn = nullptr;
    QPushButton* marked = nullptr;
    bool initialised = false;
};
