// Tokens, SIDs and descriptor texts.
#include <cstring>

#include "machine/base/last_error.h"
#include "machine/operations.h"
#include "machine/security/descriptor.h"
#include "machine/security/descriptor_text.h"
#include "machine/security/sid.h"
#include "machine/security/token.h"

namespace pikel::simulated {

namespace {

constexpr DWORD kErrorNoAccess = 998;
constexpr std::size_t kMaxAllocatedSubAuthorities = 8;

HANDLE CurrentProcess() {
    return reinterpret_cast<HANDLE>(static_cast<intptr_t>(-1));
}

/// The 9x family and Win32s export these calls and carry none of them out.
bool HasSecurity() {
    return !Current().Is9x() && Current().Generation() != Generation::Win32s;
}

// ---- what a token tells ---------------------------------------------------------------------------------------------

/// An address in the caller's buffer. A caller that asks for the size alone has none.
PSID Behind(LPVOID place, std::size_t distance) {
    return place == nullptr ? nullptr : static_cast<BYTE*>(place) + distance;
}

/// The bytes of an answer: a fixed part with the pointers to SIDs, and the SIDs behind it.
/// @param place  where the caller's buffer lies, which is where the pointers lead
std::string UserInformation(Machine& machine, LPVOID place) {
    const std::string sid = BytesOf(UserOf(machine));
    TOKEN_USER user{};
    user.User.Sid = Behind(place, sizeof user);
    return std::string(reinterpret_cast<const char*>(&user), sizeof user) + sid;
}

std::string GroupInformation(Machine& machine, LPVOID place) {
    const std::vector<TokenGroup> groups = GroupsOf(machine);
    const std::size_t fixed = offsetof(TOKEN_GROUPS, Groups) + groups.size() * sizeof(SID_AND_ATTRIBUTES);
    std::string bytes(fixed, '\0');
    const auto count = static_cast<DWORD>(groups.size());
    std::memcpy(bytes.data() + offsetof(TOKEN_GROUPS, GroupCount), &count, sizeof count);
    for (std::size_t i = 0; i < groups.size(); ++i) {
        SID_AND_ATTRIBUTES group{};
        group.Sid = Behind(place, bytes.size());
        group.Attributes = groups[i].attributes;
        std::memcpy(bytes.data() + offsetof(TOKEN_GROUPS, Groups) + i * sizeof group, &group, sizeof group);
        bytes += BytesOf(groups[i].sid);
    }
    return bytes;
}

DWORD TokenInformationOf(HANDLE handle, TOKEN_INFORMATION_CLASS kind, LPVOID buffer, DWORD size, LPDWORD needed) {
    Machine& machine = Current();
    const Token* token = machine.Handles().Find<Token>(HandleKind::Token, handle);
    if (token == nullptr) {
        return ERROR_INVALID_HANDLE;
    }
    if (needed == nullptr) {
        return kErrorNoAccess;
    }
    if (kind != TokenUser && kind != TokenGroups) {
        return ERROR_INVALID_PARAMETER;
    }
    if ((token->access & TOKEN_QUERY) == 0) {
        return ERROR_ACCESS_DENIED;
    }
    const std::string bytes = kind == TokenUser ? UserInformation(machine, buffer) : GroupInformation(machine, buffer);
    *needed = static_cast<DWORD>(bytes.size());
    if (size < bytes.size()) {
        return ERROR_INSUFFICIENT_BUFFER;
    }
    if (buffer == nullptr) {
        return kErrorNoAccess;
    }
    std::memcpy(buffer, bytes.data(), bytes.size());
    return ERROR_SUCCESS;
}

// ---- local blocks ---------------------------------------------------------------------------------------------------

/// A block that the caller gives back with LocalFree.
/// @return 0, or 8
DWORD HandOutBlock(std::string_view bytes, void** block) {
    *block = Current().Heap().Allocate(BlockKind::Local, bytes.size());
    if (*block == nullptr) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    std::memcpy(*block, bytes.data(), bytes.size());
    return ERROR_SUCCESS;
}

DWORD DescriptorToText(PSECURITY_DESCRIPTOR pointer, DWORD parts, LPSTR* text, PULONG length) {
    Machine& machine = Current();
    std::string_view bytes;
    SecurityDescriptor descriptor;
    DWORD code = DescriptorBytesAt(machine, pointer, &bytes);
    if (code == ERROR_SUCCESS) {
        code = ReadDescriptor(bytes, &descriptor);
    }
    std::string written;
    if (code == ERROR_SUCCESS) {
        code = WriteDescriptorText(machine, descriptor, parts, &written);
    }
    if (code != ERROR_SUCCESS) {
        return code;
    }
    void* block = nullptr;
    code = HandOutBlock({written.c_str(), written.size() + 1}, &block);
    if (code == ERROR_SUCCESS) {
        *text = static_cast<LPSTR>(block);
        if (length != nullptr) {
            *length = static_cast<ULONG>(written.size() + 1);
        }
    }
    return code;
}

DWORD TextToDescriptor(LPCSTR text, PSECURITY_DESCRIPTOR* pointer, PULONG size) {
    SecurityDescriptor descriptor;
    DWORD code = ParseDescriptorText(Current(), text, &descriptor);
    if (code != ERROR_SUCCESS) {
        return code;
    }
    const std::string bytes = BytesOf(descriptor);
    void* block = nullptr;
    code = HandOutBlock(bytes, &block);
    if (code == ERROR_SUCCESS) {
        *pointer = block;
        if (size != nullptr) {
            *size = static_cast<ULONG>(bytes.size());
        }
    }
    return code;
}

}  // namespace

// ---- tokens ---------------------------------------------------------------------------------------------------------

HANDLE WINAPI GetCurrentProcess() {
    return CurrentProcess();
}

BOOL WINAPI OpenProcessToken(HANDLE ProcessHandle, DWORD DesiredAccess, LPHANDLE TokenHandle) {
    if (!HasSecurity()) {
        return Outcome(ERROR_CALL_NOT_IMPLEMENTED);
    }
    if (ProcessHandle != CurrentProcess()) {
        return Outcome(ERROR_INVALID_HANDLE);
    }
    if (TokenHandle == nullptr) {
        return Outcome(kErrorNoAccess);
    }
    *TokenHandle =
        Current().Handles().Open(HandleKind::Token, std::make_shared<Token>(Token{DesiredAccess}), "of the process");
    return TRUE;
}

BOOL WINAPI GetTokenInformation(HANDLE TokenHandle, TOKEN_INFORMATION_CLASS TokenInformationClass,
                                LPVOID TokenInformation, DWORD TokenInformationLength, LPDWORD ReturnLength) {
    return Outcome(HasSecurity() ? TokenInformationOf(TokenHandle, TokenInformationClass, TokenInformation,
                                                      TokenInformationLength, ReturnLength)
                                 : static_cast<DWORD>(ERROR_CALL_NOT_IMPLEMENTED));
}

// ---- SIDs -----------------------------------------------------------------------------------------------------------

BOOL WINAPI AllocateAndInitializeSid(PSID_IDENTIFIER_AUTHORITY pIdentifierAuthority, BYTE nSubAuthorityCount,
                                     DWORD nSubAuthority0, DWORD nSubAuthority1, DWORD nSubAuthority2,
                                     DWORD nSubAuthority3, DWORD nSubAuthority4, DWORD nSubAuthority5,
                                     DWORD nSubAuthority6, DWORD nSubAuthority7, PSID* pSid) {
    if (!HasSecurity()) {
        return Outcome(ERROR_CALL_NOT_IMPLEMENTED);
    }
    if (nSubAuthorityCount > kMaxAllocatedSubAuthorities) {
        return Outcome(ERROR_INVALID_SID);
    }
    if (pIdentifierAuthority == nullptr || pSid == nullptr) {
        return Outcome(kErrorNoAccess);
    }
    const DWORD numbers[kMaxAllocatedSubAuthorities] = {nSubAuthority0, nSubAuthority1, nSubAuthority2, nSubAuthority3,
                                                        nSubAuthority4, nSubAuthority5, nSubAuthority6, nSubAuthority7};
    Sid sid;
    for (const BYTE byte : pIdentifierAuthority->Value) {
        sid.authority = sid.authority << 8 | byte;
    }
    sid.subAuthorities.assign(numbers, numbers + nSubAuthorityCount);
    const std::string bytes = BytesOf(sid);
    void* block = Current().Heap().Allocate(BlockKind::Sid, bytes.size());
    if (block == nullptr) {
        return Outcome(ERROR_NOT_ENOUGH_MEMORY);
    }
    std::memcpy(block, bytes.data(), bytes.size());
    *pSid = block;
    return TRUE;
}

BOOL WINAPI EqualSid(PSID pSid1, PSID pSid2) {
    const std::optional<std::string_view> left = SidBytesAt(pSid1);
    const std::optional<std::string_view> right = SidBytesAt(pSid2);
    return left && right && *left == *right ? TRUE : FALSE;
}

PVOID WINAPI FreeSid(PSID pSid) {
    return pSid == nullptr || Current().Heap().Free(BlockKind::Sid, pSid) ? nullptr : pSid;
}

// ---- descriptor texts -----------------------------------------------------------------------------------------------

BOOL WINAPI ConvertSecurityDescriptorToStringSecurityDescriptorA(PSECURITY_DESCRIPTOR SecurityDescriptor,
                                                                 DWORD RequestedStringSDRevision,
                                                                 DWORD SecurityInformation,
                                                                 LPSTR* StringSecurityDescriptor,
                                                                 PULONG StringSecurityDescriptorLen) {
    if (SecurityDescriptor == nullptr || StringSecurityDescriptor == nullptr) {
        return Outcome(ERROR_INVALID_PARAMETER);
    }
    if (RequestedStringSDRevision != SDDL_REVISION_1) {
        return Outcome(ERROR_UNKNOWN_REVISION);
    }
    return Outcome(DescriptorToText(SecurityDescriptor, SecurityInformation, StringSecurityDescriptor,
                                    StringSecurityDescriptorLen));
}

BOOL WINAPI ConvertStringSecurityDescriptorToSecurityDescriptorA(LPCSTR StringSecurityDescriptor,
                                                                 DWORD StringSDRevision,
                                                                 PSECURITY_DESCRIPTOR* SecurityDescriptor,
                                                                 PULONG SecurityDescriptorSize) {
    if (StringSecurityDescriptor == nullptr || SecurityDescriptor == nullptr) {
        return Outcome(ERROR_INVALID_PARAMETER);
    }
    if (StringSDRevision != SDDL_REVISION_1) {
        return Outcome(ERROR_UNKNOWN_REVISION);
    }
    return Outcome(TextToDescriptor(StringSecurityDescriptor, SecurityDescriptor, SecurityDescriptorSize));
}

}  // namespace pikel::simulated
