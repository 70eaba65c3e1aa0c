// Read helpers on an open INF. Every read asks for the size first and fetches the text with a second call, through one
// block of the process heap.
#include "InfFile/inf_access.h"

#include <cstring>

namespace pikel {

namespace {

/// A text of the process heap, with the size of its block.
struct SizedBuffer {
    HeapBlock block;
    DWORD dwSize = 0;
};

/// The two calls of a read.
/// @param read          BOOL(LPSTR buffer, DWORD size, DWORD* required): one call of the platform's read
/// @param buffer [out]  emptied first; filled on success alone
/// @return 0; 1359 when no size is needed; 8 without memory; else the last error of the second call
template <class Read>
DWORD ReadWithRetry(Read read, SizedBuffer& buffer) {
    buffer.block.Reset();
    buffer.dwSize = 0;
    // What the first call returns says nothing: only the size word tells whether there is something to read.
    DWORD dwSize = 0;
    read(nullptr, 0, &dwSize);
    if (dwSize == 0) {
        return ERROR_INTERNAL_ERROR;
    }
    HeapBlock block = AllocateHeap(dwSize);
    if (!block) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    DWORD dwRequired = dwSize;
    if (!read(static_cast<LPSTR>(block.Get()), dwSize, &dwRequired)) {
        return Platform().GetLastError();
    }
    buffer.block = std::move(block);
    buffer.dwSize = dwSize;
    return ERROR_SUCCESS;
}

/// The same into a string, which is erased first.
template <class Read>
DWORD ReadTextWithRetry(Read read, std::string& strText) {
    strText.clear();
    SizedBuffer buffer;
    const DWORD dwStatus = ReadWithRetry(read, buffer);
    if (buffer.block) {
        const char* pchText = static_cast<const char*>(buffer.block.Get());
        const void* pvEnd = std::memchr(pchText, '\0', buffer.dwSize);
        strText.assign(pchText, pvEnd == nullptr ? buffer.dwSize : static_cast<const char*>(pvEnd) - pchText);
    }
    return dwStatus;
}

/// The read of a line's text, as ReadWithRetry takes it.
auto LineTextRead(PINFCONTEXT pContext, HINF hInf, LPCSTR lpszSection, LPCSTR lpszKey) {
    return [=](LPSTR lpszBuffer, DWORD dwSize, DWORD* pdwRequired) {
        return Platform().SetupGetLineTextA(pContext, hInf, lpszSection, lpszKey, lpszBuffer, dwSize, pdwRequired);
    };
}

}  // namespace

DWORD OpenInf(LPCSTR lpszInfFile, InfHandle& inf) {
    UINT uErrorLine = 0;
    inf.Reset(Platform().SetupOpenInfFileA(lpszInfFile, nullptr, INF_STYLE_WIN4, &uErrorLine));
    if (!inf) {
        return Platform().GetLastError();
    }
    if (inf.Get() == nullptr) {
        inf.Release();  // nothing that could be closed
        return ERROR_INVALID_PARAMETER;
    }
    return ERROR_SUCCESS;
}

DWORD GetInfLineTextBuffer(PINFCONTEXT pContext, HINF hInf, LPCSTR lpszSection, LPCSTR lpszKey, HeapBlock& buffer) {
    SizedBuffer text;
    const DWORD dwStatus = ReadWithRetry(LineTextRead(pContext, hInf, lpszSection, lpszKey), text);
    buffer = std::move(text.block);
    return dwStatus;
}

DWORD GetInfLineText(HINF hInf, LPCSTR lpszSection, LPCSTR lpszKey, std::string& strText) {
    return ReadTextWithRetry(LineTextRead(nullptr, hInf, lpszSection, lpszKey), strText);
}

DWORD GetInfLineText(INFCONTEXT& context, std::string& strText) {
    return ReadTextWithRetry(LineTextRead(&context, nullptr, nullptr, nullptr), strText);
}

DWORD GetInfField(INFCONTEXT& context, DWORD dwField, std::string& strText) {
    const auto read = [&context, dwField](LPSTR lpszBuffer, DWORD dwSize, DWORD* pdwRequired) {
        return Platform().SetupGetStringFieldA(&context, dwField, lpszBuffer, dwSize, pdwRequired);
    };
    return ReadTextWithRetry(read, strText);
}

DWORD GetInfFieldByIndex(HINF hInf, LPCSTR lpszSection, DWORD dwLine, DWORD dwField, std::string& strText) {
    strText.clear();
    INFCONTEXT context{};
    // The last error is not asked for: a missing line and a missing section are one to the callers.
    if (!Platform().SetupGetLineByIndexA(hInf, lpszSection, dwLine, &context)) {
        return ERROR_INTERNAL_ERROR;
    }
    return GetInfField(context, dwField, strText);
}

}  // namespace pikel
