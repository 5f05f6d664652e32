// Random restrictions, orders and searches against a slow and obvious second implementation.
#include "tests/localmapi/support/ValueText.h"
#include "tests/localmapi/table/TableFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <random>
#include <string>

namespace localmapi::testing {
namespace {

// What a row is made of: small ranges, so that many are equal, and any of it may be missing.
struct Facts {
    std::size_t place = 0;
    std::optional<int> number;
    std::optional<int> time;
    std::optional<std::string> name;
};

// A condition in both forms: as MAPI has it, and as it would be said.
struct Condition {
    SRestriction restriction;
    std::function<bool(const Facts&)> holds;
};

template <class T>
bool Relates(const std::optional<T>& value, ULONG relop, const T& bound) {
    if (!value) {
        return false;
    }
    switch (relop) {
        case RELOP_LT: return *value < bound;
        case RELOP_LE: return *value <= bound;
        case RELOP_GT: return *value > bound;
        case RELOP_GE: return *value >= bound;
        case RELOP_EQ: return *value == bound;
        default: return *value != bound;
    }
}

class TableRandomly : public TableFixture {
protected:
    int Below(int bound) { return static_cast<int>(m_random() % static_cast<unsigned>(bound)); }

    std::vector<Facts> MakeFacts() {
        std::vector<Facts> all(static_cast<std::size_t>(Below(40)));
        for (Facts& facts : all) {
            facts.place = static_cast<std::size_t>(&facts - all.data());
            facts.number = Below(5) > 0 ? std::optional(Below(7) - 3) : std::nullopt;
            facts.time = Below(5) > 0 ? std::optional(Below(9)) : std::nullopt;
            facts.name = Below(5) > 0 ? std::optional(std::string(1, static_cast<char>('a' + Below(4)))) : std::nullopt;
        }
        return all;
    }

    std::unique_ptr<RowSource> RowsOf(const std::vector<Facts>& all) {
        auto rows = std::make_unique<MemoryRows>(std::vector<ULONG>{kPlace});
        rows->Index(PROP_ID(kEntryId));
        for (const Facts& facts : all) {
            Row row{LongValue(kPlace, static_cast<LONG>(facts.place)), m_maker.Binary(std::to_string(facts.place))};
            if (facts.number) {
                row.push_back(LongValue(kNumber, *facts.number));
            }
            if (facts.time) {
                row.push_back(Maker::Time(static_cast<std::uint64_t>(*facts.time)));
            }
            if (facts.name) {
                row.push_back(m_maker.Wide(*facts.name));
            }
            rows->Add(row);
        }
        rows->Index(PROP_ID(kLongTermId));
        return rows;
    }

    Condition MakeLeaf() {
        const auto relop = static_cast<ULONG>(Below(6));
        switch (Below(6)) {
            case 0: {
                const int bound = Below(7) - 3;
                return {m_maker.Property(relop, LongValue(kNumber, bound)),
                        [=](const Facts& f) { return Relates(f.number, relop, bound); }};
            }
            case 1: {
                const int bound = Below(11) - 1;
                return {m_maker.Property(relop, Maker::Time(static_cast<std::uint64_t>(std::max(bound, 0)))),
                        [=](const Facts& f) { return Relates(f.time, relop, std::max(bound, 0)); }};
            }
            case 2: {
                const std::string bound(1, static_cast<char>('a' + Below(5)));
                return {m_maker.Property(relop, m_maker.Wide(bound)),
                        [=](const Facts& f) { return Relates(f.name, relop, bound); }};
            }
            case 3: {
                // By the id that a client has, which a source may know under either name.
                const auto place = static_cast<std::size_t>(Below(40));
                const std::string id = std::to_string(place);
                const SRestriction own = m_maker.Property(RELOP_EQ, m_maker.Binary(id));
                return {Below(2) == 0 ? own
                                      : m_maker.Or({m_maker.Property(RELOP_EQ, m_maker.Binary(id, kLongTermId)), own}),
                        [=](const Facts& f) { return f.place == place; }};
            }
            case 4: return {Maker::Exist(kTime), [](const Facts& f) { return f.time.has_value(); }};
            default: {
                const auto mask = static_cast<ULONG>(Below(4));
                return {Maker::Bits(BMR_NEZ, kNumber, mask),
                        [=](const Facts& f) { return f.number && (static_cast<ULONG>(*f.number) & mask) != 0; }};
            }
        }
    }

