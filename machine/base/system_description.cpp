// What a machine's system is.
#include "machine/base/system_description.h"

namespace pikel::simulated {

namespace {

constexpr DWORD kItanium = 2200;
constexpr DWORD kAmd64 = 8664;

Generation Generation9x(const SystemDescription& system) {
    if (system.minor == 0) {
        return Generation::Windows95;
    }
    return system.minor < 90 ? Generation::Windows98 : Generation::WindowsMe;
}

Generation GenerationNt(const SystemDescription& system) {
    switch (system.major) {
        case 3:
            return Generation::Nt3;
        case 4:
            return Generation::Nt4;
        case 5:
            return system.minor == 0 ? Generation::Windows2000 : Generation::Xp;
        default:
            return Generation::Vista;
    }
}

}  // namespace

Generation GenerationOf(const SystemDescription& system) {
    switch (system.platform) {
        case VER_PLATFORM_WIN32s:
            return Generation::Win32s;
        case VER_PLATFORM_WIN32_WINDOWS:
            return Generation9x(system);
        case VER_PLATFORM_WIN32_NT:
            return GenerationNt(system);
        default:
            return Generation::Other;
    }
}

std::string_view EnvironmentOf(const SystemDescription& system) {
    if (system.platform == VER_PLATFORM_WIN32_WINDOWS) {
        return "Windows 4.0";
    }
    switch (system.processorType) {
        case kItanium:
            return "Windows IA64";
        case kAmd64:
            return "Windows x64";
        default:
            return "Windows NT x86";
    }
}

}  // namespace pikel::simulated
