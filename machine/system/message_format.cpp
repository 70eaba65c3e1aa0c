// Messages with places for texts of the caller.
#include "machine/system/message_format.h"

namespace pikel::simulated {

namespace {

bool IsDigit(std::string_view text, std::size_t at) {
    return at < text.size() && text[at] >= '0' && text[at] <= '9';
}

}  // namespace

const char* MessageInserts::At(unsigned number) {
    if (m_arguments == nullptr) {
        return nullptr;
    }
    if (m_isArray) {
        return reinterpret_cast<const char* const*>(m_arguments)[number - 1];
    }
    for (; m_taken < number; ++m_taken) {
        m_texts[m_taken] = va_arg(*m_arguments, const char*);
    }
    return m_texts[number - 1];
}

std::optional<std::string> ExpandMessage(std::string_view text, MessageInserts inserts) {
    std::string expanded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%' || i + 1 == text.size()) {
            expanded += text[i];
            continue;
        }
        ++i;
        if (text[i] == '0') {
            break;
        }
        if (!IsDigit(text, i)) {
            expanded += text[i] == 'n' ? std::string("\r\n") : std::string(1, text[i]);
            continue;
        }
        unsigned number = static_cast<unsigned>(text[i] - '0');
        if (IsDigit(text, i + 1)) {
            number = number * 10 + static_cast<unsigned>(text[++i] - '0');
        }
        const char* insert = inserts.At(number);
        if (insert == nullptr) {
            return std::nullopt;
        }
        expanded += insert;
    }
    return expanded;
}

}  // namespace pikel::simulated
