// What the section classes share: the walk over a section's lines, and the form of their log.
#pragma once

#include "frame/log.h"
#include "platform/platform.h"

namespace pikel {

/// Visits the line that a context stands on and all that follow in its section, in file order. The first visit that
/// fails ends the walk.
/// @param visit  DWORD(INFCONTEXT&): status of one line
/// @return 0 at the section's end, or the status of the visit that failed
template <class Visit>
DWORD WalkLinesFrom(INFCONTEXT& context, Visit visit) {
    do {
        const DWORD dwStatus = visit(context);
        if (dwStatus != ERROR_SUCCESS) {
            return dwStatus;
        }
    } while (Platform().SetupFindNextLine(&context, &context));
    return ERROR_SUCCESS;
}

/// The same for all lines of a section.
/// @return also the last error for a section that isn't there
template <class Visit>
DWORD WalkLines(HINF hInf, LPCSTR lpszSection, Visit visit) {
    INFCONTEXT context{};
    if (!Platform().SetupFindFirstLineA(hInf, lpszSection, nullptr, &context)) {
        return Platform().GetLastError();
    }
    return WalkLinesFrom(context, visit);
}

/// Writes a value to the log between two banner lines, with an empty line behind.
#define WriteBanneredLog(banner, value) \
    (::pikel::g_logSettings.debugEnabled ? ::pikel::WriteBanneredLines(banner, value) : (void)0)
void WriteBanneredLines(LPCSTR lpszBanner, LPCSTR lpszValue);

/// Writes a line to the log that holds nothing but its stamp.
inline void WriteEmptyLogLine() {
    WriteLog("%s", "");
}

}  // namespace pikel
