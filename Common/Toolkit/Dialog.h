#pragma once
// The framework dialog the toolkit's screens derive from: a QDialog built
// from a numbered template of the language pack, with the old framework's
// life cycle (initialisation once before the first show, modal run returning
// a result code, destruction hook), numbered window timers, posted window
// messages, control notifications and an explicit data exchange step.

#include <QDialog>
#include <map>
#include <string>

#include "Common/Toolkit/DialogResults.h"
#include "Platform/WinTypes.h"
#include "Platform/WindowMessages.h"

struct NMHDR;

class CDialog : public QDialog {
    Q_OBJECT
public:
    explicit CDialog(UINT templateId, QWidget* parent = nullptr);
    ~CDialog() override;

    UINT TemplateId() const { return templateId; }

    // Builds the controls from the template and runs the initialisation, once.
    // False when the pack has no such template.
    bool Create();
    // Create, run modally, destroy. Returns the code given to EndDialog
    // (IDOK, IDCANCEL, ...), or -1 when the template is missing.
    int DoModal();
    void EndDialog(int result);
    bool IsCreated() const { return created; }

    // The control with the numeric id, or null.
    QWidget* GetDlgItem(int controlId) const;
    void SetDlgItemText(int controlId, const QString& text);
    QString GetDlgItemText(int controlId) const;

    // Numbered timers: SetTimer with a running id restarts it.
    UINT SetTimer(UINT timerId, UINT elapseMs);
    bool KillTimer(UINT timerId);
    bool IsTimerRunning(UINT timerId) const;

    // true: controls to data; false: data to controls.
    void UpdateData(bool saveAndValidate = true) { DoDataExchange(saveAndValidate); }

protected:
    virtual bool OnInitDialog() { return true; }
    virtual void OnDestroy() {}
    virtual void OnTimer(UINT /*timerId*/) {}
    // A message posted with PostMessageW; true when handled.
    virtual bool OnMessage(UINT /*message*/, WPARAM /*wParam*/, LPARAM /*lParam*/) { return false; }
    // A child control's notification; true when handled.
    virtual bool OnNotify(WPARAM /*wParam*/, NMHDR* /*header*/) { return false; }
    virtual void DoDataExchange(bool /*saveAndValidate*/) {}
    virtual void OnOK() { EndDialog(IDOK); }
    virtual void OnCancel() { EndDialog(IDCANCEL); }

    // Data exchange of a text control.
    void DdxText(bool saveAndValidate, int controlId, std::wstring& value);

    bool event(QEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

public slots:
    void accept() override { OnOK(); }
    void reject() override { OnCancel(); }

private:
    UINT templateId;
    bool created = false;
    std::map<UINT, int> timers;  // our id -> Qt's id
};
