#include <QImage>
#include <QPainter>

#include "Common/Utilities/DcStateGuard.h"
#include "Common/ToolkitTestSupport.h"

TEST(DcStateGuard, RestoresWhatAHelperChanged) {
    QImage image(10, 10, QImage::Format_ARGB32);
    QPainter painter(&image);
    painter.setPen(QPen(Qt::red, 3));
    painter.setFont(QFont("Sans", 20));
    {
        DcStateGuard guard(painter);
        painter.setPen(QPen(Qt::blue, 1));
        painter.setFont(QFont("Serif", 8));
        painter.setClipRect(0, 0, 2, 2);
    }
    EXPECT_EQ(painter.pen().color(), QColor(Qt::red));
    EXPECT_EQ(painter.pen().width(), 3);
    EXPECT_EQ(painter.font().pointSize(), 20);
    EXPECT_FALSE(painter.hasClipping());
}

TEST(DcStateGuardDeathTest, PainterMustBePainting) {
    EXPECT_FATAL(
        {
            QPainter idle;
            DcStateGuard guard(idle);
        },
        "savedDeviceContextId != 0", "DcStateGuard");
}
