#pragma once
// The toolkit's look, in one place: a 640x480 screen read at arm's length
// outdoors. Black on white, thick borders, a yellow focus mark, soft keys
// drawn like the raised F1-F4 keys under the screen. The key painters are
// also used at build time to draw the language packs' key bitmaps, so a
// bitmap face and a text key look alike.

#include <QColor>
#include <QFont>
#include <QRect>
#include <QSize>
#include <QString>

class QPainter;
class QPixmap;

class CToolkitStyle {
public:
    enum class KeyState { Normal, Focused, Pressed, Disabled };

    // Size of a soft key and of its F-key badge (the overlay bitmaps).
    static constexpr QSize kKeySize{152, 58};
    static constexpr QSize kBadgeSize{30, 20};
    static constexpr QSize kScreenSize{640, 480};

    static QColor Background();
    static QColor Text();
    static QColor DisabledText();
    static QColor FocusMark();
    static QColor BadgeFill();

    // Bold sans font of the given pixel height, for faces drawn without a
    // screen's own font.
    static QFont KeyFont(int pixelHeight = 19);

    // The raised key body in the given state, filling `rect`.
    static void PaintKeyBody(QPainter& painter, const QRect& rect, KeyState state);
    // A key's label centred in `area`, wrapped on two lines when one does not
    // hold it, shrunk when two do not; moved with the body when pressed.
    static void PaintKeyLabel(QPainter& painter, const QRect& area, const QString& text,
                              const QFont& font, KeyState state);
    // Where the label of a key with a badge goes: below the badge row.
    static QRect LabelRect(const QRect& keyRect);
    // Where the label of a key without a badge goes: inside the bevel.
    static QRect FullLabelRect(const QRect& keyRect);
    // The F-key badge ("F1".."F4") filling `rect`.
    static void PaintBadge(QPainter& painter, const QRect& rect, const QString& text);
    // Where a key puts its slot's badge.
    static QRect BadgeRect(const QRect& keyRect);
    // A whole face picture, transparent outside the rounded body.
    static QPixmap KeyFace(const QString& text);

    // Style sheet of the toolkit's screens (focus mark, contrast).
    static QString ScreenStyleSheet();
};
