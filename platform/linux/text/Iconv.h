// One conversion of the C library's. Only the tables of pages are built with it: conversions themselves go by those
// tables under Windows' rules, so a descriptor, which is bound to one thread at a time, never outlives a build.
#pragma once

#include <cstddef>
#include <span>

#include <iconv.h>

namespace vx_text {

class Iconv {
public:
    // `to` and `from` are the C library's names of character sets.
    Iconv(const char* to, const char* from) noexcept;
    Iconv(const Iconv&) = delete;
    Iconv& operator=(const Iconv&) = delete;
    ~Iconv();

    // False when the C library lacks one of the sets: nothing converts then.
    [[nodiscard]] bool IsOpen() const noexcept;

    // Converts `in` as a whole, from the initial state. Gives the bytes written to `out`; 0 when `in` is not valid from
    // end to end, has no exact counterpart, or gives more than `out` holds.
    [[nodiscard]] std::size_t Convert(std::span<const char> in, std::span<char> out) noexcept;

private:
    iconv_t m_descriptor;
};

}  // namespace vx_text
