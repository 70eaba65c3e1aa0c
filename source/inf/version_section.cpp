// [Version], and the first value of [OEM URLS].
#include "inf/version_section.h"

#include "inf/driver_version.h"
#include "inf/inf_access.h"
#include "inf/section_walk.h"
#include "frame/log.h"

namespace pikel {

namespace {

constexpr char kVersion[] = "Version";

/// Finds the catalog. The tries don't depend on the running system: the first key with a value wins on every one.
/// @param strKey [out]   the key that gave the name; empty when none did
void ReadCatalog(HINF hInf, std::string& strFile, std::string& strKey) {
    static constexpr LPCSTR kDecoratedKeys[] = {"CatalogFile.ntx86", "CatalogFile.nt", "CatalogFile.ntia64",
                                                "CatalogFile.ntamd64"};
    strFile.clear();
    strKey = "CatalogFile";
    HeapBlock buffer;
    GetInfLineTextBuffer(nullptr, hInf, kVersion, strKey.c_str(), buffer);
    if (buffer) {
        strFile = static_cast<LPCSTR>(buffer.Get());
        buffer.Reset();
    }
    for (LPCSTR lpszKey : kDecoratedKeys) {
        if (!strFile.empty()) {
            return;
        }
        strKey = lpszKey;
        GetInfLineText(hInf, kVersion, lpszKey, strFile);
    }
    if (strFile.empty()) {
        strKey.clear();
    }
}

}  // namespace

DWORD CInfVersionSection::GetData(HINF hInf) {
    WriteLog("CInfVersionSection::GetData() Start");
    m_strProvider.clear();
    m_strClass.clear();
    m_strClassGUID.clear();
    m_strOemUrl.clear();
    m_qwDriverVer = 0;
    m_ftDriverDate = FILETIME{};

    // The statuses of the reads are not looked at: what is absent is empty.
    GetInfLineText(hInf, kVersion, "Provider", m_strProvider);
    WriteBanneredLog("--- Provider ---", m_strProvider.c_str());
    GetInfLineText(hInf, kVersion, "Class", m_strClass);
    WriteBanneredLog("--- Class ---", m_strClass.c_str());
    GetInfLineText(hInf, kVersion, "ClassGUID", m_strClassGUID);
    WriteBanneredLog("--- ClassGUID ---", m_strClassGUID.c_str());
    GetInfFieldByIndex(hInf, "OEM URLS", 0, 1, m_strOemUrl);
    WriteBanneredLog("--- OEM URLS ---", m_strOemUrl.c_str());

    std::string strDriverVer;
    if (GetInfLineText(hInf, kVersion, "DriverVer", strDriverVer) == ERROR_SUCCESS) {
        ParseDriverVer(strDriverVer, m_ftDriverDate, m_qwDriverVer);
    }

    ReadCatalog(hInf, m_strCatalogFile, m_strCatalogKey);
    WriteLog("--- Cat File ---");
    WriteLog("%s = %s", m_strCatalogKey.c_str(), m_strCatalogFile.c_str());
    WriteLog("--- Cat File ---");
    WriteEmptyLogLine();

    GetInfLineText(hInf, kVersion, "Signature", m_strSignature);
    WriteBanneredLog("--- Signature ---", m_strSignature.c_str());
    WriteLog("CInfVersionSection::GetData() End(%d)", ERROR_SUCCESS);
    return ERROR_SUCCESS;
}

}  // namespace pikel
