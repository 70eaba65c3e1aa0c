#include <functional>

#include "machine/files/files.h"
#include "support/machine_test.h"

namespace pikel {
namespace {

using simulated::Files;
using ::testing::ElementsAre;
using testing_support::Lies;
using testing_support::ReadFileOn;
using testing_support::WriteFileOn;

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

class FileOperations : public testing_support::MachineTest, public ::testing::WithParamInterface<Lies> {
  protected:
    FileOperations() : MachineTest("xp", GetParam()) {}

    FileHandle Open(const char* path, DWORD access, DWORD share, DWORD disposition, DWORD attributes = 0) {
        return FileHandle(Platform().CreateFileA(path, access, share, nullptr, disposition, attributes, nullptr));
    }
    /// Code of an open: 0 when it works.
    DWORD CodeOfOpen(const char* path, DWORD access, DWORD share, DWORD disposition) {
        Platform().SetLastError(0);
        const FileHandle file = Open(path, access, share, disposition);
        return file ? 0 : Platform().GetLastError();
    }
    static bool Write(const FileHandle& file, std::string_view bytes, DWORD* written = nullptr) {
        DWORD count = 0;
        return Platform().WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()),
                                    written != nullptr ? written : &count, nullptr) != FALSE;
    }
    std::vector<std::string> Find(const char* pattern) {
        WIN32_FIND_DATAA data;
        std::vector<std::string> names;
        const FindHandle search(Platform().FindFirstFileA(pattern, &data));
        if (!search) {
            return {"code " + std::to_string(Platform().GetLastError())};
        }
        do {
            names.emplace_back(data.cFileName);
        } while (Platform().FindNextFileA(search.Get(), &data));
        EXPECT_EQ(Platform().GetLastError(), 18u);
        return names;
    }
};

INSTANTIATE_TEST_SUITE_P(Lie, FileOperations, ::testing::Values(Lies::InMemory, Lies::InAFolder),
                         [](const auto& info) { return info.param == Lies::InMemory ? "InMemory" : "InAFolder"; });

TEST_P(FileOperations, CreationDispositionsDoWhatTheySay) {
    struct Case {
        const char* name;
        DWORD disposition;
        bool exists;
        DWORD code;         // of a failure
        const char* after;  // content, null for none
        DWORD lastError;    // after success, when it stood at 77
    };
    for (const Case& c : {
             Case{"CREATE_NEW on none", CREATE_NEW, false, 0, "", 77},
             Case{"CREATE_NEW on one", CREATE_NEW, true, 80, "old", 0},
             Case{"CREATE_ALWAYS on none", CREATE_ALWAYS, false, 0, "", 0},
             Case{"CREATE_ALWAYS on one", CREATE_ALWAYS, true, 0, "", 183},
             Case{"OPEN_EXISTING on none", OPEN_EXISTING, false, 2, nullptr, 0},
             Case{"OPEN_EXISTING on one", OPEN_EXISTING, true, 0, "old", 77},
             Case{"OPEN_ALWAYS on none", OPEN_ALWAYS, false, 0, "", 0},
             Case{"OPEN_ALWAYS on one", OPEN_ALWAYS, true, 0, "old", 183},
             Case{"TRUNCATE_EXISTING on none", TRUNCATE_EXISTING, false, 2, nullptr, 0},
             Case{"TRUNCATE_EXISTING on one", TRUNCATE_EXISTING, true, 0, "", 77},
             Case{"no disposition", 0, true, 87, "old", 0},
             Case{"an unknown disposition", 6, true, 87, "old", 0},
         }) {
        SCOPED_TRACE(c.name);
        Machine().Files().Delete("C:\\f");
        if (c.exists) {
            WriteFileOn(Machine(), "C:\\f", "old");
        }
        Platform().SetLastError(77);
        {
            const FileHandle file = Open("C:\\f", GENERIC_READ | GENERIC_WRITE, 0, c.disposition);
            EXPECT_EQ(static_cast<bool>(file), c.code == 0);
            EXPECT_EQ(Platform().GetLastError(), c.code != 0 ? c.code : c.lastError);
        }
        EXPECT_EQ(Machine().Files().Read("C:\\f").has_value(), c.after != nullptr);
        EXPECT_EQ(Machine().Files().Read("C:\\f").value_or(""), c.after != nullptr ? c.after : "");
    }
}

