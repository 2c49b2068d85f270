#include <QImage>
#include <QWidget>

#include "Common/Toolkit/BitmapMenuKey.h"
#include "Common/Toolkit/CompositedBitmapMenuKey.h"
#include "Common/Toolkit/FontCreator.h"
#include "Common/Utilities/LanguageResources.h"
#include "Common/Toolkit/MenuKey.h"
#include "Common/Toolkit/TextMenuKey.h"
#include "Common/ToolkitTestSupport.h"
#include "support/LanguagePack.h"

namespace {

using State = CToolkitStyle::KeyState;

QImage Picture(CMenuKey& key) {
    return key.grab().toImage();
}

// The key drawn in each of its four states.
std::vector<QImage> States(CMenuKey& key, QWidget& window) {
    std::vector<QImage> pictures;
    key.setFocusPolicy(Qt::StrongFocus);
    key.show();
    window.show();
    window.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    // Showing the window may have given the key the focus already.
    key.clearFocus();
    EXPECT_EQ(key.State(), State::Normal);
    pictures.push_back(Picture(key));
    key.setFocus();
    EXPECT_TRUE(WaitUntil([&] { return key.hasFocus(); }));
    EXPECT_EQ(key.State(), State::Focused);
    pictures.push_back(Picture(key));
    key.setDown(true);
    EXPECT_EQ(key.State(), State::Pressed);
    pictures.push_back(Picture(key));
    key.setDown(false);
    key.setEnabled(false);
    EXPECT_EQ(key.State(), State::Disabled);
    pictures.push_back(Picture(key));
    return pictures;
}

void ExpectAllStatesDiffer(const std::vector<QImage>& pictures, const char* name) {
    for (size_t i = 0; i < pictures.size(); ++i)
        for (size_t j = i + 1; j < pictures.size(); ++j)
            EXPECT_NE(pictures[i], pictures[j]) << name << ": states " << i << " and " << j;
}

}  // namespace

TEST(MenuKey, SettingTheCurrentOverlayAgainOrZeroFirstDoesNothing) {
    ScopedLanguagePack language("english");
    CBitmapMenuKey key(544, 544, 544);
    key.SetOverlay(0);
    EXPECT_EQ(key.GetOverlayId(), 0u);
    EXPECT_FALSE(key.GetOverlay().IsLoaded());
    key.SetOverlay(573);
    const qint64 loaded = key.GetOverlay().Pixmap().cacheKey();
    key.SetOverlay(573);
    EXPECT_EQ(key.GetOverlay().Pixmap().cacheKey(), loaded);
}

TEST(MenuKey, WindowExistsOnlyOnceCreated) {
    ScopedLanguagePack language("english");
    QWidget parent;
    CBitmapMenuKey key(544, 544, 544);
    EXPECT_EQ(key.GetSafeHwnd(), nullptr);
    EXPECT_TRUE(key.Create(&parent, 7));
    EXPECT_NE(key.GetSafeHwnd(), nullptr);
    EXPECT_EQ(key.GetDlgCtrlID(), 7u);
    EXPECT_EQ(key.objectName(), "7");
    EXPECT_FALSE(key.Create(&parent, 8));
    key.setParent(nullptr);
}

TEST(MenuKey, EveryStateLooksDifferent) {
    ScopedLanguagePack language("english");
    QFont font;
    FontCreator::CreateCommonFont(font, 16, 700);
    QWidget window;
    window.resize(400, 100);

    auto* bitmapKey = new CBitmapMenuKey(544, 544, 544);
    bitmapKey->setParent(&window);
    bitmapKey->SetOverlay(572);
    ExpectAllStatesDiffer(States(*bitmapKey, window), "bitmap key");

    auto* textKey = new CTextMenuKey(3, "1550 nm", &font);
    textKey->setParent(&window);
    ExpectAllStatesDiffer(States(*textKey, window), "text key");
}

TEST(MenuKey, BitmapKeyTakesItsFacesSize) {
    ScopedLanguagePack language("english");
    CBitmapMenuKey key(510, 510, 478);
    EXPECT_EQ(key.size(), CToolkitStyle::kKeySize);
    EXPECT_EQ(key.NormalBitmapId(), 510u);
    EXPECT_EQ(key.FocusedBitmapId(), 478u);
}

TEST(MenuKey, TextKeyNeedsMoreRoomForALongerCaption) {
    ScopedLanguagePack language("english");
    QFont font;
    FontCreator::CreateCommonFont(font, 16, 700);
    CTextMenuKey shortKey(0, "On", &font);
    CTextMenuKey longKey(0, "Switch every laser off", &font);
    EXPECT_LT(shortKey.NeededWidth(), longKey.NeededWidth());
    EXPECT_LT(shortKey.NeededWidth(), CToolkitStyle::kKeySize.width());
}

TEST(MenuKey, CompositedKeyPlacesTextAndOverlayAtTheirOffsets) {
    ScopedLanguagePack language(OPM_TOOLKIT_TEST_PACK);
    CCompositedBitmapMenuKey key(9, 700, 701, QPoint(10, 24), QSize(), QPoint(110, 4),
                                 QSize(36, 24));
    key.SetOverlay(702);
    EXPECT_EQ(key.size(), CToolkitStyle::kKeySize);
    EXPECT_EQ(key.TextRect().topLeft(), QPoint(10, 24));
    EXPECT_EQ(key.TextRect().size(), LoadResourceBitmap(701).size());

    // The overlay is drawn where it was told: the badge's dark blue shows
    // there and not in the default corner.
    const QImage picture = Picture(key);
    EXPECT_EQ(picture.pixelColor(110 + 18, 4 + 12).rgb(), CToolkitStyle::BadgeFill().rgb());
    EXPECT_NE(picture.pixelColor(6 + 15, 5 + 10).rgb(), CToolkitStyle::BadgeFill().rgb());
}

TEST(MenuKeyDeathTest, OverlayMustBeNonZeroAndPresent) {
    ScopedLanguagePack language("english");
    EXPECT_FATAL_AT(
        {
            CBitmapMenuKey key(544, 544, 544);
            key.SetOverlay(572);
            key.SetOverlay(0);
        },
        "bitmapId", "MenuKey", 11);
    EXPECT_FATAL_AT(
        {
            CBitmapMenuKey key(544, 544, 544);
            key.SetOverlay(9999);
        },
        "overlayBitmap.LoadBitmap( bitmapId ) && \"Can't load overlay bitmap\"", "MenuKey", 18);
}

TEST(MenuKeyDeathTest, KeysNeedTheirFontAndBitmaps) {
    ScopedLanguagePack language("english");
    EXPECT_FATAL(CTextMenuKey key(0, "x", nullptr), "fontForText", "TextMenuKey");
    EXPECT_FATAL(CCompositedBitmapMenuKey key(0, 478, 9999, {}, {}, {}, {}),
                 "textBitmap.LoadBitmap( textBitmapId ) && \"Can't load text bitmap\"",
                 "CompositedBitmapMenuKey");
}
