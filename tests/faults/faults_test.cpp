// Every platform call of an operation fails in turn, once and from then on, and every heap allocation too. Whatever
// fails, a clear code comes back, nothing stays open and nothing crashes.
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <set>
#include <string>

#include "frame/pikel.h"
#include "printer/effective_dev_mode.h"
#include "support/machine_test.h"
#include "support/pe_file.h"

namespace pikel::testing_support {
namespace {

const PI_KEL_Interface& Table() {
    return *PI_KEL_GetInterface(PIKEL_INTERFACE_VERSION);
}

/// A code that no operation makes up by itself.
constexpr DWORD kInjected = 4242;

constexpr char kPrinter[] = "Office";
constexpr char kPort[] = "P1";
constexpr char kModel[] = "Aurora Laser 500";
constexpr char kSdk[] = "C:\\Program Files\\pikel\\portsdk.dll";

/// What a system installs from.
struct Package {
    std::string folder;
    std::string inf;
    DWORD architecture;
    DWORD major;
    DWORD minor;
};

Package PackageFor(const std::string& system) {
    if (system.starts_with("win9") || system == "winme") {
        return {"win98", "aurora98.inf", PIKEL_ARCHITECTURE_WINDOWS_9X, 4, 0};
    }
    if (system == "nt4") {
        return {"nt4", "aurora4.inf", PIKEL_ARCHITECTURE_NT4_X86, 4, 0};
    }
    if (system.ends_with("x64")) {
        return {"xp", "aurora.inf", PIKEL_ARCHITECTURE_X64, 5, 2};
    }
    return {"xp", "aurora.inf", PIKEL_ARCHITECTURE_NT_X86, system == "win2000" ? 5u : 6u, 0};
}

/// The road on one machine, as far as a test needs it.
class Road {
  public:
    explicit Road(const std::string& system) : m_package(PackageFor(system)), m_test(system) {
        m_test->Files().InsertMedium(std::string(PIKEL_SOURCE_DIR) + "/samples/" + m_package.folder);
        m_inf = "D:\\" + m_package.inf;
    }
    ~Road() {
        faults::Reset();
        m_test->Heap().StopFailing();
        FreeRecord();
        AllowQualityKeys();
    }

    PiStatus ReadInf() {
        return Table().PI_KEL_GetInfInfo(m_inf.c_str(), kModel, m_package.architecture, m_package.major,
                                         m_package.minor, &m_record);
    }
    void FreeRecord() {
        if (m_record != nullptr) {
            Table().PI_KEL_FreeMemory(m_record);
            m_record = nullptr;
        }
    }
    PiStatus ListModels() {
        LPSTR* list = nullptr;
        DWORD count = 0;
        PiStatus status = Table().PI_KEL_GetDriverListFromInf(m_inf.c_str(), m_package.architecture, m_package.major,
                                                              m_package.minor, &list, &count);
        if (list != nullptr) {
            Table().PI_KEL_FreeMemory(list);
        }
        return status;
    }
    PiStatus CopyFiles() {
        auto callback = [](PVOID, UINT notification, UINT_PTR, UINT_PTR) -> UINT {
            return notification == SPFILENOTIFY_COPYERROR ? UINT{FILEOP_ABORT} : UINT{FILEOP_DOIT};
        };
        return Table().PI_KEL_CopyInfDriverFiles(m_inf.c_str(), kModel, callback, m_package.architecture,
                                                 static_cast<INT>(m_package.major), m_package.minor, nullptr, nullptr);
    }
    PiStatus AddDriver() { return Table().PI_KEL_AddPrinterDriver(nullptr, nullptr, 0, 0, m_record, 0); }
    PiStatus CreatePort() {
        char created[64] = {};
        return Table().PI_KEL_CreatePort(kSdk, kPort, 0, "queue", 0, created, sizeof created);
    }
    PiStatus AddPrinter() {
        static char printer[] = "Office", port[] = "P1", model[] = "Aurora Laser 500", processor[] = "winprint",
                    datatype[] = "RAW";
        PrinterRecord record{};
        record.pPrinterName = printer;
        record.pPortName = port;
        record.pDriverName = model;
        record.pPrintProcessor = processor;
        record.pDatatype = datatype;
        AddPrinterOptions options{};
        if (m_record != nullptr) {
            options.ColorProfileCount = m_record->ColorProfileCount;
            options.ColorProfiles = m_record->ColorProfileList;
        }
        return Table().PI_KEL_AddPrinter(&record, &options);
    }
    PiStatus SetDefault() { return Table().PI_KEL_SetDefaultPrinter(kPrinter); }
    PiStatus GetDefault() {
        char name[64] = {};
        return Table().PI_KEL_GetDefaultPrinter(name, sizeof name);
    }
    PiStatus IsDefault() { return Table().PI_KEL_IsDefaultPrinter(kPrinter); }

