// The administrator test, and the security descriptors of printers as text and, on NT 4, as bytes.
#include "system/security.h"

#include "platform/simulated/security_descriptor.h"
#include "platform/simulated/spooler_printer_security.h"
#include "platform/simulated/token.h"
#include "printer/printer_machine.h"
#include "support/calls.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Lines = std::vector<std::string>;

void TakeRightsAway(TestMachine& test) {
    simulated::SystemDescription description = test->System();
    description.administrator = false;
    test->SetSystem(description);
}

void SetMembership(TestMachine& test, std::string_view membership) {
    test->Registry().SetText(simulated::kSecurityKey, "Administrators", membership);
}

// ---- administrators -------------------------------------------------------------------------------------------------

const Lines kTokenCalls = {"GetCurrentProcess", "OpenProcessToken", "GetTokenInformation", "AllocateAndInitializeSid",
                           "EqualSid",          "FreeSid",          "CloseHandle",         "HeapAlloc",
                           "HeapFree"};

Lines AdministratorLog(DWORD result) {
    return {"IsAdministrators() - Start", "IsAdministrators() - End(" + std::to_string(result) + ")"};
}

class AdministratorsOnEverySystem : public EverySystemTest {};
INSTANTIATE_ON_EVERY_SYSTEM(AdministratorsOnEverySystem);

TEST_P(AdministratorsOnEverySystem, UserWithRightsIsOne) {
    Test().TurnLogOn(1);
    EXPECT_EQ(IsAdministrators(), 1u);
    // A system without tokens says so, and then the end is silent.
    EXPECT_EQ(Test().TakeLog(), Is9xName(GetParam()) ? Lines{"IsAdministrators() - Start"} : AdministratorLog(1));
}

TEST_P(AdministratorsOnEverySystem, UserWithoutRightsIsNone) {
    TakeRightsAway(Test());
    Test().TurnLogOn(1);
    const bool everybodyIs = Is9xName(GetParam());
    EXPECT_EQ(IsAdministrators(), everybodyIs ? 1u : 0u);
    EXPECT_EQ(Test().TakeLog(), everybodyIs ? Lines{"IsAdministrators() - Start"} : AdministratorLog(0));
}

TEST_P(AdministratorsOnEverySystem, CallsComeInTheirOrder) {
    Test().TakeCalls();
    IsAdministrators();
    const Lines names = Test().TakeCallNames(kTokenCalls);
    if (Is9xName(GetParam())) {
        EXPECT_THAT(names, ElementsAre("GetCurrentProcess", "OpenProcessToken"));
        return;
    }
    // Every group is compared, also those behind the match.
    EXPECT_THAT(names, ElementsAre("GetCurrentProcess", "OpenProcessToken", "GetTokenInformation",
                                   "GetTokenInformation", "AllocateAndInitializeSid", "EqualSid", "EqualSid",
                                   "EqualSid", "EqualSid", "FreeSid", "CloseHandle"));
}

class Administrators : public MachineTest {
  protected:
    /// @param log  the whole log
    void ExpectAnswer(DWORD answer, const Lines& log) {
        Test().TurnLogOn(1);
        EXPECT_EQ(IsAdministrators(), answer);
        EXPECT_EQ(Test().TakeLog(), log);
    }
};

TEST_F(Administrators, GroupThatOnlyDeniesCounts) {
    TakeRightsAway(Test());
    SetMembership(Test(), "deny-only");
    ExpectAnswer(1, AdministratorLog(1));
}

TEST_F(Administrators, AskForTheTokenToBeRead) {
    ForgetCalls(Test());
    IsAdministrators();
    const Lines calls = TakeCallsOf(Test(), {"OpenProcessToken", "AllocateAndInitializeSid"});
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_THAT(calls[0], ::testing::HasSubstr(", 0x8, "));
    EXPECT_THAT(calls[1], ::testing::HasSubstr(", 0x2, 0x20, 0x220, 0x0, "));
}

TEST_F(Administrators, SystemWithoutTheCallCountsEverybody) {
    faults::FailCall("OpenProcessToken", 1, ERROR_CALL_NOT_IMPLEMENTED);
    ExpectAnswer(1, {"IsAdministrators() - Start"});
}

