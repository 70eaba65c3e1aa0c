// Paths as texts, and the directories on a path.
#include "frame/path.h"

#include <string>
#include <vector>

#include "support/machine_test.h"

namespace pikel {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using testing_support::MachineTest;
using testing_support::TestMachine;

// Katakana SO of code page 932; its trail byte is a backslash.
#define SO "\x83\x5C"

simulated::SystemDescription JapaneseSystem() {
    simulated::SystemDescription system = *simulated::FindSystem("xp");
    system.codePage = 932;
    return system;
}

struct SplitCase {
    std::string path;
    std::string drive, directory, name, extension;
};

void ExpectSplit(const std::vector<SplitCase>& cases) {
    for (const SplitCase& c : cases) {
        const PathParts parts = SplitPath(c.path);
        EXPECT_EQ(parts.strDrive, c.drive) << c.path;
        EXPECT_EQ(parts.strDirectory, c.directory) << c.path;
        EXPECT_EQ(parts.strName, c.name) << c.path;
        EXPECT_EQ(parts.strExtension, c.extension) << c.path;
    }
}

using PathSplitting = MachineTest;

TEST_F(PathSplitting, GivesFourPartsThatMakeUpThePath) {
    ExpectSplit({
        {"C:\\Folder\\Sub\\name.ext", "C:", "\\Folder\\Sub\\", "name", ".ext"},
        {"C:\\", "C:", "\\", "", ""},
        {"C:", "C:", "", "", ""},
        {"C:name", "C:", "", "name", ""},
        {"name.ext", "", "", "name", ".ext"},
        {".\\source\\InfFile.cpp", "", ".\\source\\", "InfFile", ".cpp"},
        {"a/b\\c/d.e", "", "a/b\\c/", "d", ".e"},
        {"\\\\server\\share\\file.txt", "", "\\\\server\\share\\", "file", ".txt"},
        {"C:\\with.dot\\name", "C:", "\\with.dot\\", "name", ""},
        {"two.dots.inf", "", "", "two.dots", ".inf"},
        {".profile", "", "", "", ".profile"},
        {"name.", "", "", "name", "."},
        {"..", "", "", ".", "."},
        {"", "", "", "", ""},
        {"x", "", "", "x", ""},
        {":", "", "", ":", ""},
        {"\x83\x5Cx.inf", "", "\x83\x5C", "x", ".inf"},  // two single bytes in a western code page
    });
}

TEST(PathSplittingInJapanese, PassesOverTrailBytes) {
    TestMachine machine(JapaneseSystem());
    ExpectSplit({
        {"C:\\" SO "\\" SO SO ".inf", "C:", "\\" SO "\\", SO SO, ".inf"},
        {SO, "", "", SO, ""},
        {SO "\\", "", SO "\\", "", ""},
        {"\x83\\", "", "", "\x83\\", ""},    // the backslash is the trail byte here
        {"\x83", "", "", "\x83", ""},        // a lead byte at the end stands alone
        {"\xB1\\x", "", "\xB1\\", "x", ""},  // half-width katakana takes one byte
    });
}

using TrailingBackslash = MachineTest;

TEST_F(TrailingBackslash, IsDroppedOnce) {
    for (auto [before, after] : std::vector<std::pair<std::string, std::string>>{{"C:\\Temp\\", "C:\\Temp"},
                                                                                 {"C:\\", "C:"},
                                                                                 {"\\", ""},
                                                                                 {"C:\\x\\\\", "C:\\x\\"},
                                                                                 {"C:\\Temp", "C:\\Temp"},
                                                                                 {"C:/Temp/", "C:/Temp/"},
                                                                                 {"", ""}}) {
        std::string path = before;
        DropTrailingBackslash(path);
        EXPECT_EQ(path, after) << before;
    }
}

TEST(TrailingBackslashInJapanese, StaysWhenItIsATrailByte) {
    TestMachine machine(JapaneseSystem());
    for (auto [before, after] : std::vector<std::pair<std::string, std::string>>{
             {"C:\\" SO, "C:\\" SO}, {"C:\\" SO "\\", "C:\\" SO}, {"\x83\x83\\", "\x83\x83"}, {"\xB1\\", "\xB1"}}) {
        std::string path = before;
        DropTrailingBackslash(path);
        EXPECT_EQ(path, after) << ::testing::PrintToString(before);
    }
}

TEST(BehindLastBackslash, IsTheWholeTextWithoutOne) {
    EXPECT_EQ(BehindLastBackslash("C:\\a\\b.dll"), "b.dll");
    EXPECT_EQ(BehindLastBackslash("C:/a/b.dll"), "C:/a/b.dll");
    EXPECT_EQ(BehindLastBackslash("b.dll"), "b.dll");
    EXPECT_EQ(BehindLastBackslash("C:\\a\\"), "");
    EXPECT_EQ(BehindLastBackslash(""), "");
    EXPECT_EQ(BehindLastBackslash("\x83\x5Cx"), "x") << "byte by byte, also on a trail byte";
}

class PathCreation : public MachineTest {
  protected:
    /// The paths that were asked for or made, with the calls' names.
    std::vector<std::string> TakeDirectoryCalls() {
        std::vector<std::string> calls;
        for (const std::string& call : Test().TakeCalls()) {
            if (call.starts_with("PathFileExistsA") || call.starts_with("CreateDirectoryA")) {
                calls.push_back(call.substr(0, call.find(" = ")));
            }
        }
        return calls;
    }
};

TEST_F(PathCreation, MakesEveryDirectoryButALastOneWithoutABackslash) {
    EnsurePathExists("C:\\one\\two\\three");
    EXPECT_TRUE(Machine().Files().IsDirectory("C:\\one\\two"));
    EXPECT_FALSE(Machine().Files().Exists("C:\\one\\two\\three"));
    EnsurePathExists("C:\\one\\two\\three\\");
    EXPECT_TRUE(Machine().Files().IsDirectory("C:\\one\\two\\three"));
}

TEST_F(PathCreation, AsksForEveryPrefixFromTheRootOn) {
    EnsurePathExists("C:\\one\\two\\");
    EXPECT_THAT(TakeDirectoryCalls(),
                ElementsAre(R"(PathFileExistsA("C:\\"))", R"(PathFileExistsA("C:\\one\\"))",
                            R"(CreateDirectoryA("C:\\one\\", null))", R"(PathFileExistsA("C:\\one\\two\\"))",
                            R"(CreateDirectoryA("C:\\one\\two\\", null))"));
}

TEST_F(PathCreation, TriesAMissingRootLikeAnyOtherDirectory) {
    EnsurePathExists("Q:\\x\\");
    EXPECT_THAT(TakeDirectoryCalls(),
                ElementsAre(R"(PathFileExistsA("Q:\\"))", R"(CreateDirectoryA("Q:\\", null))",
                            R"(PathFileExistsA("Q:\\x\\"))", R"(CreateDirectoryA("Q:\\x\\", null))"));
}

TEST_F(PathCreation, ConvertsInTheActiveCodePage) {
    EnsurePathExists("C:\\");
    EXPECT_THAT(Test().TakeCalls(),
                ElementsAre("GetACP() = 0x4e4", "MultiByteToWideChar(0x4e4, 0x0, &, 0xffffffff, &, 0x208) = 0x4",
                            "WideCharToMultiByte(0x4e4, 0x0, &, 0x3, &, 0x103, null, null) = 0x3",
                            R"(PathFileExistsA("C:\\") = 0x1)"));
}

TEST_F(PathCreation, LeavesANullPathAlone) {
    EnsurePathExists(nullptr);
    EXPECT_THAT(Test().TakeCalls(), IsEmpty());
}

TEST_F(PathCreation, EndsAtAnEmptyPath) {
    EnsurePathExists("");
    EXPECT_THAT(TakeDirectoryCalls(), IsEmpty());
}

TEST_F(PathCreation, TakesOnlyBackslashes) {
    EnsurePathExists("C:/one/two/");
    EXPECT_THAT(TakeDirectoryCalls(), IsEmpty());
}

TEST_F(PathCreation, GoesOnAfterADirectoryThatCouldNotBeMade) {
    faults::FailCall("CreateDirectoryA", 1, ERROR_ACCESS_DENIED);
    EnsurePathExists("C:\\one\\two\\");
    EXPECT_THAT(Test().TakeCallNames({"CreateDirectoryA"}), ElementsAre("CreateDirectoryA", "CreateDirectoryA"));
}

TEST_F(PathCreation, PassesOverAPrefixThatCanNotBeConvertedBack) {
    faults::FailCall("WideCharToMultiByte", 2, ERROR_NO_UNICODE_TRANSLATION);
    EnsurePathExists("C:\\one\\");
    EXPECT_THAT(TakeDirectoryCalls(), ElementsAre(R"(PathFileExistsA("C:\\"))"));
    EXPECT_FALSE(Machine().Files().Exists("C:\\one"));
}

TEST_F(PathCreation, EndsWhenThePathCanNotBeConverted) {
    faults::FailCall("MultiByteToWideChar", 1, ERROR_NO_UNICODE_TRANSLATION);
    EnsurePathExists("C:\\one\\");
    EXPECT_THAT(Test().TakeCallNames(), ElementsAre("GetACP", "MultiByteToWideChar"));
}

TEST_F(PathCreation, TakesPathsOf519CharactersAndNoLongerOnes) {
    const std::string longest = "C:\\" + std::string(516, 'x');
    EnsurePathExists(longest.c_str());
    EXPECT_THAT(TakeDirectoryCalls(), ElementsAre(R"(PathFileExistsA("C:\\"))"));
    EnsurePathExists((longest + "x").c_str());
    EXPECT_THAT(TakeDirectoryCalls(), IsEmpty());
}

TEST_F(PathCreation, TakesPrefixesOf259BytesAndNoLongerOnes) {
    const std::string fits = "C:\\" + std::string(255, 'x') + "\\";
    ASSERT_EQ(fits.size(), 259u);
    EnsurePathExists(fits.c_str());
    EXPECT_EQ(Test().TakeCallNames({"PathFileExistsA"}).size(), 2u);
    const std::string tooLong = "C:\\" + std::string(256, 'x') + "\\";
    EnsurePathExists(tooLong.c_str());
    EXPECT_EQ(Test().TakeCallNames({"PathFileExistsA"}).size(), 1u) << "the root alone";
}

TEST(PathCreationInJapanese, WalksCharactersAndNotBytes) {
    TestMachine machine(JapaneseSystem());
    EnsurePathExists("C:\\" SO "\\x" SO "\\");
    std::vector<std::string> made;
    for (const std::string& call : machine.TakeCalls()) {
        if (call.starts_with("CreateDirectoryA")) {
            made.push_back(call.substr(0, call.find(',')));
        }
    }
    EXPECT_THAT(made, ElementsAreArray({"CreateDirectoryA(\"C:\\\\\x83\\\\\\\\\"",
                                        "CreateDirectoryA(\"C:\\\\\x83\\\\\\\\x\x83\\\\\\\\\""}));
    EXPECT_TRUE(machine->Files().IsDirectory("C:\\" SO "\\x" SO));
}

}  // namespace
}  // namespace pikel
