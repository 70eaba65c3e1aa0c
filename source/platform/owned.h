// Guards for what the platform hands out. A guard is move-only, has no base, and closes through the platform when it
// goes. Logic makes no naked close, except where the place of a close, or its absence, is part of the behaviour.
#pragma once

#include <utility>

#include "platform/platform.h"

namespace pikel {

/// Owner of one value of Policy::Value. Policy: Value, static Value Empty(), static void Close(Value).
template <class Policy>
class Owned {
  public:
    using Value = typename Policy::Value;

    Owned() = default;
    explicit Owned(Value value) : m_value(value) {}
    Owned(Owned&& other) noexcept : m_value(other.Release()) {}
    Owned& operator=(Owned&& other) noexcept {
        if (this != &other) {
            Reset(other.Release());
        }
        return *this;
    }
    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;
    ~Owned() { Reset(); }

    Value Get() const { return m_value; }
    explicit operator bool() const { return m_value != Policy::Empty(); }

    /// Closes what is held and takes over value.
    void Reset(Value value = Policy::Empty()) {
        Value old = std::exchange(m_value, value);
        if (old != Policy::Empty()) {
            Policy::Close(old);
        }
    }

    /// Gives the value away without closing it.
    Value Release() { return std::exchange(m_value, Policy::Empty()); }

    /// For operations that hand a value out through a pointer: closes what is held first.
    Value* Out() {
        Reset();
        return &m_value;
    }

