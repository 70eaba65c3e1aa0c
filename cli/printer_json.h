// A printer's record as JSON and back, for `pikel printer show`, `export` and `import`.
//
// Bytes are texts of hexadecimal digits. Numbers of the level 2 data bear their Windows names in lower camel case.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "frame/pikel.h"
#include "json.h"

namespace pikel::cli {

nlohmann::json PrinterJson(const PrinterRecord& record);

/// A record with the memory behind it.
class ImportedPrinter {
  public:
    /// @param json  as PrinterJson makes it; what is missing is null, 0 or empty. Throws ToolError, which names the
    ///              field, for a wrong type or bytes that are no hexadecimal digits.
    explicit ImportedPrinter(const nlohmann::json& json);
    ImportedPrinter(const ImportedPrinter&) = delete;
    ImportedPrinter& operator=(const ImportedPrinter&) = delete;

    PrinterRecord& Record() { return m_record; }

  private:
    LPSTR Text(const nlohmann::json& object, const char* field);
    std::string* Bytes(const nlohmann::json& object, const char* field);
    LPDEVMODEA DevMode(const nlohmann::json& object);
    void TakeValues(const nlohmann::json& values);
    void TakeShare(const nlohmann::json& share);
    void TakeSecurity(const nlohmann::json& security);
    void TakeProfiles(const nlohmann::json& profiles);

    std::deque<std::string> m_texts;  ///< never moves what it holds
    std::deque<std::vector<DEVMODEA>> m_devModes;
    std::vector<PrinterRegistryEntry> m_values;
    std::vector<LPSTR> m_profiles;
    PrinterShareRecord m_share{};
    PrinterSecurityRecord m_security{};
    PrinterRecord m_record{};
};

}  // namespace pikel::cli
