// Paths as texts of the active code page, where the trail byte of a double-byte character may look like a backslash.
#include "frame/path.h"

#include "platform/platform.h"

namespace pikel {

namespace {

constexpr int kWidePathSize = 520;  // wide characters, NUL included

/// Bytes of the character that begins at a position: 2 behind a lead byte, else 1. Lead bytes lie above ASCII in every
/// code page, so that the system is asked for the others alone.
std::size_t CharacterLength(std::string_view path, std::size_t position) {
    const BYTE byte = static_cast<BYTE>(path[position]);
    const bool fIsDouble = byte >= 0x80 && position + 1 < path.size() && Platform().IsDBCSLeadByte(byte);
    return fIsDouble ? 2 : 1;
}

}  // namespace

PathParts SplitPath(std::string_view path) {
    PathParts parts;
    if (path.size() >= 2 && path[1] == ':' && CharacterLength(path, 0) == 1) {
        parts.strDrive = path.substr(0, 2);
        path.remove_prefix(2);
    }

    std::size_t nameBegin = 0;
    std::size_t extensionBegin = std::string_view::npos;
    for (std::size_t position = 0; position < path.size(); position += CharacterLength(path, position)) {
        if (path[position] == '\\' || path[position] == '/') {
            nameBegin = position + 1;
            extensionBegin = std::string_view::npos;
        } else if (path[position] == '.') {
            extensionBegin = position;
        }
    }
    if (extensionBegin == std::string_view::npos) {
        extensionBegin = path.size();
    }

    parts.strDirectory = path.substr(0, nameBegin);
    parts.strName = path.substr(nameBegin, extensionBegin - nameBegin);
    parts.strExtension = path.substr(extensionBegin);
    return parts;
}

void DropTrailingBackslash(std::string& path) {
    if (path.empty() || path.back() != '\\') {
        return;
    }
    std::size_t last = 0;
    for (std::size_t position = 0; position < path.size(); position += CharacterLength(path, position)) {
        last = position;
    }
    if (last == path.size() - 1) {
        path.pop_back();
    }
}

std::string WithBackslash(std::string path) {
    if (!path.empty()) {
        DropTrailingBackslash(path);
        path += '\\';
    }
    return path;
}

std::string FolderOfPath(std::string_view path) {
    const PathParts parts = SplitPath(path);
    return parts.strDrive + parts.strDirectory;
}

std::string FileNameOfPath(std::string_view path) {
    const PathParts parts = SplitPath(path);
    return parts.strName + parts.strExtension;
}

void EnsurePathExists(LPCSTR lpszPath) {
    if (lpszPath == nullptr) {
        return;
    }
    const UINT uCodePage = Platform().GetACP();
    WCHAR wszPath[kWidePathSize] = {};
    const int nLength = Platform().MultiByteToWideChar(uCodePage, 0, lpszPath, -1, wszPath, kWidePathSize);

    // Without the NUL. A path that doesn't fit fails and counts as empty.
    for (int n = 0; n < nLength - 1; ++n) {
        if (wszPath[n] != static_cast<WCHAR>('\\')) {
            continue;
        }
        char szPrefix[MAX_PATH] = {};
        const int nBytes =
            Platform().WideCharToMultiByte(uCodePage, 0, wszPath, n + 1, szPrefix, MAX_PATH - 1, nullptr, nullptr);
        if (nBytes > 0 && !Platform().PathFileExistsA(szPrefix)) {
            Platform().CreateDirectoryA(szPrefix, nullptr);
        }
    }
}

std::string_view BehindLastBackslash(std::string_view path) {
    const std::size_t backslash = path.rfind('\\');
    return backslash == std::string_view::npos ? path : path.substr(backslash + 1);
}

}  // namespace pikel