TEST_F(Administrators, TokenThatCannotBeOpenedAnswersNo) {
    for (const DWORD code : {DWORD{ERROR_ACCESS_DENIED}, DWORD{ERROR_INSUFFICIENT_BUFFER}, DWORD{0}}) {
        faults::Reset();
        faults::FailCall("OpenProcessToken", 1, code);
        ExpectAnswer(0, {"IsAdministrators() - Start"});
    }
}

TEST_F(Administrators, SizeThatCannotBeReadClosesTheTokenAndAnswersNo) {
    // 120 means something from the open alone.
    for (const DWORD code : {DWORD{ERROR_ACCESS_DENIED}, DWORD{ERROR_CALL_NOT_IMPLEMENTED}}) {
        faults::Reset();
        Test().TakeCalls();
        faults::FailCall("GetTokenInformation", 1, code);
        ExpectAnswer(0, {"IsAdministrators() - Start"});
        EXPECT_THAT(Test().TakeCallNames({"OpenProcessToken", "GetTokenInformation", "AllocateAndInitializeSid",
                                          "FreeSid", "CloseHandle"}),
                    ::testing::IsSupersetOf({"OpenProcessToken", "GetTokenInformation", "CloseHandle"}));
        EXPECT_EQ(Machine().Handles().OpenCount(), 0u);
    }
}

TEST_F(Administrators, GroupsThatCannotBeReadAnswerNo) {
    faults::FailCall("GetTokenInformation", 2, ERROR_ACCESS_DENIED);
    ExpectAnswer(0, AdministratorLog(0));
    // Also with the code that the first call may have.
    faults::Reset();
    faults::FailCall("GetTokenInformation", 2, ERROR_INSUFFICIENT_BUFFER);
    ExpectAnswer(0, AdministratorLog(0));
}

TEST_F(Administrators, WithoutASidTheAnswerIsNo) {
    faults::FailCall("AllocateAndInitializeSid", 1, ERROR_NOT_ENOUGH_MEMORY);
    ExpectAnswer(0, AdministratorLog(0));
}

TEST_F(Administrators, WithoutMemoryTheAnswerIsNo) {
    // The groups, then the SID.
    for (const std::size_t after : {0, 1}) {
        ForgetCalls(Test());
        Machine().Heap().FailAllocation(after, false);
        ExpectAnswer(0, AdministratorLog(0));
        Machine().Heap().StopFailing();
        EXPECT_EQ(Machine().Heap().OpenCount(), 0u);
    }
}

TEST_F(Administrators, SizeThatIsReadAtOnceIsTakenAsItStands) {
    ReplacedOperations replaced;
    replaced.table.GetTokenInformation = [](HANDLE token, TOKEN_INFORMATION_CLASS kind, LPVOID buffer, DWORD size,
                                            LPDWORD needed) -> BOOL {
        return NativePlatform().GetTokenInformation(token, kind, buffer, size, needed) || buffer == nullptr;
    };
    ExpectAnswer(1, AdministratorLog(1));
}

TEST_F(Administrators, GroupsBeyondTheBlockAreNotLookedAt) {
    ReplacedOperations replaced;
    static DWORD size;
    replaced.table.GetTokenInformation = [](HANDLE, TOKEN_INFORMATION_CLASS, LPVOID buffer, DWORD, LPDWORD needed) {
        *needed = size;
        if (buffer == nullptr) {
            simulated::lastError = ERROR_INSUFFICIENT_BUFFER;
            return FALSE;
        }
        const DWORD count = 1000;
        std::memcpy(buffer, &count, std::min<std::size_t>(size, sizeof count));
        return TRUE;
    };
    for (const DWORD cut : {0u, 3u, 4u, 8u, 23u}) {
        size = cut;
        ExpectAnswer(0, AdministratorLog(0));
    }
}

// ---- descriptors on every system ------------------------------------------------------------------------------------

constexpr char kText[] = "O:BAG:SYD:(A;;LCSWSDRCWDWO;;;BA)(A;;SWRC;;;WD)";
/// Bytes with a NUL inside and at their end, as NT 4 keeps them.
const std::string kBytes("\x01\x00\x04\x80\x00raw\x00", 9);

const Lines kDescriptorCalls = {"LoadLibraryA",
                                "GetProcAddress",
                                "OpenPrinterA",
                                "GetPrinterA",
                                "SetPrinterA",
                                "ClosePrinter",
                                "ConvertSecurityDescriptorToStringSecurityDescriptorA",
                                "ConvertStringSecurityDescriptorToSecurityDescriptorA",
                                "RegOpenKeyExA",
                                "RegCreateKeyExA",
                                "RegQueryValueExA",
                                "RegSetValueExA",
                                "RegCloseKey",
                                "FreeLibrary"};

