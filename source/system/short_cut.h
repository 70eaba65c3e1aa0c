// Creates program shortcuts in the Start menu.
#pragma once

#include "platform/types.h"

namespace pikel {

/// One shortcut. Texts that are null are left alone.
struct ShortcutRecord {
    LPCSTR LinkPath;          ///< full path of the shortcut's file. Required.
    LPCSTR TargetPath;        ///< what it starts. Required.
    LPCSTR Description;       ///< or null
    LPCSTR WorkingDirectory;  ///< or null
    LPCSTR Arguments;         ///< command-line arguments, or null
    LPCSTR IconPath;          ///< file of its icon, or null
    INT IconIndex;            ///< number of the icon; with 0 the icon is left alone, also with an IconPath
};

/// Writes a shortcut's file. COM is set up on the calling thread for as long as this takes, where the thread lacks it.
/// @return 0; 87 for a null record or a required text that is null; 1359 for any failure of COM, and for a path that
///         doesn't fit 259 characters
DWORD WriteShortcut(const ShortcutRecord* pRecord);

/// Creates a shortcut in a folder of its own below the Start menu's programs: of all users on the NT family, of the
/// current one on the 9x family. The folder may exist. Nothing is logged.
/// @param lpszFolderName        folder to make. Required.
/// @param lpszLinkName          file name of the shortcut, used as it stands. Required.
/// @param lpszTargetPath        what it starts. Required.
/// @param lpszWorkingDirectory  or null
/// @return 0; 87 for a null required argument; 1359 when the programs' folder isn't known, or as WriteShortcut
DWORD DoCreateShortCut(LPCSTR lpszFolderName, LPCSTR lpszLinkName, LPCSTR lpszTargetPath, LPCSTR lpszWorkingDirectory);

}  // namespace pikel
