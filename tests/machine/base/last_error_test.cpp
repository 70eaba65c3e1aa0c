#include "support/machine_test.h"

namespace pikel {
namespace {

using LastError = testing_support::MachineTest;

TEST_F(LastError, TheLastErrorIsWhatWasSet) {
    Platform().SetLastError(0xE0000102);
    EXPECT_EQ(Platform().GetLastError(), 0xE0000102u);
    Platform().SetLastError(0);
    EXPECT_EQ(Platform().GetLastError(), 0u);
}

}  // namespace
}  // namespace pikel
