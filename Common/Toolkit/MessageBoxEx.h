#pragma once
// The titled message box whose OK key can count seconds down and close the box
// by itself (dialog template 258). Any key or press on the box stops the count
// and leaves the box open until the user closes it.

#include <QDialog>
#include <QPointer>
#include <string>

#include "Common/Toolkit/PopupFrame.h"
#include "Platform/WinTypes.h"

class QLabel;
class QPushButton;

class CMessageBoxEx : public QDialog {
    Q_OBJECT
public:
    static constexpr UINT IDD = 258;
    static constexpr int IDC_TEXT = 1192;
    static constexpr UINT kCountdownTimerId = 777;
    static constexpr UINT kCountdownPeriodMs = 1000;

    // The kinds a caller may give; the caption strip shows which it is.
    enum class Kind { Plain = 0, Info = 1, Error = 2, Warning = 3 };

    CMessageBoxEx(const std::wstring& text, const std::wstring& title, unsigned seconds,
                  QWidget* parent, bool showOk = true);
    ~CMessageBoxEx() override;

    void SetKind(Kind kind) { this->kind = kind; }
    // Runs the box modally; IDOK when the countdown ends or OK is pressed.
    int DoModal();

    unsigned SecondsLeft() const { return secondsLeft; }
    QString OkLabel() const;

protected:
    virtual void OnInitDialog();
    // Timer 777 counts down; other timers are not the box's.
    virtual void OnTimer(UINT timerId);
    // The window timer of the old system; a test replaces it to drive time.
    virtual UINT SetTimer(UINT timerId, UINT periodMs);
    virtual void KillTimer(UINT timerId);

    void showEvent(QShowEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void done(int result) override;

private:
    void SetOkLabel();
    void Layout();
    void InterruptCountdown();
    void OnDestroy();

    std::wstring title;
    std::wstring text;
    UINT timerId = 0;
    unsigned secondsLeft;
    QPointer<QWidget> savedFocus;
    bool showOk;

    Kind kind = Kind::Plain;
    CPopupFrame frame;
    QLabel* textCtrl = nullptr;
    QPushButton* okBtn = nullptr;
    int qtTimerId = 0;
    bool initialised = false;
    bool destroyed = false;
};
