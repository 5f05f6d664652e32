#include "platform/linux/text/Iconv.h"

namespace vx_text {
namespace {

constexpr auto kFailed = static_cast<std::size_t>(-1);

}  // namespace

Iconv::Iconv(const char* to, const char* from) noexcept : m_descriptor(iconv_open(to, from)) {}

Iconv::~Iconv() {
    if (IsOpen()) {
        iconv_close(m_descriptor);
    }
}

bool Iconv::IsOpen() const noexcept {
    return m_descriptor != reinterpret_cast<iconv_t>(-1);
}

std::size_t Iconv::Convert(std::span<const char> in, std::span<char> out) noexcept {
    if (!IsOpen()) {
        return 0;
    }
    char* source = const_cast<char*>(in.data());  // iconv does not write there, whatever its prototype says
    std::size_t sourceLeft = in.size();
    char* target = out.data();
    std::size_t targetLeft = out.size();
    iconv(m_descriptor, nullptr, nullptr, nullptr, nullptr);
    // Any other count than 0 tells of characters that were replaced by something alike.
    if (iconv(m_descriptor, &source, &sourceLeft, &target, &targetLeft) != 0 || sourceLeft != 0) {
        return 0;
    }
    // Sets with combining marks hold a letter back until they know that no mark follows.
    if (iconv(m_descriptor, nullptr, nullptr, &target, &targetLeft) == kFailed) {
        return 0;
    }
    return out.size() - targetLeft;
}

}  // namespace vx_text
