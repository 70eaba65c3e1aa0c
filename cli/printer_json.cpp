#include "printer_json.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "failure.h"
#include "session.h"

namespace pikel::cli {

namespace {

using nlohmann::json;

// ---- fields by name -------------------------------------------------------------------------------------------------

struct TextField {
    const char* name;
    LPSTR PrinterRecord::*member;
};
constexpr TextField kTexts[] = {
    {"serverName", &PrinterRecord::pServerName},
    {"printerName", &PrinterRecord::pPrinterName},
    {"shareName", &PrinterRecord::pShareName},
    {"portName", &PrinterRecord::pPortName},
    {"driverName", &PrinterRecord::pDriverName},
    {"comment", &PrinterRecord::pComment},
    {"location", &PrinterRecord::pLocation},
    {"separatorFile", &PrinterRecord::pSepFile},
    {"printProcessor", &PrinterRecord::pPrintProcessor},
    {"datatype", &PrinterRecord::pDatatype},
    {"parameters", &PrinterRecord::pParameters},
};

struct NumberField {
    const char* name;
    DWORD PrinterRecord::*member;
};
constexpr NumberField kNumbers[] = {
    {"attributes", &PrinterRecord::Attributes},
    {"priority", &PrinterRecord::Priority},
    {"defaultPriority", &PrinterRecord::DefaultPriority},
    {"startTime", &PrinterRecord::StartTime},
    {"untilTime", &PrinterRecord::UntilTime},
    {"status", &PrinterRecord::Status},
    {"jobs", &PrinterRecord::cJobs},
    {"averagePagesPerMinute", &PrinterRecord::AveragePPM},
};

// ---- out ------------------------------------------------------------------------------------------------------------

std::string Hex(const void* bytes, std::size_t size) {
    static constexpr char kDigits[] = "0123456789abcdef";
    const auto* at = static_cast<const unsigned char*>(bytes);
    std::string text;
    text.reserve(2 * size);
    for (std::size_t i = 0; i < size; ++i) {
        text += kDigits[at[i] >> 4];
        text += kDigits[at[i] & 15];
    }
    return text;
}

json DevModeJson(const DEVMODEA* mode) {
    return mode == nullptr ? json(nullptr)
                           : json(Hex(mode, std::size_t{mode->dmSize} + std::size_t{mode->dmDriverExtra}));
}

json ValuesJson(const PrinterRecord& record) {
    json values = json::array();
    for (DWORD i = 0; i < record.RegistryEntryCount; ++i) {
        const PrinterRegistryEntry& entry = record.RegistryEntries[i];
        values.push_back(JsonObject({{"key", JsonText(entry.Key)},
                                     {"name", JsonText(entry.ValueName)},
                                     {"type", entry.Type},
                                     {"kind", entry.Kind},
                                     {"data", Hex(entry.Data, entry.Size)}}));
    }
    return values;
}

json ShareJson(const PrinterShareRecord* share) {
    if (share == nullptr) {
        return nullptr;
    }
    return JsonObject({{"name", Utf8(share->NetName)},
                       {"type", share->ShareType},
                       {"flags", share->Flags},
                       {"remark", Utf8(share->Remark)},
                       {"path", Utf8(share->Path)},
                       {"readWritePassword", Utf8(share->ReadWritePassword)},
                       {"readOnlyPassword", Utf8(share->ReadOnlyPassword)},
                       {"notSelectedTimeout", share->DeviceNotSelectedTimeout},
                       {"retryTimeout", share->TransmissionRetryTimeout}});
}

/// Text with NULs behind it and nowhere else: the descriptor of a later system, not the bytes of NT 4.
bool IsDescriptorText(const PrinterSecurityRecord& security) {
    std::string_view text(security.SecurityDescriptor, security.SecurityDescriptorLength);
    while (!text.empty() && text.back() == '\0') {
        text.remove_suffix(1);
    }
    return !text.empty() && text.size() < security.SecurityDescriptorLength &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c < '\x7f'; });
}

