#include "machine/modules/version_resource.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "machine/base/text.h"

namespace pikel::simulated {

namespace {

// ---- little-endian reading within bounds ----------------------------------------------------------------------------

std::uint16_t Read16(std::string_view bytes, std::size_t at) {
    if (at > bytes.size() || bytes.size() - at < 2) {
        return 0;
    }
    return static_cast<std::uint16_t>(static_cast<unsigned char>(bytes[at]) | static_cast<unsigned char>(bytes[at + 1])
                                                                                  << 8);
}

std::uint32_t Read32(std::string_view bytes, std::size_t at) {
    return Read16(bytes, at) | static_cast<std::uint32_t>(Read16(bytes, at + 2)) << 16;
}

std::string_view Part(std::string_view bytes, std::size_t at, std::size_t size) {
    return at <= bytes.size() && bytes.size() - at >= size ? bytes.substr(at, size) : std::string_view();
}

// ---- the program file -----------------------------------------------------------------------------------------------

constexpr std::uint16_t kPe32 = 0x10B;
constexpr std::uint16_t kPe64 = 0x20B;
constexpr std::uint32_t kVersionType = 16;  // RT_VERSION
constexpr std::uint32_t kSubdirectory = 0x80000000;

struct Sections {
    std::string_view file;
    std::size_t table = 0;
    unsigned count = 0;

