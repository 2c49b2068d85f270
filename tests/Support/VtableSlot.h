#pragma once
// Virtual-table slot of a virtual member function, read from its
// pointer-to-member representation (Itanium C++ ABI). Lets a test pin the
// slot order that a separately built library relies on.

#include <cstddef>
#include <cstdint>
#include <cstring>

template <typename MemberFunction>
std::ptrdiff_t VtableSlot(MemberFunction member) {
    struct Representation {
        std::uintptr_t pointer;
        std::ptrdiff_t adjustment;
    } representation;
    static_assert(sizeof(MemberFunction) == sizeof(Representation));
    std::memcpy(&representation, &member, sizeof representation);
#if defined(__arm__) || defined(__aarch64__)
    // ARM keeps the vtable offset as is and flags virtual in the adjustment.
    return static_cast<std::ptrdiff_t>(representation.pointer / sizeof(void*));
#else
    // Elsewhere a virtual function is the vtable offset plus one.
    return static_cast<std::ptrdiff_t>((representation.pointer - 1) / sizeof(void*));
#endif
}
