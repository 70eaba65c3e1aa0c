// INFs that programs have open.
#include "machine/inf/open_inf.h"

#include "machine/base/machine.h"
#include "machine/base/text.h"
#include "machine/files/files.h"
#include "machine/files/path.h"

namespace pikel::simulated {

namespace {

constexpr DWORD kClassMismatch = 0xE0000201;

/// A name without a folder is looked for in the system's INF folder.
std::string PathOf(Machine& machine, std::string_view name) {
    if (name.find_first_of("\\/") != std::string_view::npos) {
        return std::string(name);
    }
    return JoinPath(machine, *SystemDirectory(machine, 17), name);
}

}  // namespace

OpenInf::OpenInf(Machine& itsMachine, std::unique_ptr<InfFile> itsFile, std::string itsPath)
    : machine(itsMachine),
      file(std::move(itsFile)),
      path(std::move(itsPath)),
      folder(FolderOf(path, itsMachine.System().codePage)) {
    file->SetDirectories([this](DWORD id) { return Directory(id); });
}

std::optional<std::string> OpenInf::Directory(DWORD id) const {
    if (const std::string* own = directories.Find(id)) {
        return *own;
    }
    return id == 1 ? std::optional(folder) : SystemDirectory(machine, id);
}

OpenInf* FindInf(Machine& machine, HINF handle) {
    return machine.Handles().Find<OpenInf>(HandleKind::Inf, handle);
}

DWORD FindPosition(Machine& machine, const INFCONTEXT* context, InfPosition& position) {
    if (context == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    OpenInf* inf = FindInf(machine, context->Inf);
    if (inf == nullptr || context->CurrentInf != context->Inf) {
        return ERROR_INVALID_HANDLE;
    }
    if (context->Section >= inf->file->SectionCount() || context->Line >= inf->file->LineCount(context->Section)) {
        return ERROR_INVALID_PARAMETER;
    }
    position = {inf, context->Section, context->Line};
    return ERROR_SUCCESS;
}

std::shared_ptr<OpenInf> ReadInf(Machine& machine, const char* name, const char* className, InfFile::Error& error) {
    std::string path = PathOf(machine, name);
    if (machine.Files().IsDirectory(path)) {
        error.code = ERROR_ACCESS_DENIED;
        return nullptr;
    }
    error.code = machine.Files().CheckOpen(path, GENERIC_READ, FILE_SHARE_READ);
    if (error.code != ERROR_SUCCESS) {
        return nullptr;
    }
    std::optional<std::string> bytes = machine.Files().Read(path);
    if (!bytes.has_value()) {
        error.code = ERROR_ACCESS_DENIED;
        return nullptr;
    }
    std::unique_ptr<InfFile> file = InfFile::Parse(*std::move(bytes), machine.System().codePage, &error);
    if (file == nullptr) {
        return nullptr;
    }
    if (className != nullptr && !EqualNoCase(file->Value("Version", "Class").value_or(""), className)) {
        error.code = kClassMismatch;
        return nullptr;
    }
    return std::make_shared<OpenInf>(machine, std::move(file), std::move(path));
}

DWORD FindFirstLine(Machine& machine, HINF handle, const char* section, const char* key, InfPosition& position) {
    if (section == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    OpenInf* inf = FindInf(machine, handle);
    if (inf == nullptr) {
        return ERROR_INVALID_HANDLE;
    }
    const std::optional<UINT> number = inf->file->FindSection(section);
    if (!number.has_value()) {
        return ERROR_LINE_NOT_FOUND;
    }
    std::optional<UINT> line;
    if (key != nullptr) {
        line = inf->file->FindLine(*number, key);
    } else if (inf->file->LineCount(*number) != 0) {
        line = 0;
    }
    if (!line.has_value()) {
        return ERROR_LINE_NOT_FOUND;
    }
    position = {inf, *number, *line};
    return ERROR_SUCCESS;
}

}  // namespace pikel::simulated
