// Message files: any bytes open or are refused; what opens is read whole, within bounds, by every route, and the routes
// agree: tags are in order and found again, a value's size is that of its bytes, a row shows what its object has. And a
// file that could be opened for writing, changed and saved has the change and the properties that it had.
#include "localmapi/model/MessageSource.h"
#include "localmapi/msg/MessageOnStorage.h"
#include "localmapi/props/MapiMemory.h"
#include "localmapi/props/Values.h"
#include "mapi/PropTags.h"
#include "platform/GlobalMemory.h"
#include "platform/Storage.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

namespace {

using namespace localmapi;

constexpr std::uint64_t kMostOfValue = 1 << 16;
constexpr ULONG kNewId = 0x7B7B;

void Require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

ComPtr<ILockBytes> Array(const std::uint8_t* data, std::size_t size) {
    const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, size);
    if (size > 0) {
        std::memcpy(GlobalLock(block), data, size);
        GlobalUnlock(block);
    }
    ComPtr<ILockBytes> bytes;
    Require(CreateILockBytesOnHGlobal(block, TRUE, bytes.Receive()) == S_OK);
    return bytes;
}

std::unique_ptr<MessageSource> OpenMessage(ILockBytes& bytes, bool isWritable) {
    const DWORD mode =
        isWritable ? STGM_TRANSACTED | STGM_READWRITE | STGM_SHARE_EXCLUSIVE : STGM_READ | STGM_SHARE_EXCLUSIVE;
    ComPtr<IStorage> root;
    if (FAILED(StgOpenStorageOnILockBytes(&bytes, nullptr, mode, nullptr, 0, root.Receive()))) {
        return nullptr;
    }
    auto message = msg::OpenMessageOnStorage(std::move(root), {.isWritable = isWritable});
    return message ? *std::move(message) : nullptr;
}

class Reader {
public:
    void Message(MessageSource& message) {
        Require(message.Depth() < msg::kMostNesting);
        Properties(message);
        for (const auto& entry : message.Names().Entries()) {
            Require(message.Names().NameOf(entry.id) != nullptr);
        }
        Rows(*message.Recipients());
        const std::vector<ULONG> numbers = message.AttachmentNumbers();
        const auto rows = message.Attachments();
        Require(rows->Count() == numbers.size() && std::is_sorted(numbers.begin(), numbers.end()));
        Rows(*rows);
        for (std::size_t row = 0; row < numbers.size() && Spend(1); ++row) {
            if (const auto attachment = message.OpenAttachment(numbers[row])) {
                Attachment(**attachment, *rows, row);
            }
        }
    }

private:
    // False when enough was done for one input.
    bool Spend(std::uint64_t work) {
        m_budget -= std::min(m_budget, work + 1);
        return m_budget > 0;
    }

    void Properties(PropertySource& source) {
        const std::vector<ULONG> tags = source.Tags();
        Require(std::is_sorted(tags.begin(), tags.end()));
        for (std::size_t i = 0; i < tags.size() && Spend(1); ++i) {
            const ULONG id = PROP_ID(tags[i]);
            Require(i == 0 || id != PROP_ID(tags[i - 1]));
            Require(source.TagOf(id) == tags[i]);
            Value(source, tags[i]);
        }
        static_cast<void>(source.CodePage());
    }

    void Value(PropertySource& source, ULONG tag) {
        const ULONG id = PROP_ID(tag);
        Arena memory;
        SPropValue value{};
        const Status read = source.Read(id, kMostOfValue, memory, value);
        if (read) {
            Require(value.ulPropTag == tag && (PROP_TYPE(tag) == PT_OBJECT || IsValid(value)));
            Spend(SizeOf(value));
        }
        const auto bytes = source.Open(id);
        if (!bytes) {
            return;
        }
        const std::uint64_t size = (*bytes)->Size();
        Require(source.SizeOf(id) == size);
        Bytes piece(static_cast<std::size_t>(std::min(size, kMostOfValue)));
        const bool all = static_cast<bool>((*bytes)->ReadAt(0, piece));
        if (read && PROP_TYPE(tag) == PT_BINARY) {
            Require(all && value.Value.bin.cb == size
                    && std::equal(piece.begin(), piece.end(), BytesOf(value.Value.bin).Data()));
        }
        if (size > 0) {
            std::byte last{};
            const bool isThere = static_cast<bool>((*bytes)->ReadAt(size - 1, std::span(&last, 1)));
            Require(!all || size > kMostOfValue || (isThere && last == piece.back()));
        }
        Spend(piece.size());
    }

    void Rows(RowSource& rows) {
        const std::vector<ULONG> columns = rows.Count() > 0 ? rows.Columns() : std::vector<ULONG>{};
        for (std::size_t row = 0; row < rows.Count(); ++row) {
            for (const ULONG tag : columns) {
                Arena memory;
                SPropValue value{};
                if (!Spend(1)) {
                    return;
                }
                if (rows.Read(row, PROP_ID(tag), memory, value)) {
                    Require(PROP_TYPE(value.ulPropTag) == PT_OBJECT || IsValid(value));
                    Spend(SizeOf(value));
                }
            }
        }
    }

    void Attachment(AttachmentSource& attachment, RowSource& rows, std::size_t row) {
        Arena memory;
        SPropValue cell{};
        SPropValue value{};
        Require(static_cast<bool>(rows.Read(row, PROP_ID(PR_ATTACH_NUM), memory, cell)));
        Require(static_cast<bool>(attachment.Read(PROP_ID(PR_ATTACH_NUM), 8, memory, value)));
        Require(cell.Value.l == value.Value.l);
        Properties(attachment);
        const bool isStorage = static_cast<bool>(attachment.OpenStorage());
        if (const auto message = attachment.OpenMessage()) {
            Require(!isStorage);
            Message(**message);
        }
    }

    std::uint64_t m_budget = 8 << 20;
};

void ChangeAndReadBack(const std::uint8_t* data, std::size_t size) {
    const auto bytes = Array(data, size);
    std::vector<ULONG> before;
    {
        const auto message = OpenMessage(*bytes, true);
        if (message == nullptr) {
            return;
        }
        before = message->Tags();
        static_cast<void>(message->Remove(kNewId));
        Require(static_cast<bool>(message->Write(LongValue(PROP_TAG(PT_LONG, kNewId), 42))));
        ULONG number = 0;
        if (const auto attachment = message->CreateAttachment(number)) {
            static_cast<void>((*attachment)->Save());
        }
        if (!message->Save()) {
            return;  // streams that cannot be read cannot be copied
        }
    }
    const auto message = OpenMessage(*bytes, false);
    Require(message != nullptr);
    Arena memory;
    SPropValue value{};
    Require(message->Read(kNewId, 8, memory, value) && value.Value.l == 42);
    for (const ULONG tag : before) {
        // These two are set by the test, and by saving.
        const bool isOurs = PROP_ID(tag) == kNewId || PROP_ID(tag) == PROP_ID(PR_STORE_SUPPORT_MASK);
        Require(isOurs || message->TagOf(PROP_ID(tag)) == tag);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    {
        const auto bytes = Array(data, size);
        if (const auto message = OpenMessage(*bytes, false)) {
            Reader().Message(*message);
        }
    }
    ChangeAndReadBack(data, size);
    return 0;
}