json SecurityJson(const PrinterSecurityRecord* security) {
    if (security == nullptr) {
        return nullptr;
    }
    json result = JsonObject({{"publishAction", security->PublishAction}, {"devMode", DevModeJson(security->DevMode)}});
    if (security->SecurityDescriptor != nullptr && IsDescriptorText(*security)) {
        result["descriptor"] = Utf8(security->SecurityDescriptor);
    } else if (security->SecurityDescriptor != nullptr) {
        result["descriptorBytes"] = Hex(security->SecurityDescriptor, security->SecurityDescriptorLength);
    }
    return result;
}

// ---- in -------------------------------------------------------------------------------------------------------------

[[noreturn]] void Refuse(const char* field, const char* wanted) {
    throw ToolError(std::string("the printer's JSON: \"") + field + "\" must be " + wanted);
}

/// A member, or null when the object lacks it.
const json& Member(const json& object, const char* field) {
    static const json kNull;
    const auto found = object.find(field);
    return found == object.end() ? kNull : *found;
}

DWORD Number(const json& object, const char* field) {
    const json& value = Member(object, field);
    if (value.is_null()) {
        return 0;
    }
    if (!value.is_number_unsigned() || value.get<std::uint64_t>() > 0xFFFFFFFFu) {
        Refuse(field, "a number from 0 to 4294967295");
    }
    return value.get<DWORD>();
}

std::string TextOf(const json& value, const char* field) {
    if (!value.is_string()) {
        Refuse(field, "a text");
    }
    std::string text = FromUtf8(value.get<std::string>());
    if (text.find('\0') != std::string::npos) {
        Refuse(field, "a text without NULs");
    }
    return text;
}

/// Copies a text into a field of a fixed size.
template <std::size_t size>
void CopyText(char (&to)[size], const json& object, const char* field) {
    const json& value = Member(object, field);
    const std::string text = value.is_null() ? std::string() : TextOf(value, field);
    if (text.size() >= size) {
        Refuse(field, ("at most " + std::to_string(size - 1) + " characters").c_str());
    }
    std::memcpy(to, text.c_str(), text.size() + 1);
}

int DigitOf(char c) {
    return c >= '0' && c <= '9'   ? c - '0'
           : c >= 'a' && c <= 'f' ? c - 'a' + 10
           : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                  : -1;
}

std::string FromHex(const json& value, const char* field) {
    const std::string text = value.is_string() ? value.get<std::string>() : "?";
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); i += 2) {
        const int high = DigitOf(text[i]);
        const int low = i + 1 < text.size() ? DigitOf(text[i + 1]) : -1;
        if (high < 0 || low < 0) {
            Refuse(field, "pairs of hexadecimal digits");
        }
        bytes += static_cast<char>(high * 16 + low);
    }
    return bytes;
}

void RequireKind(const json& value, json::value_t kind, const char* field, const char* wanted) {
    if (!value.is_null() && value.type() != kind) {
        Refuse(field, wanted);
    }
}

}  // namespace

json PrinterJson(const PrinterRecord& record) {
    json printer;
    for (const TextField& field : kTexts) {
        printer[field.name] = JsonText(record.*field.member);
    }
    for (const NumberField& field : kNumbers) {
        printer[field.name] = record.*field.member;
    }
    printer["devMode"] = DevModeJson(record.pDevMode);
    printer["values"] = ValuesJson(record);
    printer["share"] = ShareJson(record.ShareRecord);
    printer["security"] = SecurityJson(record.SecurityRecord);
    printer["colourProfiles"] = json::array();
    for (DWORD i = 0; i < record.ColorProfileCount; ++i) {
        printer["colourProfiles"].push_back(Utf8(record.ColorProfiles[i]));
    }
    return printer;
}

ImportedPrinter::ImportedPrinter(const json& printer) {
    if (!printer.is_object()) {
        throw ToolError("the printer's JSON must be an object, as `pikel printer export` writes it");
    }
    for (const TextField& field : kTexts) {
        m_record.*field.member = Text(printer, field.name);
    }
    for (const NumberField& field : kNumbers) {
        m_record.*field.member = Number(printer, field.name);
    }
    m_record.pDevMode = DevMode(printer);
    TakeValues(Member(printer, "values"));
    TakeShare(Member(printer, "share"));
    TakeSecurity(Member(printer, "security"));
    TakeProfiles(Member(printer, "colourProfiles"));
}

