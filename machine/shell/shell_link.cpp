// Shell links of the machine.
#include "machine/shell/shell_link.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <memory>

#include "machine/shell/result.h"
#include "machine/base/text.h"
#include "machine/files/files.h"

namespace pikel::simulated {

namespace {

constexpr char kHeader[] = "[Shell Link]";
constexpr char kLineEnd[] = "\r\n";
constexpr HRESULT kNotImplemented = static_cast<HRESULT>(0x80004001);
constexpr HRESULT kPathNotFound = static_cast<HRESULT>(0x80030003);
constexpr std::size_t kLongestPath = 259;

void AddLine(std::string* text, std::string_view name, std::string value, UINT codePage) {
    if (value.empty()) {
        return;
    }
    std::ranges::replace_if(
        value, [](char character) { return static_cast<unsigned char>(character) < ' '; }, ' ');
    *text += std::string(name) + "=" + ToUtf8(codePage, value) + kLineEnd;
}

void TakeIcon(const std::string& value, LinkSettings* settings) {
    const std::size_t comma = value.rfind(',');
    if (comma != std::string::npos) {
        std::from_chars(value.data() + comma + 1, value.data() + value.size(), settings->iconIndex);
    }
    settings->iconPath = value.substr(0, comma);
}

void TakeLine(std::string_view name, const std::string& value, LinkSettings* settings) {
    if (name == "Target") {
        settings->target = value;
    } else if (name == "Working Directory") {
        settings->workingDirectory = value;
    } else if (name == "Arguments") {
        settings->arguments = value;
    } else if (name == "Description") {
        settings->description = value;
    } else if (name == "Icon") {
        TakeIcon(value, settings);
    }
}

HRESULT PutText(const std::string& text, LPSTR buffer, int size) {
    if (buffer == nullptr || size <= 0) {
        return E_INVALIDARG;
    }
    const std::size_t length = std::min(text.size(), static_cast<std::size_t>(size - 1));
    std::memcpy(buffer, text.data(), length);
    buffer[length] = '\0';
    return S_OK;
}

HRESULT TakeText(LPCSTR text, std::string* target) {
    if (text == nullptr) {
        return E_INVALIDARG;
    }
    *target = text;
    return S_OK;
}

/// What a machine counts while a link lives.
struct LinkMark {};

/// One object with two interfaces, which share its reference count.
class ShellLink final : public IShellLinkA, public IPersistFile {
  public:
    explicit ShellLink(Machine& machine)
        : m_machine(machine),
          m_handle(machine.Handles().Open(HandleKind::ComObject, std::make_shared<LinkMark>(), "shell link")) {}
    ShellLink(const ShellLink&) = delete;
    ShellLink& operator=(const ShellLink&) = delete;

    // ---- IUnknown ----

