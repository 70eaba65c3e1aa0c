// Diagnostic log: its configuration, its lines, and the three places that they go to.
#include "frame/log.h"

#include <cstdarg>
#include <cstdio>
#include <string_view>

#include "frame/os_identity.h"
#include "frame/path.h"
#include "frame/text.h"
#include "platform/owned.h"

namespace pikel {

LogSettings g_logSettings;

namespace {

constexpr DWORD kModulePathSize = 334;     // bytes, NUL included
constexpr DWORD kValueSize = 64;           // a section's name or a switch
constexpr DWORD kLogFileValueSize = 69;    // a path of 68 characters
constexpr std::size_t kTextSize = 2048;    // a formatted text, NUL included
constexpr std::size_t kLineLength = 1024;  // a whole line with its CR LF

constexpr char kIniName[] = "UtilDbg.ini";
constexpr char kLogName[] = "UtilDbg.txt";
constexpr char kMapSection[] = "DEBUG";
constexpr char kViewerTitle[] = "WIWatch";
constexpr char kLineEnd[] = "\r\n";
constexpr std::size_t kLineEndLength = sizeof(kLineEnd) - 1;
constexpr DWORD kNeutralLanguage = 0x400;

/// Gives the caller's last error back, whatever happened in between.
class LastErrorKeeper {
  public:
    LastErrorKeeper() : m_dwLastError(Platform().GetLastError()) {}
    ~LastErrorKeeper() { Platform().SetLastError(m_dwLastError); }
    LastErrorKeeper(const LastErrorKeeper&) = delete;
    LastErrorKeeper& operator=(const LastErrorKeeper&) = delete;

