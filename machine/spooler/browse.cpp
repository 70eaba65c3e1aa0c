// Browsing the network through the spooler, NT family.
#include "machine/spooler/browse.h"

#include "machine/base/names.h"
#include "machine/network/network.h"
#include "machine/registry/registry.h"
#include "machine/spooler/printer_store.h"
#include "machine/spooler/spooler.h"

namespace pikel::simulated {

namespace {

struct BrowseEntry {
    DWORD flags = 0;
    std::string name;
    std::string description;
    std::string comment;
};
using BrowseList = std::vector<BrowseEntry>;

constexpr DWORD kProviderFlags = PRINTER_ENUM_CONTAINER | PRINTER_ENUM_ICON1;
constexpr DWORD kDomainFlags = PRINTER_ENUM_CONTAINER | PRINTER_ENUM_ICON2;
constexpr DWORD kServerFlags = PRINTER_ENUM_CONTAINER | PRINTER_ENUM_ICON3;

BrowseList ProviderList(const Network& network) {
    BrowseList list{{kProviderFlags, kLocalPrintProvider, kLocalPrintProvider, {}}};
    for (const NetworkProvider& provider : network.Providers()) {
        list.push_back({kProviderFlags, provider.printProvider, provider.printProvider, {}});
    }
    return list;
}

BrowseList LocalList(Machine& machine) {
    BrowseList list;
    for (const Printer& printer : PrinterStore(machine).List()) {
        list.push_back({PRINTER_ENUM_ICON8, printer.name,
                        printer.name + "," + printer.driverName + "," + printer.location, printer.comment});
    }
    return list;
}

void AddServers(const Network& network, const NetworkProvider& provider, std::string_view domain, BrowseList* list) {
    for (const NetworkServer& server : network.Servers(provider, domain)) {
        list->push_back({kServerFlags, "\\\\" + server.name, server.name, server.comment});
    }
}

BrowseList DomainList(const Network& network, const NetworkProvider& provider) {
    BrowseList list;
    for (const std::string& domain : network.Domains(provider)) {
        list.push_back({kDomainFlags, provider.printProvider + "!" + domain, domain, {}});
    }
    AddServers(network, provider, {}, &list);
    return list;
}

BrowseList SharedList(Machine& machine, const std::string& server) {
    const Registry& registry = machine.Registry();
    BrowseList list;
    for (const NetworkShare& share : Network(machine).Shares(server)) {
        if (share.type != RESOURCETYPE_PRINT) {
            continue;
        }
        const std::string name = "\\\\" + server + "\\" + share.name;
        const std::string key = "HKLM\\SOFTWARE\\Simulated Network\\Servers\\" + server + "\\" + share.name;
        list.push_back({PRINTER_ENUM_ICON8, name,
                        name + "," + registry.Text(key, "Driver") + "," + registry.Text(key, "Location"),
                        share.comment});
    }
    return list;
}

/// The list below a name; nothing when it names no place of the network.
std::optional<BrowseList> ListBelow(Machine& machine, std::string_view name, DWORD* code) {
    const Network network(machine);
    if (name.empty()) {
        return ProviderList(network);
    }
    if (IsSameName(machine, name, kLocalPrintProvider)) {
        return LocalList(machine);
    }
    if (name.starts_with("\\\\")) {
        const bool isOther = !IsThisComputer(machine, name) && network.HasServer(name.substr(2));
        return isOther ? std::optional(SharedList(machine, std::string(name.substr(2)))) : std::nullopt;
    }
    const std::size_t mark = name.find('!');
    for (const NetworkProvider& provider : network.Providers()) {
        if (!IsSameName(machine, provider.printProvider, name.substr(0, mark))) {
            continue;
        }
        *code = provider.error;
        if (mark == std::string_view::npos) {
            return DomainList(network, provider);
        }
        BrowseList list;
        AddServers(network, provider, name.substr(mark + 1), &list);
        return list.empty() ? std::nullopt : std::optional(std::move(list));
    }
    return std::nullopt;
}

}  // namespace

std::optional<DWORD> AnswerWithBrowseList(Machine& machine, DWORD flags, std::string_view name, DWORD level,
                                          const InfoBuffer& buffer) {
    if (machine.Is9x() || flags != PRINTER_ENUM_NAME || level != 1) {
        return std::nullopt;
    }
    DWORD code = ERROR_SUCCESS;
    const std::optional<BrowseList> list = ListBelow(machine, name, &code);
    if (!list) {
        return std::nullopt;
    }
    if (code != ERROR_SUCCESS) {
        return code;
    }
    return AnswerWith<PRINTER_INFO_1A>(buffer, *list,
                                       [](InfoSpace& space, PRINTER_INFO_1A& info, const BrowseEntry& entry) {
                                           info.Flags = entry.flags;
                                           info.pDescription = space.Text(entry.description);
                                           info.pName = space.Text(entry.name);
                                           info.pComment = space.Text(entry.comment);
                                       });
}

}  // namespace pikel::simulated
