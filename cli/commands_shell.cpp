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

Command ShortcutCommands(Session& session) {
    auto options = std::make_shared<ShortcutOptions>();
    return {"shortcut",
            "Shortcuts in the Start menu",
            {},
            nullptr,
            {{"create",
              "Create a shortcut in a folder of the Start menu's programs",
              {{"NAME", &options->name, "Name of the shortcut", Need::Required},
               {"--folder", &options->folder, "Folder below the programs; made unless it is there", Need::Required},
               {"--target", &options->target, "What the shortcut starts", Need::Required},
               {"--workdir", &options->workingDirectory, "Folder in which it starts"}},
              [&session, options] { CreateShortcut(session, *options); }}}};
}

Command WhoAmICommand(Session& session) {
    return {"whoami", "Tell whether the user is an administrator", {}, [&session] { WhoAmI(session); }};
}

}  // namespace pikel::cli
