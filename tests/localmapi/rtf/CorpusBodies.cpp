#include "tests/localmapi/rtf/CorpusBodies.h"

#include "localmapi/pst/ltp/Values.h"
#include "localmapi/pst/messaging/PropertyIds.h"
#include "localmapi/pst/messaging/Store.h"
#include "platform/Storage.h"

#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>

namespace localmapi::testing {

namespace {

void Add(std::vector<Bodies>& list, const std::filesystem::path& file, Bodies bodies) {
    if (!bodies.compressedRtf.empty() || bodies.html) {
        bodies.where = file.filename().string() + " #" + std::to_string(list.size());
        list.push_back(std::move(bodies));
    }
}

std::optional<Bytes> ValueOf(pst::Message& message, ULONG tag) {
    Result<pst::PropertyValue> value = message.Properties().Read(pst::IdOf(tag));
    Result<Bytes> bytes = value ? value->bytes.ReadAll() : Result<Bytes>(value.TakeFailure());
    return bytes ? std::optional(*std::move(bytes)) : std::nullopt;
}

void AddMessage(std::vector<Bodies>& list, const std::filesystem::path& file, pst::Message& message) {
    Bodies bodies;
    bodies.compressedRtf = ValueOf(message, PR_RTF_COMPRESSED).value_or(Bytes());
    bodies.html = ValueOf(message, PR_HTML);
    bodies.plain = message.Text(pst::IdOf(PR_BODY));
    bodies.htmlPage =
        static_cast<UINT>(pst::ReadInteger(message.Properties(), pst::IdOf(PR_INTERNET_CPID)).value_or(0));
    Add(list, file, std::move(bodies));
    for (const pst::NodeId id : message.Attachments()) {
        Result<pst::Attachment> attachment = message.OpenAttachment(id);
        Result<pst::Message> inner =
            attachment ? attachment->OpenMessage() : Result<pst::Message>(attachment.TakeFailure());
        if (inner) {
            AddMessage(list, file, *inner);
        }
    }
}

template <class T>
struct Releaser {
    void operator()(T* object) const noexcept { object->Release(); }
};
template <class T>
using Held = std::unique_ptr<T, Releaser<T>>;

std::optional<Bytes> StreamIn(IStorage& storage, const WCHAR* name) {
    IStream* stream = nullptr;
    if (FAILED(storage.OpenStream(name, nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE, 0, &stream))) {
        return std::nullopt;
    }
    const Held<IStream> held(stream);
    Bytes bytes;
    std::byte piece[4096];
    ULONG count = 0;
    while (SUCCEEDED(stream->Read(piece, sizeof(piece), &count)) && count > 0) {
        bytes.insert(bytes.end(), piece, piece + count);
    }
    return bytes;
}

// A number among the fixed properties: rows of 16 bytes behind a header that is longer at the top, [MS-OXMSG] 2.4.
UINT NumberIn(IStorage& message, std::uint32_t tag, bool isTop) {
    const Bytes rows = StreamIn(message, "__properties_version1.0"_w).value_or(Bytes());
    const ByteView view(rows);
    for (std::size_t at = isTop ? 32 : 24; view.Has(at, 16); at += 16) {
        if (view.U32(at) == tag) {
            return view.U32(at + 8);
        }
    }
    return 0;
}

void AddMessage(std::vector<Bodies>& list, const std::filesystem::path& file, IStorage& message, bool isTop) {
    Bodies bodies;
    bodies.compressedRtf = StreamIn(message, "__substg1.0_10090102"_w).value_or(Bytes());
    bodies.html = StreamIn(message, "__substg1.0_10130102"_w);
    bodies.plain = FromUtf16(StreamIn(message, "__substg1.0_1000001F"_w).value_or(Bytes()));
    bodies.htmlPage = NumberIn(message, 0x3FDE0003, isTop);
    Add(list, file, std::move(bodies));

    for (unsigned i = 0; i < 100; ++i) {
        constexpr std::string_view kDigits = "0123456789ABCDEF";
        CStringW name = "__attach_version1.0_#000000"_w;
        name.push_back(static_cast<WCHAR>(kDigits[i / 16]));
        name.push_back(static_cast<WCHAR>(kDigits[i % 16]));
        constexpr DWORD kMode = STGM_READ | STGM_SHARE_EXCLUSIVE;
        IStorage* attachment = nullptr;
        if (FAILED(message.OpenStorage(name.c_str(), nullptr, kMode, nullptr, 0, &attachment))) {
            break;
        }
        const Held<IStorage> heldAttachment(attachment);
        IStorage* inner = nullptr;
        if (SUCCEEDED(attachment->OpenStorage("__substg1.0_3701000D"_w, nullptr, kMode, nullptr, 0, &inner))) {
            const Held<IStorage> heldInner(inner);
            AddMessage(list, file, *inner, false);
        }
    }
}

}  // namespace

std::vector<Bodies> BodiesOfStore(const std::filesystem::path& file) {
    std::vector<Bodies> list;
    Result<std::unique_ptr<pst::Store>> store = pst::Store::Open(file, {});
    if (!store) {
        return list;
    }
    (*store)->WalkFolders(pst::Store::kRootFolder, pst::SearchFolders::Skip, [&](pst::Folder& folder, unsigned) {
        pst::ItemList messages = folder.Messages();
        for (std::size_t i = 0; i < messages.Count(); ++i) {
            if (Result<pst::Message> message = (*store)->OpenMessage(messages.Id(i))) {
                AddMessage(list, file, *message);
            }
        }
        return true;
    });
    return list;
}

std::vector<Bodies> BodiesOfMessageFile(const std::filesystem::path& file) {
    std::vector<Bodies> list;
    const std::u16string path = file.u16string();
    const CStringW name(path.begin(), path.end());
    IStorage* storage = nullptr;
    constexpr DWORD kMode = STGM_READ | STGM_SHARE_DENY_WRITE;
    if (SUCCEEDED(StgOpenStorage(name.c_str(), nullptr, kMode, nullptr, 0, &storage))) {
        const Held<IStorage> held(storage);
        AddMessage(list, file, *storage, true);
    }
    return list;
}

}  // namespace localmapi::testing
