// Machines in memory, copies of machines, and machines that are written into a folder.
#include <stdlib.h>

#include <filesystem>

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
using testing_support::ReadFileOn;
using testing_support::TestMachine;
using testing_support::WriteFileOn;

class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::string pattern = (fs::temp_directory_path() / "pikel-memory-XXXXXX").string();
        m_path = mkdtemp(pattern.data());
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        fs::remove_all(m_path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    const fs::path& Path() const { return m_path; }

  private:
    fs::path m_path;
};

/// Every file and folder of a machine with its bytes, time and attributes.
std::vector<std::string> Contents(Machine& machine, const std::string& folder = "C:") {
    std::vector<std::string> contents;
    for (const simulated::FileEntry& entry : machine.Files().List(folder + "\\")) {
        const std::string path = folder + "\\" + entry.name;
        if ((entry.attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
            contents.push_back(path);
            const std::vector<std::string> below = Contents(machine, path);
            contents.insert(contents.end(), below.begin(), below.end());
        } else {
            contents.push_back(path + " " + std::to_string(entry.attributes) + " " +
                               std::to_string(entry.written.dwHighDateTime) + ":" +
                               std::to_string(entry.written.dwLowDateTime) + " " + ReadFileOn(machine, path));
        }
    }
    return contents;
}

void ExpectEqual(Machine& left, Machine& right) {
    EXPECT_EQ(Contents(left), Contents(right));
    EXPECT_EQ(left.Registry().Text(), right.Registry().Text());
    EXPECT_EQ(left.System().name, right.System().name);
    EXPECT_EQ(left.System().computerName, right.System().computerName);
    EXPECT_EQ(left.System().restartPending, right.System().restartPending);
    EXPECT_EQ(left.Generation(), right.Generation());
}

/// Something of everything that a machine holds.
void Change(Machine& machine) {
    WriteFileOn(machine, "C:\\new\\file.txt", "text");
    EXPECT_EQ(machine.Files().SetAttributes("C:\\new\\file.txt", FILE_ATTRIBUTE_READONLY), 0u);
    machine.Registry().SetText("HKLM\\SOFTWARE\\New", "name", "value");
    machine.Registry().Set("HKLM\\SOFTWARE\\New", "odd", REG_SZ, "without an end");
    machine.Commit();
    SystemDescription system = machine.System();
    system.computerName = "RENAMED";
    system.restartPending = true;
    machine.SetSystem(system);
}

class MemoryMachine : public MachineTest {
  protected:
    TemporaryFolder m_folder;
};

TEST_F(MemoryMachine, HasNoFolder) {
    EXPECT_TRUE(Machine().IsInMemory());
    EXPECT_EQ(Machine().Folder(), fs::path());
    EXPECT_EQ(Machine().Files().HostPath("C:\\WINDOWS"), fs::path());
    EXPECT_EQ(Machine().Files().WindowsPath("/C/WINDOWS"), "");
}

TEST_F(MemoryMachine, IsNotMadeOfADescriptionThatCouldNotBeOpenedAgain) {
    SystemDescription system = *simulated::FindSystem("xp");
    system.computerName = "A\nB";
    EXPECT_THROW(Machine::CreateInMemory(system), MachineError);
}

TEST_F(MemoryMachine, RefusesADescriptionThatAFolderWouldRefuse) {
    SystemDescription system = Machine().System();
    system.servicePack = "A\nB";
    EXPECT_THROW(Machine().SetSystem(system), MachineError);
    EXPECT_EQ(Machine().System().servicePack, simulated::FindSystem("xp")->servicePack);
}

TEST_F(MemoryMachine, CommitsWithoutAFile) {
    Machine().Registry().SetText("HKCU\\k", "v", "1");
    EXPECT_TRUE(Machine().Registry().IsDirty());
    EXPECT_EQ(Machine().TryCommit(), 0u);
    EXPECT_FALSE(Machine().Registry().IsDirty());
}

class MachineCopies : public EverySystemTest {
  protected:
    TemporaryFolder m_folder;
};

TEST_P(MachineCopies, AreEqualToTheirOriginal) {
    Change(Machine());
    const std::unique_ptr<simulated::Machine> copy = Machine().Copy();
    ExpectEqual(*copy, Machine());
    EXPECT_FALSE(copy->Registry().IsDirty());
}

TEST_P(MachineCopies, OfFoldersAreEqualAsWell) {
    Change(Machine());
    Machine().SaveTo(m_folder.Path() / "machine");
    const std::unique_ptr<simulated::Machine> opened = simulated::Machine::Open(m_folder.Path() / "machine");
    ExpectEqual(*opened, Machine());
    const std::unique_ptr<simulated::Machine> copy = opened->Copy();
    EXPECT_TRUE(copy->IsInMemory());
    ExpectEqual(*copy, Machine());
    copy->SaveTo(m_folder.Path() / "again");
    EXPECT_EQ(
        std::system(
            ("diff -r " + (m_folder.Path() / "machine").string() + " " + (m_folder.Path() / "again").string()).c_str()),
        0);
}

TEST_P(MachineCopies, AreIndependentInBothDirections) {
    WriteFileOn(Machine(), "C:\\f", "both");
    Machine().Registry().SetText("HKCU\\k", "v", "both");
    const std::unique_ptr<simulated::Machine> copy = Machine().Copy();
    WriteFileOn(Machine(), "C:\\f", "original");
    WriteFileOn(*copy, "C:\\g", "copy");
    Machine().Registry().SetText("HKCU\\k", "v", "original");
    copy->Registry().DeleteKey("HKCU\\k");
    SystemDescription system = copy->System();
    system.administrator = false;
    copy->SetSystem(system);
    EXPECT_EQ(ReadFileOn(*copy, "C:\\f"), "both");
    EXPECT_FALSE(Machine().Files().Exists("C:\\g"));
    EXPECT_EQ(Machine().Registry().Text("HKCU\\k", "v"), "original");
    EXPECT_FALSE(copy->Registry().KeyExists("HKCU\\k"));
    EXPECT_TRUE(Machine().System().administrator);
}

TEST_P(MachineCopies, OutliveTheirOriginal) {
    WriteFileOn(Machine(), "C:\\f", "text");
    const std::unique_ptr<simulated::Machine> copy = Machine().Copy();
    Start("xp");
    EXPECT_EQ(ReadFileOn(*copy, "C:\\f"), "text");
    EXPECT_EQ(copy->Services().IsSpoolerUp(), true);
}

INSTANTIATE_ON_EVERY_SYSTEM(MachineCopies);

TEST_F(MemoryMachine, ACopyHasNothingOfWhatGoesWithAProcess) {
    WriteFileOn(Machine(), "C:\\f", "text");
    Machine().Advance(5000);
    Machine().Files().Deny("C:\\f");
    Machine().Files().SetFreeSpace(0);
    Machine().Registry().Deny("HKLM\\SOFTWARE", true);
    Machine().Services().SetState("Spooler", SERVICE_STOPPED);
    Machine().Files().InsertMedium(m_folder.Path());
    const simulated::Files::Held held = Machine().Files().HoldOpen("C:\\WINDOWS\\win.ini");
    const std::unique_ptr<simulated::Machine> copy = Machine().Copy();
    EXPECT_EQ(copy->Clock(), 0u);
    EXPECT_EQ(copy->Files().Write("C:\\f", "longer than before"), 0u);
    EXPECT_EQ(copy->Files().Write("C:\\WINDOWS\\win.ini", ""), 0u);
    EXPECT_EQ(copy->Registry().CheckAccess("HKLM\\SOFTWARE", KEY_READ), 0u);
    EXPECT_EQ(copy->Services().State("Spooler"), SERVICE_RUNNING);
    EXPECT_FALSE(copy->Files().Exists("D:\\"));
    EXPECT_EQ(copy->Handles().OpenCount(), 0u);
    EXPECT_EQ(Machine().Registry().CheckAccess("HKLM\\SOFTWARE", KEY_READ), 5u) << "the original keeps all of it";
}

TEST_F(MemoryMachine, KeysOfACopyHaveTheirNumbersAndNewOnesOthers) {
    Machine().Registry().CreateKey("HKCU\\old");
    const std::unique_ptr<simulated::Machine> copy = Machine().Copy();
    const std::uint64_t old = copy->Registry().KeyId("HKCU\\old");
    EXPECT_EQ(old, Machine().Registry().KeyId("HKCU\\old"));
    copy->Registry().DeleteKey("HKCU\\old");
    copy->Registry().CreateKey("HKCU\\old");
    EXPECT_GT(copy->Registry().KeyId("HKCU\\old"), old);
}

TEST_F(MemoryMachine, ACopyHasFilesThatAreOpen) {
    const FileHandle file(Platform().CreateFileA("C:\\f", GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));
    DWORD written = 0;
    ASSERT_TRUE(Platform().WriteFile(file.Get(), "first", 5, &written, nullptr));
    const std::unique_ptr<simulated::Machine> copy = Machine().Copy();
    ASSERT_TRUE(Platform().WriteFile(file.Get(), "second", 6, &written, nullptr));
    EXPECT_EQ(ReadFileOn(*copy, "C:\\f"), "first");
    EXPECT_EQ(ReadFileOn(Machine(), "C:\\f"), "firstsecond");
}

TEST_F(MemoryMachine, IsSavedOnlyWhereNothingIs) {
    const auto problem = [&](const fs::path& folder) -> std::string {
        try {
            Machine().SaveTo(folder);
            return {};
        } catch (const MachineError& error) {
            return error.what();
        }
    };
    EXPECT_EQ(problem(m_folder.Path() / "deep" / "down"), "");
    EXPECT_THAT(problem(m_folder.Path() / "deep"), HasSubstr("is there already and is no empty folder"));
    EXPECT_THAT(problem(m_folder.Path() / "deep/down/machine.ini/below"), HasSubstr("machine.ini"));
    EXPECT_TRUE(Machine().IsInMemory()) << "it goes on where it is";
}

TEST_F(MemoryMachine, OfWhichNotAllCanBeSavedLeavesNothing) {
    // A folder of the host has room for a path of a few thousand bytes; memory has room for more.
    std::string deep = "C:";
    for (int i = 0; i < 20; ++i) {
        deep += "\\" + std::string(10, 'd');
    }
    ASSERT_EQ(Machine().Files().MakeFolders(deep), 0u);
    fs::path folder = m_folder.Path();
    for (int i = 0; i < 19; ++i) {
        folder /= std::string(204, 'h');
    }
    EXPECT_THROW(Machine().SaveTo(folder), MachineError);
    EXPECT_FALSE(fs::exists(folder));
    fs::create_directories(folder);
    EXPECT_THROW(Machine().SaveTo(folder), MachineError);
    EXPECT_TRUE(fs::is_empty(folder)) << "a folder that was there stays";
}

TEST_F(MemoryMachine, ReopenedLiesInAFolder) {
    WriteFileOn(Machine(), "C:\\f", "text");
    Machine().Registry().SetText("HKCU\\k", "v", "1");
    Machine().Commit();
    Test().Reopen();
    EXPECT_FALSE(Machine().IsInMemory());
    EXPECT_EQ(ReadFileOn(Machine(), "C:\\f"), "text");
    EXPECT_EQ(Machine().Registry().Text("HKCU\\k", "v"), "1");
}

}  // namespace
}  // namespace pikel
