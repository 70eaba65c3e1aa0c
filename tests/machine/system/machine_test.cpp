// Making, opening, copying and refusing the folder of a machine.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "machine/system/machine_ini.h"
#include "machine/operations.h"
#include "machine/services/services.h"
#include "support/machine_test.h"

namespace pikel {
namespace {

namespace fs = std::filesystem;
using simulated::Machine;
using simulated::MachineError;
using simulated::SystemDescription;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing_support::EverySystemTest;
using testing_support::MachineTest;

std::string ReadHost(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream bytes;
    bytes << stream.rdbuf();
    return bytes.str();
}

void WriteHost(const fs::path& file, const std::string& bytes) {
    std::ofstream(file, std::ios::binary) << bytes;
}

/// Every entry below a folder with its bytes; a folder has none.
std::map<std::string, std::string> Snapshot(const fs::path& folder) {
    std::map<std::string, std::string> entries;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
        entries[entry.path().lexically_relative(folder).string()] =
            entry.is_directory() ? "a folder" : ReadHost(entry.path());
    }
    return entries;
}

/// The text of the error with which a machine can't be opened; empty when it can.
std::string OpenError(const fs::path& folder) {
    try {
        Machine::Open(folder);
        return {};
    } catch (const MachineError& error) {
        return error.what();
    }
}

std::string CreateError(const fs::path& folder, const SystemDescription& system) {
    try {
        Machine::Create(folder, system);
        return {};
    } catch (const MachineError& error) {
        return error.what();
    }
}

int FilesInTheMaking(const fs::path& folder) {
    int count = 0;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        count += entry.path().filename().string().starts_with(".pikel") ? 1 : 0;
    }
    return count;
}

/// While it lives, writes of this process beyond some size of a file fail, as on a full disk.
class SmallFilesAlone {
  public:
    explicit SmallFilesAlone(std::size_t size) : m_handler(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &m_before);
        rlimit limit = m_before;
        limit.rlim_cur = size;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~SmallFilesAlone() {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }
    SmallFilesAlone(const SmallFilesAlone&) = delete;
    SmallFilesAlone& operator=(const SmallFilesAlone&) = delete;

  private:
    void (*m_handler)(int);
    rlimit m_before{};
};

class MachineFolder : public ::testing::Test {
  protected:
    MachineFolder() {
        const bool hasMemory = access("/dev/shm", W_OK) == 0;
        const fs::path parent = hasMemory ? fs::path("/dev/shm") : fs::temp_directory_path();
        std::string pattern = (parent / "pikel-folder-XXXXXX").string();
        m_folder = mkdtemp(pattern.data());
    }
    ~MachineFolder() override { fs::remove_all(m_folder); }

    fs::path Folder(const char* name = "machine") const { return m_folder / name; }
    static const SystemDescription& Xp() { return *simulated::FindSystem("xp"); }

    /// Replaces a text of a file of the machine.
    void Edit(const char* file, const std::string& from, const std::string& to) {
        std::string bytes = ReadHost(Folder() / file);
        std::size_t position = bytes.find(from);
        ASSERT_NE(position, std::string::npos) << from;
        WriteHost(Folder() / file, bytes.replace(position, from.size(), to));
    }

  private:
    fs::path m_folder;
};

// ---- creation -------------------------------------------------------------------------------------------------------

TEST_F(MachineFolder, IsMadeWithItsParentsAndTakenWhenItIsEmpty) {
    Machine::Create(Folder() / "deep" / "down", Xp());
    EXPECT_EQ(OpenError(Folder() / "deep" / "down"), "");
    fs::create_directories(Folder("empty"));
    Machine::Create(Folder("empty"), Xp());
    EXPECT_EQ(OpenError(Folder("empty")), "");
}

TEST_F(MachineFolder, IsRefusedWhenAnythingIsInIt) {
    fs::create_directories(Folder());
    WriteHost(Folder() / "letter.txt", "dear");
    EXPECT_THAT(CreateError(Folder(), Xp()), HasSubstr("is there already and is no empty folder"));
    EXPECT_THAT(CreateError(Folder() / "letter.txt", Xp()), HasSubstr("is there already and is no empty folder"));
    EXPECT_THAT(CreateError(Folder() / "letter.txt" / "below", Xp()), HasSubstr("letter.txt"));
    EXPECT_EQ(Snapshot(Folder()).size(), 1u);
}