    PiStatus NameOfMainFile() {
        char name[64] = {};
        DWORD size = sizeof name;
        return Table().PI_KEL_GetDriverFileNameFromInf(m_inf.c_str(), kModel, m_package.architecture, m_package.major,
                                                       m_package.minor, 0, name, &size);
    }
    PiStatus ListFiles() {
        DriverFileRecord* records = nullptr;
        DWORD count = 0;
        const PiStatus status = Table().PI_KEL_EnumDriverFiles(m_inf.c_str(), kModel, m_package.architecture,
                                                               m_package.major, m_package.minor, &records, &count);
        Free(records);
        return status;
    }
    PiStatus ApplyRegistry() {
        return Table().PI_KEL_ControlRegistory(m_inf.c_str(), kModel, m_package.architecture, m_package.major,
                                               m_package.minor);
    }
    PiStatus CopyToLocal() {
        m_test->Files().MakeFolder("C:\\local");
        LocalFileRecord* records = nullptr;
        DWORD size = 0;
        DWORD count = 0;
        const PiStatus status =
            Table().PI_KEL_CopyInfDriverFilesToLocal(m_inf.c_str(), kModel, "C:\\local", &size, 2, &count, &records,
                                                     m_package.architecture, m_package.major, m_package.minor);
        Free(records);
        return status;
    }
    PiStatus Stage() {
        DWORD restart = 0;
        return Table().PI_KEL_CopyInfDriverFilesEx(m_inf.c_str(), kModel, 2, &restart, "C:\\staging",
                                                   m_package.architecture, m_package.major, m_package.minor);
    }
    PiStatus SizeUp() {
        std::string models = kModel;
        models += std::string(2, '\0');
        DWORD total = 0;
        DWORD shared = 0;
        return Table().PI_KEL_GetCopyDriverFilesSize(m_inf.c_str(), models.c_str(), &total, &shared, 2,
                                                     m_package.architecture, m_package.major, m_package.minor);
    }
    PiStatus CopyMonitor() {
        WriteFileOn(*m_test, "C:\\new\\mon.dll", MakePeFile("2.0"));
        WriteFileOn(*m_test, m_test->System().systemDirectory + "\\mon.dll", MakePeFile("1.0"));
        DWORD restart = 0;
        return Table().PI_KEL_CopyMonitorFile("C:\\new", "mon.dll/", &restart);
    }
    PiStatus CopyToHardwareIdFolder() { return Table().PI_KEL_CopyDriverFileToHWIDFolder(kModel); }
    PiStatus ReadVersion() {
        WriteFileOn(*m_test, "C:\\a.dll", MakePeFile("2.0"));
        char text[32] = {};
        return Table().PI_KEL_GetDriverFileVersion("C:\\a.dll", text, sizeof text);
    }
    PiStatus AskWhetherLoaded() {
        Table().PI_KEL_IsDriverFileLoaded(kModel);
        return 0;
    }

    TestMachine& Test() { return m_test; }

  private:
    static void Free(void* block) {
        if (block != nullptr) {
            Table().PI_KEL_FreeMemory(block);
        }
    }