  private:
    DWORD m_dwLastError;
};

/// Does a piece of the log's work: the last error stays and no exception leaves.
template <class Work>
void Silently(Work work) {
    const LastErrorKeeper keeper;
    try {
        work();
    } catch (...) {
        // The log reports nothing to anyone; the line is lost.
    }
}

// ---- sinks ----------------------------------------------------------------------------------------------------------

/// One line on its way out.
struct LogLine {
    std::string_view message;  ///< without stamp and line break; NUL terminated
    std::string_view stamped;  ///< the whole line with CR LF; NUL terminated
};

/// Appends the line. The file is open for the length of one line only.
void AppendToFile(const LogLine& line) {
    if (g_logSettings.logFilePath.empty()) {
        return;
    }
    const FileHandle file(Platform().CreateFileA(g_logSettings.logFilePath.c_str(), GENERIC_READ | GENERIC_WRITE, 0,
                                                 nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) {
        return;
    }
    // All ones is also the low half of a valid position; the last error tells the two apart.
    LONG lHighPosition = 0;
    Platform().SetLastError(ERROR_SUCCESS);
    if (Platform().SetFilePointer(file.Get(), 0, &lHighPosition, FILE_END) == INVALID_SET_FILE_POINTER &&
        Platform().GetLastError() != ERROR_SUCCESS) {
        return;  // a write now would go over the lines at the file's beginning
    }
    DWORD dwWritten = 0;
    Platform().WriteFile(file.Get(), line.stamped.data(), static_cast<DWORD>(line.stamped.size()), &dwWritten, nullptr);
}

void SendToDebugger(const LogLine& line) {
    Platform().OutputDebugStringA(line.message.data());
}

/// Hands the line to the viewer's window, where one is open, and waits until it has taken it.
void SendToViewer(const LogLine& line) {
    const HWND hViewer = Platform().FindWindowA(nullptr, kViewerTitle);
    if (hViewer != nullptr) {
        Platform().SendMessageA(hViewer, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(line.stamped.data()));
    }
}

struct LogSink {
    bool LogSettings::*pfIsOn;
    void (*pfnWrite)(const LogLine& line);
};

constexpr LogSink kSinks[] = {
    {&LogSettings::logToFile, AppendToFile},
    {&LogSettings::logToDebugger, SendToDebugger},
    {&LogSettings::logToDebugger, SendToViewer},
};

// ---- lines ----------------------------------------------------------------------------------------------------------

/// Formats into a buffer of size bytes. What doesn't fit is cut, and a NUL always ends it.
void FormatCut(char* pBuffer, std::size_t size, const char* format, std::va_list arguments) {
    pBuffer[0] = '\0';
    std::vsnprintf(pBuffer, size, format, arguments);
    pBuffer[size - 1] = '\0';
}

template <std::size_t Size>
[[gnu::format(printf, 2, 3)]] void FormatCut(char (&buffer)[Size], const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    FormatCut(buffer, Size, format, arguments);
    va_end(arguments);
}

/// "--- Date:MM/DD/YY , Time:HH:MM:SS ---", local time.
std::string Stamp() {
    SYSTEMTIME time = {};
    Platform().GetLocalTime(&time);
    char szDate[24];
    char szTime[24];
    char szStamp[80];
    FormatCut(szDate, "%02d/%02d/%02d", time.wMonth, time.wDay, time.wYear % 100);
    FormatCut(szTime, "%02d:%02d:%02d", time.wHour, time.wMinute, time.wSecond);
    FormatCut(szStamp, "--- Date:%s , Time:%s ---", szDate, szTime);
    return szStamp;
}

/// Stamp, message and CR LF. A message that is too long for the line is cut; CR LF stays.
std::string StampedLine(LPCSTR lpszMessage) {
    char szLine[kLineLength - kLineEndLength + 1];
    FormatCut(szLine, "[%s]  %s", Stamp().c_str(), lpszMessage);
    return std::string(szLine) + kLineEnd;
}

/// Writes an error's text with its place in the source. A code that the system has no text for writes nothing.
void WriteErrorText(DWORD dwCode, LPCSTR lpszSource, DWORD dwLine) {
    LPSTR lpszMessage = nullptr;
    const DWORD dwLength = Platform().FormatMessageA(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_SYSTEM, nullptr, dwCode,
        kNeutralLanguage, reinterpret_cast<LPSTR>(&lpszMessage), 0, nullptr);
    const LocalBlock message(lpszMessage);
    if (dwLength == 0 || !message) {
        return;
    }
    const PathParts source = SplitPath(lpszSource == nullptr ? "" : lpszSource);
    char szText[kTextSize];
    // The system's text ends in its own line break, which stays.
    FormatCut(szText, "***** Error!!! %s [%s%s:%d] *****", lpszMessage, source.strName.c_str(),
              source.strExtension.c_str(), static_cast<int>(dwLine));
    WriteLogText(szText, nullptr, -1);
}

// ---- configuration --------------------------------------------------------------------------------------------------

/// Text of a key, cut to what a buffer of dwSize bytes holds; empty when it is absent.
template <DWORD dwSize = kValueSize>
std::string ReadIniText(const std::string& strIni, LPCSTR lpszSection, LPCSTR lpszKey) {
    char szValue[dwSize] = {};
    Platform().GetPrivateProfileStringA(lpszSection, lpszKey, "", szValue, dwSize, strIni.c_str());
    szValue[dwSize - 1] = '\0';
    return szValue;
}

bool IsSwitchedOn(const std::string& strIni, const std::string& strSection, LPCSTR lpszKey) {
    return EqualAsciiNoCase(ReadIniText(strIni, strSection.c_str(), lpszKey), "ON");
}

bool FileExists(const std::string& strPath) {
    WIN32_FIND_DATAA data;
    return static_cast<bool>(FindHandle(Platform().FindFirstFileA(strPath.c_str(), &data)));
}

/// The parts of this module's path; all empty when it can't be read.
PathParts ReadModuleParts() {
    char szModule[kModulePathSize] = {};
    const DWORD dwLength = Platform().GetModuleFileNameA(GetKeptModule(), szModule, kModulePathSize);
    if (dwLength == 0 || dwLength >= kModulePathSize) {
        return {};
    }
    return SplitPath(szModule);
}

/// Name of the section that configures a module, empty for none.
std::string FindModuleSection(const std::string& strIni, const std::string& strModuleKey) {
    std::string strSection;
    if (!strModuleKey.empty()) {
        strSection = ReadIniText(strIni, kMapSection, strModuleKey.c_str());
    }
    return strSection.empty() ? ReadIniText(strIni, kMapSection, "DEFAULT") : strSection;
}

void ReadFileSettings(const std::string& strIni, const std::string& strSection, const std::string& strDefaultFolder) {
    if (!IsSwitchedOn(strIni, strSection, "LOG")) {
        return;
    }
    g_logSettings.logToFile = true;
    g_logSettings.logFilePath = ReadIniText<kLogFileValueSize>(strIni, strSection.c_str(), "LOGFILE");
    if (g_logSettings.logFilePath.empty()) {
        g_logSettings.logFilePath = strDefaultFolder + kLogName;
    }
}

void ReadSettings(LPCSTR lpszIniFile) {
    const PathParts module = ReadModuleParts();
    const std::string strModuleKey = module.strName + module.strExtension;
    if (lpszIniFile == nullptr && strModuleKey.empty()) {
        return;
    }
    // With an explicit path the module gives its name as the key and no folder: the default file is taken from the
    // current directory then.
    const std::string strFolder = lpszIniFile == nullptr ? module.strDrive + module.strDirectory : std::string();
    const std::string strIni = lpszIniFile == nullptr ? strFolder + kIniName : std::string(lpszIniFile);
    if (!FileExists(strIni)) {
        return;
    }
    const std::string strSection = FindModuleSection(strIni, strModuleKey);
    if (strSection.empty() || !IsSwitchedOn(strIni, strSection, "DEBUG")) {
        return;
    }

    g_logSettings.debugEnabled = true;
    ReadFileSettings(strIni, strSection, strFolder);
    if (IsSwitchedOn(strIni, strSection, "OUTPUTDBGSTR")) {
        g_logSettings.logToDebugger = true;
    }
    const INT nLevel =
        static_cast<INT>(Platform().GetPrivateProfileIntA(strSection.c_str(), "LEVEL", 1, strIni.c_str()));
    if (nLevel > 1) {
        g_logSettings.logLevel = nLevel;
    }
}

}  // namespace

void ReadLogConfiguration(LPCSTR lpszIniFile) {
    Silently([&] { ReadSettings(lpszIniFile); });
}

void ResetLog() {
    g_logSettings.debugEnabled = false;
    g_logSettings.logToFile = false;
    g_logSettings.logToDebugger = false;
    g_logSettings.logLevel = 1;
    g_logSettings.logFilePath.clear();
}

void WriteLogText(LPCSTR lpszText, LPCSTR lpszSource, INT nLine) {
    char szMessage[kTextSize];
    if (lpszSource != nullptr && nLine >= 0) {
        const PathParts source = SplitPath(lpszSource);
        FormatCut(szMessage, "%s, [%s%s:%d]", lpszText, source.strName.c_str(), source.strExtension.c_str(), nLine);
    } else {
        FormatCut(szMessage, "%s", lpszText);
    }
    const std::string strLine = StampedLine(szMessage);
    const LogLine line = {szMessage, strLine};
    for (const LogSink& sink : kSinks) {
        if (g_logSettings.*sink.pfIsOn) {
            sink.pfnWrite(line);
        }
    }
}

void WriteLogLine(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    Silently([&] {
        char szText[kTextSize];
        FormatCut(szText, sizeof(szText), format, arguments);
        WriteLogText(szText, nullptr, -1);
    });
    va_end(arguments);
}

void WriteErrorLogLine(DWORD dwCode, LPCSTR lpszSource, DWORD dwLine) {
    Silently([&] { WriteErrorText(dwCode, lpszSource, dwLine); });
}

}  // namespace pikel
