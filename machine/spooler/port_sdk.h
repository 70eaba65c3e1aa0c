// The machine's port SDK: a library that lies beside the installer's module and makes network printer ports through its
// one export, CreatePort. A port is a key below Control\Print\Monitors\<monitor>\Ports with the values HostName,
// Protocol (1 raw, 2 LPR), PortNumber, Queue, Double Spool (1: bytes are counted before sending) and SNMP Enabled.
#pragma once

#include <string>
#include <string_view>

#include "machine/base/machine.h"
#include "platform/types.h"

namespace pikel::simulated {

inline constexpr char kPortSdkPath[] = "C:\\Program Files\\pikel\\portsdk.dll";

// What CreatePort returns.
inline constexpr DWORD kPortCreated = 0x10000;
inline constexpr DWORD kPortBadArgument = 0x20000;  ///< null or impossible argument, unknown monitor or configuration
inline constexpr DWORD kPortNotPossible = 0x40000;  ///< the spooler doesn't run, or the user has no rights
inline constexpr DWORD kPortExists = 0x80000;

/// Makes the library known to a machine that was just opened.
void RegisterPortSdk(Machine& machine);

/// Makes a port.
/// @return one of the four
DWORD MakePort(Machine& machine, const std::string& monitor, std::string_view name, const std::string& queue,
               const std::string& configuration);

}  // namespace pikel::simulated
