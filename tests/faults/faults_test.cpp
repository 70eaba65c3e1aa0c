// Every platform call of an operation fails in turn, once and from then on, and every heap allocation too. Whatever
// fails, a clear code comes back, nothing stays open and nothing crashes.
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "frame/file_version.h"
#include "printer/effective_dev_mode.h"
#include "support/compressed_file.h"
#include "support/sample_road.h"

namespace pikel::testing_support {
namespace {

/// A code that no operation makes up by itself.
constexpr DWORD kInjected = 4242;

using Step = std::function<PiStatus(Road&)>;

bool IsEvery(std::string_view) {
    return true;
}
bool HasPrintUi(std::string_view system) {
    return !system.starts_with("win9") && system != "winme" && system != "nt4";
}
/// Shell folders came with Windows 98 and Internet Explorer 5.
bool HasShellFolders(std::string_view system) {
    return system != "win95" && system != "nt4";
}
bool HasVersionTexts(std::string_view system) {
    return system == "win2000";
}
bool KeepsHardwareIdFolders(std::string_view system) {
    return system == "xp";
}

PiStatus CheckVersion(Road& road) {
    WriteFileOn(*road.Test(), "C:\\a.dll", MakePeFile("2.0"));
    char text[32] = {};
    return InterfaceTable().PI_KEL_CheckDriverFileVersion("C:\\a.dll", "1.5", text, sizeof text);
}
PiStatus ExtractCabinet(Road& road) {
    static const std::string cabinet = MakeCabinet({{"sub/a.txt", "text"}});
    WriteFileOn(*road.Test(), "C:\\a.cab", cabinet);
    return InterfaceTable().PI_KEL_ExtractCabFile("C:\\a.cab", "C:\\out");
}
PiStatus AskWhetherInfIsValid(Road& road) {
    return InterfaceTable().PI_KEL_IsValidInfFile(road.Inf().c_str(), nullptr, "Printer");
}

/// An operation under test and the steps that lead up to it.
struct Operation {
    const char* name;
    std::vector<Step> onMachine;  ///< done once; what they leave is on the machine
    std::vector<Step> inMemory;   ///< done ahead of every attempt
    Step step;
    DWORD prefix;
    PiStatus success = 0;
    bool mayAskNothing = false;  ///< answers on some systems without a platform call
    bool (*on)(std::string_view system) = IsEvery;
    bool changesNothing = false;                     ///< every attempt may work on one machine
    std::optional<PiStatus> failure = std::nullopt;  ///< the one other answer of an operation that gives no codes
};

const std::vector<Step> kDriver = {&Road::ReadInf, &Road::CopyFiles, &Road::AddDriver};
const std::vector<Step> kPrinterThere = {&Road::ReadInf, &Road::CopyFiles, &Road::AddDriver, &Road::CreatePort,
                                         &Road::AddPrinter};
const std::vector<Step> kDefaultSet = {&Road::ReadInf,    &Road::CopyFiles,  &Road::AddDriver,
                                       &Road::CreatePort, &Road::AddPrinter, &Road::SetDefault};

const std::vector<Operation> kOperations = {
    {"GetInfInfo", {}, {}, &Road::ReadInf, PIKEL_PREFIX_INF_READ},
    {"GetDriverListFromInf", {}, {}, &Road::ListModels, PIKEL_PREFIX_INF_READ},
    {"CopyInfDriverFiles", {}, {}, &Road::CopyFiles, PIKEL_PREFIX_FILE_COPY},
    {"AddPrinterDriver",
     {&Road::ReadInf, &Road::CopyFiles},
     {&Road::ReadInf},
     &Road::AddDriver,
     PIKEL_PREFIX_DRIVER_ADD},
    {"AddPrinterDriver by the Print UI",
     {},
     {},
     &Road::AddDriverThroughPrintUi,
     PIKEL_PREFIX_DRIVER_ADD,
     0,
     false,
     HasPrintUi},
    {"GetDriverFileNameFromInf", {}, {}, &Road::NameOfMainFile, PIKEL_PREFIX_INF_READ},
    {"EnumDriverFiles", {}, {}, &Road::ListFiles, PIKEL_PREFIX_GENERAL},
    {"ControlRegistory", {}, {}, &Road::ApplyRegistry, PIKEL_PREFIX_GENERAL},
    {"CopyInfDriverFilesToLocal", {}, {}, &Road::CopyToLocal, PIKEL_PREFIX_FILE_COPY},
    {"CopyInfDriverFilesEx", {&Road::ReadInf, &Road::CopyFiles}, {}, &Road::Stage, PIKEL_PREFIX_FILE_COPY},
    {"GetCopyDriverFilesSize", {}, {}, &Road::SizeUp, PIKEL_PREFIX_FILE_COPY},
    {"CopyMonitorFile", {}, {}, &Road::CopyMonitor, PIKEL_PREFIX_FILE_COPY},
    {"CopyDriverFileToHWIDFolder",
     kDriver,
     {},
     &Road::CopyToHardwareIdFolder,
     PIKEL_PREFIX_GENERAL,
     0,
     false,
     KeepsHardwareIdFolders},
    {"GetDriverFileVersion", {}, {}, &Road::ReadVersion, PIKEL_PREFIX_GENERAL},
    {"CheckDriverFileVersion",
     {},
     {},
     CheckVersion,
     0,
     FileVersionHigher,
     false,
     IsEvery,
     true,
     FileVersionLowerOrUnreadable},
    {"ExtractCabFile", {}, {}, ExtractCabinet, PIKEL_PREFIX_GENERAL},
    {"IsValidInfFile", {}, {}, AskWhetherInfIsValid, 0, 1, false, IsEvery, true, 0},
    {"IsDriverFileLoaded", kDriver, {}, &Road::AskWhetherLoaded, 0, 0, true},
    {"CreatePort", {}, {}, &Road::CreatePort, PIKEL_PREFIX_PORT},
    {"AddPrinter",
     {&Road::ReadInf, &Road::CopyFiles, &Road::AddDriver, &Road::CreatePort},
     {&Road::ReadInf},
     &Road::AddPrinter,
     PIKEL_PREFIX_PRINTER_ADD},
    {"SetDefaultPrinter", kPrinterThere, {}, &Road::SetDefault, PIKEL_PREFIX_GENERAL},
    {"GetDefaultPrinter", kDefaultSet, {}, &Road::GetDefault, PIKEL_PREFIX_GENERAL},
    {"IsDefaultPrinter", kDefaultSet, {}, &Road::IsDefault, PIKEL_PREFIX_GENERAL, PIKEL_PREFIX_GENERAL | 1},
    {"GetPrinter", kPrinterThere, {}, &Road::ReadPrinter, PIKEL_PREFIX_GENERAL, 0, false, IsEvery, true},
    {"SetPrinter", kPrinterThere, {&Road::ReadPrinter}, &Road::WritePrinter, PIKEL_PREFIX_GENERAL},
    {"DeletePrinter", kPrinterThere, {&Road::ReadPrinter}, &Road::DeletePrinter, PIKEL_PREFIX_PRINTER_DELETE},
    {"DeletePrinter by the Print UI",
     kPrinterThere,
     {&Road::ReadPrinter},
     &Road::DeletePrinterThroughPrintUi,
     PIKEL_PREFIX_PRINTER_DELETE,
     0,
     false,
     HasPrintUi},
    {"DeletePrinterWithoutShareReg", kPrinterThere, {}, &Road::DeletePrinterAlone, PIKEL_PREFIX_PRINTER_DELETE},
    {"UninstallPrinter", kPrinterThere, {&Road::ReadPrinter}, &Road::Uninstall, PIKEL_PREFIX_DRIVER_ADD},
    {"UninstallPrinter by the Print UI",
     kPrinterThere,
     {&Road::ReadPrinter},
     &Road::UninstallThroughPrintUi,
     PIKEL_PREFIX_DRIVER_ADD,
     0,
     false,
     HasVersionTexts},  // the Vista generation takes the direct route
    {"DeletePrinterDriver", kDriver, {}, &Road::DeleteDriver, PIKEL_PREFIX_DRIVER_DELETE},
    {"DeletePrinterDriver by the Print UI",
     kDriver,
     {},
     &Road::DeleteDriverThroughPrintUi,
     PIKEL_PREFIX_DRIVER_DELETE,
     0,
     false,
     HasPrintUi},
    {"InstallPrinterToPrintUI", {}, {}, &Road::InstallThroughPrintUi, PIKEL_PREFIX_DRIVER_ADD, 0, false, HasPrintUi},
    {"RunPrintUI", kPrinterThere, {}, &Road::RunPrintUi, PIKEL_PREFIX_GENERAL, 0, false, HasPrintUi},
    {"GetResourceStrFromPrintUI", {}, {}, &Road::ReadPrintUiText, PIKEL_PREFIX_GENERAL, 0, false, HasVersionTexts},
    {"EnumNetResources", {}, {}, &Road::BrowseNetwork, PIKEL_PREFIX_NETWORK},
    {"IsAdministrators", {}, {}, &Road::AskForRights, 0},
    {"CreateShortCut", {}, {}, &Road::CreateShortcut, PIKEL_PREFIX_GENERAL, 0, false, HasShellFolders},
};

/// XP is there for the operation that works nowhere else; Windows 2000 and Vista stand for it with the others.
bool IsTried(const Operation& operation, std::string_view system) {
    return operation.on(system) && (system != "xp" || operation.on == KeepsHardwareIdFolders);
}

/// The machine on which an operation's steps are done, for as long as the operation is under test.
class PreparedMachine {
  public:
    PreparedMachine(const std::string& system, const Operation& operation) : m_system(system), m_operation(operation) {
        Road road(system);
        for (const Step& step : operation.onMachine) {
            EXPECT_EQ(step(road), 0u) << operation.name << " on " << system << " could not be prepared";
        }
        m_machine = road.Test()->Copy();
    }
    PreparedMachine(const PreparedMachine&) = delete;
    PreparedMachine& operator=(const PreparedMachine&) = delete;

