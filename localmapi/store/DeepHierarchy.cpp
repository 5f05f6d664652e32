#include "localmapi/store/DeepHierarchy.h"

#include "localmapi/props/Values.h"
#include "mapi/PropTags.h"

#include <optional>
#include <unordered_set>
#include <utility>
#include <vector>

namespace localmapi {

namespace {

// The lists of the folders stay as they are; a row here is a row of one of them. A list borrows from its folder.
class DeepRows final : public RowSource {
public:
    DeepRows(StoreSource& store, FolderSource& top) {
        m_seen.insert(top.Number());
        AddList(store, top.Folders(), 1);
    }

    std::size_t Count() override { return m_rows.size(); }
    std::vector<ULONG> Columns() override {
        return m_lists.empty() ? std::vector<ULONG>() : m_lists.front()->Columns();
    }
    Status Read(std::size_t row, ULONG id, ValueMemory& memory, SPropValue& value) override {
        const Row& place = m_rows[row];
        if (id == PROP_ID(PR_DEPTH)) {
            value = LongValue(PR_DEPTH, place.depth);
            return {};
        }
        return m_lists[place.list]->Read(place.row, id, memory, value);
    }
    UINT CodePage(std::size_t row) override { return m_lists[m_rows[row].list]->CodePage(m_rows[row].row); }

private:
    struct Row {
        std::size_t list;
        std::size_t row;
        LONG depth;
    };

    void AddList(StoreSource& store, std::unique_ptr<RowSource> rows, LONG depth) {
        const std::size_t list = m_lists.size();
        m_lists.push_back(std::move(rows));
        for (std::size_t row = 0; row < m_lists[list]->Count(); ++row) {
            const auto number = NumberOf(store, list, row);
            if (!number || !m_seen.insert(*number).second) {
                continue;
            }
            m_rows.push_back({list, row, depth});
            auto folder = depth < kDeepestFolder
                              ? store.OpenFolder(*number)
                              : Result<std::unique_ptr<FolderSource>>(Error{ErrorCode::TooLarge, {}});
            if (folder) {
                m_folders.push_back(*std::move(folder));
                AddList(store, m_folders.back()->Folders(), depth + 1);
            }
        }
    }

    std::optional<EntryNumber> NumberOf(StoreSource& store, std::size_t list, std::size_t row) {
        Arena memory;
        SPropValue value{};
        if (!m_lists[list]->Read(row, PROP_ID(PR_ENTRYID), memory, value) || PROP_TYPE(value.ulPropTag) != PT_BINARY) {
            return std::nullopt;
        }
        const std::optional<Entry> entry = store.EntryOf(BytesOf(value.Value.bin));
        return entry && entry->kind == EntryKind::Folder ? std::optional(entry->number) : std::nullopt;
    }

    std::unordered_set<EntryNumber> m_seen;
    std::vector<std::unique_ptr<FolderSource>> m_folders;
    std::vector<std::unique_ptr<RowSource>> m_lists;  // go before the folders
    std::vector<Row> m_rows;
};

}  // namespace

std::unique_ptr<RowSource> DeepHierarchy(StoreSource& store, FolderSource& top) {
    return std::make_unique<DeepRows>(store, top);
}

}  // namespace localmapi
