// Reads the sections of one model.
#include "deploy/model_sections.h"

namespace pikel {

DWORD ModelSections::ReadModel(HINF hInf, LPCSTR lpszDriverName, DWORD dwArchitecture, DWORD dwMajorVersion,
                               DWORD dwMinorVersion) {
    const DWORD dwStatus = m_cManufacturer.GetData(hInf, dwArchitecture, dwMajorVersion, dwMinorVersion);
    if (dwStatus != 0) {
        return dwStatus;
    }
    return m_cModels.GetData(hInf, m_cManufacturer.m_vecSections.FrontOrEmpty().c_str(), lpszDriverName);
}

DWORD ModelSections::ReadInstall(HINF hInf, LPCSTR lpszDriverName, DWORD dwArchitecture, DWORD dwMajorVersion,
                                 DWORD dwMinorVersion) {
    const DWORD dwStatus = ReadModel(hInf, lpszDriverName, dwArchitecture, dwMajorVersion, dwMinorVersion);
    return dwStatus != 0 ? dwStatus : m_cInstall.GetData(hInf, m_cModels.m_strInstallSection.c_str());
}

DWORD ModelSections::ReadAll(HINF hInf, LPCSTR lpszDriverName, DWORD dwArchitecture, DWORD dwMajorVersion,
                             DWORD dwMinorVersion) {
    const DWORD dwStatus = ReadInstall(hInf, lpszDriverName, dwArchitecture, dwMajorVersion, dwMinorVersion);
    return dwStatus != 0 ? dwStatus : m_cVersion.GetData(hInf);
}

}  // namespace pikel
