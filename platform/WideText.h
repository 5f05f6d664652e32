// Wide text is UTF-16 on every system: CStringW holds it, and "IPM.Note"_w writes it. Neither L"" nor 32-bit wide text
// is used anywhere, so lengths, hashes over the bytes and texts in blobs are the same on Linux and on Windows.
#pragma once

#include "platform/BaseTypes.h"

#include <cstddef>
#include <string>
#include <string_view>

// Owned UTF-16 text. It may hold any code units, unpaired surrogates and embedded zeros too.
using CStringW = std::basic_string<WCHAR>;

// Borrowed UTF-16 text, not necessarily terminated.
using WideView = std::basic_string_view<WCHAR>;

namespace vx_wide_literal {

// The characters of a narrow literal, widened while compiling. A character that is not ASCII does not compile, since
// its meaning would hang on the source file's encoding.
template <std::size_t N>
struct Text {
    WCHAR units[N] = {};

    // NOLINTNEXTLINE(google-explicit-constructor): a literal operator template needs the implicit form.
    consteval Text(const char (&literal)[N]) {
        for (std::size_t i = 0; i < N; ++i) {
            if (static_cast<unsigned char>(literal[i]) > 0x7F) {
                throw "a wide literal holds ASCII characters only";
            }
            units[i] = static_cast<WCHAR>(literal[i]);
        }
    }
};

template <Text T>
inline constexpr auto kStored = T;

}  // namespace vx_wide_literal

// "text"_w: a reference to a constant, zero-terminated WCHAR array with the life of the program, as L"text" would be.
template <vx_wide_literal::Text T>
constexpr const auto& operator""_w() noexcept {
    return vx_wide_literal::kStored<T>.units;
}
