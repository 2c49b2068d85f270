#include "Common/Bitmap.h"

#include "Common/LanguageResources.h"

bool CBitmap::LoadBitmap(UINT bitmapId) {
    pixmap = LoadResourceBitmap(bitmapId);
    id = pixmap.isNull() ? 0 : bitmapId;
    return !pixmap.isNull();
}

void CBitmap::DeleteObject() {
    pixmap = QPixmap();
    id = 0;
}
