// Setup API: file queues, their callbacks, and the installation of files and registry entries from INF sections.
#include <cstring>

#include "machine/base/machine.h"
#include "machine/files/path.h"
#include "machine/inf/open_inf.h"
#include "machine/operations.h"
#include "machine/setup/file_copy.h"
#include "machine/setup/file_queue.h"
#include "machine/setup/install_section.h"

namespace pikel::simulated {

namespace {

FileQueue* FindQueue(Machine& machine, HSPFILEQ handle) {
    return machine.Handles().Find<FileQueue>(HandleKind::FileQueue, handle);
}

/// What SetupInstallFileExA was asked for: where the file lies and where it goes.
DWORD FindCopy(OpenInf* inf, const INFCONTEXT* context, PCSTR sourceFile, PCSTR root, PCSTR destination,
               FileCopy& copy) {
    Machine& machine = Current();
    std::string source = sourceFile != nullptr ? sourceFile : "";
    if (context != nullptr) {
        InfPosition position;
        if (const DWORD code = FindPosition(machine, context, position); code != ERROR_SUCCESS) {
            return code;
        }
        const CopyLine line = ReadCopyLine(*position.inf, position.section, position.line);
        copy.style = (copy.style & ~line.without) | line.style;
        source = line.source;
        const std::string list(position.inf->file->SectionName(position.section));
        copy.target = TargetPath(*position.inf, &list, destination != nullptr ? destination : line.target);
        inf = inf != nullptr ? inf : position.inf;
    } else if (sourceFile == nullptr || destination == nullptr) {
        return ERROR_INVALID_PARAMETER;
    } else {
        copy.target = destination;
    }
    if ((copy.style & SP_COPY_SOURCE_ABSOLUTE) != 0) {
        copy.source = source;
    } else if (inf != nullptr) {
        copy.source = JoinPath(machine, LocateSource(*inf, source, root, copy.style).path, source);
    } else {
        copy.source = JoinPath(machine, root != nullptr ? root : "", source);
    }
    return ERROR_SUCCESS;
}

}  // namespace

// ---- queues ---------------------------------------------------------------------------------------------------------

HSPFILEQ WINAPI SetupOpenFileQueue() {
    return Current().Handles().Open(HandleKind::FileQueue, std::make_shared<FileQueue>(), "SetupOpenFileQueue");
}

BOOL WINAPI SetupCloseFileQueue(HSPFILEQ QueueHandle) {
    const bool isClosed = Current().Handles().Close(HandleKind::FileQueue, QueueHandle);
    return Outcome(isClosed ? ERROR_SUCCESS : ERROR_INVALID_HANDLE);
}

BOOL WINAPI SetupInstallFilesFromInfSectionA(HINF InfHandle, HINF LayoutInfHandle, HSPFILEQ FileQueue,
                                             PCSTR SectionName, PCSTR SourceRootPath, UINT CopyFlags) {
    Machine& machine = Current();
    OpenInf* inf = FindInf(machine, InfHandle);
    OpenInf* layout = LayoutInfHandle != nullptr ? FindInf(machine, LayoutInfHandle) : inf;
    simulated::FileQueue* queue = FindQueue(machine, FileQueue);
    if (inf == nullptr || layout == nullptr || queue == nullptr) {
        return Fail(ERROR_INVALID_HANDLE, FALSE);
    }
    if (SectionName == nullptr) {
        return Fail(ERROR_INVALID_PARAMETER, FALSE);
    }
    return Outcome(QueueFiles(*inf, *layout, SectionName, SourceRootPath, CopyFlags, *queue));
}

/// Without a callback the system's own decides.
BOOL WINAPI SetupCommitFileQueueA(HWND Owner, HSPFILEQ QueueHandle, PSP_FILE_CALLBACK_A MsgHandler, PVOID Context) {
    Machine& machine = Current();
    const FileQueue* found = FindQueue(machine, QueueHandle);
    if (found == nullptr) {
        return Fail(ERROR_INVALID_HANDLE, FALSE);
    }
    // The callback may close the queue.
    const FileQueue queue = *found;
    return Outcome(
        Commit(machine, queue, Owner, {MsgHandler != nullptr ? MsgHandler : &SetupDefaultQueueCallbackA, Context}));
}

// ---- the system's own callback --------------------------------------------------------------------------------------

PVOID WINAPI SetupInitDefaultQueueCallbackEx(HWND, HWND, UINT, DWORD, PVOID) {
    return Current().Handles().Open(HandleKind::QueueContext, std::make_shared<int>(),
                                    "SetupInitDefaultQueueCallbackEx");
}

void WINAPI SetupTermDefaultQueueCallback(PVOID Context) {
    if (Context != nullptr) {
        Current().Handles().Close(HandleKind::QueueContext, Context);
    }
}

/// Nobody sits at the machine to be asked. The media are there; a file that can't be copied ends the queue with its
/// code; one that can't be deleted or renamed is left alone; newer targets are kept.
UINT WINAPI SetupDefaultQueueCallbackA(PVOID, UINT Notification, UINT_PTR Param1, UINT_PTR Param2) {
    switch (Notification) {
        case SPFILENOTIFY_STARTQUEUE:
        case SPFILENOTIFY_STARTSUBQUEUE:
            return TRUE;
        case SPFILENOTIFY_STARTDELETE:
        case SPFILENOTIFY_STARTRENAME:
        case SPFILENOTIFY_STARTCOPY:
            return FILEOP_DOIT;
        case SPFILENOTIFY_DELETEERROR:
        case SPFILENOTIFY_RENAMEERROR:
            return FILEOP_SKIP;
        case SPFILENOTIFY_COPYERROR:
            lastError = reinterpret_cast<const FILEPATHS_A*>(Param1)->Win32Error;
            return FILEOP_ABORT;
        case SPFILENOTIFY_NEEDMEDIA: {
            const auto* media = reinterpret_cast<const SOURCE_MEDIA_A*>(Param1);
            auto* folder = reinterpret_cast<char*>(Param2);
            if (folder != nullptr && std::strlen(media->SourcePath) < MAX_PATH) {
                std::strcpy(folder, media->SourcePath);
            }
            return FILEOP_DOIT;
        }
        default:
            return 0;
    }
}

// ---- single files and registry entries ------------------------------------------------------------------------------

BOOL WINAPI SetupInstallFileExA(HINF InfHandle, PINFCONTEXT InfContext, PCSTR SourceFile, PCSTR SourcePathRoot,
                                PCSTR DestinationName, DWORD CopyStyle, PSP_FILE_CALLBACK_A CopyMsgHandler,
                                PVOID Context, PBOOL FileWasInUse) {
    Machine& machine = Current();
    if (FileWasInUse != nullptr) {
        *FileWasInUse = FALSE;
    }
    OpenInf* inf = InfHandle != nullptr ? FindInf(machine, InfHandle) : nullptr;
    if (InfHandle != nullptr && inf == nullptr) {
        return Fail(ERROR_INVALID_HANDLE, FALSE);
    }
    const DWORD before = lastError;
    FileCopy copy;
    copy.style = CopyStyle;
    CopyOutcome outcome{};
    std::string waiting;
    DWORD code = FindCopy(inf, InfContext, SourceFile, SourcePathRoot, DestinationName, copy);
    if (code == ERROR_SUCCESS) {
        code = PlaceFile(machine, copy, {CopyMsgHandler, Context}, outcome, waiting);
    }
    if (code != ERROR_SUCCESS || outcome == CopyOutcome::Kept) {
        return Fail(code, FALSE);
    }
    if (FileWasInUse != nullptr && outcome == CopyOutcome::Delayed) {
        *FileWasInUse = TRUE;
    }
    lastError = before;
    return TRUE;
}

/// The registry part is the only one that the machine applies here: the files of a section go through a queue.
BOOL WINAPI SetupInstallFromInfSectionA(HWND, HINF InfHandle, PCSTR SectionName, UINT Flags, HKEY RelativeKeyRoot,
                                        PCSTR, UINT, PSP_FILE_CALLBACK_A, PVOID, HDEVINFO, PSP_DEVINFO_DATA) {
    OpenInf* inf = FindInf(Current(), InfHandle);
    if (inf == nullptr) {
        return Fail(ERROR_INVALID_HANDLE, FALSE);
    }
    if (SectionName == nullptr) {
        return Fail(ERROR_INVALID_PARAMETER, FALSE);
    }
    if ((Flags & ~DWORD{SPINST_REGISTRY}) != 0) {
        return Fail(ERROR_CALL_NOT_IMPLEMENTED, FALSE);
    }
    return Outcome(Flags != 0 ? ApplyRegistry(*inf, SectionName, RelativeKeyRoot) : ERROR_SUCCESS);
}

}  // namespace pikel::simulated