    /// A copy of it, with what the operation needs in memory.
    std::unique_ptr<Road> Copy() const {
        auto road = std::make_unique<Road>(m_system, CopyOf{*m_machine});
        for (const Step& step : m_operation.inMemory) {
            EXPECT_EQ(step(*road), 0u) << m_operation.name << " on " << m_system << " could not be prepared";
        }
        faults::Reset();
        return road;
    }

  private:
    std::string m_system;
    const Operation& m_operation;
    std::unique_ptr<simulated::Machine> m_machine;
};

/// Codes that an operation may give when a platform call fails: none (the step doesn't count), the code of the call, or
/// one of those that stand for a failure without a code of its own.
bool IsClear(PiStatus status, const Operation& operation) {
    if (operation.failure) {
        return status == operation.success || status == *operation.failure;
    }
    if (status == operation.success || status == 0) {
        return true;
    }
    static const std::set<DWORD> codes = {
        kInjected,
        ERROR_FILE_NOT_FOUND,         // what a failed step didn't make isn't there for a later one
        ERROR_PATH_NOT_FOUND,         // the same of a folder
        ERROR_NOT_ENOUGH_MEMORY,      // no block, no BSTR
        ERROR_INVALID_PARAMETER,      // a record or buffer that could not be filled
        ERROR_MOD_NOT_FOUND,          // a monitor whose file was not copied
        ERROR_INTERNAL_ERROR,         // an INF line that could not be reached; a port SDK that refused
        ERROR_UNKNOWN_PRINT_MONITOR,  // a monitor that was not registered
        ERROR_INVALID_PRINTER_NAME,   // a Print UI command without a name, behind a failed profile step
        RPC_S_SERVER_UNAVAILABLE,     // a spooler that did not come up again after its restart
        ERROR_CALL_NOT_IMPLEMENTED,   // a system that could not be told, for which no route is known
    };
    for (DWORD code : codes) {
        if (status == (operation.prefix | code)) {
            return true;
        }
    }
    // The last error may be one that an earlier call of the operation left behind, as a size query does.
    return status == (operation.prefix | ERROR_INSUFFICIENT_BUFFER) || status == (operation.prefix | ERROR_MORE_DATA);
}

class Faults : public ::testing::TestWithParam<std::string> {};

/// Runs an operation, many times, each on a machine in the same state.
class Attempts {
  public:
    Attempts(const std::string& system, const Operation& operation)
        : m_operation(operation), m_machine(system, operation) {}

