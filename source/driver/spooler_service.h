// Restarting and starting the spooler's service on the way to one of its calls.
#pragma once

#include "frame/service.h"

namespace pikel {

/// Log format of a failed start, and of a failed restart where nothing else is told.
inline constexpr char kServiceStartFailure[] = "Service(%s).Start Error(%d)";

/// Milliseconds before a call of the spooler that failed is tried again.
inline constexpr DWORD kWaitBeforeSecondTry = 200;

/// Does something with the spooler's service. Failures are logged and end nothing: the call that follows decides.
/// @param handles      [out] the service; stays open
/// @param pfnAction    Win32RestartService or Win32StartService
/// @param lpszFailure  log format of a failure of the action, for the service's name and the code
void WithSpoolerService(ServiceHandles& handles, DWORD (*pfnAction)(const ServiceHandles&), LPCSTR lpszFailure);

}  // namespace pikel
