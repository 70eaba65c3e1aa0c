// Cabinets unpacked by the table's slot.
#include "system/cabinet.h"

#include <new>

#include "frame/pikel.h"
#include "support/calls.h"
#include "support/compressed_file.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;

/// What the system is asked for to unpack a cabinet.
struct Walk {
    std::string cabinet;
    DWORD reserved = 0;
    PSP_FILE_CALLBACK_A callback = nullptr;
    PVOID context = nullptr;
};

/// The callback's answer about a file.
struct Placed {
    UINT answer = 0;
    std::string target;
};

class Cabinet : public MachineTest {
  protected:
    void Put(const std::vector<std::pair<std::string, std::string>>& files) {
        WriteFileOn(Machine(), "C:\\a.cab", MakeCabinet(files));
    }
    static Walk WalkInto(LPCSTR folder) {
        static Walk walk;
        walk = {};
        ReplacedOperations replaced;
        replaced.table.SetupIterateCabinetA = [](PCSTR cabinet, DWORD reserved, PSP_FILE_CALLBACK_A callback,
                                                 PVOID context) -> BOOL {
            walk = {cabinet, reserved, callback, context};
            return TRUE;
        };
        EXPECT_EQ(DoExtractCabFile("C:\\media\\a.cab", folder), 0u);
        return walk;
    }
    /// Calls the walk's callback.
    static Placed Place(const Walk& walk, LPCSTR name, UINT notification = SPFILENOTIFY_FILEINCABINET) {
        FILE_IN_CABINET_INFO_A info{};
        info.NameInCabinet = name;
        const UINT answer = walk.callback(walk.context, notification, reinterpret_cast<UINT_PTR>(&info),
                                          reinterpret_cast<UINT_PTR>(walk.cabinet.c_str()));
        return {answer, info.FullTargetName};
    }
};

TEST_F(Cabinet, IsUnpackedWithItsFolders) {
    const std::string large(200000, 'x');
    Put({{"one.txt", "first"}, {"sub/deep/two.txt", "second"}, {"large.bin", large}});
    EXPECT_EQ(DoExtractCabFile("C:\\a.cab", "C:\\out"), 0u);
    EXPECT_EQ(ReadFileOn(Machine(), "C:\\out\\one.txt"), "first");
    EXPECT_EQ(ReadFileOn(Machine(), "C:\\out\\sub\\deep\\two.txt"), "second");
    EXPECT_EQ(ReadFileOn(Machine(), "C:\\out\\large.bin"), large);
}

TEST_F(Cabinet, FolderMayEndInABackslash) {
    Put({{"one.txt", "first"}});
    EXPECT_EQ(DoExtractCabFile("C:\\a.cab", "C:\\out\\"), 0u);
    EXPECT_EQ(ReadFileOn(Machine(), "C:\\out\\one.txt"), "first");
    EXPECT_EQ(Place(WalkInto("C:\\out\\"), "one.txt").target, "C:\\out\\\\one.txt") << "and gets one all the same";
}

TEST_F(Cabinet, IsWalkedByTheSystemWithTheFolderAsContext) {
    const Walk walk = WalkInto("C:\\out");
    EXPECT_EQ(walk.cabinet, "C:\\media\\a.cab");
    EXPECT_EQ(walk.reserved, 0u);
    EXPECT_STREQ(static_cast<LPCSTR>(walk.context), "C:\\out");
}

TEST_F(Cabinet, FileIsPlacedByTheLowByteOfTheNotification) {
    const Walk walk = WalkInto("C:\\out");
    for (UINT notification : {0x11u, 0x111u, 0xFFFFFF11u}) {
        const Placed placed = Place(walk, "sub\\a.txt", notification);
        EXPECT_EQ(placed.answer, UINT{FILEOP_DOIT}) << notification;
        EXPECT_EQ(placed.target, "C:\\out\\sub\\a.txt") << notification;
    }
    EXPECT_TRUE(Machine().Files().IsDirectory("C:\\out\\sub"));
}

TEST_F(Cabinet, OtherNotificationsAreAnsweredWith0AndNothingElse) {
    const Walk walk = WalkInto("C:\\out");
    Test().TakeCalls();
    for (UINT notification : {0u, 1u, 0x10u, 0x12u, 0x13u, 0x110u, 0x1100u}) {
        const Placed placed = Place(walk, "sub\\a.txt", notification);
        EXPECT_EQ(placed.answer, 0u) << notification;
        EXPECT_EQ(placed.target, "") << notification;
    }
    EXPECT_THAT(Test().TakeCalls(), ::testing::IsEmpty());
}

TEST_F(Cabinet, FileIsPlacedBesideTheCabinetWithoutAFolder) {
    Walk walk = WalkInto("C:\\out");
    walk.context = nullptr;
    const Placed placed = Place(walk, "sub\\a.txt");
    EXPECT_EQ(placed.answer, UINT{FILEOP_DOIT});
    EXPECT_EQ(placed.target, "C:\\media\\sub\\a.txt");
    EXPECT_TRUE(Machine().Files().IsDirectory("C:\\media\\sub"));
}

