// Splitting of delimited texts.
#include "frame/string_list.h"

#include <algorithm>
#include <string_view>

namespace pikel {

namespace {

/// A text that ends in the delimiter has an empty last element; a text without any character has none at all.
void Split(std::vector<std::string>& vecTexts, std::string_view text, char chDelimiter) {
    if (text.empty()) {
        return;
    }
    std::size_t position = 0;
    for (std::size_t found; (found = text.find(chDelimiter, position)) != std::string_view::npos;
         position = found + 1) {
        vecTexts.emplace_back(text.substr(position, found - position));
    }
    vecTexts.emplace_back(text.substr(position));
}

}  // namespace

StringList::StringList(const char* text, char delimiter) : m_chDelimiter(delimiter) {
    if (text != nullptr) {
        Split(m_vecTexts, text, delimiter);
    }
}

StringList::StringList(const std::string& text, char delimiter) : m_chDelimiter(delimiter) {
    Split(m_vecTexts, text, delimiter);
}

void StringList::SortUnique() {
    // Lists tend to come in order; telling that is linear.
    if (!std::is_sorted(m_vecTexts.begin(), m_vecTexts.end())) {
        std::sort(m_vecTexts.begin(), m_vecTexts.end());
    }
    m_vecTexts.erase(std::unique(m_vecTexts.begin(), m_vecTexts.end()), m_vecTexts.end());
}

const std::string& StringList::FrontOrEmpty() const {
    static const std::string strEmpty;
    return m_vecTexts.empty() ? strEmpty : m_vecTexts.front();
}

}  // namespace pikel
