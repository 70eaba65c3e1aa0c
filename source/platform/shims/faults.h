// Fault shim: a table over another table that makes chosen calls fail in the way in which the operation fails, without
// calling what lies below. Functions found at run time are covered too. One exists at a time.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/platform.h"

namespace pikel::faults {

/// The failing table over `inner`; no fault is set yet.
const PlatformTable& Over(const PlatformTable& inner);

/// Takes all faults away and counts from 0 again.
void Reset();

/// Calls so far that could have failed.
std::size_t CallCount();

/// Fails the nth call (from 1) of those that can fail, and with `persistent` every one from then on.
void FailNth(std::size_t nth, DWORD code, bool persistent = false);

/// Fails the nth call (from 1, counted from now) of one operation, and with `persistent` every one from then on.
/// Several may be set.
void FailCall(std::string_view name, std::size_t nth, DWORD code, bool persistent = false);

/// Name of the operation that failed last; empty when none did.
std::string LastFailed();

}  // namespace pikel::faults