    Condition MakeCondition(int depth) {
        if (depth == 0 || Below(3) == 0) {
            return MakeLeaf();
        }
        const Condition a = MakeCondition(depth - 1);
        if (Below(4) == 0) {
            return {m_maker.Not(a.restriction), [a](const Facts& f) { return !a.holds(f); }};
        }
        const Condition b = MakeCondition(depth - 1);
        if (Below(2) == 0) {
            return {m_maker.And({a.restriction, b.restriction}),
                    [a, b](const Facts& f) { return a.holds(f) && b.holds(f); }};
        }
        return {m_maker.Or({a.restriction, b.restriction}),
                [a, b](const Facts& f) { return a.holds(f) || b.holds(f); }};
    }

    // Below 0, 0 or above 0; what is missing is last both ways.
    template <class T>
    static int Order(const std::optional<T>& a, const std::optional<T>& b, bool descending) {
        if (!a || !b) {
            return a ? -1 : b ? 1 : 0;
        }
        const int order = *a < *b ? -1 : *b < *a ? 1 : 0;
        return descending ? -order : order;
    }

    static int OrderBy(const SSortOrder& sort, const Facts& a, const Facts& b) {
        const bool descending = sort.ulOrder == TABLE_SORT_DESCEND;
        switch (sort.ulPropTag) {
            case kNumber: return Order(a.number, b.number, descending);
            case kTime: return Order(a.time, b.time, descending);
            default: return Order(a.name, b.name, descending);
        }
    }

    static std::string PlacesOf(const std::vector<Facts>& all) {
        std::string text;
        for (const Facts& facts : all) {
            text += (text.empty() ? "" : " ") + std::to_string(facts.place);
        }
        return text;
    }

    static constexpr ULONG kPlace = PROP_TAG(PT_LONG, 0x7001);

    std::mt19937 m_random{20240229};
};

TEST_F(TableRandomly, ShowsAndFindsWhatAPlainWalkDoes) {
    constexpr ULONG kColumns[] = {kNumber, kTime, kName};
    for (int round = 0; round < 400; ++round) {
        const std::vector<Facts> all = MakeFacts();
        const ComPtr<IMAPITable> table = TableOf(RowsOf(all));
        std::vector<SSortOrder> sorts(static_cast<std::size_t>(Below(4)));
        for (SSortOrder& sort : sorts) {
            sort = {kColumns[Below(3)], static_cast<ULONG>(Below(2))};
        }
        SizedSSortOrderSet<4> set{};
        set.cSorts = static_cast<ULONG>(sorts.size());
        std::ranges::copy(sorts, set.aSort);
        const Condition shown = MakeCondition(3);

        const bool sortsFirst = Below(2) == 0;
        ASSERT_EQ(sortsFirst ? table->SortTable(set, 0) : S_OK, S_OK);
        ASSERT_EQ(Restrict(*table, shown.restriction), S_OK);
        ASSERT_EQ(sortsFirst ? S_OK : table->SortTable(set, 0), S_OK);

        std::vector<Facts> expected;
        std::ranges::copy_if(all, std::back_inserter(expected), shown.holds);
        std::ranges::stable_sort(expected, [&sorts](const Facts& a, const Facts& b) {
            for (const SSortOrder& sort : sorts) {
                if (const int order = OrderBy(sort, a, b); order != 0) {
                    return order < 0;
                }
            }
            return false;
        });
        ASSERT_EQ(All(*table), PlacesOf(expected)) << "round " << round << ": " << TextOf(shown.restriction);

        for (int search = 0; search < 8; ++search) {
            const Condition sought = MakeCondition(search < 4 ? 0 : 2);
            const bool isBackward = search % 2 == 1;
            const auto from = Below(static_cast<int>(expected.size()) + 1);
            std::optional<ULONG> best;
            for (int i = 0; i < static_cast<int>(expected.size()); ++i) {
                const bool isInside = isBackward ? i <= from : i >= from;
                if (isInside && sought.holds(expected[static_cast<std::size_t>(i)]) && (isBackward || !best)) {
                    best = static_cast<ULONG>(i);
                }
            }
            SCOPED_TRACE(::testing::Message() << "round " << round << ": " << TextOf(sought.restriction) << " from "
                                              << from << (isBackward ? " backward" : ""));
            ASSERT_EQ(table->SeekRow(BOOKMARK_BEGINNING, from, nullptr), S_OK);
            ASSERT_EQ(Found(*table, sought.restriction, BOOKMARK_CURRENT, isBackward ? DIR_BACKWARD : 0), best);
            ASSERT_EQ(Position(*table), best.value_or(static_cast<ULONG>(from)));
        }
    }
}

}  // namespace
}  // namespace localmapi::testing
