#include "Common/Toolkit/FileIcons.h"

#include <QFileInfo>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

namespace {
const QColor kOutline(0, 0, 0);
const QColor kFolderFill(255, 204, 0);
const QColor kPaper(255, 255, 255);
}  // namespace

CFileIcons::CFileIcons() : folder(DrawFolder()), file(DrawFile()) {}

QIcon CFileIcons::icon(IconType type) const {
    return type == QAbstractFileIconProvider::File ? file : folder;
}

QIcon CFileIcons::icon(const QFileInfo& info) const {
    return info.isDir() ? folder : file;
}

QIcon CFileIcons::DrawFolder() {
    QPixmap picture(kSize, kSize);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(kOutline, 2));
    painter.setBrush(kFolderFill);
    QPainterPath shape;
    shape.moveTo(2, 7);
    shape.lineTo(11, 7);
    shape.lineTo(14, 10);
    shape.lineTo(kSize - 2, 10);
    shape.lineTo(kSize - 2, kSize - 4);
    shape.lineTo(2, kSize - 4);
    shape.closeSubpath();
    painter.drawPath(shape);
    return QIcon(picture);
}

QIcon CFileIcons::DrawFile() {
    QPixmap picture(kSize, kSize);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(kOutline, 2));
    painter.setBrush(kPaper);
    QPainterPath sheet;
    sheet.moveTo(6, 2);
    sheet.lineTo(17, 2);
    sheet.lineTo(kSize - 5, 10);
    sheet.lineTo(kSize - 5, kSize - 2);
    sheet.lineTo(6, kSize - 2);
    sheet.closeSubpath();
    painter.drawPath(sheet);
    painter.drawLine(QPointF(17, 2), QPointF(17, 10));
    painter.drawLine(QPointF(17, 10), QPointF(kSize - 5, 10));
    for (int y = 14; y <= kSize - 7; y += 4)
        painter.drawLine(QPointF(10, y), QPointF(kSize - 9, y));
    return QIcon(picture);
}
