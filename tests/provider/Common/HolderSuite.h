// The shape that all holders share, as one suite. A kind of holder joins with a row of what is its own:
//
//   struct Row {
//       using Holder = VxPtr<Thing>;
//       static auto* Make();               // a new thing for a holder to own
//       static int Freed();                // how many things have been freed since the program began
//       static void Clear(Holder& holder);  // the operation that frees and holds null
//   };
//   INSTANTIATE_TYPED_TEST_SUITE_P(Name, HolderSuite, testing::Types<Row>, HolderNames);
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <new>
#include <string>
#include <utility>

template <typename Row>
class HolderSuite : public testing::Test {
protected:
    // Freed since the test began.
    int Freed() const { return Row::Freed() - m_before; }

private:
    int m_before = Row::Freed();
};

struct HolderNames {
    template <typename Row>
    static std::string GetName(int index) {
        return std::to_string(index);
    }
};

TYPED_TEST_SUITE_P(HolderSuite);

TYPED_TEST_P(HolderSuite, FreesOnceWhatItOwns) {
    using Holder = typename TypeParam::Holder;
    {
        const Holder empty;
        EXPECT_EQ(empty.get(), nullptr);
        auto* const thing = TypeParam::Make();
        const Holder holder(thing);
        EXPECT_EQ(holder.get(), thing);
        EXPECT_EQ(holder.operator->(), thing);
        EXPECT_TRUE(holder == thing) << "stands for the raw pointer";
        EXPECT_EQ(this->Freed(), 0);
    }
    EXPECT_EQ(this->Freed(), 1);
}

TYPED_TEST_P(HolderSuite, FreesWhenClearedAndNotAgain) {
    using Holder = typename TypeParam::Holder;
    {
        Holder holder(TypeParam::Make());
        TypeParam::Clear(holder);
        EXPECT_EQ(this->Freed(), 1);
        EXPECT_EQ(holder.get(), nullptr);
        TypeParam::Clear(holder);
    }
    EXPECT_EQ(this->Freed(), 1);
}

TYPED_TEST_P(HolderSuite, MovesOwnershipAndCopiesOnlyThePointer) {
    using Holder = typename TypeParam::Holder;
    {
        Holder first(TypeParam::Make());
        auto* const thing = first.get();
        Holder second(std::move(first));
        EXPECT_EQ(first.get(), nullptr);  // NOLINT(bugprone-use-after-move): a moved holder is empty
        EXPECT_EQ(second.get(), thing);
        // Only one of two copies may remain in charge: this one is never destroyed.
        alignas(Holder) std::byte storage[sizeof(Holder)];
        EXPECT_EQ((new (storage) Holder(second))->get(), thing);
        EXPECT_EQ(this->Freed(), 0);
    }
    EXPECT_EQ(this->Freed(), 1);
}

REGISTER_TYPED_TEST_SUITE_P(HolderSuite, FreesOnceWhatItOwns, FreesWhenClearedAndNotAgain,
                            MovesOwnershipAndCopiesOnlyThePointer);
