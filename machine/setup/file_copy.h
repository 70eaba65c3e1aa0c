// Placing one file as the Setup API does: what the flags say about a target that is there, read-only targets, and
// targets that are replaced at the next start.
#pragma once

#include <string>

#include "machine/setup/queue_callback.h"
#include "platform/types.h"

namespace pikel::simulated {

class Machine;

inline constexpr DWORD kCopyNewerOnly = 0x10000;  ///< SP_COPY_NEWER_ONLY

struct FileCopy {
    std::string source;
    std::string target;
    DWORD style = 0;  ///< SP_COPY_...
};

enum class CopyOutcome {
    Copied,
    Kept,    ///< the flags, or the callback, kept the target as it is
    Delayed  ///< the file waits beside its target for the next start
};

/// Places a file. Nothing is left half-written.
///
/// Versions are compared by the version resources. Without one in both files the source counts as newer, as it does
/// with the same version. SP_COPY_FORCE_IN_USE has a target that is there replaced at the next start, used or not.
///
/// @param callback       asked about targets that are newer or not to be overwritten; without one they are kept
/// @param waiting [out]  with Delayed: where the file waits
/// @return a system code, 0 for every outcome
DWORD PlaceFile(Machine& machine, const FileCopy& copy, const QueueCallback& callback, CopyOutcome& outcome,
                std::string& waiting);

}  // namespace pikel::simulated
