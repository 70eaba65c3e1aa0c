// pikel file version|compare, pikel cab extract, pikel monitor copy: files of drivers and of language monitors.
#include <cstdio>
#include <vector>

#include "commands.h"
#include "failure.h"

namespace pikel::cli {

namespace {

struct FileOptions {
    std::string file;
    std::string version;
    std::string folder;
    std::vector<std::string> names;
};

void ShowVersion(Session& session, const FileOptions& options) {
    const std::string path = session.PathFor(options.file);
    char text[64] = "";
    Session::Check("PI_KEL_GetDriverFileVersion",
                   session.Table().PI_KEL_GetDriverFileVersion(path.c_str(), text, sizeof text), PIKEL_PREFIX_GENERAL);
    session.Print({{"version", text}}, [&] { std::printf("%s\n", text); });
}

const char* VerdictText(DWORD verdict) {
    switch (verdict) {
        case 1:
            return "equal";
        case 2:
            return "higher";
        default:
            return "lower";
    }
}

void Compare(Session& session, const FileOptions& options) {
    const std::string path = session.PathFor(options.file);
    char text[64] = "";
    const DWORD verdict =
        session.Table().PI_KEL_CheckDriverFileVersion(path.c_str(), options.version.c_str(), text, sizeof text);
    // A lower version and one that can't be read are one verdict; the text is there for the former alone.
    if (*text == '\0') {
        throw ToolError(options.file + ": has no version that can be read");
    }
    session.Print({{"version", text}, {"comparedWith", options.version}, {"verdict", VerdictText(verdict)}}, [&] {
        std::printf("%s: the file's version %s is %s\n", options.version.c_str(), text, VerdictText(verdict));
    });
}

void Extract(Session& session, const FileOptions& options) {
    const std::string path = session.PathFor(options.file);
    session.RequireMachine();
    Session::Check("PI_KEL_ExtractCabFile", session.Table().PI_KEL_ExtractCabFile(path.c_str(), options.folder.c_str()),
                   PIKEL_PREFIX_GENERAL);
    session.Print({{"folder", options.folder}},
                  [&] { std::printf("extracted %s into %s\n", options.file.c_str(), options.folder.c_str()); });
}

void CopyMonitors(Session& session, const FileOptions& options) {
    const std::string folder = session.FolderFor(options.folder);
    session.RequireMachine();
    std::string list;
    for (const std::string& name : options.names) {
        list += name + "/";
    }
    DWORD restart = 0;
    const DWORD status = session.Table().PI_KEL_CopyMonitorFile(folder.c_str(), list.c_str(), &restart);
    Session::Check("PI_KEL_CopyMonitorFile", status, PIKEL_PREFIX_FILE_COPY);
    if (restart != 0) {
        session.NoteRestart();
    }
    session.Print({{"files", options.names}, {"restartNeeded", restart != 0}}, [&] {
        std::printf("the system directory has the newest of %s now%s\n", list.c_str(),
                    restart != 0 ? ", after a restart" : "");
    });
}

}  // namespace

Command FileCommands(Session& session) {
    auto options = std::make_shared<FileOptions>();
    return {"file",
            "Versions of driver files",
            {},
            nullptr,
            {{"version",
              "Show a file's product version as installers compare it",
              {{"FILE", &options->file, "The file", Need::Required}},
              [&session, options] { ShowVersion(session, *options); }},
             {"compare",
              "Compare a file's product version with another",
              {{"FILE", &options->file, "The file", Need::Required},
               {"VERSION", &options->version, "A version, such as 1.2", Need::Required}},
              [&session, options] { Compare(session, *options); }}}};
}

Command CabinetCommands(Session& session) {
    auto options = std::make_shared<FileOptions>();
    return {"cab",
            "Cabinets",
            {},
            nullptr,
            {{"extract",
              "Unpack a cabinet into a folder of the machine",
              {{"CABINET", &options->file, "The cabinet", Need::Required},
               {"--to", &options->folder, "Folder, such as C:\\Temp\\out; made when missing", Need::Required}},
              [&session, options] { Extract(session, *options); }}}};
}

Command MonitorCommands(Session& session) {
    auto options = std::make_shared<FileOptions>();
    return {"monitor",
            "Language monitors",
            {},
            nullptr,
            {{"copy",
              "Put monitor files that are newer into the system directory, also held ones",
              {{"FILE", &options->names, "Names of the files", Need::Required},
               {"--from", &options->folder, "Folder that has them", Need::Required}},
              [&session, options] { CopyMonitors(session, *options); }}}};
}

}  // namespace pikel::cli
