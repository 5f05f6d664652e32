#include "localmapi/store/Identity.h"

#include "localmapi/props/Values.h"

namespace localmapi {

namespace {

class RowsWithIdentity final : public RowSource {
public:
    RowsWithIdentity(std::unique_ptr<RowSource> rows, std::shared_ptr<const Identity> identity)
        : m_rows(std::move(rows)), m_identity(std::move(identity)) {}

    std::size_t Count() override { return m_rows->Count(); }
    std::vector<ULONG> Columns() override {
        std::vector<ULONG> columns = m_rows->Columns();
        m_identity->AppendTags(columns);
        return columns;
    }
    Status Read(std::size_t row, ULONG id, ValueMemory& memory, SPropValue& value) override {
        return m_identity->Read(id, memory, value) ? Status() : m_rows->Read(row, id, memory, value);
    }
    UINT CodePage(std::size_t row) override { return m_rows->CodePage(row); }
    bool IsIndexed(ULONG id) const override { return m_rows->IsIndexed(id); }
    std::optional<std::size_t> Find(ULONG id, ByteView key) override { return m_rows->Find(id, key); }
    Result<std::unique_ptr<RowSource>> RowsWithin(std::size_t row, ULONG objectTag) override {
        return m_rows->RowsWithin(row, objectTag);
    }

private:
    std::unique_ptr<RowSource> m_rows;
    std::shared_ptr<const Identity> m_identity;
};

}  // namespace

void Identity::Set(ULONG tag, ULONG number) {
    m_entries.push_back({tag, number, {}});
}

void Identity::Set(ULONG tag, Bytes bytes) {
    if (!bytes.empty()) {
        m_entries.push_back({tag, 0, std::move(bytes)});
    }
}

bool Identity::Read(ULONG id, ValueMemory& memory, SPropValue& value) const {
    for (const Entry& entry : m_entries) {
        if (PROP_ID(entry.tag) == id) {
            value = PROP_TYPE(entry.tag) == PT_BINARY ? BinaryValue(entry.tag, entry.bytes, memory)
                                                      : LongValue(entry.tag, static_cast<std::int32_t>(entry.number));
            return true;
        }
    }
    return false;
}

void Identity::AppendTags(std::vector<ULONG>& tags) const {
    for (const Entry& entry : m_entries) {
        tags.push_back(entry.tag);
    }
}

std::unique_ptr<RowSource> WithIdentity(std::unique_ptr<RowSource> rows, std::shared_ptr<const Identity> identity) {
    return std::make_unique<RowsWithIdentity>(std::move(rows), std::move(identity));
}

}  // namespace localmapi
