#include "Common/Toolkit/BattaryBar.h"

#include <QFontMetricsF>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>

#include "Common/Utilities/LanguageResources.h"
#include "Platform/LocalTime.h"
#include "Platform/PowerStatus.h"

namespace {

// Below these levels the gauge turns amber, then red.
constexpr int kLowLevel = 40;
constexpr int kCriticalLevel = 15;

QColor LevelColour(int level) {
    if (level < kCriticalLevel) return QColor(0xd0, 0x10, 0x10);
    if (level < kLowLevel) return QColor(0xe0, 0x90, 0x00);
    return QColor(0x10, 0x90, 0x20);
}

// A lightning bolt filling `area`.
QPainterPath Bolt(const QRectF& area) {
    QPainterPath path;
    const auto at = [&](qreal x, qreal y) {
        return QPointF(area.left() + x * area.width(), area.top() + y * area.height());
    };
    path.moveTo(at(0.62, 0.0));
    path.lineTo(at(0.18, 0.58));
    path.lineTo(at(0.48, 0.58));
    path.lineTo(at(0.36, 1.0));
    path.lineTo(at(0.84, 0.40));
    path.lineTo(at(0.54, 0.40));
    path.closeSubpath();
    return path;
}

}  // namespace

CBattaryBar::CBattaryBar() = default;

bool CBattaryBar::Create(QWidget* parent, UINT templateId, DWORD /*style*/, UINT id) {
    if (created || parent == nullptr) return false;
    setParent(parent);
    if (!LoadDialogTemplate(templateId, this)) return false;
    setObjectName(QString::number(id));
    created = true;
    Refresh();
    return true;
}

void CBattaryBar::Refresh() {
    SYSTEM_POWER_STATUS_EX2 status{};
    int newLevel = -1;
    bool newCharging = false;
    bool newMainsOnly = false;
    if (GetSystemPowerStatusEx2(&status, sizeof(status), TRUE) != 0) {
        newMainsOnly = status.BatteryFlag == BATTERY_FLAG_NO_BATTERY;
        newCharging = !newMainsOnly && status.BatteryFlag != BATTERY_FLAG_UNKNOWN &&
                      (status.BatteryFlag & BATTERY_FLAG_CHARGING) != 0;
        if (status.BatteryLifePercent != BATTERY_PERCENTAGE_UNKNOWN)
            newLevel = status.BatteryLifePercent;
    }
    SYSTEMTIME now{};
    GetLocalTime(&now);
    const QString newClock = QStringLiteral("%1:%2")
                                 .arg(now.wHour, 2, 10, QChar('0'))
                                 .arg(now.wMinute, 2, 10, QChar('0'));

    if (newClock != clock) {
        clock = newClock;
        if (auto* label = qobject_cast<QLabel*>(GetDlgItem(this, IDC_BATTERY_CLOCK)))
            label->setText(clock);
    }
    if (newLevel != level || newCharging != charging || newMainsOnly != mainsOnly) {
        level = newLevel;
        charging = newCharging;
        mainsOnly = newMainsOnly;
        update();
    }
}

void CBattaryBar::paintEvent(QPaintEvent*) {
    const QWidget* gauge = GetDlgItem(this, IDC_BATTERY_GAUGE);
    if (gauge == nullptr) return;
    QPainter painter(this);
    PaintGauge(painter, gauge->geometry());
}

void CBattaryBar::PaintGauge(QPainter& painter, const QRect& area) const {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const int nubWidth = 5;
    const QRectF body = QRectF(area).adjusted(1.5, 1.5, -1.5 - nubWidth, -1.5);
    const QRectF nub(body.right(), body.center().y() - body.height() / 4, nubWidth,
                     body.height() / 2);

    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::black);
    painter.drawRoundedRect(nub, 1.5, 1.5);
    painter.setPen(QPen(Qt::black, 3));
    painter.setBrush(Qt::white);
    painter.drawRoundedRect(body, 4, 4);

    const QRectF inside = body.adjusted(4, 4, -4, -4);
    QFont font = painter.font();
    font.setBold(true);
    font.setPixelSize(static_cast<int>(inside.height()) - 1);
    painter.setFont(font);

    if (mainsOnly) {
        // No battery: the instrument runs on mains.
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(0x30, 0x30, 0x30));
        painter.drawRect(inside);
        painter.setPen(Qt::white);
        painter.drawText(inside, Qt::AlignCenter, QStringLiteral("AC"));
    } else if (level >= 0) {
        QRectF filled = inside;
        filled.setWidth(inside.width() * level / 100.0);
        painter.setPen(Qt::NoPen);
        painter.setBrush(LevelColour(level));
        painter.drawRect(filled);
        const QString percent = QStringLiteral("%1%").arg(level);
        if (charging) {
            painter.setBrush(Qt::black);
            painter.setPen(QPen(Qt::white, 1.5));
            const qreal side = inside.height() + 2;
            painter.drawPath(Bolt(QRectF(inside.left() + 2, inside.top() - 1, side * 0.7, side)));
            // The percentage keeps clear of the bolt, shrinking for "100%".
            const QRectF textArea = inside.adjusted(side * 0.7 + 5, 0, 0, 0);
            while (QFontMetricsF(font).horizontalAdvance(percent) > textArea.width() &&
                   font.pixelSize() > 8) {
                font.setPixelSize(font.pixelSize() - 1);
            }
            painter.setFont(font);
            painter.setPen(Qt::black);
            painter.drawText(textArea, Qt::AlignCenter, percent);
        } else {
            painter.setPen(Qt::black);
            painter.drawText(inside, Qt::AlignCenter, percent);
        }
    } else {
        painter.setPen(Qt::black);
        painter.drawText(inside, Qt::AlignCenter, QStringLiteral("?"));
    }
    painter.restore();
}
