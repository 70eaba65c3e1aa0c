#include "machine/setup/file_queue.h"

#include <algorithm>
#include <array>
#include <map>

#include "machine/base/machine.h"
#include "machine/base/text.h"
#include "machine/files/files.h"
#include "machine/files/path.h"
#include "machine/inf/directory_ids.h"
#include "machine/setup/file_copy.h"

namespace pikel::simulated {

namespace {

constexpr DWORD kOperationAborted = 995;
constexpr int kMostTries = 100;

/// The step from here on isn't done.
enum class Verdict { GoOn, Skip, Abort };

/// One run through a queue.
class Run {
  public:
    Run(Machine& machine, const QueueCallback& callback) : m_machine(machine), m_callback(callback) {}

    bool Do(const FileQueue& queue) {
        return DoAll(kOperationDelete, queue.deletes, &Run::Delete) &&
               DoAll(kOperationRename, queue.renames, &Run::Rename) && DoAll(kOperationCopy, queue.copies, &Run::Copy);
    }

    /// Tells a notification to which 0 means the end.
    bool Announce(UINT notification, UINT_PTR first, UINT_PTR second) {
        return Ask(ERROR_SUCCESS, [&] { return m_callback.Tell(notification, first, second); }) != FILEOP_ABORT;
    }

    /// Why the queue was aborted.
    DWORD Code() const { return m_code; }

  private:
    using Buffer = std::array<char, MAX_PATH>;

    struct Notifications {
        UINT operation;
        UINT start;
        UINT error;
        UINT end;
    };
    static constexpr Notifications kDelete = {kOperationDelete, SPFILENOTIFY_STARTDELETE, SPFILENOTIFY_DELETEERROR,
                                              SPFILENOTIFY_ENDDELETE};
    static constexpr Notifications kRename = {kOperationRename, SPFILENOTIFY_STARTRENAME, SPFILENOTIFY_RENAMEERROR,
                                              SPFILENOTIFY_ENDRENAME};
    static constexpr Notifications kCopy = {kOperationCopy, SPFILENOTIFY_STARTCOPY, SPFILENOTIFY_COPYERROR,
                                            SPFILENOTIFY_ENDCOPY};

    /// A sub-queue. The callback hears of it only when there is something in it.
    template <class Entry>
    bool DoAll(UINT operation, const std::vector<Entry>& entries, bool (Run::*work)(const Entry&)) {
        if (entries.empty()) {
            return true;
        }
        if (!Announce(SPFILENOTIFY_STARTSUBQUEUE, operation, entries.size())) {
            return false;
        }
        for (const Entry& entry : entries) {
            if (!(this->*work)(entry)) {
                return false;
            }
        }
        m_callback.Tell(SPFILENOTIFY_ENDSUBQUEUE, operation, 0);
        return true;
    }

    bool Delete(const std::string& target) {
        return DoStep(kDelete, "", target, [&](const std::string&) { return m_machine.Files().Delete(target); });
    }

    bool Rename(const QueuedRename& rename) {
        return DoStep(kRename, rename.source, rename.target,
                      [&](const std::string& source) { return m_machine.Files().Move(source, rename.target, false); });
    }

    bool Copy(const QueuedCopy& copy) {
        const Verdict verdict = FindMedia(copy);
        if (verdict != Verdict::GoOn) {
            return verdict == Verdict::Skip;
        }
        const std::string source = JoinPath(m_machine, m_media.at(copy.media), copy.name);
        return DoStep(kCopy, source, copy.target,
                      [&](const std::string& from) { return CopyFile(from, copy.target, copy.style); });
    }

    DWORD CopyFile(const std::string& source, const std::string& target, DWORD style) {
        const DWORD code = m_machine.Files().MakeFolders(FolderOf(target, m_machine.System().codePage));
        if (code != ERROR_SUCCESS && code != ERROR_ALREADY_EXISTS) {
            return code;
        }
        CopyOutcome outcome{};
        std::string waiting;
        const DWORD placed = PlaceFile(m_machine, {source, target, style}, m_callback, outcome, waiting);
        if (placed == ERROR_SUCCESS && outcome == CopyOutcome::Delayed) {
            m_callback.Tell(kNotifyDelayed, {target.c_str(), waiting.c_str(), ERROR_SUCCESS, 0}, 0);
        }
        return placed;
    }

