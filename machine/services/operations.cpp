// The calls of the service control manager.
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "machine/base/machine.h"
#include "machine/base/text.h"
#include "machine/operations.h"
#include "machine/registry/registry.h"
#include "machine/services/handles.h"
#include "machine/services/services.h"

namespace pikel::simulated {

namespace {

constexpr DWORD kControlInterrogate = 4;
constexpr DWORD kInvalidAddress = 487;  // ERROR_INVALID_ADDRESS

constexpr DWORD kQueryConfig = 0x1;
constexpr DWORD kQueryStatus = 0x4;
constexpr DWORD kEnumerateDependents = 0x8;
constexpr DWORD kStart = 0x10;
constexpr DWORD kStop = 0x20;
constexpr DWORD kInterrogate = 0x80;

Registry& Keys() {
    return Current().Registry();
}

std::string KeyOf(const std::string& name) {
    return "HKLM\\SYSTEM\\CurrentControlSet\\Services\\" + name;
}

std::string DisplayName(const std::string& name) {
    return Keys().Text(KeyOf(name), "DisplayName", name);
}

/// Lays texts out behind an array of records in the caller's buffer.
class TextArea {
  public:
    explicit TextArea(void* start) : m_next(static_cast<char*>(start)) {}
    LPSTR Put(std::string_view text) {
        char* place = m_next;
        std::memcpy(place, text.data(), text.size());
        place[text.size()] = '\0';
        m_next += text.size() + 1;
        return place;
    }

