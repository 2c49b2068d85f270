#pragma once
// How a message box sizes itself around its text and places itself: the text
// wrapped to two thirds of the application window's width, a 30-pixel margin,
// the OK key centred 20 pixels below the text, the box centred over its parent.

class CPopupFrame;
class QLabel;
class QPushButton;
class QWidget;

class CMessageLayout {
public:
    static constexpr int kTextTop = 10;
    static constexpr int kMargin = 30;
    static constexpr int kKeyGap = 20;
    static constexpr int kTextSlack = 10;

    // Sizes the frame's client area, places the text and the key (or two keys
    // side by side, as the question box has), and moves the box over `parent`.
    static void Arrange(CPopupFrame& frame, QLabel& text, QPushButton& key, const QWidget* parent);
    static void Arrange(CPopupFrame& frame, QLabel& text, QPushButton& left, QPushButton& right,
                        const QWidget* parent);

private:
    static void ArrangeRow(CPopupFrame& frame, QLabel& text, QPushButton* const* keys, int count,
                           const QWidget* parent);
};
