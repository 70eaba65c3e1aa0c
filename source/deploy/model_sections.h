// The sections of an INF that tell of one model, read together.
#pragma once

#include "inf/install_section.h"
#include "inf/manufacturer_section.h"
#include "inf/models_section.h"
#include "inf/version_section.h"

namespace pikel {

struct ModelSections {
    CInfManufacturerSection m_cManufacturer;
    CInfModelsSection m_cModels;
    CInfInstallSection m_cInstall;
    CInfVersionSection m_cVersion;

    /// The models section for a system and the model in it.
    DWORD ReadModel(HINF hInf, LPCSTR lpszDriverName, DWORD dwArchitecture, DWORD dwMajorVersion, DWORD dwMinorVersion);
    /// The same and the model's install section.
    DWORD ReadInstall(HINF hInf, LPCSTR lpszDriverName, DWORD dwArchitecture, DWORD dwMajorVersion,
                      DWORD dwMinorVersion);
    /// The same and the version section. Each stops at the first code that isn't 0, and returns it.
    DWORD ReadAll(HINF hInf, LPCSTR lpszDriverName, DWORD dwArchitecture, DWORD dwMajorVersion, DWORD dwMinorVersion);
};

}  // namespace pikel
