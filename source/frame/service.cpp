// Service control with dependents: the state wait, stop, start, and the restart that waits for the program file.
#include "frame/service.h"

#include <span>

#include "frame/log.h"
#include "frame/text.h"

namespace pikel {

namespace {

constexpr DWORD kFirstWait = 50;  // milliseconds, as all waits here
constexpr int kStateRounds = 30;
constexpr DWORD kStateWait = 1000;
constexpr int kConfirmRounds = 600;
constexpr DWORD kConfirmWait = 100;
constexpr DWORD kConfirmFailureWait = 1000;

using DependentServices = std::span<const ENUM_SERVICE_STATUSA>;

BOOL SendCommand(SC_HANDLE hService, DWORD dwTarget) {
    if (dwTarget == SERVICE_STOPPED) {
        SERVICE_STATUS status = {};
        return Platform().ControlService(hService, SERVICE_CONTROL_STOP, &status);
    }
    return Platform().StartServiceA(hService, 0, nullptr);
}

/// Brings a service to a state, and waits for that within about 30 seconds. Sends nothing when it is there already.
/// @param dwTarget  SERVICE_STOPPED or SERVICE_RUNNING
/// @return 0; 1460 when the time ran out; else the system's code
DWORD BringToState(SC_HANDLE hService, DWORD dwTarget) {
    SERVICE_STATUS status = {};
    if (!Platform().QueryServiceStatus(hService, &status)) {
        return Platform().GetLastError();
    }
    if (status.dwCurrentState == dwTarget) {
        return ERROR_SUCCESS;
    }
    if (!SendCommand(hService, dwTarget)) {
        return Platform().GetLastError();
    }
    Platform().Sleep(kFirstWait);
    for (int nRound = 0; nRound < kStateRounds; ++nRound) {
        if (!Platform().QueryServiceStatus(hService, &status)) {
            return Platform().GetLastError();
        }
        if (status.dwCurrentState == dwTarget) {
            return ERROR_SUCCESS;
        }
        Platform().Sleep(kStateWait);
    }
    return ERROR_TIMEOUT;
}

DependentServices DependentsIn(const HeapBlock& list, DWORD dwCount) {
    return {static_cast<const ENUM_SERVICE_STATUSA*>(list.Get()), dwCount};
}

/// Stops services in the order given. One that can't be opened or stopped never stops the work.
void StopDependents(DependentServices services) {
    for (const ENUM_SERVICE_STATUSA& service : services) {
        ServiceHandles handles;
        const DWORD dwResult = OpenServiceHandles(handles, service.lpServiceName, kManagerAccess, kServiceAccess);
        if (dwResult != ERROR_SUCCESS) {
            WriteLogDetail("Win32StopService error(%s):%d", service.lpServiceName, dwResult);
            continue;
        }
        BringToState(handles.Service(), SERVICE_STOPPED);
    }
}

/// Starts services from the last to the first. One that can't be opened or started never stops the work.
void StartDependents(DependentServices services) {
    for (auto service = services.rbegin(); service != services.rend(); ++service) {
        ServiceHandles handles;
        const DWORD dwResult = OpenServiceHandles(handles, service->lpServiceName, kManagerAccess, kServiceAccess);
        if (dwResult != ERROR_SUCCESS) {
            WriteLogDetail("Win32StartService error(%s):%d", service->lpServiceName, dwResult);
            continue;
        }
        BringToState(handles.Service(), SERVICE_RUNNING);
    }
}

/// One look at a stopped service's program file.
/// @return true while the file is held, so that another look is worth while
bool IsProgramHeld(SC_HANDLE hService) {
    HeapBlock block;
    if (Win32QueryServiceConfig(hService, block) != ERROR_SUCCESS || !block) {
        const DWORD dwError = Platform().GetLastError();
        Platform().Sleep(kConfirmFailureWait);
        WriteLogDetail("*** Win32QueryServiceConfig error :%d ***", dwError);
        return false;
    }
    const auto* pConfig = static_cast<const QUERY_SERVICE_CONFIGA*>(block.Get());
    const LPCSTR lpszDisplayName = TextOrEmpty(pConfig->lpDisplayName);
    const LPCSTR lpszProgram = TextOrEmpty(pConfig->lpBinaryPathName);

    FileHandle file(Platform().CreateFileA(lpszProgram, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                           FILE_ATTRIBUTE_NORMAL, nullptr));
    if (file) {
        file.Reset();
        WriteLogDetail("...Service Stopped(%s:%s)", lpszDisplayName, lpszProgram);
        return false;
    }
    const DWORD dwError = Platform().GetLastError();
    if (dwError == ERROR_SHARING_VIOLATION || dwError == ERROR_LOCK_VIOLATION) {
        WriteLogDetail("...Service(%s:%s) is still active", lpszDisplayName, lpszProgram);
        return true;
    }
    // A command line with quotes or arguments is no file name and ends here.
    Platform().Sleep(kConfirmFailureWait);
    WriteLogDetail("*** CreateFile(%s:%s):%d error ***", lpszDisplayName, lpszProgram, dwError);
    return false;
}

/// Waits until a stopped service's program file can be opened for exclusive access. This only delays the restart:
/// neither a failure nor the end of the rounds makes it fail.
void ConfirmStop(SC_HANDLE hService) {
    int nRound = 0;
    while (nRound < kConfirmRounds && IsProgramHeld(hService)) {
        Platform().Sleep(kConfirmWait);
        ++nRound;
        WriteLogDetail("Win32QueryServiceStop - Confirm Stop...%d", nRound);
    }
}

}  // namespace

DWORD OpenServiceHandles(ServiceHandles& handles, LPCSTR lpszServiceName, DWORD dwManagerAccess,
                         DWORD dwServiceAccess) {
    handles.Close();
    handles.m_manager.Reset(Platform().OpenSCManagerA(nullptr, nullptr, dwManagerAccess));
    if (!handles.m_manager) {
        return Platform().GetLastError();
    }
    handles.m_service.Reset(Platform().OpenServiceA(handles.m_manager.Get(), lpszServiceName, dwServiceAccess));
    if (!handles.m_service) {
        const DWORD dwError = Platform().GetLastError();
        handles.Close();
        return dwError;
    }
    return ERROR_SUCCESS;
}

DWORD Win32EnumDependentServices(SC_HANDLE hService, DWORD dwStateFilter, HeapBlock& list, DWORD* pdwCount) {
    list.Reset();
    *pdwCount = 0;
    DWORD dwNeeded = 0;
    DWORD dwCount = 0;
    if (Platform().EnumDependentServicesA(hService, dwStateFilter, nullptr, 0, &dwNeeded, &dwCount)) {
        return ERROR_SUCCESS;
    }
    const DWORD dwError = Platform().GetLastError();
    if (dwError != ERROR_MORE_DATA) {
        return dwError;
    }
    const DWORD dwSize = dwNeeded;
    HeapBlock block = AllocateHeap(dwSize);
    if (!block) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    if (!Platform().EnumDependentServicesA(hService, dwStateFilter, static_cast<LPENUM_SERVICE_STATUSA>(block.Get()),
                                           dwSize, &dwNeeded, &dwCount)) {
        return Platform().GetLastError();
    }
    list = std::move(block);
    *pdwCount = dwCount;
    return ERROR_SUCCESS;
}

DWORD Win32QueryServiceConfig(SC_HANDLE hService, HeapBlock& config) {
    config.Reset();
    DWORD dwNeeded = 0;
    if (Platform().QueryServiceConfigA(hService, nullptr, 0, &dwNeeded)) {
        return ERROR_SUCCESS;
    }
    const DWORD dwError = Platform().GetLastError();
    if (dwError != ERROR_INSUFFICIENT_BUFFER) {
        return dwError;
    }
    const DWORD dwSize = dwNeeded;
    HeapBlock block = AllocateHeap(dwSize);
    if (!block) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    if (!Platform().QueryServiceConfigA(hService, static_cast<LPQUERY_SERVICE_CONFIGA>(block.Get()), dwSize,
                                        &dwNeeded)) {
        return Platform().GetLastError();
    }
    config = std::move(block);
    return ERROR_SUCCESS;
}

DWORD Win32StopService(const ServiceHandles& handles) {
    HeapBlock list;
    DWORD dwCount = 0;
    const DWORD dwResult = Win32EnumDependentServices(handles.Service(), SERVICE_ACTIVE, list, &dwCount);
    if (dwResult != ERROR_SUCCESS) {
        return dwResult;
    }
    StopDependents(DependentsIn(list, dwCount));
    return BringToState(handles.Service(), SERVICE_STOPPED);
}

DWORD Win32StartService(const ServiceHandles& handles) {
    HeapBlock list;
    DWORD dwCount = 0;
    DWORD dwResult = Win32EnumDependentServices(handles.Service(), SERVICE_STATE_ALL, list, &dwCount);
    if (dwResult != ERROR_SUCCESS) {
        return dwResult;
    }
    dwResult = BringToState(handles.Service(), SERVICE_RUNNING);
    if (dwResult != ERROR_SUCCESS) {
        return dwResult;
    }
    StartDependents(DependentsIn(list, dwCount));
    return ERROR_SUCCESS;
}

DWORD Win32RestartService(const ServiceHandles& handles) {
    HeapBlock list;
    DWORD dwCount = 0;
    DWORD dwResult = Win32EnumDependentServices(handles.Service(), SERVICE_ACTIVE, list, &dwCount);
    if (dwResult != ERROR_SUCCESS) {
        WriteLogDetail("Win32EnumDependentServices error: %d", dwResult);
        return dwResult;
    }
    // Only these come back at the end: one that was down before stays down.
    const DependentServices services = DependentsIn(list, dwCount);
    StopDependents(services);
    dwResult = BringToState(handles.Service(), SERVICE_STOPPED);
    if (dwResult != ERROR_SUCCESS) {
        return dwResult;
    }
    ConfirmStop(handles.Service());
    dwResult = BringToState(handles.Service(), SERVICE_RUNNING);
    if (dwResult != ERROR_SUCCESS) {
        return dwResult;
    }
    StartDependents(services);
    return ERROR_SUCCESS;
}

}  // namespace pikel
