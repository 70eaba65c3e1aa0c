// Helpers for tests that look at the platform calls of one operation.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "frame/os_route.h"
#include "support/machine_test.h"

namespace pikel::testing_support {

/// Has the records of the running system built and forgets the calls so far, so that what follows is the operation's
/// own.
inline void ForgetCalls(TestMachine& test) {
    GetOsRoute();
    test.TakeCalls();
}

/// Calls since the last look, with arguments and results, of the operations named.
inline std::vector<std::string> TakeCallsOf(TestMachine& test, const std::vector<std::string>& names) {
    std::vector<std::string> calls;
    for (std::string& call : test.TakeCalls()) {
        for (const std::string& name : names) {
            if (call.starts_with(name + "(")) {
                calls.push_back(std::move(call));
                break;
            }
        }
    }
    return calls;
}

}  // namespace pikel::testing_support
