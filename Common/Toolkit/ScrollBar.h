#pragma once
// A scroll bar control made the old way: an empty object first, its window
// created later with a style, a rectangle, a parent and a control id. Drawn
// thick and dark so that a finger finds it and it reads outdoors.

#include <QRect>
#include <QScrollBar>

#include "Platform/WinTypes.h"

using CRect = QRect;

constexpr DWORD WS_CHILD = 0x40000000;
constexpr DWORD WS_VISIBLE = 0x10000000;
constexpr DWORD SBS_VERT = 0x0001;

class CScrollBar : public QScrollBar {
    Q_OBJECT
public:
    static constexpr int kWidth = 30;

    CScrollBar();

    // SBS_VERT makes it vertical, WS_VISIBLE shows it. False when the window
    // exists already or a child bar has no parent.
    bool Create(DWORD style, const CRect& rect, QWidget* parent, UINT id);
    bool IsCreated() const { return created; }

private:
    bool created = false;
};
