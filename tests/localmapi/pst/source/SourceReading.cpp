#include "tests/localmapi/pst/source/SourceReading.h"

#include "localmapi/props/Values.h"
#include "mapi/PropTags.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <set>
#include <utility>
#include <vector>

namespace localmapi::testing {

namespace {

constexpr char kDigits[] = "0123456789ABCDEF";

std::string Digits(ByteView bytes) {
    std::string text;
    text.reserve(2 * bytes.Size());
    for (std::size_t i = 0; i < bytes.Size(); ++i) {
        text += kDigits[bytes.U8(i) >> 4];
        text += kDigits[bytes.U8(i) & 15];
    }
    return text;
}

ByteView Raw(const void* bytes, std::size_t size) {
    return {static_cast<const std::byte*>(bytes), size};
}

ByteView RawWide(LPWSTR text) {
    return Raw(text, std::char_traits<WCHAR>::length(text) * 2);
}

// Bytes of one number of a type; 0 for other types.
std::size_t WidthOf(ULONG type) {
    switch (type) {
        case PT_I2: return 2;
        case PT_LONG:
        case PT_R4: return 4;
        case PT_DOUBLE:
        case PT_CURRENCY:
        case PT_APPTIME:
        case PT_I8:
        case PT_SYSTIME: return 8;
        case PT_CLSID: return 16;
        default: return 0;
    }
}

std::string TagDigits(ULONG tag) {
    std::string text;
    for (int shift = 28; shift >= 0; shift -= 4) {
        text += kDigits[(tag >> shift) & 15];
    }
    return text + ":";
}

}  // namespace

std::string Shown(ULONG tag, ByteView bytes) {
    return TagDigits(tag) + Digits(bytes);
}

std::string Shown(const SPropValue& value) {
    const auto& v = value.Value;
    std::string text = TagDigits(value.ulPropTag);
    const auto join = [&text](ULONG count, const auto& element) {
        for (ULONG i = 0; i < count; ++i) {
            text += (i == 0 ? "" : ",") + Digits(element(i));
        }
        return text;
    };
    const ULONG type = PROP_TYPE(value.ulPropTag);
    switch (type) {
        case PT_UNICODE: return text + Digits(RawWide(v.lpszW));
        case PT_STRING8: return text + Digits(Raw(v.lpszA, std::strlen(v.lpszA)));
        case PT_BINARY: return text + Digits(BytesOf(v.bin));
        case PT_BOOLEAN: return text + (v.b == 0 ? "00" : "01");
        case PT_CLSID: return text + Digits(Raw(v.lpguid, sizeof(GUID)));
        case PT_OBJECT: return text;
        case PT_MV_UNICODE: return join(v.MVszW.cValues, [&](ULONG i) { return RawWide(v.MVszW.lppszW[i]); });
        case PT_MV_STRING8:
            return join(v.MVszA.cValues,
                        [&](ULONG i) { return Raw(v.MVszA.lppszA[i], std::strlen(v.MVszA.lppszA[i])); });
        case PT_MV_BINARY: return join(v.MVbin.cValues, [&](ULONG i) { return BytesOf(v.MVbin.lpbin[i]); });
        default: break;
    }
    const std::size_t width = WidthOf(type & ~MV_FLAG);
    if ((type & MV_FLAG) != 0) {
        // All arrays are a count and a pointer.
        const auto* elements = reinterpret_cast<const std::byte*>(v.MVl.lpl);
        return join(v.MVl.cValues, [&](ULONG i) { return Raw(elements + i * width, width); });
    }
    return text + (width == 0 ? "?" : Digits(Raw(&v, width)));
}

std::string Why(const Error& error) {
    switch (error.code) {
        case ErrorCode::NotFound: return "not found";
        case ErrorCode::TooLarge: return "too large";
        case ErrorCode::Corrupt: return "corrupt";
        case ErrorCode::Unsupported: return "unsupported";
        default: return "failed";
    }
}

std::string Shown(PropertySource& source, ULONG id, std::uint64_t limit) {
    Arena memory;
    SPropValue value{};
    const Status read = source.Read(id, limit, memory, value);
    return read ? Shown(value) : Why(read.Failure());
}

std::string Shown(RowSource& rows, std::size_t row, ULONG id) {
    Arena memory;
    SPropValue value{};
    const Status read = rows.Read(row, id, memory, value);
    return read ? Shown(value) : Why(read.Failure());
}

std::string Streamed(PropertySource& source, ULONG id) {
    const auto opened = source.Open(id);
    if (!opened) {
        return Why(opened.Failure());
    }
    Bytes bytes(static_cast<std::size_t>((*opened)->Size()));
    const Status read = (*opened)->ReadAt(0, bytes);
    return read ? Digits(bytes) : Why(read.Failure());
}

std::string TextOf(PropertySource& source, ULONG id) {
    Arena memory;
    SPropValue value{};
    if (const Status read = source.Read(id, UINT64_MAX, memory, value); !read) {
        return Why(read.Failure());
    }
    ChangeWidth(value, PT_STRING8, 1252, memory);
    return PROP_TYPE(value.ulPropTag) == PT_STRING8 ? value.Value.lpszA : "?";
}

OpenedSource::OpenedSource(Bytes bytes) : image(std::move(bytes)) {
    Open(std::make_unique<MemorySource>(image));
}

OpenedSource::OpenedSource(std::unique_ptr<ByteSource> bytes) {
    Open(std::move(bytes));
}

void OpenedSource::Open(std::unique_ptr<ByteSource> bytes) {
    pst::StoreOptions options;
    options.database.sink = &sink;
    options.database.cacheBytes = 1 << 20;
    auto opened = pst::OpenStoreSource(std::move(bytes), options);
    EXPECT_TRUE(opened) << opened.Failure().text;
    source = opened ? *std::move(opened) : nullptr;
}

std::unique_ptr<MessageSource> OpenedSource::Message(std::uint32_t node) {
    auto message = source->OpenMessage(node);
    EXPECT_TRUE(message) << message.Failure().text;
    return message ? *std::move(message) : nullptr;
}

std::unique_ptr<FolderSource> OpenedSource::Folder(std::uint32_t node) {
    auto folder = source->OpenFolder(node);
    EXPECT_TRUE(folder) << folder.Failure().text;
    return folder ? *std::move(folder) : nullptr;
}

// ---- The walk -------------------------------------------------------------------------------------------------------

namespace {

class Walker {
public:
    explicit Walker(StoreSource& store) : m_store(store) {}

