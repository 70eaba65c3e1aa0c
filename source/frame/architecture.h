// The spellings of a driver's target system.
#pragma once

#include "platform/types.h"

namespace pikel {

inline constexpr char kEnvironment9x[] = "Windows 4.0";
inline constexpr char kEnvironmentX86[] = "Windows NT x86";
inline constexpr char kEnvironmentIa64[] = "Windows IA64";
inline constexpr char kEnvironmentX64[] = "Windows x64";

/// DriverArchitecture of a dwArchitecture value: 1 "Windows 4.0", 2 and 3 "Windows NT x86", 4 "Windows IA64", 5
/// "Windows x64"; null for any other.
LPCSTR DriverArchitectureOf(DWORD dwArchitecture);

/// DriverArchitecture of a DriverVersionCode and a ProcessorCode, as the direct routes read them: version 0 is "Windows
/// 4.0"; 2 and 3 go by the processor; any other version is "Windows NT x86".
LPCSTR DriverArchitectureOf(DWORD dwDriverVersion, DWORD dwProcessor);

}  // namespace pikel
