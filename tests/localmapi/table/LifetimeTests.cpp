// Whom rows and sinks belong to.
#include "tests/localmapi/table/TableFixture.h"

#include <gtest/gtest.h>

#include <utility>

namespace localmapi::testing {
namespace {

class TableLifetimes : public TableFixture {};

// Each row is a root of its own, whatever is freed first.
TEST_F(TableLifetimes, OfOneRowMayBeLongerThanThatOfItsSet) {
    const ComPtr<IMAPITable> table = Letters("ab");
    LPSRowSet got = nullptr;
    ASSERT_EQ(table->QueryRows(2, 0, &got), S_OK);
    RowSetPointer set(got);
    EXPECT_EQ(LiveBuffers(), 3);
    const MapiPointer<SPropValue> kept(std::exchange(set->aRow[0].lpProps, nullptr));
    set.reset();
    EXPECT_EQ(kept->Value.lpszW[0], WCHAR{'a'});
}

class Sink final : public ComObject<IMAPIAdviseSink> {
public:
    using ComObject::ComObject;

    ULONG STDMETHODCALLTYPE OnNotify(ULONG, LPNOTIFICATION) override { return 0; }

protected:
    bool Implements(REFIID interfaceId) const override { return interfaceId == IID_IMAPIAdviseSink; }
};

TEST_F(TableLifetimes, OfSinksEndWhenTheyAreTakenBackOrWithTheTable) {
    ComPtr<IMAPITable> table = Letters("a");
    const std::int64_t before = LiveObjects();
    ULONG_PTR first = 0;
    ULONG_PTR second = 0;
    ASSERT_EQ(table->Advise(fnevTableModified, MakeObject<Sink>(m_lock).Get(), &first), S_OK);
    ASSERT_EQ(table->Advise(fnevTableModified, MakeObject<Sink>(m_lock).Get(), &second), S_OK);
    EXPECT_NE(first, second);
    EXPECT_EQ(LiveObjects(), before + 2);
    EXPECT_EQ(table->Unadvise(first), S_OK);
    EXPECT_EQ(table->Unadvise(first), MAPI_E_NOT_FOUND);
    EXPECT_EQ(LiveObjects(), before + 1);
    table = nullptr;
    EXPECT_EQ(LiveObjects(), 0) << "the rest goes with the table";
}

}  // namespace
}  // namespace localmapi::testing