TEST_P(FileOperations, OpenRefusals) {
    WriteFileOn(Machine(), "C:\\f", "x");
    EXPECT_EQ(CodeOfOpen("C:\\none\\f", GENERIC_READ, 0, OPEN_EXISTING), 3u);
    EXPECT_EQ(CodeOfOpen("C:\\none\\f", GENERIC_WRITE, 0, CREATE_ALWAYS), 3u);
    EXPECT_EQ(CodeOfOpen("C:\\WINDOWS", GENERIC_READ, 0, OPEN_EXISTING), 5u);
    EXPECT_EQ(CodeOfOpen("C:\\WINDOWS", GENERIC_WRITE, 0, CREATE_ALWAYS), 5u);
    EXPECT_EQ(CodeOfOpen("C:\\WINDOWS", GENERIC_WRITE, 0, CREATE_NEW), 80u);
    EXPECT_EQ(CodeOfOpen("C:\\a?b", GENERIC_READ, 0, OPEN_EXISTING), 123u);
    EXPECT_EQ(CodeOfOpen("C:\\f\\", GENERIC_READ, 0, OPEN_EXISTING), 123u);
    EXPECT_EQ(CodeOfOpen("", GENERIC_READ, 0, OPEN_EXISTING), 3u);
    EXPECT_EQ(CodeOfOpen(nullptr, GENERIC_READ, 0, OPEN_EXISTING), 3u);
    EXPECT_EQ(CodeOfOpen("C:\\f", GENERIC_READ, 0, TRUNCATE_EXISTING), 87u);
}

TEST_P(FileOperations, ReadOnlyFilesOpenForReadingAlone) {
    WriteFileOn(Machine(), "C:\\f", "x");
    EXPECT_TRUE(Platform().SetFileAttributesA("C:\\f", FILE_ATTRIBUTE_READONLY));
    EXPECT_EQ(CodeOfOpen("C:\\f", GENERIC_READ, 0, OPEN_EXISTING), 0u);
    EXPECT_EQ(CodeOfOpen("C:\\f", GENERIC_WRITE, 0, OPEN_EXISTING), 5u);
    EXPECT_EQ(CodeOfOpen("C:\\f", GENERIC_READ, 0, CREATE_ALWAYS), 5u);
    EXPECT_FALSE(Platform().DeleteFileA("C:\\f"));
    EXPECT_EQ(Platform().GetLastError(), 5u);
}

TEST_P(FileOperations, ANewFileCanBeMadeReadOnlyAndWrittenOnce) {
    {
        const FileHandle file = Open("C:\\f", GENERIC_WRITE, 0, CREATE_NEW, FILE_ATTRIBUTE_READONLY);
        EXPECT_TRUE(Write(file, "x"));
    }
    EXPECT_EQ(Platform().GetFileAttributesA("C:\\f"), 33u);
    EXPECT_EQ(ReadFileOn(Machine(), "C:\\f"), "x");
}

TEST_P(FileOperations, HandlesOfOneProcessShareByTheSameRules) {
    WriteFileOn(Machine(), "C:\\f", "x");
    const FileHandle first = Open("C:\\f", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, OPEN_EXISTING);
    ASSERT_TRUE(first);
    EXPECT_EQ(CodeOfOpen("C:\\F", GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING), 32u);  // the writer isn't shared
    EXPECT_EQ(CodeOfOpen("C:\\F", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING), 0u);
    EXPECT_EQ(CodeOfOpen("C:\\F", GENERIC_WRITE, kShareAll, OPEN_EXISTING), 32u);
    EXPECT_EQ(CodeOfOpen("C:\\F", GENERIC_READ, 0, CREATE_ALWAYS), 32u);
    EXPECT_EQ(ReadFileOn(Machine(), "C:\\f"), "x");
}

TEST_P(FileOperations, AFileThatIsHeldBeforeItExistsIsNotMade) {
    const Files::Held held = Machine().Files().HoldOpen("C:\\new");
    EXPECT_EQ(CodeOfOpen("C:\\NEW", GENERIC_WRITE, 0, CREATE_ALWAYS), 32u);
    EXPECT_FALSE(Machine().Files().Exists("C:\\new"));
}

