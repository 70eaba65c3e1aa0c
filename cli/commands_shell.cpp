// pikel shortcut create, pikel whoami.
#include <cstdio>

#include "commands.h"
#include "platform/platform.h"

namespace pikel::cli {

namespace {

struct ShortcutOptions {
    std::string folder;
    std::string name;
    std::string target;
    std::string workingDirectory;
};

void CreateShortcut(Session& session, const ShortcutOptions& options) {
    session.RequireMachine();
    std::string name = options.name;
    // The shell knows a shortcut by its extension; the operation takes the name as it stands.
    if (name.size() < 4 || Platform().lstrcmpiA(name.c_str() + name.size() - 4, ".lnk") != 0) {
        name += ".lnk";
    }
    const char* workingDirectory = options.workingDirectory.empty() ? nullptr : options.workingDirectory.c_str();
    const DWORD status = session.Table().PI_KEL_CreateShortCut(options.folder.c_str(), name.c_str(),
                                                               options.target.c_str(), workingDirectory);
    Session::Check("PI_KEL_CreateShortCut", status, PIKEL_PREFIX_GENERAL);
    session.Print({{"folder", options.folder}, {"shortcut", name}, {"target", options.target}},
                  [&] { std::printf("created shortcut %s\\%s\n", options.folder.c_str(), name.c_str()); });
}

void WhoAmI(Session& session) {
    session.RequireMachine();
    const bool isAdministrator = session.Table().PI_KEL_IsAdministrators() != 0;
    session.Print({{"administrator", isAdministrator}},
                  [&] { std::printf("%s\n", isAdministrator ? "an administrator" : "not an administrator"); });
}

}  // namespace

void AddShellCommands(CLI::App& app, Session& session) {
    CLI::App* noun = AddNoun(app, "shortcut", "Shortcuts in the Start menu");
    auto options = std::make_shared<ShortcutOptions>();
    CLI::App* create = noun->add_subcommand("create", "Create a shortcut in a folder of the Start menu's programs");
    create->add_option("NAME", options->name, "Name of the shortcut")->required();
    create->add_option("--folder", options->folder, "Folder below the programs; made unless it is there")->required();
    create->add_option("--target", options->target, "What the shortcut starts")->required();
    create->add_option("--workdir", options->workingDirectory, "Folder in which it starts");
    create->callback([&session, options] { CreateShortcut(session, *options); });

    app.add_subcommand("whoami", "Tell whether the user is an administrator")->callback([&session] {
        WhoAmI(session);
    });
}

}  // namespace pikel::cli
