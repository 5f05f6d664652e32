// PST and OST files: any bytes give a store or a refusal. Everything that a store lists is read, within a budget, and
// two ways to the same value must agree: by position in pieces and as a whole, by a cache and without one.
#include "localmapi/pst/ltp/Values.h"
#include "localmapi/pst/messaging/Store.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>
#include <utility>

namespace {

using namespace localmapi;
using namespace localmapi::pst;

constexpr std::size_t kMostItems = 200;
constexpr std::uint64_t kMostBytes = 1 << 16;

// Reads an item's values and sums them up, so that two readings can be compared.
class Reading {
public:
    explicit Reading(Store& store) : m_store(store) {}

    std::uint64_t Run() {
        int last = kFirstNamedId - 1;
        for (const NamedId& named : m_store.LoadNames()) {
            if (named.id <= last || named.id > kLastNamedId || (!named.name.text.empty() && !named.name.isText)) {
                std::abort();
            }
            last = named.id;
        }
        m_store.WalkFolders(Store::kRootFolder, SearchFolders::Include, [this](Folder& folder, unsigned depth) {
            Add(folder.Id().value + depth);
            Read(folder.Messages());
            Read(folder.AssociatedMessages());
            return m_items < kMostItems;
        });
        return m_sum;
    }

private:
    void Add(std::uint64_t value) { m_sum = m_sum * 1'099'511'628'211ULL + value; }

    void Read(ItemList list) {
        for (std::size_t i = 0; i < list.Count() && m_items < kMostItems; ++i, ++m_items) {
            for (const TableContext::Column& column : list.Columns()) {
                Read(list.Cell(i, column.id));
            }
            if (Result<Message> message = m_store.OpenMessage(list.Id(i))) {
                Read(*message);
            }
        }
    }

    void Read(Message& message) {
        Read(message.Properties());
        if (Result<TableContext> table = message.OpenRecipients()) {
            Add(table->RowCount());
        }
        for (const NodeId id : message.Attachments()) {
            Result<Attachment> attachment = message.OpenAttachment(id);
            if (!attachment || ++m_items > kMostItems) {
                continue;
            }
            Read(attachment->Properties());
            if (Result<ValueStream> data = attachment->OpenData()) {
                Read(*data);
            }
            if (Result<Message> inner = attachment->OpenMessage()) {
                Read(*inner);
            }
        }
    }

    void Read(PropertyContext& properties) {
        for (const PropertyContext::Record& record : properties.Records()) {
            Read(properties.Read(record));
        }
    }

    void Read(Result<PropertyValue> value) {
        if (!value) {
            Add(static_cast<std::uint64_t>(value.Failure().code));
            return;
        }
        Read(value->bytes);
        if (Result<Bytes> bytes = value->bytes.ReadAll(kMostBytes); bytes && IsMultiple(value->type)) {
            const Result<ValueList> list = ValueList::Parse(value->type, *std::move(bytes));
            for (std::size_t i = 0; list && i < list->Count(); ++i) {
                Add(list->At(i).Size());
            }
        }
    }

    // In small pieces; a value that also fits whole must be the same then.
    void Read(ValueStream& stream) {
        Bytes pieces;
        std::array<std::byte, 509> piece;
        while (pieces.size() < kMostBytes) {
            const Result<std::size_t> got = stream.ReadAt(pieces.size(), piece);
            if (!got || *got == 0) {
                break;
            }
            pieces.insert(pieces.end(), piece.begin(), piece.begin() + static_cast<std::ptrdiff_t>(*got));
        }
        if (const Result<Bytes> whole = stream.ReadAll(kMostBytes); whole && *whole != pieces) {
            std::abort();
        }
        Add(pieces.size());
        for (const std::byte byte : pieces) {
            Add(std::to_integer<std::uint64_t>(byte));
        }
    }

    Store& m_store;
    std::size_t m_items = 0;
    std::uint64_t m_sum = 0;
};

std::uint64_t ReadThrough(ByteView bytes, std::size_t cacheBytes) {
    StoreOptions options;
    options.database.cacheBytes = cacheBytes;
    Result<std::unique_ptr<Store>> store = Store::Open(std::make_unique<MemorySource>(bytes), options);
    return store ? Reading(**store).Run() : 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const ByteView bytes(std::as_bytes(std::span(data, size)));
    if (ReadThrough(bytes, std::size_t{1} << 20) != ReadThrough(bytes, 0)) {
        std::abort();
    }
    return 0;
}