TEST_F(MachineFolder, IsNotMadeFromADescriptionThatCouldNotBeOpened) {
    SystemDescription system = Xp();
    system.windowsDirectory = "WINDOWS";
    EXPECT_THAT(CreateError(Folder(), system), HasSubstr("windows-directory: \"WINDOWS\" is not a folder"));
    system = Xp();
    system.computerName = "two\nlines";
    EXPECT_THAT(CreateError(Folder(), system), HasSubstr("computer-name: a line break"));
    system = Xp();
    system.codePage = 4711;
    EXPECT_THAT(CreateError(Folder(), system), HasSubstr("code-page: \"4711\" is not the number of a code page"));
    EXPECT_FALSE(fs::exists(Folder()));
}

TEST_F(MachineFolder, CanDescribeAnySystemByHand) {
    SystemDescription system = Xp();
    system.name = "a server of ours";
    system.major = 5;
    system.minor = 3;
    system.build = 12345;
    system.servicePack = " A ";
    system.servicePackMajor = 9;
    system.servicePackMinor = 8;
    system.suiteMask = 0x272;
    system.productType = 3;
    system.processorType = 2200;
    system.windowsDirectory = "D:\\WIN";
    system.systemDirectory = "D:\\WIN\\SYS";
    system.computerName = "\x95\x5C";
    system.codePage = 932;
    system.administrator = false;
    system.restartPending = true;
    Machine::Create(Folder(), system);
    const std::unique_ptr<Machine> machine = Machine::Open(Folder());
    const SystemDescription& read = machine->System();
    EXPECT_EQ(read.name, "a server of ours");
    EXPECT_EQ(read.major, 5u);
    EXPECT_EQ(read.minor, 3u);
    EXPECT_EQ(read.build, 12345u);
    EXPECT_EQ(read.platform, 2u);
    EXPECT_EQ(read.servicePack, " A ");
    EXPECT_EQ(read.servicePackMajor, 9);
    EXPECT_EQ(read.servicePackMinor, 8);
    EXPECT_EQ(read.suiteMask, 0x272);
    EXPECT_EQ(read.productType, 3);
    EXPECT_EQ(read.processorType, 2200u);
    EXPECT_EQ(read.windowsDirectory, "D:\\WIN");
    EXPECT_EQ(read.systemDirectory, "D:\\WIN\\SYS");
    EXPECT_EQ(read.computerName, "\x95\x5C");
    EXPECT_EQ(read.codePage, 932u);
    EXPECT_FALSE(read.administrator);
    EXPECT_TRUE(read.restartPending);
    EXPECT_EQ(machine->Environment(), "Windows IA64");
    EXPECT_TRUE(machine->Files().IsDirectory("D:\\WIN\\SYS\\spool\\drivers\\ia64"));
    EXPECT_THAT(ReadHost(Folder() / "machine.ini"), HasSubstr("computer-name = \u8868\n"));
}

TEST_F(MachineFolder, CanBeCopiedAndMoved) {
    Machine::Create(Folder(), Xp());
    const auto original = Snapshot(Folder());
    ASSERT_EQ(std::system(("cp -r " + Folder().string() + " " + Folder("copy").string()).c_str()), 0);
    fs::rename(Folder(), Folder("moved"));
    EXPECT_EQ(Snapshot(Folder("copy")), original);
    for (const char* name : {"copy", "moved"}) {
        const std::unique_ptr<Machine> machine = Machine::Open(Folder(name));
        EXPECT_TRUE(machine->Files().IsDirectory("C:\\WINDOWS\\system32\\spool\\drivers\\w32x86\\3")) << name;
        machine->Registry().SetText("HKCU\\Only", "in", name);
        machine->Commit();
    }
    EXPECT_EQ(Machine::Open(Folder("copy"))->Registry().Text("HKCU\\Only", "in"), "copy");
    EXPECT_EQ(Machine::Open(Folder("moved"))->Registry().Text("HKCU\\Only", "in"), "moved");
}

TEST_F(MachineFolder, StaysWhereItIsWhenTheWorkingDirectoryChanges) {
    const fs::path before = fs::current_path();
    fs::current_path(Folder().parent_path());
    const std::unique_ptr<Machine> machine = Machine::Create("machine", Xp());
    fs::current_path(before);
    machine->Registry().CreateKey("HKCU\\new");
    machine->Commit();
    EXPECT_TRUE(Machine::Open(Folder())->Registry().KeyExists("HKCU\\new"));
}

