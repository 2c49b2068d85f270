#include "Common/Utilities/WordWrap.h"

#include <QFontMetrics>
#include <algorithm>

QStringList CWordWrap::Wrap(const QString& text, const QFontMetrics& metrics, int maxWidth) {
    QStringList lines;
    for (const QString& paragraph : text.split(QLatin1Char('\n'))) {
        QString line;
        bool lineStarted = false;
        for (const QString& word : paragraph.split(QLatin1Char(' '))) {
            if (!lineStarted) {
                line = word;
                lineStarted = true;
                continue;
            }
            const QString longer = line + QLatin1Char(' ') + word;
            if (metrics.horizontalAdvance(longer) <= maxWidth) {
                line = longer;
            } else {
                lines.append(line);
                line = word;
            }
        }
        lines.append(line);
    }
    return lines;
}

QSize CWordWrap::Extent(const QStringList& lines, const QFontMetrics& metrics) {
    int width = 0;
    for (const QString& line : lines) width = std::max(width, metrics.horizontalAdvance(line));
    return QSize(width, static_cast<int>(lines.size()) * metrics.lineSpacing());
}
