// The keys and values of a registry, as registry.cpp and text.cpp share them.
#pragma once

#include <cstdint>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "machine/registry/value.h"
#include "platform/types.h"

namespace pikel::simulated {

/// Remembers where an enumeration by index stands, so that going through a map one index after the other, in either
/// direction, is linear. To be reset by every change of the map's elements.
template <class Map>
class EnumerationCursor {
  public:
    void Reset() { m_isSet = false; }

    /// The element at an index; the index is below the map's size.
    typename Map::const_iterator At(const Map& map, std::size_t index) {
        std::size_t fromCursor = m_isSet ? (index > m_index ? index - m_index : m_index - index) : map.size();
        if (index <= fromCursor) {
            m_position = map.begin();
            m_index = 0;
        } else if (map.size() - index < fromCursor) {
            m_position = map.end();
            m_index = map.size();
        }
        std::advance(m_position, static_cast<std::ptrdiff_t>(index) - static_cast<std::ptrdiff_t>(m_index));
        m_index = index;
        m_isSet = true;
        return m_position;
    }

  private:
    bool m_isSet = false;
    std::size_t m_index = 0;
    typename Map::const_iterator m_position{};
};

struct RegistryNode {
    using Keys = std::map<std::string, std::unique_ptr<RegistryNode>, std::less<>>;
    using Values = std::map<std::string, RegistryValue, std::less<>>;

    std::string name;  ///< as first spelled
    std::uint64_t id = 0;
    Keys keys;  ///< by folded name, like the values
    Values values;
    mutable EnumerationCursor<Values> cursor;

    /// With all keys below it.
    RegistryNode Copy() const;
};

struct RegistryTree {
    explicit RegistryTree(UINT page, std::uint64_t firstId = 1);

    UINT codePage;
    RegistryNode root;  ///< holds the roots: HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE, HKEY_USERS
    std::uint64_t nextId;
    bool isDirty = false;

    struct Denial {
        std::vector<std::string> path;  ///< folded names
        bool everything;
    };
    std::vector<Denial> denials;

    /// Names on a path, the root's in full and HKEY_CLASSES_ROOT as the key that it is. Empty for an unknown root.
    std::vector<std::string> Split(std::string_view path) const;
    const RegistryNode* Find(std::string_view path) const;
    RegistryNode* Find(std::string_view path) { return const_cast<RegistryNode*>(std::as_const(*this).Find(path)); }
    /// The key of a list of names, made where it is missing. Null when a name is too long or there are too many.
    RegistryNode* Make(const std::vector<std::string>& names, bool* isNew = nullptr);
    void SetValue(RegistryNode& key, std::string_view name, DWORD type, std::string data);
    std::string Fold(std::string_view name) const;
};

/// Spelling of a root in full, for both of its names; empty for an unknown one.
std::string_view RegistryRootName(std::string_view name);

/// The whole registry as text.
std::string WriteRegistryText(const RegistryTree& tree);
/// Fills a fresh tree from text. @return empty, or "line N: what is wrong"
std::string ReadRegistryText(std::string_view text, RegistryTree& tree);

}  // namespace pikel::simulated
