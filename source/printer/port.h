// Creates a network printer port through a port SDK library that the caller names.
#pragma once

#include "platform/types.h"

namespace pikel {

/// Loads a port SDK library and has it create a port, with the port monitor that suits the running system.
///
/// The monitor goes by the system alone: before Windows 2000 it is an LPR monitor for a raw port as well.
///
/// @param lpSdkPath      path of the library, which exports "CreatePort". Required.
/// @param portName       name of the port, at most 20 bytes. Required.
/// @param protocolFlag   0 a raw port, else an LPR port
/// @param lpQueueName    LPR queue, or null for none
/// @param byteCountFlag  non-zero asks an LPR port to count bytes
/// @param result [out]   the text that the SDK returns, when size bytes hold it with its NUL and it isn't empty; else
///                       untouched. May be null.
/// @param size           bytes at result
/// @return 0, also when the text didn't fit; 87 for a null path or name, or a name that is too long; 8 without memory;
///         1359 when the SDK refuses; else the code of the load
DWORD PI_CreatePort(LPCSTR lpSdkPath, LPCSTR portName, DWORD protocolFlag, LPCSTR lpQueueName, INT byteCountFlag,
                    LPSTR result, DWORD size);

}  // namespace pikel
