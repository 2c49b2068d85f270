#include "Common/Toolkit/MenuKey.h"

#include <QPainter>

#include "Platform/FatalError.h"

CMenuKey::CMenuKey(UINT commandId) : commandId(commandId) {
    setFocusPolicy(Qt::NoFocus);
    resize(CToolkitStyle::kKeySize);
}

CMenuKey::~CMenuKey() = default;

bool CMenuKey::Create(QWidget* parent, UINT id) {
    if (created || parent == nullptr) return false;
    setParent(parent);
    setObjectName(QString::number(id));
    setText(QString());
    controlId = id;
    created = true;
    return true;
}

HWND CMenuKey::GetSafeHwnd() const {
    return created ? WindowHandleOf(const_cast<CMenuKey*>(this)) : nullptr;
}

// clang-format off
void CMenuKey::SetOverlay(UINT bitmapId) {
    if (bitmapId == overlayId) return;
    OPM_ASSERT_AT(bitmapId, "MenuKey", 11);
    overlayBitmap.DeleteObject();
    overlayId = 0;
    OPM_ASSERT_AT(overlayBitmap.LoadBitmap( bitmapId ) && "Can't load overlay bitmap",
                  "MenuKey", 18);
    overlayId = bitmapId;
    update();
}
// clang-format on

CToolkitStyle::KeyState CMenuKey::State() const {
    if (!isEnabled()) return CToolkitStyle::KeyState::Disabled;
    if (isDown()) return CToolkitStyle::KeyState::Pressed;
    if (hasFocus()) return CToolkitStyle::KeyState::Focused;
    return CToolkitStyle::KeyState::Normal;
}

QSize CMenuKey::sizeHint() const {
    return CToolkitStyle::kKeySize;
}

QRect CMenuKey::OverlayRect() const {
    QRect place = CToolkitStyle::BadgeRect(rect());
    if (isDown()) place.translate(2, 2);
    return place;
}

void CMenuKey::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const CToolkitStyle::KeyState state = State();
    DrawFace(painter, rect(), state);
    if (overlayBitmap.IsLoaded()) {
        if (state == CToolkitStyle::KeyState::Disabled) painter.setOpacity(0.35);
        painter.drawPixmap(OverlayRect(), overlayBitmap.Pixmap());
    }
}
