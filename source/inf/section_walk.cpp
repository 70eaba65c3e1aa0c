// What the section classes share.
#include "inf/section_walk.h"

#include "frame/log.h"

namespace pikel {

void WriteBanneredLines(LPCSTR lpszBanner, LPCSTR lpszValue) {
    WriteLog("%s", lpszBanner);
    WriteLog("%s", lpszValue);
    WriteLog("%s", lpszBanner);
    WriteEmptyLogLine();
}

}  // namespace pikel
