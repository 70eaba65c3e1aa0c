// The nodes of the network.
#include "machine/network/nodes.h"

#include <optional>

#include "machine/base/machine.h"
#include "machine/base/names.h"
#include "machine/base/text.h"
#include "machine/network/network.h"

namespace pikel::simulated {

namespace {

constexpr DWORD kNotContainer = 1207;
constexpr DWORD kUnknownProvider = 1204;

// ---- nodes ----------------------------------------------------------------------------------------------------------

std::vector<NetworkNode> ProviderNodes(const std::vector<NetworkProvider>& providers) {
    std::vector<NetworkNode> nodes;
    for (const NetworkProvider& provider : providers) {
        nodes.push_back({.displayType = RESOURCEDISPLAYTYPE_NETWORK,
                         .remoteName = provider.name,
                         .comment = {},
                         .provider = provider.name});
    }
    return nodes;
}

void AddServers(const Network& network, const NetworkProvider& provider, std::string_view domain,
                std::vector<NetworkNode>* nodes) {
    for (const NetworkServer& server : network.Servers(provider, domain)) {
        nodes->push_back({.displayType = RESOURCEDISPLAYTYPE_SERVER,
                          .remoteName = "\\\\" + server.name,
                          .comment = server.comment,
                          .provider = provider.name});
    }
}

std::vector<NetworkNode> RootNodes(const Network& network, const NetworkProvider& provider) {
    std::vector<NetworkNode> nodes;
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
std::vector<NetworkNode> ShareNodes(const Network& network, const NetworkProvider& provider, const std::string& server,
                                    DWORD type) {
    std::vector<NetworkNode> nodes;
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
                   std::vector<NetworkNode>* nodes) {
    const Network network(machine);
    if (name.empty() || IsSameName(machine, name, provider.name)) {
        *nodes = RootNodes(network, provider);
        return ERROR_SUCCESS;
    }
    if (name.starts_with("\\\\")) {
        const std::string server(name.substr(2));
        if (!network.HasServer(server)) {
            return ERROR_BAD_NETPATH;
        }
        *nodes = ShareNodes(network, provider, server, type);
        return ERROR_SUCCESS;
    }
    AddServers(network, provider, name, nodes);
    return nodes->empty() ? ERROR_BAD_NETPATH : ERROR_SUCCESS;
}

}  // namespace

DWORD CollectNodes(Machine& machine, DWORD type, const NETRESOURCEA* container, std::vector<NetworkNode>* nodes,
                   ProviderError* error) {
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
        *error = {provider->error, provider->errorText, provider->name};
        return ERROR_EXTENDED_ERROR;
    }
    return CollectBelow(machine, *provider, TextOf(container->lpRemoteName), type, nodes);
}

}  // namespace pikel::simulated
