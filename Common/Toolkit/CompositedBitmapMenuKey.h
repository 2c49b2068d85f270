#pragma once
// A soft key composed of three bitmaps: a face, a text bitmap blended over it
// and the slot's overlay, each at its own offset and size inside the key. One
// face bitmap thus serves many keys whose captions differ.

#include <QPoint>
#include <QSize>

#include "Common/Toolkit/MenuKey.h"

class CCompositedBitmapMenuKey : public CMenuKey {
    Q_OBJECT
public:
    // A size of (0, 0) draws that bitmap at its own size.
    CCompositedBitmapMenuKey(UINT commandId, UINT faceBitmapId, UINT textBitmapId,
                             QPoint textBitmapOffset, QSize textBitmapSize,
                             QPoint overlayBitmapOffset, QSize overlayBitmapSize);

    QRect TextRect() const;

protected:
    void DrawFace(QPainter& painter, const QRect& rect, CToolkitStyle::KeyState state) override;
    QRect OverlayRect() const override;

private:
    CBitmap faceBitmap;
    CBitmap textBitmap;
    QPoint textBitmapOffset;
    QSize textBitmapSize;
    QPoint overlayBitmapOffset;
    QSize overlayBitmapSize;
};
