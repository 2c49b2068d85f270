#include <gtest/gtest.h>

#include <QFont>
#include <QLabel>

#include "Common/Toolkit/ColorStatic.h"
#include "Common/Utilities/LanguageResources.h"

namespace {

TEST(ColorStaticTest, ColourRefsAreBlueGreenRed) {
    EXPECT_EQ(CColorStatic::ToQColor(0x0000FF), QColor(255, 0, 0));
    EXPECT_EQ(CColorStatic::ToQColor(0xFF0000), QColor(0, 0, 255));
    EXPECT_EQ(CColorStatic::ToQColor(0x123456), QColor(0x56, 0x34, 0x12));
}

TEST(ColorStaticTest, TakesOverTheTemplateControlInItsPlace) {
    QWidget dialog;
    auto* original = new QLabel(QStringLiteral("-12.345 dBm"), &dialog);
    original->setObjectName(QStringLiteral("1020"));
    original->setGeometry(20, 40, 300, 50);
    original->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    QFont large;
    large.setPixelSize(34);
    original->setFont(large);
    original->hide();

    CColorStatic absolute;
    absolute.SetTextColor(0x0000FF);
    ASSERT_TRUE(absolute.SubclassDlgItem(1020, &dialog));
    EXPECT_EQ(GetDlgItem(&dialog, 1020), &absolute);
    EXPECT_EQ(dialog.findChildren<QLabel*>().size(), 1);
    EXPECT_EQ(absolute.geometry(), QRect(20, 40, 300, 50));
    EXPECT_EQ(absolute.text(), QStringLiteral("-12.345 dBm"));
    EXPECT_EQ(absolute.alignment(), Qt::AlignRight | Qt::AlignVCenter);
    EXPECT_EQ(absolute.font().pixelSize(), 34);
    EXPECT_TRUE(absolute.isHidden());
    EXPECT_TRUE(absolute.styleSheet().contains(QStringLiteral("#ff0000")));
    absolute.setParent(nullptr);  // a field of its screen, not owned by the dialog
}

TEST(ColorStaticTest, AMissingControlIsReported) {
    QWidget dialog;
    CColorStatic unbound;
    EXPECT_FALSE(unbound.SubclassDlgItem(1023, &dialog));
    EXPECT_EQ(unbound.parentWidget(), nullptr);
}

TEST(ColorStaticTest, TheColourShowsWhenPainted) {
    CColorStatic linear;
    linear.resize(200, 60);
    QFont font;
    font.setPixelSize(50);
    font.setBold(true);
    linear.setFont(font);
    linear.setText(QStringLiteral("\u2588\u2588"));
    linear.SetTextColor(0xFF0000);
    linear.SetBkColor(0xFFFFFF);
    const QImage picture = linear.grab().toImage();
    bool blue = false;
    for (int y = 0; y < picture.height() && !blue; ++y)
        for (int x = 0; x < picture.width() && !blue; ++x)
            blue = picture.pixelColor(x, y) == QColor(0, 0, 255);
    EXPECT_TRUE(blue);
    EXPECT_EQ(picture.pixelColor(199, 0), QColor(255, 255, 255));
}

}  // namespace
