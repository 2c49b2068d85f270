#pragma once
// One soft key: an owner-drawn button that notifies its command id when
// pressed. Subclasses draw the face; every key draws its slot's overlay (the
// F-key badge) over it. The states read at a glance: raised when normal,
// yellow when focused, dark and sunk when pressed, faded when disabled.

#include <QAbstractButton>

#include "Common/Toolkit/ToolkitStyle.h"
#include "Common/Utilities/Bitmap.h"
#include "Platform/WinTypes.h"
#include "Platform/WindowMessages.h"

class CMenuKey : public QAbstractButton {
    Q_OBJECT
public:
    explicit CMenuKey(UINT commandId);
    ~CMenuKey() override;

    UINT GetCommandId() const { return commandId; }

    // Creates the key's window as a child of `parent` with the window id `id`.
    // False when the window exists already.
    bool Create(QWidget* parent, UINT id);
    // Null until the window is created.
    HWND GetSafeHwnd() const;
    UINT GetDlgCtrlID() const { return controlId; }

    // Loads the overlay bitmap; nothing happens when `bitmapId` is the
    // current one. Zero and a missing bitmap are fatal.
    void SetOverlay(UINT bitmapId);
    UINT GetOverlayId() const { return overlayId; }
    const CBitmap& GetOverlay() const { return overlayBitmap; }

    CToolkitStyle::KeyState State() const;
    QSize sizeHint() const override;

protected:
    // Draws the face for `state` into `rect` (the whole key).
    virtual void DrawFace(QPainter& painter, const QRect& rect, CToolkitStyle::KeyState state) = 0;
    // Where the overlay goes; the badge corner by default.
    virtual QRect OverlayRect() const;
    void paintEvent(QPaintEvent* event) override;

private:
    UINT commandId;
    CBitmap overlayBitmap;
    UINT overlayId = 0;
    UINT controlId = 0;
    bool created = false;
};
