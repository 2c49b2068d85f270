#include "support/LanguagePack.h"

#include <cstdio>

#include "Common/Toolkit/FontCreator.h"
#include "Platform/WideText.h"

std::string ScopedLanguagePack::Directory() {
    return OPM_LANGUAGE_PACK_DIR;
}

ScopedLanguagePack::ScopedLanguagePack(const std::string& name) : previous(AfxGetResourceHandle()) {
    const std::string path =
        name.find('/') != std::string::npos ? name : Directory() + "/" + name + ".rcc";
    module = LoadLibraryW(platform::FromUtf8(path).c_str());
    if (module == nullptr) {
        std::fprintf(stderr, "language pack %s did not load\n", path.c_str());
        return;
    }
    AfxSetResourceHandle(module);
    // The common font follows the pack, as after a start with that pack.
    FontCreator::ResetCommonFontSettings();
}

ScopedLanguagePack::~ScopedLanguagePack() {
    if (module == nullptr) return;
    AfxSetResourceHandle(previous);
    FreeLibrary(module);
    FontCreator::ResetCommonFontSettings();
}
