#include "support/pe_file.h"

#include <cstdint>

namespace pikel::testing_support {

namespace {

void Put16(std::string& bytes, std::uint32_t value) {
    bytes.push_back(static_cast<char>(value & 0xFF));
    bytes.push_back(static_cast<char>(value >> 8 & 0xFF));
}

void Put32(std::string& bytes, std::uint32_t value) {
    Put16(bytes, value);
    Put16(bytes, value >> 16);
}

void Align(std::string& bytes) {
    bytes.resize((bytes.size() + 3) & ~std::size_t{3});
}

void PutWide(std::string& bytes, const std::string& text) {
    for (char character : text) {
        Put16(bytes, static_cast<unsigned char>(character));
    }
    Put16(bytes, 0);
}

/// A structure of the version block: header, key, value, children.
std::string Node(const std::string& key, bool isText, const std::string& value, std::uint32_t valueLength,
                 const std::vector<std::string>& children) {
    std::string node;
    Put16(node, 0);
    Put16(node, valueLength);
    Put16(node, isText ? 1 : 0);
    PutWide(node, key);
    if (!value.empty()) {
        Align(node);
        node += value;
    }
    for (const std::string& child : children) {
        Align(node);
        node += child;
    }
    std::string length;
    Put16(length, static_cast<std::uint32_t>(node.size()));
    return length + node.substr(2);
}

std::string TextNode(const std::string& key, const std::string& text) {
    std::string value;
    PutWide(value, text);
    return Node(key, true, value, static_cast<std::uint32_t>(text.size() + 1), {});
}

std::string Hexadecimal(unsigned number) {
    const char* digits = "0123456789ABCDEF";
    std::string text;
    for (int shift = 12; shift >= 0; shift -= 4) {
        text.push_back(digits[number >> shift & 0xF]);
    }
    return text;
}

constexpr std::uint32_t kHeaders = 0x200;
constexpr std::uint32_t kSectionAddress = 0x1000;
constexpr std::uint32_t kDataOffset = 16 * 3 + 8 * 3 + 16;  // three directories with an entry each, one data entry

/// A resource directory with one entry.
void PutDirectory(std::string& bytes, std::uint32_t number, std::uint32_t place) {
    Put32(bytes, 0);
    Put32(bytes, 0);
    Put32(bytes, 0);
    Put16(bytes, 0);
    Put16(bytes, 1);
    Put32(bytes, number);
    Put32(bytes, place);
}

}  // namespace

std::string MakeVersionBlock(const PeVersion& version) {
    std::vector<std::string> texts;
    for (const auto& [name, value] : version.texts) {
        texts.push_back(TextNode(name, value));
    }
    std::vector<std::string> children = {
        Node("StringFileInfo", true, "", 0,
             {Node(Hexadecimal(version.language) + Hexadecimal(version.codePage), true, "", 0, texts)})};
    if (version.hasTranslation) {
        std::string value;
        if (!version.isTranslationEmpty) {
            Put16(value, version.language);
            Put16(value, version.codePage);
        }
        for (const auto& [language, codePage] : version.otherTranslations) {
            Put16(value, language);
            Put16(value, codePage);
        }
        children.push_back(Node("VarFileInfo", true, "", 0,
                                {Node("Translation", false, value, static_cast<std::uint32_t>(value.size()), {})}));
    }
    std::string fixedPart(8, '\0');  // VS_FIXEDFILEINFO: dwFileVersionMS and -LS stand behind two other fields
    Put32(fixedPart, version.fixed.first);
    Put32(fixedPart, version.fixed.second);
    fixedPart.resize(52, '\0');
    return Node("VS_VERSION_INFO", false, fixedPart, 52, children);
}

std::string MakePeFile(const PeVersion& version) {
    const std::string block = MakeVersionBlock(version);
    std::string resources;
    PutDirectory(resources, 16, 0x80000000u | 24);
    PutDirectory(resources, 1, 0x80000000u | 48);
    PutDirectory(resources, version.language, 72);
    Put32(resources, kSectionAddress + kDataOffset);
    Put32(resources, static_cast<std::uint32_t>(block.size()));
    Put32(resources, 0);
    Put32(resources, 0);
    resources += block;

    std::string file = "MZ";
    file.resize(0x3C);
    Put32(file, 0x40);
    file += std::string("PE\0\0", 4);
    const std::uint32_t directories = version.is64Bit ? 112 : 96;
    Put16(file, version.is64Bit ? 0x8664 : 0x14C);
    Put16(file, 1);  // sections
    Put32(file, 0);
    Put32(file, 0);
    Put32(file, 0);
    Put16(file, directories + 16 * 8);
    Put16(file, 0x2102);
    std::string optional;
    Put16(optional, version.is64Bit ? 0x20B : 0x10B);
    optional.resize(directories);
    optional.resize(optional.size() + 2 * 8);
    Put32(optional, kSectionAddress);
    Put32(optional, static_cast<std::uint32_t>(resources.size()));
    optional.resize(directories + 16 * 8);
    file += optional;
    file += std::string(".rsrc\0\0\0", 8);
    Put32(file, static_cast<std::uint32_t>(resources.size()));
    Put32(file, kSectionAddress);
    Put32(file, static_cast<std::uint32_t>(resources.size()));
    Put32(file, kHeaders);
    file.resize(kHeaders);
    return file + resources;
}

std::string MakePeFile(const std::string& version) {
    PeVersion description;
    description.texts = {{"FileVersion", version}, {"ProductVersion", version}};
    return MakePeFile(description);
}

}  // namespace pikel::testing_support
