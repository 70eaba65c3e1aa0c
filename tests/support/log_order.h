// The log's lines among the platform calls: what an operation closes or frees before its last line, and what behind it.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "frame/log.h"
#include "support/calls.h"
#include "support/machine_test.h"

namespace pikel::testing_support {

/// Has the log go to the debugger at detail level, where the trace sees its lines, and forgets the calls so far.
inline void TraceLog(TestMachine& test) {
    g_logSettings = {.debugEnabled = true, .logToFile = false, .logToDebugger = true, .logLevel = 2, .logFilePath = {}};
    ForgetCalls(test);
}

/// A log line as it was written, from the text of the call that told the debugger of it.
inline std::string LineOf(std::string_view call) {
    std::string line;
    const std::size_t begin = call.find('"') + 1;
    const std::size_t end = call.rfind('"');
    for (std::size_t at = begin; at < end; ++at) {
        at += call[at] == '\\' && at + 1 < end ? 1 : 0;
        line += call[at];
    }
    return line;
}

/// Names of the calls asked for and log lines, in the order in which they came since TraceLog or the last look.
inline std::vector<std::string> TakeCallsAndLines(TestMachine& test, const std::vector<std::string>& names) {
    std::vector<std::string> steps;
    for (const std::string& call : test.TakeCalls()) {
        const std::string name = call.substr(0, call.find('('));
        if (name == "OutputDebugStringA") {
            steps.push_back(LineOf(call));
        } else if (std::ranges::find(names, name) != names.end()) {
            steps.push_back(name);
        }
    }
    return steps;
}

/// The last ones of them.
inline std::vector<std::string> TakeLastCallsAndLines(TestMachine& test, const std::vector<std::string>& names,
                                                      std::size_t count) {
    std::vector<std::string> steps = TakeCallsAndLines(test, names);
    if (steps.size() > count) {
        steps.erase(steps.begin(), steps.end() - static_cast<std::ptrdiff_t>(count));
    }
    return steps;
}

}  // namespace pikel::testing_support