// ---- opening --------------------------------------------------------------------------------------------------------

TEST_F(MachineFolder, IsReadAfreshByEveryOpen) {
    const std::unique_ptr<Machine> first = Machine::Create(Folder(), Xp());
    const std::unique_ptr<Machine> second = Machine::Open(Folder());
    first->Registry().SetText("HKCU\\k", "v", "1");
    first->Commit();
    EXPECT_FALSE(second->Registry().KeyExists("HKCU\\k"));
    EXPECT_EQ(Machine::Open(Folder())->Registry().Text("HKCU\\k", "v"), "1");
}

TEST_F(MachineFolder, OpenNamesAMissingFileAndSaysWhatToDo) {
    EXPECT_THAT(OpenError(Folder()), HasSubstr("machine.ini is missing"));
    EXPECT_THAT(OpenError(Folder()), HasSubstr("make one with"));
    Machine::Create(Folder(), Xp());
    fs::rename(Folder() / "registry.reg", Folder() / "elsewhere");
    EXPECT_THAT(OpenError(Folder()), HasSubstr("registry.reg is missing"));
    fs::rename(Folder() / "elsewhere", Folder() / "registry.reg");
    fs::rename(Folder() / "C", Folder() / "E");
    EXPECT_THAT(OpenError(Folder()), HasSubstr("C is missing: it is the drive"));
}

struct IniCase {
    const char* from;
    const char* to;
    const char* problem;
};

TEST_F(MachineFolder, OpenNamesFileLineAndFieldOfAWrongDescription) {
    Machine::Create(Folder(), Xp());
    const std::string good = ReadHost(Folder() / "machine.ini");
    const IniCase cases[] = {
        {"major = 5\n", "", "line 19: major: the field is missing"},
        {"major = 5", "major = five", "line 5: major: \"five\" is not a number of 32 bits"},
        {"major = 5", "major = -5", "line 5: major: \"-5\" is not a number"},
        {"major = 5", "major = 4294967296", "line 5: major: \"4294967296\" is not a number of 32 bits"},
        {"major = 5", "major = 0x", "line 5: major: \"0x\" is not a number"},
        {"major = 5", "major =", "line 5: major: \"\" is not a number"},
        {"major = 5", "major", "line 5: major: a field needs = and a value"},
        {"major = 5", "mayor = 5", "line 5: mayor: there is no such field"},
        {"major = 5\n", "major = 5\nmajor = 6\n", "line 6: major: the field is there already, in line 5"},
        {"suite = 256", "suite = 65536", "suite: \"65536\" is not a number of 16 bits"},
        {"product-type = 1", "product-type = 256", "product-type: \"256\" is not a number of 8 bits"},
        {"administrator = yes", "administrator = true", "administrator: \"true\" is not yes or no"},
        {"code-page = 1252", "code-page = 9999", "code-page: \"9999\" is not the number of a code page"},
        {"system-directory = C:\\WINDOWS\\system32", "system-directory = C:\\",
         "system-directory: \"C:\\\" is not a folder"},
        {"computer-name = PC-XP", "computer-name = \u8868",
         "computer-name: no UTF-8, or characters that code page 1252"},
        {"computer-name = PC-XP", "computer-name = \xff", "computer-name: no UTF-8"},
        {"[system]", "[systen]", "line 3: [systen]: the file has one section"},
        {"[system]\n", "", "line 3: name: the field stands ahead of [system]"},
        {"[system]\n", "[system]\n[system]\n", "line 4: [system]: the file has one section"},
    };
    for (const IniCase& test : cases) {
        SCOPED_TRACE(test.to);
        WriteHost(Folder() / "machine.ini", good);
        Edit("machine.ini", test.from, test.to);
        const auto before = Snapshot(Folder());
        EXPECT_THAT(OpenError(Folder()), HasSubstr("machine.ini: "));
        EXPECT_THAT(OpenError(Folder()), HasSubstr(test.problem));
        EXPECT_EQ(Snapshot(Folder()), before) << "nothing may be touched";
    }
}

TEST_F(MachineFolder, OpenTakesHexadecimalNumbersBlankLinesAndComments) {
    Machine::Create(Folder(), Xp());
    Edit("machine.ini", "build = 2600", "  ; ours\r\n\r\n  build=0xA28  \r");
    EXPECT_EQ(Machine::Open(Folder())->System().build, 2600u);
}

