#include "Common/Utilities/Bitmap.h"

#include "Common/Utilities/LanguageResources.h"

bool CBitmap::LoadBitmap(UINT bitmapId) {
    pixmap = LoadResourceBitmap(bitmapId);
    id = pixmap.isNull() ? 0 : bitmapId;
    return !pixmap.isNull();
}

void CBitmap::DeleteObject() {
    pixmap = QPixmap();
    id = 0;
}
