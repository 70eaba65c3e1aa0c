#include "platform/shims/faults.h"

#include <algorithm>
#include <string>
#include <vector>

#include "platform/shims/operation_tags.h"

namespace pikel::faults {

namespace {

struct Fault {
    std::string name;  ///< empty: any operation that can fail
    std::size_t nth = 0;
    std::size_t seen = 0;
    DWORD code = 0;
    bool persistent = false;
};

PlatformTable g_inner;
std::vector<Fault> g_faults;
std::size_t g_callCount = 0;
std::string g_lastFailed;

/// Counts a call and tells whether a fault meets it.
const Fault* Meet(std::string_view name) {
    ++g_callCount;
    const Fault* met = nullptr;
    for (Fault& fault : g_faults) {
        if (!fault.name.empty() && fault.name != name) {
            continue;
        }
        ++fault.seen;
        if (fault.seen == fault.nth || (fault.persistent && fault.seen > fault.nth)) {
            met = &fault;
        }
    }
    if (met != nullptr) {
        g_lastFailed = name;
    }
    return met;
}

template <class Tag, class Pointer>
struct FailingAs;

template <class Tag, class Result, class... Parameters>
struct FailingAs<Tag, Result(WINAPI*)(Parameters...)> {
    static inline Result(WINAPI* below)(Parameters...) = nullptr;

    static Result WINAPI Call(Parameters... arguments) {
        if constexpr (failure::kCanFail<typename Tag::Failure>) {
            if (const Fault* fault = Meet(Tag::kName)) {
                if (Tag::Failure::kUsesLastError) {
                    g_inner.SetLastError(fault->code);
                }
                return Tag::Failure::template Value<Result>(fault->code);
            }
        }
        return below(arguments...);
    }
};

template <class Tag>
using Failing = FailingAs<Tag, typename Tag::Pointer>;

FARPROC WINAPI FailingGetProcAddress(HMODULE module, LPCSTR symbol) {
    FARPROC found = Failing<shims::tag::GetProcAddress>::Call(module, symbol);
    return found == nullptr ? found : shims::WrapLookedUp<Failing>(symbol, found);
}

}  // namespace

const PlatformTable& Over(const PlatformTable& inner) {
    static PlatformTable table;
    g_inner = inner;
    table = shims::WrapTable<Failing>(g_inner);
    table.GetProcAddress = &FailingGetProcAddress;
    // A close that is made to fail would leave its object open for the whole test; the logic can't look at such results
    // anyway. A process always has its heap.
    table.CloseHandle = inner.CloseHandle;
    table.FindClose = inner.FindClose;
    table._lclose = inner._lclose;
    table.RegCloseKey = inner.RegCloseKey;
    table.CloseServiceHandle = inner.CloseServiceHandle;
    table.SetupCloseFileQueue = inner.SetupCloseFileQueue;
    table.ClosePrinter = inner.ClosePrinter;
    table.DeleteDC = inner.DeleteDC;
    table.WNetCloseEnum = inner.WNetCloseEnum;
    table.FreeLibrary = inner.FreeLibrary;
    table.HeapFree = inner.HeapFree;
    Reset();
    return table;
}

void Reset() {
    g_faults.clear();
    g_callCount = 0;
    g_lastFailed.clear();
}

std::size_t CallCount() {
    return g_callCount;
}

void FailNth(std::size_t nth, DWORD code, bool persistent) {
    g_faults.push_back({.name = "", .nth = nth, .code = code, .persistent = persistent});
}

void FailCall(std::string_view name, std::size_t nth, DWORD code, bool persistent) {
    g_faults.push_back({.name = std::string(name), .nth = nth, .code = code, .persistent = persistent});
}

std::string LastFailed() {
    return g_lastFailed;
}

}  // namespace pikel::faults
