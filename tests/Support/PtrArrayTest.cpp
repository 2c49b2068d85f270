#include <gtest/gtest.h>

#include "Support/PtrArray.h"

namespace {

struct Counted {
    explicit Counted(int& alive) : alive(alive) { ++alive; }
    ~Counted() { --alive; }
    int& alive;
};

TEST(PtrArrayTest, IndexPastEndClampsToLast) {
    int alive = 0;
    TPtrArray<Counted> array;
    EXPECT_EQ(array.At(0), nullptr);
    auto* first = new Counted(alive);
    auto* second = new Counted(alive);
    array.Append(first);
    array.Append(second);
    EXPECT_EQ(array.Count(), 2);
    EXPECT_EQ(array.At(0), first);
    EXPECT_EQ(array.At(1), second);
    EXPECT_EQ(array.At(5), second);
}

TEST(PtrArrayTest, OwnsItsElements) {
    int alive = 0;
    {
        TPtrArray<Counted> array;
        for (int i = 0; i < 5; ++i) array.Append(new Counted(alive));
        EXPECT_EQ(alive, 5);
        array.Clear();
        EXPECT_EQ(alive, 0);
        EXPECT_EQ(array.Count(), 0);
        array.Append(new Counted(alive));
    }
    EXPECT_EQ(alive, 0);
}

}  // namespace
