#pragma once
// A bitmap object of the old framework: empty until loaded from the current
// language pack by its number.

#include <QPixmap>

#include "Platform/WinTypes.h"

class CBitmap {
public:
    // False when the pack has no such bitmap; the object is then empty.
    bool LoadBitmap(UINT bitmapId);
    void DeleteObject();

    bool IsLoaded() const { return !pixmap.isNull(); }
    UINT Id() const { return id; }
    const QPixmap& Pixmap() const { return pixmap; }
    QSize Size() const { return pixmap.size(); }

private:
    QPixmap pixmap;
    UINT id = 0;
};
