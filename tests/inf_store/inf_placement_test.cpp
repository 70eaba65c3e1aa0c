// Placing an INF in the system's INF folder, on every system.
#include "inf_store/inf_placement.h"

#include "frame/os_identity.h"
#include "frame/os_route.h"
#include "frame/pikel.h"
#include "support/calls.h"
#include "support/inf_test.h"

namespace pikel {
namespace {

using namespace testing_support;
using namespace std::string_literals;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr char kSource[] = "C:\\Driver\\aurora.inf";
constexpr char kFolder[] = "C:\\Infs";
constexpr char kFolderPath[] = "C:\\Infs\\";

std::string InfOf(const LogLines& models, const std::string& extra = {}) {
    std::string text = "[Version]\r\nSignature=\"$Windows NT$\"\r\nProvider=\"Northlight\"\r\nClass=Printer\r\n" +
                       extra + "[Manufacturer]\r\nM=M\r\n[M]\r\n";
    for (const std::string& model : models) {
        text += "\"" + model + "\"=I\r\n";
    }
    return text;
}

/// An INF of the source's provider and class whose models can't be read.
constexpr char kWithoutModels[] = "[Version]\nSignature=\"$Windows NT$\"\nProvider=\"Northlight\"\nClass=Printer\n";

using Route = DWORD (*)(LPCSTR, DWORD, DWORD, DWORD, LPCSTR, LPCSTR, LPCSTR, DWORD);

class InfPlacement : public MachineTest {
  protected:
    InfPlacement() {
        WriteFileOn(Machine(), kSource, InfOf({"A", "B"}));
        EXPECT_EQ(Machine().Files().MakeFolder(kFolder), 0u);
    }
    void Fresh(std::string_view system) {
        Start(system);
        WriteFileOn(Machine(), kSource, InfOf({"A", "B"}));
        EXPECT_EQ(Machine().Files().MakeFolder(kFolder), 0u);
    }

