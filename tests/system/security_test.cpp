// The administrator test, and the security descriptors of printers as text and, on NT 4, as bytes.
#include "system/security.h"

#include <algorithm>
#include <cstring>

#include "machine/spooler/spooler.h"
#include "machine/spooler/printer_security.h"
#include "machine/security/token.h"
#include "support/calls.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Lines = std::vector<std::string>;

bool Is9xName(std::string_view system) {
    return system.starts_with("win9") || system == "winme";
}

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
                           "EqualSid",          "FreeSid",          "CloseHandle"};

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

TEST_F(Administrators, GiveUpTheSidThenTheGroupsAndThenTheToken) {
    ForgetCalls(Test());
    static Lines s_released;
    s_released.clear();
    ReplacedOperations replaced;
    replaced.table.FreeSid = [](PSID sid) -> PVOID {
        s_released.push_back("FreeSid");
        return NativePlatform().FreeSid(sid);
    };
    replaced.table.HeapFree = [](HANDLE heap, DWORD flags, LPVOID block) -> BOOL {
        s_released.push_back("HeapFree");
        return NativePlatform().HeapFree(heap, flags, block);
    };
    replaced.table.CloseHandle = [](HANDLE handle) -> BOOL {
        s_released.push_back("CloseHandle");
        return NativePlatform().CloseHandle(handle);
    };
    EXPECT_EQ(IsAdministrators(), 1u);
    EXPECT_THAT(s_released, ElementsAre("FreeSid", "HeapFree", "CloseHandle"));
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
                                "LocalFree",
                                "FreeLibrary"};

Lines LogOf(const std::string& routine, DWORD code) {
    return {routine + "() - Start", routine + "() - End(" + std::to_string(code) + ")"};
}

/// A printer as the spooler finds it in the registry; what else belongs to one plays no part here.
void PutPrinter(TestMachine& test, const std::string& printer) {
    const std::string key = simulated::PrintKey("Printers\\" + printer);
    test->Registry().SetText(key, "Name", printer);
    if (!test->Is9x()) {
        test->Registry().SetBytes(key, "Security", simulated::DefaultPrinterSecurity(*test));
    }
}

/// The value Security of a printer, or nothing.
std::optional<std::string> SecurityOn(TestMachine& test, const std::string& printer) {
    const auto* value = test->Registry().Find(simulated::PrintKey("Printers\\" + printer), "Security");
    return value == nullptr ? std::nullopt : std::optional(value->data);
}

DWORD Set(LPCSTR printer, std::string_view text) {
    const std::string copy(text);
    return SetStringSD(printer, copy.c_str(), static_cast<DWORD>(copy.size()));
}

enum class Way { None, Bytes, Text };

Way WayOf(std::string_view system) {
    return Is9xName(system) ? Way::None : system == "nt4" ? Way::Bytes : Way::Text;
}

class DescriptorOnEverySystem : public EverySystemTest {
  protected:
    DescriptorOnEverySystem() {
        PutPrinter(Test(), "P1");
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
    const DWORD expected = OfSystem() == Way::None ? DWORD{ERROR_PROC_NOT_FOUND} : 0;
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
                                           "SetPrinterA", "LocalFree", "ClosePrinter", "FreeLibrary"));
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

// ---- descriptors as text --------------------------------------------------------------------------------------------

class DescriptorText : public MachineTest {
  protected:
    DescriptorText() {
        PutPrinter(Test(), "P1");
        ForgetCalls(Test());
    }
};

/// The calls of one direction that may fail, each with a code of its own.
struct FailingStep {
    const char* call;
    std::size_t nth;
    DWORD code;
};

TEST_F(DescriptorText, EveryFailedCallOfAReadIsTheResult) {
    static constexpr FailingStep kSteps[] = {
        {"OpenPrinterA", 1, ERROR_ACCESS_DENIED},
        {"GetPrinterA", 1, ERROR_INVALID_LEVEL},
        {"GetPrinterA", 2, RPC_S_SERVER_UNAVAILABLE},
        {"ConvertSecurityDescriptorToStringSecurityDescriptorA", 1, ERROR_INVALID_SECURITY_DESCR},
    };
    for (const FailingStep& step : kSteps) {
        faults::Reset();
        faults::FailCall(step.call, step.nth, step.code);
        Test().TurnLogOn(1);
        StringSD sd;
        EXPECT_EQ(GetStringSD("P1", sd), step.code) << step.call;
        EXPECT_EQ(faults::LastFailed(), step.call);
        EXPECT_EQ(Test().TakeLog(), LogOf("GetStringSD", step.code)) << step.call;
        EXPECT_EQ(sd.Text(), nullptr) << step.call;
        EXPECT_EQ(sd.Length(), 0u) << step.call;
    }
}

