// The administrator test on the 9x family: the code of the open decides, and not the family.
#include <string>
#include <vector>

#include "support/calls.h"
#include "system/security.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;

class AdministratorsOf9x : public MachineTest {};

TEST_F(AdministratorsOf9x, AreNoneWhenTheTokenCannotBeOpenedForAnotherReasonThanAMissingCall) {
    for (const char* system : {"win95", "win98", "winme"}) {
        for (DWORD code : {DWORD{ERROR_ACCESS_DENIED}, DWORD{ERROR_PROC_NOT_FOUND}, DWORD{ERROR_NOT_SUPPORTED},
                           DWORD{ERROR_CALL_NOT_IMPLEMENTED - 1}, DWORD{ERROR_CALL_NOT_IMPLEMENTED + 1}, DWORD{0}}) {
            SCOPED_TRACE(std::string(system) + ", code " + std::to_string(code));
            Start(system);
            faults::FailCall("OpenProcessToken", 1, code);
            ForgetCalls(Test());
            Test().TurnLogOn(1);
            EXPECT_EQ(IsAdministrators(), 0u);
            EXPECT_THAT(Test().TakeLog(), ElementsAre("IsAdministrators() - Start"));
            EXPECT_THAT(Test().TakeCallNames({"OpenProcessToken", "GetTokenInformation"}),
                        ElementsAre("OpenProcessToken"));
        }
    }
}

TEST_F(AdministratorsOf9x, AreLookedForInATokenThatCanBeOpened) {
    Start("win98");
    ReplacedOperations replaced;
    replaced.table.OpenProcessToken = [](HANDLE, DWORD, PHANDLE token) -> BOOL {
        *token = nullptr;
        return TRUE;
    };
    replaced.table.GetTokenInformation = [](HANDLE, TOKEN_INFORMATION_CLASS, LPVOID, DWORD, PDWORD) -> BOOL {
        Platform().SetLastError(ERROR_CALL_NOT_IMPLEMENTED);
        return FALSE;
    };
    EXPECT_EQ(IsAdministrators(), 0u) << "120 means something from the open alone";
}

}  // namespace
}  // namespace pikel
