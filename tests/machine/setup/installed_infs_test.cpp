// The INFs that the machine has installed: their list and class, the search path, and the taking up of a new one.
#include <cstring>
#include <string>

#include "support/machine_test.h"

namespace pikel {
namespace {

using namespace testing_support;
using namespace std::string_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr DWORD kUntouched = 4711;
constexpr DWORD kSucceeds = 0xffffffff;
constexpr char kSource[] = "C:\\Driver\\aurora.inf";
constexpr char kText[] = "[Version]\r\nSignature=\"$Windows NT$\"\r\nClass=Printer\r\n";

class InstalledInfs : public MachineTest {
  protected:
    void Write(const std::string& path, std::string_view text = kText) { WriteFileOn(Machine(), path, text); }

    /// The last error of a failed call, or kSucceeds; a call that succeeds leaves the last error as it is.
    template <class Call>
    static DWORD CodeOf(Call call) {
        Platform().SetLastError(kUntouched);
        const BOOL result = call();
        const DWORD code = Platform().GetLastError();
        if (result) {
            EXPECT_EQ(code, kUntouched);
        }
        return result ? kSucceeds : code;
    }
};

// ---- list -----------------------------------------------------------------------------------------------------------

class InfFileList : public InstalledInfs {
  protected:
    std::vector<std::string> List(const char* folder, DWORD style = INF_STYLE_WIN4) {
        DWORD size = 77;
        EXPECT_EQ(CodeOf([&] { return Platform().SetupGetInfFileListA(folder, style, nullptr, 0, &size); }), kSucceeds);
        std::string buffer(size, 'x');
        DWORD again = 77;
        EXPECT_EQ(CodeOf([&] { return Platform().SetupGetInfFileListA(folder, style, buffer.data(), size, &again); }),
                  kSucceeds);
        EXPECT_EQ(again, size);
        std::vector<std::string> names = simulated::SplitMultiString(buffer.c_str());
        EXPECT_EQ(simulated::JoinMultiString(names), buffer) << "the size is that of the list";
        return names;
    }
};

TEST_F(InfFileList, HoldsTheInfsOfAFolder) {
    Write("C:\\Infs\\b.INF");
    Write("C:\\Infs\\a.inf");
    Write("C:\\Infs\\c.txt");
    Write("C:\\Infs\\d.infx");
    EXPECT_EQ(Machine().Files().MakeFolder("C:\\Infs\\e.inf"), 0u);
    EXPECT_THAT(List("C:\\Infs"), ElementsAre("a.inf", "b.INF"));
    EXPECT_THAT(List("C:\\Infs\\"), ElementsAre("a.inf", "b.INF"));
    EXPECT_THAT(List("C:\\Infs", 1), IsEmpty()) << "none is of the old style";
}

TEST_F(InfFileList, NullFolderIsTheSystems) {
    for (const char* system : {"xp", "win98"}) {
        Start(system);
        Write(Machine().System().windowsDirectory + "\\inf\\oem0.inf");
        EXPECT_THAT(List(nullptr), ::testing::Contains("oem0.inf")) << system;
    }
}

TEST_F(InfFileList, IsEmptyForAFolderWithoutAnInf) {
    EXPECT_THAT(List("C:\\None"), IsEmpty());
    EXPECT_EQ(Machine().Files().MakeFolder("C:\\Empty"), 0u);
    EXPECT_THAT(List("C:\\Empty"), IsEmpty());
}

TEST_F(InfFileList, SmallBufferIsRefused) {
    Write("C:\\Infs\\a.inf");
    char buffer[16] = "untouched";
    DWORD size = 0;
    EXPECT_EQ(CodeOf([&] { return Platform().SetupGetInfFileListA("C:\\Infs", 2, buffer, 6, &size); }),
              DWORD{ERROR_INSUFFICIENT_BUFFER});
    EXPECT_EQ(size, 7u);
    EXPECT_STREQ(buffer, "untouched");
    EXPECT_EQ(CodeOf([&] { return Platform().SetupGetInfFileListA("C:\\Infs", 2, buffer, 7, nullptr); }), kSucceeds);
    EXPECT_EQ(CodeOf([&] { return Platform().SetupGetInfFileListA("C:\\Infs", 2, nullptr, 7, &size); }),
              DWORD{ERROR_INVALID_PARAMETER});
    Write("C:\\file");
    EXPECT_EQ(CodeOf([&] { return Platform().SetupGetInfFileListA("C:\\file", 2, nullptr, 0, &size); }),
              DWORD{ERROR_DIRECTORY});
}

// ---- class ----------------------------------------------------------------------------------------------------------

class InfClass : public InstalledInfs {
  protected:
    DWORD Class(const char* path, DWORD size = sizeof m_name) {
        return CodeOf([&] { return Platform().SetupDiGetINFClassA(path, &m_guid, m_name, size, &m_required); });
    }
    GUID m_guid{};
    char m_name[64] = "untouched";
    DWORD m_required = 77;
};

TEST_F(InfClass, IsReadFromVersion) {
    Write(kSource, "[Version]\nClass=Printer\nClassGUID={4D36E979-E325-11CE-BFC1-08002BE10318}\n");
    EXPECT_EQ(Class(kSource), kSucceeds);
    EXPECT_STREQ(m_name, "Printer");
    EXPECT_EQ(m_required, 8u);
    EXPECT_EQ(m_guid, (GUID{0x4D36E979, 0xE325, 0x11CE, {0xBF, 0xC1, 0x08, 0x00, 0x2B, 0xE1, 0x03, 0x18}}));
    EXPECT_EQ(Machine().Handles().OpenCount(), 0u);
    Write(kSource, "[Version]\nClass=%C%\nClassGUID=nonsense\n[Strings]\nC=\"Net\"\n");
    EXPECT_EQ(Class(kSource), kSucceeds);
    EXPECT_STREQ(m_name, "Net");
    EXPECT_EQ(m_guid, GUID{});
}

TEST_F(InfClass, IsTheSystemsForAnIdentifierAlone) {
    Machine().Registry().SetText(
        "HKLM\\SYSTEM\\CurrentControlSet\\Control\\Class\\{00000001-0002-0003-0405-060708090A0B}", "Class", "Special");
    Write(kSource, "[Version]\nClassGUID={00000001-0002-0003-0405-060708090A0B}\n");
    EXPECT_EQ(Class(kSource), kSucceeds);
    EXPECT_STREQ(m_name, "Special");
}

TEST_F(InfClass, TellsWhyNot) {
    EXPECT_EQ(Class("C:\\none.inf"), DWORD{ERROR_FILE_NOT_FOUND});
    Write(kSource, "[Manufacturer]\nA=B\n");
    EXPECT_EQ(Class(kSource), 0xE0000200u);
    Write(kSource);
    EXPECT_EQ(Class(kSource, 7), DWORD{ERROR_INSUFFICIENT_BUFFER});
    EXPECT_EQ(m_required, 8u);
    EXPECT_STREQ(m_name, "untouched");
    EXPECT_EQ(Class(nullptr), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(CodeOf([] { return Platform().SetupDiGetINFClassA(kSource, nullptr, nullptr, 0, nullptr); }),
              DWORD{ERROR_INVALID_PARAMETER});
    auto held = Machine().Files().HoldOpen(kSource);
    EXPECT_EQ(Class(kSource), DWORD{ERROR_SHARING_VIOLATION});
}

// ---- search path ----------------------------------------------------------------------------------------------------

class InfInformation : public InstalledInfs {
  protected:
    /// Path of the INF meant, or the code in decimal.
    std::string Find(LPCVOID spec, DWORD search = INFINFO_DEFAULT_SEARCH) {
        DWORD size = 0;
        DWORD code = CodeOf([&] { return Platform().SetupGetInfInformationA(spec, search, nullptr, 0, &size); });
        if (code != kSucceeds) {
            return std::to_string(code);
        }
        std::vector<DWORD> block(size / sizeof(DWORD) + 1);
        auto* information = reinterpret_cast<PSP_INF_INFORMATION>(block.data());
        EXPECT_EQ(
            CodeOf([&] { return Platform().SetupGetInfInformationA(spec, search, information, size - 1, nullptr); }),
            DWORD{ERROR_INSUFFICIENT_BUFFER});
        EXPECT_EQ(CodeOf([&] { return Platform().SetupGetInfInformationA(spec, search, information, size, nullptr); }),
                  kSucceeds);
        EXPECT_EQ(information->InfStyle, DWORD{INF_STYLE_WIN4});
        EXPECT_EQ(information->InfCount, 1u);
        char path[300] = {};
        DWORD needed = 0;
        EXPECT_EQ(CodeOf([&] { return Platform().SetupQueryInfFileInformationA(information, 0, nullptr, 0, &needed); }),
                  kSucceeds);
        EXPECT_EQ(
            CodeOf([&] { return Platform().SetupQueryInfFileInformationA(information, 0, path, needed - 1, nullptr); }),
            DWORD{ERROR_INSUFFICIENT_BUFFER});
        EXPECT_EQ(
            CodeOf([&] { return Platform().SetupQueryInfFileInformationA(information, 0, path, needed, nullptr); }),
            kSucceeds);
        EXPECT_EQ(needed, std::strlen(path) + 1);
        EXPECT_EQ(CodeOf([&] {
                      return Platform().SetupQueryInfFileInformationA(information, 1, path, sizeof path, nullptr);
                  }),
                  DWORD{ERROR_INVALID_PARAMETER});
        return path;
    }
};

TEST_F(InfInformation, NameIsFoundOnTheSearchPath) {
    Write("C:\\WINDOWS\\inf\\both.inf");
    Write("C:\\More\\both.inf");
    Write("C:\\More\\more.inf");
    Write("C:\\WINDOWS\\Extra\\extra.inf");
    Machine().Registry().SetText("HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion", "DevicePath",
                                 "%SystemRoot%\\Extra;;C:\\More");
    EXPECT_EQ(Find("both.inf"), "C:\\WINDOWS\\inf\\both.inf");
    EXPECT_EQ(Find("both.inf", 4), "C:\\More\\both.inf") << "the other way round";
    EXPECT_EQ(Find("more.inf"), "C:\\More\\more.inf");
    EXPECT_EQ(Find("extra.inf"), "C:\\WINDOWS\\Extra\\extra.inf");
    EXPECT_EQ(Find("none.inf"), "2");
    EXPECT_EQ(Find("C:\\More\\more.inf"), "C:\\More\\more.inf");
    EXPECT_EQ(Find("C:\\More\\more.inf", 2), "C:\\More\\more.inf");
    EXPECT_EQ(Find("C:\\More"), "2") << "a folder is no INF";
}

TEST_F(InfInformation, HandleStandsForItsFile) {
    Write(kSource);
    HINF inf = Platform().SetupOpenInfFileA(kSource, nullptr, INF_STYLE_WIN4, nullptr);
    EXPECT_EQ(Find(inf, 1), kSource);
    Platform().SetupCloseInfFile(inf);
    EXPECT_EQ(Find(inf, 1), "6");
}

TEST_F(InfInformation, BadArgumentsAreRefused) {
    EXPECT_EQ(Find(nullptr), "87");
    EXPECT_EQ(Find("a.inf", 0), "87");
    EXPECT_EQ(Find("a.inf", 9), "87");
    EXPECT_EQ(CodeOf([] { return Platform().SetupQueryInfFileInformationA(nullptr, 0, nullptr, 0, nullptr); }),
              DWORD{ERROR_INVALID_PARAMETER});
}

// ---- taking up ------------------------------------------------------------------------------------------------------

class CopyOemInf : public InstalledInfs {
  protected:
    CopyOemInf() { Write(kSource); }

    DWORD Copy(const char* source = kSource, DWORD style = 0) {
        std::memset(m_target, 0, sizeof m_target);
        m_component = nullptr;
        return CopyInto(m_target, sizeof m_target, source, style);
    }
    DWORD CopyInto(char* target, DWORD size, const char* source = kSource, DWORD style = 0) {
        LookedUp<looked_up::SetupCopyOEMInfA> copy("setupapi.dll", "SetupCopyOEMInfA");
        EXPECT_TRUE(copy);
        return CodeOf(
            [&] { return copy.Call()(source, nullptr, SPOST_PATH, style, target, size, &m_required, &m_component); });
    }
    std::vector<std::string> Oems() {
        std::vector<std::string> names;
        for (const simulated::FileEntry& entry : Machine().Files().List("C:\\WINDOWS\\inf", "oem*")) {
            names.push_back(entry.name);
        }
        return names;
    }
    char m_target[260] = {};
    PSTR m_component = nullptr;
    DWORD m_required = 0;
};

TEST_F(CopyOemInf, TakesTheLowestFreeNumber) {
    EXPECT_EQ(Copy(), kSucceeds);
    EXPECT_STREQ(m_target, "C:\\WINDOWS\\inf\\oem0.inf");
    EXPECT_STREQ(m_component, "oem0.inf");
    EXPECT_EQ(m_required, sizeof "C:\\WINDOWS\\inf\\oem0.inf");
    EXPECT_EQ(ReadFileOn(Machine(), m_target), kText);
    EXPECT_EQ(Machine().Files().WrittenAt(m_target)->dwLowDateTime,
              Machine().Files().WrittenAt(kSource)->dwLowDateTime);
    Write("C:\\WINDOWS\\inf\\OEM1.INF", "other");
    Write(kSource, kText + "; 2"s);
    EXPECT_EQ(Copy(), kSucceeds);
    EXPECT_STREQ(m_component, "oem2.inf");
    EXPECT_EQ(Machine().Files().Delete("C:\\WINDOWS\\inf\\oem0.inf"), 0u);
    Write(kSource, kText + "; 3"s);
    EXPECT_EQ(Copy(), kSucceeds);
    EXPECT_STREQ(m_component, "oem0.inf");
}

TEST_F(CopyOemInf, UsesAFileWithTheSameContentAgain) {
    Write("C:\\WINDOWS\\inf\\oem5.inf");
    Write("C:\\WINDOWS\\inf\\oemx.inf");
    EXPECT_EQ(Copy(), kSucceeds);
    EXPECT_STREQ(m_component, "oem5.inf");
    EXPECT_THAT(Oems(), ElementsAre("oem5.inf", "oemx.inf"));
    Write(kSource, "[version]\r\nSignature=\"$Windows NT$\"\r\nClass=Printer\r\n");
    EXPECT_EQ(Copy(), kSucceeds);
    EXPECT_STREQ(m_component, "oem0.inf") << "the bytes count";
}

TEST_F(CopyOemInf, InfOfTheFolderStaysWhereItIs) {
    Write("C:\\WINDOWS\\inf\\own.inf");
    EXPECT_EQ(Copy("C:\\windows\\INF\\own.inf"), kSucceeds);
    EXPECT_STREQ(m_component, "own.inf");
    EXPECT_EQ(Copy("own.inf"), kSucceeds) << "a bare name is one of the folder's";
    EXPECT_THAT(Oems(), IsEmpty());
}

TEST_F(CopyOemInf, StylesChooseWhatHappensToAFileThatIsThere) {
    EXPECT_EQ(Copy(kSource, SP_COPY_REPLACEONLY), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_THAT(Oems(), IsEmpty());
    EXPECT_EQ(Copy(kSource, SP_COPY_FORCE_NEWER), kSucceeds);
    EXPECT_EQ(Copy(kSource, SP_COPY_REPLACEONLY), kSucceeds);
    EXPECT_EQ(Copy(kSource, SP_COPY_NOOVERWRITE), DWORD{ERROR_FILE_EXISTS});
    EXPECT_STREQ(m_component, "oem0.inf") << "its name is told all the same";
    EXPECT_EQ(Copy(kSource, SP_COPY_DELETESOURCE), kSucceeds);
    EXPECT_FALSE(Machine().Files().Exists(kSource));
    EXPECT_EQ(Copy("C:\\WINDOWS\\inf\\oem0.inf", SP_COPY_DELETESOURCE), kSucceeds);
    EXPECT_THAT(Oems(), ElementsAre("oem0.inf")) << "not its own";
}

TEST_F(CopyOemInf, SmallBufferIsRefusedBeforeAnythingIsCopied) {
    char target[8] = "before";
    EXPECT_EQ(CopyInto(target, sizeof target), DWORD{ERROR_INSUFFICIENT_BUFFER});
    EXPECT_EQ(m_required, sizeof "C:\\WINDOWS\\inf\\oem0.inf");
    EXPECT_STREQ(target, "before");
    EXPECT_THAT(Oems(), IsEmpty());
    EXPECT_EQ(CopyInto(nullptr, 0), kSucceeds) << "the name need not be taken";
    EXPECT_THAT(Oems(), ElementsAre("oem0.inf"));
}

TEST_F(CopyOemInf, TellsWhyNot) {
    EXPECT_EQ(Copy(nullptr), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(Copy("C:\\none.inf"), DWORD{ERROR_FILE_NOT_FOUND});
    Write(kSource, "text before a section\n");
    EXPECT_EQ(Copy(), DWORD{ERROR_EXPECTED_SECTION_NAME});
    Write(kSource);
    Machine().Files().SetFreeSpace(3);
    EXPECT_EQ(Copy(), DWORD{ERROR_DISK_FULL});
    Machine().Files().SetFreeSpace(std::nullopt);
    simulated::SystemDescription system = Machine().System();
    system.administrator = false;
    Machine().SetSystem(system);
    EXPECT_EQ(Copy(), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_THAT(Oems(), IsEmpty());
}

}  // namespace
}  // namespace pikel
