#pragma once
// How a control follows its dialog when the dialog's size differs from the
// template's: which edges it keeps its distance to, and an optional fixed
// height. A control anchored to both opposite edges stretches; anchored to
// neither it keeps its place relative to the centre.

struct LayoutOptions {
    enum Anchor : unsigned { kLeft = 1, kTop = 2, kRight = 4, kBottom = 8 };

    unsigned anchors = kLeft | kTop;
    // Height the control is given (0: its height in the template).
    int height = 0;
};