    DWORD Place(DWORD flag = 0, LPCSTR folder = kFolder, LPCSTR source = kSource) {
        return PI_InfFileCopy(source, 3, 5, 1, folder, "Northlight", "Printer", flag);
    }
    DWORD Run(Route route, DWORD flag = 0, LPCSTR folder = kFolderPath, LPCSTR source = kSource) {
        return route(source, 3, 5, 1, folder, "Northlight", "Printer", flag);
    }
    LogLines NamesIn(const char* folder) {
        LogLines names;
        for (const simulated::FileEntry& entry : Machine().Files().List(folder)) {
            names.push_back(entry.name);
        }
        return names;
    }
    void Write(const std::string& path, const std::string& text) { WriteFileOn(Machine(), path, text); }
    void TakeNumbers() {
        for (int number = 0; number < 1000; ++number) {
            Write(kFolderPath + ("oem" + std::to_string(number)) + ".inf", "x");
        }
    }
    /// The route's own lines, without those of the sections and the search.
    static LogLines OwnLines(const LogLines& log) {
        LogLines own;
        for (const std::string& line : log) {
            if (line.starts_with("InfFileCopy") || line.starts_with("PI_")) {
                own.push_back(line);
            }
        }
        return own;
    }
};

// ---- the check by models --------------------------------------------------------------------------------------------

TEST_F(InfPlacement, IsNotNewWhenOneInfHoldsAllItsModels) {
    DWORD status = 77;
    const auto isNew = [&] {
        return IsInfNewForModels(kSource, 3, 5, 1, kFolderPath, "Northlight", "Printer", status);
    };
    EXPECT_EQ(isNew(), 1u) << "an empty folder";
    EXPECT_EQ(status, 0u);
    Write("C:\\Infs\\a.inf", InfOf({"A", "C"}));
    Write("C:\\Infs\\b.inf", InfOf({"B"}));
    EXPECT_EQ(isNew(), 1u) << "the two together don't count";
    Write("C:\\Infs\\c.inf", InfOf({"B", "C", "A"}));
    EXPECT_EQ(isNew(), 0u);
    Write("C:\\Infs\\d.inf", InfOf({"C"}));
    EXPECT_EQ(isNew(), 0u) << "a later one doesn't set it back";
    EXPECT_EQ(status, 0u);
}

TEST_F(InfPlacement, CandidateThatCantBeReadEndsTheCheck) {
    DWORD status = 77;
    Write("C:\\Infs\\b.inf", kWithoutModels);
    EXPECT_EQ(IsInfNewForModels(kSource, 3, 5, 1, kFolderPath, "Northlight", "Printer", status), 1u);
    EXPECT_EQ(status, 0xE0000102u);
    Write("C:\\Infs\\a.inf", InfOf({"A", "B"}));
    EXPECT_EQ(IsInfNewForModels(kSource, 3, 5, 1, kFolderPath, "Northlight", "Printer", status), 0u);
    EXPECT_EQ(status, 0xE0000102u) << "the walk went on behind the one that covers it";
}

TEST_F(InfPlacement, RoutesTellACandidateThatCantBeReadAndCopyNothing) {
    struct {
        const char* system;
        Route route;
        std::string folder;
    } const cases[] = {{"nt4", &InfFileCopyNT, kFolderPath},
                       {"win98", &InfFileCopy98, "C:\\Infs\\Other\\"},
                       {"win95", &InfFileCopy95, kFolderPath}};
    for (const auto& row : cases) {
        SCOPED_TRACE(row.system);
        Fresh(row.system);
        Write(row.folder + "b.inf", kWithoutModels);
        Test().TakeCalls();
        EXPECT_EQ(Run(row.route), 0xE0000102u);
        Write(row.folder + "a.inf", InfOf({"A", "B"}));
        EXPECT_EQ(Run(row.route), 0xE0000102u) << "also behind one that covers the source";
        EXPECT_THAT(Test().TakeCallNames({"CopyFileA"}), IsEmpty());
    }
}

TEST_F(InfPlacement, SourceThatCantBeReadIsNewWithACode) {
    DWORD status = 77;
    EXPECT_EQ(IsInfNewForModels("C:\\none.inf", 3, 5, 1, kFolderPath, "Northlight", "Printer", status), 1u);
    EXPECT_EQ(status, 2u);
    Write(kSource, "[Version]\nClass=Printer\n[Manufacturer]\nM=NONE\n");
    EXPECT_EQ(IsInfNewForModels(kSource, 3, 5, 1, kFolderPath, "Northlight", "Printer", status), 1u);
    EXPECT_EQ(status, 0xE0000102u);
}

TEST_F(InfPlacement, StatusOfTheSearchIsDroppedByTheCheckByModels) {
    DWORD status = 77;
    faults::FailCall("SetupGetInfFileListA", 1, 1234);
    EXPECT_EQ(IsInfNewForModels(kSource, 3, 5, 1, kFolderPath, "Northlight", "Printer", status), 1u);
    EXPECT_EQ(status, 0u);
}

// ---- the check by text ----------------------------------------------------------------------------------------------

TEST_F(InfPlacement, IsNotNewWhenOneInfHasTheSameLines) {
    DWORD status = 77;
    EXPECT_EQ(IsInfTextNew(kSource, kFolderPath, "Northlight", "Printer", &status), 1u);
    EXPECT_EQ(status, 0u);
    Write("C:\\Infs\\a.inf", InfOf({"A", "B", "C"}));
    EXPECT_EQ(IsInfTextNew(kSource, kFolderPath, "Northlight", "Printer", &status), 1u);
    Write("C:\\Infs\\b.inf", InfOf({"a", "b"}));
    EXPECT_EQ(IsInfTextNew(kSource, kFolderPath, "Northlight", "Printer", &status), 0u) << "case plays no part";
    EXPECT_EQ(IsInfTextNew(nullptr, kFolderPath, "Northlight", "Printer", &status), 0u);
    EXPECT_EQ(IsInfTextNew(kSource, nullptr, "Northlight", "Printer", &status), 0u);
    EXPECT_EQ(IsInfTextNew(kSource, kFolderPath, nullptr, "Printer", &status), 0u);
    EXPECT_EQ(IsInfTextNew(kSource, kFolderPath, "Northlight", nullptr, &status), 0u);
    EXPECT_EQ(IsInfTextNew(kSource, kFolderPath, "Northlight", "Printer", nullptr), 0u);
    faults::FailCall("SetupGetInfFileListA", 1, 1234);
    IsInfTextNew(kSource, kFolderPath, "Northlight", "Printer", &status);
    EXPECT_EQ(status, 1234u);
}

// ---- NT 4 -----------------------------------------------------------------------------------------------------------

TEST_F(InfPlacement, NtTakesTheLowestFreeNumber) {
    Fresh("nt4");
    Write("C:\\Infs\\oem0.inf", "x");
    Write("C:\\Infs\\oem2.inf", "x");
    Test().TurnLogOn(2);
    EXPECT_EQ(Run(&InfFileCopyNT), 0u);
    EXPECT_THAT(NamesIn(kFolder), ElementsAre("oem0.inf", "oem1.inf", "oem2.inf"));
    EXPECT_EQ(ReadFileOn(Machine(), "C:\\Infs\\oem1.inf"), InfOf({"A", "B"}));
    EXPECT_THAT(OwnLines(Test().TakeLog()), ElementsAre("InfFileCopyNT() - ::CopyFile() --Success--"));
}

TEST_F(InfPlacement, WholeLogOfTheRouteOfNt) {
    Fresh("nt4");
    Write("C:\\Infs\\a.inf", InfOf({"A"}));
    Test().TurnLogOn(2);
    EXPECT_EQ(Place(), 0u);
    const auto models = [](const LogLines& names) {
        return Joined({{"CInfManufacturerSection::GetData() Start"},
                       Bannered("--- Manufacturer Name ---", {"M"}),
                       {"\tcsvManufacturer.size() = 1", "\tstrMfgFront = M", "\tMAKELONG:dwVersion = 501",
                        "\tdwMinDiffInVersion = ffffffff"},
                       Bannered("--- Manufacturer ---", {"M"}),
                       {"CInfManufacturerSection::GetData() End(0)", "CInfModelsSection::GetAllDeviceKey() Start"},
                       Bannered("--- Support Models ---", names),
                       {"CInfModelsSection::GetAllDeviceKey() End(0)"}});
    };
    EXPECT_EQ(
        Test().TakeLog(),
        Joined({{"PI_InfFileCopy Start"},
                models({"A", "B"}),
                {"--- SearchINFFile start  ---", "SetupGetInfFileList Success", "szInfPath:C:\\Infs\\a.inf",
                 "lpBuffer[i]:a.inf", "CInfVersionSection::GetData() Start"},
                Bannered("--- Provider ---", {"Northlight"}),
                Bannered("--- Class ---", {"Printer"}),
                Bannered("--- ClassGUID ---", {""}),
                Bannered("--- OEM URLS ---", {""}),
                Bannered("--- Cat File ---", {" = "}),
                Bannered("--- Signature ---", {"$Windows NT$"}),
                {"CInfVersionSection::GetData() End(0)", "--- [0]C:\\Infs\\a.inf  ---", "--- SearchINFFile End:0  ---"},
                models({"A"}),
                {"CheckDriverNameFromINF - (A) is  exist ", "CheckDriverNameFromINF - (B) is not exist ",
                 "InfFileCopyNT() - ::CopyFile() --Success--", "PI_InfFileCopy End"}}));
}

TEST_F(InfPlacement, NtCopiesNothingWhenAllModelsAreHeldAlsoByAnotherText) {
    Fresh("nt4");
    Write("C:\\Infs\\a.inf", InfOf({"C", "B", "A"}));
    Test().TurnLogOn(1);
    EXPECT_EQ(Run(&InfFileCopyNT), 0u);
    EXPECT_THAT(NamesIn(kFolder), ElementsAre("a.inf"));
    EXPECT_THAT(OwnLines(Test().TakeLog()), IsEmpty());
    Write(kSource, InfOf({"A", "B", "D"}));
    EXPECT_EQ(Run(&InfFileCopyNT), 0u);
    EXPECT_THAT(NamesIn(kFolder), ElementsAre("a.inf", "oem0.inf")) << "all but one";
}

TEST_F(InfPlacement, NtTellsTheLastTryAndAFailedCheck) {
    Fresh("nt4");
    TakeNumbers();
    Test().TakeCalls();
    EXPECT_EQ(Run(&InfFileCopyNT), DWORD{ERROR_FILE_EXISTS});
    EXPECT_EQ(Test().TakeCallNames({"CopyFileA"}).size(), 1000u);
    EXPECT_EQ(Run(&InfFileCopyNT, 0, kFolderPath, "C:\\none.inf"), 2u);
    EXPECT_THAT(Test().TakeCallNames({"CopyFileA"}), IsEmpty());
}

TEST_F(InfPlacement, NamesOfMoreThan259BytesAreRefused) {
    Fresh("nt4");
    // Behind the folder come "oem0.inf" to "oem999.inf"; the code is that of the last.
    struct {
        std::size_t length;
        std::size_t tries;
        DWORD status;
    } const cases[] = {{249, 1000, ERROR_PATH_NOT_FOUND},
                       {250, 100, 206},
                       {251, 10, 206},
                       {252, 0, 206},
                       {259, 0, 206},
                       {260, 0, 206},
                       {261, 0, 206},
                       {3000, 0, 206}};
    for (const auto& row : cases) {
        const std::string folder = "C:\\" + std::string(row.length - 4, 'f') + "\\";
        Test().TakeCalls();
        EXPECT_EQ(Run(&InfFileCopyNT, 0, folder.c_str()), row.status) << row.length;
        EXPECT_EQ(Test().TakeCallNames({"CopyFileA"}).size(), row.tries) << row.length;
    }
}

// ---- Windows 2000 and later -----------------------------------------------------------------------------------------

TEST_F(InfPlacement, SystemPlacesItWithFlag0) {
    ForgetCalls(Test());
    Test().TurnLogOn(2);
    EXPECT_EQ(Run(&InfFileCopy2k), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("InfFileCopy2k() - ::SetupCopyOEMInf --Success--"));
    EXPECT_EQ(ReadFileOn(Machine(), "C:\\WINDOWS\\inf\\oem0.inf"), InfOf({"A", "B"}));
    EXPECT_THAT(NamesIn(kFolder), IsEmpty()) << "the folder named plays no part";
    EXPECT_THAT(
        Test().TakeCallNames(
            {"GetPrinterDriverDirectoryA", "LoadLibraryA", "GetProcAddress", "SetupCopyOEMInfA", "FreeLibrary"}),
        ElementsAre("GetPrinterDriverDirectoryA", "LoadLibraryA", "GetProcAddress", "SetupCopyOEMInfA", "FreeLibrary"));
}

TEST_F(InfPlacement, SystemIsAskedWithTheseArguments) {
    static std::string seen;
    ReplacedOperations replaced;
    replaced.table.GetProcAddress = [](HMODULE, LPCSTR) -> FARPROC {
        static constexpr auto copy = +[](PCSTR source, PCSTR location, DWORD type, DWORD style, PSTR target, DWORD size,
                                         PDWORD required, PSTR* component) -> BOOL {
            seen = std::string(source) + (location == nullptr ? " null " : " ") + std::to_string(type) + " " +
                   std::to_string(style) + (target != nullptr && required != nullptr ? " target " : " ") +
                   std::to_string(size) + (component == nullptr ? " null" : "");
            return TRUE;
        };
        return reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(copy));
    };
    EXPECT_EQ(Run(&InfFileCopy2k), 0u);
    EXPECT_EQ(seen, kSource + " null 1 8192 target 260 null"s);
}

TEST_F(InfPlacement, EveryFailureOfTheSystemsPlacingIsTold) {
    Test().TurnLogOn(1);
    for (const char* call : {"GetPrinterDriverDirectoryA", "LoadLibraryA", "GetProcAddress"}) {
        faults::Reset();
        faults::FailCall(call, 1, 1234);
        EXPECT_EQ(Run(&InfFileCopy2k), 1234u) << call;
        EXPECT_THAT(Test().TakeLog(), IsEmpty()) << call;
    }
    faults::Reset();
    EXPECT_EQ(Run(&InfFileCopy2k, 0, kFolderPath, "C:\\none.inf"), 2u) << "the call itself";
    EXPECT_THAT(Test().TakeLog(), IsEmpty());
    EXPECT_THAT(NamesIn("C:\\WINDOWS\\inf"), Not(Contains("oem0.inf")));
}

TEST_F(InfPlacement, SameContentIsNotPlacedTwice) {
    EXPECT_EQ(Place(), 0u);
    EXPECT_EQ(Place(), 0u);
    EXPECT_TRUE(Machine().Files().Exists("C:\\WINDOWS\\inf\\oem0.inf"));
    EXPECT_FALSE(Machine().Files().Exists("C:\\WINDOWS\\inf\\oem1.inf"));
}

TEST_F(InfPlacement, PlainCopyComparesTexts) {
    Write("C:\\Infs\\a.inf", InfOf({"a", "b"}));
    Test().TurnLogOn(2);
    EXPECT_EQ(Run(&InfFileCopy2k, 1), 0u);
    EXPECT_THAT(NamesIn(kFolder), ElementsAre("a.inf")) << "case plays no part";
    EXPECT_THAT(OwnLines(Test().TakeLog()), IsEmpty());
    Write("C:\\Infs\\a.inf", InfOf({"A", "B", "C"}));
    EXPECT_EQ(Run(&InfFileCopy2k, 7), 0u) << "that the models are held plays no part";
    EXPECT_THAT(NamesIn(kFolder), ElementsAre("a.inf", "oem0.inf"));
    EXPECT_THAT(OwnLines(Test().TakeLog()), ElementsAre("InfFileCopy2k() - ::CopyFile() --Success--"));
}

TEST_F(InfPlacement, PlainCopyTellsNoFailure) {
    faults::FailCall("SetupGetInfFileListA", 1, 1234);
    EXPECT_EQ(Run(&InfFileCopy2k, 1), 0u);
    EXPECT_THAT(NamesIn(kFolder), IsEmpty());
    faults::Reset();
    EXPECT_EQ(Run(&InfFileCopy2k, 1, kFolderPath, "C:\\none.inf"), 0u);
    EXPECT_EQ(Run(&InfFileCopy2k, 1, ("C:\\" + std::string(300, 'f') + "\\").c_str()), 0u);
    TakeNumbers();
    Test().TurnLogOn(1);
    EXPECT_EQ(Run(&InfFileCopy2k, 1), 0u);
    EXPECT_THAT(OwnLines(Test().TakeLog()), IsEmpty());
}

// ---- Windows 98 -----------------------------------------------------------------------------------------------------

TEST_F(InfPlacement, Windows98MakesTheOtherFolderAndCopiesWithoutACheck) {
    Fresh("win98");
    Write("C:\\Infs\\a.inf", InfOf({"A", "B"}));
    Write("C:\\Infs\\Northlightaurora.inf", "old");
    Write("C:\\Infs\\Drvdata.bin", "x");
    Write("C:\\Infs\\Drvidx.bin", "x");
    EXPECT_EQ(Machine().Files().SetAttributes("C:\\Infs\\Drvidx.bin", FILE_ATTRIBUTE_READONLY), 0u);
    Test().TurnLogOn(2);
    Test().TakeCalls();
    EXPECT_EQ(Run(&InfFileCopy98), 0u);
    EXPECT_THAT(NamesIn(kFolder), ElementsAre("a.inf", "Other"));
    EXPECT_THAT(NamesIn("C:\\Infs\\Other"), ElementsAre("Northlightaurora.inf"));
    EXPECT_THAT(Test().TakeLog(), ElementsAre("InfFileCopy98() - ::CopyFile() --Success--"));
}

TEST_F(InfPlacement, Windows98DoesItsStepsInThisOrder) {
    Fresh("win98");
    EXPECT_EQ(Machine().Files().MakeFolder("C:\\Infs\\Other"), 0u);
    Write("C:\\Infs\\Northlightaurora.inf", "old");
    Write("C:\\Infs\\Drvidx.bin", "x");
    Test().TakeCalls();
    EXPECT_EQ(Run(&InfFileCopy98), 0u);
    EXPECT_THAT(
        Test().TakeCallNames({"FindFirstFileA", "SetupGetInfFileListA", "FindClose", "CreateDirectoryA", "CopyFileA",
                              "SetFileAttributesA", "DeleteFileA"}),
        ElementsAre("FindFirstFileA", "SetupGetInfFileListA", "SetupGetInfFileListA", "FindClose", "CopyFileA",
                    "SetFileAttributesA", "DeleteFileA", "SetFileAttributesA", "SetFileAttributesA", "DeleteFileA"));
    EXPECT_THAT(NamesIn(kFolder), ElementsAre("Other"));
}

TEST_F(InfPlacement, Windows98ChecksTheOtherFolderAlone) {
    Fresh("win98");
    Write("C:\\Infs\\a.inf", InfOf({"A", "B"}));
    Write("C:\\Infs\\Other\\b.inf", InfOf({"A"}));
    EXPECT_EQ(Run(&InfFileCopy98), 0u);
    EXPECT_THAT(NamesIn("C:\\Infs\\Other"), ElementsAre("b.inf", "Northlightaurora.inf"));
    EXPECT_EQ(Machine().Files().Delete("C:\\Infs\\Other\\Northlightaurora.inf"), 0u);
    Write("C:\\Infs\\Other\\b.inf", InfOf({"A", "B"}));
    Test().TurnLogOn(1);
    EXPECT_EQ(Run(&InfFileCopy98), 0u);
    EXPECT_THAT(NamesIn("C:\\Infs\\Other"), ElementsAre("b.inf"));
    EXPECT_THAT(OwnLines(Test().TakeLog()), IsEmpty());
}

TEST_F(InfPlacement, Windows98OverwritesAndTellsFailures) {
    Fresh("win98");
    Write("C:\\Infs\\Other\\Northlightaurora.inf", "old");
    EXPECT_EQ(Run(&InfFileCopy98), 0u);
    EXPECT_EQ(ReadFileOn(Machine(), "C:\\Infs\\Other\\Northlightaurora.inf"), InfOf({"A", "B"}));
    Write(kSource, InfOf({"D"}));
    faults::FailCall("CopyFileA", 1, 112);
    EXPECT_EQ(Run(&InfFileCopy98), 112u);
    faults::Reset();
    EXPECT_EQ(Run(&InfFileCopy98, 0, kFolderPath, "C:\\none.inf"), 2u);
    EXPECT_EQ(Run(&InfFileCopy98, 0, "C:\\None\\Deep\\"), DWORD{ERROR_PATH_NOT_FOUND}) << "the folder can't be made";
}

TEST_F(InfPlacement, Windows98LeavesFilesThatItCantClear) {
    Fresh("win98");
    for (const char* name : {"Northlightaurora.inf", "Drvdata.bin", "Drvidx.bin"}) {
        Write(std::string(kFolderPath) + name, "x");
    }
    faults::FailCall("SetFileAttributesA", 1, 5);
    faults::FailCall("DeleteFileA", 1, 32);
    EXPECT_EQ(Run(&InfFileCopy98), 0u);
    EXPECT_THAT(NamesIn(kFolder), ElementsAre("Drvdata.bin", "Northlightaurora.inf", "Other"));
}

TEST_F(InfPlacement, Windows98RefusesNamesOfMoreThan259Bytes) {
    Fresh("win98");
    for (std::size_t length : {252u, 253u, 254u, 259u, 260u, 261u, 3000u}) {
        const std::string folder = "C:\\" + std::string(length - 4, 'f') + "\\";
        Test().TakeCalls();
        EXPECT_EQ(Run(&InfFileCopy98, 0, folder.c_str()), length + 7 < 260 ? DWORD{ERROR_PATH_NOT_FOUND} : 206u)
            << length;
        EXPECT_THAT(Test().TakeCallNames({"CopyFileA"}), IsEmpty());
    }
    // The provider makes the name too long.
    const std::string provider(259 - 14 - 10, 'p');
    Write(kSource, InfOf({"A"}));
    EXPECT_EQ(InfFileCopy98(kSource, 3, 5, 1, kFolderPath, (provider + "p").c_str(), "Printer", 0), 206u);
    EXPECT_NE(InfFileCopy98(kSource, 3, 5, 1, kFolderPath, provider.c_str(), "Printer", 0), 206u);
}

// ---- Windows 95 -----------------------------------------------------------------------------------------------------

TEST_F(InfPlacement, Windows95TakesANumberWithoutAnOtherFolder) {
    Fresh("win95");
    Write("C:\\Infs\\oem0.inf", "x");
    Write("C:\\Infs\\Drvidx.bin", "x");
    Test().TurnLogOn(2);
    EXPECT_EQ(Run(&InfFileCopy95), 0u);
    EXPECT_THAT(NamesIn(kFolder), ElementsAre("Drvidx.bin", "oem0.inf", "oem1.inf"));
    EXPECT_THAT(OwnLines(Test().TakeLog()), ElementsAre("InfFileCopy95() - ::CopyFile() --Success--"));
    EXPECT_EQ(Run(&InfFileCopy95), 0u);
    EXPECT_THAT(NamesIn(kFolder), ElementsAre("Drvidx.bin", "oem0.inf", "oem1.inf")) << "its models are held now";
}

TEST_F(InfPlacement, Windows95LeavesNoFileWithAnOtherFolder) {
    Fresh("win95");
    EXPECT_EQ(Machine().Files().MakeFolder("C:\\Infs\\Other"), 0u);
    for (const char* name : {"Drvdata.bin", "Drvidx.bin", "Tarvoaurora.inf"}) {
        Write(std::string(kFolderPath) + name, "x");
    }
    Test().TurnLogOn(2);
    Test().TakeCalls();
    EXPECT_EQ(Run(&InfFileCopy95), 0u);
    EXPECT_THAT(NamesIn("C:\\Infs\\Other"), IsEmpty()) << "the fresh copy goes again";
    EXPECT_THAT(NamesIn(kFolder), ElementsAre("Other", "Tarvoaurora.inf"));
    EXPECT_THAT(OwnLines(Test().TakeLog()), ElementsAre("InfFileCopy95() - ::CopyFile() --Success--"));
    EXPECT_THAT(Test().TakeCallNames({"FindFirstFileA", "FindClose", "CopyFileA", "SetFileAttributesA", "DeleteFileA"}),
                ElementsAre("FindFirstFileA", "FindClose", "CopyFileA", "SetFileAttributesA", "DeleteFileA",
                            "SetFileAttributesA", "DeleteFileA", "SetFileAttributesA", "DeleteFileA", "FindClose"));
    EXPECT_EQ(Machine().Handles().OpenCount(), 0u);
    Test().AllowOpen();  // the second close of the search is noted as misuse
}

TEST_F(InfPlacement, Windows95LogsItsCopyBeforeItClosesTheSearchAgain) {
    Fresh("win95");
    EXPECT_EQ(Machine().Files().MakeFolder("C:\\Infs\\Other"), 0u);
    Test().TurnLogOn(1);
    Test().TakeCalls();
    EXPECT_EQ(Run(&InfFileCopy95), 0u);
    const LogLines calls = Test().TakeCallNames({"FindClose", "WriteFile"});
    ASSERT_GE(calls.size(), 3u);
    EXPECT_THAT(LogLines(calls.end() - 3, calls.end()), ElementsAre("FindClose", "WriteFile", "FindClose"));
    Test().AllowOpen();  // the second close of the search is noted as misuse
}

TEST_F(InfPlacement, Windows95TellsNoFailedCopy) {
    Fresh("win95");
    EXPECT_EQ(Machine().Files().MakeFolder("C:\\Infs\\Other"), 0u);
    Write("C:\\Infs\\Drvidx.bin", "x");
    Test().TurnLogOn(1);
    faults::FailCall("CopyFileA", 1, 112);
    Test().TakeCalls();
    EXPECT_EQ(Run(&InfFileCopy95), 0u);
    EXPECT_THAT(NamesIn(kFolder), ElementsAre("Drvidx.bin", "Other"));
    EXPECT_THAT(OwnLines(Test().TakeLog()), IsEmpty());
    EXPECT_THAT(Test().TakeCallNames({"FindFirstFileA", "FindClose", "DeleteFileA", "SetFileAttributesA"}),
                ElementsAre("FindFirstFileA", "FindClose", "FindClose"));
    faults::Reset();
    EXPECT_EQ(Machine().Files().RemoveFolder("C:\\Infs\\Other"), 0u);
    TakeNumbers();
    EXPECT_EQ(Run(&InfFileCopy95), 0u);
    EXPECT_THAT(OwnLines(Test().TakeLog()), IsEmpty());
    EXPECT_EQ(Run(&InfFileCopy95, 0, kFolderPath, "C:\\none.inf"), 2u) << "but the check's";
    EXPECT_EQ(Run(&InfFileCopy95, 0, ("C:\\" + std::string(300, 'f') + "\\").c_str()), 0u);
    Test().AllowOpen();
}

// ---- dispatch -------------------------------------------------------------------------------------------------------

class InfPlacementRoute : public EverySystemTest {};

TEST_P(InfPlacementRoute, IsThatOfTheSystem) {
    WriteFileOn(Machine(), kSource, InfOf({"A", "B"}));
    const std::string& system = GetParam();
    Test().TurnLogOn(1);
    EXPECT_EQ(PI_InfFileCopy(kSource, 3, 5, 1, nullptr, "Northlight", "Printer", 0), 0u);
    const LogLines log = Test().TakeLog();
    ASSERT_GE(log.size(), 3u);
    const std::string windows = Machine().System().windowsDirectory;
    const std::string folder = windows + "\\inf\\";
    const bool hasOther = system == "win98" || system == "winme";
    const char* line = system == "win95" ? "InfFileCopy95() - ::CopyFile() --Success--"
                       : hasOther        ? "InfFileCopy98() - ::CopyFile() --Success--"
                       : system == "nt4" ? "InfFileCopyNT() - ::CopyFile() --Success--"
                                         : "InfFileCopy2k() - ::SetupCopyOEMInf --Success--";
    EXPECT_EQ(log.front(), "PI_InfFileCopy Start");
    EXPECT_EQ(log[log.size() - 2], line);
    EXPECT_EQ(log.back(), "PI_InfFileCopy End");
    EXPECT_TRUE(Machine().Files().Exists(folder + (hasOther ? "Other\\Northlightaurora.inf" : "oem0.inf")));
}

INSTANTIATE_ON_EVERY_SYSTEM(InfPlacementRoute);

TEST_F(InfPlacement, SystemWithoutARouteGives120) {
    simulated::SystemDescription system = *simulated::FindSystem("nt4");
    system.major = 3;
    system.minor = 51;
    TestMachine test(system);
    EXPECT_EQ(Place(), DWORD{ERROR_CALL_NOT_IMPLEMENTED});
}

TEST_F(InfPlacement, NullArgumentsGive87WithoutALogLine) {
    Test().TurnLogOn(2);
    EXPECT_EQ(PI_InfFileCopy(nullptr, 3, 5, 1, kFolder, "P", "C", 0), 87u);
    EXPECT_EQ(PI_InfFileCopy(kSource, 3, 5, 1, kFolder, nullptr, "C", 0), 87u);
    EXPECT_EQ(PI_InfFileCopy(kSource, 3, 5, 1, kFolder, "P", nullptr, 0), 87u);
    EXPECT_THAT(Test().TakeLog(), IsEmpty());
}

TEST_F(InfPlacement, EmptyFolderIsTheRootAndNotNull) {
    EXPECT_EQ(Place(1, ""), 0u);
    EXPECT_TRUE(Machine().Files().Exists("\\oem0.inf"));
    EXPECT_FALSE(Machine().Files().Exists("C:\\WINDOWS\\inf\\oem0.inf"));
}

TEST_F(InfPlacement, WindowsFolderThatCantBeHadIsNotActedOn) {
    ForgetCalls(Test());
    GetOsRoute();
    EXPECT_EQ(Machine().Files().MakeFolder("C:\\inf"), 0u);
    faults::FailCall("GetWindowsDirectoryA", 1, 1234);
    EXPECT_EQ(Place(1, nullptr), 0u);
    EXPECT_TRUE(Machine().Files().Exists("C:\\inf\\oem0.inf"));
}

TEST_F(InfPlacement, FolderOfMoreThan259BytesIsRefused) {
    Test().TurnLogOn(1);
    for (std::size_t length : {257u, 258u, 259u, 260u, 261u, 3000u}) {
        const std::string folder = "C:\\" + std::string(length - 3, 'f');
        EXPECT_EQ(Place(1, folder.c_str()), length + 1 < 260 ? 0u : 206u) << length;
        const LogLines log = OwnLines(Test().TakeLog());
        EXPECT_THAT(log, ElementsAre("PI_InfFileCopy Start", "PI_InfFileCopy End")) << length;
    }
}

TEST_F(InfPlacement, IsSlot12) {
    const PI_KEL_Interface& table = *PI_KEL_GetInterface(PIKEL_INTERFACE_VERSION);
    Test().TurnLogOn(1);
    EXPECT_EQ(table.PI_KEL_InfFileCopy(nullptr, 3, 5, 1, nullptr, "P", "C", 0), 0x901b0057u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("PI_KEL_InfFileCopy Start", "PI_KEL_InfFileCopy End:(0x901b0057)", ""));
    EXPECT_EQ(table.PI_KEL_InfFileCopy(kSource, 3, 5, 1, nullptr, "Northlight", "Printer", 0), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("PI_KEL_InfFileCopy Start", "PI_InfFileCopy Start",
                                              "InfFileCopy2k() - ::SetupCopyOEMInf --Success--", "PI_InfFileCopy End",
                                              "PI_KEL_InfFileCopy End:(0x00000000)", ""));
    EXPECT_EQ(table.PI_KEL_InfFileCopy(kSource, 3, 5, 1, "", "Northlight", "Printer", 1), 0u);
    EXPECT_TRUE(Machine().Files().Exists("C:\\oem0.inf")) << "an empty folder stays one";
}

}  // namespace
}  // namespace pikel
