#pragma once
// Makes a built language pack the current one for the scope of a test, as
// start-up does with "DefaultLanguageDLL", and restores the previous pack.

#include <string>

#include "Platform/Library.h"

class ScopedLanguagePack {
public:
    // `name` without ".rcc" ("english", "german"), or the path of a pack built
    // for tests.
    explicit ScopedLanguagePack(const std::string& name = "english");
    ~ScopedLanguagePack();
    ScopedLanguagePack(const ScopedLanguagePack&) = delete;
    ScopedLanguagePack& operator=(const ScopedLanguagePack&) = delete;

    bool Loaded() const { return module != nullptr; }
    // Where the packs were built.
    static std::string Directory();

private:
    HMODULE module = nullptr;
    HMODULE previous = nullptr;
};
