// What an INF says of itself as a whole.
#pragma once

#include <string>

#include "platform/types.h"

namespace pikel {

/// [Version] and the first value of [OEM URLS]. What is absent is empty.
class CInfVersionSection {
  public:
    /// Reads everything anew. Always 0; hInf is not kept.
    DWORD GetData(HINF hInf);

    std::string m_strProvider;
    std::string m_strClass;
    std::string m_strClassGUID;
    DWORDLONG m_qwDriverVer = 0;  ///< version part of DriverVer, packed
    FILETIME m_ftDriverDate{};    ///< date part; 0 when there is none or it is invalid
    std::string m_strOemUrl;      ///< field 1 of the first line of [OEM URLS]
    std::string m_strCatalogFile;
    std::string m_strSignature;
    std::string m_strCatalogKey;  ///< the key that gave m_strCatalogFile
};

}  // namespace pikel