    /// One entry's notifications and its work, tried again as often as the callback wants.
    /// @return false when the queue is to end
    template <class Work>
    bool DoStep(const Notifications& notifications, std::string source, const std::string& target, Work work) {
        FILEPATHS_A paths = {target.c_str(), source.c_str(), ERROR_SUCCESS, 0};
        const UINT answer =
            Ask(ERROR_SUCCESS, [&] { return m_callback.Tell(notifications.start, paths, notifications.operation); });
        if (answer == FILEOP_ABORT || answer == FILEOP_SKIP) {
            return answer == FILEOP_SKIP;
        }
        for (int tries = 0;;) {
            paths.Win32Error = work(source);
            if (paths.Win32Error == ERROR_SUCCESS) {
                break;
            }
            Buffer folder{};
            const UINT next = Ask(paths.Win32Error, [&] {
                return m_callback.Tell(notifications.error, paths, reinterpret_cast<UINT_PTR>(folder.data()));
            });
            if (next == FILEOP_SKIP) {
                break;
            }
            if (next == FILEOP_ABORT || ++tries == kMostTries) {
                m_code = next == FILEOP_ABORT ? m_code : paths.Win32Error;
                return false;
            }
            if (next == FILEOP_NEWPATH) {
                source = JoinPath(m_machine, TextOf(folder), FileName(source, m_machine.System().codePage));
                paths.Source = source.c_str();
            }
        }
        m_callback.Tell(notifications.end, paths, 0);
        return true;
    }

    /// Asks for a media before its first file.
    Verdict FindMedia(const QueuedCopy& copy) {
        if (m_media.contains(copy.media)) {
            return Verdict::GoOn;
        }
        const SourceMedia& media = copy.media;
        const SOURCE_MEDIA_A wanted = {nullptr,
                                       media.tagFile.empty() ? nullptr : media.tagFile.c_str(),
                                       media.description.empty() ? nullptr : media.description.c_str(),
                                       media.path.c_str(),
                                       copy.name.c_str(),
                                       copy.style & (SP_COPY_NEWER | SP_COPY_NOOVERWRITE | SP_COPY_FORCE_NEWER)};
        Buffer folder{};
        const UINT answer = Ask(ERROR_SUCCESS, [&] {
            return m_callback.Tell(SPFILENOTIFY_NEEDMEDIA, reinterpret_cast<UINT_PTR>(&wanted),
                                   reinterpret_cast<UINT_PTR>(folder.data()));
        });
        if (answer == FILEOP_ABORT || answer == FILEOP_SKIP) {
            return answer == FILEOP_SKIP ? Verdict::Skip : Verdict::Abort;
        }
        m_media[media] = answer == FILEOP_NEWPATH ? TextOf(folder) : media.path;
        return Verdict::GoOn;
    }

    /// Asks the callback. When it aborts, the code is what it set as the last error.
    /// @param code  that is told to it; counts when it sets none
    template <class Question>
    UINT Ask(DWORD code, Question question) {
        lastError = code;
        const UINT answer = question();
        if (answer == FILEOP_ABORT) {
            m_code = lastError != ERROR_SUCCESS ? lastError : code != ERROR_SUCCESS ? code : kOperationAborted;
        }
        return answer;
    }

    static std::string TextOf(const Buffer& buffer) {
        return std::string(buffer.begin(), std::find(buffer.begin(), buffer.end(), '\0'));
    }

    Machine& m_machine;
    const QueueCallback& m_callback;
    std::map<SourceMedia, std::string> m_media;  ///< folders of those that were found
    DWORD m_code = ERROR_SUCCESS;
};

}  // namespace

DWORD Commit(Machine& machine, const FileQueue& queue, HWND owner, const QueueCallback& callback) {
    if (queue.deletes.empty() && queue.renames.empty() && queue.copies.empty()) {
        return ERROR_SUCCESS;
    }
    const DWORD before = lastError;
    Run run(machine, callback);
    if (!run.Announce(SPFILENOTIFY_STARTQUEUE, reinterpret_cast<UINT_PTR>(owner), 0)) {
        return run.Code();
    }
    const bool isDone = run.Do(queue);
    callback.Tell(SPFILENOTIFY_ENDQUEUE, isDone ? TRUE : FALSE, 0);
    lastError = before;
    return isDone ? static_cast<DWORD>(ERROR_SUCCESS) : run.Code();
}

}  // namespace pikel::simulated
