#include <gtest/gtest.h>

#include <Qt>

#include "Common/Toolkit/VirtualKeys.h"

namespace {

struct KeyCase {
    int qtKey;
    UINT virtualKey;
};

// The keys the screens' dispatch names, and the PC keyboard's extras.
const KeyCase kKeys[] = {
    {Qt::Key_Tab, 9},    {Qt::Key_Return, 13},   {Qt::Key_Enter, 13},  {Qt::Key_Escape, 27},
    {Qt::Key_Space, 32}, {Qt::Key_Left, 37},     {Qt::Key_Up, 38},     {Qt::Key_Right, 39},
    {Qt::Key_Down, 40},  {Qt::Key_F1, 112},      {Qt::Key_F2, 113},    {Qt::Key_F3, 114},
    {Qt::Key_F4, 115},   {Qt::Key_Backspace, 8}, {Qt::Key_Delete, 46}, {Qt::Key_Home, 36},
    {Qt::Key_End, 35},   {Qt::Key_A, 'A'},       {Qt::Key_Z, 'Z'},     {Qt::Key_0, '0'},
    {Qt::Key_9, '9'},
};

}  // namespace

TEST(VirtualKeys, QtKeysMapOntoTheVirtualKeyCodes) {
    for (const KeyCase& c : kKeys)
        EXPECT_EQ(VirtualKeyFromQt(c.qtKey), c.virtualKey) << "Qt key " << c.qtKey;
}

TEST(VirtualKeys, KeysWithoutACodeMapToZero) {
    for (int qtKey : {int(Qt::Key_F5), int(Qt::Key_Shift), int(Qt::Key_Plus), int(Qt::Key_unknown)})
        EXPECT_EQ(VirtualKeyFromQt(qtKey), 0u) << "Qt key " << qtKey;
}

TEST(VirtualKeys, EveryCodeLeadsBackToAKeyThatProducesIt) {
    for (const KeyCase& c : kKeys)
        EXPECT_EQ(VirtualKeyFromQt(QtKeyFromVirtualKey(c.virtualKey)), c.virtualKey);
    EXPECT_EQ(QtKeyFromVirtualKey(0), Qt::Key_unknown);
    EXPECT_EQ(QtKeyFromVirtualKey(116), Qt::Key_unknown);
}
