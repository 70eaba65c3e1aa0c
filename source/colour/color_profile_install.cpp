// Installs colour profiles and links them to printers: through the system's colour library, or on Windows 95 by hand.
#include "colour/color_profile_install.h"

#include <string>

#include "colour/colour_library.h"
#include "colour/profile_registry.h"
#include "frame/look_ups.h"
#include "frame/log.h"
#include "frame/os_route.h"
#include "frame/text.h"
#include "platform/owned.h"

namespace pikel {

namespace {

/// Texts and names of one of the routines that go through the colour library. The formats take a name and a code, and
/// a code.
struct LibraryRoutine {
    LPCSTR lpszStart;
    LPCSTR lpszFunction;
    LPCSTR lpszFailure;
    LPCSTR lpszEnd;
};

/// Hands each profile to a function of the colour library. A profile that it refuses is logged and passed over: one
/// that is there already is refused as well.
/// @param fnCall  calls the function for one profile; false on failure
/// @return 0, or the code for a library or function that isn't there
template <class Function, class Call>
DWORD ForEachProfile(const LibraryRoutine& routine, const LPSTR* ppszProfiles, DWORD dwCount, Call fnCall) {
    WriteLogDetail("%s", routine.lpszStart);
    DWORD dwStatus = 0;
    if (ppszProfiles != nullptr && dwCount != 0) {
        LookedUp<Function> function(kColourLibrary, routine.lpszFunction);
        if (!function && function.IsLoaded()) {
            return function.Status();  // at once: without the end line
        }
        dwStatus = function.Status();
        for (DWORD i = 0; function && i < dwCount; ++i) {
            if (!fnCall(function.Call(), ppszProfiles[i])) {
                DWORD dwCode = Platform().GetLastError();
                WriteLog(routine.lpszFailure, TextOrEmpty(ppszProfiles[i]), dwCode);
            }
        }
    }
    WriteLogDetail(routine.lpszEnd, dwStatus);
    return dwStatus;
}

using InstallRoutine = DWORD (*)(const LPSTR*, DWORD);
using AddRoutine = DWORD (*)(LPCSTR, const LPSTR*, DWORD);

constexpr OsRouteTable<InstallRoutine> kInstallColorProfile = {
    &InstallColorProfile95,        // Windows 95
    &InstallColorProfile982k,      // Windows 98
    &InstallColorProfile982k,      // Windows Me
    &NoWork<const LPSTR*, DWORD>,  // NT 4
    &InstallColorProfile982k,      // Windows 2000
    &InstallColorProfile982k,      // XP generation, x86
    &InstallColorProfile982k,      // XP generation, IA64
    &InstallColorProfile982k,      // XP generation, x64
    &InstallColorProfile982k,      // Vista generation, x86
    &InstallColorProfile982k,      // Vista generation, IA64
    &InstallColorProfile982k,      // Vista generation, x64
    &InstallColorProfile982k,      // anything else
};
static_assert(IsComplete(kInstallColorProfile));

constexpr OsRouteTable<AddRoutine> kAddColorProfile = {
    &NoWork<LPCSTR, const LPSTR*, DWORD>,  // Windows 95
    &AddColorProfile982k,                  // Windows 98
    &AddColorProfile982k,                  // Windows Me
    &NoWork<LPCSTR, const LPSTR*, DWORD>,  // NT 4
    &AddColorProfile982k,                  // Windows 2000
    &AddColorProfile982k,                  // XP generation, x86
    &AddColorProfile982k,                  // XP generation, IA64
    &AddColorProfile982k,                  // XP generation, x64
    &AddColorProfileVista,                 // Vista generation, x86
    &AddColorProfileVista,                 // Vista generation, IA64
    &AddColorProfileVista,                 // Vista generation, x64
    &AddColorProfileVista,                 // anything else
};
static_assert(IsComplete(kAddColorProfile));

}  // namespace

DWORD InstallColorProfile95(const LPSTR* ppszProfiles, DWORD dwCount) {
    WriteLogDetail("InstallColorProfile95() - Start");
    std::string strDirectory;
    GetDriverDirectory(nullptr, strDirectory);  // a failure leaves paths from the root, where no profile is found
    strDirectory += "\\Color\\";
    for (DWORD i = 0; ppszProfiles != nullptr && i < dwCount; ++i) {
        std::string strPath = strDirectory + TextOrEmpty(ppszProfiles[i]);
        // Each of the two acts on profiles of its own class alone.
        WIToolRegistPrtrProfileKey(strPath.c_str());
        WIToolRegistMntrProfileKey(strPath.c_str());
    }
    WriteLogDetail("InstallColorProfile95() - End");
    return 0;
}

DWORD InstallColorProfile982k(const LPSTR* ppszProfiles, DWORD dwCount) {
    static constexpr LibraryRoutine kRoutine = {"InstallColorProfile982k() - Start", "InstallColorProfileA",
                                                "InstallColorProfile(%s):Installed or Error(%d)",
                                                "InstallColorProfile982k() - End(%d)"};
    return ForEachProfile<looked_up::InstallColorProfileA>(
        kRoutine, ppszProfiles, dwCount,
        [](auto pfnInstall, LPCSTR lpszProfile) { return pfnInstall(nullptr, lpszProfile); });
}

DWORD InstallColorProfile(const LPSTR* ppszProfiles, DWORD dwCount) {
    return CallRoute(kInstallColorProfile, ppszProfiles, dwCount);
}

DWORD AddColorProfile982k(LPCSTR lpszPrinterName, const LPSTR* ppszProfiles, DWORD dwCount) {
    static constexpr LibraryRoutine kRoutine = {"AddColorProfile982k() - Start", "AssociateColorProfileWithDeviceA",
                                                "AssociateColorProfileWithDevice(%s):Associated or Error(%d)",
                                                "AddColorProfile982k() - End(%d)"};
    return ForEachProfile<looked_up::AssociateColorProfileWithDeviceA>(
        kRoutine, ppszProfiles, dwCount,
        [&](auto pfnAssociate, LPCSTR lpszProfile) { return pfnAssociate(nullptr, lpszProfile, lpszPrinterName); });
}

DWORD AddColorProfileVista(LPCSTR lpszPrinterName, const LPSTR* ppszProfiles, DWORD dwCount) {
    static constexpr LibraryRoutine kRoutine = {"AddColorProfileVista() - Start", "WcsAssociateColorProfileWithDevice",
                                                "WcsAssociateColorProfileWithDevice(%s):Associated or Error(%d)",
                                                "AddColorProfileVista() - End(%d)"};
    return ForEachProfile<looked_up::WcsAssociateColorProfileWithDevice>(
        kRoutine, ppszProfiles, dwCount, [&](auto pfnAssociate, LPCSTR lpszProfile) {
            const WideColourNames names(lpszProfile, lpszPrinterName);
            return pfnAssociate(kSystemWide, names.Profile(), names.Device());
        });
}

DWORD AddColorProfile(LPCSTR lpszPrinterName, const LPSTR* ppszProfiles, DWORD dwCount) {
    return CallRoute(kAddColorProfile, lpszPrinterName, ppszProfiles, dwCount);
}

}  // namespace pikel
