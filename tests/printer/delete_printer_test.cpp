// Deleting a printer or a connection.
#include "printer/delete_printer.h"

#include <cstring>

#include "machine/desktop/desktop.h"
#include "machine/operations.h"
#include "machine/network/shares.h"
#include "support/printer_machine.h"
#include "printer/share_registry.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;

const std::vector<std::string> kDeletingCalls = {"EnumPrintersA", "OpenPrinterA",
                                                 "GetPrinterA",   "DisassociateColorProfileFromDeviceA",
                                                 "NetShareDel",   "WcsDisassociateColorProfileFromDevice",
                                                 "DeletePrinter", "DeletePrinterConnectionA",
                                                 "PeekMessageA",  "ClosePrinter"};

class DeletePrinterOnEverySystem : public EverySystemTest {
  protected:
    DeletePrinterOnEverySystem() {
        InstallDriver(Test());
        AddPrinterTo(Test(), "P1");
        Test().TakeCalls();
    }
    bool Is9x() const { return Is9xName(GetParam()); }
    bool HasProfiles() const { return GetParam() != "win95" && !IsNt4Name(GetParam()); }
    std::string RoutineOf() const { return Is9x() ? "DeletePrinter9x" : "DeletePrinterNT"; }
    bool IsThere(const std::string& name = "P1") { return PrinterOn(Test(), name).has_value(); }
};
INSTANTIATE_ON_EVERY_SYSTEM(DeletePrinterOnEverySystem);

TEST_P(DeletePrinterOnEverySystem, PrinterIsGone) {
    Test().TurnLogOn(1);
    EXPECT_EQ(DoDeletePrinter("p1", 0, nullptr), 0u);
    EXPECT_FALSE(IsThere());
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoDeletePrinter(p1) Start", RoutineOf() + "() - Start",
                                              RoutineOf() + "() - End(0)", "DoDeletePrinter End(0)"));
}

TEST_P(DeletePrinterOnEverySystem, WithoutTheShareRegistryItIsGoneToo) {
    Test().TurnLogOn(1);
    EXPECT_EQ(DoDeletePrinterWithoutShareReg("P1"), 0u);
    EXPECT_FALSE(IsThere());
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoDeletePrinterWithoutShareReg(P1) Start", RoutineOf() + "() - Start",
                                              RoutineOf() + "() - End(0)", "DoDeletePrinterWithoutShareReg End(0)"));
}

TEST_P(DeletePrinterOnEverySystem, CallsComeInTheirOrder) {
    EXPECT_EQ(DoDeletePrinter("P1", 0, nullptr), 0u);
    if (Is9x()) {
        EXPECT_THAT(Test().TakeCallNames(kDeletingCalls), ElementsAre("OpenPrinterA", "GetPrinterA", "GetPrinterA",
                                                                      "DeletePrinter", "PeekMessageA", "ClosePrinter"));
    } else {
        EXPECT_THAT(Test().TakeCallNames(kDeletingCalls),
                    ElementsAre("EnumPrintersA", "EnumPrintersA", "OpenPrinterA", "DeletePrinter", "ClosePrinter"));
    }
}

TEST_P(DeletePrinterOnEverySystem, ProfilesComeFirstAndTheirFailureKeepsThePrinter) {
    char profile[] = "nobody.icm";
    LPSTR profiles[] = {profile};
    const DWORD code = DoDeletePrinter("P1", 1, profiles);
    EXPECT_EQ(code != 0, HasProfiles());
    EXPECT_EQ(IsThere(), HasProfiles());
    EXPECT_THAT(Test().TakeCallNames({"ClosePrinter"}), ElementsAre("ClosePrinter"));
}

TEST_P(DeletePrinterOnEverySystem, ProfilesNeedACountAndAList) {
    char profile[] = "nobody.icm";
    LPSTR profiles[] = {profile};
    EXPECT_EQ(DoDeletePrinter("P1", 0, profiles), 0u);
    AddPrinterTo(Test(), "P1");
    EXPECT_EQ(DoDeletePrinter("P1", 1, nullptr), 0u);
}

