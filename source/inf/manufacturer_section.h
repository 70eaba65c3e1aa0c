// [Manufacturer], and the choice of a models section for a system.
#pragma once

#include <string>

#include "frame/string_list.h"
#include "platform/types.h"

namespace pikel {

class CInfManufacturerSection {
  public:
    /// Reads the section and chooses a models section for each of its lines.
    /// @param dwProcessor       handed on to the choice, where it has no effect
    /// @param dwMajor, dwMinor  version of the target system; low bytes count
    /// @return 0, or the code of the line that could not be read; what was chosen so far stays
    DWORD GetData(HINF hInf, DWORD dwProcessor, DWORD dwMajor, DWORD dwMinor);

    /// The choice for one line: the section name to use, empty for an empty line.
    static std::string GetBestModelsSection(const StringList& csvManufacturer, DWORD dwProcessor, DWORD dwMajor,
                                            DWORD dwMinor);

    StringList m_vecSections;  ///< chosen names in line order. Callers use element 0 alone.
    std::string m_strManufacturer;
    DWORD m_dwProcessorType = 0;  ///< of the last line: 0 no marker, 1 "NTia64", 2 "NTamd64"
};

}  // namespace pikel
