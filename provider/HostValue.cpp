#include "provider/HostValue.h"

#include "platform/WideText.h"
#include "provider/ErrorNames.h"
#include "provider/RecordKeys.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <new>

namespace VxOutlookProvider {

namespace {

std::string Narrow(WideView ascii) {
    std::string text(ascii.size(), '\0');
    std::ranges::transform(ascii, text.begin(), [](WCHAR unit) { return static_cast<char>(unit); });
    return text;
}

// "0x8004010F".
std::string Digits(HResult code) {
    constexpr int kDigits = 8;
    std::string text = "0x";
    for (int shift = 4 * (kDigits - 1); shift >= 0; shift -= 4) {
        text += "0123456789ABCDEF"[static_cast<std::uint32_t>(code) >> shift & 0xF];
    }
    return text;
}

template <typename MakeText>
std::string WithoutThrowing(const MakeText& makeText) noexcept {
    try {
        return makeText();
    } catch (const std::bad_alloc&) {
        return {};
    }
}

// The rows of a table of records, with their keys as narrow text; made while compiling.
template <const auto& Rows>
struct HostFields {
    static constexpr std::size_t kUnits = [] {
        std::size_t units = 0;
        for (const RecordField& row : Rows) {
            units += WideView(row.key).size();
        }
        return units;
    }();

    // All keys, one behind the other.
    static constexpr std::array<char, kUnits> kKeys = [] {
        std::array<char, kUnits> keys{};
        std::size_t used = 0;
        for (const RecordField& row : Rows) {
            for (const WCHAR unit : WideView(row.key)) {
                keys[used++] = static_cast<char>(unit);
            }
        }
        return keys;
    }();

    static constexpr std::array<Field, Rows.size()> kFields = [] {
        std::array<Field, Rows.size()> fields{};
        std::size_t start = 0;
        for (const RecordField& row : Rows) {
            const std::size_t length = WideView(row.key).size();
            fields[row.index] = {std::string_view(kKeys.data() + start, length), row.type};
            start += length;
        }
        return fields;
    }();
};

}  // namespace

std::string ResultName(HResult code) noexcept {
    return WithoutThrowing([code] { return Narrow(ErrorNameFromErrorCode(code)); });
}

std::string ResultText(HResult code) noexcept {
    return WithoutThrowing([code] {
        const std::string name = Narrow(ErrorNameFromErrorCode(code));
        const std::string digits = Digits(code);
        return name == digits ? digits : name + " (" + digits + ")";
    });
}

std::span<const Field> FieldsOf(RecordKind kind) noexcept {
    switch (kind) {
        case RecordKind::Profile: return HostFields<kProfileFields>::kFields;
        case RecordKind::Store: return HostFields<kStoreFields>::kFields;
        case RecordKind::Folder: return HostFields<kFolderFields>::kFields;
        case RecordKind::Uri: return HostFields<kUriFields>::kFields;
        case RecordKind::Item: return HostFields<kItemFields>::kFields;
    }
    return {};
}

}  // namespace VxOutlookProvider
