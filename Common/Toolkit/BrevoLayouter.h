#pragma once
// Keeps a dialog's registered controls in place when the dialog is resized
// (a desktop window, another screen size): bound once to its dialog, it
// re-lays the controls out on every resize.

#include <QObject>
#include <QPointer>

#include "Common/Toolkit/LayoutHelper.h"
#include "Common/Toolkit/LayoutOptions.h"

class QWidget;

class BrevoLayouter : public QObject {
    Q_OBJECT
public:
    BrevoLayouter() = default;

    // Binds to the dialog; the dialog's present size is the reference size.
    void Bind(QWidget* targetWnd);
    bool IsBound() const { return inited; }
    // Registers a control of the bound dialog and places it at once.
    void AddControl(QWidget& control, const LayoutOptions& options);
    // Places all registered controls for the dialog's present size.
    void Layout();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool inited = false;
    QPointer<QWidget> target;
    CLayoutHelper layoutHelper;
};
