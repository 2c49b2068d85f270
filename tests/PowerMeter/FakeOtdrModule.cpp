// What the simulated module cannot do: a board whose InitOTDR throws, a
// standard exception or (FAKE_MODULE_THROWS_OTHER) anything else. It exports
// nothing more, so every other entry of the loader's table stays null.

#include <stdexcept>

extern "C" {

int DllInit(const char*, void*, void*) {
    return 0;
}

int InitOTDR(int, const char*, int) {
#ifdef FAKE_MODULE_THROWS_OTHER
    throw 42;
#else
    throw std::runtime_error("board exploded");
#endif
}
}
