// The calls that browse the network.
#include <algorithm>
#include <cstring>
#include <memory>

#include "machine/network/network.h"
#include "machine/operations.h"
#include "machine/spooler/spooler.h"

namespace pikel::simulated {

namespace {

constexpr DWORD kAllEntries = 0xffffffff;
constexpr DWORD kConnected = 1;
constexpr DWORD kRemembered = 3;
constexpr DWORD kNoSuchComputer = 53;   // ERROR_BAD_NETPATH
constexpr DWORD kInvalidAddress = 487;  // ERROR_INVALID_ADDRESS
constexpr DWORD kUnknownProvider = 1204;
constexpr DWORD kNotContainer = 1207;

/// What the last failing provider had to say.
struct ProviderError {
    DWORD code = 0;
    std::string text;
    std::string provider;
};
thread_local ProviderError lastProviderError;

/// A node of the network as the caller sees it.
struct Node {
    DWORD type = RESOURCETYPE_ANY;
    DWORD displayType = 0;
    DWORD usage = RESOURCEUSAGE_CONTAINER;
    std::string remoteName;
    std::string comment;
    std::string provider;
};

/// An enumeration: all its nodes, and how many were handed out.
struct Enumeration {
    std::vector<Node> nodes;
    std::size_t next = 0;
};

// ---- nodes ----------------------------------------------------------------------------------------------------------

std::vector<Node> ProviderNodes(const std::vector<NetworkProvider>& providers) {
    std::vector<Node> nodes;
    for (const NetworkProvider& provider : providers) {
        nodes.push_back({.displayType = RESOURCEDISPLAYTYPE_NETWORK,
                         .remoteName = provider.name,
                         .comment = {},
                         .provider = provider.name});
    }
    return nodes;
}

void AddServers(const Network& network, const NetworkProvider& provider, std::string_view domain,
                std::vector<Node>* nodes) {
    for (const NetworkServer& server : network.Servers(provider, domain)) {
        nodes->push_back({.displayType = RESOURCEDISPLAYTYPE_SERVER,
                          .remoteName = "\\\\" + server.name,
                          .comment = server.comment,
                          .provider = provider.name});
    }
}

std::vector<Node> RootNodes(const Network& network, const NetworkProvider& provider) {
    std::vector<Node> nodes;
    for (const std::string& domain : network.Domains(provider)) {
        nodes.push_back({.displayType = RESOURCEDISPLAYTYPE_DOMAIN,
                         .remoteName = domain,
                         .comment = {},
                         .provider = provider.name});
    }
    AddServers(network, provider, {}, &nodes);
    return nodes;
}

/// @param type  RESOURCETYPE_ANY, or the types that are wanted
std::vector<Node> ShareNodes(const Network& network, const NetworkProvider& provider, const std::string& server,
                             DWORD type) {
    std::vector<Node> nodes;
    for (const NetworkShare& share : network.Shares(server)) {
        if (type == RESOURCETYPE_ANY || (share.type & type) != 0) {
            nodes.push_back({.type = share.type,
                             .displayType = RESOURCEDISPLAYTYPE_SHARE,
                             .usage = RESOURCEUSAGE_CONNECTABLE,
                             .remoteName = "\\\\" + server + "\\" + share.name,
                             .comment = share.comment,
                             .provider = provider.name});
        }
    }
    return nodes;
}

// ---- opening --------------------------------------------------------------------------------------------------------

/// The provider of a container: the one that it names, or is, else the first.
std::optional<NetworkProvider> ProviderOf(const Network& network, const std::vector<NetworkProvider>& providers,
                                          const NETRESOURCEA& container) {
    if (container.lpProvider != nullptr) {
        return network.FindProvider(container.lpProvider);
    }
    std::optional<NetworkProvider> named = network.FindProvider(TextOf(container.lpRemoteName));
    return named ? named : providers.front();
}

/// What is below a container of a provider.
DWORD CollectBelow(Machine& machine, const NetworkProvider& provider, std::string_view name, DWORD type,
                   std::vector<Node>* nodes) {
    const Network network(machine);
    if (name.empty() || IsSameName(machine, name, provider.name)) {
        *nodes = RootNodes(network, provider);
        return ERROR_SUCCESS;
    }
    if (name.starts_with("\\\\")) {
        const std::string server(name.substr(2));
        if (!network.HasServer(server)) {
            return kNoSuchComputer;
        }
        *nodes = ShareNodes(network, provider, server, type);
        return ERROR_SUCCESS;
    }
    AddServers(network, provider, name, nodes);
    return nodes->empty() ? kNoSuchComputer : ERROR_SUCCESS;
}

DWORD Collect(Machine& machine, DWORD type, const NETRESOURCEA* container, std::vector<Node>* nodes) {
    const Network network(machine);
    const std::vector<NetworkProvider> providers = network.Providers();
    if (providers.empty()) {
        return ERROR_NO_NETWORK;
    }
    if (container == nullptr) {
        *nodes = ProviderNodes(providers);
        return ERROR_SUCCESS;
    }
    if (container->dwUsage != 0 && (container->dwUsage & RESOURCEUSAGE_CONTAINER) == 0) {
        return kNotContainer;
    }
    const std::optional<NetworkProvider> provider = ProviderOf(network, providers, *container);
    if (!provider) {
        return kUnknownProvider;
    }
    if (provider->error != ERROR_SUCCESS) {
        lastProviderError = {provider->error, provider->errorText, provider->name};
        return ERROR_EXTENDED_ERROR;
    }
    return CollectBelow(machine, *provider, TextOf(container->lpRemoteName), type, nodes);
}

// ---- handing out ----------------------------------------------------------------------------------------------------

std::size_t SizeOf(const std::string& text) {
    return text.empty() ? 0 : text.size() + 1;
}

std::size_t SizeOf(const Node& node) {
    return sizeof(NETRESOURCEA) + SizeOf(node.remoteName) + SizeOf(node.comment) + SizeOf(node.provider);
}

/// A caller's buffer, which may be unaligned: structures at its front, their texts from its end towards them.
class NodeBuffer {
  public:
    NodeBuffer(LPVOID bytes, DWORD size) : m_front(static_cast<char*>(bytes)), m_back(m_front + size) {}

    bool Holds(const Node& node) const { return static_cast<std::size_t>(m_back - m_front) >= SizeOf(node); }
    void Put(const Node& node) {
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
        if (const DWORD code = Collect(machine, dwType, lpNetResource, &enumeration->nodes); code != ERROR_SUCCESS) {
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
        const Node& node = enumeration->nodes[enumeration->next];
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
