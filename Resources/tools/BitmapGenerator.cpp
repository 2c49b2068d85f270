// Draws a language pack's bitmaps at build time, so the packs carry no
// opaque artwork: each line of the pack's bitmaps.txt names a bitmap id, what
// it is and its label ("<id>\t<kind>\t<label>"), and the picture is drawn with
// the toolkit's own painters.
//
// Kinds: "blank" (an empty key), "key" (a key with its label), "badge" (the
// F-key overlay of a slot), "text" (a label on a transparent ground, for keys
// that blend a text bitmap over a face).

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QPainter>
#include <QPixmap>
#include <QTextStream>
#include <cstdio>

#include "Common/Toolkit/ToolkitStyle.h"

namespace {

QPixmap Draw(const QString& kind, const QString& label, bool& known) {
    known = true;
    if (kind == QLatin1String("blank")) return CToolkitStyle::KeyFace(QString());
    if (kind == QLatin1String("key")) return CToolkitStyle::KeyFace(label);
    if (kind == QLatin1String("badge")) {
        QPixmap badge(CToolkitStyle::kBadgeSize);
        badge.fill(Qt::transparent);
        QPainter painter(&badge);
        CToolkitStyle::PaintBadge(painter, badge.rect(), label);
        return badge;
    }
    if (kind == QLatin1String("text")) {
        const QRect keyRect(QPoint(0, 0), CToolkitStyle::kKeySize);
        QPixmap text(CToolkitStyle::LabelRect(keyRect).size());
        text.fill(Qt::transparent);
        QPainter painter(&text);
        CToolkitStyle::PaintKeyLabel(painter, text.rect(), label, CToolkitStyle::KeyFont(),
                                     CToolkitStyle::KeyState::Normal);
        return text;
    }
    known = false;
    return {};
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: %s <bitmaps.txt> <output directory>\n", argv[0]);
        return 2;
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);

    QFile list(QString::fromLocal8Bit(argv[1]));
    if (!list.open(QIODevice::ReadOnly | QIODevice::Text)) {
        std::fprintf(stderr, "%s: cannot read\n", argv[1]);
        return 1;
    }
    const QDir out(QString::fromLocal8Bit(argv[2]));
    if (!QDir().mkpath(out.path())) {
        std::fprintf(stderr, "%s: cannot create\n", argv[2]);
        return 1;
    }

    QTextStream in(&list);
    in.setEncoding(QStringConverter::Utf8);
    int lineNumber = 0;
    int failures = 0;
    while (!in.atEnd()) {
        const QString line = in.readLine();
        ++lineNumber;
        if (line.isEmpty() || line.startsWith(QLatin1Char('#'))) continue;
        const QStringList fields = line.split(QLatin1Char('\t'));
        bool isNumber = false;
        const uint id = fields.value(0).toUInt(&isNumber);
        bool known = false;
        const QPixmap picture =
            fields.size() >= 2 && isNumber ? Draw(fields[1], fields.value(2), known) : QPixmap();
        if (!known || picture.isNull()) {
            std::fprintf(stderr, "%s:%d: expected \"<id>\\t<blank|key|badge|text>\\t<label>\"\n",
                         argv[1], lineNumber);
            ++failures;
            continue;
        }
        const QString path = out.filePath(QStringLiteral("%1.png").arg(id));
        if (!picture.save(path)) {
            std::fprintf(stderr, "%s: cannot write\n", qPrintable(path));
            ++failures;
        }
    }
    return failures == 0 ? 0 : 1;
}
