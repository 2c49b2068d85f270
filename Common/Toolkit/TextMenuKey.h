#pragma once
// A soft key showing a caption, drawn with a font derived from the one given
// (the submenu columns are made of these).

#include <QFont>
#include <QString>

#include "Common/Toolkit/MenuKey.h"

class CTextMenuKey : public CMenuKey {
    Q_OBJECT
public:
    CTextMenuKey(UINT commandId, const QString& caption, const QFont* fontForText);

    QString Caption() const { return caption; }
    void SetCaption(const QString& text);
    // Width the caption needs on a key, bevel and margins included.
    int NeededWidth() const;

protected:
    void DrawFace(QPainter& painter, const QRect& rect, CToolkitStyle::KeyState state) override;

private:
    QString caption;
    QFont newFont;
};
