// Fixture for tests that run the library on a simulated machine. Each test gets a machine of its own in memory, with
// the trace and fault shims on the platform table; it ends with nothing open and nothing misused. A test that looks at
// the machine's folder from outside says so, with Lies::InAFolder.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/owned.h"
#include "platform/shims/faults.h"
#include "platform/shims/trace.h"
#include "machine/base/machine.h"
#include "machine/base/text.h"
#include "machine/files/files.h"
#include "machine/modules/modules.h"
#include "machine/registry/registry.h"
#include "machine/system/systems.h"

namespace pikel::testing_support {

/// Names of the systems of the twelve rows, in the order of the rows: win95, win98, winme, nt4, win2000, xp, xp-ia64,
/// xp-x64, vista, vista-ia64, vista-x64, other.
const std::vector<std::string>& EverySystem();

/// Where a test's machine lies: in memory, or in a temporary folder of the host.
enum class Lies { InMemory, InAFolder };

/// A machine of which a test works on a copy.
struct CopyOf {
    const simulated::Machine& machine;
};

/// A machine that is current from Start to Stop. For tests that go through several systems.
class TestMachine {
  public:
    /// Makes a fresh machine for a system ("xp"), makes it current, forgets what the library knew of the last one,
    /// turns the log off and clears trace and faults.
    explicit TestMachine(std::string_view system = "xp", Lies where = Lies::InMemory);
    explicit TestMachine(const simulated::SystemDescription& system, Lies where = Lies::InMemory);
    explicit TestMachine(const CopyOf& original);
    /// Expects that nothing is open and nothing was misused, and takes the folder away.
    ~TestMachine();
    TestMachine(const TestMachine&) = delete;
    TestMachine& operator=(const TestMachine&) = delete;

    simulated::Machine& operator*() { return *m_machine; }
    simulated::Machine* operator->() { return m_machine.get(); }

    /// Closes the machine and opens its folder again, as a new process would. A machine in memory is written into a
    /// folder for that, and lies there from then on. Expects that nothing waits for a commit.
    void Reopen();

    /// Turns the log on (2: detail level). Lines go to a file of the machine.
    void TurnLogOn(int level = 2);
    /// Messages since the log was turned on or since the last call, without stamps and line breaks.
    std::vector<std::string> TakeLog();

    /// Calls since the start or since the last call, as "Name(arguments) = result".
    std::vector<std::string> TakeCalls();
    /// The same, names alone. With `only`, just the operations named there.
    std::vector<std::string> TakeCallNames(const std::vector<std::string>& only = {});

    /// Leaves the checks at the end out, for tests that misuse on purpose.
    void AllowOpen() { m_checkAtEnd = false; }

  private:
    void MakeCurrent();
    std::filesystem::path Folder();

    std::filesystem::path m_folder;
    std::unique_ptr<simulated::Machine> m_machine;
    std::vector<trace::Call> m_calls;
    bool m_checkAtEnd = true;
};

/// Fixture with one xp machine; Start makes another in its place.
class MachineTest : public ::testing::Test {
  protected:
    explicit MachineTest(std::string_view system = "xp", Lies where = Lies::InMemory)
        : m_test(std::make_unique<TestMachine>(system, where)) {}
    void Start(std::string_view system, Lies where = Lies::InMemory) {
        m_test.reset();
        m_test = std::make_unique<TestMachine>(system, where);
    }
    TestMachine& Test() { return *m_test; }
    simulated::Machine& Machine() { return **m_test; }

  private:
    std::unique_ptr<TestMachine> m_test;
};

/// Fixture for tests that hold on every system: TEST_P with INSTANTIATE_ON_EVERY_SYSTEM.
class EverySystemTest : public MachineTest, public ::testing::WithParamInterface<std::string> {
  protected:
    explicit EverySystemTest(Lies where = Lies::InMemory) : MachineTest(GetParam(), where) {}
};

#define INSTANTIATE_ON_EVERY_SYSTEM(fixture)                                                                 \
    INSTANTIATE_TEST_SUITE_P(Systems, fixture, ::testing::ValuesIn(::pikel::testing_support::EverySystem()), \
                             [](const auto& info) {                                                          \
                                 std::string name = info.param;                                              \
                                 std::erase(name, '-');                                                      \
                                 return name;                                                                \
                             })

/// A platform table with some operations replaced, current until the object goes:
///     ReplacedOperations replaced;
///     replaced.table.GetACP = []() -> UINT { return 932; };
class ReplacedOperations {
  public:
    ReplacedOperations() : table(Platform()), m_before(SetPlatform(table)) {}
    ~ReplacedOperations() { SetPlatform(m_before); }
    ReplacedOperations(const ReplacedOperations&) = delete;
    ReplacedOperations& operator=(const ReplacedOperations&) = delete;

    PlatformTable table;

  private:
    const PlatformTable& m_before;
};

/// Writes a file on the machine, folders included.
void WriteFileOn(simulated::Machine& machine, std::string_view path, std::string_view bytes);
/// Its bytes; fails the test when it is missing.
std::string ReadFileOn(simulated::Machine& machine, std::string_view path);

}  // namespace pikel::testing_support
