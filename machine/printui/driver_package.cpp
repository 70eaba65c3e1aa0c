// A printer driver's package as Windows' own installation reads it.
#include "machine/printui/driver_package.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <compare>

#include "machine/base/machine.h"
#include "machine/base/text.h"
#include "machine/inf/number.h"

namespace pikel::simulated {

namespace {

std::string FieldOr(const std::vector<std::string>& fields, std::size_t index) {
    return index < fields.size() ? fields[index] : std::string();
}

// ---- forms of a section ---------------------------------------------------------------------------------------------

/// "x86", "amd64" or "ia64", as forms name the processor of an environment; empty for that of the 9x family.
std::string_view ProcessorOf(const Environment& environment) {
    if (EqualNoCase(environment.name, "Windows x64")) {
        return "amd64";
    }
    if (EqualNoCase(environment.name, "Windows IA64")) {
        return "ia64";
    }
    return EqualNoCase(environment.name, "Windows NT x86") ? "x86" : "";
}

/// The version of a system for whose drivers forms are chosen. The 64-bit systems of other processors than the
/// machine's begin with 5.1 and 5.2.
std::pair<DWORD, DWORD> SystemVersion(const Machine& machine, std::string_view processor) {
    const std::pair<DWORD, DWORD> version(machine.System().major, machine.System().minor);
    if (processor == "amd64") {
        return std::max(version, std::pair<DWORD, DWORD>(5, 2));
    }
    return processor == "ia64" ? std::max(version, std::pair<DWORD, DWORD>(5, 1)) : version;
}

/// One form of a section: how near it is to the system, or nothing when it isn't for it.
struct Nearness {
    bool namesProcessor = false;
    DWORD major = 0;
    DWORD minor = 0;
    bool namesProduct = false;
    bool namesSuite = false;

