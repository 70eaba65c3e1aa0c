// The spellings of a driver's target system.
#include "frame/architecture.h"

namespace pikel {

LPCSTR DriverArchitectureOf(DWORD dwArchitecture) {
    switch (dwArchitecture) {
        case 1:
            return kEnvironment9x;
        case 2:
        case 3:
            return kEnvironmentX86;
        case 4:
            return kEnvironmentIa64;
        case 5:
            return kEnvironmentX64;
        default:
            return nullptr;
    }
}

LPCSTR DriverArchitectureOf(DWORD dwDriverVersion, DWORD dwProcessor) {
    if (dwDriverVersion == 0) {
        return kEnvironment9x;
    }
    if (dwDriverVersion == 2 || dwDriverVersion == 3) {
        if (dwProcessor == 1) {
            return kEnvironmentIa64;
        }
        if (dwProcessor == 2) {
            return kEnvironmentX64;
        }
    }
    return kEnvironmentX86;
}

}  // namespace pikel