  private:
    char* m_next;
};

}  // namespace

SC_HANDLE WINAPI OpenSCManagerA(LPCSTR lpMachineName, LPCSTR lpDatabaseName, DWORD dwDesiredAccess) {
    Machine& machine = Current();
    if (machine.Is9x()) {
        return Fail<SC_HANDLE>(ERROR_CALL_NOT_IMPLEMENTED, nullptr);
    }
    std::string_view host = lpMachineName == nullptr ? "" : lpMachineName;
    if (host.starts_with("\\\\")) {
        host.remove_prefix(2);
    }
    if (!host.empty() && !EqualNoCase(host, machine.System().computerName)) {
        return Fail<SC_HANDLE>(RPC_S_SERVER_UNAVAILABLE, nullptr);
    }
    std::string_view database = lpDatabaseName == nullptr ? "ServicesActive" : lpDatabaseName;
    if (!EqualNoCase(database, "ServicesActive")) {
        bool isKnown = EqualNoCase(database, "ServicesFailed");
        return Fail<SC_HANDLE>(isKnown ? ERROR_DATABASE_DOES_NOT_EXIST : ERROR_INVALID_NAME, nullptr);
    }
    return OpenManager(dwDesiredAccess);
}

SC_HANDLE WINAPI OpenServiceA(SC_HANDLE hSCManager, LPCSTR lpServiceName, DWORD dwDesiredAccess) {
    if (Current().Is9x()) {
        return Fail<SC_HANDLE>(ERROR_CALL_NOT_IMPLEMENTED, nullptr);
    }
    const OpenService* manager = FindService(hSCManager);
    if (manager == nullptr || !manager->name.empty()) {
        return Fail<SC_HANDLE>(ERROR_INVALID_HANDLE, nullptr);
    }
    if (lpServiceName == nullptr || *lpServiceName == '\0') {
        return Fail<SC_HANDLE>(ERROR_INVALID_NAME, nullptr);
    }
    if (!Current().Services().Exists(lpServiceName)) {
        return Fail<SC_HANDLE>(ERROR_SERVICE_DOES_NOT_EXIST, nullptr);
    }
    return OpenOneService(lpServiceName, dwDesiredAccess);
}

BOOL WINAPI CloseServiceHandle(SC_HANDLE hSCObject) {
    if (Current().Is9x()) {
        return Fail(ERROR_CALL_NOT_IMPLEMENTED, FALSE);
    }
    bool isClosed = Current().Handles().Close(HandleKind::Service, hSCObject);
    return isClosed ? TRUE : Fail(ERROR_INVALID_HANDLE, FALSE);
}

BOOL WINAPI QueryServiceStatus(SC_HANDLE hService, LPSERVICE_STATUS lpServiceStatus) {
    const std::string* name = ServiceOf(hService, kQueryStatus);
    if (name == nullptr) {
        return FALSE;
    }
    if (lpServiceStatus == nullptr) {
        return Fail(kInvalidAddress, FALSE);
    }
    Current().Services().State(*name);  // settles what is due
    *lpServiceStatus = Current().Services().Status(*name);
    return TRUE;
}

BOOL WINAPI ControlService(SC_HANDLE hService, DWORD dwControl, LPSERVICE_STATUS lpServiceStatus) {
    if (dwControl != SERVICE_CONTROL_STOP && dwControl != kControlInterrogate) {
        return Fail(ERROR_INVALID_SERVICE_CONTROL, FALSE);
    }
    bool isStop = dwControl == SERVICE_CONTROL_STOP;
    const std::string* name = ServiceOf(hService, isStop ? kStop : kInterrogate);
    if (name == nullptr) {
        return FALSE;
    }
    if (lpServiceStatus == nullptr) {
        return Fail(kInvalidAddress, FALSE);
    }
    Services& services = Current().Services();
    DWORD code = ERROR_SUCCESS;
    if (isStop) {
        code = services.Stop(*name);
    } else if (services.State(*name) == SERVICE_STOPPED) {
        code = ERROR_SERVICE_NOT_ACTIVE;
    }
    *lpServiceStatus = services.Status(*name);
    return Outcome(code);
}

BOOL WINAPI StartServiceA(SC_HANDLE hService, DWORD /*dwNumServiceArgs*/, LPCSTR* /*lpServiceArgVectors*/) {
    const std::string* name = ServiceOf(hService, kStart);
    return name == nullptr ? FALSE : Outcome(Current().Services().Start(*name));
}

BOOL WINAPI EnumDependentServicesA(SC_HANDLE hService, DWORD dwServiceState, LPENUM_SERVICE_STATUSA lpServices,
                                   DWORD cbBufSize, LPDWORD pcbBytesNeeded, LPDWORD lpServicesReturned) {
    const std::string* name = ServiceOf(hService, kEnumerateDependents);
    if (name == nullptr) {
        return FALSE;
    }
    if (pcbBytesNeeded == nullptr || lpServicesReturned == nullptr) {
        return Fail(kInvalidAddress, FALSE);
    }
    if (dwServiceState < SERVICE_ACTIVE || dwServiceState > SERVICE_STATE_ALL) {
        return Fail(ERROR_INVALID_PARAMETER, FALSE);
    }
    Services& services = Current().Services();
    std::vector<std::string> listed;
    std::size_t size = 0;
    for (std::string& dependent : services.Dependents(*name)) {
        bool isActive = services.State(dependent) != SERVICE_STOPPED;
        if ((dwServiceState & (isActive ? SERVICE_ACTIVE : SERVICE_INACTIVE)) != 0) {
            size += sizeof(ENUM_SERVICE_STATUSA) + dependent.size() + DisplayName(dependent).size() + 2;
            listed.push_back(std::move(dependent));
        }
    }
    *pcbBytesNeeded = 0;
    *lpServicesReturned = 0;
    if (size > cbBufSize || (size != 0 && lpServices == nullptr)) {
        *pcbBytesNeeded = static_cast<DWORD>(size);
        return Fail(ERROR_MORE_DATA, FALSE);
    }
    TextArea texts(lpServices + listed.size());
    for (std::size_t i = 0; i < listed.size(); ++i) {
        lpServices[i].lpServiceName = texts.Put(listed[i]);
        lpServices[i].lpDisplayName = texts.Put(DisplayName(listed[i]));
        lpServices[i].ServiceStatus = services.Status(listed[i]);
    }
    *lpServicesReturned = static_cast<DWORD>(listed.size());
    return TRUE;
}

BOOL WINAPI QueryServiceConfigA(SC_HANDLE hService, LPQUERY_SERVICE_CONFIGA lpServiceConfig, DWORD cbBufSize,
                                LPDWORD pcbBytesNeeded) {
    const std::string* name = ServiceOf(hService, kQueryConfig);
    if (name == nullptr) {
        return FALSE;
    }
    if (pcbBytesNeeded == nullptr) {
        return Fail(kInvalidAddress, FALSE);
    }
    const std::string key = KeyOf(*name);
    const std::string path = Current().Services().BinaryPath(*name);
    const std::string group = Keys().Text(key, "Group");
    // A multi-string without its last NUL, which Put adds.
    std::string needed = JoinMultiString(Keys().Texts(key, "DependOnService"));
    needed.pop_back();
    const std::string account = Keys().Text(key, "ObjectName", "LocalSystem");
    const std::string displayName = DisplayName(*name);
    std::size_t size = sizeof(QUERY_SERVICE_CONFIGA) + path.size() + group.size() + needed.size() + account.size() +
                       displayName.size() + 5;
    *pcbBytesNeeded = static_cast<DWORD>(size);
    if (size > cbBufSize || lpServiceConfig == nullptr) {
        return Fail(ERROR_INSUFFICIENT_BUFFER, FALSE);
    }
    TextArea texts(lpServiceConfig + 1);
    lpServiceConfig->dwServiceType = Keys().Number(key, "Type", SERVICE_WIN32_OWN_PROCESS);
    lpServiceConfig->dwStartType = Keys().Number(key, "Start", SERVICE_DEMAND_START);
    lpServiceConfig->dwErrorControl = Keys().Number(key, "ErrorControl");
    lpServiceConfig->lpBinaryPathName = texts.Put(path);
    lpServiceConfig->lpLoadOrderGroup = texts.Put(group);
    lpServiceConfig->dwTagId = 0;
    lpServiceConfig->lpDependencies = texts.Put(needed);
    lpServiceConfig->lpServiceStartName = texts.Put(account);
    lpServiceConfig->lpDisplayName = texts.Put(displayName);
    return TRUE;
}

}  // namespace pikel::simulated
