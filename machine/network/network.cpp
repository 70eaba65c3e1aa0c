// The network that the machine sees.
#include "machine/network/network.h"

#include <map>

#include "machine/base/names.h"
#include "machine/base/text.h"
#include "machine/registry/registry.h"

namespace pikel::simulated {

namespace {

constexpr char kProvidersKey[] = "HKLM\\SOFTWARE\\Simulated Network\\Providers";
constexpr char kServersKey[] = "HKLM\\SOFTWARE\\Simulated Network\\Servers";
constexpr char kWorkgroup[] = "WORKGROUP";

std::string Below(const char* key, std::string_view name) {
    return key + ("\\" + std::string(name));
}

/// What the family brings along.
NetworkProvider OwnProvider(const Machine& machine) {
    NetworkProvider provider;
    provider.name = machine.Is9x() ? "Microsoft Network" : "Microsoft Windows Network";
    provider.printProvider = "LanMan Print Services";
    provider.netType = WNNC_NET_LANMAN;
    return provider;
}

}  // namespace

std::vector<NetworkProvider> Network::Providers() const {
    const Registry& registry = m_machine.Registry();
    if (!registry.KeyExists(kProvidersKey)) {
        return {OwnProvider(m_machine)};
    }
    std::vector<NetworkProvider> providers;
    for (const std::string& name : registry.SubKeys(kProvidersKey)) {
        const std::string key = Below(kProvidersKey, name);
        NetworkProvider provider;
        provider.name = name;
        provider.printProvider = name;
        provider.netType = registry.Number(key, "NetType", WNNC_NET_LANMAN);
        provider.error = registry.Number(key, "Error");
        provider.errorText = registry.Text(key, "Error Text");
        providers.push_back(std::move(provider));
    }
    return providers;
}

std::optional<NetworkProvider> Network::FindProvider(std::string_view name) const {
    for (NetworkProvider& provider : Providers()) {
        if (IsSameName(m_machine, provider.name, name)) {
            return std::move(provider);
        }
    }
    return std::nullopt;
}

std::vector<NetworkServer> Network::ServersOf(const NetworkProvider& provider) const {
    std::string first;  // to whom the servers belong that name no provider
    for (const NetworkProvider& other : Providers()) {
        if (other.netType == WNNC_NET_LANMAN) {
            first = other.name;
            break;
        }
    }
    const Registry& registry = m_machine.Registry();
    std::vector<NetworkServer> servers;
    for (const std::string& name : registry.SubKeys(kServersKey)) {
        const std::string key = Below(kServersKey, name);
        if (IsSameName(m_machine, registry.Text(key, "Provider", first), provider.name)) {
            const bool isLanMan = provider.netType == WNNC_NET_LANMAN;
            servers.push_back(
                {name, registry.Text(key, "Domain", isLanMan ? kWorkgroup : ""), registry.Text(key, "Comment")});
        }
    }
    return servers;
}

std::vector<std::string> Network::Domains(const NetworkProvider& provider) const {
    const UINT codePage = m_machine.System().codePage;
    std::map<std::string, std::string> domains;  // by their folded names
    for (NetworkServer& server : ServersOf(provider)) {
        if (!server.domain.empty()) {
            domains.emplace(FoldCase(codePage, server.domain), std::move(server.domain));
        }
    }
    std::vector<std::string> names;
    for (auto& [folded, name] : domains) {
        names.push_back(std::move(name));
    }
    return names;
}

std::vector<NetworkServer> Network::Servers(const NetworkProvider& provider, std::string_view domain) const {
    std::vector<NetworkServer> servers = ServersOf(provider);
    std::erase_if(servers, [&](const NetworkServer& server) { return !IsSameName(m_machine, server.domain, domain); });
    return servers;
}

bool Network::HasServer(std::string_view server) const {
    return !server.empty() && server.find('\\') == std::string_view::npos &&
           m_machine.Registry().KeyExists(Below(kServersKey, server));
}

std::vector<NetworkShare> Network::Shares(std::string_view server) const {
    const Registry& registry = m_machine.Registry();
    const std::string serverKey = Below(kServersKey, server);
    std::vector<NetworkShare> shares;
    for (const std::string& name : registry.SubKeys(serverKey)) {
        const std::string key = serverKey + "\\" + name;
        shares.push_back({name, registry.Number(key, "Type", RESOURCETYPE_PRINT), registry.Text(key, "Comment")});
    }
    return shares;
}

}  // namespace pikel::simulated
