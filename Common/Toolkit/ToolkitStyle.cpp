#include "Common/Toolkit/ToolkitStyle.h"

#include <QFontMetrics>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

namespace {
constexpr int kRadius = 8;
constexpr int kBorderWidth = 2;
constexpr int kFocusWidth = 4;
constexpr int kPressShift = 2;
}  // namespace

QColor CToolkitStyle::Background() {
    return QColor(0xff, 0xff, 0xff);
}
QColor CToolkitStyle::Text() {
    return QColor(0x00, 0x00, 0x00);
}
QColor CToolkitStyle::DisabledText() {
    return QColor(0x9a, 0x9a, 0x9a);
}
QColor CToolkitStyle::FocusMark() {
    return QColor(0xff, 0xcc, 0x00);
}
QColor CToolkitStyle::BadgeFill() {
    return QColor(0x0a, 0x2f, 0x6b);
}

QFont CToolkitStyle::KeyFont(int pixelHeight) {
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setStyleHint(QFont::SansSerif);
    font.setPixelSize(pixelHeight);
    font.setWeight(QFont::Bold);
    return font;
}

void CToolkitStyle::PaintKeyBody(QPainter& painter, const QRect& rect, KeyState state) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    QRectF body = QRectF(rect).adjusted(1, 1, -1, -1);
    if (state == KeyState::Pressed) body.translate(kPressShift, kPressShift);

    // A dark lip under the key makes it read as raised; a pressed key sits on it.
    if (state != KeyState::Pressed && state != KeyState::Disabled) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(0x60, 0x60, 0x60));
        painter.drawRoundedRect(body.translated(kPressShift, kPressShift), kRadius, kRadius);
        body.adjust(0, 0, -kPressShift, -kPressShift);
    }

    QLinearGradient fill(body.topLeft(), body.bottomLeft());
    QColor border(0x20, 0x20, 0x20);
    qreal borderWidth = kBorderWidth;
    switch (state) {
        case KeyState::Normal:
            fill.setColorAt(0, QColor(0xfa, 0xfa, 0xfa));
            fill.setColorAt(1, QColor(0xc8, 0xc8, 0xc8));
            break;
        case KeyState::Focused:
            fill.setColorAt(0, QColor(0xff, 0xe6, 0x80));
            fill.setColorAt(1, FocusMark());
            border = Text();
            borderWidth = kFocusWidth;
            break;
        case KeyState::Pressed:
            fill.setColorAt(0, QColor(0x20, 0x20, 0x20));
            fill.setColorAt(1, QColor(0x48, 0x48, 0x48));
            border = Text();
            break;
        case KeyState::Disabled:
            fill.setColorAt(0, QColor(0xee, 0xee, 0xee));
            fill.setColorAt(1, QColor(0xe2, 0xe2, 0xe2));
            border = QColor(0xb0, 0xb0, 0xb0);
            break;
    }
    const qreal inset = borderWidth / 2;
    painter.setPen(QPen(border, borderWidth));
    painter.setBrush(fill);
    painter.drawRoundedRect(body.adjusted(inset, inset, -inset, -inset), kRadius, kRadius);
    painter.restore();
}

QRect CToolkitStyle::LabelRect(const QRect& keyRect) {
    const int top = kBadgeSize.height() + 4;
    return keyRect.adjusted(6, top, -8, -6);
}

QRect CToolkitStyle::BadgeRect(const QRect& keyRect) {
    return QRect(keyRect.topLeft() + QPoint(6, 5), kBadgeSize);
}

QRect CToolkitStyle::FullLabelRect(const QRect& keyRect) {
    return keyRect.adjusted(8, 4, -10, -6);
}

void CToolkitStyle::PaintKeyLabel(QPainter& painter, const QRect& labelArea, const QString& text,
                                  const QFont& font, KeyState state) {
    if (text.isEmpty()) return;
    painter.save();
    QRect area = labelArea;
    if (state == KeyState::Pressed) area.translate(kPressShift, kPressShift);
    const QColor colour = state == KeyState::Pressed    ? Background()
                          : state == KeyState::Disabled ? DisabledText()
                                                        : Text();
    QFont fitted = font;
    const int flags = Qt::AlignCenter | Qt::TextWordWrap;
    // Shrink until the text fits; an unreadable key is worse than a small one.
    while (fitted.pixelSize() > 10) {
        const QRect needed = QFontMetrics(fitted).boundingRect(area, flags, text);
        if (needed.width() <= area.width() && needed.height() <= area.height()) break;
        fitted.setPixelSize(fitted.pixelSize() - 1);
    }
    painter.setFont(fitted);
    painter.setPen(colour);
    painter.drawText(area, flags, text);
    painter.restore();
}

void CToolkitStyle::PaintBadge(QPainter& painter, const QRect& rect, const QString& text) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Background(), 1));
    painter.setBrush(BadgeFill());
    painter.drawRoundedRect(QRectF(rect).adjusted(0.5, 0.5, -0.5, -0.5), 4, 4);
    painter.setPen(Background());
    painter.setFont(KeyFont(rect.height() - 6));
    painter.drawText(rect, Qt::AlignCenter, text);
    painter.restore();
}

QPixmap CToolkitStyle::KeyFace(const QString& text) {
    QPixmap face(kKeySize);
    face.fill(Qt::transparent);
    QPainter painter(&face);
    const QRect rect(QPoint(0, 0), kKeySize);
    PaintKeyBody(painter, rect, KeyState::Normal);
    PaintKeyLabel(painter, LabelRect(rect), text, KeyFont(), KeyState::Normal);
    return face;
}

QString CToolkitStyle::ScreenStyleSheet() {
    return QStringLiteral(R"(
QDialog { background: #ffffff; }
QLabel { color: #000000; background: transparent; }
QPushButton, QToolButton { color: #000000; background: #e6e6e6; border: 2px solid #303030;
                           border-radius: 4px; padding: 2px 14px; min-height: 36px; }
QPushButton:focus, QToolButton:focus { background: #ffcc00; border: 3px solid #000000; }
QPushButton:pressed, QToolButton:pressed { background: #303030; color: #ffffff; }
QPushButton:disabled, QToolButton:disabled { color: #9a9a9a; border-color: #b0b0b0; }
QLineEdit, QListView, QTreeView, QListWidget, QTreeWidget, QTextEdit, QPlainTextEdit
    { color: #000000; background: #ffffff; border: 2px solid #303030; }
QLineEdit:focus, QListView:focus, QTreeView:focus, QListWidget:focus, QTreeWidget:focus,
QTextEdit:focus, QPlainTextEdit:focus { border: 4px solid #ffcc00; }
QAbstractItemView::item:selected { background: #0a2f6b; color: #ffffff; }
)");
}
