// Every platform call of an operation fails in turn, once and from then on, and every heap allocation too. Whatever
// fails, a clear code comes back, nothing stays open and nothing crashes.
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <set>
#include <string>

#include "printer/effective_dev_mode.h"
#include "support/sample_road.h"

namespace pikel::testing_support {
namespace {

/// A code that no operation makes up by itself.
constexpr DWORD kInjected = 4242;

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
