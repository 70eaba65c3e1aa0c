// Ordered narrow strings, split from a text by one delimiter byte. Empty elements stay and nothing is trimmed.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace pikel {

class StringList {
  public:
    using value_type = std::string;
    using const_iterator = std::vector<std::string>::const_iterator;

    StringList() = default;
    /// Splits a text. The search is byte by byte and knows nothing of double-byte characters. A null or empty text
    /// gives no element at all.
    StringList(const char* text, char delimiter);
    StringList(const std::string& text, char delimiter);

    void Append(std::string text) { m_vecTexts.push_back(std::move(text)); }
    void Clear() { m_vecTexts.clear(); }
    /// Sorts ascending by byte value and removes equal neighbours.
    void SortUnique();

    std::size_t size() const { return m_vecTexts.size(); }
    bool empty() const { return m_vecTexts.empty(); }
    const std::string& operator[](std::size_t index) const { return m_vecTexts[index]; }
    const_iterator begin() const { return m_vecTexts.begin(); }
    const_iterator end() const { return m_vecTexts.end(); }
    char Delimiter() const { return m_chDelimiter; }
    /// First element, or an empty text where there is none.
    const std::string& FrontOrEmpty() const;

  private:
    std::vector<std::string> m_vecTexts;
    char m_chDelimiter = '\0';
};

}  // namespace pikel