TEST_F(DescriptorText, EveryFailedCallOfAWriteIsTheResult) {
    static constexpr FailingStep kSteps[] = {
        {"ConvertStringSecurityDescriptorToSecurityDescriptorA", 1, ERROR_INVALID_ACL},
        {"OpenPrinterA", 1, ERROR_ACCESS_DENIED},
        {"SetPrinterA", 1, RPC_S_CALL_FAILED},
    };
    const std::optional<std::string> before = SecurityOn(Test(), "P1");
    for (const FailingStep& step : kSteps) {
        faults::Reset();
        faults::FailCall(step.call, step.nth, step.code);
        Test().TurnLogOn(1);
        EXPECT_EQ(Set("P1", kText), step.code) << step.call;
        EXPECT_EQ(faults::LastFailed(), step.call);
        EXPECT_EQ(Test().TakeLog(), LogOf("SetStringSD", step.code)) << step.call;
        EXPECT_EQ(SecurityOn(Test(), "P1"), before) << step.call;
        EXPECT_EQ(Machine().Heap().OpenCount(), 0u) << step.call;
    }
}

TEST_F(DescriptorText, WithoutMemoryGives8) {
    // The printer's record, then the text.
    for (const std::size_t after : {0, 1}) {
        Machine().Heap().FailAllocation(after, false);
        StringSD sd;
        EXPECT_EQ(GetStringSD("P1", sd), ERROR_NOT_ENOUGH_MEMORY) << after;
        EXPECT_EQ(sd.Text(), nullptr);
        Machine().Heap().StopFailing();
    }
    Machine().Heap().FailAllocation(0, false);
    EXPECT_EQ(Set("P1", kText), ERROR_NOT_ENOUGH_MEMORY);
    Machine().Heap().StopFailing();
}

TEST_F(DescriptorText, FailedReadEmptiesWhatWasThere) {
    StringSD sd;
    ASSERT_EQ(GetStringSD("P1", sd), 0u);
    EXPECT_EQ(GetStringSD("Nobody", sd), ERROR_INVALID_PRINTER_NAME);
    EXPECT_EQ(sd.Text(), nullptr);
    EXPECT_EQ(sd.Length(), 0u);
    EXPECT_EQ(Machine().Heap().OpenCount(), 0u);
}

TEST_F(DescriptorText, PrinterThatIsNotThereCannotBeWritten) {
    EXPECT_EQ(Set("Nobody", kText), ERROR_INVALID_PRINTER_NAME);
}

TEST_F(DescriptorText, BadTextIsRefusedBeforeThePrinterIsOpened) {
    EXPECT_EQ(Set("P1", "D:(A;;GA;;;XX)"), ERROR_INVALID_SID);
    EXPECT_EQ(SetStringSD("P1", nullptr, 0), ERROR_INVALID_PARAMETER);
    EXPECT_THAT(Test().TakeCallNames({"OpenPrinterA", "SetPrinterA"}), IsEmpty());
}

TEST_F(DescriptorText, LengthPlaysNoPart) {
    ASSERT_EQ(SetStringSD("P1", kText, 0), 0u);
    StringSD sd;
    ASSERT_EQ(GetStringSD("P1", sd), 0u);
    EXPECT_STREQ(sd.Text(), kText);
}

TEST_F(DescriptorText, AllFourPartsAreAskedForWithAllRights) {
    StringSD sd;
    GetStringSD("P1", sd);
    const Lines calls = TakeCallsOf(Test(), {"GetPrinterA", "ConvertSecurityDescriptorToStringSecurityDescriptorA"});
    ASSERT_EQ(calls.size(), 3u);
    EXPECT_THAT(calls[0], ::testing::HasSubstr(", 0x3, null, 0x0, "));
    EXPECT_THAT(calls[2], ::testing::HasSubstr(", 0x1, 0xf, "));
    TakeRightsAway(Test());
    EXPECT_EQ(GetStringSD("P1", sd), ERROR_ACCESS_DENIED);
    EXPECT_EQ(Set("P1", kText), ERROR_ACCESS_DENIED);
}

