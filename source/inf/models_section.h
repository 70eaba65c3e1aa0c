// A models section: one line for each printer model.
#pragma once

#include <string>

#include "frame/string_list.h"
#include "platform/types.h"

namespace pikel {

class CInfModelsSection {
  public:
    /// Looks one model up. 1359 when the section or the model isn't there.
    DWORD GetData(HINF hInf, LPCSTR lpszSection, LPCSTR lpszModel);

    /// All model names of a section, sorted by byte value, each once. After a failure half-way the names so far.
    static DWORD GetAllDeviceKey(HINF hInf, LPCSTR lpszSection, StringList& list);

    std::string m_strInstallSection;
    std::string m_strHardwareId;  ///< the first identifier; empty if there is none
};

}  // namespace pikel
