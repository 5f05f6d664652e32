#include "tests/provider/mailbox/SectionReader.h"

namespace vx_testing {

bool ReadInAnotherProcess(const std::u16string&, const std::vector<std::uint8_t>&) {
    return true;
}

}  // namespace vx_testing
