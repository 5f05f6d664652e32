// printf's spelling over UTF-16, with arguments that know their own type: whatever a format asks for, no argument that
// is missing or of another kind is ever read as what it is not, and text handed in as an argument is never format text.
// Uses no heap. Any thread may call it.
//
//   %s %S %hs %ls    text, wide or narrow as the argument is (narrow text is taken to be in the ANSI code page);
//                    it ends at its first zero or at the argument's own length; "(null)" for a null pointer
//   %c %C            one UTF-16 code unit
//   %d %i %u %o %x %X  an integer, an enumeration or a pointer, in the argument's own width (32 bits at least)
//   %e %f %g %E %F %G  a floating-point number
//   %p               a pointer as 16 upper-case hexadecimal digits
//   %%               a percent sign
//
// Flags (- + blank 0 #), width and precision (either may be *) mean what they mean in C; # counts for o, x and X. Of
// the length modifiers only h and hh change anything (they cut an integer down); l, ll, I64, I32, I, j, z, t, w, L are
// read over. Whatever is no conversion, or lacks a fitting argument, or asks for a width or precision above 9999,
// stands in the output as it stood in the format. A format without any argument is text: its percent signs stay.
#pragma once

#include "platform/WideText.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <type_traits>

namespace Vx {

// One argument of a format. It borrows texts, so it lives no longer than the expression that made it.
class FormatArg {
public:
    enum class Kind : std::uint8_t { Signed, Unsigned, Real, Wide, Narrow, Pointer };

    template <typename T>
    static FormatArg Of(const T& value) noexcept;

    static constexpr FormatArg OfInteger(bool isSigned, std::uint64_t bits, std::size_t bytes) noexcept {
        FormatArg arg(isSigned ? Kind::Signed : Kind::Unsigned);
        arg.m_bytes = static_cast<std::uint8_t>(bytes);
        arg.m_bits = bits;
        return arg;
    }
    static constexpr FormatArg OfReal(double value) noexcept {
        FormatArg arg(Kind::Real);
        arg.m_real = value;
        return arg;
    }
    // At most `limit` units are read, and none behind the first zero.
    static constexpr FormatArg OfWide(const WCHAR* text, std::size_t limit) noexcept {
        FormatArg arg(Kind::Wide);
        arg.m_text = {text, limit};
        return arg;
    }
    static constexpr FormatArg OfNarrow(const char* text, std::size_t limit) noexcept {
        FormatArg arg(Kind::Narrow);
        arg.m_text = {text, limit};
        return arg;
    }
    static constexpr FormatArg OfPointer(std::uint64_t address) noexcept {
        FormatArg arg(Kind::Pointer);
        arg.m_bits = address;
        return arg;
    }

    constexpr Kind GetKind() const noexcept { return m_kind; }
    constexpr bool IsText() const noexcept { return m_kind == Kind::Wide || m_kind == Kind::Narrow; }
    constexpr bool IsInteger() const noexcept { return m_kind == Kind::Signed || m_kind == Kind::Unsigned; }

    // Of integers, sign-extended when signed, and of pointers.
    constexpr std::uint64_t Bits() const noexcept { return m_bits; }
    constexpr std::size_t Bytes() const noexcept { return m_bytes; }
    constexpr double Real() const noexcept { return m_real; }
    // Of texts; Text may be null.
    const WCHAR* WideText() const noexcept { return static_cast<const WCHAR*>(m_text.first); }
    const char* NarrowText() const noexcept { return static_cast<const char*>(m_text.first); }
    constexpr const void* Text() const noexcept { return m_text.first; }
    constexpr std::size_t TextLimit() const noexcept { return m_text.limit; }

private:
    explicit constexpr FormatArg(Kind kind) noexcept : m_kind(kind), m_bits(0) {}

    struct TextRange {
        const void* first;
        std::size_t limit;
    };

    Kind m_kind;
    std::uint8_t m_bytes = 8;  // width of the argument's own type
    union {
        std::uint64_t m_bits;  // Signed, Unsigned, Pointer
        double m_real;         // Real
        TextRange m_text;      // Wide, Narrow
    };
};

// The arguments of one format, in order. Borrowed like the texts in them.
using FormatArgs = std::span<const FormatArg>;

// Writes `format` with its conversions replaced into `out`, cut to `capacity` - 1 units and always terminated (a
// capacity of 0 writes nothing). Gives the length of the whole text without the terminator, cut or not; -1 when that is
// more than an int counts.
int FormatText(WCHAR* out, std::size_t capacity, WideView format, FormatArgs args) noexcept;

template <typename... Args>
[[nodiscard]] std::array<FormatArg, sizeof...(Args)> MakeFormatArgs(const Args&... args) noexcept {
    return {FormatArg::Of(args)...};
}

// The same with the arguments as they are, into an array: Format(buffer, "%d of %d"_w, i, n).
template <std::size_t N, typename... Args>
int Format(WCHAR (&out)[N], WideView format, const Args&... args) noexcept {
    const auto list = MakeFormatArgs(args...);
    return FormatText(out, N, format, list);
}

// The same as owned text of any length. Throws std::bad_alloc; empty where FormatText gives -1.
[[nodiscard]] CStringW FormatToString(WideView format, FormatArgs args);

template <typename... Args>
[[nodiscard]] CStringW FormatString(WideView format, const Args&... args) {
    const auto list = MakeFormatArgs(args...);
    return FormatToString(format, FormatArgs(list));
}

template <typename T>
FormatArg FormatArg::Of(const T& value) noexcept {
    constexpr std::size_t kUntilZero = static_cast<std::size_t>(-1);
    if constexpr (std::is_enum_v<T>) {
        return Of(static_cast<std::underlying_type_t<T>>(value));
    } else if constexpr (std::is_integral_v<T>) {
        return OfInteger(std::is_signed_v<T>, static_cast<std::uint64_t>(value), sizeof(T));
    } else if constexpr (std::is_floating_point_v<T>) {
        return OfReal(static_cast<double>(value));
    } else if constexpr (std::is_null_pointer_v<T>) {
        return OfWide(nullptr, 0);
    } else if constexpr (std::is_array_v<T> && std::is_convertible_v<const T&, const WCHAR*>) {
        return OfWide(value, std::extent_v<T>);
    } else if constexpr (std::is_array_v<T> && std::is_convertible_v<const T&, const char*>) {
        return OfNarrow(value, std::extent_v<T>);
    } else if constexpr (std::is_class_v<T> && std::is_convertible_v<const T&, WideView>) {
        const WideView text = value;
        return OfWide(text.data(), text.size());
    } else if constexpr (std::is_class_v<T> && std::is_convertible_v<const T&, std::string_view>) {
        const std::string_view text = value;
        return OfNarrow(text.data(), text.size());
    } else if constexpr (std::is_convertible_v<const T&, const WCHAR*>) {
        return OfWide(static_cast<const WCHAR*>(value), kUntilZero);
    } else if constexpr (std::is_convertible_v<const T&, const char*>) {
        return OfNarrow(static_cast<const char*>(value), kUntilZero);
    } else if constexpr (std::is_convertible_v<const T&, const volatile void*>) {
        return OfPointer(reinterpret_cast<std::uintptr_t>(static_cast<const volatile void*>(value)));
    } else {
        static_assert(std::is_pointer_v<T> && std::is_function_v<std::remove_pointer_t<T>>,
                      "no conversion of a format takes an argument of this type");
        return OfPointer(reinterpret_cast<std::uintptr_t>(value));
    }
}

}  // namespace Vx
