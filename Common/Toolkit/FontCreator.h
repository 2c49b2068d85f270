#pragma once
// Creation of the application's fonts. The common font takes its face from
// the language pack (string 61336, "Tahoma" when empty), so a language whose
// script needs another face gets it everywhere; string 61337, when set, is a
// signed pixel offset added to every requested height, so a pack can make all
// text larger for a face that reads small (or a brighter, larger outdoor look).

#include <QFont>
#include <QString>

namespace FontCreator {

constexpr unsigned kFaceNameString = 61336;
constexpr unsigned kSettingsString = 61337;

struct CommonFontSettings {
    QString faceName;
    int charSet = 0;
    int heightOffset = 0;
};

// The settings read on first use; later calls return the same.
const CommonFontSettings& CommonSettings();
// Forgets the settings so that the next use reads the current pack again
// (after a language change, and in tests).
void ResetCommonFontSettings();

// Both take a font object that has not been created yet (nothing set on it)
// and a height in pixels before the common offset; weight 400 is normal, 700
// bold. Misuse is fatal.
// CreateFont always uses the face "Tahoma"; CreateCommonFont the pack's face.
void CreateFont(QFont& font, int height, int weight);
void CreateCommonFont(QFont& font, int height, int weight);

}  // namespace FontCreator