TEST_F(DescriptorText, IsConvertedByRevision1AndSetAtLevel3) {
    ASSERT_EQ(Set("P1", kText), 0u);
    const Lines calls = TakeCallsOf(Test(), {"ConvertStringSecurityDescriptorToSecurityDescriptorA", "SetPrinterA"});
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_THAT(calls[0], ::testing::HasSubstr(std::string("A(\"") + kText + "\", 0x1, &, null)"));
    EXPECT_THAT(calls[1], ::testing::HasSubstr(", 0x3, &, 0x0)"));
}

TEST_F(DescriptorText, AuditsComeThrough) {
    constexpr char kWithAudit[] = "O:BAG:SYD:P(A;;GA;;;BA)S:AI(AU;SAFA;WDWO;;;WD)";
    ASSERT_EQ(Set("P1", kWithAudit), 0u);
    StringSD sd;
    ASSERT_EQ(GetStringSD("P1", sd), 0u);
    EXPECT_STREQ(sd.Text(), kWithAudit);
}

TEST_F(DescriptorText, RecordThatIsReadAtOnceHasNoText) {
    ReplacedOperations replaced;
    replaced.table.GetPrinterA = [](HANDLE, DWORD, LPBYTE, DWORD, LPDWORD) -> BOOL { return TRUE; };
    StringSD sd;
    EXPECT_EQ(GetStringSD("P1", sd), 0u);
    EXPECT_EQ(sd.Text(), nullptr);
}

TEST_F(DescriptorText, ChangesItsOwner) {
    StringSD first;
    ASSERT_EQ(GetStringSD("P1", first), 0u);
    const LPSTR text = first.Text();
    const DWORD length = first.Length();
    StringSD second = std::move(first);
    EXPECT_EQ(second.Text(), text);
    EXPECT_EQ(second.Length(), length);
    EXPECT_EQ(first.Text(), nullptr);
    EXPECT_EQ(first.Length(), 0u);
    second.Reset();
    EXPECT_EQ(second.Text(), nullptr);
    EXPECT_EQ(second.Length(), 0u);
}

// ---- NT 4 -----------------------------------------------------------------------------------------------------------

class DescriptorBytes : public MachineTest {
  protected:
    DescriptorBytes() : MachineTest("nt4") {
        PutPrinter(Test(), "P1");
        ForgetCalls(Test());
    }
};

TEST_F(DescriptorBytes, LieInThePrintersKey) {
    StringSD sd;
    ASSERT_EQ(GetStringSD("P1", sd), 0u);
    ASSERT_EQ(Set("P1", kBytes), 0u);
    const Lines calls = TakeCallsOf(Test(), {"RegOpenKeyExA", "RegCreateKeyExA", "RegSetValueExA"});
    ASSERT_EQ(calls.size(), 3u);
    constexpr char kKey[] = R"(0x80000002, "SYSTEM\\CurrentControlSet\\Control\\Print\\Printers\\P1\\", 0x0, )";
    EXPECT_THAT(calls[0], ::testing::HasSubstr(kKey));
    EXPECT_THAT(calls[0], ::testing::HasSubstr(", 0x0, 0x20019, &)"));
    EXPECT_THAT(calls[1], ::testing::HasSubstr(kKey));
    EXPECT_THAT(calls[1], ::testing::HasSubstr(", 0x0, null, 0x0, 0x2001f, null, "));
    EXPECT_THAT(calls[2], ::testing::HasSubstr("\"Security\", 0x0, 0x3, "));
    EXPECT_EQ(SecurityOn(Test(), "P1"), kBytes);
}

TEST_F(DescriptorBytes, MissingValueIsNoFailure) {
    Machine().Registry().DeleteValue(simulated::PrintKey("Printers\\P1"), "Security");
    Test().TurnLogOn(1);
    for (const char* printer : {"P1", "Nobody"}) {
        StringSD sd;
        EXPECT_EQ(GetStringSD(printer, sd), 0u) << printer;
        EXPECT_EQ(Test().TakeLog(), LogOf("GetStringSD", 0));
        EXPECT_EQ(sd.Text(), nullptr) << printer;
        EXPECT_EQ(sd.Length(), 0u) << printer;
    }
}

