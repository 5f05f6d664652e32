#include "localmapi/pst/ndb/Header.h"

#include "localmapi/pst/ndb/Checksum.h"

#include <algorithm>
#include <array>
#include <string>

namespace localmapi::pst {

namespace {

constexpr std::uint32_t kMagic = 0x4E444221;          // "!BDN"
constexpr std::uint16_t kClientPst = 0x4D53;          // "SM"
constexpr std::uint16_t kClientOst = 0x4F53;          // "SO"
constexpr std::uint16_t kClientAddressBook = 0x4241;  // "AB"
constexpr std::uint16_t kVersionProtected = 37;       // may be under information protection
constexpr unsigned kSentinel = 0x80;
constexpr unsigned kLongestHeader = 564;

const Layout& LayoutOf(std::uint16_t version) {
    if (version <= 15) {
        return kAnsiLayout;
    }
    return version >= 36 && version != kVersionProtected ? kLargePageLayout : kUnicodeLayout;
}

PageRef RootAt(ByteView header, const Layout& layout, unsigned at) {
    return {header.Number(at, layout.idWidth), FileOffset{header.Number(at + layout.idWidth, layout.idWidth)}};
}

bool ChecksFit(ByteView header, const Layout& layout) {
    // Bytes 8 to 478 in every form; the 64-bit forms have a second value, over bytes 8 to 523.
    if (header.U8(layout.header.sentinelAt) != kSentinel || Crc(header.Part(8, 471)) != header.U32(4)) {
        return false;
    }
    return layout.idWidth == 4 || Crc(header.Part(8, 516)) == header.U32(524);
}

// True when a page of this form with the trailer of a b-tree page lies where the header says.
bool RootLooksRight(ByteSource& source, const Layout& layout, PageRef root, unsigned type) {
    std::array<std::byte, 4> trailer{};
    const std::uint64_t room = layout.page.size - layout.page.trailerSize;
    if (!Inside(root.at.value, layout.page.size, source.Size()) || root.at.value % layout.page.size != 0
        || !source.ReadAt(root.at.value + room, trailer)) {
        return false;
    }
    const ByteView view{std::span<const std::byte>(trailer)};
    return view.U8(0) == type && view.U8(1) == type && view.U16(2) == Signature(root.at, root.id);
}

// In a damaged header a root may lead to a sound page that is not the root. Only the page's own id tells.
PageRef Confirmed(ByteSource& source, const Layout& layout, PageRef root) {
    constexpr PageRef kNowhere{0, FileOffset{UINT64_MAX}};
    Bytes trailer(layout.page.trailerSize);
    const std::uint64_t room = layout.page.size - layout.page.trailerSize;
    const bool fits = Inside(root.at.value, layout.page.size, source.Size())
                      && source.ReadAt(root.at.value + room, trailer)
                      && ByteView(trailer).Number(layout.TrailerIdAt(), layout.idWidth) == root.id;
    return fits ? root : kNowhere;
}

// In a damaged header the version itself may be wrong: the form whose root pages are where they should be wins.
const Layout& LikeliestLayout(ByteSource& source, ByteView header, const Layout& named) {
    const auto fits = [&](const Layout& layout) {
        return header.U8(layout.header.sentinelAt) == kSentinel
               && (RootLooksRight(source, layout, RootAt(header, layout, layout.header.nodeRootAt), 0x81)
                   || RootLooksRight(source, layout, RootAt(header, layout, layout.header.blockRootAt), 0x80));
    };
    if (fits(named)) {
        return named;
    }
    const auto found = std::find_if(kLayouts.begin(), kLayouts.end(), [&](const Layout* one) { return fits(*one); });
    return found != kLayouts.end() ? **found : named;
}

Status ReadEncoding(FileHeader& header, std::uint8_t method, Diagnostics& problems) {
    if (method <= static_cast<std::uint8_t>(Encoding::Cyclic)) {
        header.encoding = static_cast<Encoding>(method);
        return {};
    }
    if (header.isSound) {
        const bool isProtected = method == 0x10 || header.version == kVersionProtected;
        return Error{ErrorCode::Unsupported,
                     "the file's data is encoded by method " + Hex(method)
                         + (isProtected ? ", information protection, which needs the keys of its owner"
                                        : ", which is not known")};
    }
    header.encoding = Encoding::Permute;  // what nearly every file uses
    problems.Report("header: the data's encoding " + Hex(method) + " is not known; the usual one is assumed");
    return {};
}

}  // namespace

Result<FileHeader> ReadHeader(ByteSource& source, Diagnostics& problems) {
    Bytes bytes(static_cast<std::size_t>(std::min<std::uint64_t>(source.Size(), kLongestHeader)));
    VX_TRY(source.ReadAt(0, bytes));
    const ByteView view(bytes);
    if (view.U32(0) != kMagic) {
        return Error{ErrorCode::Unsupported, "this is no PST or OST file: it does not begin with \"!BDN\""};
    }
    FileHeader header;
    header.version = view.U16(10);
    header.layout = &LayoutOf(header.version);
    if (bytes.size() < header.layout->header.size) {
        return Error{ErrorCode::Unsupported,
                     "the file ends within its header, after " + std::to_string(bytes.size()) + " bytes"};
    }
    header.isSound = ChecksFit(view, *header.layout);
    if (!header.isSound) {
        header.layout = &LikeliestLayout(source, view, *header.layout);
        problems.Report("header: its CRC does not fit; the file is read as " + std::string(header.layout->name));
    }
    const std::uint16_t client = view.U16(8);
    header.isOst = client == kClientOst;
    if (!header.isOst && client != kClientPst && client != kClientAddressBook) {
        problems.Report("header: the client " + Hex(client) + " is not known; the file is read as a PST");
    }
    VX_TRY(ReadEncoding(header, view.U8(header.layout->header.encodingAt), problems));
    header.nodeRoot = RootAt(view, *header.layout, header.layout->header.nodeRootAt);
    header.blockRoot = RootAt(view, *header.layout, header.layout->header.blockRootAt);
    if (!header.isSound) {
        header.nodeRoot = Confirmed(source, *header.layout, header.nodeRoot);
        header.blockRoot = Confirmed(source, *header.layout, header.blockRoot);
    }
    const std::uint64_t end = view.Number(header.layout->header.fileEndAt, header.layout->idWidth);
    if (end > source.Size()) {
        problems.Report("header: the file was " + std::to_string(end) + " bytes long and now ends after "
                        + std::to_string(source.Size()) + "; what lay behind is lost");
    }
    return header;
}

}  // namespace localmapi::pst
