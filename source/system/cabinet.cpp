// Unpacks cabinets through the Setup API.
#include "system/cabinet.h"

#include <string>
#include <string_view>

#include "frame/path.h"
#include "frame/text.h"
#include "platform/platform.h"

namespace pikel {

namespace {

constexpr UINT kNotificationMask = 0xFF;
constexpr std::size_t kLongestFolder = MAX_PATH;  // characters, without a NUL

/// Tells the system where a file goes, and makes its folders.
UINT PlaceFile(LPCSTR lpszFolder, FILE_IN_CABINET_INFO_A& info, LPCSTR lpszCabinetPath) {
    const std::string strTarget = lpszFolder != nullptr ? std::string(lpszFolder) + "\\" + info.NameInCabinet
                                                        : FolderOfPath(lpszCabinetPath) + info.NameInCabinet;
    if (!CopyIfFits(strTarget, info.FullTargetName, sizeof info.FullTargetName)) {
        Platform().SetLastError(ERROR_FILENAME_EXCED_RANGE);
        return FILEOP_ABORT;
    }
    EnsurePathExists(FolderOfPath(info.FullTargetName).c_str());
    return FILEOP_DOIT;
}

/// PSP_FILE_CALLBACK_A of the walk; the context is the output folder. No exception goes through the system's frames.
UINT CALLBACK ExtractCabinetCallback(PVOID pContext, UINT nNotification, UINT_PTR param1, UINT_PTR param2) {
    if ((nNotification & kNotificationMask) != SPFILENOTIFY_FILEINCABINET) {
        return 0;
    }
    try {
        return PlaceFile(static_cast<LPCSTR>(pContext), *reinterpret_cast<FILE_IN_CABINET_INFO_A*>(param1),
                         reinterpret_cast<LPCSTR>(param2));
    } catch (...) {
        Platform().SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return FILEOP_ABORT;
    }
}

}  // namespace

DWORD DoExtractCabFile(LPCSTR lpszCabinetPath, LPCSTR lpszOutputFolder) {
    if (lpszCabinetPath == nullptr || lpszOutputFolder == nullptr ||
        std::string_view(lpszOutputFolder).size() > kLongestFolder) {
        return ERROR_INVALID_PARAMETER;
    }
    if (!Platform().SetupIterateCabinetA(lpszCabinetPath, 0, ExtractCabinetCallback,
                                         const_cast<LPSTR>(lpszOutputFolder))) {
        return Platform().GetLastError();
    }
    return 0;
}

}  // namespace pikel
