// The function that a program hands over to hear of the steps of a file queue, and to decide about them.
#pragma once

#include "platform/types.h"

namespace pikel::simulated {

// Further notifications and flags of setupapi.h.
enum : UINT {
    kNotifyDelayed = 0x14,          ///< SPFILENOTIFY_FILEOPDELAYED
    kNotifyTargetExists = 0x20000,  ///< SPFILENOTIFY_TARGETEXISTS
    kNotifyTargetNewer = 0x40000,   ///< SPFILENOTIFY_TARGETNEWER
    kOperationCopy = 0,             ///< FILEOP_COPY
    kOperationRename = 1,           ///< FILEOP_RENAME
    kOperationDelete = 2,           ///< FILEOP_DELETE
};

struct QueueCallback {
    PSP_FILE_CALLBACK_A function = nullptr;
    PVOID context = nullptr;

    explicit operator bool() const { return function != nullptr; }

    UINT Tell(UINT notification, UINT_PTR first, UINT_PTR second) const {
        return function(context, notification, first, second);
    }
    UINT Tell(UINT notification, const FILEPATHS_A& paths, UINT_PTR second) const {
        return Tell(notification, reinterpret_cast<UINT_PTR>(&paths), second);
    }
};

}  // namespace pikel::simulated
