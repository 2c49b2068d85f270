#pragma once
// A static text control with its own text and background colours. Like the
// old control it can take over a control of a dialog template (SubclassDlgItem),
// keeping that control's place, font, text and visibility.

#include <QColor>
#include <QLabel>

#include "Platform/WinTypes.h"

using COLORREF = DWORD;  // 0x00BBGGRR

class CColorStatic : public QLabel {
    Q_OBJECT
public:
    explicit CColorStatic(QWidget* parent = nullptr);

    // Replaces the template control `id` of `dialog` by this one. False when
    // the dialog has no such control.
    bool SubclassDlgItem(int id, QWidget* dialog);

    void SetTextColor(COLORREF color);
    void SetBkColor(COLORREF color);
    COLORREF GetTextColor() const { return textColor; }

    static QColor ToQColor(COLORREF color);

private:
    void ApplyColours();

    COLORREF textColor = 0x000000;
    COLORREF bkColor = 0xFFFFFF;
    bool hasTextColor = false;
    bool hasBkColor = false;
};