    auto operator<=>(const Nearness&) const = default;
};

/// Takes "NTamd64.5.2.1.0x100" apart and holds it against the system.
std::optional<Nearness> Weigh(const Machine& machine, std::string_view form, std::string_view processor) {
    std::array<std::string, 5> parts;  // NT with the processor, major, minor, product type, suite
    for (std::string& part : parts) {
        const std::size_t dot = form.find('.');
        part = form.substr(0, dot);
        form.remove_prefix(dot == std::string_view::npos ? form.size() : dot + 1);
    }
    if (!form.empty() || parts[0].size() < 2 || !EqualNoCase(std::string_view(parts[0]).substr(0, 2), "NT")) {
        return std::nullopt;
    }
    const std::string_view named = std::string_view(parts[0]).substr(2);
    if (!named.empty() && !EqualNoCase(named, processor)) {
        return std::nullopt;
    }
    const DWORD productType = InfNumber(parts[3]);
    const DWORD suite = InfNumber(parts[4]);
    const Nearness nearness{!named.empty(), InfNumber(parts[1]), InfNumber(parts[2]), productType != 0, suite != 0};
    const bool isTooNew = std::pair(nearness.major, nearness.minor) > SystemVersion(machine, processor);
    const bool isOtherProduct = (productType != 0 && productType != machine.System().productType) ||
                                (machine.System().suiteMask & suite) != suite;
    return isTooNew || isOtherProduct ? std::nullopt : std::optional(nearness);
}

/// The form of an install section that the INF has for an environment.
std::string InstallSectionFor(OpenInf& inf, const DriverTarget& target, const std::string& section) {
    const std::string_view processor = ProcessorOf(target.environment);
    if (!processor.empty()) {
        for (const std::string& form : {section + ".NT" + std::string(processor), section + ".NT"}) {
            if (inf.file->FindSection(form).has_value()) {
                return form;
            }
        }
    }
    return section;
}

// ---- values ---------------------------------------------------------------------------------------------------------

std::optional<unsigned> WholeNumber(std::string_view text) {
    unsigned number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

/// Midnight of a date "month/day/year", or "month-day-year".
FILETIME DateOf(const std::string& text) {
    std::array<unsigned, 3> parts{};
    std::size_t begin = 0;
    for (unsigned& part : parts) {
        const std::size_t end = std::min(text.find_first_of("/-", begin), text.size());
        part = WholeNumber(std::string_view(text).substr(std::min(begin, text.size()), end - begin)).value_or(0);
        begin = end + 1;
    }
    const auto [month, day, year] = parts;
    if (month < 1 || month > 12 || day < 1 || day > 31 || year < 1601 || year > 30827) {
        return {};
    }
    // Days since the first of March of the year 0, whose leap day is the last of a year; less those up to 1601.
    const DWORDLONG years = year - (month <= 2 ? 1 : 0);
    const DWORDLONG dayOfYear = (153 * ((month + 9) % 12) + 2) / 5 + day - 1;
    const DWORDLONG days = years * 365 + years / 4 - years / 100 + years / 400 + dayOfYear - 584694;
    const DWORDLONG ticks = days * 24 * 3600 * 10'000'000;
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

/// "5.2.3790.1" as four words, the first one on top.
DWORDLONG VersionOf(std::string_view text) {
    DWORDLONG version = 0;
    for (int i = 0; i < 4; ++i) {
        const std::size_t dot = text.find('.');
        version = version << 16 | (WholeNumber(text.substr(0, dot)).value_or(0) & 0xffff);
        text.remove_prefix(dot == std::string_view::npos ? text.size() : dot + 1);
    }
    return version;
}

/// Entries of an install section, which may lie in the section that DataSection names.
class Entries {
  public:
    Entries(OpenInf& inf, std::string section) : m_inf(inf), m_sections{std::move(section)} {
        if (const std::vector<std::string> fields = Fields("DataSection"); !fields.empty()) {
            m_sections.push_back(fields[0]);
        }
    }

    /// All values of the first line with a key; none when there is no such line.
    std::vector<std::string> Fields(std::string_view key) const {
        for (const std::string& name : m_sections) {
            const std::optional<UINT> section = m_inf.file->FindSection(name);
            const std::optional<UINT> line = section ? m_inf.file->FindLine(*section, key) : std::nullopt;
            if (line) {
                return m_inf.file->Fields(*section, *line);
            }
        }
        return {};
    }
    std::string Text(std::string_view key, std::string_view fallback = {}) const {
        const std::vector<std::string> fields = Fields(key);
        return fields.empty() || fields[0].empty() ? std::string(fallback) : fields[0];
    }

  private:
    OpenInf& m_inf;
    std::vector<std::string> m_sections;
};

/// The monitor's name and DLL are two values, or one with a comma in it.
void TakeMonitor(std::vector<std::string> fields, DriverDescription* description) {
    if (fields.size() == 1) {
        const std::size_t comma = fields[0].rfind(',');
        if (comma != std::string::npos) {
            fields.push_back(fields[0].substr(comma + 1));
            fields[0].resize(comma);
        }
    }
    description->driver.monitorName = FieldOr(fields, 0);
    description->monitorFile = FieldOr(fields, 1);
}

}  // namespace

std::string ModelsSectionFor(const Machine& machine, const DriverTarget& target,
                             const std::vector<std::string>& fields) {
    std::string section = FieldOr(fields, 0);
    const std::string_view processor = ProcessorOf(target.environment);
    const bool hasForms = machine.Generation() >= Generation::Xp && target.version >= 3 && !processor.empty();
    std::optional<Nearness> best;
    std::string chosen;
    for (std::size_t i = 1; hasForms && i < fields.size(); ++i) {
        const std::optional<Nearness> nearness = Weigh(machine, fields[i], processor);
        if (nearness && (!best || *nearness > *best)) {
            best = nearness;
            chosen = fields[i];
        }
    }
    return best ? section + "." + chosen : section;
}

std::optional<ModelLine> FindModel(OpenInf& inf, const DriverTarget& target, std::string_view name) {
    const std::optional<UINT> manufacturers = inf.file->FindSection("Manufacturer");
    for (UINT line = 0; manufacturers && line < inf.file->LineCount(*manufacturers); ++line) {
        const std::string manufacturer(inf.file->Field(*manufacturers, line, 0).value_or(""));
        std::vector<std::string> fields = inf.file->Fields(*manufacturers, line);
        if (fields.empty()) {
            fields.push_back(manufacturer);  // a line without an equals sign is its own section's name
        }
        const std::optional<UINT> models = inf.file->FindSection(ModelsSectionFor(inf.machine, target, fields));
        const std::optional<UINT> found = models ? inf.file->FindLine(*models, name) : std::nullopt;
        if (found) {
            const std::string spelled(inf.file->Field(*models, *found, 0).value_or(name));
            const std::vector<std::string> model = inf.file->Fields(*models, *found);
            const std::string section = FieldOr(model, 0);
            return ModelLine{manufacturer, spelled, section, InstallSectionFor(inf, target, section),
                             FieldOr(model, 1)};
        }
    }
    return std::nullopt;
}

DriverDescription DescribeDriver(OpenInf& inf, const DriverTarget& target, const ModelLine& model) {
    const Entries entries(inf, model.installSection);
    DriverDescription description;
    Driver& driver = description.driver;
    driver.name = model.name;
    driver.environment = target.environment.name;
    driver.version = target.version;
    // A section that names no file is named like the file.
    driver.driverFile = entries.Text("DriverFile", model.section);
    driver.dataFile = entries.Text("DataFile", model.section);
    driver.configFile = entries.Text("ConfigFile", driver.driverFile);
    driver.helpFile = entries.Text("HelpFile");
    driver.defaultDatatype = entries.Text("DefaultDataType");
    TakeMonitor(entries.Fields("LanguageMonitor"), &description);

    driver.manufacturer = model.manufacturer;
    driver.hardwareId = model.hardwareId;
    driver.provider = inf.file->Value("Version", "Provider").value_or("");
    driver.oemUrl = inf.file->Value("OEM URLS", model.manufacturer).value_or("");
    const std::optional<UINT> section = inf.file->FindSection("Version");
    const std::optional<UINT> line = section ? inf.file->FindLine(*section, "DriverVer") : std::nullopt;
    if (line) {
        const std::vector<std::string> fields = inf.file->Fields(*section, *line);
        driver.date = DateOf(FieldOr(fields, 0));
        driver.driverVersion = VersionOf(FieldOr(fields, 1));
    }
    return description;
}

}  // namespace pikel::simulated
