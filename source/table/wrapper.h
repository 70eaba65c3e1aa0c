// The form that every slot of the table from 3 on has: a start line, the work, a non-zero code ORed with the slot's
// prefix, an end line and a blank line. No exception leaves the table.
#pragma once

#include <cstddef>
#include <new>
#include <optional>
#include <string>
#include <tuple>

#include "frame/log.h"
#include "frame/pikel.h"

namespace pikel {

/// Runs a slot's work and turns what it throws into a code: 8 for lack of memory, 1359 for anything else.
template <class Work>
DWORD RunGuarded(Work&& work) {
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return ERROR_NOT_ENOUGH_MEMORY;
    } catch (...) {
        return ERROR_INTERNAL_ERROR;
    }
}

/// Runs the work of a slot that answers with a plain value. A code would read as a yes there.
/// @param dwUnknown  the answer when the work throws
template <class Work>
DWORD RunGuardedOr(DWORD dwUnknown, Work&& work) {
    try {
        return work();
    } catch (...) {
        return dwUnknown;
    }
}

/// The whole 32-bit code is ORed; nothing is masked first.
inline PiStatus ToStatus(DWORD dwCode, DWORD dwPrefix) {
    return dwCode == 0 ? 0 : dwCode | dwPrefix;
}

/// The common form for a slot with a status.
template <class Work>
PiStatus RunStatusSlot(const char* startName, const char* name, DWORD dwPrefix, Work&& work) {
    WriteLog("%s Start", startName);
    PiStatus status = ToStatus(RunGuarded(work), dwPrefix);
    WriteLog("%s End:(0x%08x)", name, status);
    WriteLog("%s", "");
    return status;
}

/// The common form for a slot with a plain value.
template <class Work>
DWORD RunValueSlot(const char* name, DWORD dwUnknown, Work&& work) {
    WriteLog("%s Start", name);
    DWORD dwValue = RunGuardedOr(dwUnknown, work);
    WriteLog("%s End:(%d)", name, static_cast<int>(dwValue));
    WriteLog("%s", "");
    return dwValue;
}

/// A text argument copied for the length of a call. A null pointer stays null, an empty text stays an empty text.
class TextCopy {
  public:
    explicit TextCopy(LPCSTR lpszText) {
        if (lpszText != nullptr) {
            m_strText = lpszText;
        }
    }
    LPCSTR Get() const { return m_strText ? m_strText->c_str() : nullptr; }

  private:
    std::optional<std::string> m_strText;
};

/// A worker that gets a copy of one of its texts in place of the caller's, so that a buffer which the worker fills may
/// be the one that the text stands in.
/// @tparam kIndex  number of the text among the arguments, from 0 on
template <std::size_t kIndex, class Worker>
constexpr auto WithCopyOf(Worker worker) {
    return [worker](auto... arguments) {
        std::tuple values(arguments...);
        const TextCopy text(std::get<kIndex>(values));
        std::get<kIndex>(values) = text.Get();
        return std::apply(worker, values);
    };
}

/// The function that stands in the table for a slot. Slot tells kName and Run; Pointer is the member's type.
template <class Slot, class Pointer>
struct SlotFunction;

template <class Slot, class Result, class... Parameters>
struct SlotFunction<Slot, Result(WINAPI*)(Parameters...)> {
    static Result WINAPI Call(Parameters... arguments) { return Slot::Run(arguments...); }
};

}  // namespace pikel

/// Declares a slot of the common form with a status. work is called with the slot's arguments.
/// @param work  a function, or WithCopyOf<n>(function)
#define STATUS_SLOT(operation, prefix, work) STATUS_SLOT_STARTING_AS(operation, #operation, prefix, work)

/// The same for a slot whose start line bears another name.
#define STATUS_SLOT_STARTING_AS(operation, startName, prefix, work)                                         \
    struct operation##_Slot {                                                                               \
        template <class... Arguments>                                                                       \
        static PiStatus Run(Arguments... arguments) {                                                       \
            return RunStatusSlot(startName, #operation, prefix, [&] { return DWORD(work(arguments...)); }); \
        }                                                                                                   \
    };

/// Declares a slot of the common form with a plain value. unknown is its answer when it can't be found out.
#define VALUE_SLOT(operation, unknown, work)                                                     \
    struct operation##_Slot {                                                                    \
        template <class... Arguments>                                                            \
        static DWORD Run(Arguments... arguments) {                                               \
            return RunValueSlot(#operation, unknown, [&] { return DWORD(work(arguments...)); }); \
        }                                                                                        \
    };

/// The function of a declared slot, for the table.
#define SLOT(operation) &SlotFunction<operation##_Slot, decltype(PI_KEL_Interface::operation)>::Call
