// Handles of the service control manager and of services.
#include "machine/services/handles.h"

#include <memory>

#include "machine/base/machine.h"

namespace pikel::simulated {

namespace {

// Rights on the manager and on a service, and what generic rights stand for (winsvc.h).
constexpr DWORD kManagerAll = 0xF003F;
constexpr DWORD kManagerRead = 0x20000 | 0x4 | 0x10;
constexpr DWORD kManagerWrite = 0x20000 | 0x2 | 0x20;
constexpr DWORD kManagerExecute = 0x20000 | 0x1 | 0x8;
constexpr DWORD kManagerForEverybody = 0x20000 | 0x1 | 0x4 | 0x10;
constexpr DWORD kServiceRead = 0x20000 | 0x1 | 0x4 | 0x8 | 0x80;
constexpr DWORD kServiceWrite = 0x20000 | 0x2;
constexpr DWORD kServiceExecute = 0x20000 | 0x10 | 0x20 | 0x40 | 0x100;
constexpr DWORD kServiceForEverybody = kServiceRead | 0x100;

struct GenericRights {
    DWORD read, write, execute, all;
};

DWORD Mapped(DWORD access, const GenericRights& rights) {
    DWORD mapped = access & 0x0fffffff;
    mapped |= (access & GENERIC_READ) != 0 ? rights.read : 0;
    mapped |= (access & GENERIC_WRITE) != 0 ? rights.write : 0;
    mapped |= (access & GENERIC_EXECUTE) != 0 ? rights.execute : 0;
    mapped |= (access & GENERIC_ALL) != 0 ? rights.all : 0;
    return mapped;
}

bool IsRefused(DWORD access, DWORD forEverybody) {
    return !Current().System().administrator && (access & ~forEverybody) != 0;
}

SC_HANDLE OpenHandle(std::string name, DWORD access) {
    std::string description = name.empty() ? "service control manager" : name;
    auto object = std::make_shared<OpenService>(OpenService{std::move(name), access});
    return static_cast<SC_HANDLE>(
        Current().Handles().Open(HandleKind::Service, std::move(object), std::move(description)));
}

}  // namespace

SC_HANDLE OpenManager(DWORD access) {
    const DWORD rights = Mapped(access, {kManagerRead, kManagerWrite, kManagerExecute, kManagerAll});
    if (IsRefused(rights, kManagerForEverybody)) {
        return Fail<SC_HANDLE>(ERROR_ACCESS_DENIED, nullptr);
    }
    return OpenHandle("", rights);
}

SC_HANDLE OpenOneService(const std::string& name, DWORD access) {
    const DWORD rights = Mapped(access, {kServiceRead, kServiceWrite, kServiceExecute, SERVICE_ALL_ACCESS});
    if (IsRefused(rights, kServiceForEverybody)) {
        return Fail<SC_HANDLE>(ERROR_ACCESS_DENIED, nullptr);
    }
    return OpenHandle(name, rights);
}

OpenService* FindService(SC_HANDLE handle) {
    return Current().Handles().Find<OpenService>(HandleKind::Service, handle);
}

const std::string* ServiceOf(SC_HANDLE handle, DWORD right) {
    if (Current().Is9x()) {
        return Fail<const std::string*>(ERROR_CALL_NOT_IMPLEMENTED, nullptr);
    }
    const OpenService* service = FindService(handle);
    if (service == nullptr || service->name.empty()) {
        return Fail<const std::string*>(ERROR_INVALID_HANDLE, nullptr);
    }
    if ((service->access & right) == 0) {
        return Fail<const std::string*>(ERROR_ACCESS_DENIED, nullptr);
    }
    return &service->name;
}

}  // namespace pikel::simulated
