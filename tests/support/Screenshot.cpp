#include "support/Screenshot.h"

#include <QApplication>
#include <QDir>
#include <QImage>
#include <QPainter>
#include <QPixmap>
#include <QWidget>
#include <cstdio>

namespace screenshot {

bool Enabled() {
    return !qEnvironmentVariableIsEmpty("OPM_SCREENSHOTS");
}

namespace {

QPixmap Grab(QWidget* window) {
    window->ensurePolished();
    // Pending layout and paint requests must land before the grab.
    QApplication::processEvents();
    return window->grab();
}

}  // namespace

QString Save(const QString& name, QWidget* base, std::initializer_list<QWidget*> overlays) {
    if (!Enabled() || base == nullptr) return {};
    const QDir dir(qEnvironmentVariable("OPM_SCREENSHOTS"));
    if (!dir.exists() && !QDir().mkpath(dir.path())) {
        std::fprintf(stderr, "screenshot: cannot create %s\n", qPrintable(dir.path()));
        return {};
    }

    const QPixmap basePicture = Grab(base);
    QImage canvas(basePicture.size(), QImage::Format_RGB32);
    canvas.fill(Qt::black);
    QPainter painter(&canvas);
    painter.drawPixmap(0, 0, basePicture);
    const QPoint origin = base->mapToGlobal(QPoint(0, 0));
    for (QWidget* overlay : overlays) {
        if (overlay == nullptr || !overlay->isVisible()) continue;
        const QPoint at = overlay->window()->mapToGlobal(QPoint(0, 0)) - origin;
        painter.drawPixmap(at, Grab(overlay->window()));
    }
    painter.end();

    const QString path = dir.filePath(name + QStringLiteral(".png"));
    if (!canvas.save(path)) {
        std::fprintf(stderr, "screenshot: cannot write %s\n", qPrintable(path));
        return {};
    }
    return path;
}

}  // namespace screenshot
