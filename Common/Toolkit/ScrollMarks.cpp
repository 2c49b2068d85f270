#include "Common/Toolkit/ScrollMarks.h"

#include <QPainter>
#include <QPainterPath>

#include "Common/Toolkit/ToolkitStyle.h"

namespace {
constexpr int kMarkWidth = 22;
constexpr int kMarkHeight = 11;
}  // namespace

CScrollMarks::CScrollMarks(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_NoSystemBackground);
}

void CScrollMarks::SetMarks(bool moreAbove, bool moreBelow) {
    if (moreAbove == above && moreBelow == below) return;
    above = moreAbove;
    below = moreBelow;
    update();
}

void CScrollMarks::paintEvent(QPaintEvent*) {
    if (!above && !below) return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(CToolkitStyle::Background(), 1.5));
    painter.setBrush(CToolkitStyle::BadgeFill());
    const qreal right = width() - 10;
    const qreal left = right - kMarkWidth;
    if (above) {
        QPainterPath up;
        up.moveTo(left, 2 + kMarkHeight);
        up.lineTo((left + right) / 2, 2);
        up.lineTo(right, 2 + kMarkHeight);
        up.closeSubpath();
        painter.drawPath(up);
    }
    if (below) {
        const qreal bottom = height() - 4;
        QPainterPath down;
        down.moveTo(left, bottom - kMarkHeight);
        down.lineTo((left + right) / 2, bottom);
        down.lineTo(right, bottom - kMarkHeight);
        down.closeSubpath();
        painter.drawPath(down);
    }
}
