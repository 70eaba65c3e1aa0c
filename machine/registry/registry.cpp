// The registry as a tree of keys, and the typed reads and writes on it.
#include "machine/registry/registry.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>

#include "machine/base/text.h"
#include "machine/registry/tree.h"

namespace pikel::simulated {

namespace {

constexpr std::string_view kClasses = "HKEY_CLASSES_ROOT";
constexpr std::array<std::pair<std::string_view, std::string_view>, 4> kRoots = {{
    {"HKCR", kClasses},
    {"HKCU", "HKEY_CURRENT_USER"},
    {"HKLM", "HKEY_LOCAL_MACHINE"},
    {"HKU", "HKEY_USERS"},
}};

/// Splits at backslashes that are no trail bytes; empty parts fall out.
std::vector<std::string> SplitAtBackslashes(UINT codePage, std::string_view path) {
    std::vector<std::string> parts;
    std::string part;
    for (std::size_t i = 0; i < path.size(); ++i) {
        if (path[i] == '\\') {
            if (!part.empty()) {
                parts.push_back(std::exchange(part, {}));
            }
            continue;
        }
        bool isLead = static_cast<unsigned char>(path[i]) >= 0x80 && i + 1 < path.size() &&
                      IsLeadByte(codePage, static_cast<unsigned char>(path[i]));
        part += path[i];
        if (isLead) {
            part += path[++i];
        }
    }
    if (!part.empty()) {
        parts.push_back(std::move(part));
    }
    return parts;
}

std::string WithNul(std::string_view text) {
    std::string data(text);
    data += '\0';
    return data;
}

}  // namespace

std::string_view RegistryRootName(std::string_view name) {
    for (const auto& [shortName, fullName] : kRoots) {
        if (EqualNoCase(name, shortName) || EqualNoCase(name, fullName)) {
            return fullName;
        }
    }
    return {};
}

RegistryNode RegistryNode::Copy() const {
    RegistryNode copy;
    copy.name = name;
    copy.id = id;
    copy.values = values;
    for (const auto& [folded, child] : keys) {
        copy.keys.emplace_hint(copy.keys.end(), folded, std::make_unique<RegistryNode>(child->Copy()));
    }
    return copy;
}

// ---- RegistryTree ---------------------------------------------------------------------------------------------------

RegistryTree::RegistryTree(UINT page, std::uint64_t firstId) : codePage(page), nextId(firstId) {
    for (const auto& [shortName, fullName] : kRoots) {
        if (fullName != kClasses) {
            Make({std::string(fullName)});
        }
    }
    isDirty = false;
}

std::string RegistryTree::Fold(std::string_view name) const {
    return FoldCase(codePage, name);
}

std::vector<std::string> RegistryTree::Split(std::string_view path) const {
    std::vector<std::string> names = SplitAtBackslashes(codePage, path);
    if (names.empty()) {
        return {};
    }
    std::string_view rootName = RegistryRootName(names.front());
    if (rootName.empty()) {
        return {};
    }
    names.front() = rootName;
    if (rootName == kClasses) {
        names.front() = "HKEY_LOCAL_MACHINE";
        const std::array<std::string, 2> place = {"SOFTWARE", "Classes"};
        names.insert(names.begin() + 1, place.begin(), place.end());
    }
    return names;
}

const RegistryNode* RegistryTree::Find(std::string_view path) const {
    std::vector<std::string> names = Split(path);
    if (names.empty()) {
        return nullptr;
    }
    const RegistryNode* node = &root;
    for (const std::string& name : names) {
        auto found = node->keys.find(Fold(name));
        if (found == node->keys.end()) {
            return nullptr;
        }
        node = found->second.get();
    }
    return node;
}

RegistryNode* RegistryTree::Make(const std::vector<std::string>& names, bool* isNew) {
    bool isLastNew = false;
    bool areNamesGood = !names.empty() && names.size() <= Registry::kMaxDepth + 1 &&
                        std::all_of(names.begin(), names.end(),
                                    [](const std::string& name) { return name.size() <= Registry::kMaxKeyName; });
    if (!areNamesGood) {
        return nullptr;
    }
    RegistryNode* node = &root;
    for (const std::string& name : names) {
        std::unique_ptr<RegistryNode>& child = node->keys[Fold(name)];
        isLastNew = child == nullptr;
        if (isLastNew) {
            child = std::make_unique<RegistryNode>();
            child->name = name;
            child->id = nextId++;
            isDirty = true;
        }
        node = child.get();
    }
    if (isNew != nullptr) {
        *isNew = isLastNew;
    }
    return node;
}

void RegistryTree::SetValue(RegistryNode& key, std::string_view name, DWORD type, std::string data) {
    auto [position, isNew] = key.values.try_emplace(Fold(name));
    RegistryValue& value = position->second;
    if (isNew) {
        value.name = name;
        key.cursor.Reset();
    } else if (value.type == type && value.data == data) {
        return;
    }
    value.type = type;
    value.data = std::move(data);
    isDirty = true;
}

// ---- Registry -------------------------------------------------------------------------------------------------------

Registry::Registry(UINT codePage) : m_tree(std::make_unique<RegistryTree>(codePage)) {}
Registry::~Registry() = default;

std::string Registry::Parse(std::string_view text) {
    std::string problem = ReplaceTree(text, m_tree->codePage);
    if (problem.empty()) {
        m_tree->isDirty = false;
    }
    return problem;
}

void Registry::CopyFrom(const Registry& other) {
    auto fresh = std::make_unique<RegistryTree>(other.m_tree->codePage, std::max(m_tree->nextId, other.m_tree->nextId));
    fresh->root = other.m_tree->root.Copy();
    fresh->isDirty = false;
    m_tree = std::move(fresh);
}

std::string Registry::SetCodePage(UINT codePage) {
    bool isDirty = m_tree->isDirty;
    std::string problem = ReplaceTree(Text(), codePage);
    m_tree->isDirty = isDirty;
    return problem;
}

std::string Registry::ReplaceTree(std::string_view text, UINT codePage) {
    // Numbers of the keys that go must not come back: handles tell a key that was deleted by its number.
    auto fresh = std::make_unique<RegistryTree>(codePage, m_tree->nextId);
    std::string problem = ReadRegistryText(text, *fresh);
    if (problem.empty()) {
        fresh->denials = std::move(m_tree->denials);
        m_tree = std::move(fresh);
    }
    return problem;
}

std::string Registry::Text() const {
    return WriteRegistryText(*m_tree);
}

bool Registry::KeyExists(std::string_view key) const {
    return m_tree->Find(key) != nullptr;
}

std::uint64_t Registry::KeyId(std::string_view key) const {
    const RegistryNode* node = m_tree->Find(key);
    return node == nullptr ? 0 : node->id;
}

bool Registry::CreateKey(std::string_view key) {
    bool isNew = false;
    return m_tree->Make(m_tree->Split(key), &isNew) != nullptr && isNew;
}

bool Registry::DeleteKey(std::string_view key) {
    std::vector<std::string> names = m_tree->Split(key);
    if (names.empty()) {
        return false;
    }
    RegistryNode* parent = &m_tree->root;
    for (std::size_t i = 0; i + 1 < names.size(); ++i) {
        auto found = parent->keys.find(m_tree->Fold(names[i]));
        if (found == parent->keys.end()) {
            return false;
        }
        parent = found->second.get();
    }
    auto found = parent->keys.find(m_tree->Fold(names.back()));
    if (found == parent->keys.end()) {
        return false;
    }
    if (parent == &m_tree->root) {
        found->second->keys.clear();
        found->second->values.clear();
        found->second->cursor.Reset();
    } else {
        parent->keys.erase(found);
    }
    m_tree->isDirty = true;
    return true;
}

bool Registry::HasSubKeys(std::string_view key) const {
    const RegistryNode* node = m_tree->Find(key);
    return node != nullptr && !node->keys.empty();
}

std::vector<std::string> Registry::SubKeys(std::string_view key) const {
    std::vector<std::string> names;
    if (const RegistryNode* node = m_tree->Find(key)) {
        names.reserve(node->keys.size());
        for (const auto& [folded, child] : node->keys) {
            names.push_back(child->name);
        }
    }
    return names;
}

std::vector<RegistryValue> Registry::Values(std::string_view key) const {
    std::vector<RegistryValue> values;
    if (const RegistryNode* node = m_tree->Find(key)) {
        values.reserve(node->values.size());
        for (const auto& [folded, value] : node->values) {
            values.push_back(value);
        }
    }
    return values;
}

const RegistryValue* Registry::ValueAt(std::string_view key, std::size_t index) const {
    const RegistryNode* node = m_tree->Find(key);
    if (node == nullptr || index >= node->values.size()) {
        return nullptr;
    }
    return &node->cursor.At(node->values, index)->second;
}

const RegistryValue* Registry::Find(std::string_view key, std::string_view name) const {
    const RegistryNode* node = m_tree->Find(key);
    if (node == nullptr) {
        return nullptr;
    }
    auto found = node->values.find(m_tree->Fold(name));
    return found == node->values.end() ? nullptr : &found->second;
}

void Registry::Set(std::string_view key, std::string_view name, DWORD type, std::string_view data) {
    RegistryNode* node = m_tree->Make(m_tree->Split(key));
    if (node == nullptr) {
        throw std::invalid_argument("no such place in the registry: " + std::string(key));
    }
    m_tree->SetValue(*node, name, type, std::string(data));
}

bool Registry::DeleteValue(std::string_view key, std::string_view name) {
    RegistryNode* node = m_tree->Find(key);
    if (node == nullptr || node->values.erase(m_tree->Fold(name)) == 0) {
        return false;
    }
    node->cursor.Reset();
    m_tree->isDirty = true;
    return true;
}

std::string Registry::Text(std::string_view key, std::string_view name, std::string_view fallback) const {
    const RegistryValue* value = Find(key, name);
    if (value == nullptr || (value->type != REG_SZ && value->type != REG_EXPAND_SZ)) {
        return std::string(fallback);
    }
    return value->data.substr(0, value->data.find('\0'));
}

DWORD Registry::Number(std::string_view key, std::string_view name, DWORD fallback) const {
    const RegistryValue* value = Find(key, name);
    if (value == nullptr || value->type != REG_DWORD || value->data.size() != 4) {
        return fallback;
    }
    DWORD number = 0;
    for (int i = 3; i >= 0; --i) {
        number = number << 8 | static_cast<unsigned char>(value->data[static_cast<std::size_t>(i)]);
    }
    return number;
}

std::vector<std::string> Registry::Texts(std::string_view key, std::string_view name) const {
    const RegistryValue* value = Find(key, name);
    if (value == nullptr || value->type != REG_MULTI_SZ) {
        return {};
    }
    // Whatever was stored, the copy ends in two NULs, so that the walk ends.
    std::string texts = value->data + std::string(2, '\0');
    return SplitMultiString(texts.c_str());
}

void Registry::SetText(std::string_view key, std::string_view name, std::string_view text) {
    Set(key, name, REG_SZ, WithNul(text));
}

void Registry::SetNumber(std::string_view key, std::string_view name, DWORD number) {
    std::string data;
    for (int shift = 0; shift < 32; shift += 8) {
        data += static_cast<char>(number >> shift & 0xff);
    }
    Set(key, name, REG_DWORD, data);
}

void Registry::SetTexts(std::string_view key, std::string_view name, const std::vector<std::string>& texts) {
    Set(key, name, REG_MULTI_SZ, JoinMultiString(texts));
}

void Registry::SetBytes(std::string_view key, std::string_view name, std::string_view bytes) {
    Set(key, name, REG_BINARY, bytes);
}

bool Registry::IsDirty() const {
    return m_tree->isDirty;
}

void Registry::MarkClean() {
    m_tree->isDirty = false;
}

void Registry::Deny(std::string_view key, bool everything) {
    std::vector<std::string> path = m_tree->Split(key);
    for (std::string& name : path) {
        name = m_tree->Fold(name);
    }
    if (!path.empty()) {
        m_tree->denials.push_back({std::move(path), everything});
    }
}

bool Registry::IsBelowLocalMachine(std::string_view key) const {
    std::vector<std::string> path = m_tree->Split(key);
    return !path.empty() && path.front() == "HKEY_LOCAL_MACHINE";
}

DWORD Registry::CheckAccess(std::string_view key, REGSAM access) const {
    if (m_tree->denials.empty()) {
        return ERROR_SUCCESS;
    }
    std::vector<std::string> path = m_tree->Split(key);
    for (std::string& name : path) {
        name = m_tree->Fold(name);
    }
    for (const RegistryTree::Denial& denial : m_tree->denials) {
        bool isBelow =
            path.size() >= denial.path.size() && std::equal(denial.path.begin(), denial.path.end(), path.begin());
        if (isBelow && (denial.everything || (access & kWriteAccess) != 0)) {
            return ERROR_ACCESS_DENIED;
        }
    }
    return ERROR_SUCCESS;
}

}  // namespace pikel::simulated
