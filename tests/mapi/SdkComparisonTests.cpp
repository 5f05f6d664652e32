// Our declarations of MAPI against the SDK's: everything that both name.
#include "tests/mapi/Facts.h"

#include <gtest/gtest.h>

namespace {

using namespace vx_mapi_facts;

// The SDK's headers know window handles and connection numbers as 4 bytes; in 64-bit MAPI they are of a pointer's size.
std::string AsTheSdkSees(std::string ours) {
    for (std::size_t at = ours.find("i8 "); at != std::string::npos; at = ours.find("i8 ", at)) {
        ours.replace(at, 3, "i4 ");
    }
    return ours;
}

TEST(SdkComparison, EverythingThatBothHeadersNameIsTheSame) {
    const Facts ours = OurFacts();
    const Facts sdk = SdkFacts();
    ASSERT_EQ(ours.size(), sdk.size());
    ASSERT_GT(ours.size(), 1500U) << "the list of common names came out too short";
    for (std::size_t i = 0; i < ours.size(); ++i) {
        ASSERT_EQ(ours[i].name, sdk[i].name);
        if (ours[i].value != sdk[i].value) {
            EXPECT_EQ(AsTheSdkSees(ours[i].value), AsTheSdkSees(sdk[i].value)) << ours[i].name;
        }
    }
}

}  // namespace
