#pragma once
// The modeless "busy" box put over a screen while a long operation runs on the
// user-interface thread (dialog template 351). It is painted as soon as it is
// created, since the operation holds the event loop until it is closed.

#include <QDialog>
#include <string>

#include "Common/Toolkit/PopupFrame.h"
#include "Platform/WinTypes.h"

class QLabel;
class QTimer;

class CProcessingDialog : public QDialog {
    Q_OBJECT
public:
    static constexpr UINT IDD = 351;
    static constexpr int IDC_TEXT = 1192;
    static constexpr int IDC_INDICATOR = 1193;
    static constexpr int kSpokes = 12;

    // An empty text keeps the template's own ("Please wait...").
    explicit CProcessingDialog(QWidget* parent, const std::wstring& text = std::wstring());
    ~CProcessingDialog() override;

    // Shows the box over its parent and paints it at once.
    void Create();
    // Takes the box away; the destructor does it too.
    void Close();

    // The indicator's step, advancing while the event loop runs.
    int Phase() const { return phase; }

private:
    void Build();
    void Advance();
    void DrawIndicator();

    std::wstring text;
    CPopupFrame frame;
    QLabel* textCtrl = nullptr;
    QLabel* indicator = nullptr;
    QTimer* animation = nullptr;
    int phase = 0;
};
