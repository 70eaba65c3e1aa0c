// The calls of colour management, and those of GDI that tell a printer's profiles.
#include <cstring>

#include "machine/base/last_error.h"
#include "machine/base/names.h"
#include "machine/base/text.h"
#include "machine/colour/colour.h"
#include "machine/operations.h"
#include "machine/security/rights.h"
#include "machine/spooler/connections.h"
#include "machine/spooler/printers.h"
#include "machine/spooler/spooler.h"

namespace pikel::simulated {

namespace {

/// Information context of a printer.
struct DeviceContext {
    std::string printer;
};

/// Does the work of one call on the current machine; the calls know no other computer.
template <class Work>
BOOL CallColour(PCSTR computer, Work work) {
    Machine& machine = Current();
    const DWORD code =
        IsThisComputer(machine, TextOf(computer)) ? work(machine) : static_cast<DWORD>(ERROR_NOT_SUPPORTED);
    machine.Commit();
    return Outcome(code);
}

/// What a change of profiles needs; one of a printer's goes through the spooler.
DWORD CheckChange(Machine& machine, bool ofPrinter) {
    const DWORD code = ofPrinter ? ReachSpooler(machine, nullptr) : DWORD{ERROR_SUCCESS};
    return code == ERROR_SUCCESS ? RequireAdministrator(machine) : code;
}

BOOL LinkProfile(PCSTR computer, std::string_view profile, std::string_view printer) {
    return CallColour(computer, [&](Machine& machine) -> DWORD {
        if (profile.empty() || printer.empty()) {
            return ERROR_INVALID_PARAMETER;
        }
        const DWORD code = CheckChange(machine, true);
        return code == ERROR_SUCCESS ? ColourProfiles(machine).Link(profile, printer) : code;
    });
}

BOOL UnlinkProfile(PCSTR computer, std::string_view profile, std::string_view printer) {
    return CallColour(computer, [&](Machine& machine) -> DWORD {
        if (profile.empty() || printer.empty()) {
            return ERROR_INVALID_PARAMETER;
        }
        const DWORD code = CheckChange(machine, true);
        return code == ERROR_SUCCESS ? ColourProfiles(machine).Unlink(profile, printer) : code;
    });
}

std::string Narrow(LPCWSTR text) {
    return text == nullptr ? std::string() : FromWide(Current().System().codePage, text);
}

/// The system-wide scope is the one that the machine has.
constexpr DWORD kSystemWide = 0;

}  // namespace

// ---- profiles -------------------------------------------------------------------------------------------------------

BOOL WINAPI GetColorDirectoryA(PCSTR pMachineName, PSTR pBuffer, PDWORD pdwSize) {
    return CallColour(pMachineName, [&](Machine& machine) -> DWORD {
        if (pdwSize == nullptr) {
            return ERROR_INVALID_PARAMETER;
        }
        const std::string directory = ColourProfiles(machine).Directory();
        const DWORD size = static_cast<DWORD>(directory.size() + 1);
        const bool fits = pBuffer != nullptr && *pdwSize >= size;
        *pdwSize = size;
        if (!fits) {
            return ERROR_INSUFFICIENT_BUFFER;
        }
        std::memcpy(pBuffer, directory.c_str(), size);
        return ERROR_SUCCESS;
    });
}

BOOL WINAPI InstallColorProfileA(PCSTR pMachineName, PCSTR pProfileName) {
    return CallColour(pMachineName, [&](Machine& machine) -> DWORD {
        const DWORD code = CheckChange(machine, false);
        return code == ERROR_SUCCESS ? ColourProfiles(machine).Install(TextOf(pProfileName)) : code;
    });
}

BOOL WINAPI UninstallColorProfileA(PCSTR pMachineName, PCSTR pProfileName, BOOL bDelete) {
    return CallColour(pMachineName, [&](Machine& machine) -> DWORD {
        if (TextOf(pProfileName).empty()) {
            return ERROR_INVALID_PARAMETER;
        }
        const DWORD code = CheckChange(machine, false);
        return code == ERROR_SUCCESS ? ColourProfiles(machine).Uninstall(pProfileName, bDelete != FALSE) : code;
    });
}

BOOL WINAPI AssociateColorProfileWithDeviceA(PCSTR pMachineName, PCSTR pProfileName, PCSTR pDeviceName) {
    return LinkProfile(pMachineName, TextOf(pProfileName), TextOf(pDeviceName));
}

BOOL WINAPI DisassociateColorProfileFromDeviceA(PCSTR pMachineName, PCSTR pProfileName, PCSTR pDeviceName) {
    return UnlinkProfile(pMachineName, TextOf(pProfileName), TextOf(pDeviceName));
}

BOOL WINAPI WcsAssociateColorProfileWithDevice(DWORD scope, LPCWSTR pProfileName, LPCWSTR pDeviceName) {
    return scope == kSystemWide ? LinkProfile(nullptr, Narrow(pProfileName), Narrow(pDeviceName))
                                : Outcome(ERROR_INVALID_PARAMETER);
}

BOOL WINAPI WcsDisassociateColorProfileFromDevice(DWORD scope, LPCWSTR pProfileName, LPCWSTR pDeviceName) {
    return scope == kSystemWide ? UnlinkProfile(nullptr, Narrow(pProfileName), Narrow(pDeviceName))
                                : Outcome(ERROR_INVALID_PARAMETER);
}

// ---- device contexts ------------------------------------------------------------------------------------------------

HDC WINAPI CreateICA(LPCSTR, LPCSTR pszDevice, LPCSTR, const DEVMODEA*) {
    HDC context = nullptr;
    const DWORD code = CallSpooler(nullptr, [&](Machine& machine) -> DWORD {
        const std::string name(TextOf(pszDevice));
        if (!Printers(machine).Find(name) && !Connections(machine).Find(name)) {
            return ERROR_INVALID_PRINTER_NAME;
        }
        context = static_cast<HDC>(machine.Handles().Open(HandleKind::DeviceContext,
                                                          std::make_shared<DeviceContext>(DeviceContext{name}), name));
        return ERROR_SUCCESS;
    });
    return code == ERROR_SUCCESS ? context : Fail<HDC>(code, nullptr);
}

BOOL WINAPI DeleteDC(HDC hdc) {
    return Outcome(Current().Handles().Close(HandleKind::DeviceContext, hdc) ? ERROR_SUCCESS : ERROR_INVALID_HANDLE);
}

int WINAPI EnumICMProfilesA(HDC hdc, ICMENUMPROCA proc, LPARAM param) {
    constexpr int kNone = -1;
    Machine& machine = Current();
    const DeviceContext* context = machine.Handles().Find<DeviceContext>(HandleKind::DeviceContext, hdc);
    if (context == nullptr || proc == nullptr) {
        return Fail(context == nullptr ? ERROR_INVALID_HANDLE : ERROR_INVALID_PARAMETER, kNone);
    }
    const ColourProfiles profiles(machine);
    int answer = kNone;
    for (const std::string& name : profiles.LinkedTo(context->printer)) {
        std::string path = profiles.Directory() + "\\" + name;
        answer = proc(path.data(), param);
        if (answer <= 0) {
            break;
        }
    }
    return answer;
}

}  // namespace pikel::simulated
