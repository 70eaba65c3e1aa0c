// The spellings of a driver's target system.
#include "frame/architecture.h"

#include "frame/pikel.h"

namespace pikel {

LPCSTR DriverArchitectureOf(DWORD dwArchitecture) {
    switch (dwArchitecture) {
        case PIKEL_ARCHITECTURE_WINDOWS_9X:
            return kEnvironment9x;
        case PIKEL_ARCHITECTURE_NT4_X86:
        case PIKEL_ARCHITECTURE_NT_X86:
            return kEnvironmentX86;
        case PIKEL_ARCHITECTURE_IA64:
            return kEnvironmentIa64;
        case PIKEL_ARCHITECTURE_X64:
            return kEnvironmentX64;
        default:
            return nullptr;
    }
}

LPCSTR DriverArchitectureOf(DWORD dwDriverVersion, DWORD dwProcessor) {
    if (dwDriverVersion == PIKEL_DRIVER_VERSION_9X) {
        return kEnvironment9x;
    }
    if (dwDriverVersion == PIKEL_DRIVER_VERSION_NT4 || dwDriverVersion == PIKEL_DRIVER_VERSION_2000) {
        if (dwProcessor == PIKEL_PROCESSOR_IA64) {
            return kEnvironmentIa64;
        }
        if (dwProcessor == PIKEL_PROCESSOR_X64) {
            return kEnvironmentX64;
        }
    }
    return kEnvironmentX86;
}

}  // namespace pikel
