// AddReg and DelReg of an install section.
#include <algorithm>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "machine/base/machine.h"
#include "machine/base/text.h"
#include "machine/inf/number.h"
#include "machine/registry/handles.h"
#include "machine/registry/registry.h"
#include "machine/setup/install_section.h"

namespace pikel::simulated {

namespace {

// FLG_ADDREG_... and FLG_DELREG_... of setupapi.h. The low bit tells data that are given as bytes.
enum : DWORD {
    kBytes = 0x1,
    kNoClobber = 0x2,
    kDeleteValue = 0x4,
    kAppend = 0x8,
    kKeyOnly = 0x10,
    kOverwriteOnly = 0x20,
    kKeyOnlyCommon = 0x2000,
    kTypeMask = 0xffff0000 | kBytes,
    kMultiText = 0x10000,
    kExpandText = 0x20000,
    kNumber = 0x10000 | kBytes,
    kNone = 0x20000 | kBytes,
    kDeleteText = 0x18002,  ///< takes texts out of a REG_MULTI_SZ
};

/// One line of a list section: root, sub-key, value, flags, data.
struct RegistryLine {
    std::string key;  ///< as Registry takes it
    bool isRoot = false;
    std::string value;
    DWORD flags = 0;
    std::vector<std::string> data;
};

class RegistrySection {
  public:
    RegistrySection(OpenInf& inf, std::optional<std::string> relativeKey)
        : m_inf(inf), m_registry(inf.machine.Registry()), m_relativeKey(std::move(relativeKey)) {}

    DWORD Apply(UINT section) {
        DWORD code = ForEachLine(section, "DelReg", &RegistrySection::Remove);
        if (code == ERROR_SUCCESS) {
            code = ForEachLine(section, "AddReg", &RegistrySection::Add);
        }
        return code;
    }

  private:
    using Work = void (RegistrySection::*)(const RegistryLine&);

    /// Goes through the list sections that a key names. A key of the registry without rights ends it.
    DWORD ForEachLine(UINT section, std::string_view directive, Work work) {
        InfFile& file = *m_inf.file;
        for (UINT line = 0; line < file.LineCount(section); ++line) {
            const std::optional<std::string_view> key = file.Field(section, line, 0);
            if (!key.has_value() || !EqualNoCase(*key, directive)) {
                continue;
            }
            for (const std::string& list : file.Fields(section, line)) {
                const std::optional<UINT> number = file.FindSection(list);
                const DWORD code = number.has_value() ? ForEachLineOf(*number, work) : DWORD{ERROR_SUCCESS};
                if (code != ERROR_SUCCESS) {
                    return code;
                }
            }
        }
        return ERROR_SUCCESS;
    }

    DWORD ForEachLineOf(UINT list, Work work) {
        for (UINT number = 0; number < m_inf.file->LineCount(list); ++number) {
            const std::optional<RegistryLine> line = Read(m_inf.file->Fields(list, number));
            if (!line.has_value()) {
                continue;
            }
            const DWORD code = m_inf.machine.CheckAccess(line->key, KEY_WRITE);
            if (code != ERROR_SUCCESS) {
                return code;
            }
            (this->*work)(*line);
        }
        return ERROR_SUCCESS;
    }

    std::optional<RegistryLine> Read(const std::vector<std::string>& fields) const {
        const std::optional<std::string> root = Root(fields[0]);
        if (!root.has_value()) {
            return std::nullopt;
        }
        RegistryLine line;
        line.isRoot = fields.size() < 2 || fields[1].empty();
        line.key = line.isRoot ? *root : *root + "\\" + fields[1];
        line.value = fields.size() > 2 ? fields[2] : std::string();
        line.flags = fields.size() > 3 ? InfNumber(fields[3]) : 0;
        if (fields.size() > 4) {
            line.data.assign(fields.begin() + 4, fields.end());
        }
        return line;
    }

    std::optional<std::string> Root(const std::string& name) const {
        if (EqualNoCase(name, "HKR")) {
            return m_relativeKey;
        }
        for (const char* root : {"HKCR", "HKCU", "HKLM", "HKU"}) {
            if (EqualNoCase(name, root)) {
                return root;
            }
        }
        return std::nullopt;
    }

    // ---- AddReg ----

