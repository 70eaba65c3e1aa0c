// What a machine's system is: the fields that tell one Windows from another.
#pragma once

#include <string>
#include <string_view>

#include "platform/types.h"

namespace pikel::simulated {

/// Families in the order of their age. What a machine exports and does goes by this.
enum class Generation { Win32s, Windows95, Windows98, WindowsMe, Nt3, Nt4, Windows2000, Xp, Vista, Other };

/// The fields that describe a system, as machine.ini holds them.
struct SystemDescription {
    std::string name;  ///< "xp-x64"; any text for a machine described by hand
    DWORD major = 0;
    DWORD minor = 0;
    DWORD build = 0;  ///< as GetVersionExA reports it; on the 9x family the high word repeats the version
    DWORD platform = 0;
    std::string servicePack;  ///< szCSDVersion
    WORD servicePackMajor = 0;
    WORD servicePackMinor = 0;
    WORD suiteMask = 0;
    BYTE productType = 0;
    DWORD processorType = 586;     ///< dwProcessorType: 586, 2200 IA64, 8664 x64
    std::string windowsDirectory;  ///< "C:\WINDOWS", "C:\WINNT"
    std::string systemDirectory;
    std::string computerName;
    UINT codePage = 1252;
    bool administrator = true;  ///< false: administrative calls give 5
    bool restartPending = false;
};

Generation GenerationOf(const SystemDescription& system);
/// The environment of a system's own drivers: "Windows 4.0", "Windows NT x86", "Windows IA64", "Windows x64".
std::string_view EnvironmentOf(const SystemDescription& system);

}  // namespace pikel::simulated
