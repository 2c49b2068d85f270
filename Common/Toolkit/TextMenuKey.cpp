#include "Common/Toolkit/TextMenuKey.h"

#include <QFontMetrics>
#include <QPainter>

#include "Platform/FatalError.h"

CTextMenuKey::CTextMenuKey(UINT commandId, const QString& caption, const QFont* fontForText)
    : CMenuKey(commandId), caption(caption) {
    OPM_ASSERT(fontForText);
    newFont = *fontForText;
}

void CTextMenuKey::SetCaption(const QString& text) {
    caption = text;
    update();
}

int CTextMenuKey::NeededWidth() const {
    const QRect key(QPoint(0, 0), CToolkitStyle::kKeySize);
    const int margins = key.width() - CToolkitStyle::FullLabelRect(key).width();
    return QFontMetrics(newFont).horizontalAdvance(caption) + margins + 8;
}

void CTextMenuKey::DrawFace(QPainter& painter, const QRect& rect, CToolkitStyle::KeyState state) {
    CToolkitStyle::PaintKeyBody(painter, rect, state);
    // In the soft-key row the badge takes the top; in a column the caption
    // has the whole key.
    const QRect area = GetOverlay().IsLoaded() ? CToolkitStyle::LabelRect(rect)
                                               : CToolkitStyle::FullLabelRect(rect);
    CToolkitStyle::PaintKeyLabel(painter, area, caption, newFont, state);
}
