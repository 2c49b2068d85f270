#pragma once
// The virtual-key codes the screens are written against, and the mapping of
// Qt's keys onto them (instrument keypad and PC keyboard alike).

#include "Platform/WinTypes.h"

constexpr UINT VK_BACK = 8;
constexpr UINT VK_TAB = 9;
constexpr UINT VK_RETURN = 13;
constexpr UINT VK_ESCAPE = 27;
constexpr UINT VK_SPACE = 32;
constexpr UINT VK_PRIOR = 33;
constexpr UINT VK_NEXT = 34;
constexpr UINT VK_END = 35;
constexpr UINT VK_HOME = 36;
constexpr UINT VK_LEFT = 37;
constexpr UINT VK_UP = 38;
constexpr UINT VK_RIGHT = 39;
constexpr UINT VK_DOWN = 40;
constexpr UINT VK_DELETE = 46;
constexpr UINT VK_F1 = 112;
constexpr UINT VK_F2 = 113;
constexpr UINT VK_F3 = 114;
constexpr UINT VK_F4 = 115;

// Directions of the arrow-pressed operation, in the order of VK_LEFT..VK_DOWN.
enum ArrowDirection : int { kArrowLeft = 0, kArrowUp = 1, kArrowRight = 2, kArrowDown = 3 };

// The virtual key of a Qt key (Qt::Key value); 0 for keys without one.
// Digits and letters map to their upper-case character codes, as on the old
// system; both Enter keys map to VK_RETURN.
UINT VirtualKeyFromQt(int qtKey);
// The Qt key that produces the virtual key; Qt::Key_unknown when none does.
int QtKeyFromVirtualKey(UINT virtualKey);
