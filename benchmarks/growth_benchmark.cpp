// What grows with the drivers of a machine and with the nodes of a network, the spooler's own work left out: the time
// per driver and per node has to stay flat.
#include <benchmark/benchmark.h>

#include <cstring>
#include <string>
#include <vector>

#include "driver/delete_driver_file.h"
#include "platform/owned.h"
#include "support.h"
#include "system/net_resources.h"

namespace pikel {
namespace {

using benchmarks::FreshMachine;

/// An answer of the spooler: records with texts behind them, whose pointers are set when it is copied out.
struct Answer {
    std::string texts;
    std::vector<std::size_t> places;  ///< of the texts, in the order of the pointers
    DWORD count = 0;

    void Add(const std::string& text) {
        places.push_back(texts.size());
        texts += text;
        texts += '\0';
    }
};
Answer g_answer;

/// Gives the answer as an enumeration does.
/// @param setPointers  void(Info*, LPSTR* texts): sets the pointers of a zeroed record
template <class Info, class SetPointers>
BOOL Give(std::size_t textsPerRecord, LPBYTE buffer, DWORD size, LPDWORD needed, LPDWORD returned,
          SetPointers setPointers) {
    const std::size_t records = g_answer.count * sizeof(Info);
    *needed = static_cast<DWORD>(records + g_answer.texts.size());
    if (size < *needed) {
        Platform().SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    }
    char* texts = reinterpret_cast<char*>(buffer) + records;
    std::memcpy(texts, g_answer.texts.data(), g_answer.texts.size());
    for (DWORD i = 0; i < g_answer.count; ++i) {
        std::vector<LPSTR> pointers;
        for (std::size_t t = 0; t < textsPerRecord; ++t) {
            pointers.push_back(texts + g_answer.places[i * textsPerRecord + t]);
        }
        Info info{};
        setPointers(&info, pointers.data());
        std::memcpy(buffer + i * sizeof(Info), &info, sizeof info);
    }
    *returned = g_answer.count;
    return TRUE;
}

/// A table with one operation replaced, until the object goes.
class ReplacedTable {
  public:
    ReplacedTable() : table(Platform()), m_before(SetPlatform(table)) {}
    ~ReplacedTable() { SetPlatform(m_before); }
    ReplacedTable(const ReplacedTable&) = delete;
    ReplacedTable& operator=(const ReplacedTable&) = delete;
    PlatformTable table;

  private:
    const PlatformTable& m_before;
};

void ReportPer(benchmark::State& state, const char* what) {
    state.counters[what] =
        benchmark::Counter(static_cast<double>(state.range(0)),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void FilesOfAllDrivers(benchmark::State& state) {
    FreshMachine machine;
    g_answer = {};
    g_answer.count = static_cast<DWORD>(state.range(0));
    for (DWORD i = 0; i < g_answer.count; ++i) {
        const std::string number = std::to_string(i);
        g_answer.Add("Driver " + number);
        for (const char* kind : {"cfg", "dat", "drv"}) {
            g_answer.Add("C:\\WINDOWS\\system32\\spool\\drivers\\w32x86\\3\\" + std::string(kind) + number + ".dll");
        }
        g_answer.Add("C:\\WINDOWS\\system32\\spool\\drivers\\w32x86\\3\\shared.dll");
    }
    ReplacedTable replaced;
    replaced.table.EnumPrinterDriversA = [](LPSTR, LPSTR, DWORD, LPBYTE buffer, DWORD size, LPDWORD needed,
                                            LPDWORD returned) -> BOOL {
        return Give<DRIVER_INFO_3A>(5, buffer, size, needed, returned, [](DRIVER_INFO_3A* info, LPSTR* texts) {
            info->cVersion = 3;
            info->pName = texts[0];
            info->pConfigFile = texts[1];
            info->pDataFile = texts[2];
            info->pDriverPath = texts[3];
            info->pHelpFile = texts[4];
        });
    };
    for (auto _ : state) {
        StringList own, others, otherMonitors;
        std::string monitor, monitorFile;
        CDeleteDriverFile().GetFileList(3, "Windows NT x86", "Driver 7", &own, &others, &monitor, &monitorFile,
                                        &otherMonitors);
        if (own.size() != 4) {
            state.SkipWithError("files are missing");
        }
    }
    ReportPer(state, "per_driver");
}
BENCHMARK(FilesOfAllDrivers)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

void BrowseManyNodes(benchmark::State& state) {
    FreshMachine machine;
    g_answer = {};
    g_answer.count = static_cast<DWORD>(state.range(0));
    for (DWORD i = 0; i < g_answer.count; ++i) {
        g_answer.Add("\\\\server\\queue" + std::to_string(i));
        g_answer.Add("description");
        g_answer.Add("comment");
    }
    ReplacedTable replaced;
    replaced.table.EnumPrintersA = [](DWORD, LPSTR, DWORD, LPBYTE buffer, DWORD size, LPDWORD needed,
                                      LPDWORD returned) -> BOOL {
        return Give<PRINTER_INFO_1A>(3, buffer, size, needed, returned, [](PRINTER_INFO_1A* info, LPSTR* texts) {
            info->Flags = PRINTER_ENUM_ICON8;
            info->pName = texts[0];
            info->pDescription = texts[1];
            info->pComment = texts[2];
        });
    };
    for (auto _ : state) {
        NetResourceRecord* nodes = nullptr;
        DWORD count = 0;
        DoEnumNetResources(nullptr, &nodes, &count);
        HeapBlock block(nodes);
        if (count != g_answer.count) {
            state.SkipWithError("nodes are missing");
        }
    }
    ReportPer(state, "per_node");
}
BENCHMARK(BrowseManyNodes)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace pikel
