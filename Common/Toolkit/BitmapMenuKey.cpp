#include "Common/Toolkit/BitmapMenuKey.h"

#include <QPainter>
#include <QPainterPath>

#include "Platform/FatalError.h"

CBitmapMenuKey::CBitmapMenuKey(UINT commandId, UINT normalBitmapId, UINT focusedBitmapId)
    : CMenuKey(commandId), sameFaces(normalBitmapId == focusedBitmapId) {
    OPM_ASSERT(normalBitmap.LoadBitmap(normalBitmapId) && "Can't load key bitmap");
    OPM_ASSERT(focusedBitmap.LoadBitmap(focusedBitmapId) && "Can't load key bitmap");
    resize(normalBitmap.Size());
}

void CBitmapMenuKey::DrawFace(QPainter& painter, const QRect& rect, CToolkitStyle::KeyState state) {
    using State = CToolkitStyle::KeyState;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const QPixmap& face = state == State::Normal || state == State::Disabled
                              ? normalBitmap.Pixmap()
                              : focusedBitmap.Pixmap();
    switch (state) {
        case State::Normal:
            painter.drawPixmap(rect.topLeft(), face);
            break;
        case State::Disabled:
            // Faded so that it cannot be taken for a live key.
            painter.setOpacity(0.3);
            painter.drawPixmap(rect.topLeft(), face);
            break;
        case State::Focused:
        case State::Pressed: {
            const bool pressed = state == State::Pressed;
            const QPoint at = rect.topLeft() + (pressed ? QPoint(2, 2) : QPoint(0, 0));
            painter.drawPixmap(at, face);
            if (!sameFaces && !pressed) break;
            // One face for both states: mark the state over it.
            const QRectF body = QRectF(at, face.size()).adjusted(2.5, 2.5, -4.5, -4.5);
            QPainterPath outline;
            outline.addRoundedRect(body, 8, 8);
            if (pressed) painter.fillPath(outline, QColor(0, 0, 0, 90));
            painter.setPen(QPen(CToolkitStyle::FocusMark(), 4));
            painter.drawPath(outline);
            break;
        }
    }
    painter.restore();
}
