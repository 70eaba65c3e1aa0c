// The setup room: what the Setup API does with INFs and files: queues, install sections, compressed files, the INFs
// that the system has installed. It stands on the INF room, on files, registry and security.
//
// A queue of file operations, filled from install sections and done in one go.
#pragma once

#include <string>
#include <vector>

#include "machine/setup/queue_callback.h"
#include "platform/types.h"

namespace pikel::simulated {

class Machine;

/// Where files come from: one disc, or folder, that a program may be asked for.
struct SourceMedia {
    std::string path;         ///< folder of the files
    std::string description;  ///< empty when the INF names none
    std::string tagFile;      ///< likewise

    auto operator<=>(const SourceMedia&) const = default;
};

struct QueuedCopy {
    SourceMedia media;
    std::string name;
    std::string target;  ///< full path
    DWORD style = 0;     ///< SP_COPY_...
};

struct QueuedRename {
    std::string source;
    std::string target;
};

struct FileQueue {
    std::vector<std::string> deletes;
    std::vector<QueuedRename> renames;
    std::vector<QueuedCopy> copies;
};

/// Does what is queued: deletes, then renames, then copies, and tells the callback of each step.
///
/// The callback decides as documented: abort, do, skip, try again, or look in another folder. The folders of targets
/// are made. NEEDMEDIA comes before the first file of each media, and again while the answer is to skip. What a file's
/// step fails with is told by its error notification; answered with "abort" it ends the queue. A queue that is aborted
/// leaves what it has done so far.
///
/// A callback that keeps on asking to try again counts as aborting after a hundred times: nothing changes on the
/// machine in between but by the callback itself.
///
/// @return 0; for an aborted queue the last error that the callback set, else the code that the step failed with, else
///         995
DWORD Commit(Machine& machine, const FileQueue& queue, HWND owner, const QueueCallback& callback);

}  // namespace pikel::simulated