    /// Bytes of an address range of the loaded file; empty when no section holds all of it.
    std::string_view At(std::uint32_t address, std::uint32_t size) const {
        for (unsigned i = 0; i < count; ++i) {
            const std::size_t header = table + i * std::size_t{40};
            const std::uint32_t start = Read32(file, header + 12);
            const std::uint32_t length = Read32(file, header + 16);
            if (address >= start && address - start <= length && length - (address - start) >= size) {
                return Part(file, std::size_t{Read32(file, header + 20)} + (address - start), size);
            }
        }
        return {};
    }
    /// From an address to the end of its section.
    std::string_view From(std::uint32_t address) const {
        for (unsigned i = 0; i < count; ++i) {
            const std::size_t header = table + i * std::size_t{40};
            const std::uint32_t start = Read32(file, header + 12);
            const std::uint32_t length = Read32(file, header + 16);
            if (address >= start && address - start < length) {
                return Part(file, std::size_t{Read32(file, header + 20)} + (address - start),
                            length - (address - start));
            }
        }
        return {};
    }
};

/// The resource section of a program file, and its sections; empty where there is none.
std::string_view Resources(std::string_view file, Sections& sections) {
    if (!file.starts_with("MZ")) {
        return {};
    }
    const std::size_t header = Read32(file, 0x3C);
    if (Part(file, header, 4) != std::string_view("PE\0\0", 4)) {
        return {};
    }
    const std::size_t optional = header + 24;
    const std::uint16_t magic = Read16(file, optional);
    if (magic != kPe32 && magic != kPe64) {
        return {};
    }
    sections = {file, optional + Read16(file, header + 20), Read16(file, header + 6)};
    const std::size_t directories = optional + (magic == kPe32 ? 96 : 112);
    return sections.From(Read32(file, directories + 2 * std::size_t{8}));
}

/// The entry of a resource directory with a number, or its first one for none.
std::optional<std::uint32_t> FindEntry(std::string_view resources, std::size_t directory,
                                       std::optional<std::uint32_t> number) {
    const unsigned names = Read16(resources, directory + 12);
    const unsigned numbers = Read16(resources, directory + 14);
    for (unsigned i = number ? names : 0; i < names + numbers; ++i) {
        const std::size_t entry = directory + 16 + i * std::size_t{8};
        if (Part(resources, entry, 8).empty()) {
            break;
        }
        if (!number || Read32(resources, entry) == *number) {
            return Read32(resources, entry + 4);
        }
    }
    return std::nullopt;
}

// ---- the version block ----------------------------------------------------------------------------------------------

constexpr std::size_t kNodeHeader = 6;  // length, length of the value, type
constexpr int kDeepest = 4;             // root, StringFileInfo, language, text

std::size_t Aligned(std::size_t offset) {
    return (offset + 3) & ~std::size_t{3};
}

/// One structure of the block. Offsets count from the block's first byte.
struct Node {
    std::size_t end = 0;
    bool isText = false;
    std::size_t key = 0;        ///< the wide key
    std::size_t keyLength = 0;  ///< in characters
    std::size_t value = 0;
    std::size_t valueSize = 0;  ///< in bytes
    std::size_t children = 0;
};

/// Reads the structure at an offset. Nothing when it doesn't lie within its parent.
std::optional<Node> ReadNode(std::string_view block, std::size_t at, std::size_t parentEnd) {
    const std::size_t size = Read16(block, at);
    if (size < kNodeHeader || parentEnd > block.size() || at > parentEnd || parentEnd - at < size) {
        return std::nullopt;
    }
    Node node;
    node.end = at + size;
    node.isText = Read16(block, at + 4) != 0;
    node.key = at + kNodeHeader;
    std::size_t offset = node.key;
    while (true) {
        if (offset + 2 > node.end) {
            return std::nullopt;
        }
        const std::uint16_t character = Read16(block, offset);
        offset += 2;
        if (character == 0) {
            break;
        }
        ++node.keyLength;
    }
    node.value = std::min(Aligned(offset), node.end);
    node.valueSize = Read16(block, at + 2) * (node.isText ? std::size_t{2} : std::size_t{1});
    if (node.valueSize > node.end - node.value) {
        // Some compilers count the bytes of a text; what is there is taken.
        node.valueSize = node.end - node.value;
    }
    node.children = std::min(Aligned(node.value + node.valueSize), node.end);
    return node;
}

std::string KeyText(std::string_view block, const Node& node, UINT codePage) {
    std::u16string wide;
    for (std::size_t i = 0; i < node.keyLength; ++i) {
        wide.push_back(static_cast<char16_t>(Read16(block, node.key + i * 2)));
    }
    return FromWide(codePage, wide);
}

/// Turns a text value into one of the code page, in its own place: that is never longer in bytes.
void Narrow(std::string& block, const Node& node, UINT codePage) {
    std::u16string wide;
    for (std::size_t at = node.value; at + 2 <= node.value + node.valueSize; at += 2) {
        const std::uint16_t character = Read16(block, at);
        if (character == 0) {
            break;
        }
        wide.push_back(static_cast<char16_t>(character));
    }
    std::string text = FromWide(codePage, wide);
    if (text.size() >= node.valueSize) {
        text.resize(node.valueSize - 1);
    }
    std::memset(block.data() + node.value, 0, node.valueSize);
    std::memcpy(block.data() + node.value, text.data(), text.size());
}

bool PrepareNode(std::string& block, std::size_t at, std::size_t parentEnd, UINT codePage, int depth,
                 std::size_t& end) {
    const std::optional<Node> node = ReadNode(block, at, parentEnd);
    if (!node || depth > kDeepest) {
        return false;
    }
    end = node->end;
    if (node->isText && node->valueSize >= 2) {
        Narrow(block, *node, codePage);
    }
    for (std::size_t child = node->children; child + kNodeHeader <= node->end;) {
        std::size_t childEnd = 0;
        if (!PrepareNode(block, child, node->end, codePage, depth + 1, childEnd)) {
            return false;
        }
        child = Aligned(childEnd);
    }
    return true;
}

std::optional<Node> FindChild(std::string_view block, const Node& parent, std::string_view name, UINT codePage) {
    for (std::size_t at = parent.children; at + kNodeHeader <= parent.end;) {
        const std::optional<Node> child = ReadNode(block, at, parent.end);
        if (!child) {
            break;
        }
        if (FoldCase(codePage, KeyText(block, *child, codePage)) == FoldCase(codePage, name)) {
            return child;
        }
        at = Aligned(child->end);
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::string> FindVersionResource(std::string_view file, DWORD& code) {
    code = ERROR_RESOURCE_DATA_NOT_FOUND;
    Sections sections;
    const std::string_view resources = Resources(file, sections);
    if (resources.empty()) {
        return std::nullopt;
    }
    code = ERROR_RESOURCE_TYPE_NOT_FOUND;
    // Type, name, language: three directories, one below the other.
    std::optional<std::uint32_t> place = FindEntry(resources, 0, kVersionType);
    for (int level = 0; level < 2 && place && (*place & kSubdirectory) != 0; ++level) {
        place = FindEntry(resources, *place & ~kSubdirectory, std::nullopt);
    }
    if (!place || (*place & kSubdirectory) != 0 || Part(resources, *place, 16).empty()) {
        return std::nullopt;
    }
    const std::string_view block = sections.At(Read32(resources, *place), Read32(resources, *place + 4));
    if (block.size() < kNodeHeader) {
        return std::nullopt;
    }
    return std::string(block);
}

bool PrepareVersionBlock(std::string& block, UINT codePage) {
    std::size_t end = 0;
    return PrepareNode(block, 0, block.size(), codePage, 1, end);
}

const char* QueryVersion(const char* block, std::string_view path, UINT codePage, UINT& length) {
    std::size_t size = Read16({block, 2}, 0);
    const std::string_view bytes(block, size);
    std::optional<Node> node = ReadNode(bytes, 0, size);
    while (node && !path.empty()) {
        const std::size_t end = std::min(path.find('\\'), path.size());
        if (end != 0) {
            node = FindChild(bytes, *node, path.substr(0, end), codePage);
        }
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    if (!node) {
        return nullptr;
    }
    const char* value = block + node->value;
    length = static_cast<UINT>(node->valueSize);
    if (node->isText) {
        length = node->valueSize == 0 ? 0 : static_cast<UINT>(strnlen(value, node->valueSize - 1) + 1);
    }
    return value;
}

}  // namespace pikel::simulated
