// Diagnostic log: off unless a file "UtilDbg.ini" beside the module turns it on. It never changes what an operation
// does: the last error is kept and every failure of its own is swallowed.
#pragma once

#include <string>

#include "platform/types.h"

// Formats are checked where DWORD is an int. On Windows it is a long of the same size, which the compiler would not
// take for a %d.
#ifdef _WIN32
#define PIKEL_LOG_FORMAT
#else
#define PIKEL_LOG_FORMAT [[gnu::format(printf, 1, 2)]]
#endif

namespace pikel {

/// Process-wide settings, read by the first Initialize and reset by the last Shutdown.
struct LogSettings {
    bool debugEnabled = false;   ///< master switch; nothing is formatted while false
    bool logToFile = false;      ///< append lines to the log file
    bool logToDebugger = false;  ///< debugger stream and viewer window
    INT logLevel = 1;            ///< detail calls write only above 1
    std::string logFilePath;     ///< empty while off
};

extern LogSettings g_logSettings;

/// Reads the settings from an INI file.
/// @param lpszIniFile  its path; null: "UtilDbg.ini" in the folder of this module
void ReadLogConfiguration(LPCSTR lpszIniFile);

/// Back to the off state.
void ResetLog();

// What the calls below do once their gate is open. A text of more than 2047 characters is cut, and so is a line of more
// than 1024 with its CR LF, which stays.
PIKEL_LOG_FORMAT void WriteLogLine(const char* format, ...);
void WriteErrorLogLine(DWORD dwCode, LPCSTR lpszSource, DWORD dwLine);

/// The line writer below both: stamps a text and hands it to every sink that is on. No gate; exceptions leave it.
/// @param lpszSource  path of a source file, whose name goes behind the text with the line; null for none
/// @param nLine       its line; a negative one counts as none
void WriteLogText(LPCSTR lpszText, LPCSTR lpszSource, INT nLine);

}  // namespace pikel

// The log calls are macros so that a call while the log is off costs one test: no call, and no argument evaluated.

/// Writes a line while the log is on. printf style.
#define WriteLog(...) (::pikel::g_logSettings.debugEnabled ? ::pikel::WriteLogLine(__VA_ARGS__) : (void)0)
/// Writes a line while the log is on at detail level.
#define WriteLogDetail(...)                                                                                          \
    (::pikel::g_logSettings.debugEnabled && ::pikel::g_logSettings.logLevel > 1 ? ::pikel::WriteLogLine(__VA_ARGS__) \
                                                                                : (void)0)
/// Writes the system's text of an error code with the place in the source; while the log is on.
#define WriteErrorLog(code, source, line) \
    (::pikel::g_logSettings.debugEnabled ? ::pikel::WriteErrorLogLine(code, source, line) : (void)0)
/// The same at detail level.
#define WriteErrorLogDetail(code, source, line)                                 \
    (::pikel::g_logSettings.logLevel > 1 && ::pikel::g_logSettings.debugEnabled \
         ? ::pikel::WriteErrorLogLine(code, source, line)                       \
         : (void)0)
