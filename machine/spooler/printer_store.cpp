// Local printers in the registry.
#include "machine/spooler/printer_store.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "machine/base/machine.h"
#include "machine/base/names.h"
#include "machine/registry/registry.h"
#include "machine/spooler/spooler.h"

namespace pikel::simulated {

namespace {

struct TextValue {
    const char* value;
    std::string Printer::*member;
};
constexpr TextValue kTexts[] = {
    {"Name", &Printer::name},
    {"Share Name", &Printer::shareName},
    {"Port", &Printer::portName},
    {"Printer Driver", &Printer::driverName},
    {"Description", &Printer::comment},
    {"Location", &Printer::location},
    {"Separator File", &Printer::separatorFile},
    {"Print Processor", &Printer::printProcessor},
    {"Datatype", &Printer::datatype},
    {"Parameters", &Printer::parameters},
};

struct NumberValue {
    const char* value;
    DWORD Printer::*member;
};
constexpr NumberValue kNumbers[] = {
    {"Attributes", &Printer::attributes},
    {"Priority", &Printer::priority},
    {"Default Priority", &Printer::defaultPriority},
    {"StartTime", &Printer::startTime},
    {"UntilTime", &Printer::untilTime},
    {"Status", &Printer::status},
    {"dnsTimeout", &Printer::notSelectedTimeout},
    {"txTimeout", &Printer::retryTimeout},
};

struct BytesValue {
    const char* value;
    std::string Printer::*member;
};
constexpr BytesValue kBytes[] = {
    {"Default DevMode", &Printer::devMode},
    {"Security", &Printer::security},
};

}  // namespace

std::string PrinterStore::KeyOf(std::string_view name) {
    std::string key(name);
    std::ranges::replace(key, '\\', ',');
    return PrintKey("Printers\\") + key;
}

Printer PrinterStore::Read(const std::string& key) const {
    const Registry& registry = m_machine.Registry();
    Printer printer;
    for (const TextValue& text : kTexts) {
        printer.*text.member = registry.Text(key, text.value);
    }
    for (const NumberValue& number : kNumbers) {
        printer.*number.member = registry.Number(key, number.value, printer.*number.member);
    }
    for (const BytesValue& bytes : kBytes) {
        const RegistryValue* value = registry.Find(key, bytes.value);
        printer.*bytes.member = value == nullptr ? std::string() : value->data;
    }
    return printer;
}

void PrinterStore::Write(const std::string& key, const Printer& printer) {
    Registry& registry = m_machine.Registry();
    for (const TextValue& text : kTexts) {
        registry.SetText(key, text.value, printer.*text.member);
    }
    for (const NumberValue& number : kNumbers) {
        registry.SetNumber(key, number.value, printer.*number.member);
    }
    for (const BytesValue& bytes : kBytes) {
        if (!(printer.*bytes.member).empty()) {
            registry.SetBytes(key, bytes.value, printer.*bytes.member);
        }
    }
}

std::vector<Printer> PrinterStore::List() const {
    const Registry& registry = m_machine.Registry();
    std::vector<Printer> printers;
    for (const std::string& name : registry.SubKeys(PrintKey("Printers"))) {
        const std::string key = PrintKey("Printers\\") + name;
        if (registry.Find(key, "Name") != nullptr) {
            printers.push_back(Read(key));
        }
    }
    return printers;
}

std::string_view PrinterStore::WithoutThisComputer(std::string_view name) const {
    const std::size_t separator = name.find('\\', 2);
    const bool isOwn = name.starts_with("\\\\") && separator != std::string_view::npos && separator > 2 &&
                       IsThisComputer(m_machine, name.substr(0, separator));
    return isOwn ? name.substr(separator + 1) : name;
}

std::optional<Printer> PrinterStore::Find(std::string_view name) const {
    const std::string_view local = WithoutThisComputer(name);
    const std::string key = KeyOf(local);
    if (local.empty() || m_machine.Registry().Find(key, "Name") == nullptr) {
        return std::nullopt;
    }
    Printer printer = Read(key);
    // A key's commas may stand for backslashes or for themselves.
    return IsSameName(m_machine, printer.name, local) ? std::optional(std::move(printer)) : std::nullopt;
}

std::string PrinterStore::DefaultDevMode(const Printer& printer) const {
    constexpr DWORD kOrientation = 0x1;
    constexpr DWORD kPaperSize = 0x2;
    constexpr DWORD kCopies = 0x100;
    constexpr DWORD kDefaultSource = 0x200;
    constexpr DWORD kPrintQuality = 0x400;
    // The panning fields came with Windows 2000.
    const bool isOld = m_machine.Is9x() || m_machine.Generation() <= Generation::Nt4;
    DEVMODEA mode{};
    const std::size_t length = std::min<std::size_t>(printer.name.size(), CCHDEVICENAME - 1);
    std::memcpy(mode.dmDeviceName, printer.name.data(), length);
    mode.dmSpecVersion = m_machine.Is9x() ? 0x400 : 0x401;
    mode.dmDriverVersion = 1;
    mode.dmSize = static_cast<WORD>(isOld ? offsetof(DEVMODEA, dmPanningWidth) : sizeof mode);
    mode.dmFields = kOrientation | kPaperSize | kCopies | kDefaultSource | kPrintQuality;
    mode.dmOrientation = 1;  // portrait
    mode.dmPaperSize = 9;    // A4
    mode.dmCopies = 1;
    mode.dmDefaultSource = 7;  // automatic
    mode.dmPrintQuality = 600;
    return std::string(reinterpret_cast<const char*>(&mode), mode.dmSize);
}

}  // namespace pikel::simulated