    /// On Windows 95 the keys of printer profiles' qualities stay open, and nothing else may.
    void AllowQualityKeys() {
        const simulated::Handles& handles = m_test->Handles();
        if (m_test->Generation() == simulated::Generation::Windows95 &&
            handles.OpenCount() == handles.OpenCount(simulated::HandleKind::RegistryKey) &&
            m_test->Heap().OpenCount() == 0 && handles.Misuses().empty()) {
            m_test.AllowOpen();
        }
    }

    Package m_package;
    TestMachine m_test;
    std::string m_inf;
    DriverAddRecord* m_record = nullptr;
};

using Step = PiStatus (Road::*)();

/// An operation under test and the steps that lead up to it.
struct Operation {
    const char* name;
    std::vector<Step> before;
    Step step;
    DWORD prefix;
    PiStatus success = 0;
    bool mayAskNothing = false;  ///< answers on some systems without a platform call
};

const std::vector<Operation> kOperations = {
    {"GetInfInfo", {}, &Road::ReadInf, PIKEL_PREFIX_INF_READ},
    {"GetDriverListFromInf", {}, &Road::ListModels, PIKEL_PREFIX_INF_READ},
    {"CopyInfDriverFiles", {}, &Road::CopyFiles, PIKEL_PREFIX_FILE_COPY},
    {"AddPrinterDriver", {&Road::ReadInf, &Road::CopyFiles}, &Road::AddDriver, PIKEL_PREFIX_DRIVER_ADD},
    {"GetDriverFileNameFromInf", {}, &Road::NameOfMainFile, PIKEL_PREFIX_INF_READ},
    {"EnumDriverFiles", {}, &Road::ListFiles, PIKEL_PREFIX_GENERAL},
    {"ControlRegistory", {}, &Road::ApplyRegistry, PIKEL_PREFIX_GENERAL},
    {"CopyInfDriverFilesToLocal", {}, &Road::CopyToLocal, PIKEL_PREFIX_FILE_COPY},
    {"CopyInfDriverFilesEx", {&Road::ReadInf, &Road::CopyFiles}, &Road::Stage, PIKEL_PREFIX_FILE_COPY},
    {"GetCopyDriverFilesSize", {}, &Road::SizeUp, PIKEL_PREFIX_FILE_COPY},
    {"CopyMonitorFile", {}, &Road::CopyMonitor, PIKEL_PREFIX_FILE_COPY},
    {"CopyDriverFileToHWIDFolder",
     {&Road::ReadInf, &Road::CopyFiles, &Road::AddDriver},
     &Road::CopyToHardwareIdFolder,
     PIKEL_PREFIX_GENERAL},
    {"GetDriverFileVersion", {}, &Road::ReadVersion, PIKEL_PREFIX_GENERAL},
    {"IsDriverFileLoaded", {&Road::ReadInf, &Road::CopyFiles, &Road::AddDriver}, &Road::AskWhetherLoaded, 0, 0, true},
    {"CreatePort", {}, &Road::CreatePort, PIKEL_PREFIX_PORT},
    {"AddPrinter",
     {&Road::ReadInf, &Road::CopyFiles, &Road::AddDriver, &Road::CreatePort},
     &Road::AddPrinter,
     PIKEL_PREFIX_PRINTER_ADD},
    {"SetDefaultPrinter",
     {&Road::ReadInf, &Road::CopyFiles, &Road::AddDriver, &Road::CreatePort, &Road::AddPrinter},
     &Road::SetDefault,
     PIKEL_PREFIX_GENERAL},
    {"GetDefaultPrinter",
     {&Road::ReadInf, &Road::CopyFiles, &Road::AddDriver, &Road::CreatePort, &Road::AddPrinter, &Road::SetDefault},
     &Road::GetDefault,
     PIKEL_PREFIX_GENERAL},
    {"IsDefaultPrinter",
     {&Road::ReadInf, &Road::CopyFiles, &Road::AddDriver, &Road::CreatePort, &Road::AddPrinter, &Road::SetDefault},
     &Road::IsDefault,
     PIKEL_PREFIX_GENERAL,
     PIKEL_PREFIX_GENERAL | 1},
};

/// A machine on which all steps before the operation are done.
std::unique_ptr<Road> Prepare(const std::string& system, const Operation& operation) {
    auto road = std::make_unique<Road>(system);
    for (Step step : operation.before) {
        EXPECT_EQ(((*road).*step)(), 0u) << operation.name << " on " << system << " could not be prepared";
    }
    faults::Reset();
    return road;
}

/// Codes that an operation may give when a platform call fails: none (the step doesn't count), the code of the call, or
/// one of those that stand for a failure without a code of its own.
bool IsClear(PiStatus status, const Operation& operation) {
    if (status == operation.success || status == 0) {
        return true;
    }
    static const std::set<DWORD> codes = {
        kInjected,
        ERROR_FILE_NOT_FOUND,         // what a failed step didn't make isn't there for a later one
        ERROR_NOT_ENOUGH_MEMORY,      // no block, no BSTR
        ERROR_INVALID_PARAMETER,      // a record or buffer that could not be filled
        ERROR_MOD_NOT_FOUND,          // a monitor whose file was not copied
        ERROR_INTERNAL_ERROR,         // an INF line that could not be reached; a port SDK that refused
        ERROR_UNKNOWN_PRINT_MONITOR,  // a monitor that was not registered
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

/// Calls that may fail while the operation runs well.
std::size_t CountCalls(const std::string& system, const Operation& operation) {
    std::unique_ptr<Road> road = Prepare(system, operation);
    EXPECT_EQ(((*road).*operation.step)(), operation.success) << operation.name << " on " << system;
    return faults::CallCount();
}

void FailEachCall(const std::string& system, const Operation& operation, bool persistent) {
    const std::size_t calls = CountCalls(system, operation);
    EXPECT_TRUE(calls > 0 || operation.mayAskNothing);
    for (std::size_t nth = 1; nth <= calls; ++nth) {
        std::unique_ptr<Road> road = Prepare(system, operation);
        faults::FailNth(nth, kInjected, persistent);
        const PiStatus status = ((*road).*operation.step)();
        EXPECT_TRUE(IsClear(status, operation))
            << operation.name << " on " << system << ": 0x" << std::hex << status << std::dec << " when call " << nth
            << " (" << faults::LastFailed() << ") fails" << (persistent ? ", and all from then on" : "");
        // The road's end checks that nothing stayed open.
    }
}

TEST_P(Faults, EachCallFailsOnce) {
    for (const Operation& operation : kOperations) {
        SCOPED_TRACE(operation.name);
        FailEachCall(GetParam(), operation, false);
    }
}

TEST_P(Faults, EachCallFailsFromThenOn) {
    for (const Operation& operation : kOperations) {
        SCOPED_TRACE(operation.name);
        FailEachCall(GetParam(), operation, true);
    }
}

TEST_P(Faults, EachAllocationFails) {
    for (const Operation& operation : kOperations) {
        SCOPED_TRACE(operation.name);
        std::size_t allocations = 0;
        {
            std::unique_ptr<Road> road = Prepare(GetParam(), operation);
            const std::size_t before = road->Test()->Heap().AllocationCount();
            ((*road).*operation.step)();
            allocations = road->Test()->Heap().AllocationCount() - before;
        }
        for (std::size_t after = 0; after < allocations; ++after) {
            for (bool persistent : {false, true}) {
                std::unique_ptr<Road> road = Prepare(GetParam(), operation);
                road->Test()->Heap().FailAllocation(after, persistent);
                const PiStatus status = ((*road).*operation.step)();
                road->Test()->Heap().StopFailing();
                EXPECT_TRUE(IsClear(status, operation)) << operation.name << " on " << GetParam() << ": 0x" << std::hex
                                                        << status << std::dec << " without allocation " << after;
            }
        }
    }
}

// A system of each kind of route; the others differ in rows that lead to the same routines.
INSTANTIATE_TEST_SUITE_P(Systems, Faults, ::testing::Values("win95", "win98", "nt4", "win2000", "vista-x64"),
                         [](const auto& info) {
                             std::string name = info.param;
                             std::erase(name, '-');
                             return name;
                         });

}  // namespace
}  // namespace pikel::testing_support
