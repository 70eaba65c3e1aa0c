// The calls that browse the network.
#include <algorithm>
#include <cstring>
#include <memory>

#include "machine/base/names.h"
#include "machine/base/text.h"
#include "machine/network/network.h"
#include "machine/network/nodes.h"
#include "machine/operations.h"

namespace pikel::simulated {

namespace {

constexpr DWORD kAllEntries = 0xffffffff;
constexpr DWORD kConnected = 1;
constexpr DWORD kRemembered = 3;
constexpr DWORD kInvalidAddress = 487;  // ERROR_INVALID_ADDRESS

thread_local ProviderError lastProviderError;

/// An enumeration: all its nodes, and how many were handed out.
struct Enumeration {
    std::vector<NetworkNode> nodes;
    std::size_t next = 0;
};

// ---- handing out ----------------------------------------------------------------------------------------------------

std::size_t SizeOf(const std::string& text) {
    return text.empty() ? 0 : text.size() + 1;
}

std::size_t SizeOf(const NetworkNode& node) {
    return sizeof(NETRESOURCEA) + SizeOf(node.remoteName) + SizeOf(node.comment) + SizeOf(node.provider);
}

/// A caller's buffer, which may be unaligned: structures at its front, their texts from its end towards them.
class NodeBuffer {
  public:
    NodeBuffer(LPVOID bytes, DWORD size) : m_front(static_cast<char*>(bytes)), m_back(m_front + size) {}

    bool Holds(const NetworkNode& node) const { return static_cast<std::size_t>(m_back - m_front) >= SizeOf(node); }
    void Put(const NetworkNode& node) {
        NETRESOURCEA resource{};
        resource.dwScope = RESOURCE_GLOBALNET;
        resource.dwType = node.type;
        resource.dwDisplayType = node.displayType;
        resource.dwUsage = node.usage;
        resource.lpRemoteName = PutText(node.remoteName);
        resource.lpComment = PutText(node.comment);
        resource.lpProvider = PutText(node.provider);
        std::memcpy(m_front, &resource, sizeof resource);
        m_front += sizeof resource;
    }

  private:
    LPSTR PutText(const std::string& text) {
        if (text.empty()) {
            return nullptr;
        }
        m_back -= text.size() + 1;
        std::memcpy(m_back, text.c_str(), text.size() + 1);
        return m_back;
    }

    char* m_front;
    char* m_back;
};

void CopyCut(std::string_view text, LPSTR buffer, DWORD size) {
    if (buffer != nullptr && size != 0) {
        const std::size_t length = std::min<std::size_t>(text.size(), size - 1);
        std::memcpy(buffer, text.data(), length);
        buffer[length] = '\0';
    }
}

}  // namespace

// ---- operations -----------------------------------------------------------------------------------------------------

DWORD WINAPI WNetOpenEnumA(DWORD dwScope, DWORD dwType, DWORD, LPNETRESOURCEA lpNetResource, LPHANDLE lphEnum) {
    Machine& machine = Current();
    if (lphEnum == nullptr) {
        return kInvalidAddress;
    }
    *lphEnum = nullptr;
    if (dwScope < kConnected || dwScope > kRemembered) {
        return ERROR_INVALID_PARAMETER;
    }
    auto enumeration = std::make_shared<Enumeration>();
    // The machine has no drive or device that is connected to a share.
    if (dwScope == RESOURCE_GLOBALNET) {
        if (const DWORD code = CollectNodes(machine, dwType, lpNetResource, &enumeration->nodes, &lastProviderError);
            code != ERROR_SUCCESS) {
            return code;
        }
    }
    const std::string name(lpNetResource == nullptr ? std::string_view() : TextOf(lpNetResource->lpRemoteName));
    *lphEnum = machine.Handles().Open(HandleKind::NetworkEnumeration, std::move(enumeration), name);
    return ERROR_SUCCESS;
}

DWORD WINAPI WNetEnumResourceA(HANDLE hEnum, LPDWORD lpcCount, LPVOID lpBuffer, LPDWORD lpBufferSize) {
    auto* enumeration = Current().Handles().Find<Enumeration>(HandleKind::NetworkEnumeration, hEnum);
    if (enumeration == nullptr) {
        return ERROR_INVALID_HANDLE;
    }
    if (lpcCount == nullptr || lpBuffer == nullptr || lpBufferSize == nullptr) {
        return kInvalidAddress;
    }
    const DWORD wanted = *lpcCount;
    *lpcCount = 0;
    if (enumeration->next == enumeration->nodes.size()) {
        return ERROR_NO_MORE_ITEMS;
    }
    NodeBuffer buffer(lpBuffer, *lpBufferSize);
    while (enumeration->next < enumeration->nodes.size() && (wanted == kAllEntries || *lpcCount < wanted)) {
        const NetworkNode& node = enumeration->nodes[enumeration->next];
        if (!buffer.Holds(node)) {
            break;
        }
        buffer.Put(node);
        ++enumeration->next;
        ++*lpcCount;
    }
    if (*lpcCount == 0 && wanted != 0) {
        *lpBufferSize = static_cast<DWORD>(SizeOf(enumeration->nodes[enumeration->next]));
        return ERROR_MORE_DATA;
    }
    return ERROR_SUCCESS;
}

DWORD WINAPI WNetCloseEnum(HANDLE hEnum) {
    return Current().Handles().Close(HandleKind::NetworkEnumeration, hEnum) ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

DWORD WINAPI WNetGetLastErrorA(LPDWORD lpError, LPSTR lpErrorBuf, DWORD nErrorBufSize, LPSTR lpNameBuf,
                               DWORD nNameBufSize) {
    if (lpError == nullptr) {
        return kInvalidAddress;
    }
    *lpError = lastProviderError.code;
    CopyCut(lastProviderError.text, lpErrorBuf, nErrorBufSize);
    CopyCut(lastProviderError.provider, lpNameBuf, nNameBufSize);
    return ERROR_SUCCESS;
}

DWORD WINAPI WNetGetProviderNameA(DWORD dwNetType, LPSTR lpProviderName, LPDWORD lpBufferSize) {
    if (lpProviderName == nullptr || lpBufferSize == nullptr) {
        return kInvalidAddress;
    }
    for (const NetworkProvider& provider : Network(Current()).Providers()) {
        if (provider.netType != dwNetType) {
            continue;
        }
        const DWORD size = static_cast<DWORD>(provider.name.size() + 1);
        if (*lpBufferSize < size) {
            *lpBufferSize = size;
            return ERROR_MORE_DATA;
        }
        std::memcpy(lpProviderName, provider.name.c_str(), size);
        return ERROR_SUCCESS;
    }
    return ERROR_NO_NETWORK;
}

}  // namespace pikel::simulated
