// Setup API: reading INF files.

#include "machine/base/machine.h"
#include "machine/base/text.h"
#include "machine/files/files.h"
#include "machine/inf/open_inf.h"
#include "machine/operations.h"

namespace pikel::simulated {

namespace {

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