    void Add(const RegistryLine& line) {
        if ((line.flags & kDeleteValue) != 0) {
            m_registry.DeleteValue(line.key, line.value);
            return;
        }
        const RegistryValue* present = m_registry.Find(line.key, line.value);
        if ((line.flags & kOverwriteOnly) != 0 && present == nullptr) {
            return;
        }
        const bool isKeyAlone = (line.flags & (kKeyOnly | kKeyOnlyCommon)) != 0;
        if (isKeyAlone || (line.value.empty() && line.data.empty())) {
            m_registry.CreateKey(line.key);
        } else if (present == nullptr || (line.flags & kNoClobber) == 0) {
            SetValue(line, present);
        }
    }

    void SetValue(const RegistryLine& line, const RegistryValue* present) {
        switch (line.flags & kTypeMask) {
            case kMultiText:
                SetTexts(line, present);
                return;
            case kExpandText:
                SetText(line, REG_EXPAND_SZ);
                return;
            case kNumber:
                SetNumber(line);
                return;
            case kNone:
                m_registry.Set(line.key, line.value, REG_NONE, Bytes(line));
                return;
            case kBytes:
                m_registry.Set(line.key, line.value, REG_BINARY, Bytes(line));
                return;
            default:
                break;
        }
        if ((line.flags & kBytes) != 0) {
            m_registry.Set(line.key, line.value, line.flags >> 16, Bytes(line));
        } else {
            SetText(line, REG_SZ);
        }
    }

    void SetText(const RegistryLine& line, DWORD type) {
        const std::string text = line.data.empty() ? std::string() : line.data.front();
        m_registry.Set(line.key, line.value, type, std::string_view(text.c_str(), text.size() + 1));
    }

    void SetNumber(const RegistryLine& line) {
        if (line.data.size() > 1) {
            m_registry.Set(line.key, line.value, REG_DWORD, Bytes(line));  // the lowest byte in front
        } else {
            m_registry.SetNumber(line.key, line.value, line.data.empty() ? 0 : InfNumber(line.data.front()));
        }
    }

    /// An empty text ends the list. With the append flag the texts go behind those that are there, each once.
    void SetTexts(const RegistryLine& line, const RegistryValue* present) {
        std::vector<std::string> texts;
        if ((line.flags & kAppend) != 0 && present != nullptr) {
            if (present->type != REG_MULTI_SZ) {
                return;
            }
            texts = m_registry.Texts(line.key, line.value);
        }
        for (const std::string& text : line.data) {
            if (text.empty()) {
                break;
            }
            if ((line.flags & kAppend) == 0 || !Contains(texts, text)) {
                texts.push_back(text);
            }
        }
        m_registry.SetTexts(line.key, line.value, texts);
    }

    bool Contains(const std::vector<std::string>& texts, const std::string& text) const {
        const UINT codePage = m_inf.machine.System().codePage;
        return std::ranges::any_of(texts,
                                   [&](const std::string& other) { return CompareNoCase(codePage, other, text) == 0; });
    }

    static std::string Bytes(const RegistryLine& line) {
        std::string bytes;
        for (const std::string& field : line.data) {
            bytes += InfByte(field);
        }
        return bytes;
    }

    // ---- DelReg ----

    void Remove(const RegistryLine& line) {
        if ((line.flags & kDeleteText) == kDeleteText) {
            RemoveTexts(line);
        } else if (!line.value.empty() && (line.flags & kKeyOnlyCommon) == 0) {
            m_registry.DeleteValue(line.key, line.value);
        } else if (!line.isRoot) {
            m_registry.DeleteKey(line.key);
        }
    }

    void RemoveTexts(const RegistryLine& line) {
        const RegistryValue* present = m_registry.Find(line.key, line.value);
        if (present == nullptr || present->type != REG_MULTI_SZ) {
            return;
        }
        std::vector<std::string> texts = m_registry.Texts(line.key, line.value);
        std::erase_if(texts, [&](const std::string& text) { return Contains(line.data, text); });
        m_registry.SetTexts(line.key, line.value, texts);
    }

    OpenInf& m_inf;
    Registry& m_registry;
    std::optional<std::string> m_relativeKey;
};

}  // namespace

DWORD ApplyRegistry(OpenInf& inf, const char* section, HKEY relativeKey) {
    std::optional<std::string> relativePath;
    if (relativeKey != nullptr) {
        const DWORD code = PathOfKey(relativeKey, relativePath.emplace());
        if (code != ERROR_SUCCESS) {
            return code;
        }
    }
    const std::optional<UINT> number = inf.file->FindSection(section);
    if (!number.has_value()) {
        return ERROR_SUCCESS;
    }
    const DWORD code = RegistrySection(inf, std::move(relativePath)).Apply(*number);
    const DWORD written = inf.machine.TryCommit();
    return code != ERROR_SUCCESS ? code : written;
}

}  // namespace pikel::simulated
