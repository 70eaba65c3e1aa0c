// COM, as far as the machine has it: it is set up thread by thread, and its one class is the shell link.
#include <memory>
#include <vector>

#include "machine/operations.h"
#include "machine/shell/shell_link.h"

namespace pikel::simulated {

namespace {

constexpr HRESULT kNoAggregation = static_cast<HRESULT>(0x80040110);

/// One successful CoInitialize that waits for its CoUninitialize.
struct Initialization {
    void* handle = nullptr;
};

/// Those of this thread on the machine that is current; what a closed machine left behind doesn't count.
std::vector<std::shared_ptr<Initialization>>& InitializationsOf(Machine& machine) {
    thread_local std::vector<std::shared_ptr<Initialization>> initializations;
    std::erase_if(initializations, [&machine](const std::shared_ptr<Initialization>& one) {
        auto* open = machine.Handles().Find<Initialization>(HandleKind::ComObject, one->handle);
        return open != one.get();
    });
    return initializations;
}

}  // namespace

HRESULT WINAPI CoInitialize(LPVOID pvReserved) {
    if (pvReserved != nullptr) {
        return E_INVALIDARG;
    }
    Machine& machine = Current();
    auto& initializations = InitializationsOf(machine);
    const HRESULT result = initializations.empty() ? S_OK : S_FALSE;
    auto one = std::make_shared<Initialization>();
    one->handle = machine.Handles().Open(HandleKind::ComObject, one, "COM of a thread");
    initializations.push_back(std::move(one));
    return result;
}

void WINAPI CoUninitialize() {
    Machine& machine = Current();
    auto& initializations = InitializationsOf(machine);
    if (initializations.empty()) {
        machine.Handles().NoteMisuse("CoUninitialize on a thread without COM");
        return;
    }
    void* handle = initializations.back()->handle;
    initializations.pop_back();
    machine.Handles().Close(HandleKind::ComObject, handle);
}

HRESULT WINAPI CoCreateInstance(REFCLSID rclsid, LPUNKNOWN pUnkOuter, DWORD dwClsContext, REFIID riid, LPVOID* ppv) {
    if (ppv == nullptr) {
        return E_INVALIDARG;
    }
    *ppv = nullptr;
    Machine& machine = Current();
    if (InitializationsOf(machine).empty()) {
        return CO_E_NOTINITIALIZED;
    }
    if (!(rclsid == CLSID_ShellLink) || (dwClsContext & CLSCTX_INPROC_SERVER) == 0) {
        return REGDB_E_CLASSNOTREG;
    }
    if (pUnkOuter != nullptr) {
        return kNoAggregation;
    }
    IShellLinkA* link = MakeShellLink(machine);
    const HRESULT result = link->QueryInterface(riid, ppv);
    link->Release();
    return result;
}

}  // namespace pikel::simulated
