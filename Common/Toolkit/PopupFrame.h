#pragma once
// The drawn frame of the toolkit's pop-up boxes. The instrument's screen has
// no window manager, so a box draws its own border and caption strip; the
// dialog template is built into the client area inside them.

#include <QRect>
#include <QString>

class QDialog;
class QLabel;
class QPushButton;
class QWidget;

class CPopupFrame {
public:
    static constexpr int kBorder = 3;
    static constexpr int kCaptionHeight = 34;

    // Turns `box` into a frameless pop-up with the toolkit's look.
    CPopupFrame(QDialog& box, bool withCaption);

    // Where the template's controls live.
    QWidget* Client() const { return client; }
    // Sets the caption strip (when there is one) and the window title.
    void SetCaption(const QString& caption);
    // The caption strip's background (a warning or an error shows in colour).
    void SetCaptionColour(const QString& colour);
    // Width the caption text needs; 0 without a caption strip.
    int CaptionTextWidth() const;
    // Gives the client area this size; the window grows by the frame around it.
    void ResizeClient(const QSize& clientSize);
    QSize WindowSizeFor(const QSize& clientSize) const;

    // Shows or clears the focus mark on a key. The mark follows the box's own
    // idea of the current key, whether or not its window has the focus.
    static void Mark(QPushButton* key, bool marked);

    // The whole screen (GetSystemMetrics of the old system).
    static QRect ScreenRect();
    // What a box is laid out against: the application's window, found through
    // `parent` (past any boxes it stands on), else the active window, else
    // any shown window; the screen only when there is no window. On the
    // instrument they are the same; on a desktop the window is smaller.
    static QRect WindowRect(const QWidget* parent);
    // Centred over `over`; centred in `area` instead when that would reach
    // outside it.
    static QRect CentredRect(const QSize& size, const QRect& over, const QRect& area);
    // The rectangle a box of this size takes over its parent, within the
    // application's window.
    static QRect PlaceOver(const QSize& size, const QWidget* parent);

private:
    QDialog& box;
    QLabel* caption = nullptr;
    QWidget* client = nullptr;
};
