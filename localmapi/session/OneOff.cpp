#include "localmapi/session/OneOff.h"

#include "localmapi/props/Values.h"
#include "mapi/MapiFlags.h"
#include "mapi/MapiGuids.h"
#include "platform/CodePage.h"

#include <cstring>
#include <string>

namespace localmapi {

namespace {

constexpr std::size_t kProviderAt = 4;
constexpr std::size_t kFlagsAt = 22;  // behind a version of two bytes
constexpr std::size_t kTextAt = 24;

void AppendUnit(Bytes& bytes, unsigned value) {
    bytes.push_back(static_cast<std::byte>(value & 0xFF));
    bytes.push_back(static_cast<std::byte>(value >> 8));
}

void AppendText(Bytes& bytes, const CStringW& text, bool wide) {
    if (wide) {
        for (const WCHAR unit : text) {
            AppendUnit(bytes, static_cast<unsigned>(unit));
        }
        AppendUnit(bytes, 0);
        return;
    }
    for (const char character : ToNarrow(text, CP_ACP)) {
        bytes.push_back(static_cast<std::byte>(character));
    }
    bytes.push_back(std::byte{0});
}

// Reads a text up to its terminator and steps behind it; nothing when there is none.
std::optional<CStringW> TakeText(ByteView bytes, std::size_t& at, bool wide) {
    const std::size_t step = wide ? 2 : 1;
    CStringW text;
    std::string narrow;
    for (; bytes.Has(at, step); at += step) {
        const unsigned unit = wide ? bytes.U16(at) : bytes.U8(at);
        if (unit == 0) {
            at += step;
            return wide ? text : ToWide(narrow, CP_ACP);
        }
        if (wide) {
            text.push_back(static_cast<WCHAR>(unit));
        } else {
            narrow.push_back(static_cast<char>(unit));
        }
    }
    return std::nullopt;
}

}  // namespace

Bytes MakeOneOff(const OneOff& recipient, bool wide) {
    Bytes bytes(kTextAt);
    std::memcpy(bytes.data() + kProviderAt, MAPI_ONE_OFF_UID.ab, sizeof(MAPI_ONE_OFF_UID.ab));
    const unsigned flags = (wide ? MAPI_ONE_OFF_UNICODE : 0) | (recipient.isRich ? 0 : MAPI_ONE_OFF_NO_RICH_INFO);
    bytes[kFlagsAt] = static_cast<std::byte>(flags & 0xFF);
    bytes[kFlagsAt + 1] = static_cast<std::byte>(flags >> 8);
    AppendText(bytes, recipient.name, wide);
    AppendText(bytes, recipient.addressType, wide);
    AppendText(bytes, recipient.address, wide);
    return bytes;
}

std::optional<OneOff> ParseOneOff(ByteView entryId) {
    if (!entryId.Has(0, kTextAt)
        || std::memcmp(entryId.Data() + kProviderAt, MAPI_ONE_OFF_UID.ab, sizeof(MAPI_ONE_OFF_UID.ab)) != 0) {
        return std::nullopt;
    }
    const unsigned flags = entryId.U16(kFlagsAt);
    const bool wide = (flags & MAPI_ONE_OFF_UNICODE) != 0;
    std::size_t at = kTextAt;
    const auto name = TakeText(entryId, at, wide);
    const auto type = name ? TakeText(entryId, at, wide) : std::nullopt;
    const auto address = type ? TakeText(entryId, at, wide) : std::nullopt;
    if (!address) {
        return std::nullopt;
    }
    return OneOff{*name, *type, *address, (flags & MAPI_ONE_OFF_NO_RICH_INFO) == 0};
}

}  // namespace localmapi
