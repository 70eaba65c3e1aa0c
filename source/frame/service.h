// Stops, starts and restarts a service together with the services that depend on it.
#pragma once

#include "platform/owned.h"

namespace pikel {

inline constexpr char kSpooler[] = "Spooler";
inline constexpr DWORD kManagerAccess = GENERIC_EXECUTE;
inline constexpr DWORD kServiceAccess = SERVICE_ALL_ACCESS;

/// A service control manager handle and a service handle. Closed service first, then manager.
class ServiceHandles {
  public:
    ServiceHandles() = default;
    ~ServiceHandles() { Close(); }
    ServiceHandles(const ServiceHandles&) = delete;
    ServiceHandles& operator=(const ServiceHandles&) = delete;

    void Close() {
        m_service.Reset();
        m_manager.Reset();
    }
    SC_HANDLE Manager() const { return m_manager.Get(); }
    SC_HANDLE Service() const { return m_service.Get(); }

  private:
    friend DWORD OpenServiceHandles(ServiceHandles& handles, LPCSTR lpszServiceName, DWORD dwManagerAccess,
                                    DWORD dwServiceAccess);
    ServiceHandle m_manager;
    ServiceHandle m_service;
};

/// Opens the local manager and a service, after closing what the pair holds. Never leaves the pair half open.
/// @return 0 or the code of the open that failed
DWORD OpenServiceHandles(ServiceHandles& handles, LPCSTR lpszServiceName, DWORD dwManagerAccess, DWORD dwServiceAccess);

/// The services that depend on one.
/// @param dwStateFilter  SERVICE_ACTIVE or SERVICE_STATE_ALL
/// @param list [out]     *pdwCount elements, or empty for none
DWORD Win32EnumDependentServices(SC_HANDLE hService, DWORD dwStateFilter, HeapBlock& list, DWORD* pdwCount);

/// @param config [out]  a QUERY_SERVICE_CONFIGA with its texts
DWORD Win32QueryServiceConfig(SC_HANDLE hService, HeapBlock& config);

/// Stops the active dependents and then the service. A dependent that won't stop is passed over.
/// @return 0; 1460 when the service doesn't stop within about 30 seconds; else the system's code
DWORD Win32StopService(const ServiceHandles& handles);

/// Starts the service and then all its dependents, also those that were not running before.
DWORD Win32StartService(const ServiceHandles& handles);

/// Stops the service with its active dependents, waits until its program file is free, and starts them again.
DWORD Win32RestartService(const ServiceHandles& handles);

}  // namespace pikel