  private:
    Value m_value = Policy::Empty();
};

namespace closer {

struct File {
    using Value = HANDLE;
    static Value Empty() { return INVALID_HANDLE_VALUE; }
    static void Close(Value value) { Platform().CloseHandle(value); }
};
struct Find {
    using Value = HANDLE;
    static Value Empty() { return INVALID_HANDLE_VALUE; }
    static void Close(Value value) { Platform().FindClose(value); }
};
struct ReadFile {
    using Value = HFILE;
    static Value Empty() { return HFILE_ERROR; }
    static void Close(Value value) { Platform()._lclose(value); }
};
struct Inf {
    using Value = HINF;
    static Value Empty() { return INVALID_HANDLE_VALUE; }
    static void Close(Value value) { Platform().SetupCloseInfFile(value); }
};
struct FileQueue {
    using Value = HSPFILEQ;
    static Value Empty() { return INVALID_HANDLE_VALUE; }
    static void Close(Value value) { Platform().SetupCloseFileQueue(value); }
};
struct QueueContext {
    using Value = PVOID;
    static Value Empty() { return nullptr; }
    static void Close(Value value) { Platform().SetupTermDefaultQueueCallback(value); }
};
struct Printer {
    using Value = HANDLE;
    static Value Empty() { return nullptr; }
    static void Close(Value value) { Platform().ClosePrinter(value); }
};
struct RegistryKey {
    using Value = HKEY;
    static Value Empty() { return nullptr; }
    static void Close(Value value) { Platform().RegCloseKey(value); }
};
struct Service {
    using Value = SC_HANDLE;
    static Value Empty() { return nullptr; }
    static void Close(Value value) { Platform().CloseServiceHandle(value); }
};
struct Library {
    using Value = HMODULE;
    static Value Empty() { return nullptr; }
    static void Close(Value value) { Platform().FreeLibrary(value); }
};
struct HeapBlock {
    using Value = void*;
    static Value Empty() { return nullptr; }
    static void Close(Value value) { Platform().HeapFree(Platform().GetProcessHeap(), 0, value); }
};
struct LocalBlock {
    using Value = HLOCAL;
    static Value Empty() { return nullptr; }
    static void Close(Value value) { Platform().LocalFree(value); }
};
struct GlobalBlock {
    using Value = HGLOBAL;
    static Value Empty() { return nullptr; }
    static void Close(Value value) { Platform().GlobalFree(value); }
};
struct Token {
    using Value = HANDLE;
    static Value Empty() { return nullptr; }
    static void Close(Value value) { Platform().CloseHandle(value); }
};
struct Sid {
    using Value = PSID;
    static Value Empty() { return nullptr; }
    static void Close(Value value) { Platform().FreeSid(value); }
};
struct NetworkEnumeration {
    using Value = HANDLE;
    static Value Empty() { return nullptr; }
    static void Close(Value value) { Platform().WNetCloseEnum(value); }
};
/// COM on the calling thread, set up or not.
struct ThreadCom {
    using Value = bool;
    static Value Empty() { return false; }
    static void Close(Value) { Platform().CoUninitialize(); }
};
template <class Interface>
struct ComObject {
    using Value = Interface*;
    static Value Empty() { return nullptr; }
    static void Close(Value value) { value->Release(); }
};
struct Bstr {
    using Value = BSTR;
    static Value Empty() { return nullptr; }
    static void Close(Value value) { Platform().SysFreeString(value); }
};

}  // namespace closer

using FileHandle = Owned<closer::File>;
using FindHandle = Owned<closer::Find>;
using ReadFileHandle = Owned<closer::ReadFile>;
using InfHandle = Owned<closer::Inf>;
using FileQueueHandle = Owned<closer::FileQueue>;
using QueueCallbackContext = Owned<closer::QueueContext>;
using PrinterHandle = Owned<closer::Printer>;
using RegistryKey = Owned<closer::RegistryKey>;
using ServiceHandle = Owned<closer::Service>;
using LoadedModule = Owned<closer::Library>;
using HeapBlock = Owned<closer::HeapBlock>;
using LocalBlock = Owned<closer::LocalBlock>;
using GlobalBlock = Owned<closer::GlobalBlock>;
using OwnedBstr = Owned<closer::Bstr>;
using TokenHandle = Owned<closer::Token>;
using OwnedSid = Owned<closer::Sid>;
using NetworkEnumeration = Owned<closer::NetworkEnumeration>;
using ThreadCom = Owned<closer::ThreadCom>;
template <class Interface>
using ComPointer = Owned<closer::ComObject<Interface>>;

/// Allocates a zeroed block of the process heap.
/// @param size  bytes; 0 gives a block all the same
/// @return an empty guard when memory ran out
inline HeapBlock AllocateHeap(SIZE_T size) {
    return HeapBlock(Platform().HeapAlloc(Platform().GetProcessHeap(), HEAP_ZERO_MEMORY, size));
}

/// A library loaded for the length of one call, with the one cast from FARPROC to a function's type.
///
///     LookedUp<looked_up::AddPrinterDriverExA> add("winspool.drv", "AddPrinterDriverExA");
///     if (!add) return add.Status();
///     add.Call()(...);
template <class Function>
class LookedUp {
  public:
    /// Loads the library and finds the export. The code of the step that failed is kept in Status().
    LookedUp(LPCSTR lpszModule, LPCSTR lpszName) : m_module(Platform().LoadLibraryA(lpszModule)) {
        if (!m_module) {
            m_dwStatus = Platform().GetLastError();
            return;
        }
        // By way of the one function type that may be cast to any other.
        auto pfnAny = reinterpret_cast<void (*)()>(Platform().GetProcAddress(m_module.Get(), lpszName));
        m_pfn = reinterpret_cast<Function>(pfnAny);
        if (m_pfn == nullptr) {
            m_dwStatus = Platform().GetLastError();
        }
    }

    explicit operator bool() const { return m_pfn != nullptr; }
    /// True when the library itself was loaded, with or without the export.
    bool IsLoaded() const { return static_cast<bool>(m_module); }
    /// Code of the failed load or look-up, as the system gave it.
    DWORD Status() const { return m_dwStatus; }
    Function Call() const { return m_pfn; }
    /// Frees the library before the object goes, where the behaviour fixes the place.
    void Free() {
        m_pfn = nullptr;
        m_module.Reset();
    }

  private:
    LoadedModule m_module;
    Function m_pfn = nullptr;
    DWORD m_dwStatus = 0;
};

}  // namespace pikel
