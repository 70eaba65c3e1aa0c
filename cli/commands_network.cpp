// pikel net browse: shared printers of the network.
#include <algorithm>
#include <cstdio>

#include "commands.h"
#include "failure.h"
#include "platform/platform.h"

namespace pikel::cli {

namespace {

struct BrowseOptions {
    std::string under;
    DWORD depth = 1;
};

const char* NodeKindText(DWORD kind) {
    static constexpr const char* kKinds[] = {"other", "network", "domain", "server", "queue", "printer", "share"};
    return kind < std::size(kKinds) ? kKinds[kind] : "other";
}

class Browser {
  public:
    explicit Browser(Session& session) : m_session(session) {}

    /// The children of a node, each with its own down to a depth.
    nlohmann::json Children(const NetResourceRecord* parent, DWORD depth) {
        TableBlock<NetResourceRecord> nodes(m_session.Table());
        DWORD count = List(parent, nodes);
        nlohmann::json list = nlohmann::json::array();
        for (DWORD i = 0; i < count; ++i) {
            const NetResourceRecord& node = nodes.Get()[i];
            nlohmann::json entry = JsonObject({{"kind", NodeKindText(node.ResourceKind)},
                                               {"name", JsonText(node.RemoteName)},
                                               {"shortName", JsonText(node.ShortName)},
                                               {"comment", JsonText(node.Comment)},
                                               {"provider", JsonText(node.Provider)},
                                               {"usage", node.Usage}});
            if (depth > 1 && IsContainer(node)) {
                entry["children"] = Children(&node, depth - 1);
            }
            list.push_back(std::move(entry));
        }
        return list;
    }

    /// The same for the node of a name, which is looked for from the top down.
    /// @return false when no node bears the name
    bool ChildrenOf(const NetResourceRecord* parent, const std::string& name, DWORD depth, unsigned levels,
                    nlohmann::json* result) {
        TableBlock<NetResourceRecord> nodes(m_session.Table());
        const DWORD count = List(parent, nodes);
        for (DWORD i = 0; i < count; ++i) {
            if (Matches(nodes.Get()[i], name)) {
                *result = Children(&nodes.Get()[i], depth);
                return true;
            }
        }
        for (DWORD i = 0; levels > 1 && i < count; ++i) {
            if (IsContainer(nodes.Get()[i]) && ChildrenOf(&nodes.Get()[i], name, depth, levels - 1, result)) {
                return true;
            }
        }
        return false;
    }

  private:
    DWORD List(const NetResourceRecord* parent, TableBlock<NetResourceRecord>& nodes) {
        DWORD count = 0;
        Session::Check("PI_KEL_EnumNetResources",
                       m_session.Table().PI_KEL_EnumNetResources(parent, nodes.Out(), &count), PIKEL_PREFIX_NETWORK);
        return count;
    }
    /// Queues, printers and shares have nothing below them.
    static bool IsContainer(const NetResourceRecord& node) { return node.ResourceKind >= 1 && node.ResourceKind <= 3; }
    static bool Matches(const NetResourceRecord& node, const std::string& name) {
        const auto is = [&](LPCSTR text) { return text != nullptr && Platform().lstrcmpiA(text, name.c_str()) == 0; };
        return is(node.RemoteName) || is(node.ShortName);
    }

    Session& m_session;
};

void PrintNodes(const nlohmann::json& nodes, int indent) {
    for (const nlohmann::json& node : nodes) {
        const nlohmann::json& name = node["name"].is_null() ? node["provider"] : node["name"];
        std::printf("%*s%-8s %s", indent, "", node["kind"].get<std::string>().c_str(),
                    name.is_null() ? "" : name.get<std::string>().c_str());
        const bool hasComment = node["comment"].is_string() && !node["comment"].get<std::string>().empty();
        std::printf(hasComment ? "  (%s)\n" : "\n", hasComment ? node["comment"].get<std::string>().c_str() : "");
        if (node.contains("children")) {
            PrintNodes(node["children"], indent + 2);
        }
    }
}

void Browse(Session& session, const BrowseOptions& options) {
    constexpr unsigned kSearchedLevels = 4;  // provider, domain, server, printer
    session.RequireMachine();
    Browser browser(session);
    nlohmann::json nodes;
    if (options.under.empty()) {
        nodes = browser.Children(nullptr, options.depth);
    } else if (!browser.ChildrenOf(nullptr, options.under, options.depth, kSearchedLevels, &nodes)) {
        throw ToolError("--under " + options.under +
                        ": no such node; `pikel net browse --depth 3` shows what there is");
    }
    session.Print(nodes, [&] { PrintNodes(nodes, 0); });
}

}  // namespace

Command NetworkCommands(Session& session) {
    auto options = std::make_shared<BrowseOptions>();
    return {"net",
            "The network",
            {},
            nullptr,
            {{"browse",
              "List what the network offers, from the top",
              {{"--under", &options->under, "Begin below this node, by its name"},
               {.name = "--depth",
                .value = &options->depth,
                .help = "Levels to show",
                .range = NumberRange{1, 8},
                .showsDefault = true}},
              [&session, options] { Browse(session, *options); }}}};
}

}  // namespace pikel::cli
