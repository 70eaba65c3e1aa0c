// Process heap, local and global blocks, and BSTRs.
#include <cstring>

#include "machine/base/machine.h"
#include "machine/operations.h"

namespace pikel::simulated {

namespace {

// What a block without HEAP_ZERO_MEMORY holds: never zeros, so that nobody comes to rely on them.
constexpr int kUnsetByte = 0xBA;

HANDLE ProcessHeap() {
    return reinterpret_cast<HANDLE>(static_cast<uintptr_t>(0x00150000));
}

bool IsProcessHeap(HANDLE heap) {
    if (heap == ProcessHeap()) {
        return true;
    }
    Current().Handles().NoteMisuse("a heap call with a handle that is no heap");
    return false;
}

}  // namespace

HANDLE WINAPI GetProcessHeap() {
    return ProcessHeap();
}

LPVOID WINAPI HeapAlloc(HANDLE hHeap, DWORD dwFlags, SIZE_T dwBytes) {
    if (!IsProcessHeap(hHeap)) {
        return nullptr;
    }
    void* block = Current().Heap().Allocate(BlockKind::Heap, dwBytes);
    if (block != nullptr && (dwFlags & HEAP_ZERO_MEMORY) == 0) {
        std::memset(block, kUnsetByte, dwBytes);
    }
    return block;
}

BOOL WINAPI HeapFree(HANDLE hHeap, DWORD, LPVOID lpMem) {
    if (!IsProcessHeap(hHeap)) {
        return Fail(ERROR_INVALID_HANDLE, FALSE);
    }
    if (lpMem == nullptr) {
        return TRUE;
    }
    return Outcome(Current().Heap().Free(BlockKind::Heap, lpMem) ? ERROR_SUCCESS : ERROR_INVALID_PARAMETER);
}

HLOCAL WINAPI LocalFree(HLOCAL hMem) {
    if (hMem == nullptr || Current().Heap().Free(BlockKind::Local, hMem)) {
        return nullptr;
    }
    return Fail(ERROR_INVALID_HANDLE, hMem);
}

HGLOBAL WINAPI GlobalAlloc(UINT uFlags, SIZE_T dwBytes) {
    // Global and local blocks are of one kind since the days of 32 bits.
    void* block = Current().Heap().Allocate(BlockKind::Local, dwBytes);
    if (block == nullptr) {
        return Fail(ERROR_NOT_ENOUGH_MEMORY, HGLOBAL{});
    }
    if ((uFlags & GMEM_ZEROINIT) == 0) {
        std::memset(block, kUnsetByte, dwBytes);
    }
    return block;
}

HGLOBAL WINAPI GlobalFree(HGLOBAL hMem) {
    return LocalFree(hMem);
}

BSTR WINAPI SysAllocStringLen(const OLECHAR* strIn, UINT ui) {
    const std::size_t bytes = std::size_t{ui} * sizeof(OLECHAR);
    auto* text = static_cast<OLECHAR*>(Current().Heap().Allocate(BlockKind::Bstr, bytes + sizeof(OLECHAR)));
    if (text == nullptr) {
        return nullptr;
    }
    // The length in bytes stands right in front of the text, where programs written for Windows look for it.
    const auto length = static_cast<DWORD>(bytes);
    std::memcpy(reinterpret_cast<char*>(text) - sizeof length, &length, sizeof length);
    if (strIn != nullptr) {
        std::memcpy(text, strIn, bytes);
    }
    return text;
}

UINT WINAPI SysStringLen(BSTR pbstr) {
    if (pbstr == nullptr) {
        return 0;
    }
    Heap& heap = Current().Heap();
    if (!heap.Owns(BlockKind::Bstr, pbstr)) {
        Current().Handles().NoteMisuse("SysStringLen of a text that is no BSTR");
        return 0;
    }
    return static_cast<UINT>(heap.Size(pbstr) / sizeof(OLECHAR)) - 1;
}

void WINAPI SysFreeString(BSTR bstrString) {
    if (bstrString != nullptr) {
        Current().Heap().Free(BlockKind::Bstr, bstrString);
    }
}

}  // namespace pikel::simulated
