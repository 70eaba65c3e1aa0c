// Answers of the spooler's reads and enumerations.
#include "machine/base/info_buffer.h"

#include "machine/base/text.h"

namespace pikel::simulated {

namespace {

constexpr std::size_t kAlignment = 8;

}  // namespace

void* InfoSpace::Put(const void* bytes, std::size_t size) {
    void* place = m_buffer == nullptr ? nullptr : m_buffer + m_used;
    if (place != nullptr && size != 0) {
        std::memcpy(place, bytes, size);
    }
    m_used += size;
    return place;
}

LPSTR InfoSpace::Text(std::string_view text) {
    LPSTR place = static_cast<LPSTR>(Put(text.data(), text.size()));
    Put("", 1);
    return place;
}

LPSTR InfoSpace::MultiTextOrNull(const std::vector<std::string>& texts) {
    if (texts.empty()) {
        return nullptr;
    }
    const std::string joined = JoinMultiString(texts);
    return static_cast<LPSTR>(Put(joined.data(), joined.size()));
}

void* InfoSpace::BytesOrNull(std::string_view bytes) {
    if (bytes.empty()) {
        return nullptr;
    }
    static constexpr char kPadding[kAlignment] = {};
    Put(kPadding, (kAlignment - m_used % kAlignment) % kAlignment);
    return Put(bytes.data(), bytes.size());
}

DWORD CheckInfoBuffer(const InfoBuffer& buffer, bool isNt) {
    if (buffer.needed == nullptr) {
        return isNt ? RPC_X_NULL_REF_POINTER : ERROR_INVALID_PARAMETER;
    }
    *buffer.needed = 0;
    if (buffer.returned != nullptr) {
        *buffer.returned = 0;
    }
    if (buffer.bytes == nullptr && buffer.size != 0) {
        return isNt ? ERROR_INVALID_USER_BUFFER : ERROR_INVALID_PARAMETER;
    }
    return ERROR_SUCCESS;
}

DWORD ReserveInfo(const InfoBuffer& buffer, std::size_t size) {
    *buffer.needed = static_cast<DWORD>(size);
    return size > buffer.size ? ERROR_INSUFFICIENT_BUFFER : ERROR_SUCCESS;
}

DWORD AnswerWithText(const InfoBuffer& buffer, std::string_view text) {
    InfoSpace measure(nullptr, 0);
    measure.Text(text);
    const DWORD code = ReserveInfo(buffer, measure.Used());
    if (code == ERROR_SUCCESS) {
        InfoSpace(buffer.bytes, 0).Text(text);
    }
    return code;
}

}  // namespace pikel::simulated
