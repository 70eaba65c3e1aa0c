// The contract of the print spooler's operations.
#include "platform/contract.h"

namespace pikel {
namespace {

using contract::WineException;

class SpoolerContract : public contract::Test {};

TEST_P(SpoolerContract, ClosingAPrinterThatIsNotOpenGivesInvalidHandle) {
    Platform().SetLastError(0);
    EXPECT_FALSE(Platform().ClosePrinter(reinterpret_cast<HANDLE>(0x7777)));
    EXPECT_EQ(Platform().GetLastError(), DWORD{ERROR_INVALID_HANDLE});
}

INSTANTIATE_CONTRACT(SpoolerContract, "win2000", "xp", "xp-x64", "vista", "vista-x64");

}  // namespace
}  // namespace pikel
