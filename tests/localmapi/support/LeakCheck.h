// What tests of MAPI's objects stand on: when a test ends, every buffer and every object is gone.
#pragma once

#include "localmapi/com/ComObject.h"
#include "localmapi/props/MapiMemory.h"

#include <gtest/gtest.h>

namespace localmapi::testing {

class LeakCheck : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(LiveBuffers(), 0) << "an earlier test left buffers";
        ASSERT_EQ(LiveObjects(), 0) << "an earlier test left objects";
    }
    void TearDown() override {
        EXPECT_EQ(LiveBuffers(), 0);
        EXPECT_EQ(LiveObjects(), 0);
    }
};

}  // namespace localmapi::testing