TEST_F(MachineFolder, OpenNamesTheLineOfADamagedRegistryAndTouchesNothing) {
    Machine::Create(Folder(), Xp());
    const std::string whole = ReadHost(Folder() / "registry.reg");
    std::size_t middle = whole.find("\"Driver\"");
    const auto line = std::count(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(middle), '\n') + 1;
    WriteHost(Folder() / "registry.reg", whole.substr(0, middle + 12));
    const auto before = Snapshot(Folder());
    EXPECT_THAT(OpenError(Folder()), HasSubstr("registry.reg: line " + std::to_string(line) + ": the closing quote"));
    EXPECT_EQ(Snapshot(Folder()), before);
    // Cut at a line's end: every line that is left is good.
    WriteHost(Folder() / "registry.reg", whole.substr(0, whole.rfind("\n[") + 1));
    EXPECT_THAT(OpenError(Folder()), HasSubstr("the file was cut short"));
    WriteHost(Folder() / "registry.reg", "");
    EXPECT_THAT(OpenError(Folder()), HasSubstr("registry.reg: line 0"));
}

// ---- changes --------------------------------------------------------------------------------------------------------

TEST_F(MachineFolder, CommitWritesOnlyAChangedRegistryAndByRename) {
    const std::unique_ptr<Machine> machine = Machine::Create(Folder(), Xp());
    const fs::path file = Folder() / "registry.reg";
    const std::string before = ReadHost(file);
    WriteHost(file, "another's");
    machine->Commit();
    EXPECT_EQ(ReadHost(file), "another's") << "nothing had changed";
    machine->Registry().CreateKey("HKCU\\new");
    fs::create_hard_link(file, Folder() / "old");
    machine->Commit();
    EXPECT_THAT(ReadHost(file), HasSubstr("[HKEY_CURRENT_USER\\new]"));
    EXPECT_EQ(ReadHost(Folder() / "old"), "another's") << "the old file was replaced and not written over";
    EXPECT_EQ(FilesInTheMaking(Folder()), 0);
    EXPECT_FALSE(machine->Registry().IsDirty());
    machine->Registry().DeleteKey("HKCU\\new");
    machine->Commit();
    EXPECT_EQ(ReadHost(file), before) << "the same state is the same text";
}

TEST_F(MachineFolder, ACommitThatFailsKeepsTheFileAndTheChange) {
    const std::unique_ptr<Machine> machine = Machine::Create(Folder(), Xp());
    const std::string before = ReadHost(Folder() / "registry.reg");
    machine->Registry().CreateKey("HKCU\\new");
    {
        const SmallFilesAlone limit(before.size() / 2);
        EXPECT_THROW(machine->Commit(), MachineError);
        EXPECT_EQ(machine->TryCommit(), 1016u);
    }
    EXPECT_EQ(ReadHost(Folder() / "registry.reg"), before);
    EXPECT_EQ(FilesInTheMaking(Folder()), 0);
    EXPECT_EQ(machine->TryCommit(), 0u);
    EXPECT_THAT(ReadHost(Folder() / "registry.reg"), HasSubstr("[HKEY_CURRENT_USER\\new]"));
}

TEST_F(MachineFolder, ACommitThatFailsTellsFileAndReason) {
    const std::unique_ptr<Machine> machine = Machine::Create(Folder(), Xp());
    machine->Registry().CreateKey("HKCU\\new");
    const SmallFilesAlone limit(100);
    try {
        machine->Commit();
        ADD_FAILURE() << "nothing was told";
    } catch (const MachineError& error) {
        EXPECT_EQ(error.what(), "can't write " + (Folder() / "registry.reg").string() + ": the disk is full");
    }
}

TEST_F(MachineFolder, SetSystemWritesTheDescriptionAnew) {
    const std::unique_ptr<Machine> machine = Machine::Create(Folder(), Xp());
    SystemDescription system = machine->System();
    system.restartPending = true;
    system.administrator = false;
    machine->SetSystem(system);
    EXPECT_TRUE(machine->System().restartPending);
    const std::unique_ptr<Machine> again = Machine::Open(Folder());
    EXPECT_TRUE(again->System().restartPending);
    EXPECT_FALSE(again->System().administrator);
}

