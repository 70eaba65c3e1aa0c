// What an INF file is. Nothing on the system is touched.
#include "inf_store/inf_identity.h"

#include <cstring>

#include "inf/inf_access.h"
#include "inf/manufacturer_section.h"
#include "inf/version_section.h"
#include "frame/log.h"
#include "frame/pikel.h"
#include "frame/text.h"

namespace pikel {

namespace {

/// True for no text asked for, and for one that a value equals.
bool Matches(LPCSTR lpszWanted, const std::string& strValue) {
    return lpszWanted == nullptr || EqualAsciiNoCase(strValue, lpszWanted);
}

/// True when an open INF is of a provider and class. With neither asked for nothing is read.
bool IsOf(HINF hInf, LPCSTR lpszProvider, LPCSTR lpszClass) {
    if (lpszProvider == nullptr && lpszClass == nullptr) {
        return true;
    }
    CInfVersionSection version;
    version.GetData(hInf);
    return Matches(lpszProvider, version.m_strProvider) && Matches(lpszClass, version.m_strClass);
}

/// Of an INF for Windows 2000 and later: the processor, told by the section that its last Manufacturer line chooses.
/// @param dwInfOs [out]  untouched on failure
DWORD ReadProcessor(HINF hInf, DWORD& dwInfOs) {
    CInfManufacturerSection manufacturer;
    const DWORD dwStatus = manufacturer.GetData(hInf, 0, 5, 1);
    if (dwStatus == ERROR_SUCCESS) {
        WriteLog("\t\t\tManufacturer.m_dwProcessorType = %d", static_cast<int>(manufacturer.m_dwProcessorType));
        switch (manufacturer.m_dwProcessorType) {
            case 1:
                dwInfOs = PIKEL_ARCHITECTURE_IA64;
                break;
            case 2:
                dwInfOs = PIKEL_ARCHITECTURE_X64;
                break;
            default:
                break;
        }
    }
    return dwStatus;
}

DWORD ReadInfOs(HINF hInf, DWORD& dwInfOs) {
    CInfVersionSection version;
    version.GetData(hInf);
    if (EqualAsciiNoCase(version.m_strSignature, "$Chicago$")) {
        dwInfOs = PIKEL_ARCHITECTURE_WINDOWS_9X;
    } else if (EqualAsciiNoCase(version.m_strSignature, "$Windows NT$")) {
        // INFs for Windows 2000 and later alone have a value in [OEM URLS].
        if (version.m_strOemUrl.empty()) {
            dwInfOs = PIKEL_ARCHITECTURE_NT4_X86;
        } else {
            dwInfOs = PIKEL_ARCHITECTURE_NT_X86;
            return ReadProcessor(hInf, dwInfOs);
        }
    }
    return ERROR_SUCCESS;
}

}  // namespace

DWORD IsTarvoPrinterDriver(LPCSTR lpszInfFile, LPCSTR lpszProvider, LPCSTR lpszClass) {
    WriteLog("IsTarvoPrinterDriver Start");
    InfHandle inf;
    const bool bOpen = lpszInfFile != nullptr && OpenInf(lpszInfFile, inf) == ERROR_SUCCESS;
    const DWORD dwResult = bOpen && IsOf(inf.Get(), lpszProvider, lpszClass) ? 1 : 0;
    inf.Reset();
    WriteLog("IsTarvoPrinterDriver End(%d)", static_cast<int>(dwResult));
    return dwResult;
}

DWORD DoGetInfOsVersion(LPCSTR lpszInfFile, LPDWORD pdwInfOs) {
    WriteLog("DoGetInfOsVersion Start");
    if (pdwInfOs == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    *pdwInfOs = 0;
    if (lpszInfFile == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    InfHandle inf;
    DWORD dwStatus = OpenInf(lpszInfFile, inf);
    if (dwStatus == ERROR_SUCCESS) {
        dwStatus = ReadInfOs(inf.Get(), *pdwInfOs);
        inf.Reset();
    }
    WriteLog("DoGetInfOsVersion End(%d) OS(%d)", static_cast<int>(dwStatus), static_cast<int>(*pdwInfOs));
    return dwStatus;
}

DWORD DoGetCATFileInfo(LPCSTR lpszInfFile, LPDWORD pbExistCAT, LPSTR lpszCATFile) {
    WriteLog("DoGetCATFileInfo Start");
    if (lpszInfFile == nullptr || pbExistCAT == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    *pbExistCAT = 0;
    InfHandle inf;
    // A file that can't be opened is one without a catalog, and no failure: installers ask about files of any kind.
    if (OpenInf(lpszInfFile, inf) == ERROR_SUCCESS) {
        CInfVersionSection version;
        version.GetData(inf.Get());
        if (!version.m_strCatalogFile.empty()) {
            *pbExistCAT = 1;
            if (lpszCATFile != nullptr) {
                std::memcpy(lpszCATFile, version.m_strCatalogFile.c_str(), version.m_strCatalogFile.size() + 1);
                WriteLog("DoGetCATFileInfo lpszCATFile(%s)", lpszCATFile);
            }
        }
        inf.Reset();
    }
    WriteLog("DoGetCATFileInfo pbExistCAT(%d)", static_cast<int>(*pbExistCAT));
    WriteLog("DoGetCATFileInfo End(%d)", ERROR_SUCCESS);
    return ERROR_SUCCESS;
}

}  // namespace pikel