    Walked Run() {
        Read(m_store);
        Rows(*m_store.ReceiveFolders());
        CStringW matched;
        m_store.ReceiveFolder("IPM.Note"_w, matched);
        Visit(m_store.TopFolder());
        return m_found;
    }

private:
    void Visit(EntryNumber number) {
        auto folder = m_store.OpenFolder(number);
        if (!m_visited.insert(number).second || !Fine(folder)) {
            return;
        }
        ++m_found.folders;
        Read(**folder);
        EXPECT_LT((*folder)->Parent(), UINT32_MAX);
        const auto folders = (*folder)->Folders();
        Rows(*folders);
        for (std::size_t row = 0; row < folders->Count(); ++row) {
            Visit(EntryOf(*folders, row));
        }
        for (const auto& list : {(*folder)->Messages(), (*folder)->AssociatedMessages()}) {
            Rows(*list);
            for (std::size_t row = 0; row < list->Count(); ++row) {
                auto message = m_store.OpenMessage(EntryOf(*list, row));
                if (Fine(message)) {
                    Message(**message);
                }
                for (const ULONG tag : {PR_MESSAGE_RECIPIENTS, PR_MESSAGE_ATTACHMENTS}) {
                    auto within = list->RowsWithin(row, tag);
                    if (Fine(within)) {
                        Rows(**within);
                    }
                }
            }
        }
    }

