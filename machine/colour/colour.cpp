// Colour profiles of the machine.
#include "machine/colour/colour.h"

#include <algorithm>

#include "machine/base/names.h"
#include "machine/base/text.h"
#include "machine/files/files.h"
#include "machine/registry/registry.h"
#include "machine/spooler/environments.h"
#include "machine/spooler/printer_data.h"
#include "machine/spooler/printers.h"
#include "machine/spooler/spooler.h"

namespace pikel::simulated {

namespace {

constexpr std::size_t kHeaderSize = 128;
constexpr std::size_t kDeviceClassAt = 12;
constexpr std::size_t kSignatureAt = 36;
constexpr std::string_view kSignature = "acsp";
constexpr std::size_t kIdentityAt = 48;  ///< manufacturer, model, attributes
constexpr std::size_t kIdentitySize = 16;

bool IsClassCharacter(char character) {
    return character == ' ' || (character >= '0' && character <= '9') ||
           ((character | 0x20) >= 'a' && (character | 0x20) <= 'z');
}

/// The device class of a profile, without blanks at its end; empty for bytes that are no profile.
std::string DeviceClassOf(std::string_view bytes) {
    if (bytes.size() < kHeaderSize || bytes.substr(kSignatureAt, kSignature.size()) != kSignature) {
        return {};
    }
    std::string name(bytes.substr(kDeviceClassAt, 4));
    if (!std::ranges::all_of(name, IsClassCharacter)) {
        return {};
    }
    name.resize(name.find_last_not_of(' ') + 1);
    return name;
}

}  // namespace

std::string ColourProfiles::Directory() const {
    return m_machine.System().systemDirectory + (m_machine.Is9x() ? "\\COLOR" : "\\spool\\drivers\\color");
}

std::string ColourProfiles::RegistryKey() const {
    return std::string("HKLM\\SOFTWARE\\Microsoft\\") + (m_machine.Is9x() ? "Windows" : "Windows NT") +
           "\\CurrentVersion\\ICM";
}

std::string ColourProfiles::NameOf(std::string_view profile) const {
    return std::string(FileName(profile, m_machine.System().codePage));
}

// ---- installed profiles ---------------------------------------------------------------------------------------------

std::optional<std::string> ColourProfiles::KeyOfInstalled(std::string_view name) const {
    const Registry& registry = m_machine.Registry();
    for (const std::string& deviceClass : registry.SubKeys(RegistryKey())) {
        std::string key = RegistryKey() + "\\" + deviceClass;
        if (!name.empty() && registry.Find(key, name) != nullptr) {
            return key;
        }
    }
    return std::nullopt;
}

bool ColourProfiles::IsInstalled(std::string_view name) const {
    return KeyOfInstalled(name).has_value();
}

/// Where the bytes of a profile are; a bare name may lie in either folder.
std::string ColourProfiles::Locate(std::string_view profile) const {
    if (profile.find_first_of("\\/:") != std::string_view::npos) {
        return std::string(profile);
    }
    std::string path = Directory() + "\\" + std::string(profile);
    if (!m_machine.Files().Exists(path)) {
        path = Environments(m_machine).Own().directory + "\\" + std::string(profile);
    }
    return path;
}

DWORD ColourProfiles::Install(std::string_view profile) {
    if (NameOf(profile).empty()) {
        return ERROR_INVALID_PARAMETER;
    }
    Files& files = m_machine.Files();
    const std::string source = Locate(profile);
    if (!files.Exists(source) || files.IsDirectory(source)) {
        return ERROR_FILE_NOT_FOUND;
    }
    if (const DWORD code = files.CheckOpen(source, GENERIC_READ, FILE_SHARE_READ); code != ERROR_SUCCESS) {
        return code;
    }
    const std::string bytes = files.Read(source).value_or(std::string());
    const std::string deviceClass = DeviceClassOf(bytes);
    if (deviceClass.empty()) {
        return ERROR_INVALID_PROFILE;
    }
    const std::string name = NameOf(profile);
    if (IsInstalled(name)) {
        return ERROR_ALREADY_EXISTS;
    }
    const std::string target = Directory() + "\\" + name;
    if (!IsSameName(m_machine, source, target)) {
        DWORD code = files.MakeFolders(Directory());
        if (code == ERROR_SUCCESS) {
            code = files.Copy(source, target, false);
        }
        if (code != ERROR_SUCCESS) {
            return code;
        }
    }
    m_machine.Registry().SetBytes(RegistryKey() + "\\" + deviceClass, name,
                                  std::string_view(bytes).substr(kIdentityAt, kIdentitySize));
    return ERROR_SUCCESS;
}

DWORD ColourProfiles::Uninstall(std::string_view profile, bool deleteFile) {
    const std::string name = NameOf(profile);
    const std::optional<std::string> key = KeyOfInstalled(name);
    if (!key) {
        return ERROR_PROFILE_NOT_FOUND;
    }
    m_machine.Registry().DeleteValue(*key, name);
    return deleteFile ? m_machine.Files().Delete(Directory() + "\\" + name) : ERROR_SUCCESS;
}

// ---- profiles of a printer ------------------------------------------------------------------------------------------

std::string_view ColourProfiles::LinksKey() const {
    return m_machine.Is9x() ? PrinterData::kDriverData : std::string_view("CopyFiles\\ICM");
}

DWORD ColourProfiles::CheckPrinter(std::string_view printer) const {
    return Printers(m_machine).Find(printer) ? ERROR_SUCCESS : ERROR_INVALID_PRINTER_NAME;
}

std::vector<std::string> ColourProfiles::LinkedTo(std::string_view printer) const {
    const RegistryValue* files = PrinterData(m_machine, printer).Get(LinksKey(), "Files");
    // The value is anybody's to write, with or without its NULs.
    return files == nullptr ? std::vector<std::string>() : SplitMultiString((files->data + '\0').c_str());
}

void ColourProfiles::WriteLinks(std::string_view printer, const std::vector<std::string>& names) {
    PrinterData data(m_machine, printer);
    auto setText = [&](std::string_view value, std::string text) {
        text += '\0';
        data.Set(LinksKey(), value, REG_SZ, text);
    };
    if (!m_machine.Is9x()) {
        setText("Directory", "COLOR");
        setText("Module", "mscms.dll");
        setText("SourceDir", Directory());
    }
    data.Set(LinksKey(), "Files", REG_MULTI_SZ, JoinMultiString(names));
}

DWORD ColourProfiles::Link(std::string_view profile, std::string_view printer) {
    const std::string name = NameOf(profile);
    if (!IsInstalled(name)) {
        return ERROR_PROFILE_NOT_FOUND;
    }
    if (const DWORD code = CheckPrinter(printer); code != ERROR_SUCCESS) {
        return code;
    }
    std::vector<std::string> names = LinkedTo(printer);
    if (std::ranges::any_of(names, [&](const std::string& linked) { return IsSameName(m_machine, linked, name); })) {
        return ERROR_ALREADY_EXISTS;
    }
    names.push_back(name);
    WriteLinks(printer, names);
    return ERROR_SUCCESS;
}

DWORD ColourProfiles::Unlink(std::string_view profile, std::string_view printer) {
    if (const DWORD code = CheckPrinter(printer); code != ERROR_SUCCESS) {
        return code;
    }
    const std::string name = NameOf(profile);
    std::vector<std::string> names = LinkedTo(printer);
    const std::size_t removed =
        std::erase_if(names, [&](const std::string& linked) { return IsSameName(m_machine, linked, name); });
    if (removed == 0) {
        return ERROR_PROFILE_NOT_ASSOCIATED_WITH_DEVICE;
    }
    WriteLinks(printer, names);
    return ERROR_SUCCESS;
}

}  // namespace pikel::simulated
