#include "tela/core/Ptr.h"
#include "support/LiveBlocks.h"

#include <gtest/gtest.h>

namespace {

struct Counted : iObject {
    explicit Counted(int* destroyed) : m_destroyed(destroyed) {}
    ~Counted() override { ++*m_destroyed; }
    Qv::Ptr<Counted> child;
    int* m_destroyed;
};

struct Base : virtual iObject {
    virtual int value() const { return 1; }
};
struct Derived : Base {
    int value() const override { return 2; }
};

} // namespace

static_assert(sizeof(Qv::Ptr<Counted>) == 2 * sizeof(void*));

TEST(PtrTest, LastReleaseDestroysOnceAndReturnsTheBlock)
{
    const auto before = live_blocks();
    int destroyed = 0;
    {
        auto first = Qv::make<Counted>(&destroyed);
        EXPECT_EQ(first->refCount(), 1);
        {
            Qv::Ptr<Counted> second = first;
            EXPECT_EQ(first->refCount(), 2);
        }
        EXPECT_EQ(destroyed, 0);
    }
    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(live_blocks(), before);
}

TEST(PtrTest, AssignmentFromAMemberOfTheOldObjectIsSafe)
{
    // The old object owns the new value: dropping it first would destroy the source.
    int destroyed = 0;
    auto parent = Qv::make<Counted>(&destroyed);
    parent->child = Qv::make<Counted>(&destroyed);
    Counted* const child = parent->child.get();
    parent = parent->child;
    EXPECT_EQ(parent.get(), child);
    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(parent->refCount(), 1);
    parent = parent;   // self-assignment changes nothing
    EXPECT_EQ(parent->refCount(), 1);
}

TEST(PtrTest, BasePointerThroughVirtualBaseSharesTheCounter)
{
    Qv::Ptr<Derived> derived = Qv::make<Derived>();
    Qv::Ptr<Base> base = derived;
    EXPECT_EQ(derived->refCount(), 2);
    EXPECT_EQ(base->value(), 2);
    EXPECT_TRUE(base == derived);
    Qv::Ptr<Derived> back = Qv::dynamicCast<Derived>(base);
    EXPECT_EQ(derived->refCount(), 3);
    EXPECT_FALSE(Qv::dynamicCast<Counted>(base));
    EXPECT_FALSE(derived == Qv::make<Derived>());
    Qv::Ptr<Derived> moved = std::move(back);
    EXPECT_TRUE(back == nullptr);
    EXPECT_EQ(derived->refCount(), 3);
}
