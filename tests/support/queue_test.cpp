#include "support/queue_test.h"

#include <cstring>

namespace pikel::testing_support {

namespace {

constexpr UINT kDelayed = 0x14;
constexpr UINT kTargetExists = 0x20000;
constexpr UINT kTargetNewer = 0x40000;

const std::map<UINT, const char*> kNames = {
    {SPFILENOTIFY_STARTQUEUE, "startqueue"},
    {SPFILENOTIFY_ENDQUEUE, "endqueue"},
    {SPFILENOTIFY_STARTSUBQUEUE, "startsub"},
    {SPFILENOTIFY_ENDSUBQUEUE, "endsub"},
    {SPFILENOTIFY_STARTDELETE, "startdelete"},
    {SPFILENOTIFY_ENDDELETE, "enddelete"},
    {SPFILENOTIFY_DELETEERROR, "deleteerror"},
    {SPFILENOTIFY_STARTRENAME, "startrename"},
    {SPFILENOTIFY_ENDRENAME, "endrename"},
    {SPFILENOTIFY_RENAMEERROR, "renameerror"},
    {SPFILENOTIFY_STARTCOPY, "startcopy"},
    {SPFILENOTIFY_ENDCOPY, "endcopy"},
    {SPFILENOTIFY_COPYERROR, "copyerror"},
    {SPFILENOTIFY_NEEDMEDIA, "needmedia"},
    {kDelayed, "delayed"},
    {kTargetExists, "targetexists"},
    {kTargetNewer, "targetnewer"},
};

const char* TextOr(const char* text) {
    return text != nullptr ? text : "-";
}

}  // namespace

/// "startcopy C:\source\a.txt > C:\target\a.txt op 0", "copyerror ... error 2".
std::string QueueTest::Describe(UINT notification, UINT_PTR first, UINT_PTR second) {
    const auto name = kNames.find(notification);
    std::string text = name != kNames.end() ? name->second : "notification " + std::to_string(notification);
    switch (notification) {
        case SPFILENOTIFY_STARTQUEUE:
        case SPFILENOTIFY_ENDQUEUE:
            return text + " " + std::to_string(first);
        case SPFILENOTIFY_STARTSUBQUEUE:
            return text + " " + std::to_string(first) + " of " + std::to_string(second);
        case SPFILENOTIFY_ENDSUBQUEUE:
            return text + " " + std::to_string(first);
        case SPFILENOTIFY_NEEDMEDIA: {
            const auto* media = reinterpret_cast<const SOURCE_MEDIA_A*>(first);
            return text + " " + media->SourcePath + " | " + media->SourceFile + " | " + TextOr(media->Description) +
                   " | " + TextOr(media->Tagfile);
        }
        default:
            break;
    }
    const auto* paths = reinterpret_cast<const FILEPATHS_A*>(first);
    text += " " + std::string(TextOr(paths->Source)) + " > " + TextOr(paths->Target);
    if (notification == SPFILENOTIFY_STARTCOPY || notification == SPFILENOTIFY_STARTDELETE ||
        notification == SPFILENOTIFY_STARTRENAME) {
        text += " op " + std::to_string(second);
    }
    return paths->Win32Error != 0 ? text + " error " + std::to_string(paths->Win32Error) : text;
}

UINT QueueTest::Take(UINT notification, UINT_PTR first, UINT_PTR second) {
    m_steps.push_back(Describe(notification, first, second));
    const int count = ++m_counts[notification];
    UINT answer = FILEOP_DOIT;
    if (const auto found = m_answers.find(notification); found != m_answers.end()) {
        answer = found->second;
    }
    if (const auto found = m_single.find({notification, count}); found != m_single.end()) {
        answer = found->second;
    }
    if (answer == FILEOP_NEWPATH) {
        std::strcpy(reinterpret_cast<char*>(second), m_newPath.c_str());
    }
    if (answer == FILEOP_ABORT && (m_errorOnAbort != 0 || m_clearsErrorOnAbort)) {
        Platform().SetLastError(m_errorOnAbort);
    }
    return answer;
}

}  // namespace pikel::testing_support
