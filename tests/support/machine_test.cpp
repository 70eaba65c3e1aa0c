#include "support/machine_test.h"

#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <map>

#include "frame/log.h"
#include "frame/os_identity.h"

namespace pikel::testing_support {

namespace {

constexpr char kLogPath[] = "C:\\test.log";

std::filesystem::path MakeTemporaryFolder() {
    // A machine is a hundred small folders and files: in the host's memory, where it has room for them there.
    std::filesystem::path parent = "/dev/shm";
    if (access(parent.c_str(), W_OK) != 0) {
        parent = std::filesystem::temp_directory_path();
    }
    std::string pattern = (parent / "pikel-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("can't make a temporary folder at " + pattern);
    }
    return pattern;
}

const simulated::SystemDescription& SystemNamed(std::string_view name) {
    const simulated::SystemDescription* system = simulated::FindSystem(name);
    if (system == nullptr) {
        throw std::runtime_error("no system is named " + std::string(name));
    }
    return *system;
}

/// Machines of every system that came up so far, fresh: a test's own is a copy.
const simulated::Machine& FreshMachine(const simulated::SystemDescription& system) {
    static std::map<std::string, std::unique_ptr<simulated::Machine>> machines;
    std::unique_ptr<simulated::Machine>& machine = machines[system.name];
    if (machine == nullptr) {
        machine = simulated::Machine::CreateInMemory(system);
    }
    return *machine;
}

}  // namespace

const std::vector<std::string>& EverySystem() {
    static const std::vector<std::string> systems = {"win95",   "win98",  "winme", "nt4",        "win2000",   "xp",
                                                     "xp-ia64", "xp-x64", "vista", "vista-ia64", "vista-x64", "other"};
    return systems;
}

TestMachine::TestMachine(std::string_view system, Lies where) {
    const simulated::Machine& fresh = FreshMachine(SystemNamed(system));
    if (where == Lies::InMemory) {
        m_machine = fresh.Copy();
    } else {
        fresh.SaveTo(Folder());
        m_machine = simulated::Machine::Open(Folder());
    }
    MakeCurrent();
}

TestMachine::TestMachine(const simulated::SystemDescription& system, Lies where)
    : m_machine(where == Lies::InMemory ? simulated::Machine::CreateInMemory(system)
                                        : simulated::Machine::Create(Folder(), system)) {
    MakeCurrent();
}

TestMachine::TestMachine(const CopyOf& original) : m_machine(original.machine.Copy()) {
    MakeCurrent();
}

/// The machine's folder, in a temporary one that goes with the test.
std::filesystem::path TestMachine::Folder() {
    if (m_folder.empty()) {
        m_folder = MakeTemporaryFolder();
    }
    return m_folder / "machine";
}

void TestMachine::MakeCurrent() {
    simulated::Use(m_machine.get());
    SetPlatform(
        trace::Over(faults::Over(NativePlatform()), [this](const trace::Call& call) { m_calls.push_back(call); }));
    ResetLog();
    ForgetSystemRecords();
    simulated::lastError = 0;
}

TestMachine::~TestMachine() {
    if (m_checkAtEnd) {
        EXPECT_THAT(m_machine->Handles().Describe(), ::testing::IsEmpty()) << "handles are still open";
        EXPECT_THAT(m_machine->Handles().Misuses(), ::testing::IsEmpty());
        EXPECT_EQ(m_machine->Heap().OpenCount(), 0u) << "blocks were not freed";
        EXPECT_THAT(m_machine->Heap().Misuses(), ::testing::IsEmpty());
    }
    ResetLog();
    ForgetSystemRecords();
    SetPlatform(NativePlatform());
    simulated::Use(nullptr);
    m_machine.reset();
    if (!m_folder.empty()) {
        std::error_code ignored;
        std::filesystem::remove_all(m_folder, ignored);
    }
}

void TestMachine::Reopen() {
    EXPECT_FALSE(m_machine->Registry().IsDirty()) << "a change of the registry was not committed";
    simulated::Use(nullptr);
    if (m_machine->IsInMemory()) {
        m_machine->SaveTo(Folder());
    }
    m_machine.reset();
    m_machine = simulated::Machine::Open(Folder());
    simulated::Use(m_machine.get());
    ForgetSystemRecords();
}

void TestMachine::TurnLogOn(int level) {
    g_logSettings = {
        .debugEnabled = true, .logToFile = true, .logToDebugger = false, .logLevel = level, .logFilePath = kLogPath};
    TakeLog();
}

std::vector<std::string> TestMachine::TakeLog() {
    std::vector<std::string> messages;
    std::string text = m_machine->Files().Read(kLogPath).value_or("");
    m_machine->Files().Delete(kLogPath);
    // A line is "[--- Date:MM/DD/YY , Time:HH:MM:SS ---]  message" and CR LF; a message may hold line breaks of its
    // own.
    static constexpr std::string_view kStamp = "[--- Date:";
    static constexpr std::size_t kStampLength = sizeof("[--- Date:MM/DD/YY , Time:HH:MM:SS ---]  ") - 1;
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = text.find("\r\n" + std::string(kStamp), start);
        std::string line = text.substr(start, end == std::string::npos ? std::string::npos : end - start);
        start = end == std::string::npos ? text.size() : end + 2;
        if (end == std::string::npos && line.ends_with("\r\n")) {
            line.resize(line.size() - 2);
        }
        EXPECT_TRUE(line.starts_with(kStamp)) << line;
        messages.push_back(line.size() < kStampLength ? line : line.substr(kStampLength));
    }
    return messages;
}

std::vector<std::string> TestMachine::TakeCalls() {
    std::vector<std::string> calls;
    for (const trace::Call& call : m_calls) {
        calls.push_back(call.Text());
    }
    m_calls.clear();
    return calls;
}

std::vector<std::string> TestMachine::TakeCallNames(const std::vector<std::string>& only) {
    std::vector<std::string> names;
    for (const trace::Call& call : m_calls) {
        if (only.empty() || std::ranges::find(only, call.name) != only.end()) {
            names.push_back(call.name);
        }
    }
    m_calls.clear();
    return names;
}

void WriteFileOn(simulated::Machine& machine, std::string_view path, std::string_view bytes) {
    ASSERT_EQ(machine.Files().Write(path, bytes), 0u) << path;
}

std::string ReadFileOn(simulated::Machine& machine, std::string_view path) {
    std::optional<std::string> bytes = machine.Files().Read(path);
    EXPECT_TRUE(bytes.has_value()) << path << " is missing";
    return bytes.value_or("");
}

}  // namespace pikel::testing_support
