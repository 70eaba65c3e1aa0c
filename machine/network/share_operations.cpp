// The network library's calls about shares, 9x family.
#include <algorithm>
#include <cstring>

#include "machine/base/names.h"
#include "machine/base/text.h"
#include "machine/network/shares.h"
#include "machine/operations.h"

namespace pikel::simulated {

namespace {

constexpr SHORT kLevel = 50;

/// Does the work of one call on the current machine; the calls know no other computer and one level.
template <class Work>
DWORD CallNetwork(LPCSTR server, SHORT level, Work work) {
    Machine& machine = Current();
    if (!IsThisComputer(machine, TextOf(server))) {
        return ERROR_BAD_NETPATH;
    }
    if (level != kLevel) {
        return ERROR_INVALID_LEVEL;
    }
    const DWORD code = work(machine);
    machine.Commit();
    return code;
}

/// A text of a field that need not end within it.
template <std::size_t Size>
std::string FieldText(const char (&field)[Size]) {
    return {field, strnlen(field, Size - 1)};
}

template <std::size_t Size>
void PutField(char (&field)[Size], const std::string& text) {
    std::memset(field, 0, Size);
    std::memcpy(field, text.data(), std::min(text.size(), Size - 1));
}

/// Takes a caller's information, whose buffer may be unaligned.
/// @return 0; 87 without a buffer; 2123 for one that is smaller than the structure
DWORD TakeInfo(LPCSTR bytes, WORD size, Share* share) {
    if (bytes == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    if (size < sizeof(share_info_50)) {
        return NERR_BufTooSmall;
    }
    share_info_50 info;
    std::memcpy(&info, bytes, sizeof info);
    share->name = FieldText(info.shi50_netname);
    share->type = info.shi50_type;
    share->flags = info.shi50_flags;
    share->remark = TextOf(info.shi50_remark);
    share->path = TextOf(info.shi50_path);
    share->readWritePassword = FieldText(info.shi50_rw_password);
    share->readOnlyPassword = FieldText(info.shi50_ro_password);
    return ERROR_SUCCESS;
}

/// Puts a share into a buffer: the structure, behind it the texts that it points at.
DWORD AnswerWithShare(const Share& share, LPSTR buffer, WORD size, WORD* needed) {
    const std::size_t total = sizeof(share_info_50) + share.remark.size() + 1 + share.path.size() + 1;
    *needed = static_cast<WORD>(total);
    if (buffer == nullptr || size < total) {
        return NERR_BufTooSmall;
    }
    share_info_50 info{};
    PutField(info.shi50_netname, share.name);
    info.shi50_type = share.type;
    info.shi50_flags = share.flags;
    info.shi50_remark = buffer + sizeof info;
    info.shi50_path = info.shi50_remark + share.remark.size() + 1;
    PutField(info.shi50_rw_password, share.readWritePassword);
    PutField(info.shi50_ro_password, share.readOnlyPassword);
    std::memcpy(buffer, &info, sizeof info);
    std::memcpy(info.shi50_remark, share.remark.c_str(), share.remark.size() + 1);
    std::memcpy(info.shi50_path, share.path.c_str(), share.path.size() + 1);
    return ERROR_SUCCESS;
}

}  // namespace

DWORD WINAPI NetShareGetInfo(LPCSTR pszServer, LPCSTR pszNetName, SHORT sLevel, LPSTR pbBuffer, WORD cbBuffer,
                             WORD* pcbTotalAvail) {
    return CallNetwork(pszServer, sLevel, [&](Machine& machine) -> DWORD {
        if (pszNetName == nullptr || pcbTotalAvail == nullptr) {
            return ERROR_INVALID_PARAMETER;
        }
        const std::optional<Share> share = Shares(machine).Find(pszNetName);
        return share ? AnswerWithShare(*share, pbBuffer, cbBuffer, pcbTotalAvail) : DWORD{NERR_NetNameNotFound};
    });
}

DWORD WINAPI NetShareSetInfo(LPCSTR pszServer, LPCSTR pszNetName, SHORT sLevel, LPCSTR pbBuffer, WORD cbBuffer,
                             SHORT sParmNum) {
    return CallNetwork(pszServer, sLevel, [&](Machine& machine) -> DWORD {
        if (pszNetName == nullptr || sParmNum != 0) {
            return ERROR_INVALID_PARAMETER;  // one setting alone can't be changed here
        }
        Share share;
        const DWORD code = TakeInfo(pbBuffer, cbBuffer, &share);
        return code == ERROR_SUCCESS ? Shares(machine).Change(pszNetName, share) : code;
    });
}

DWORD WINAPI NetShareAdd(LPCSTR pszServer, SHORT sLevel, LPCSTR pbBuffer, WORD cbBuffer) {
    return CallNetwork(pszServer, sLevel, [&](Machine& machine) -> DWORD {
        Share share;
        const DWORD code = TakeInfo(pbBuffer, cbBuffer, &share);
        return code == ERROR_SUCCESS ? Shares(machine).Add(share) : code;
    });
}

DWORD WINAPI NetShareDel(LPCSTR pszServer, LPCSTR pszNetName, WORD) {
    return CallNetwork(pszServer, kLevel, [&](Machine& machine) -> DWORD {
        return pszNetName == nullptr ? DWORD{ERROR_INVALID_PARAMETER} : Shares(machine).Remove(pszNetName);
    });
}

}  // namespace pikel::simulated
