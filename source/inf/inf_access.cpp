// Read helpers on an open INF. Every read asks for the size first and fetches the text with a second call, through one
// block of the process heap.
#include "inf/inf_access.h"

namespace pikel {

namespace {

/// The two calls of a read.
/// @param read          BOOL(LPSTR buffer, DWORD size, DWORD* required): one call of the platform's read
/// @param buffer [out]  emptied first; filled on success alone, and ends in a NUL whatever the read writes
/// @return 0; 1359 when no size is needed; 8 without memory; else the last error of the second call
template <class Read>
DWORD ReadWithRetry(Read read, HeapBlock& buffer) {
    buffer.Reset();
    // What the first call returns says nothing: only the size word tells whether there is something to read.
    DWORD dwSize = 0;
    read(nullptr, 0, &dwSize);
    if (dwSize == 0) {
        return ERROR_INTERNAL_ERROR;
    }
    HeapBlock block = AllocateHeap(SIZE_T{dwSize} + 1);
    if (!block) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    DWORD dwRequired = dwSize;
    if (!read(static_cast<LPSTR>(block.Get()), dwSize, &dwRequired)) {
        return Platform().GetLastError();
    }
    buffer = std::move(block);
    return ERROR_SUCCESS;
}

/// The same into a string, which is erased first.
template <class Read>
DWORD ReadTextWithRetry(Read read, std::string& strText) {
    strText.clear();
    HeapBlock buffer;
    const DWORD dwStatus = ReadWithRetry(read, buffer);
    if (buffer) {
        strText = static_cast<LPCSTR>(buffer.Get());
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
    return ReadWithRetry(LineTextRead(pContext, hInf, lpszSection, lpszKey), buffer);
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