    Road& Next() {
        if (!m_road || !m_operation.changesNothing) {
            m_road.reset();  // its end checks that nothing stayed open
            m_road = m_machine.Copy();
        }
        if (m_operation.changesNothing) {
            m_road->FreePrinter();  // what the attempt before it read
        }
        faults::Reset();
        return *m_road;
    }
    PiStatus Run() { return m_operation.step(*m_road); }
    simulated::Heap& Heap() { return m_road->Test()->Heap(); }

  private:
    const Operation& m_operation;
    PreparedMachine m_machine;
    std::unique_ptr<Road> m_road;
};

void FailEachCall(const std::string& system, const Operation& operation, bool persistent) {
    Attempts attempts(system, operation);
    attempts.Next();
    EXPECT_EQ(attempts.Run(), operation.success) << operation.name << " on " << system;
    const std::size_t calls = faults::CallCount();
    EXPECT_TRUE(calls > 0 || operation.mayAskNothing);
    for (std::size_t nth = 1; nth <= calls; ++nth) {
        attempts.Next();
        faults::FailNth(nth, kInjected, persistent);
        const PiStatus status = attempts.Run();
        EXPECT_TRUE(IsClear(status, operation))
            << operation.name << " on " << system << ": 0x" << std::hex << status << std::dec << " when call " << nth
            << " (" << faults::LastFailed() << ") fails" << (persistent ? ", and all from then on" : "");
    }
}

void FailEachAllocation(const std::string& system, const Operation& operation) {
    Attempts attempts(system, operation);
    const std::size_t before = attempts.Next().Test()->Heap().AllocationCount();
    attempts.Run();
    const std::size_t allocations = attempts.Heap().AllocationCount() - before;
    for (std::size_t after = 0; after < allocations; ++after) {
        for (bool persistent : {false, true}) {
            simulated::Heap& heap = attempts.Next().Test()->Heap();
            heap.FailAllocation(after, persistent);
            const PiStatus status = attempts.Run();
            heap.StopFailing();
            EXPECT_TRUE(IsClear(status, operation)) << operation.name << " on " << system << ": 0x" << std::hex
                                                    << status << std::dec << " without allocation " << after;
        }
    }
}

TEST_P(Faults, EachCallFailsOnce) {
    for (const Operation& operation : kOperations) {
        if (IsTried(operation, GetParam())) {
            SCOPED_TRACE(operation.name);
            FailEachCall(GetParam(), operation, false);
        }
    }
}

TEST_P(Faults, EachCallFailsFromThenOn) {
    for (const Operation& operation : kOperations) {
        if (IsTried(operation, GetParam())) {
            SCOPED_TRACE(operation.name);
            FailEachCall(GetParam(), operation, true);
        }
    }
}

TEST_P(Faults, EachAllocationFails) {
    for (const Operation& operation : kOperations) {
        if (IsTried(operation, GetParam())) {
            SCOPED_TRACE(operation.name);
            FailEachAllocation(GetParam(), operation);
        }
    }
}

// A system of each kind of route; the others differ in rows that lead to the same routines.
INSTANTIATE_TEST_SUITE_P(Systems, Faults, ::testing::Values("win95", "win98", "nt4", "win2000", "xp", "vista-x64"),
                         [](const auto& info) {
                             std::string name = info.param;
                             std::erase(name, '-');
                             return name;
                         });

}  // namespace
}  // namespace pikel::testing_support