TEST_F(DescriptorBytes, EveryFailedCallOfAReadIsSilent) {
    static constexpr FailingStep kSteps[] = {
        {"RegOpenKeyExA", 1, ERROR_ACCESS_DENIED},
        {"RegQueryValueExA", 1, ERROR_ACCESS_DENIED},
        {"RegQueryValueExA", 2, ERROR_MORE_DATA},
    };
    for (const FailingStep& step : kSteps) {
        faults::Reset();
        faults::FailCall(step.call, step.nth, step.code);
        Test().TurnLogOn(2);
        StringSD sd;
        EXPECT_EQ(GetStringSD("P1", sd), 0u) << step.call << step.nth;
        EXPECT_EQ(faults::LastFailed(), step.call);
        EXPECT_EQ(Test().TakeLog(), LogOf("GetStringSD", 0));
        EXPECT_EQ(sd.Text(), nullptr);
        EXPECT_EQ(sd.Length(), 0u);
        EXPECT_EQ(Machine().Heap().OpenCount(), 0u);
    }
    faults::Reset();
    Machine().Heap().FailAllocation(0, false);
    StringSD sd;
    EXPECT_EQ(GetStringSD("P1", sd), 0u);
    EXPECT_EQ(sd.Text(), nullptr);
    Machine().Heap().StopFailing();
}

TEST_F(DescriptorBytes, EveryFailedCallOfAWriteIsDropped) {
    const std::optional<std::string> before = SecurityOn(Test(), "P1");
    for (const char* call : {"RegCreateKeyExA", "RegSetValueExA"}) {
        faults::Reset();
        faults::FailCall(call, 1, ERROR_ACCESS_DENIED);
        Test().TurnLogOn(2);
        EXPECT_EQ(Set("P1", kBytes), 0u) << call;
        EXPECT_EQ(faults::LastFailed(), call);
        EXPECT_EQ(Test().TakeLog(), LogOf("SetStringSD", 0));
        EXPECT_EQ(SecurityOn(Test(), "P1"), before) << call;
    }
    faults::Reset();
    TakeRightsAway(Test());
    EXPECT_EQ(Set("P1", kBytes), 0u);
    EXPECT_EQ(SecurityOn(Test(), "P1"), before);
}

TEST_F(DescriptorBytes, EmptyValueIsHandedOutAsABlock) {
    ASSERT_EQ(SetStringSD("P1", "", 0), 0u);
    StringSD sd;
    EXPECT_EQ(GetStringSD("P1", sd), 0u);
    EXPECT_NE(sd.Text(), nullptr);
    EXPECT_EQ(sd.Length(), 0u);
}

TEST_F(DescriptorBytes, NullBytesWithALengthAreNotWritten) {
    const std::optional<std::string> before = SecurityOn(Test(), "P1");
    EXPECT_EQ(SetStringSD("P1", nullptr, 5), 0u);
    EXPECT_EQ(SecurityOn(Test(), "P1"), before);
}

TEST_F(DescriptorBytes, NeedNoSpooler) {
    EXPECT_EQ(Set("Nobody", kBytes), 0u);
    EXPECT_EQ(SecurityOn(Test(), "Nobody"), kBytes);
    EXPECT_THAT(Test().TakeCallNames({"OpenPrinterA", "GetPrinterA", "SetPrinterA"}), IsEmpty());
}

TEST_F(DescriptorBytes, EntryThatANewerLibraryBroughtIsUsed) {
    // A module that has the entry is taken at its word, whatever the system says of itself.
    auto convert = [](LPCSTR, DWORD, PSECURITY_DESCRIPTOR*, PULONG) -> BOOL {
        simulated::lastError = ERROR_INVALID_FUNCTION;
        return FALSE;
    };
    static BOOL (*const pfnConvert)(LPCSTR, DWORD, PSECURITY_DESCRIPTOR*, PULONG) = convert;
    ReplacedOperations replaced;
    replaced.table.GetProcAddress = [](HMODULE, LPCSTR) -> FARPROC {
        return reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(pfnConvert));
    };
    EXPECT_EQ(Set("P1", kBytes), ERROR_INVALID_FUNCTION);
}

}  // namespace
}  // namespace pikel