TEST_F(MachineFolder, AnotherCodePageKeepsTheRegistrysCharacters) {
    const std::unique_ptr<Machine> machine = Machine::Create(Folder(), Xp());
    SystemDescription system = machine->System();
    machine->Registry().SetText("HKCU\\k", "v", "\xB0");
    system.codePage = 932;
    machine->SetSystem(system);
    EXPECT_EQ(machine->Registry().Text("HKCU\\k", "v"), "\x81\x8B");
    machine->Registry().SetText("HKCU\\k", "v", "\x93\xFA");
    system.codePage = 1252;
    EXPECT_THROW(machine->SetSystem(system), MachineError) << "the page has no such character";
    EXPECT_EQ(machine->System().codePage, 932u);
    EXPECT_EQ(machine->Registry().Text("HKCU\\k", "v"), "\x93\xFA");
}

// ---- clock ----------------------------------------------------------------------------------------------------------

TEST_F(MachineFolder, AFixedLocalTimeGoesOnWithTheClock) {
    const std::unique_ptr<Machine> machine = Machine::Create(Folder(), Xp());
    machine->Advance(500);
    machine->SetLocalTime({2004, 2, 0, 28, 23, 59, 59, 900});
    SYSTEMTIME time = machine->LocalTime();
    EXPECT_EQ(time.wDay, 28);
    EXPECT_EQ(time.wDayOfWeek, 6);
    EXPECT_EQ(time.wMilliseconds, 900);
    machine->Advance(86'400'000 + 200);
    time = machine->LocalTime();
    EXPECT_EQ(time.wYear, 2004);
    EXPECT_EQ(time.wMonth, 3);
    EXPECT_EQ(time.wDay, 1);
    EXPECT_EQ(time.wDayOfWeek, 1);
    EXPECT_EQ(time.wHour, 0);
    EXPECT_EQ(time.wMinute, 0);
    EXPECT_EQ(time.wSecond, 0);
    EXPECT_EQ(time.wMilliseconds, 100);
    EXPECT_EQ(machine->Clock(), 86'400'700u);
}

TEST_F(MachineFolder, ALocalTimeThatDoesNotExistIsGivenAsItIs) {
    const std::unique_ptr<Machine> machine = Machine::Create(Folder(), Xp());
    machine->SetLocalTime({2005, 2, 0, 29, 1, 2, 3, 4});
    machine->Advance(1000);
    EXPECT_EQ(machine->LocalTime().wDay, 29);
    EXPECT_EQ(machine->LocalTime().wSecond, 3);
}

TEST_F(MachineFolder, TheHostsLocalTimeCountsUntilOneIsSet) {
    const std::unique_ptr<Machine> machine = Machine::Create(Folder(), Xp());
    const std::time_t now = std::time(nullptr);
    std::tm expected{};
    localtime_r(&now, &expected);
    const SYSTEMTIME time = machine->LocalTime();
    EXPECT_NEAR((time.wHour * 60 + time.wMinute) * 60 + time.wSecond,
                (expected.tm_hour * 60 + expected.tm_min) * 60 + expected.tm_sec, 2);
    machine->Advance(ULONGLONG{366} * 86'400'000);
    EXPECT_GT(machine->LocalTime().wYear, time.wYear);
}

// ---- the current machine --------------------------------------------------------------------------------------------

/// Runs work in a child process. @return its exit status and what it wrote to standard error
template <class Work>
std::pair<int, std::string> InChild(Work work) {
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) {
        dup2(ends[1], STDERR_FILENO);
        work();
        std::fflush(stderr);
        std::exit(0);
    }
    close(ends[1]);
    std::string text;
    char block[512];
    for (ssize_t count; (count = read(ends[0], block, sizeof block)) > 0;) {
        text.append(block, static_cast<std::size_t>(count));
    }
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, text};
}

TEST_F(MachineFolder, TheCurrentOneIsTheOneThatPikelMachineNames) {
    SystemDescription system = Xp();
    system.computerName = "NAMED";
    Machine::Create(Folder(), system);
    auto [status, text] = InChild([&] {
        setenv("PIKEL_MACHINE", Folder().c_str(), 1);
        simulated::Use(nullptr);
        std::fputs(simulated::Current().System().computerName.c_str(), stderr);
    });
    EXPECT_EQ(status, 0);
    EXPECT_EQ(text, "NAMED");
}

