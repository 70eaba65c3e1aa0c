// Read helpers on an open INF: the bottom of the INF model. Statuses are system codes; 1359 says that a key, line or
// field is not there.
#pragma once

#include <string>

#include "platform/owned.h"

namespace pikel {

/// Opens an INF in style 2.
/// @return 0, or the last error with an empty handle; 87 when the system hands out a null handle
DWORD OpenInf(LPCSTR lpszInfFile, InfHandle& inf);

/// Reads a line's text into a heap block. Either a context alone, or handle, section and key.
/// @param buffer [out]  emptied first
DWORD GetInfLineTextBuffer(PINFCONTEXT pContext, HINF hInf, LPCSTR lpszSection, LPCSTR lpszKey, HeapBlock& buffer);

/// Reads the text of the line with a key in a section; fields come joined by commas.
DWORD GetInfLineText(HINF hInf, LPCSTR lpszSection, LPCSTR lpszKey, std::string& strText);

/// Reads the text of the line that a context stands on.
DWORD GetInfLineText(INFCONTEXT& context, std::string& strText);

/// Reads one field of the line that a context stands on.
DWORD GetInfField(INFCONTEXT& context, DWORD dwField, std::string& strText);

/// Reads one field of the line at an index, from 0. A line that isn't there gives 1359.
DWORD GetInfFieldByIndex(HINF hInf, LPCSTR lpszSection, DWORD dwLine, DWORD dwField, std::string& strText);

/// Name under which the INF model writes error lines.
inline constexpr char kInfFileSource[] = ".\\source\\InfFile.cpp";

}  // namespace pikel
