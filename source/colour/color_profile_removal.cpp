// Takes colour profiles away, through the system's colour library.
#include "colour/color_profile_removal.h"

#include <string>
#include <string_view>
#include <unordered_set>

#include "colour/colour_library.h"
#include "colour/printer_profiles.h"
#include "frame/log.h"
#include "frame/os_route.h"
#include "frame/string_list.h"
#include "frame/text.h"
#include "platform/owned.h"
#include "spooler/spooler_read.h"

namespace pikel {

namespace {

/// A profile's name as it is handed to the library, cut to the length that a call takes.
class ProfileName {
  public:
    explicit ProfileName(LPCSTR lpszName) {
        const std::string_view name = TextOrEmpty(lpszName);
        name.copy(m_szName, sizeof m_szName - 1);
    }
    LPCSTR Text() const { return m_szName; }

  private:
    char m_szName[520] = {};
};

bool HasProfiles(DWORD dwCount, const LPSTR* ppszProfiles) {
    return dwCount != 0 && ppszProfiles != nullptr;
}

// ---- links ----------------------------------------------------------------------------------------------------------

/// Cuts the link of each profile. One that can't be cut is logged, and the others are still tried.
/// @param lpszFunction  function of the colour library
/// @param lpszFailure   log format of a failure, for the profile and the code
/// @param fnCut         calls the function for one profile; false on failure
/// @return 0; the code for a library or function that isn't there; else the code of the last failure, which a later
///         success doesn't clear
template <class Function, class Cut>
DWORD CutLinks(LPCSTR lpszFunction, LPCSTR lpszFailure, DWORD dwCount, const LPSTR* ppszProfiles, Cut fnCut) {
    if (!HasProfiles(dwCount, ppszProfiles)) {
        return 0;
    }
    const LookedUp<Function> function(kColourLibrary, lpszFunction);
    if (!function) {
        return function.Status();
    }
    DWORD dwStatus = 0;
    for (DWORD i = 0; i < dwCount; ++i) {
        const ProfileName name(ppszProfiles[i]);
        if (!fnCut(function.Call(), name.Text())) {
            dwStatus = Platform().GetLastError();
            WriteLog(lpszFailure, name.Text(), dwStatus);
        }
    }
    return dwStatus;
}

// ---- profiles -------------------------------------------------------------------------------------------------------

/// Profiles that the local printers report, as they are told. Without a list of printers there are none, and no
/// profile is held back.
StringList ListProfilesInUse() {
    StringList inUse;
    HeapBlock printers;
    DWORD dwCount = 0;
    EnumPrinterInfo(PRINTER_ENUM_LOCAL, nullptr, 2, printers, &dwCount);
    const auto* pPrinters = static_cast<const PRINTER_INFO_2A*>(printers.Get());
    StringList ofPrinter;
    for (DWORD i = 0; i < dwCount; ++i) {
        CollectPrinterProfiles(pPrinters[i].pPrinterName, ofPrinter);
        for (const std::string& strProfile : ofPrinter) {
            inUse.Append(strProfile);
        }
    }
    return inUse;
}

/// Uninstalls one profile with its file; what the library refuses is deleted as the file that it names.
bool RemoveProfile(looked_up::UninstallColorProfileA pfnUninstall, LPCSTR lpszProfile) {
    return pfnUninstall(nullptr, lpszProfile, TRUE) || Platform().DeleteFileA(lpszProfile);
}

DWORD RemoveUnusedProfiles(DWORD dwCount, const LPSTR* ppszProfiles) {
    if (!HasProfiles(dwCount, ppszProfiles)) {
        return 0;
    }
    const StringList inUse = ListProfilesInUse();
    const LookedUp<looked_up::UninstallColorProfileA> uninstall(kColourLibrary, "UninstallColorProfileA");
    if (!uninstall) {
        return uninstall.Status();
    }
    // Neither folders nor case are taken out of the comparison: callers name profiles as the printers report them.
    const std::unordered_set<std::string_view> setInUse(inUse.begin(), inUse.end());
    DWORD dwStatus = 0;
    for (DWORD i = 0; i < dwCount; ++i) {
        const ProfileName name(ppszProfiles[i]);
        if (!setInUse.contains(name.Text()) && !RemoveProfile(uninstall.Call(), name.Text())) {
            dwStatus = Platform().GetLastError();
        }
    }
    return dwStatus;
}

// ---- routes ---------------------------------------------------------------------------------------------------------

using DeleteRoutine = DWORD (*)(LPCSTR, DWORD, const LPSTR*);
using UnInstallRoutine = DWORD (*)(DWORD, const LPSTR*);

constexpr OsRouteTable<DeleteRoutine> kDeleteColorProfile = {
    &NoWork<LPCSTR, DWORD, const LPSTR*>,  // Windows 95
    &DeleteColorProfile982k,               // Windows 98
    &DeleteColorProfile982k,               // Windows Me
    &NoWork<LPCSTR, DWORD, const LPSTR*>,  // NT 4
    &DeleteColorProfile982k,               // Windows 2000
    &DeleteColorProfile982k,               // XP generation, x86
    &DeleteColorProfile982k,               // XP generation, IA64
    &DeleteColorProfile982k,               // XP generation, x64
    &DeleteColorProfileVista,              // Vista generation, x86
    &DeleteColorProfileVista,              // Vista generation, IA64
    &DeleteColorProfileVista,              // Vista generation, x64
    &DeleteColorProfileVista,              // anything else
};
static_assert(IsComplete(kDeleteColorProfile));

constexpr OsRouteTable<UnInstallRoutine> kUnInstallColorProfile = {
    &NoWork<DWORD, const LPSTR*>,  // Windows 95: what was entered in the registry there stays
    &UnInstallColorProfile982k,    // Windows 98
    &UnInstallColorProfile982k,    // Windows Me
    &NoWork<DWORD, const LPSTR*>,  // NT 4
    &UnInstallColorProfile982k,    // Windows 2000
    &UnInstallColorProfile982k,    // XP generation, x86
    &UnInstallColorProfile982k,    // XP generation, IA64
    &UnInstallColorProfile982k,    // XP generation, x64
    &UnInstallColorProfile982k,    // Vista generation, x86
    &UnInstallColorProfile982k,    // Vista generation, IA64
    &UnInstallColorProfile982k,    // Vista generation, x64
    &UnInstallColorProfile982k,    // anything else
};
static_assert(IsComplete(kUnInstallColorProfile));

}  // namespace

DWORD DeleteColorProfile982k(LPCSTR lpszPrinterName, DWORD dwCount, const LPSTR* ppszProfiles) {
    WriteLogDetail("DeleteColorProfile982k() - Start");
    const DWORD dwStatus = CutLinks<looked_up::DisassociateColorProfileFromDeviceA>(
        "DisassociateColorProfileFromDeviceA", "DisassociateColorProfileFromDevice(%s):Disassociated or Error(%d)",
        dwCount, ppszProfiles,
        [&](auto pfnCut, LPCSTR lpszProfile) { return pfnCut(nullptr, lpszProfile, lpszPrinterName); });
    WriteLogDetail("DeleteColorProfile982k() - End(%d)", dwStatus);
    return dwStatus;
}

DWORD DeleteColorProfileVista(LPCSTR lpszPrinterName, DWORD dwCount, const LPSTR* ppszProfiles) {
    WriteLogDetail("DeleteColorProfileVista() - Start");
    const DWORD dwStatus = CutLinks<looked_up::WcsDisassociateColorProfileFromDevice>(
        "WcsDisassociateColorProfileFromDevice", "WcsDisassociateColorProfileFromDevice(%s):Disassociated or Error(%d)",
        dwCount, ppszProfiles, [&](auto pfnCut, LPCSTR lpszProfile) {
            const WideColourNames names(lpszProfile, lpszPrinterName);
            return pfnCut(kSystemWide, names.Profile(), names.Device());
        });
    WriteLogDetail("DeleteColorProfileVista() - End(%d)", dwStatus);
    return dwStatus;
}

DWORD UnInstallColorProfile982k(DWORD dwCount, const LPSTR* ppszProfiles) {
    WriteLogDetail("UnInstallColorProfile982k() - Start");
    const DWORD dwStatus = RemoveUnusedProfiles(dwCount, ppszProfiles);
    WriteLogDetail("UnInstallColorProfile982k() - End(%d)", dwStatus);
    return dwStatus;
}

DWORD DeleteColorProfile(LPCSTR lpszPrinterName, DWORD dwCount, const LPSTR* ppszProfiles) {
    return CallRoute(kDeleteColorProfile, lpszPrinterName, dwCount, ppszProfiles);
}

DWORD UnInstallColorProfile(DWORD dwCount, const LPSTR* ppszProfiles) {
    return CallRoute(kUnInstallColorProfile, dwCount, ppszProfiles);
}

}  // namespace pikel