    HRESULT WINAPI QueryInterface(REFIID riid, void** ppvObject) override {
        if (ppvObject == nullptr) {
            return E_INVALIDARG;
        }
        *ppvObject = nullptr;
        if (riid == IID_IUnknown || riid == IID_IShellLinkA) {
            *ppvObject = static_cast<IShellLinkA*>(this);
        } else if (riid == IID_IPersistFile) {
            *ppvObject = static_cast<IPersistFile*>(this);
        } else {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    ULONG WINAPI AddRef() override { return ++m_references; }
    ULONG WINAPI Release() override {
        const ULONG left = --m_references;
        if (left == 0) {
            delete this;
        }
        return left;
    }

    // ---- IShellLinkA ----

    HRESULT WINAPI GetPath(LPSTR pszFile, int cch, WIN32_FIND_DATAA* pfd, DWORD) override {
        if (pfd != nullptr) {
            *pfd = {};
        }
        return PutText(m_settings.target, pszFile, cch);
    }
    HRESULT WINAPI GetIDList(void**) override { return kNotImplemented; }
    HRESULT WINAPI SetIDList(const void*) override { return kNotImplemented; }
    HRESULT WINAPI GetDescription(LPSTR pszName, int cch) override {
        return PutText(m_settings.description, pszName, cch);
    }
    HRESULT WINAPI SetDescription(LPCSTR pszName) override { return TakeText(pszName, &m_settings.description); }
    HRESULT WINAPI GetWorkingDirectory(LPSTR pszDir, int cch) override {
        return PutText(m_settings.workingDirectory, pszDir, cch);
    }
    HRESULT WINAPI SetWorkingDirectory(LPCSTR pszDir) override {
        return TakeText(pszDir, &m_settings.workingDirectory);
    }
    HRESULT WINAPI GetArguments(LPSTR pszArgs, int cch) override { return PutText(m_settings.arguments, pszArgs, cch); }
    HRESULT WINAPI SetArguments(LPCSTR pszArgs) override { return TakeText(pszArgs, &m_settings.arguments); }
    HRESULT WINAPI GetHotkey(WORD* pwHotkey) override {
        *pwHotkey = m_settings.hotkey;
        return S_OK;
    }
    HRESULT WINAPI SetHotkey(WORD wHotkey) override {
        m_settings.hotkey = wHotkey;
        return S_OK;
    }
    HRESULT WINAPI GetShowCmd(int* piShowCmd) override {
        *piShowCmd = m_settings.showCommand;
        return S_OK;
    }
    HRESULT WINAPI SetShowCmd(int iShowCmd) override {
        m_settings.showCommand = iShowCmd;
        return S_OK;
    }
    HRESULT WINAPI GetIconLocation(LPSTR pszIconPath, int cch, int* piIcon) override {
        *piIcon = m_settings.iconIndex;
        return PutText(m_settings.iconPath, pszIconPath, cch);
    }
    HRESULT WINAPI SetIconLocation(LPCSTR pszIconPath, int iIcon) override {
        m_settings.iconIndex = iIcon;
        return TakeText(pszIconPath, &m_settings.iconPath);
    }
    HRESULT WINAPI SetRelativePath(LPCSTR, DWORD) override { return kNotImplemented; }
    HRESULT WINAPI Resolve(HWND, DWORD) override { return S_OK; }
    HRESULT WINAPI SetPath(LPCSTR pszFile) override {
        if (pszFile != nullptr && std::strlen(pszFile) > kLongestPath) {
            return E_INVALIDARG;
        }
        return TakeText(pszFile, &m_settings.target);
    }

    // ---- IPersistFile ----

    HRESULT WINAPI GetClassID(CLSID* pClassID) override {
        *pClassID = CLSID_ShellLink;
        return S_OK;
    }
    HRESULT WINAPI IsDirty() override { return S_OK; }
    HRESULT WINAPI Load(LPCWSTR pszFileName, DWORD) override {
        if (pszFileName == nullptr) {
            return E_INVALIDARG;
        }
        const std::string path = FromWide(CodePage(), pszFileName);
        const std::optional<std::string> text = m_machine.Files().Read(path);
        if (!text) {
            return ResultOf(ERROR_FILE_NOT_FOUND);
        }
        const std::optional<LinkSettings> settings = ParseLink(*text, CodePage());
        if (!settings) {
            return E_FAIL;
        }
        m_settings = *settings;
        return S_OK;
    }
    HRESULT WINAPI Save(LPCWSTR pszFileName, BOOL) override {
        if (pszFileName == nullptr || *pszFileName == 0) {
            return E_INVALIDARG;
        }
        const std::string path = FromWide(CodePage(), pszFileName);
        // A file is written with its folders; a link is not.
        if (!m_machine.Files().IsDirectory(FolderOf(path, CodePage()))) {
            return kPathNotFound;
        }
        if (m_machine.Files().IsDirectory(path)) {
            return ResultOf(ERROR_ACCESS_DENIED);
        }
        return ResultOf(m_machine.Files().Write(path, LinkText(m_settings, CodePage())));
    }
    HRESULT WINAPI SaveCompleted(LPCWSTR) override { return S_OK; }
    HRESULT WINAPI GetCurFile(LPWSTR* ppszFileName) override {
        *ppszFileName = nullptr;
        return kNotImplemented;
    }

  private:
    ~ShellLink() { m_machine.Handles().Close(HandleKind::ComObject, m_handle); }
    UINT CodePage() const { return m_machine.System().codePage; }

    Machine& m_machine;
    void* m_handle;
    LinkSettings m_settings;
    ULONG m_references = 1;
};

}  // namespace

std::string LinkText(const LinkSettings& settings, UINT codePage) {
    std::string text = std::string(kHeader) + kLineEnd;
    AddLine(&text, "Target", settings.target, codePage);
    AddLine(&text, "Working Directory", settings.workingDirectory, codePage);
    AddLine(&text, "Arguments", settings.arguments, codePage);
    AddLine(&text, "Description", settings.description, codePage);
    if (!settings.iconPath.empty()) {
        AddLine(&text, "Icon", settings.iconPath + "," + std::to_string(settings.iconIndex), codePage);
    }
    return text;
}

std::optional<LinkSettings> ParseLink(std::string_view text, UINT codePage) {
    LinkSettings settings;
    bool isFirst = true;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        if (isFirst && line != kHeader) {
            return std::nullopt;
        }
        const std::size_t equals = line.find('=');
        if (!isFirst && equals != std::string_view::npos) {
            TakeLine(line.substr(0, equals), FromUtf8(codePage, line.substr(equals + 1)), &settings);
        }
        isFirst = false;
    }
    return isFirst ? std::nullopt : std::optional(settings);
}

IShellLinkA* MakeShellLink(Machine& machine) {
    return new ShellLink(machine);
}

}  // namespace pikel::simulated
