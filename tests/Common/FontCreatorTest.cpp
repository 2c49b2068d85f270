#include <QFontInfo>

#include "Common/Toolkit/FontCreator.h"
#include "Common/ToolkitTestSupport.h"
#include "support/LanguagePack.h"

TEST(FontCreator, CommonFontTakesFaceAndHeightOffsetFromThePack) {
    ScopedLanguagePack language("english");
    QFont font;
    FontCreator::CreateCommonFont(font, 14, 400);
    EXPECT_EQ(font.family(), "DejaVu Sans");
    EXPECT_EQ(font.pixelSize(), 14 + 6);
    EXPECT_EQ(font.weight(), QFont::Normal);
    EXPECT_EQ(font.styleHint(), QFont::SansSerif);
    EXPECT_FALSE(font.italic() || font.underline() || font.strikeOut());
}

TEST(FontCreator, TahomaFontKeepsItsFaceButSharesTheOffset) {
    ScopedLanguagePack language("german");
    QFont font;
    FontCreator::CreateFont(font, 28, 700);
    EXPECT_EQ(font.family(), "Tahoma");
    EXPECT_EQ(font.pixelSize(), 28 + 6);
    EXPECT_EQ(font.weight(), QFont::Bold);
    // Whatever face fontconfig puts in its place is a real one.
    EXPECT_FALSE(QFontInfo(font).family().isEmpty());
}

TEST(FontCreator, EmptyFaceStringMeansTahomaAndTheOffsetMayBeNegative) {
    ScopedLanguagePack language(OPM_TOOLKIT_TEST_PACK);
    const FontCreator::CommonFontSettings& settings = FontCreator::CommonSettings();
    EXPECT_EQ(settings.faceName, "Tahoma");
    EXPECT_EQ(settings.heightOffset, -2);
    QFont font;
    FontCreator::CreateCommonFont(font, 16, 700);
    EXPECT_EQ(font.family(), "Tahoma");
    EXPECT_EQ(font.pixelSize(), 14);
}

TEST(FontCreator, SettingsAreReadOnceUntilReset) {
    ScopedLanguagePack english("english");
    EXPECT_EQ(FontCreator::CommonSettings().heightOffset, 6);
    {
        // A pack switched without a reset does not change the settings read.
        const HMODULE previous = AfxGetResourceHandle();
        HMODULE test = LoadLibraryW(L"" OPM_TOOLKIT_TEST_PACK);
        ASSERT_NE(test, nullptr);
        AfxSetResourceHandle(test);
        EXPECT_EQ(FontCreator::CommonSettings().heightOffset, 6);
        FontCreator::ResetCommonFontSettings();
        EXPECT_EQ(FontCreator::CommonSettings().heightOffset, -2);
        AfxSetResourceHandle(previous);
        FreeLibrary(test);
        FontCreator::ResetCommonFontSettings();
    }
}

TEST(FontCreatorDeathTest, FontObjectMustBeEmpty) {
    ScopedLanguagePack language("english");
    EXPECT_FATAL(
        {
            QFont font(QStringLiteral("Sans"));
            FontCreator::CreateCommonFont(font, 14, 400);
        },
        "oldFontHandle == NULL", "FontCreator");
}

TEST(FontCreatorDeathTest, CreationMustSucceed) {
    ScopedLanguagePack language("english");
    EXPECT_FATAL(
        {
            QFont font;
            FontCreator::CreateFont(font, -6, 400);
        },
        "creationResult && \"Failed to create common font\"", "FontCreator");
}
