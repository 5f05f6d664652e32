#include "localmapi/base/Format.h"

namespace localmapi {

std::string Hex(std::uint64_t value) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string digits;
    do {
        digits.insert(digits.begin(), kDigits[value & 0xF]);
        value >>= 4;
    } while (value != 0);
    return "0x" + digits;
}

}  // namespace localmapi