TEST_P(DeletePrinterOnEverySystem, NullNameIsRefused) {
    Test().TurnLogOn(1);
    EXPECT_EQ(DoDeletePrinter(nullptr, 0, nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(DoDeletePrinterWithoutShareReg(nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_THAT(Test().TakeLog(), ElementsAre());
}

TEST_P(DeletePrinterOnEverySystem, UnknownPrinterIsTheSpoolersCode) {
    EXPECT_EQ(DoDeletePrinter("Nobody", 0, nullptr), ERROR_INVALID_PRINTER_NAME);
    EXPECT_EQ(DoDeletePrinterWithoutShareReg("Nobody"), ERROR_INVALID_PRINTER_NAME);
}

/// The codes with which a removal through the Print UI would be taken for success: here each comes back as it is.
TEST_P(DeletePrinterOnEverySystem, CodeOfTheDeletionComesBackUnmasked) {
    for (DWORD code : {5u, 122u, 203u, 251u, 1008u}) {
        faults::Reset();
        faults::FailCall("DeletePrinter", 1, code);
        Test().TurnLogOn(1);
        EXPECT_EQ(DoDeletePrinter("P1", 0, nullptr), code);
        EXPECT_THAT(Test().TakeLog(), Contains(RoutineOf() + "() - End(" + std::to_string(code) + ")"));
        EXPECT_TRUE(IsThere());
        EXPECT_EQ(Test().TakeCallNames({"PeekMessageA"}).size(), 0u);
    }
}

TEST_P(DeletePrinterOnEverySystem, OpenFailureIsTheResult) {
    faults::FailCall("OpenPrinterA", 1, ERROR_ACCESS_DENIED);
    EXPECT_EQ(DoDeletePrinter("P1", 0, nullptr), ERROR_ACCESS_DENIED);
    EXPECT_TRUE(IsThere());
}

// ---- 9x family ------------------------------------------------------------------------------------------------------

class DeletePrinter9xTest : public MachineTest {
  protected:
    DeletePrinter9xTest() : MachineTest("win98") {
        InstallDriver(Test());
        AddPrinterTo(Test(), "P1");
    }
    void Share(DWORD attributes = PRINTER_ATTRIBUTE_SHARED, const char* name = "LASER") {
        const std::string key = std::string(kPrintersOn) + "\\P1";
        Machine().Registry().SetText(key, "Share Name", name);
        Machine().Registry().SetNumber(key, "Attributes", attributes);
        Test().TakeCalls();
    }
};

TEST_F(DeletePrinter9xTest, ShareThatIsNotThereIsLoggedAndGoesNoFurther) {
    Share();
    Test().TurnLogOn(1);
    EXPECT_EQ(DoDeletePrinter("P1", 0, nullptr), 0u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("DoDeletePrinter(P1) Start", "DeletePrinter9x() - Start", "DeleteSharePrinter9x() - Start",
                            "DeleteSharePrinter9x() - End(2310)", "DeletePrinter9x() - DeleteSharePrinter9x():2310",
                            "DeletePrinter9x() - End(0)", "DoDeletePrinter End(0)"));
    EXPECT_FALSE(PrinterOn(Test(), "P1"));
}

TEST_F(DeletePrinter9xTest, ShareGoesWithThePrinterAndTheShellIsTold) {
    Share();
    PrinterShareRecord share{};
    std::strcpy(share.NetName, "LASER");
    std::strcpy(share.Path, "P1");
    share.ShareType = 1;
    ASSERT_EQ(AddSharePrinter9x(&share), 0u);
    Machine().Desktop().shellChanges.clear();
    Test().TurnLogOn(1);
    EXPECT_EQ(DoDeletePrinter("p1", 0, nullptr), 0u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("DoDeletePrinter(p1) Start", "DeletePrinter9x() - Start", "DeleteSharePrinter9x() - Start",
                            "DeleteSharePrinter9x() - End(0)", "DeletePrinter9x() - End(0)", "DoDeletePrinter End(0)"));
    EXPECT_FALSE(PrinterOn(Test(), "P1"));
    EXPECT_FALSE(simulated::Shares(Machine()).Find("LASER"));
    EXPECT_FALSE(Machine().Registry().KeyExists(simulated::Shares::StartKeyOf("LASER")));
    ASSERT_EQ(Machine().Desktop().shellChanges.size(), 2u);
    for (const simulated::ShellChange& change : Machine().Desktop().shellChanges) {
        EXPECT_EQ(change.item1, "P1") << "in the spooler's spelling";
    }
}

TEST_F(DeletePrinter9xTest, SharedBitWithoutAShareNameDeletesNoShare) {
    Share(PRINTER_ATTRIBUTE_SHARED, "");
    Test().TurnLogOn(1);
    EXPECT_EQ(DoDeletePrinter("P1", 0, nullptr), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoDeletePrinter(P1) Start", "DeletePrinter9x() - Start",
                                              "DeletePrinter9x() - End(0)", "DoDeletePrinter End(0)"));
}

TEST_F(DeletePrinter9xTest, ShareStaysWithoutTheSharedBit) {
    Share(0);
    EXPECT_EQ(DoDeletePrinter("P1", 0, nullptr), 0u);
    EXPECT_THAT(Test().TakeCallNames(kDeletingCalls), Not(Contains("NetShareDel")));
}

TEST_F(DeletePrinter9xTest, ShareStaysWithoutTheShareRegistry) {
    Share();
    EXPECT_EQ(DoDeletePrinterWithoutShareReg("P1"), 0u);
    EXPECT_THAT(Test().TakeCallNames(kDeletingCalls), Not(Contains("NetShareDel")));
}

TEST_F(DeletePrinter9xTest, Level2IsNeeded) {
    for (std::size_t nth : {1u, 2u}) {
        faults::Reset();
        faults::FailCall("GetPrinterA", nth, ERROR_ACCESS_DENIED);
        EXPECT_EQ(DoDeletePrinter("P1", 0, nullptr), ERROR_ACCESS_DENIED) << nth;
        EXPECT_TRUE(PrinterOn(Test(), "P1"));
    }
    faults::Reset();
    faults::FailCall("HeapAlloc", 1, ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(DoDeletePrinter("P1", 0, nullptr), ERROR_NOT_ENOUGH_MEMORY);
}

TEST_F(DeletePrinter9xTest, MessagesAreTakenOut) {
    Machine().Desktop().queue.push_back(QueuedMessage(0x400));
    EXPECT_EQ(DoDeletePrinter("P1", 0, nullptr), 0u);
    EXPECT_THAT(Test().TakeCallNames({"PeekMessageA", "TranslateMessage", "DispatchMessageA"}),
                ElementsAre("PeekMessageA", "TranslateMessage", "DispatchMessageA", "PeekMessageA"));
}

// ---- connections ----------------------------------------------------------------------------------------------------

class DeleteConnection : public MachineTest {
  protected:
    DeleteConnection() : MachineTest("xp") {
        InstallDriver(Test());
        ShareOnTheNetwork(Test());
        std::string name = kShared;
        EXPECT_TRUE(simulated::AddPrinterConnectionA(name.data()));
        Test().TakeCalls();
        Test().TurnLogOn(1);
    }
};

TEST_F(DeleteConnection, ConnectionIsDroppedAndProfilesAreNotTouched) {
    char profile[] = "nobody.icm";
    LPSTR profiles[] = {profile};
    EXPECT_EQ(DoDeletePrinter(kShared, 1, profiles), 0u);
    EXPECT_THAT(PrintersOn(Test()), ElementsAre());
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoDeletePrinter(\\\\server\\Laser) Start", "DoDeletePrinter End(0)"));
    EXPECT_THAT(Test().TakeCallNames(kDeletingCalls),
                ElementsAre("EnumPrintersA", "EnumPrintersA", "DeletePrinterConnectionA"));
}

TEST_F(DeleteConnection, FailureIsLoggedAndReturned) {
    for (DWORD code : {5u, 122u, 203u, 251u, 1008u}) {
        for (bool withoutShare : {false, true}) {
            faults::Reset();
            faults::FailCall("DeletePrinterConnectionA", 1, code);
            EXPECT_EQ(withoutShare ? DoDeletePrinterWithoutShareReg(kShared) : DoDeletePrinter(kShared, 0, nullptr),
                      code);
            EXPECT_THAT(Test().TakeLog(),
                        Contains("PI_DeletePrinter() - DeletePrinterConnection Error(" + std::to_string(code) + ")"));
        }
    }
    EXPECT_THAT(PrintersOn(Test()), ElementsAre(kShared));
}

TEST(DeletePrinterWithoutRoute, IsNotServed) {
    TestMachine test(SystemWithoutRoute());
    EXPECT_NE(DoDeletePrinter("P1", 0, nullptr), 0u);
}

}  // namespace
}  // namespace pikel
