// A models section: one line for each printer model.
#include "inf/models_section.h"

#include <utility>

#include "inf/inf_access.h"
#include "inf/section_walk.h"
#include "frame/log.h"

namespace pikel {

DWORD CInfModelsSection::GetData(HINF hInf, LPCSTR lpszSection, LPCSTR lpszModel) {
    WriteLog("CInfModelsSection::GetData() Start");
    m_strInstallSection.clear();
    m_strHardwareId.clear();
    std::string strLine;
    const DWORD dwStatus = GetInfLineText(hInf, lpszSection, lpszModel, strLine);
    if (dwStatus == ERROR_SUCCESS) {
        const StringList csvModel(strLine, ',');
        if (csvModel.size() > 0) {
            m_strInstallSection = csvModel[0];
        }
        if (csvModel.size() > 1) {
            m_strHardwareId = csvModel[1];
        }
    }
    WriteLog("CInfModelsSection::GetData() End(%d)", dwStatus);
    return dwStatus;
}

DWORD CInfModelsSection::GetAllDeviceKey(HINF hInf, LPCSTR lpszSection, StringList& list) {
    WriteLog("CInfModelsSection::GetAllDeviceKey() Start");
    list.Clear();
    const DWORD dwStatus = WalkLines(hInf, lpszSection, [&list](INFCONTEXT& context) {
        std::string strModel;
        const DWORD dwLineStatus = GetInfField(context, 0, strModel);
        if (dwLineStatus == ERROR_SUCCESS) {
            list.Append(std::move(strModel));
        }
        return dwLineStatus;
    });
    list.SortUnique();
    WriteLog("--- Support Models ---");
    for (const std::string& strModel : list) {
        WriteLog("%s", strModel.c_str());
    }
    WriteLog("--- Support Models ---");
    WriteEmptyLogLine();
    WriteLog("CInfModelsSection::GetAllDeviceKey() End(%d)", dwStatus);
    return dwStatus;
}

}  // namespace pikel
