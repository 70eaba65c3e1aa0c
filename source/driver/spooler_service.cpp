// Restarting and starting the spooler's service on the way to one of its calls.
#include "driver/spooler_service.h"

#include "frame/log.h"

namespace pikel {

void WithSpoolerService(ServiceHandles& handles, DWORD (*pfnAction)(const ServiceHandles&), LPCSTR lpszFailure) {
    DWORD dwCode = OpenServiceHandles(handles, kSpooler, kManagerAccess, kServiceAccess);
    if (dwCode != 0) {
        WriteLog("Service(%s).Open Error(%d)", kSpooler, dwCode);
        return;
    }
    dwCode = pfnAction(handles);
    if (dwCode != 0) {
        WriteLog(lpszFailure, kSpooler, dwCode);
    }
}

}  // namespace pikel