TEST_P(FileOperations, ALockedRangeGives33AndDeniedPathsGive5) {
    WriteFileOn(Machine(), "C:\\f", "x");
    {
        const Files::Held locked = Machine().Files().LockRange("C:\\f");
        EXPECT_EQ(CodeOfOpen("C:\\f", GENERIC_READ, kShareAll, OPEN_EXISTING), 33u);
    }
    Machine().Files().Deny("C:\\f");
    EXPECT_EQ(CodeOfOpen("C:\\f", GENERIC_READ, kShareAll, OPEN_EXISTING), 5u);
    EXPECT_EQ(CodeOfOpen("C:\\f\\below", GENERIC_READ, kShareAll, OPEN_EXISTING), 3u);
}

TEST_P(FileOperations, WritesGoToThePositionAndAppendAtTheEnd) {
    {
        const FileHandle file = Open("C:\\f", GENERIC_READ | GENERIC_WRITE, 0, CREATE_NEW);
        EXPECT_TRUE(Write(file, "hello world"));
        EXPECT_EQ(Platform().SetFilePointer(file.Get(), 6, nullptr, FILE_BEGIN), 6u);
        EXPECT_TRUE(Write(file, "W"));
        EXPECT_EQ(Platform().SetFilePointer(file.Get(), -2, nullptr, FILE_CURRENT), 5u);
        EXPECT_TRUE(Write(file, "_"));
        EXPECT_EQ(Platform().SetFilePointer(file.Get(), 0, nullptr, FILE_END), 11u);
        DWORD written = 0;
        EXPECT_TRUE(Write(file, "!!", &written));
        EXPECT_EQ(written, 2u);
        EXPECT_TRUE(Write(file, "", &written));
        EXPECT_EQ(written, 0u);
    }
    EXPECT_EQ(ReadFileOn(Machine(), "C:\\f"), "hello_World!!");
}

