// A cabinet handed out to a program.
#include "machine/setup/cabinet_walk.h"

#include "machine/base/machine.h"
#include "machine/base/text.h"
#include "machine/files/files.h"

namespace pikel::simulated {

namespace {

constexpr DWORD kCancelled = 1223;          // ERROR_CANCELLED (winerror.h)
constexpr WORD kOrdinaryAttributes = 0x27;  // read-only, hidden, system, archive

}  // namespace

bool CabinetWalk::Visit(const CabinetEntry& entry, const std::function<std::optional<std::string>()>& expand) {
    if (!m_begun && !Begin()) {
        return false;
    }
    const UINT codePage = m_machine.System().codePage;
    const std::string name = entry.isUtf8 ? FromWide(codePage, ToWide(CP_UTF8, entry.name)) : entry.name;
    FILE_IN_CABINET_INFO_A info{};
    info.NameInCabinet = name.c_str();
    info.FileSize = entry.size;
    info.DosDate = entry.date;
    info.DosTime = entry.time;
    info.DosAttribs = entry.attributes & kOrdinaryAttributes;
    lastError = ERROR_SUCCESS;
    const UINT answer = Ask(SPFILENOTIFY_FILEINCABINET, &info, reinterpret_cast<UINT_PTR>(m_path.c_str()));
    if (answer == FILEOP_DOIT) {
        info.FullTargetName[sizeof info.FullTargetName - 1] = '\0';
        return Place(info.FullTargetName, expand());
    }
    if (answer == FILEOP_ABORT) {
        m_code = lastError != ERROR_SUCCESS ? lastError : kCancelled;
    }
    return answer == FILEOP_SKIP;
}

bool CabinetWalk::Begin() {
    m_begun = true;
    const CABINET_INFO_A info = {m_folder.c_str(), m_name.c_str(), "", 0, 0};
    return Goes(Ask(SPFILENOTIFY_CABINETINFO, &info, 0));
}

UINT CabinetWalk::Ask(UINT notification, const void* info, UINT_PTR second) {
    return m_handler(m_context, notification, reinterpret_cast<UINT_PTR>(info), second);
}

bool CabinetWalk::Goes(DWORD answer) {
    m_code = answer;
    return answer == ERROR_SUCCESS;
}

bool CabinetWalk::Place(const std::string& target, const std::optional<std::string>& bytes) {
    if (!bytes) {
        m_code = ERROR_INVALID_DATA;
        return false;
    }
    // The system makes no folders here; that is the program's to do.
    const std::size_t separator = target.find_last_of("\\/");
    if (separator != std::string::npos && !m_machine.Files().IsDirectory(target.substr(0, separator + 1))) {
        m_code = ERROR_PATH_NOT_FOUND;
        return false;
    }
    m_code = m_machine.Files().Write(target, *bytes);
    if (m_code != ERROR_SUCCESS) {
        return false;
    }
    const FILEPATHS_A paths = {target.c_str(), m_path.c_str(), ERROR_SUCCESS, 0};
    return Goes(Ask(SPFILENOTIFY_FILEEXTRACTED, &paths, 0));
}

}  // namespace pikel::simulated