TEST_F(MachineFolder, APikelMachineThatCanNotBeOpenedEndsTheProcessWithOneLine) {
    auto [status, text] = InChild([&] {
        setenv("PIKEL_MACHINE", Folder("nowhere").c_str(), 1);
        simulated::Current();
    });
    EXPECT_EQ(status, 1);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1);
    EXPECT_THAT(text, HasSubstr("nowhere/machine.ini is missing"));
}

TEST_F(MachineFolder, WithoutANameThereIsAPrivateOneThatGoesWithTheProcess) {
    fs::create_directories(Folder());
    auto [status, text] = InChild([&] {
        unsetenv("PIKEL_MACHINE");
        setenv("TMPDIR", Folder().c_str(), 1);
        Machine& machine = simulated::Current();
        std::fprintf(stderr, "%s, in memory %d, %zu files", machine.System().name.c_str(), machine.IsInMemory(),
                     Snapshot(Folder()).size());
    });
    EXPECT_EQ(status, 0);
    EXPECT_EQ(text, "xp, in memory 1, 0 files");
    EXPECT_THAT(Snapshot(Folder()), IsEmpty());
}

TEST_F(MachineFolder, UsingAMachineMakesItCurrentAndItsEndMakesItNoLongerSo) {
    std::unique_ptr<Machine> machine = Machine::Create(Folder(), Xp());
    simulated::Use(machine.get());
    EXPECT_EQ(&simulated::Current(), machine.get());
    machine.reset();
    std::unique_ptr<Machine> next = Machine::Open(Folder());
    simulated::Use(next.get());
    EXPECT_EQ(&simulated::Current(), next.get());
}

// ---- systems --------------------------------------------------------------------------------------------------------

TEST(SystemList, HasTheTwelveInTheirOrder) {
    std::vector<std::string> names;
    for (const SystemDescription& system : simulated::Systems()) {
        names.push_back(system.name);
    }
    EXPECT_EQ(names, testing_support::EverySystem());
    EXPECT_EQ(simulated::FindSystem("XP-x64"), simulated::FindSystem("xp-x64"));
    EXPECT_EQ(simulated::FindSystem("xp64"), nullptr);
    EXPECT_EQ(simulated::FindSystem(""), nullptr);
}