Lines LogOf(const std::string& routine, DWORD code) {
    return {routine + "() - Start", routine + "() - End(" + std::to_string(code) + ")"};
}

/// The value Security of a printer, or nothing.
std::optional<std::string> SecurityOn(TestMachine& test, const std::string& printer) {
    const auto* value = test->Registry().Find(std::string(kPrintersOn) + "\\" + printer, "Security");
    return value == nullptr ? std::nullopt : std::optional(value->data);
}

DWORD Set(LPCSTR printer, std::string_view text) {
    const std::string copy(text);
    return SetStringSD(printer, copy.c_str(), static_cast<DWORD>(copy.size()));
}

enum class Way { None, Bytes, Text };

Way WayOf(std::string_view system) {
    return Is9xName(system) ? Way::None : IsNt4Name(system) ? Way::Bytes : Way::Text;
}

class DescriptorOnEverySystem : public EverySystemTest {
  protected:
    DescriptorOnEverySystem() {
        InstallDriver(Test());
        AddPrinterTo(Test(), "P1");
        ForgetCalls(Test());
    }
    Way OfSystem() const { return WayOf(GetParam()); }
};
INSTANTIATE_ON_EVERY_SYSTEM(DescriptorOnEverySystem);

TEST_P(DescriptorOnEverySystem, IsReadAsTheSystemKeepsIt) {
    const std::optional<std::string> value = SecurityOn(Test(), "P1");
    Test().TurnLogOn(1);
    StringSD sd;
    switch (OfSystem()) {
        case Way::None:
            EXPECT_EQ(GetStringSD("P1", sd), ERROR_PROC_NOT_FOUND);
            EXPECT_EQ(Test().TakeLog(), LogOf("GetStringSD", 127));
            EXPECT_EQ(sd.Text(), nullptr);
            EXPECT_EQ(sd.Length(), 0u);
            break;
        case Way::Bytes:
            EXPECT_EQ(GetStringSD("P1", sd), 0u);
            EXPECT_EQ(Test().TakeLog(), LogOf("GetStringSD", 0));
            ASSERT_TRUE(value.has_value());
            EXPECT_EQ(std::string(sd.Text(), sd.Length()), *value);
            EXPECT_TRUE(Machine().Heap().Owns(simulated::BlockKind::Heap, sd.Text()));
            break;
        case Way::Text:
            EXPECT_EQ(GetStringSD("P1", sd), 0u);
            EXPECT_EQ(Test().TakeLog(), LogOf("GetStringSD", 0));
            EXPECT_THAT(sd.Text(), ::testing::StartsWith("O:BAG:SYD:(A;;LCSWSDRCWDWO;;;BA)"));
            EXPECT_EQ(sd.Length(), std::string_view(sd.Text()).size() + 1);
            EXPECT_TRUE(Machine().Heap().Owns(simulated::BlockKind::Local, sd.Text()));
            break;
    }
}

TEST_P(DescriptorOnEverySystem, ReadAndWriteAreAPair) {
    Test().TurnLogOn(1);
    const std::string given = OfSystem() == Way::Bytes ? kBytes : kText;
    const DWORD expected = OfSystem() == Way::None ? ERROR_PROC_NOT_FOUND : 0;
    EXPECT_EQ(Set("P1", given), expected);
    EXPECT_EQ(Test().TakeLog(), LogOf("SetStringSD", expected));
    if (OfSystem() == Way::None) {
        EXPECT_EQ(SecurityOn(Test(), "P1"), std::nullopt);
        return;
    }
    Test().Reopen();
    StringSD sd;
    ASSERT_EQ(GetStringSD("P1", sd), 0u);
    const DWORD nul = OfSystem() == Way::Text ? 1 : 0;
    EXPECT_EQ(std::string(sd.Text(), sd.Length() - nul), given);
    // And once more with what was read.
    ASSERT_EQ(SetStringSD("P1", sd.Text(), sd.Length()), 0u);
    StringSD again;
    ASSERT_EQ(GetStringSD("P1", again), 0u);
    EXPECT_EQ(std::string(again.Text(), again.Length()), std::string(sd.Text(), sd.Length()));
}

