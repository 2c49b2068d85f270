#include "Common/Toolkit/KeysCombinationCatcher.h"
#include "Common/ToolkitTestSupport.h"
#include "Common/Toolkit/VirtualKeys.h"

namespace {

struct Sequence {
    const char* name;
    std::vector<UINT> keys;
    bool caught;
};

}  // namespace

TEST(KeysCombinationCatcher, CatchesOnlyTheCombinationInOrder) {
    const Sequence sequences[] = {
        {"Left Right F1", {VK_LEFT, VK_RIGHT, VK_F1}, true},
        // The extra Left makes four keys; they are cleared only on the next key.
        {"Left Left Right F1", {VK_LEFT, VK_LEFT, VK_RIGHT, VK_F1}, false},
        // Up is not in the combination and clears what was caught.
        {"Left Up Left Right F1", {VK_LEFT, VK_UP, VK_LEFT, VK_RIGHT, VK_F1}, true},
        {"Right Left F1", {VK_RIGHT, VK_LEFT, VK_F1}, false},
        {"Left Right F2", {VK_LEFT, VK_RIGHT, VK_F2}, false},
        // The outgrown list is cleared by the next key, which then starts anew.
        {"Left Left Right F1 Left Right F1",
         {VK_LEFT, VK_LEFT, VK_RIGHT, VK_F1, VK_LEFT, VK_RIGHT, VK_F1},
         true},
        // Here the clearing key is F1, which then leads the list.
        {"Left Left Right F1 F1 Left Right F1",
         {VK_LEFT, VK_LEFT, VK_RIGHT, VK_F1, VK_F1, VK_LEFT, VK_RIGHT, VK_F1},
         false},
    };
    for (const Sequence& sequence : sequences) {
        KeysCombinationCatcher catcher({VK_LEFT, VK_RIGHT, VK_F1});
        for (UINT key : sequence.keys) catcher.OnKey(key);
        EXPECT_EQ(catcher.IsCaught(), sequence.caught) << sequence.name;
    }
}

TEST(KeysCombinationCatcher, TellsWhetherAKeyBelongsToTheCombination) {
    KeysCombinationCatcher catcher({VK_LEFT, VK_RIGHT, VK_F2});
    EXPECT_TRUE(catcher.OnKey(VK_LEFT));
    EXPECT_TRUE(catcher.OnKey(VK_F2));
    EXPECT_EQ(catcher.CaughtKeys().size(), 2u);
    EXPECT_FALSE(catcher.OnKey(VK_RETURN));
    EXPECT_TRUE(catcher.CaughtKeys().empty());
}

TEST(KeysCombinationCatcher, ResetStartsOver) {
    KeysCombinationCatcher catcher({VK_LEFT, VK_RIGHT, VK_F1});
    for (UINT key : {VK_LEFT, VK_RIGHT, VK_F1}) catcher.OnKey(key);
    ASSERT_TRUE(catcher.IsCaught());
    catcher.Reset();
    EXPECT_FALSE(catcher.IsCaught());
    catcher.OnKey(VK_F1);
    EXPECT_FALSE(catcher.IsCaught());
}

TEST(KeysCombinationCatcherDeathTest, CombinationMustNotBeEmpty) {
    EXPECT_FATAL_AT(KeysCombinationCatcher catcher({}), "combination.size() > 0",
                    "KeysCombinationCatcher", 12);
}
