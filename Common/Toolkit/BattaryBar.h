#pragma once
// The status strip in a screen's corner: the clock and the battery gauge
// (charge level, charging, or mains power without a battery). Built from its
// own template; refreshed by the screen's one-second timer.

#include <QWidget>

#include "Platform/WinTypes.h"

constexpr UINT IDD_BATTARY_BAR = 381;
constexpr DWORD CBRS_NOALIGN = 0;
constexpr int IDC_BATTERY_CLOCK = 1080;
constexpr int IDC_BATTERY_GAUGE = 1081;

class CBattaryBar : public QWidget {
    Q_OBJECT
public:
    CBattaryBar();

    // Builds the bar from template `templateId` as a child of `parent`, with
    // the control id `id`. False when the template is missing or the bar
    // exists already.
    bool Create(QWidget* parent, UINT templateId, DWORD style, UINT id);
    // Reads the power state and the clock and repaints when either changed.
    void Refresh();

    // What the bar shows, as of the last Refresh.
    int Level() const { return level; }  // percent, -1 when unknown
    bool IsCharging() const { return charging; }
    bool OnMainsWithoutBattery() const { return mainsOnly; }
    QString ClockText() const { return clock; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void PaintGauge(QPainter& painter, const QRect& area) const;

    bool created = false;
    int level = -1;
    bool charging = false;
    bool mainsOnly = false;
    QString clock;
};
