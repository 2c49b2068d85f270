#include "Common/Toolkit/DigitEdit.h"

#include <QFontMetrics>
#include <QMouseEvent>
#include <QPainter>

namespace {
constexpr int kCellGap = 4;
const QColor kInk(0, 0, 0);
const QColor kPaper(255, 255, 255);
const QColor kCursorInk(255, 204, 0);
}  // namespace

CDigitEdit::CDigitEdit(QWidget* parent) : QWidget(parent) {
    QFont digits = font();
    digits.setPixelSize(44);
    digits.setBold(true);
    setFont(digits);
}

void CDigitEdit::SetText(const QString& newText, int newCursor) {
    text = newText;
    cursor = newCursor;
    update();
}

int CDigitEdit::CellWidth() const {
    const int fitting = text.isEmpty() ? width() : width() / static_cast<int>(text.size());
    return std::min(fitting, QFontMetrics(font()).horizontalAdvance(QLatin1Char('0')) + 14);
}

QRect CDigitEdit::CellRect(int index) const {
    const int cell = CellWidth();
    const int left = (width() - cell * static_cast<int>(text.size())) / 2;
    return QRect(left + index * cell, 0, cell, height())
        .adjusted(kCellGap / 2, 0, -kCellGap / 2, 0);
}

int CDigitEdit::CellAt(const QPoint& point) const {
    for (int i = 0; i < text.size(); ++i)
        if (CellRect(i).adjusted(-kCellGap / 2, 0, kCellGap / 2, 0).contains(point)) return i;
    return -1;
}

void CDigitEdit::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), kPaper);
    painter.setPen(QPen(kInk, 2));
    painter.drawRect(rect().adjusted(1, 1, -1, -1));
    for (int i = 0; i < text.size(); ++i) {
        const QRect cell = CellRect(i).adjusted(0, 6, 0, -6);
        const bool underCursor = i == cursor;
        if (underCursor) {
            painter.fillRect(cell, kInk);
            painter.setPen(kCursorInk);
        } else {
            painter.setPen(kInk);
        }
        painter.drawText(cell, Qt::AlignCenter, text.mid(i, 1));
    }
}

void CDigitEdit::mousePressEvent(QMouseEvent* event) {
    const int index = CellAt(event->position().toPoint());
    if (index >= 0) emit CellTapped(index);
    QWidget::mousePressEvent(event);
}