LPSTR ImportedPrinter::Text(const json& object, const char* field) {
    const json& value = Member(object, field);
    return value.is_null() ? nullptr : m_texts.emplace_back(TextOf(value, field)).data();
}

std::string* ImportedPrinter::Bytes(const json& object, const char* field) {
    const json& value = Member(object, field);
    return value.is_null() ? nullptr : &m_texts.emplace_back(FromHex(value, field));
}

/// A DEVMODE whose own sizes must agree with the bytes given: the spooler goes by them.
LPDEVMODEA ImportedPrinter::DevMode(const json& object) {
    const std::string* bytes = Bytes(object, "devMode");
    if (bytes == nullptr) {
        return nullptr;
    }
    std::vector<DEVMODEA>& room = m_devModes.emplace_back(bytes->size() / sizeof(DEVMODEA) + 1);
    std::memcpy(room.data(), bytes->data(), bytes->size());
    const DEVMODEA& mode = room.front();
    const std::size_t smallest = offsetof(DEVMODEA, dmDriverExtra) + sizeof mode.dmDriverExtra;
    if (bytes->size() < smallest || std::size_t{mode.dmSize} + std::size_t{mode.dmDriverExtra} != bytes->size()) {
        Refuse("devMode", "a whole DEVMODE");
    }
    return room.data();
}

void ImportedPrinter::TakeValues(const json& values) {
    RequireKind(values, json::value_t::array, "values", "a list");
    for (const json& value : values) {
        RequireKind(value, json::value_t::object, "values", "a list of objects");
        PrinterRegistryEntry entry{};
        entry.Key = Text(value, "key");
        entry.ValueName = Text(value, "name");
        entry.Type = Number(value, "type");
        entry.Kind = Number(value, "kind");
        if (std::string* bytes = Bytes(value, "data")) {
            entry.Data = reinterpret_cast<LPBYTE>(bytes->data());
            entry.Size = static_cast<DWORD>(bytes->size());
        }
        m_values.push_back(entry);
    }
    m_record.RegistryEntryCount = static_cast<DWORD>(m_values.size());
    m_record.RegistryEntries = m_values.empty() ? nullptr : m_values.data();
}

void ImportedPrinter::TakeShare(const json& share) {
    RequireKind(share, json::value_t::object, "share", "an object");
    if (share.is_null()) {
        return;
    }
    CopyText(m_share.NetName, share, "name");
    CopyText(m_share.Remark, share, "remark");
    CopyText(m_share.Path, share, "path");
    CopyText(m_share.ReadWritePassword, share, "readWritePassword");
    CopyText(m_share.ReadOnlyPassword, share, "readOnlyPassword");
    m_share.ShareType = static_cast<BYTE>(Number(share, "type"));
    m_share.Flags = static_cast<WORD>(Number(share, "flags"));
    m_share.DeviceNotSelectedTimeout = Number(share, "notSelectedTimeout");
    m_share.TransmissionRetryTimeout = Number(share, "retryTimeout");
    m_record.ShareRecord = &m_share;
}

void ImportedPrinter::TakeSecurity(const json& security) {
    RequireKind(security, json::value_t::object, "security", "an object");
    if (security.is_null()) {
        return;
    }
    m_security.PublishAction = Number(security, "publishAction");
    m_security.DevMode = DevMode(security);
    if (LPSTR text = Text(security, "descriptor")) {
        m_security.SecurityDescriptor = text;
        m_security.SecurityDescriptorLength = static_cast<DWORD>(std::strlen(text) + 1);
    } else if (std::string* bytes = Bytes(security, "descriptorBytes")) {
        m_security.SecurityDescriptor = bytes->data();
        m_security.SecurityDescriptorLength = static_cast<DWORD>(bytes->size());
    }
    m_record.SecurityRecord = &m_security;
}

void ImportedPrinter::TakeProfiles(const json& profiles) {
    RequireKind(profiles, json::value_t::array, "colourProfiles", "a list");
    for (const json& profile : profiles) {
        m_profiles.push_back(m_texts.emplace_back(TextOf(profile, "colourProfiles")).data());
    }
    m_record.ColorProfileCount = static_cast<DWORD>(m_profiles.size());
    m_record.ColorProfiles = m_profiles.empty() ? nullptr : m_profiles.data();
}

}  // namespace pikel::cli
