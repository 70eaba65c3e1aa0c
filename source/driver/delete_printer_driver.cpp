// Deletes a printer driver with all that belongs to it.
#include "driver/delete_printer_driver.h"

#include "colour/color_profile_removal.h"
#include "driver/delete_driver_file.h"
#include "frame/log.h"

namespace pikel {

DWORD DoDeletePrinterDriver(DWORD dwVersion, LPCSTR lpszName, DWORD dwProcessor, DWORD dwProfileCount,
                            const LPSTR* ppszProfiles, DWORD, DWORD dwRestartSpooler) {
    if (lpszName == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLog("DoDeletePrinterDriver(%s) Start", lpszName);
    CDeleteDriverFile deletion;
    DWORD dwStatus = deletion.DeletePrinterDriver(dwVersion, lpszName, dwProcessor, nullptr, dwRestartSpooler);
    if (dwStatus == 0 && dwProfileCount != 0 && ppszProfiles != nullptr) {
        dwStatus = UnInstallColorProfile(dwProfileCount, ppszProfiles);
    }
    WriteLog("DoDeletePrinterDriver End(%d)", dwStatus);
    return dwStatus;
}

}  // namespace pikel