TEST_F(Cabinet, MemoryThatRunsOutWithinTheWalkEndsIt) {
    Put({{"one.txt", "first"}});
    ReplacedOperations replaced;
    replaced.table.GetACP = []() -> UINT { throw std::bad_alloc(); };
    EXPECT_EQ(Place(WalkInto("C:\\out"), "one.txt").answer, UINT{FILEOP_ABORT});
    EXPECT_EQ(DoExtractCabFile("C:\\a.cab", "C:\\out"), DWORD{ERROR_NOT_ENOUGH_MEMORY});
    EXPECT_FALSE(Machine().Files().Exists("C:\\out\\one.txt"));
}

TEST_F(Cabinet, ArgumentsAreRequired) {
    Put({{"one.txt", "first"}});
    EXPECT_EQ(DoExtractCabFile(nullptr, "C:\\out"), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(DoExtractCabFile("C:\\a.cab", nullptr), DWORD{ERROR_INVALID_PARAMETER});
    ForgetCalls(Test());
    EXPECT_EQ(DoExtractCabFile("C:\\a.cab", std::string(261, 'x').c_str()), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_THAT(Test().TakeCalls(), ::testing::IsEmpty());
    EXPECT_EQ(DoExtractCabFile("C:\\a.cab", std::string(260, 'x').c_str()), DWORD{206})
        << "passes, and then has no room for a name";
}

TEST_F(Cabinet, NameThatDoesNotFitEndsTheWalk) {
    Put({{"a.txt", "first"}, {std::string(40, 'b'), "second"}});
    const std::string folder = "C:\\" + std::string(216, 'f');  // 219 and a backslash leave 39 characters
    EXPECT_EQ(DoExtractCabFile("C:\\a.cab", folder.c_str()), DWORD{206});
    EXPECT_EQ(ReadFileOn(Machine(), folder + "\\a.txt"), "first");
    EXPECT_EQ(DoExtractCabFile("C:\\a.cab", folder.substr(0, 218).c_str()), 0u);
}

TEST_F(Cabinet, MissingOrDamagedOneIsACode) {
    EXPECT_EQ(DoExtractCabFile("C:\\missing.cab", "C:\\out"), DWORD{ERROR_FILE_NOT_FOUND});
    WriteFileOn(Machine(), "C:\\text.cab", "no cabinet");
    EXPECT_EQ(DoExtractCabFile("C:\\text.cab", "C:\\out"), DWORD{ERROR_INVALID_DATA});
    WriteFileOn(Machine(), "C:\\empty.cab", "");
    EXPECT_NE(DoExtractCabFile("C:\\empty.cab", "C:\\out"), 0u);
    const std::string whole = MakeCabinet({{"one.txt", std::string(5000, 'a') + "b"}});
    for (std::size_t size = 1; size < whole.size(); size += 5) {
        WriteFileOn(Machine(), "C:\\cut.cab", whole.substr(0, size));
        EXPECT_NE(DoExtractCabFile("C:\\cut.cab", "C:\\out"), 0u) << size;
    }
}

TEST_F(Cabinet, DamagedBytesDoNoHarm) {
    const std::string whole = MakeCabinet({{"one.txt", std::string(300, 'a') + "b"}});
    for (std::size_t at = 0; at < whole.size(); ++at) {
        std::string damaged = whole;
        damaged[at] = static_cast<char>(~damaged[at]);
        WriteFileOn(Machine(), "C:\\a.cab", damaged);
        DoExtractCabFile("C:\\a.cab", "C:\\out");
    }
}

TEST_F(Cabinet, FullDiskAndRefusedFolderComeBack) {
    Put({{"one.txt", "first"}});
    Machine().Files().SetFreeSpace(2);
    EXPECT_EQ(DoExtractCabFile("C:\\a.cab", "C:\\out"), DWORD{ERROR_DISK_FULL});
    Machine().Files().SetFreeSpace(std::nullopt);
    Machine().Files().Deny("C:\\out");
    EXPECT_NE(DoExtractCabFile("C:\\a.cab", "C:\\out\\sub"), 0u);
}

TEST_F(Cabinet, NeverLeadsOutOfTheMachine) {
    Start("xp", Lies::InAFolder);
    // The name is patched in the file: the writer itself would refuse it.
    std::string cabinet = MakeCabinet({{"aaaaaaaaaaaa.txt", "first"}});
    const std::size_t name = cabinet.find("aaaaaaaaaaaa.txt");
    ASSERT_NE(name, std::string::npos);
    cabinet.replace(name, 12, "..\\..\\..\\..\\");
    WriteFileOn(Machine(), "C:\\a.cab", cabinet);
    EXPECT_NE(DoExtractCabFile("C:\\a.cab", "C:\\out"), 0u);
    EXPECT_FALSE(std::filesystem::exists(Machine().Folder().parent_path() / ".txt"));
}

TEST_F(Cabinet, SlotLogsItsFrameAlone) {
    const PI_KEL_Interface& table = *PI_KEL_GetInterface(PIKEL_INTERFACE_VERSION);
    Put({{"one.txt", "first"}});
    Test().TurnLogOn();
    EXPECT_EQ(table.PI_KEL_ExtractCabFile("C:\\a.cab", "C:\\out"), 0u);
    EXPECT_EQ(table.PI_KEL_ExtractCabFile(nullptr, "C:\\out"), 0x90010057u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("PI_KEL_ExtractCabFile Start", "PI_KEL_ExtractCabFile End:(0x00000000)", "",
                            "PI_KEL_ExtractCabFile Start", "PI_KEL_ExtractCabFile End:(0x90010057)", ""));
}

}  // namespace
}  // namespace pikel