TEST_P(DescriptorOnEverySystem, ReadingCallsComeInTheirOrder) {
    StringSD sd;
    GetStringSD("P1", sd);
    const Lines names = Test().TakeCallNames(kDescriptorCalls);
    switch (OfSystem()) {
        case Way::None:
            EXPECT_THAT(names, ElementsAre("LoadLibraryA", "GetProcAddress", "FreeLibrary"));
            break;
        case Way::Bytes:
            EXPECT_THAT(names, ElementsAre("LoadLibraryA", "GetProcAddress", "RegOpenKeyExA", "RegQueryValueExA",
                                           "RegQueryValueExA", "RegCloseKey", "FreeLibrary"));
            break;
        case Way::Text:
            EXPECT_THAT(names, ElementsAre("LoadLibraryA", "GetProcAddress", "OpenPrinterA", "GetPrinterA",
                                           "GetPrinterA", "ClosePrinter",
                                           "ConvertSecurityDescriptorToStringSecurityDescriptorA", "FreeLibrary"));
            break;
    }
}

TEST_P(DescriptorOnEverySystem, WritingCallsComeInTheirOrder) {
    Set("P1", kText);
    const Lines names = Test().TakeCallNames(kDescriptorCalls);
    switch (OfSystem()) {
        case Way::None:
            EXPECT_THAT(names, ElementsAre("LoadLibraryA", "GetProcAddress", "FreeLibrary"));
            break;
        case Way::Bytes:
            EXPECT_THAT(names, ElementsAre("LoadLibraryA", "GetProcAddress", "RegCreateKeyExA", "RegSetValueExA",
                                           "RegCloseKey", "FreeLibrary"));
            break;
        case Way::Text:
            EXPECT_THAT(names, ElementsAre("LoadLibraryA", "GetProcAddress",
                                           "ConvertStringSecurityDescriptorToSecurityDescriptorA", "OpenPrinterA",
                                           "SetPrinterA", "ClosePrinter", "FreeLibrary"));
            break;
    }
}

TEST_P(DescriptorOnEverySystem, NullPrinterIsRefusedAtOnce) {
    StringSD sd;
    sd.TakeBytes(AllocateHeap(4), 4);
    Test().TurnLogOn(1);
    EXPECT_EQ(GetStringSD(nullptr, sd), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(Test().TakeLog(), LogOf("GetStringSD", 87));
    EXPECT_EQ(sd.Text(), nullptr);
    EXPECT_EQ(sd.Length(), 0u);
    EXPECT_EQ(Set(nullptr, kText), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(Test().TakeLog(), LogOf("SetStringSD", 87));
    EXPECT_THAT(Test().TakeCallNames(kDescriptorCalls), IsEmpty());
}

TEST_P(DescriptorOnEverySystem, MissingLibraryIsTheResult) {
    const std::optional<std::string> before = SecurityOn(Test(), "P1");
    Test().TurnLogOn(1);
    StringSD sd;
    faults::FailCall("LoadLibraryA", 1, ERROR_MOD_NOT_FOUND);
    EXPECT_EQ(GetStringSD("P1", sd), ERROR_MOD_NOT_FOUND);
    EXPECT_EQ(Test().TakeLog(), LogOf("GetStringSD", 126));
    EXPECT_EQ(sd.Text(), nullptr);
    faults::FailCall("LoadLibraryA", 1, ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(Set("P1", kText), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(Test().TakeLog(), LogOf("SetStringSD", 8));
    EXPECT_EQ(SecurityOn(Test(), "P1"), before);
}

TEST_P(DescriptorOnEverySystem, MissingEntryIsTheResultButOnNt4) {
    const bool isNt4 = OfSystem() == Way::Bytes;
    StringSD sd;
    faults::FailCall("GetProcAddress", 1, ERROR_INVALID_FUNCTION);
    EXPECT_EQ(GetStringSD("P1", sd), isNt4 ? 0u : ERROR_INVALID_FUNCTION);
    EXPECT_EQ(sd.Text() != nullptr, isNt4);
    faults::FailCall("GetProcAddress", 1, ERROR_INVALID_FUNCTION);
    EXPECT_EQ(Set("P1", kText), isNt4 ? 0u : ERROR_INVALID_FUNCTION);
}

}  // namespace
}  // namespace pikel
