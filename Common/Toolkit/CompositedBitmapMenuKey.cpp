#include "Common/Toolkit/CompositedBitmapMenuKey.h"

#include <QPainter>
#include <QPainterPath>

#include "Platform/FatalError.h"

namespace {
// How strongly the text bitmap is blended in each state (the old AlphaBlend's
// constant source alpha, per-pixel alpha applying on top).
constexpr qreal kTextOpacity = 1.0;
constexpr qreal kDisabledOpacity = 0.3;
constexpr QPoint kPressShift(2, 2);
}  // namespace

CCompositedBitmapMenuKey::CCompositedBitmapMenuKey(UINT commandId, UINT faceBitmapId,
                                                   UINT textBitmapId, QPoint textBitmapOffset,
                                                   QSize textBitmapSize, QPoint overlayBitmapOffset,
                                                   QSize overlayBitmapSize)
    : CMenuKey(commandId),
      textBitmapOffset(textBitmapOffset),
      textBitmapSize(textBitmapSize),
      overlayBitmapOffset(overlayBitmapOffset),
      overlayBitmapSize(overlayBitmapSize) {
    OPM_ASSERT(faceBitmap.LoadBitmap(faceBitmapId) && "Can't load face bitmap");
    // clang-format off
    OPM_ASSERT(textBitmap.LoadBitmap( textBitmapId ) && "Can't load text bitmap");
    // clang-format on
    if (this->textBitmapSize.isEmpty()) this->textBitmapSize = textBitmap.Size();
    resize(faceBitmap.Size());
}

QRect CCompositedBitmapMenuKey::TextRect() const {
    return QRect(textBitmapOffset, textBitmapSize);
}

QRect CCompositedBitmapMenuKey::OverlayRect() const {
    const QSize size = overlayBitmapSize.isEmpty() ? GetOverlay().Size() : overlayBitmapSize;
    const QPoint shift = State() == CToolkitStyle::KeyState::Pressed ? kPressShift : QPoint();
    return QRect(overlayBitmapOffset + shift, size);
}

void CCompositedBitmapMenuKey::DrawFace(QPainter& painter, const QRect& rect,
                                        CToolkitStyle::KeyState state) {
    using State = CToolkitStyle::KeyState;
    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const bool pressed = state == State::Pressed;
    const QPoint shift = pressed ? kPressShift : QPoint();
    if (state == State::Disabled) painter.setOpacity(kDisabledOpacity);
    painter.drawPixmap(rect.topLeft() + shift, faceBitmap.Pixmap());
    painter.setOpacity(state == State::Disabled ? kDisabledOpacity : kTextOpacity);
    painter.drawPixmap(TextRect().translated(rect.topLeft() + shift), textBitmap.Pixmap());
    painter.setOpacity(1.0);
    if (state == State::Focused || pressed) {
        painter.setRenderHint(QPainter::Antialiasing);
        QPainterPath outline;
        outline.addRoundedRect(
            QRectF(rect.topLeft() + shift, faceBitmap.Size()).adjusted(2.5, 2.5, -4.5, -4.5), 8, 8);
        if (pressed) painter.fillPath(outline, QColor(0, 0, 0, 90));
        painter.setPen(QPen(CToolkitStyle::FocusMark(), 4));
        painter.drawPath(outline);
    }
    painter.restore();
}
