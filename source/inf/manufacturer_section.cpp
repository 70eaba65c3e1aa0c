// [Manufacturer], and the choice of a models section for a system.
#include "inf/manufacturer_section.h"

#include "inf/inf_access.h"
#include "inf/section_walk.h"
#include "frame/log.h"
#include "frame/number.h"

namespace pikel {

namespace {

constexpr char kManufacturer[] = "Manufacturer";
/// Decorations count from this version of the target system on.
constexpr DWORD kFirstDecoratedVersion = 0x501;

/// A version as the choice compares it: low byte of the major, low byte of the minor.
DWORD CombineVersion(DWORD dwMajor, DWORD dwMinor) {
    return (dwMajor & 0xff) << 8 | (dwMinor & 0xff);
}

/// Version of a decoration, from what stands behind its first dot: "5", "5.1", "5.1.x".
DWORD ParseDecorationVersion(const std::string& strNumbers) {
    const INT nMajor = ParseNumber(strNumbers);
    const std::size_t dot = strNumbers.find('.');
    INT nMinor = 0;
    if (dot == std::string::npos) {
        WriteLog("\tMajor = %d", nMajor);
    } else {
        nMinor = ParseNumber(strNumbers.c_str() + dot + 1);
        WriteLog("\tMajor = %d, Minor = %d", nMajor, nMinor);
    }
    const DWORD dwVer = CombineVersion(static_cast<DWORD>(nMajor), static_cast<DWORD>(nMinor));
    WriteLog("\tMAKELONG:dwVer = %x", dwVer);
    return dwVer;
}

/// Processor that a chosen name marks. The case counts and the whole name is looked at; the x64 mark is the stronger.
DWORD ProcessorTypeOf(const std::string& strSection) {
    DWORD dwProcessorType = 0;
    if (strSection.find("NTia64") != std::string::npos) {
        dwProcessorType = 1;
    }
    if (strSection.find("NTamd64") != std::string::npos) {
        dwProcessorType = 2;
    }
    return dwProcessorType;
}

/// The choice while it goes through the decorations of one line.
class BestDecoration {
  public:
    BestDecoration(const std::string& strMfgFront, DWORD dwVersion)
        : m_strMfgFront(strMfgFront), m_dwVersion(dwVersion) {}

    DWORD MinDiffInVersion() const { return m_dwMinDiffInVersion; }

    void Consider(const std::string& strDecoration) {
        if (strDecoration.empty()) {
            return;
        }
        const std::size_t dot = strDecoration.find('.');
        if (dot == std::string::npos) {
            ConsiderBare(strDecoration);
        } else {
            ConsiderVersioned(strDecoration, dot);
        }
    }

    /// The chosen name; the plain section name when no decoration was taken.
    std::string Take() { return m_bTaken ? std::move(m_strBestRet) : m_strMfgFront; }

  private:
    /// Bare decorations replace each other, up to the first one with a version.
    void ConsiderBare(const std::string& strDecoration) {
        if (!m_bFound) {
            Choose(strDecoration);
            WriteLog("\tstrBestRet = %s", m_strBestRet.c_str());
        }
    }

    void ConsiderVersioned(const std::string& strDecoration, std::size_t dot) {
        // The architecture is told and not compared with anything: of two decorations with one version the later field
        // wins on every processor.
        const std::string strArchitecture = strDecoration.substr(0, dot);
        WriteLog("\tstrArchitecture = %s", strArchitecture.c_str());
        const DWORD dwVer = ParseDecorationVersion(strDecoration.substr(dot + 1));
        if (dwVer > m_dwVersion || m_dwVersion - dwVer > m_dwMinDiffInVersion) {
            return;
        }
        m_dwMinDiffInVersion = m_dwVersion - dwVer;
        m_bFound = true;
        Choose(strDecoration);
        WriteLog("\tdwMinDiffInVersion = %x", m_dwMinDiffInVersion);
        WriteLog("\tstrBestRet = %s", m_strBestRet.c_str());
    }

    void Choose(const std::string& strDecoration) {
        m_strBestRet = m_strMfgFront + "." + strDecoration;
        m_bTaken = true;
    }

    const std::string& m_strMfgFront;
    const DWORD m_dwVersion;
    std::string m_strBestRet;
    DWORD m_dwMinDiffInVersion = 0xffffffff;
    bool m_bFound = false;  ///< a decoration with a version has been accepted
    bool m_bTaken = false;
};

}  // namespace

std::string CInfManufacturerSection::GetBestModelsSection(const StringList& csvManufacturer, DWORD /*dwProcessor*/,
                                                          DWORD dwMajor, DWORD dwMinor) {
    if (csvManufacturer.empty()) {
        return {};
    }
    const std::string& strMfgFront = csvManufacturer[0];
    const DWORD dwVersion = CombineVersion(dwMajor, dwMinor);
    BestDecoration best(strMfgFront, dwVersion);
    // The count goes to the log as text.
    WriteLog("\tcsvManufacturer.size() = %s", std::to_string(csvManufacturer.size()).c_str());
    WriteLog("\tstrMfgFront = %s", strMfgFront.c_str());
    WriteLog("\tMAKELONG:dwVersion = %x", dwVersion);
    WriteLog("\tdwMinDiffInVersion = %x", best.MinDiffInVersion());
    if (dwVersion >= kFirstDecoratedVersion) {
        for (std::size_t i = 1; i < csvManufacturer.size(); ++i) {
            best.Consider(csvManufacturer[i]);
        }
    }
    return best.Take();
}

DWORD CInfManufacturerSection::GetData(HINF hInf, DWORD dwProcessor, DWORD dwMajor, DWORD dwMinor) {
    WriteLog("CInfManufacturerSection::GetData() Start");
    m_vecSections.Clear();
    m_strManufacturer.clear();
    const DWORD dwNameStatus = GetInfFieldByIndex(hInf, kManufacturer, 0, 0, m_strManufacturer);
    if (dwNameStatus != ERROR_SUCCESS) {
        WriteErrorLog(dwNameStatus, kInfFileSource, 384);
    }
    WriteBanneredLog("--- Manufacturer Name ---", m_strManufacturer.c_str());

    const DWORD dwStatus = WalkLines(hInf, kManufacturer, [&](INFCONTEXT& context) {
        std::string strLine;
        const DWORD dwLineStatus = GetInfLineText(context, strLine);
        if (dwLineStatus != ERROR_SUCCESS) {
            return dwLineStatus;
        }
        std::string strBestRet = GetBestModelsSection(StringList(strLine, ','), dwProcessor, dwMajor, dwMinor);
        // So the mark is that of the last line, while callers read the models of the first.
        m_dwProcessorType = ProcessorTypeOf(strBestRet);
        if (!strBestRet.empty()) {
            m_vecSections.Append(std::move(strBestRet));
        }
        return dwLineStatus;
    });

    WriteLog("--- Manufacturer ---");
    for (const std::string& strSection : m_vecSections) {
        WriteLog("%s", strSection.c_str());
    }
    WriteLog("--- Manufacturer ---");
    WriteEmptyLogLine();
    WriteLog("CInfManufacturerSection::GetData() End(%d)", dwStatus);
    return dwStatus;
}

}  // namespace pikel
