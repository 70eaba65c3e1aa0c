// The switch for the DEVMODE of a caller's record.
#include "printer/effective_dev_mode.h"

#include "support/machine_test.h"

namespace pikel {
namespace {

using ::testing::ElementsAre;

class EffectiveDevMode : public testing_support::MachineTest {
  protected:
    ~EffectiveDevMode() override { DoSetEffectiveDevMode(1); }
};

TEST_F(EffectiveDevMode, IsOnFromTheStart) {
    EXPECT_EQ(EffectiveDevModeSwitch(), 1u);
}

TEST_F(EffectiveDevMode, TakesEveryValueAndSaysZero) {
    for (DWORD value : {0u, 1u, 2u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        EXPECT_EQ(DoSetEffectiveDevMode(value), 0u);
        EXPECT_EQ(EffectiveDevModeSwitch(), value);
    }
}

TEST_F(EffectiveDevMode, LogsValueAndCode) {
    Test().TurnLogOn(1);
    DoSetEffectiveDevMode(2);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoSetEffectiveDevMode( 2 ) Start", "DoSetEffectiveDevMode End(0)"));
    DoSetEffectiveDevMode(0xFFFFFFFF);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoSetEffectiveDevMode( -1 ) Start", "DoSetEffectiveDevMode End(0)"));
}

}  // namespace
}  // namespace pikel
