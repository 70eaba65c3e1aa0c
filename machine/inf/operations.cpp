// Setup API: reading INF files.

#include "machine/system/machine.h"
#include "machine/inf/open_inf.h"
#include "machine/operations.h"

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

/// Reads and parses a file.
/// @param code [out]  0 or why not
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

/// Finds a line by section and key; a null key stands for the section's first line.
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

/// Hands a text out in a program's buffer, or its size alone for a null buffer.
BOOL HandOut(std::string_view text, PSTR buffer, DWORD size, PDWORD required) {
    const std::size_t needed = text.size() + 1;
    if (required != nullptr) {
        *required = static_cast<DWORD>(needed);
    }
    if (buffer != nullptr) {
        if (size < needed) {
            return Fail(ERROR_INSUFFICIENT_BUFFER, FALSE);
        }
        text.copy(buffer, text.size());  // an empty field may have no characters to point at
        buffer[text.size()] = '\0';
    }
    return TRUE;
}

/// Fills a program's context, or tells it the code.
BOOL HandOut(DWORD code, HINF handle, const InfPosition& position, PINFCONTEXT context) {
    if (code != ERROR_SUCCESS) {
        return Fail(code, FALSE);
    }
    *context = {handle, handle, position.section, position.line};
    return TRUE;
}

}  // namespace

// ---- open INFs ------------------------------------------------------------------------------------------------------

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

// ---- operations -----------------------------------------------------------------------------------------------------

/// The style plays no part: all styles are read alike, and a file without a signature is an INF as well.
HINF WINAPI SetupOpenInfFileA(PCSTR FileName, PCSTR InfClass, DWORD, PUINT ErrorLine) {
    if (FileName == nullptr) {
        return Fail(ERROR_INVALID_PARAMETER, INVALID_HANDLE_VALUE);
    }
    Machine& machine = Current();
    InfFile::Error error;
    std::shared_ptr<OpenInf> inf = ReadInf(machine, FileName, InfClass, error);
    if (inf == nullptr) {
        if (ErrorLine != nullptr) {
            *ErrorLine = error.line;
        }
        return Fail(error.code, INVALID_HANDLE_VALUE);
    }
    std::string path = inf->path;
    return machine.Handles().Open(HandleKind::Inf, std::move(inf), std::move(path));
}

void WINAPI SetupCloseInfFile(HINF InfHandle) {
    Current().Handles().Close(HandleKind::Inf, InfHandle);
}

BOOL WINAPI SetupFindFirstLineA(HINF InfHandle, PCSTR Section, PCSTR Key, PINFCONTEXT Context) {
    if (Context == nullptr) {
        return Fail(ERROR_INVALID_PARAMETER, FALSE);
    }
    InfPosition position;
    const DWORD code = FindFirstLine(Current(), InfHandle, Section, Key, position);
    return HandOut(code, InfHandle, position, Context);
}

BOOL WINAPI SetupFindNextLine(PINFCONTEXT ContextIn, PINFCONTEXT ContextOut) {
    InfPosition position;
    DWORD code = FindPosition(Current(), ContextIn, position);
    if (code == ERROR_SUCCESS && ContextOut == nullptr) {
        code = ERROR_INVALID_PARAMETER;
    }
    if (code == ERROR_SUCCESS && ++position.line >= position.inf->file->LineCount(position.section)) {
        code = ERROR_LINE_NOT_FOUND;
    }
    return HandOut(code, code == ERROR_SUCCESS ? ContextIn->Inf : nullptr, position, ContextOut);
}

BOOL WINAPI SetupGetLineByIndexA(HINF InfHandle, PCSTR Section, DWORD Index, PINFCONTEXT Context) {
    if (Context == nullptr) {
        return Fail(ERROR_INVALID_PARAMETER, FALSE);
    }
    InfPosition position;
    DWORD code = FindFirstLine(Current(), InfHandle, Section, nullptr, position);
    if (code == ERROR_SUCCESS && Index >= position.inf->file->LineCount(position.section)) {
        code = ERROR_LINE_NOT_FOUND;
    }
    position.line = Index;
    return HandOut(code, InfHandle, position, Context);
}

BOOL WINAPI SetupGetLineTextA(PINFCONTEXT Context, HINF InfHandle, PCSTR Section, PCSTR Key, PSTR ReturnBuffer,
                              DWORD ReturnBufferSize, PDWORD RequiredSize) {
    Machine& machine = Current();
    InfPosition position;
    const DWORD code = Context != nullptr ? FindPosition(machine, Context, position)
                                          : FindFirstLine(machine, InfHandle, Section, Key, position);
    if (code != ERROR_SUCCESS) {
        return Fail(code, FALSE);
    }
    const std::string_view text = position.inf->file->LineText(position.section, position.line);
    return HandOut(text, ReturnBuffer, ReturnBufferSize, RequiredSize);
}

BOOL WINAPI SetupGetStringFieldA(PINFCONTEXT Context, DWORD FieldIndex, PSTR ReturnBuffer, DWORD ReturnBufferSize,
                                 PDWORD RequiredSize) {
    InfPosition position;
    const DWORD code = FindPosition(Current(), Context, position);
    if (code != ERROR_SUCCESS) {
        return Fail(code, FALSE);
    }
    const std::optional<std::string_view> field =
        position.inf->file->Field(position.section, position.line, FieldIndex);
    if (!field.has_value()) {
        return Fail(ERROR_SUCCESS, FALSE);
    }
    return HandOut(*field, ReturnBuffer, ReturnBufferSize, RequiredSize);
}

BOOL WINAPI SetupSetDirectoryIdA(HINF InfHandle, DWORD Id, PCSTR Directory) {
    OpenInf* inf = FindInf(Current(), InfHandle);
    return Outcome(inf == nullptr ? static_cast<DWORD>(ERROR_INVALID_HANDLE) : inf->directories.Set(Id, Directory));
}

}  // namespace pikel::simulated
