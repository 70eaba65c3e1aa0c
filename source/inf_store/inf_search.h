// The INFs that a folder holds for a provider and class, and the comparisons between INFs.
#pragma once

#include <string>

#include "inf/version_section.h"
#include "frame/string_list.h"
#include "platform/types.h"

namespace pikel {

/// A search for INFs. One object serves one search at a time.
class CInfSearch {
  public:
    /// Finds the INFs of a provider and class.
    /// @param lpszDirectory  folder with its closing backslash, or null for the system's INF folder, whose files are
    ///                       told by their bare names
    /// @param lpszProvider, lpszClass  compared without regard to case, by the system's locale
    /// @param listPaths [out]  cleared first; paths in the order in which the system lists the files. What was found
    ///                         so far when a file can't be opened.
    /// @return 0, also for a folder without an INF; 8 without memory; the code of the listing, or that of a file of
    ///         the class that can't be opened
    DWORD SearchINFFile(LPCSTR lpszDirectory, LPCSTR lpszProvider, LPCSTR lpszClass, StringList& listPaths);

  private:
    DWORD SearchNames(LPCSTR lpszDirectory, LPCSTR lpszNames, LPCSTR lpszProvider, LPCSTR lpszClass,
                      StringList& listPaths);

    CInfVersionSection m_cVersion;  ///< of the candidate looked at last
};

/// SearchINFFile on an object of its own.
DWORD SearchInfList(LPCSTR lpszDirectory, LPCSTR lpszProvider, LPCSTR lpszClass, StringList& listPaths);

/// Tells whether an INF holds every wanted model name, byte by byte.
/// @return 1 or 0; 1 for an empty list of wanted names. Looks no further than the first name that isn't held.
DWORD CheckDriverNameFromINF(const StringList& listWanted, const StringList& listHeld);

/// Tells whether two files hold other lines than each other, case apart.
/// @return 1 or 0; 0 when a path is null or a file can't be read. A line of more than 259 characters makes them
///         different.
DWORD IsInfTextDifferent(LPCSTR lpszFile1, LPCSTR lpszFile2);

/// The system's INF folder, with its closing backslash. Without the Windows folder it is that of a folder in the root.
std::string SystemInfFolder();

/// Finds an INF on the system's search path.
/// @param strPath [out]  its full path; untouched on failure
/// @return 0; 8 without memory; else the last error
DWORD GetInfPath(LPCSTR lpszName, std::string& strPath);

/// What an INF without a models section for a system gives.
enum class NoModels {
    Fail,     ///< the code of a section that isn't there
    AreNone,  ///< 0 and no name
};

/// Reads the model names of the first models section that an INF has for a system.
/// @param listModels [out]  cleared first; sorted, each name once
/// @return 0; the last error for an INF that can't be opened; else the code of the section that could not be read
DWORD GetInfModelList(LPCSTR lpszInfFile, DWORD dwProcessor, DWORD dwMajor, DWORD dwMinor, StringList& listModels,
                      NoModels noModels = NoModels::Fail);

}  // namespace pikel
