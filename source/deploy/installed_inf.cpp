// Finding the INF of an installed driver again.
#include "deploy/installed_inf.h"

#include <string>

#include "frame/log.h"
#include "frame/os_identity.h"
#include "frame/text.h"
#include "inf_store/inf_search.h"
#include "platform/owned.h"

namespace pikel {

namespace {

/// The folder in which the 9x family keeps the INFs that it was given later.
std::string OtherFolder() {
    return SystemInfFolder() + "Other\\";
}

/// All INFs of a provider and class. A search that fails gives what it found.
void FindCandidates(LPCSTR infFolder, LPCSTR lpszProvider, LPCSTR lpszClass, StringList& listCandidates) {
    SearchInfList(infFolder, lpszProvider, lpszClass, listCandidates);
    if (HasOsClass(OsClass9xFamily)) {
        StringList listOther;
        SearchInfList(OtherFolder().c_str(), lpszProvider, lpszClass, listOther);
        for (const std::string& strPath : listOther) {
            listCandidates.Append(strPath);
        }
    }
}

/// Logs the models up to the driver.
bool ListsDriver(const StringList& listModels, LPCSTR driverName) {
    for (const std::string& strModel : listModels) {
        WriteLogDetail("Model:%s", strModel.c_str());
        if (EqualNoCase(strModel.c_str(), driverName)) {
            return true;
        }
    }
    return false;
}

/// The INF that was written last.
class NewestInf {
  public:
    /// Takes an INF's path when it is strictly newer than the one kept: of two with the same time the first stays. One
    /// that can't be opened is passed over.
    void Consider(const std::string& strCandidate) {
        std::string strPath;
        if (strCandidate.find('\\') != std::string::npos) {
            strPath = strCandidate;
        } else {
            GetInfPath(strCandidate.c_str(), strPath);
        }
        FileHandle file(Platform().CreateFileA(strPath.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                               FILE_ATTRIBUTE_NORMAL, nullptr));
        if (!file) {
            return;
        }
        FILETIME ftWritten{};
        Platform().GetFileTime(file.Get(), nullptr, nullptr, &ftWritten);
        file.Reset();
        if (m_strPath.empty() || Platform().CompareFileTime(&ftWritten, &m_ftWritten) > 0) {
            m_strPath = strPath;
            m_ftWritten = ftWritten;
        }
    }
    const std::string& Path() const { return m_strPath; }

  private:
    std::string m_strPath;
    FILETIME m_ftWritten{};
};

}  // namespace

DWORD DoGetInstalledInfName(LPCSTR driverName, DWORD dwArchitecture, DWORD dwMajorVersion, DWORD dwMinorVersion,
                            LPCSTR infFolder, LPCSTR lpszProvider, LPCSTR lpszClass, LPSTR name, DWORD size) {
    if (driverName == nullptr || name == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLogDetail("DoGetInstalledInfName Start");
    WriteLogDetail("DriverName:%s", driverName);
    StringList listCandidates;
    FindCandidates(infFolder, lpszProvider, lpszClass, listCandidates);
    DWORD dwStatus = ERROR_FILE_NOT_FOUND;
    if (listCandidates.empty()) {
        WriteLogDetail("aDestINFList is empty");
    } else {
        NewestInf newest;
        for (const std::string& strCandidate : listCandidates) {
            StringList listModels;
            // The code is that of the last candidate, whatever the others gave; callers go by the name.
            dwStatus = GetInfModelList(strCandidate.c_str(), dwArchitecture, dwMajorVersion, dwMinorVersion, listModels,
                                       NoModels::AreNone);
            if (listModels.empty()) {
                WriteLogDetail("DriverList is empty");
                dwStatus = ERROR_FILE_NOT_FOUND;
            } else if (ListsDriver(listModels, driverName)) {
                newest.Consider(strCandidate);
            }
        }
        if (CopyIfFits(newest.Path(), name, size)) {
            WriteLogDetail("Installed InfFile:%s", newest.Path().c_str());
        }
    }
    WriteLogDetail("DoGetInstalledInfName End:%d", static_cast<int>(dwStatus));
    return dwStatus;
}

}  // namespace pikel