TEST_P(FileOperations, PositionsBeyondFourGigabytesNeedTheirHighPart) {
    const FileHandle file = Open("C:\\f", GENERIC_WRITE, 0, CREATE_NEW);
    LONG high = 1;
    EXPECT_EQ(Platform().SetFilePointer(file.Get(), 5, &high, FILE_BEGIN), 5u);
    EXPECT_EQ(high, 1);
    Platform().SetLastError(77);
    EXPECT_EQ(Platform().SetFilePointer(file.Get(), 0, nullptr, FILE_CURRENT), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(Platform().GetLastError(), 87u);
    high = -1;
    EXPECT_EQ(Platform().SetFilePointer(file.Get(), -5, &high, FILE_CURRENT), 0u);
    EXPECT_EQ(high, 1);
    high = 0;
    EXPECT_EQ(Platform().SetFilePointer(file.Get(), -1, &high, FILE_BEGIN), 0xFFFFFFFFu);
    EXPECT_EQ(Platform().GetLastError(), 0u);
}

TEST_P(FileOperations, PositionRefusals) {
    const FileHandle file = Open("C:\\f", GENERIC_WRITE, 0, CREATE_NEW);
    EXPECT_EQ(Platform().SetFilePointer(file.Get(), -1, nullptr, FILE_BEGIN), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(Platform().GetLastError(), 131u);
    EXPECT_EQ(Platform().SetFilePointer(file.Get(), 0, nullptr, 3), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(Platform().GetLastError(), 87u);
    LONG high = 0x7FFFFFFF;
    EXPECT_EQ(Platform().SetFilePointer(file.Get(), 5, nullptr, FILE_BEGIN), 5u);
    EXPECT_EQ(Platform().SetFilePointer(file.Get(), -1, &high, FILE_CURRENT), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(Platform().GetLastError(), 87u);
}

TEST_P(FileOperations, CallsOnWrongHandlesGive6) {
    Test().AllowOpen();
    const HANDLE strange = reinterpret_cast<HANDLE>(uintptr_t{0x4444});
    WIN32_FIND_DATAA data;
    FILETIME time;
    DWORD written = 5;
    const auto expect6 = [](const char* name, bool failed) {
        EXPECT_TRUE(failed) << name;
        EXPECT_EQ(Platform().GetLastError(), 6u) << name;
        Platform().SetLastError(0);
    };
    expect6("CloseHandle", !Platform().CloseHandle(strange));
    expect6("SetFilePointer", Platform().SetFilePointer(strange, 0, nullptr, 0) == INVALID_SET_FILE_POINTER);
    expect6("WriteFile", !Platform().WriteFile(strange, "x", 1, &written, nullptr));
    EXPECT_EQ(written, 0u);
    expect6("GetFileTime", !Platform().GetFileTime(strange, nullptr, nullptr, &time));
    expect6("FindNextFileA", !Platform().FindNextFileA(strange, &data));
    expect6("FindClose", !Platform().FindClose(strange));
    expect6("_lclose", Platform()._lclose(0x4444) == HFILE_ERROR);
    expect6("_lread", Platform()._lread(0x4444, &data, 1) == static_cast<UINT>(-1));
    EXPECT_EQ(Machine().Handles().Misuses().size(), 3u);
}

TEST_P(FileOperations, HandlesAreClosedOnceAndByTheirOwnCall) {
    Test().AllowOpen();
    WIN32_FIND_DATAA data;
    const HANDLE search = Platform().FindFirstFileA("C:\\*", &data);
    EXPECT_FALSE(Platform().CloseHandle(search));
    EXPECT_TRUE(Platform().FindClose(search));
    EXPECT_FALSE(Platform().FindClose(search));
    EXPECT_THAT(Machine().Handles().Misuses(),
                ElementsAre(::testing::HasSubstr("as file, which is a file search C:\\*"),
                            ::testing::HasSubstr("as file search, which is not open")));
}

TEST_P(FileOperations, WritesNeedTheRight) {
    WriteFileOn(Machine(), "C:\\f", "x");
    const FileHandle file = Open("C:\\f", GENERIC_READ, 0, OPEN_EXISTING);
    EXPECT_FALSE(Write(file, "y"));
    EXPECT_EQ(Platform().GetLastError(), 5u);
}

TEST_P(FileOperations, AFullDiskFailsTheWriteWhole) {
    Machine().Files().SetFreeSpace(5);
    const FileHandle file = Open("C:\\f", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, CREATE_NEW);
    EXPECT_TRUE(Write(file, "123"));
    DWORD written = 9;
    EXPECT_FALSE(Write(file, "456", &written));
    EXPECT_EQ(Platform().GetLastError(), 112u);
    EXPECT_EQ(written, 0u);
    EXPECT_EQ(ReadFileOn(Machine(), "C:\\f"), "123");
    // What lies in the file already needs no room.
    EXPECT_EQ(Platform().SetFilePointer(file.Get(), 0, nullptr, FILE_BEGIN), 0u);
    EXPECT_TRUE(Write(file, "abcde"));
    EXPECT_FALSE(Write(file, "f"));
}

TEST_P(FileOperations, TruncatingGivesTheRoomBack) {
    Machine().Files().SetFreeSpace(5);
    WriteFileOn(Machine(), "C:\\f", "12345");
    const FileHandle file = Open("C:\\f", GENERIC_WRITE, 0, CREATE_ALWAYS);
    EXPECT_TRUE(Write(file, "abcde"));
}

TEST_P(FileOperations, GetFileTimeGivesTheLastWrite) {
    WriteFileOn(Machine(), "C:\\f", "x");
    const FILETIME time = {0x11223344, 0x01C00000};
    ASSERT_EQ(Machine().Files().SetWrittenAt("C:\\f", time), 0u);
    const FileHandle file = Open("C:\\f", GENERIC_READ, 0, OPEN_EXISTING);
    FILETIME read{};
    EXPECT_TRUE(Platform().GetFileTime(file.Get(), nullptr, nullptr, &read));
    EXPECT_EQ(Platform().CompareFileTime(&read, &time), 0);
    FILETIME creation{};
    FILETIME access{};
    EXPECT_TRUE(Platform().GetFileTime(file.Get(), &creation, &access, nullptr));
    EXPECT_NE(creation.dwHighDateTime, 0u);
    EXPECT_NE(access.dwHighDateTime, 0u);
}

TEST_P(FileOperations, SearchesGiveEveryMatchWithTheDotsOfAFolder) {
    for (const char* name : {"C:\\d\\b.inf", "C:\\d\\A.INF", "C:\\d\\c.txt", "C:\\d\\sub\\x"}) {
        WriteFileOn(Machine(), name, "12");
    }
    EXPECT_THAT(Find("C:\\d\\*"), ElementsAre(".", "..", "A.INF", "b.inf", "c.txt", "sub"));
    EXPECT_THAT(Find("C:\\d\\*.*"), ElementsAre(".", "..", "A.INF", "b.inf", "c.txt", "sub"));
    EXPECT_THAT(Find("C:\\d\\*.inf"), ElementsAre("A.INF", "b.inf"));
    EXPECT_THAT(Find("C:\\D\\?.txt"), ElementsAre("c.txt"));
    EXPECT_THAT(Find("C:\\d\\A.inf"), ElementsAre("A.INF"));
    EXPECT_THAT(Find("C:\\d\\sub"), ElementsAre("sub"));
    EXPECT_THAT(Find("C:\\D"), ElementsAre("d"));
}

TEST_P(FileOperations, SearchRefusals) {
    WriteFileOn(Machine(), "C:\\d\\f", "12");
    EXPECT_THAT(Find("C:\\d\\*.zip"), ElementsAre("code 2"));
    EXPECT_THAT(Find("C:\\d\\none"), ElementsAre("code 2"));
    EXPECT_THAT(Find("C:\\none\\*"), ElementsAre("code 3"));
    EXPECT_THAT(Find("C:\\none\\none"), ElementsAre("code 3"));
    EXPECT_THAT(Find("C:\\d\\f\\*"), ElementsAre("code 267"));
    EXPECT_THAT(Find("C:\\d\\"), ElementsAre("code 2"));
    EXPECT_THAT(Find("C:\\"), ElementsAre("code 2"));
    EXPECT_THAT(Find(""), ElementsAre("code 3"));
    EXPECT_THAT(Find("C:\\d\\a|b"), ElementsAre("code 123"));
}

TEST_P(FileOperations, TheRootOfADriveHasNoDots) {
    EXPECT_THAT(Find("C:\\*"), ::testing::Each(::testing::Not(::testing::AnyOf(".", ".."))));
}

TEST_P(FileOperations, SearchDataTellsSizeTimeAndAttributes) {
    WriteFileOn(Machine(), "C:\\f.dat", "12345");
    const FILETIME time = {0x11223344, 0x01C00000};
    ASSERT_EQ(Machine().Files().SetWrittenAt("C:\\f.dat", time), 0u);
    WIN32_FIND_DATAA data;
    const FindHandle search(Platform().FindFirstFileA("C:\\F.*", &data));
    ASSERT_TRUE(search);
    EXPECT_STREQ(data.cFileName, "f.dat");
    EXPECT_EQ(data.dwFileAttributes, 32u);
    EXPECT_EQ(data.nFileSizeLow, 5u);
    EXPECT_EQ(data.nFileSizeHigh, 0u);
    EXPECT_EQ(Platform().CompareFileTime(&data.ftLastWriteTime, &time), 0);
}

TEST_P(FileOperations, ASearchKeepsToWhatWasThereWhenItBegan) {
    WriteFileOn(Machine(), "C:\\d\\a", "");
    WriteFileOn(Machine(), "C:\\d\\b", "");
    WIN32_FIND_DATAA data;
    const FindHandle search(Platform().FindFirstFileA("C:\\d\\?", &data));
    EXPECT_STREQ(data.cFileName, "a");
    EXPECT_TRUE(Platform().DeleteFileA("C:\\d\\a"));
    EXPECT_TRUE(Platform().FindNextFileA(search.Get(), &data));
    EXPECT_STREQ(data.cFileName, "b");
    EXPECT_FALSE(Platform().FindNextFileA(search.Get(), &data));
    EXPECT_EQ(Platform().GetLastError(), 18u);
}

TEST_P(FileOperations, FailuresSetTheLastErrorAndSuccessLeavesIt) {
    WriteFileOn(Machine(), "C:\\f", "x");
    struct Case {
        const char* name;
        std::function<bool()> call;
        DWORD lastError;
    };
    const Case cases[] = {
        {"attributes", [] { return Platform().GetFileAttributesA("C:\\f") == 32; }, 77},
        {"attributes of none", [] { return Platform().GetFileAttributesA("C:\\none") == 0xFFFFFFFF; }, 2},
        {"attributes of null", [] { return Platform().GetFileAttributesA(nullptr) == 0xFFFFFFFF; }, 3},
        {"exists", [] { return Platform().PathFileExistsA("C:\\f") == TRUE; }, 77},
        {"folder exists", [] { return Platform().PathFileExistsA("C:\\WINDOWS\\") == TRUE; }, 77},
        {"exists not", [] { return Platform().PathFileExistsA("C:\\none") == FALSE; }, 2},
        {"null exists not", [] { return Platform().PathFileExistsA(nullptr) == FALSE; }, 77},
        {"set attributes", [] { return Platform().SetFileAttributesA("C:\\f", 32) == TRUE; }, 77},
        {"set attributes of none", [] { return Platform().SetFileAttributesA("C:\\none", 32) == FALSE; }, 2},
        {"copy", [] { return Platform().CopyFileA("C:\\f", "C:\\g", TRUE) == TRUE; }, 77},
        {"copy onto one", [] { return Platform().CopyFileA("C:\\f", "C:\\g", TRUE) == FALSE; }, 80},
        {"copy over one", [] { return Platform().CopyFileA("C:\\f", "C:\\g", FALSE) == TRUE; }, 77},
        {"delete", [] { return Platform().DeleteFileA("C:\\g") == TRUE; }, 77},
        {"delete none", [] { return Platform().DeleteFileA("C:\\g") == FALSE; }, 2},
        {"make folder", [] { return Platform().CreateDirectoryA("C:\\d", nullptr) == TRUE; }, 77},
        {"make folder again", [] { return Platform().CreateDirectoryA("C:\\d", nullptr) == FALSE; }, 183},
        {"make folder in none", [] { return Platform().CreateDirectoryA("C:\\x\\d", nullptr) == FALSE; }, 3},
        {"remove folder", [] { return Platform().RemoveDirectoryA("C:\\d") == TRUE; }, 77},
        {"remove folder again", [] { return Platform().RemoveDirectoryA("C:\\d") == FALSE; }, 2},
    };
    for (const Case& c : cases) {
        Platform().SetLastError(77);
        EXPECT_TRUE(c.call()) << c.name;
        EXPECT_EQ(Platform().GetLastError(), c.lastError) << c.name;
    }
}

TEST_P(FileOperations, DeleteOfAHeldFileGives32) {
    WriteFileOn(Machine(), "C:\\f", "x");
    const Files::Held held = Machine().Files().HoldOpen("C:\\f", FILE_SHARE_READ);
    EXPECT_FALSE(Platform().DeleteFileA("C:\\f"));
    EXPECT_EQ(Platform().GetLastError(), 32u);
}

TEST_P(FileOperations, AFileOpenedToGoWithItsHandleGoes) {
    {
        const FileHandle file = Open("C:\\f", GENERIC_WRITE, 0, CREATE_NEW, 0x04000000);
        ASSERT_TRUE(file);
        EXPECT_TRUE(Machine().Files().Exists("C:\\f"));
    }
    EXPECT_FALSE(Machine().Files().Exists("C:\\f"));
}

TEST_P(FileOperations, HandlesLeftOpenOutliveTheFilesTheyBelongTo) {
    Test().AllowOpen();
    WriteFileOn(Machine(), "C:\\f", "x");
    EXPECT_NE(Open("C:\\f", GENERIC_READ, 0, OPEN_EXISTING).Release(), INVALID_HANDLE_VALUE);
    EXPECT_THAT(Machine().Handles().Describe(), ElementsAre("file C:\\f"));
    Test().Reopen();
    EXPECT_EQ(CodeOfOpen("C:\\f", GENERIC_READ, 0, OPEN_EXISTING), 0u);
}

// ---- the 16-bit style calls -----------------------------------------------------------------------------------------

TEST_P(FileOperations, OpenFileReadsInPieces) {
    WriteFileOn(Machine(), "C:\\Colour\\a.icc", "0123456789");
    OFSTRUCT structure;
    const ReadFileHandle file(Platform().OpenFile("c:\\colour\\A.ICC", &structure, OF_READ));
    ASSERT_TRUE(file);
    EXPECT_EQ(structure.cBytes, sizeof(OFSTRUCT));
    EXPECT_STREQ(structure.szPathName, "C:\\colour\\A.ICC");
    char buffer[16] = {};
    EXPECT_EQ(Platform()._lread(file.Get(), buffer, 4), 4u);
    EXPECT_EQ(Platform()._lread(file.Get(), buffer + 4, 12), 6u);
    EXPECT_STREQ(buffer, "0123456789");
    EXPECT_EQ(Platform()._lread(file.Get(), buffer, 4), 0u);
}

TEST_P(FileOperations, OpenFileRefusals) {
    OFSTRUCT structure;
    struct Case {
        const char* path;
        DWORD code;
    };
    for (const Case& c : {Case{"C:\\none", 2}, Case{"C:\\none\\none", 3}, Case{"C:\\WINDOWS", 5}, Case{"", 3},
                          Case{nullptr, 3}, Case{"none.icc", 2}, Case{"C:\\a?b", 123}}) {
        EXPECT_EQ(Platform().OpenFile(c.path, &structure, OF_READ), HFILE_ERROR);
        EXPECT_EQ(Platform().GetLastError(), c.code) << c.path;
        EXPECT_EQ(structure.nErrCode, c.code);
    }
    const std::string longPath = "C:\\" + std::string(200, 'a');
    EXPECT_EQ(Platform().OpenFile(longPath.c_str(), &structure, OF_READ), HFILE_ERROR);
    WriteFileOn(Machine(), "C:\\f", "x");
    const Files::Held held = Machine().Files().HoldOpen("C:\\f");
    EXPECT_EQ(Platform().OpenFile("C:\\f", &structure, OF_READ), HFILE_ERROR);
    EXPECT_EQ(Platform().GetLastError(), 32u);
}

TEST_P(FileOperations, OpenFileLooksForABareNameOnTheSearchPath) {
    WriteFileOn(Machine(), "C:\\WINDOWS\\a.icc", "w");
    WriteFileOn(Machine(), "C:\\WINDOWS\\system32\\a.icc", "s");
    OFSTRUCT structure;
    const ReadFileHandle file(Platform().OpenFile("A.ICC", &structure, OF_READ));
    ASSERT_TRUE(file);
    EXPECT_STREQ(structure.szPathName, "C:\\WINDOWS\\system32\\A.ICC");
}

TEST_P(FileOperations, OpenFileStyles) {
    OFSTRUCT structure;
    EXPECT_EQ(Platform().OpenFile("C:\\f", &structure, 0x100), 0);  // OF_PARSE
    EXPECT_STREQ(structure.szPathName, "C:\\f");
    EXPECT_FALSE(Machine().Files().Exists("C:\\f"));
    { const ReadFileHandle file(Platform().OpenFile("C:\\f", &structure, 0x1000)); }  // OF_CREATE
    EXPECT_TRUE(Machine().Files().Exists("C:\\f"));
    EXPECT_NE(Platform().OpenFile("C:\\f", &structure, 0x4000), HFILE_ERROR);  // OF_EXIST
    EXPECT_NE(Platform().OpenFile("C:\\f", &structure, 0x200), HFILE_ERROR);   // OF_DELETE
    EXPECT_FALSE(Machine().Files().Exists("C:\\f"));
    EXPECT_EQ(Platform().OpenFile("C:\\f", &structure, 0x4000), HFILE_ERROR);
}

TEST_P(FileOperations, OpenFileTakesPathsThatFitItsStructureWithTheirNul) {
    OFSTRUCT structure;
    const std::string longest = "C:\\" + std::string(sizeof structure.szPathName - 4, 'a');
    EXPECT_EQ(Platform().OpenFile(longest.c_str(), &structure, 0x100), 0);  // OF_PARSE
    EXPECT_EQ(structure.szPathName, longest);
    EXPECT_EQ(Platform().OpenFile((longest + "a").c_str(), &structure, 0x100), HFILE_ERROR);
    EXPECT_EQ(DWORD{structure.nErrCode}, DWORD{ERROR_INVALID_DATA});
}

TEST_P(FileOperations, OpenFileStylesSetAccessAndSharing) {
    WriteFileOn(Machine(), "C:\\f", "x");
    OFSTRUCT structure;
    {
        const ReadFileHandle exclusive(Platform().OpenFile("C:\\f", &structure, 0x10));
        EXPECT_EQ(Platform().OpenFile("C:\\f", &structure, OF_READ), HFILE_ERROR);
    }
    {
        const ReadFileHandle denyWrite(Platform().OpenFile("C:\\f", &structure, 0x20));
        const ReadFileHandle reader(Platform().OpenFile("C:\\f", &structure, OF_READ));
        EXPECT_TRUE(reader);
        EXPECT_EQ(Platform().OpenFile("C:\\f", &structure, 1), HFILE_ERROR);
    }
    const ReadFileHandle writer(Platform().OpenFile("C:\\f", &structure, 1));
    char byte;
    EXPECT_EQ(Platform()._lread(writer.Get(), &byte, 1), static_cast<UINT>(-1));
    EXPECT_EQ(Platform().GetLastError(), 5u);
}

}  // namespace
}  // namespace pikel
