#include "Common/Toolkit/FontCreator.h"

#include <algorithm>
#include <cstddef>
#include <mutex>
#include <optional>

#include "Common/Utilities/LanguageResources.h"
#include "Platform/FatalError.h"

namespace FontCreator {

namespace {

constexpr const char* kDefaultFace = "Tahoma";

std::mutex settingsMutex;
std::optional<CommonFontSettings> settings;

CommonFontSettings ReadSettings() {
    CommonFontSettings read;
    read.faceName = ResourceString(kFaceNameString);
    if (read.faceName.isEmpty()) read.faceName = QString::fromLatin1(kDefaultFace);
    const QString further = ResourceString(kSettingsString).trimmed();
    if (!further.isEmpty()) read.heightOffset = further.toInt();
    return read;
}

void Create(QFont& font, const QString& faceName, int height, int weight) {
    // A font object counts as created once anything has been set on it.
    const QFont* oldFontHandle = font.resolveMask() == 0 ? nullptr : &font;
    OPM_ASSERT(oldFontHandle == NULL);

    const int pixelHeight = height + CommonSettings().heightOffset;
    const bool creationResult = pixelHeight > 0 && weight >= 0 && weight <= 1000;
    OPM_ASSERT(creationResult && "Failed to create common font");

    QFont created(faceName);
    // Pitch and family 32 (swiss): a proportional face without serifs.
    created.setStyleHint(QFont::SansSerif);
    created.setPixelSize(pixelHeight);
    // Weight 0 is "don't care" on the old system; Qt's scale is 100..900.
    created.setWeight(static_cast<QFont::Weight>(weight == 0 ? 400 : std::clamp(weight, 100, 900)));
    created.setItalic(false);
    created.setUnderline(false);
    created.setStrikeOut(false);
    created.setStretch(QFont::Unstretched);
    font = created;
}

}  // namespace

const CommonFontSettings& CommonSettings() {
    std::lock_guard lock(settingsMutex);
    if (!settings) settings = ReadSettings();
    return *settings;
}

void ResetCommonFontSettings() {
    std::lock_guard lock(settingsMutex);
    settings.reset();
}

void CreateFont(QFont& font, int height, int weight) {
    Create(font, QString::fromLatin1(kDefaultFace), height, weight);
}

void CreateCommonFont(QFont& font, int height, int weight) {
    Create(font, CommonSettings().faceName, height, weight);
}

}  // namespace FontCreator
