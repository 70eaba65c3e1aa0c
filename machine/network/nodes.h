// The nodes of the network as a program that browses sees them: networks, below them domains and servers, and what
// these share.
#pragma once

#include <string>
#include <vector>

#include "platform/types.h"

namespace pikel::simulated {

class Machine;

/// A node of the network as the caller sees it.
struct NetworkNode {
    DWORD type = RESOURCETYPE_ANY;
    DWORD displayType = 0;
    DWORD usage = RESOURCEUSAGE_CONTAINER;
    std::string remoteName;
    std::string comment;
    std::string provider;
};

/// What a provider that fails has to say.
struct ProviderError {
    DWORD code = 0;
    std::string text;
    std::string provider;
};

/// The nodes below a container.
/// @param type       RESOURCETYPE_ANY, or the types of shares that are wanted
/// @param container  null: the networks
/// @param error      [out] with 1208 alone
/// @return 0; 1222 without a network; 1207 for a node that is no container; 1204 for an unknown provider; 53 for a
///         domain or server that isn't there; 1208 when the provider fails
DWORD CollectNodes(Machine& machine, DWORD type, const NETRESOURCEA* container, std::vector<NetworkNode>* nodes,
                   ProviderError* error);

}  // namespace pikel::simulated
