#pragma once
// A soft key whose face is a bitmap of the language pack: one for the normal
// state, one for the focused or pressed state (the same number for both is
// common; the key then marks the state itself).

#include "Common/Toolkit/MenuKey.h"

class CBitmapMenuKey : public CMenuKey {
    Q_OBJECT
public:
    CBitmapMenuKey(UINT commandId, UINT normalBitmapId, UINT focusedBitmapId);

    UINT NormalBitmapId() const { return normalBitmap.Id(); }
    UINT FocusedBitmapId() const { return focusedBitmap.Id(); }

protected:
    void DrawFace(QPainter& painter, const QRect& rect, CToolkitStyle::KeyState state) override;

private:
    CBitmap normalBitmap;
    CBitmap focusedBitmap;
    bool sameFaces;
};
