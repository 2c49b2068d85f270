// Loaded by LibraryTest through the platform's loader.
extern "C" int TestModuleAnswer() {
    return 42;
}
