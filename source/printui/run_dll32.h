// Calls rundll-style entries of libraries, above all the one of the system's Print UI.
#pragma once

#include "platform/owned.h"

namespace pikel {

inline constexpr DWORD MAX_ENTRY_LENGTH = 256;         ///< characters of an entry's name, NUL not among them
inline constexpr DWORD MAX_COMMANDLINE_LENGTH = 2048;  ///< characters of a command line, likewise
inline constexpr DWORD MAX_PRINTUI_TEXT = 520;         ///< bytes of a text that goes into a command line

/// A loaded library and the entry of it that was called last. Entries have the rundll form and give no result: the
/// thread's last error alone tells the outcome, and it may be older than the call.
class CRunDll32 {
  public:
    CRunDll32() = default;
    ~CRunDll32() { Unload(); }
    CRunDll32(const CRunDll32&) = delete;
    CRunDll32& operator=(const CRunDll32&) = delete;

    /// Loads a library in place of the one that is held; one of the same name in any case is kept.
    /// @param lpszModule  name or path, shorter than 260 bytes. Required.
    /// @return 0; 8 for a longer name; else the system's code, which may be 0 for a load that failed without one
    DWORD Load(LPCSTR lpszModule);

    /// Clears both names and frees the library.
    void Unload();

    /// Calls an entry: its wide form (the name with "W") where there is one, else its narrow one ("A"), else the bare
    /// name. What was found is kept for the next call.
    /// @param lpszEntry        at most MAX_ENTRY_LENGTH characters
    /// @param lpszCommandLine  at most MAX_COMMANDLINE_LENGTH characters
    /// @return the last error right behind the call; 87 for no library, a null or too long text, or a missing entry
    DWORD CallEntry(HWND hWnd, LPCSTR lpszEntry, LPCSTR lpszCommandLine, INT nShow);

    /// Reads a text of the library's string table.
    /// @param lpszBuffer [out]  dwSize bytes; an empty text when no library is held
    /// @return 0; the system's code for a text that is empty or not there
    DWORD GetResourceStr(DWORD dwId, LPSTR lpszBuffer, DWORD dwSize);

  private:
    using EntryPointW = looked_up::PrintUIEntryW;
    using EntryPointA = looked_up::PrintUIEntryA;

    DWORD CheckArguments(LPCSTR lpszEntry, LPCSTR lpszCommandLine) const;
    void ForgetEntry();
    template <class EntryPoint>
    EntryPoint Find(LPCSTR lpszEntry, LPCSTR lpszSuffix) const;
    bool LookUpEntry(LPCSTR lpszEntry);
    DWORD CallWide(HWND hWnd, LPCSTR lpszCommandLine, INT nShow) const;
    DWORD CallNarrow(HWND hWnd, LPCSTR lpszCommandLine, INT nShow) const;
    DWORD CallHeldEntry(HWND hWnd, LPCSTR lpszEntry, LPCSTR lpszCommandLine, INT nShow);

    LoadedModule m_hModule;
    EntryPointW m_pfnEntryPointW = nullptr;
    EntryPointA m_pfnEntryPointA = nullptr;
    INT m_nWide = 0;                                ///< 1: the entry is called in its wide form
    char m_szModuleName[MAX_PATH] = {};             ///< under which the library was loaded
    char m_szEntryName[MAX_ENTRY_LENGTH + 1] = {};  ///< that the two pointers belong to
};

/// Runs one command line of the Print UI. "PRINTUI.DLL" is held for the length of the call alone.
/// @param lpszCommandLine  at most MAX_COMMANDLINE_LENGTH characters. Required.
/// @return the last error that the command left; 87 for a null or too long command line, or a missing entry; else the
///         code of the load
DWORD DoRunPrintUI(LPCSTR lpszCommandLine);

/// Reads a text of the Print UI's string table.
/// @param lpszBuffer [out]  dwSize bytes, which a longer text is cut to. Required.
/// @return 0; 87 for a null buffer; else the code of the load or of the look-up
DWORD DoGetResourceStrFromPrintUI(DWORD dwId, LPSTR lpszBuffer, DWORD dwSize);

/// Makes a text safe within the quotes of a command line: at-signs and double quotes get a backslash in front. A double
/// quote that has one is left as it is.
/// @param lpszText       at most MAX_PRINTUI_TEXT bytes. Required.
/// @param lpszOut [out]  the unconverted text when the conversion failed, cut where it doesn't fit. Required.
/// @param dwSize         bytes at lpszOut, of which MAX_PRINTUI_TEXT are used at most
/// @return 0; 87 for a null argument or a longer text; 8 without memory; 122 for a converted text that doesn't fit;
///         else the code of the conversion
DWORD ConvertPrintUICommandString(LPCSTR lpszText, LPSTR lpszOut, DWORD dwSize);

}  // namespace pikel
