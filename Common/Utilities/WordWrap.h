#pragma once
// Word wrapping of message texts at blanks, measured with the box's font.

#include <QSize>
#include <QStringList>

class QFontMetrics;

class CWordWrap {
public:
    // Lines no wider than maxWidth where blanks allow; explicit line breaks
    // are kept, and a single word wider than the limit stands on its own line.
    static QStringList Wrap(const QString& text, const QFontMetrics& metrics, int maxWidth);
    // The extent of the lines drawn one below the other.
    static QSize Extent(const QStringList& lines, const QFontMetrics& metrics);
};
