// What IMAPITable promises beside its rows: interfaces, null pointers, notifications, lifetimes.
#include "tests/localmapi/table/TableFixture.h"

#include <gtest/gtest.h>

#include <functional>

namespace localmapi::testing {
namespace {

class TableContract : public TableFixture {};

class Sink final : public ComObject<IMAPIAdviseSink> {
public:
    using ComObject::ComObject;

    ULONG STDMETHODCALLTYPE OnNotify(ULONG, LPNOTIFICATION) override { return 0; }

protected:
    bool Implements(REFIID interfaceId) const override { return interfaceId == IID_IMAPIAdviseSink; }
};

TEST_F(TableContract, NamesItsInterfacesAndNoOthers) {
    const ComPtr<IMAPITable> table = Letters("a");
    const auto unknown = QueryFor<IUnknown>(table.Get(), IID_IUnknown);
    EXPECT_EQ(QueryFor<IMAPITable>(unknown.Get(), IID_IMAPITable).Get(), table.Get());
    void* other = &other;
    EXPECT_EQ(table->QueryInterface(IID_IMAPIProp, &other), MAPI_E_INTERFACE_NOT_SUPPORTED);
    EXPECT_EQ(other, nullptr);
}

TEST_F(TableContract, RefusesNullPointersWhereSomethingIsNeeded) {
    const ComPtr<IMAPITable> table = Letters("a");
    ULONG number = 0;
    ULONG_PTR connection = 0;
    struct Case {
        const char* name;
        std::function<HRESULT()> call;
    };
    const Case cases[] = {
        {"SetColumns", [&] { return table->SetColumns(nullptr, 0); }},
        {"QueryColumns", [&] { return table->QueryColumns(0, nullptr); }},
        {"GetRowCount", [&] { return table->GetRowCount(0, nullptr); }},
        {"GetStatus", [&] { return table->GetStatus(&number, nullptr); }},
        {"QueryPosition", [&] { return table->QueryPosition(&number, nullptr, &number); }},
        {"FindRow", [&] { return table->FindRow(nullptr, BOOKMARK_BEGINNING, 0); }},
        {"CreateBookmark", [&] { return table->CreateBookmark(nullptr); }},
        {"QuerySortOrder", [&] { return table->QuerySortOrder(nullptr); }},
        {"QueryRows", [&] { return table->QueryRows(1, 0, nullptr); }},
        {"Advise without a sink", [&] { return table->Advise(fnevTableModified, nullptr, &connection); }},
        {"GetLastError", [&] { return table->GetLastError(MAPI_E_NOT_FOUND, 0, nullptr); }},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.call(), MAPI_E_INVALID_PARAMETER) << c.name;
    }
}

TEST_F(TableContract, IsCompleteAndHasNoCategories) {
    const ComPtr<IMAPITable> table = Letters("a");
    ULONG status = 99;
    ULONG type = 99;
    EXPECT_EQ(table->GetStatus(&status, &type), S_OK);
    EXPECT_EQ(status, TBLSTAT_COMPLETE);
    EXPECT_EQ(type, TBLTYPE_SNAPSHOT);
    EXPECT_EQ(table->WaitForCompletion(0, 100, nullptr), S_OK);
    EXPECT_EQ(table->Abort(), S_OK);
    BYTE key = 0;
    EXPECT_EQ(table->ExpandRow(1, &key, 1, 0, nullptr, nullptr), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(table->CollapseRow(1, &key, 0, nullptr), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(table->GetCollapseState(0, 1, &key, nullptr, nullptr), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(table->SetCollapseState(0, 1, &key, nullptr), MAPI_E_NO_SUPPORT);
}

TEST_F(TableContract, HoldsItsSinksUntilTheyAreTakenBack) {
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

// A source that tells when it goes: it borrows from the object that the table keeps.
class Borrowing final : public RowSource {
public:
    explicit Borrowing(std::int64_t& objectsAtEnd) : m_objectsAtEnd(objectsAtEnd) {}
    ~Borrowing() override { m_objectsAtEnd = LiveObjects(); }

    std::size_t Count() override { return 0; }
    std::vector<ULONG> Columns() override { return {}; }
    Status Read(std::size_t, ULONG, ValueMemory&, SPropValue&) override { return Error{ErrorCode::NotFound, ""}; }
    UINT CodePage(std::size_t) override { return 1252; }

private:
    std::int64_t& m_objectsAtEnd;
};

TEST_F(TableContract, KeepsWhatItsRowsBorrowFromLongerThanThem) {
    std::int64_t objectsAtEnd = 0;
    ComPtr<IMAPITable> table = MakeTable(std::make_unique<Borrowing>(objectsAtEnd),
                                         ComPtr<IUnknown>(MakeObject<Sink>(m_lock).Get()), 0, m_lock);
    EXPECT_EQ(LiveObjects(), 2);
    table = nullptr;
    EXPECT_EQ(objectsAtEnd, 2) << "table and object were there when the rows went";
}

}  // namespace
}  // namespace localmapi::testing
