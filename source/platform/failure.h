// How a platform operation shows that it failed. The fault shim answers in this way; the trace shim marks such answers.
#pragma once

#include <cstdint>
#include <type_traits>

#include "platform/types.h"

namespace pikel::failure {

/// FALSE; the code is the last error.
struct ReturnsFalse {
    static constexpr bool kUsesLastError = true;
    template <class Result>
    static Result Value(DWORD /*code*/) {
        return Result{};
    }
    template <class Result>
    static bool Failed(Result result) {
        return !result;
    }
};
/// 0, as a length or a message's result; the code is the last error.
struct ReturnsZero : ReturnsFalse {};
/// A null pointer or handle; the code is the last error.
struct ReturnsNull : ReturnsFalse {};
/// A null pointer; the last error says nothing.
struct ReturnsNullSilently : ReturnsFalse {
    static constexpr bool kUsesLastError = false;
};
/// INVALID_HANDLE_VALUE; the code is the last error.
struct ReturnsInvalidHandle {
    static constexpr bool kUsesLastError = true;
    template <class Result>
    static Result Value(DWORD /*code*/) {
        return reinterpret_cast<Result>(static_cast<intptr_t>(-1));
    }
    template <class Result>
    static bool Failed(Result result) {
        return reinterpret_cast<intptr_t>(result) == -1;
    }
};
/// A number of all ones; the code is the last error.
struct ReturnsAllOnes {
    static constexpr bool kUsesLastError = true;
    template <class Result>
    static Result Value(DWORD /*code*/) {
        return static_cast<Result>(-1);
    }
    template <class Result>
    static bool Failed(Result result) {
        return result == static_cast<Result>(-1);
    }
};
/// HFILE_ERROR of the 16-bit style file calls; the code is the last error.
struct ReturnsFileError : ReturnsAllOnes {};
/// The code itself; the last error stays.
struct ReturnsCode {
    static constexpr bool kUsesLastError = false;
    template <class Result>
    static Result Value(DWORD code) {
        return static_cast<Result>(code);
    }
    template <class Result>
    static bool Failed(Result result) {
        return result != 0;
    }
};
/// Anything but 0x10000, the success of a port SDK.
struct ReturnsPortFailure {
    static constexpr bool kUsesLastError = false;
    template <class Result>
    static Result Value(DWORD /*code*/) {
        return static_cast<Result>(0x20000);
    }
    template <class Result>
    static bool Failed(Result result) {
        return result != 0x10000;
    }
};
/// A negative HRESULT. A system code below 65536 is wrapped as COM wraps it.
struct ReturnsHresult {
    static constexpr bool kUsesLastError = false;
    template <class Result>
    static Result Value(DWORD code) {
        return static_cast<Result>(code < 0x10000 ? 0x80070000 | code : code);
    }
    template <class Result>
    static bool Failed(Result result) {
        return result < 0;
    }
};
/// No failure exists; the fault shim passes such calls on.
struct CannotFail {
    static constexpr bool kUsesLastError = false;
};

template <class Form>
inline constexpr bool kCanFail = !std::is_same_v<Form, CannotFail>;

}  // namespace pikel::failure