TEST(SystemList, TellsTheVersionsThatTheSystemsTell) {
    struct {
        const char* name;
        DWORD platform, major, minor, build;
        const char* servicePack;
        WORD servicePackMajor;
        DWORD processorType;
        const char* windows;
        const char* system;
    } const rows[] = {
        {"win95", 1, 4, 0, 0x040003B6, "", 0, 586, "C:\\WINDOWS", "C:\\WINDOWS\\SYSTEM"},
        {"win98", 1, 4, 10, 0x040A08AE, " A ", 0, 586, "C:\\WINDOWS", "C:\\WINDOWS\\SYSTEM"},
        {"winme", 1, 4, 90, 0x045A0BB8, " ", 0, 586, "C:\\WINDOWS", "C:\\WINDOWS\\SYSTEM"},
        {"nt4", 2, 4, 0, 1381, "Service Pack 6", 6, 586, "C:\\WINNT", "C:\\WINNT\\system32"},
        {"win2000", 2, 5, 0, 2195, "Service Pack 4", 4, 586, "C:\\WINNT", "C:\\WINNT\\system32"},
        {"xp", 2, 5, 1, 2600, "Service Pack 3", 3, 586, "C:\\WINDOWS", "C:\\WINDOWS\\system32"},
        {"xp-ia64", 2, 5, 2, 3790, "", 0, 2200, "C:\\WINDOWS", "C:\\WINDOWS\\system32"},
        {"xp-x64", 2, 5, 2, 3790, "Service Pack 2", 2, 8664, "C:\\WINDOWS", "C:\\WINDOWS\\system32"},
        {"vista", 2, 6, 0, 6002, "Service Pack 2", 2, 586, "C:\\WINDOWS", "C:\\WINDOWS\\system32"},
        {"vista-ia64", 2, 6, 0, 6001, "Service Pack 1", 1, 2200, "C:\\WINDOWS", "C:\\WINDOWS\\system32"},
        {"vista-x64", 2, 6, 0, 6002, "Service Pack 2", 2, 8664, "C:\\WINDOWS", "C:\\WINDOWS\\system32"},
        {"other", 3, 5, 2, 1400, "", 0, 586, "C:\\WINDOWS", "C:\\WINDOWS\\system32"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const SystemDescription* system = simulated::FindSystem(row.name);
        ASSERT_NE(system, nullptr);
        EXPECT_EQ(system->platform, row.platform);
        EXPECT_EQ(system->major, row.major);
        EXPECT_EQ(system->minor, row.minor);
        EXPECT_EQ(system->build, row.build);
        EXPECT_EQ(system->servicePack, row.servicePack);
        EXPECT_EQ(system->servicePackMajor, row.servicePackMajor);
        EXPECT_EQ(system->processorType, row.processorType);
        EXPECT_EQ(system->windowsDirectory, row.windows);
        EXPECT_EQ(system->systemDirectory, row.system);
        EXPECT_LE(system->computerName.size(), 15u);
    }
    EXPECT_EQ(simulated::FindSystem("vista-ia64")->productType, 3);
    EXPECT_EQ(simulated::FindSystem("xp")->productType, 1);
}

class FreshMachine : public EverySystemTest {
  protected:
    FreshMachine() : EverySystemTest(testing_support::Lies::InAFolder) {}
    bool IsNt4() { return Machine().Generation() == simulated::Generation::Nt4; }
};

TEST_P(FreshMachine, HasTheFoldersOfItsFamily) {
    const std::string windows = Machine().System().windowsDirectory;
    const std::string system = Machine().System().systemDirectory;
    std::vector<std::string> folders = {windows, system, windows + "\\inf", windows + "\\Temp",
                                        "C:\\Program Files\\pikel"};
    if (Machine().Is9x()) {
        folders.push_back(system + "\\Color");
    } else {
        folders.push_back(system + "\\spool\\drivers\\w32x86");
        folders.push_back(system + "\\spool\\drivers\\win40\\0");
        folders.push_back(system + "\\spool\\PRINTERS");
    }
    for (const std::string& folder : folders) {
        EXPECT_TRUE(Machine().Files().IsDirectory(folder)) << folder;
    }
    EXPECT_EQ(Machine().Files().IsDirectory(system + "\\spool\\drivers\\color"), !Machine().Is9x() && !IsNt4());
    EXPECT_TRUE(Machine().Files().Exists(Machine().ModulePath()));
    EXPECT_TRUE(Machine().Files().Exists(windows + "\\win.ini"));
}

TEST_P(FreshMachine, HasTheFoldersThatTheSystemNames) {
    char folder[260];
    DWORD needed = 0;
    ASSERT_NE(simulated::GetTempPathA(sizeof folder, folder), 0u);
    EXPECT_TRUE(Machine().Files().IsDirectory(folder)) << folder;
    ASSERT_TRUE(simulated::GetPrinterDriverDirectoryA(nullptr, nullptr, 1, reinterpret_cast<BYTE*>(folder),
                                                      sizeof folder, &needed));
    EXPECT_TRUE(Machine().Files().IsDirectory(folder)) << folder;
    DWORD size = sizeof folder;
    // NT 4 has no colour management to ask.
    if (!IsNt4() && simulated::GetColorDirectoryA(nullptr, folder, &size)) {
        EXPECT_TRUE(Machine().Files().IsDirectory(folder)) << folder;
    }
    const std::string shellFolders = "\\Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
    const bool is9x = Machine().Is9x();
    const std::string programs =
        Machine().Registry().Text((is9x ? "HKCU" : "HKLM") + shellFolders, is9x ? "Programs" : "Common Programs");
    EXPECT_TRUE(Machine().Files().IsDirectory(programs)) << programs;
}

TEST_P(FreshMachine, HasThePrintKeysOfItsFamily) {
    const simulated::Registry& registry = Machine().Registry();
    const std::string print = "HKLM\\SYSTEM\\CurrentControlSet\\Control\\Print";
    const std::string environment = print + "\\Environments\\" + std::string(Machine().Environment());
    EXPECT_TRUE(registry.KeyExists(environment + "\\Drivers"));
    EXPECT_EQ(registry.SubKeys(environment + "\\Print Processors").size(), 1u);
    EXPECT_TRUE(registry.KeyExists(print + "\\Printers"));
    EXPECT_THAT(registry.SubKeys(print + "\\Printers"), IsEmpty());
    const std::vector<std::string> monitors = registry.SubKeys(print + "\\Monitors");
    EXPECT_THAT(monitors, ::testing::Contains("Local Port"));
    for (const std::string& monitor : monitors) {
        const std::string library = registry.Text(print + "\\Monitors\\" + monitor, "Driver");
        EXPECT_TRUE(Machine().Files().Exists(Machine().System().systemDirectory + "\\" + library)) << library;
    }
    const std::string windowsNt = "\\Software\\Microsoft\\Windows NT\\CurrentVersion\\";
    EXPECT_EQ(registry.KeyExists("HKCU" + windowsNt + "Devices"), !Machine().Is9x());
    EXPECT_EQ(registry.Find("HKLM" + windowsNt + "Ports", "LPT1:") != nullptr, !Machine().Is9x());
    EXPECT_EQ(registry.Find("HKCU" + windowsNt + "Windows", "Device"), nullptr) << "no printer is the default yet";
}

TEST_P(FreshMachine, HasRunningServicesOnTheNtFamilyAlone) {
    simulated::Services& services = Machine().Services();
    EXPECT_TRUE(services.IsSpoolerUp());
    for (const char* name : {"Spooler", "RpcSs", "Fax", "LPDSVC"}) {
        EXPECT_EQ(services.Exists(name), !Machine().Is9x()) << name;
    }
    if (!Machine().Is9x()) {
        EXPECT_EQ(services.State("Spooler"), SERVICE_RUNNING);
        EXPECT_EQ(services.State("Fax"), SERVICE_RUNNING);
        EXPECT_EQ(services.State("LPDSVC"), SERVICE_STOPPED);
        EXPECT_TRUE(Machine().Files().Exists(services.BinaryPath("Spooler")));
    }
}

TEST_P(FreshMachine, IsTheSameEveryTime) {
    const fs::path other = Machine().Folder().parent_path() / "other";
    Machine::Create(other, Machine().System());
    EXPECT_EQ(Snapshot(other), Snapshot(Machine().Folder()));
}

TEST_P(FreshMachine, WritesItsRegistryBackAsItWas) {
    const std::string before = ReadHost(Machine().Folder() / "registry.reg");
    EXPECT_EQ(Machine().Registry().Text(), before);
    EXPECT_FALSE(Machine().Registry().IsDirty());
    EXPECT_EQ(simulated::WriteMachineIni(Machine().System()), ReadHost(Machine().Folder() / "machine.ini"));
}

INSTANTIATE_ON_EVERY_SYSTEM(FreshMachine);

TEST_F(MachineFolder, GenerationAndEnvironmentFollowTheDescription) {
    using simulated::Generation;
    struct {
        DWORD platform, major, minor, processorType;
        Generation generation;
        const char* environment;
    } const cases[] = {
        {0, 3, 10, 386, Generation::Win32s, "Windows NT x86"},
        {1, 4, 0, 586, Generation::Windows95, "Windows 4.0"},
        {1, 4, 1, 586, Generation::Windows98, "Windows 4.0"},
        {1, 4, 10, 586, Generation::Windows98, "Windows 4.0"},
        {1, 4, 90, 8664, Generation::WindowsMe, "Windows 4.0"},
        {2, 3, 51, 586, Generation::Nt3, "Windows NT x86"},
        {2, 4, 0, 586, Generation::Nt4, "Windows NT x86"},
        {2, 5, 0, 586, Generation::Windows2000, "Windows NT x86"},
        {2, 5, 1, 2200, Generation::Xp, "Windows IA64"},
        {2, 5, 2, 8664, Generation::Xp, "Windows x64"},
        {2, 6, 0, 586, Generation::Vista, "Windows NT x86"},
        {2, 7, 0, 8664, Generation::Vista, "Windows x64"},
        {3, 5, 2, 586, Generation::Other, "Windows NT x86"},
    };
    const std::unique_ptr<Machine> machine = Machine::Create(Folder(), Xp());
    for (const auto& test : cases) {
        SystemDescription system = machine->System();
        system.platform = test.platform;
        system.major = test.major;
        system.minor = test.minor;
        system.processorType = test.processorType;
        machine->SetSystem(system);
        EXPECT_EQ(machine->Generation(), test.generation) << test.major << '.' << test.minor;
        EXPECT_EQ(machine->Environment(), test.environment) << test.major << '.' << test.minor;
    }
}

}  // namespace
}  // namespace pikel