    EntryNumber EntryOf(RowSource& rows, std::size_t row) {
        Arena memory;
        SPropValue value{};
        EXPECT_TRUE(rows.Read(row, PROP_ID(PR_ENTRYID), memory, value));
        const auto entry = m_store.EntryOf(BytesOf(value.Value.bin));
        EXPECT_TRUE(entry);
        return entry ? entry->number : 0;
    }

    void Message(MessageSource& message) {
        ++m_found.messages;
        Read(message);
        Rows(*message.Recipients());
        Rows(*message.Attachments());
        for (const ULONG number : message.AttachmentNumbers()) {
            auto attachment = message.OpenAttachment(number);
            if (!Fine(attachment)) {
                continue;
            }
            Read(**attachment);
            Fine((*attachment)->OpenStorage());
            auto inner = (*attachment)->OpenMessage();
            if (Fine(inner)) {
                EXPECT_EQ((*inner)->Depth(), message.Depth() + 1);
                Message(**inner);
            }
        }
    }

    void Read(PropertySource& source) {
        const std::vector<ULONG> tags = source.Tags();
        EXPECT_TRUE(std::is_sorted(tags.begin(), tags.end()));
        for (const ULONG tag : tags) {
            EXPECT_EQ(source.TagOf(PROP_ID(tag)), tag);
            Arena memory;
            SPropValue value{};
            const Status read = source.Read(PROP_ID(tag), 64 * 1024, memory, value);
            Count(read);
            if (read) {
                EXPECT_EQ(value.ulPropTag, tag);
                EXPECT_TRUE(IsValid(value)) << Shown(value);
            }
            const auto bytes = source.Open(PROP_ID(tag));
            if (bytes) {
                EXPECT_EQ(source.SizeOf(PROP_ID(tag)), (*bytes)->Size());
                std::array<std::byte, 4000> piece;
                for (std::uint64_t at = 0; at < std::min<std::uint64_t>((*bytes)->Size(), 1 << 20);) {
                    const auto part =
                        std::span(piece).first(std::min<std::size_t>(piece.size(), (*bytes)->Size() - at));
                    if (!Count((*bytes)->ReadAt(at, part))) {
                        break;
                    }
                    at += part.size();
                }
            }
        }
    }

    void Rows(RowSource& rows) {
        m_found.rows += rows.Count();
        for (std::size_t row = 0; row < rows.Count(); ++row) {
            rows.CodePage(row);
            for (const ULONG tag : rows.Columns()) {
                Arena memory;
                SPropValue value{};
                if (Count(rows.Read(row, PROP_ID(tag), memory, value))) {
                    EXPECT_TRUE(IsValid(value)) << Shown(value);
                    if (rows.IsIndexed(PROP_ID(tag))) {
                        const auto found = rows.Find(PROP_ID(tag), BytesOf(value.Value.bin));
                        EXPECT_TRUE(found && (*found == row || Shown(rows, *found, PROP_ID(tag)) == Shown(value)));
                    }
                }
            }
        }
    }

    bool Count(const Status& status) {
        m_found.values += status ? 1 : 0;
        const bool isAnswer =
            status || status.Failure().code == ErrorCode::NotFound || status.Failure().code == ErrorCode::TooLarge;
        m_found.errors += isAnswer ? 0 : 1;
        return static_cast<bool>(status);
    }

    template <class T>
    bool Fine(const Result<T>& result) {
        if (!result) {
            m_found.errors += result.IsNotFound() || result.Failure().code == ErrorCode::TooLarge ? 0 : 1;
        }
        return static_cast<bool>(result);
    }

    StoreSource& m_store;
    Walked m_found;
    std::set<EntryNumber> m_visited;
};

}  // namespace

Walked WalkThrough(StoreSource& store) {
    return Walker(store).Run();
}

}  // namespace localmapi::testing
