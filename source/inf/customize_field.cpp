// The marker, code and comment of a customised build, from the comments at the head of an INF.
#include "inf/customize_field.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "frame/text_stream.h"
#include "frame/log.h"

namespace pikel {

namespace {

constexpr char kHeaderEnd[] = "[Version]";
constexpr char kMarker[] = "Tarvo Customized Drive";
constexpr char kCode[] = "Customization Code=";
constexpr char kComment[] = "Customization Comment=";

/// Longest piece of a line that is looked at; a longer line counts as several.
constexpr std::size_t kMaxPiece = 2047;
/// Characters of a code.
constexpr std::size_t kMaxCode = 8;

/// What stands behind a tag in a line; null when the line doesn't contain it.
LPCSTR FindBehind(LPCSTR lpszLine, LPCSTR lpszTag) {
    LPCSTR lpszFound = std::strstr(lpszLine, lpszTag);
    return lpszFound == nullptr ? nullptr : lpszFound + std::strlen(lpszTag);
}

/// Copies at most dwMax characters and fills the rest of the buffer with NULs.
template <std::size_t kSize>
void CopyBounded(char (&szTarget)[kSize], LPCSTR lpszText, std::size_t dwMax) {
    const std::size_t dwLength = std::min({std::strlen(lpszText), dwMax, kSize - 1});
    std::memset(szTarget, 0, kSize);
    std::memcpy(szTarget, lpszText, dwLength);
}

/// Takes the comment from the line behind the code's. Its last character is its line end and is cut off, also where it
/// is none because the file ends there.
template <std::size_t kSize>
void ReadComment(TextStream& stream, char (&szComment)[kSize]) {
    szComment[0] = '\0';
    std::string strLine;
    if (!stream.ReadPiece(strLine, kMaxPiece)) {
        return;
    }
    if (LPCSTR lpszComment = FindBehind(strLine.c_str(), kComment)) {
        const std::size_t dwLength = std::strlen(lpszComment);
        CopyBounded(szComment, lpszComment, dwLength == 0 ? 0 : dwLength - 1);
    }
}

/// Goes through the lines of the header.
void ReadHeader(TextStream& stream, CInfCustomizeField& field) {
    std::string strLine;
    // A last line that the file ends without a line end is not looked at.
    while (stream.ReadPiece(strLine, kMaxPiece) && !stream.AtEnd()) {
        LPCSTR lpszLine = strLine.c_str();
        if (std::strstr(lpszLine, kHeaderEnd) != nullptr) {
            return;
        }
        if (field.m_bCustomized == 0 && std::strstr(lpszLine, kMarker) != nullptr) {
            field.m_bCustomized = 1;
        }
        // Only once the marker was seen; it may stand on the same line.
        LPCSTR lpszCode = field.m_bCustomized == 0 ? nullptr : FindBehind(lpszLine, kCode);
        if (lpszCode != nullptr) {
            // A shorter code keeps the line end behind it, up to those 8 characters, and the caller gets it with it.
            CopyBounded(field.m_szCode, lpszCode, kMaxCode);
            ReadComment(stream, field.m_szComment);
            return;
        }
    }
}

}  // namespace

DWORD CInfCustomizeField::GetData(LPCSTR lpszInfFile) {
    WriteLog("CInfCustomizeField::GetData() Start");
    DWORD dwStatus = ERROR_FILE_NOT_FOUND;
    TextStream stream;
    if (stream.Open(lpszInfFile)) {
        ReadHeader(stream, *this);
        stream.Close();
        dwStatus = ERROR_SUCCESS;
    }
    WriteLog("CInfCustomizeField::GetData() End(%d)", static_cast<int>(dwStatus));
    return dwStatus;
}

DWORD DoGetCustomizeInfo(LPCSTR lpszInfFile, LPDWORD pbCustomized, LPSTR lpszCustomizeCode,
                         LPSTR lpszCustomizeComment) {
    WriteLog("DoGetCustomizeInfo Start");
    if (lpszInfFile == nullptr || pbCustomized == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    *pbCustomized = 0;
    CInfCustomizeField cInfCustomize;
    const DWORD dwStatus = cInfCustomize.GetData(lpszInfFile);
    if (dwStatus == ERROR_SUCCESS) {
        if (cInfCustomize.m_bCustomized != 0) {
            if (lpszCustomizeCode != nullptr) {
                std::memcpy(lpszCustomizeCode, cInfCustomize.m_szCode, kCustomizeCodeSize);
            }
            if (lpszCustomizeComment != nullptr) {
                std::memcpy(lpszCustomizeComment, cInfCustomize.m_szComment, kCustomizeCommentSize);
            }
            *pbCustomized = 1;
        }
        // The caller's buffers as they are now, written or not: they need not hold a NUL, so no more of them is read
        // than they must have.
        WriteLog("DoGetCustomizeInfo lpszCustomizeCode(%.*s)", kCustomizeCodeSize,
                 lpszCustomizeCode == nullptr ? "" : lpszCustomizeCode);
        WriteLog("DoGetCustomizeInfo lpszCustomizeComment(%.*s)", kCustomizeCommentSize,
                 lpszCustomizeComment == nullptr ? "" : lpszCustomizeComment);
    }
    WriteLog("DoGetCustomizeInfo cInfCustomize.m_bCustomized(%d)", static_cast<int>(*pbCustomized));
    WriteLog("DoGetCustomizeInfo End(%d)", static_cast<int>(dwStatus));
    return dwStatus;
}

}  // namespace pikel
