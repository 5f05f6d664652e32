#include "provider/Common/Holders.h"
#include "tests/provider/Common/HolderSuite.h"

#include <gtest/gtest.h>

namespace {

int destroyed = 0;

struct Thing {
    Thing() = default;
    Thing(const Thing&) = delete;
    Thing& operator=(const Thing&) = delete;
    ~Thing() { ++destroyed; }
};

// An object with one reference, which counts how many went away.
class Interface final : public IUnknown {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --m_references;
        if (left == 0) {
            delete this;
        }
        return left;
    }

private:
    ~Interface() { ++destroyed; }

    ULONG m_references = 1;
};

template <typename OfHolder>
struct Counted {
    using Holder = OfHolder;
    static int Freed() { return destroyed; }
};
struct ObjectRow : Counted<VxPtr<Thing>> {
    static Thing* Make() { return new Thing; }
    static void Clear(Holder& holder) { holder.clean(); }
};
struct ArrayRow : Counted<VxArrayPtr<Thing>> {
    static Thing* Make() { return new Thing[1]; }
    static void Clear(Holder& holder) { holder.clean(); }
};
struct InterfaceRow : Counted<VxMapiPtr<Interface>> {
    static Interface* Make() { return new Interface; }
    static void Clear(Holder& holder) { holder.release(); }
};
using Rows = testing::Types<ObjectRow, ArrayRow, InterfaceRow>;
INSTANTIATE_TYPED_TEST_SUITE_P(Common, HolderSuite, Rows, HolderNames);

// reset and set behave alike.
template <typename Row, typename Replace>
void ExpectReplacing(Replace replace) {
    const int before = destroyed;
    {
        auto* const first = Row::Make();
        typename Row::Holder holder(first);
        replace(holder, first);
        EXPECT_EQ(destroyed - before, 0) << "the pointer already held is not freed";
        auto* const second = Row::Make();
        replace(holder, second);
        EXPECT_EQ(destroyed - before, 1);
        EXPECT_EQ(holder.get(), second);
        replace(holder, nullptr);
        EXPECT_EQ(destroyed - before, 2);
        replace(holder, Row::Make());
    }
    EXPECT_EQ(destroyed - before, 3);
}

TEST(Holders, ReplaceWhatTheyHoldUnlessItIsTheSame) {
    ExpectReplacing<InterfaceRow>([](auto& holder, Interface* pointer) { holder.reset(pointer); });
    ExpectReplacing<ArrayRow>([](auto& holder, Thing* array) { holder.set(array); });
}

TEST(Holders, TakeOutArgumentsAndGiveOwnershipUp) {
    const int before = destroyed;
    const auto give = [](Interface** out) { *out = new Interface; };
    Interface* kept = nullptr;
    {
        VxMapiPtr<Interface> holder;
        give(&holder);
        ASSERT_NE(holder.get(), nullptr);
        EXPECT_EQ(holder->AddRef(), 2u) << "nothing was added on the way in";
        holder->Release();
        kept = holder.releasePointer();
        EXPECT_EQ(holder.get(), nullptr);
    }
    EXPECT_EQ(destroyed - before, 0);
    EXPECT_EQ(kept->Release(), 0u);

    auto* const bytes = new unsigned char[2];
    VxArrayPtr<unsigned char> array(bytes);
    EXPECT_EQ(array.release(), bytes);
    EXPECT_EQ(array.get(), nullptr);
    delete[] bytes;
}

}  // namespace
