// What the contract tests of the platform operations share. Their one source runs over the simulated machine and, built
// for Windows, over the system itself, which here is Wine. What Wine can't do stands in a table beside the tests, with
// the reason; an entry fails once Wine does what the contract says.
#pragma once

#include <gtest/gtest.h>

#include <span>
#include <string>
#include <string_view>

#include "platform/owned.h"
#ifndef _WIN32
#include "support/machine_test.h"
#endif

namespace pikel::contract {

/// Something that holds on Windows and on the simulated machine, and not on Wine.
struct WineException {
    std::string_view statement;  ///< as the test names it
    std::string_view reason;     ///< what Wine does instead
    bool ends = false;           ///< true: the program would end or hang there, so the statement isn't tried on Wine
};

#ifdef _WIN32
/// Wine is told from Windows by an export that it adds to ntdll.
inline bool OnWine() {
    return GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") != nullptr;
}
#else
inline bool OnWine() {
    return false;
}
#endif

inline const WineException* FindException(std::span<const WineException> exceptions, std::string_view statement) {
    if (OnWine()) {
        for (const WineException& exception : exceptions) {
            if (exception.statement == statement) {
                return &exception;
            }
        }
    }
    return nullptr;
}

/// EXPECT_TRUE(Contract(kWine, "an unknown port gives 1796", code == 1796)) expects the opposite where an exception
/// says so.
inline ::testing::AssertionResult Contract(std::span<const WineException> exceptions, std::string_view statement,
                                           bool holds) {
    const WineException* exception = FindException(exceptions, statement);
    if (holds == (exception == nullptr)) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << statement
                                         << (exception ? ": Wine does this now; take its exception away"
                                                       : ": doesn't hold");
}

/// The code of a call that shows failure by FALSE or null: 0 when it went well.
///     CODE_OF(Platform().DeletePrinter(handle))
template <class Call>
DWORD CodeOf(Call call) {
    Platform().SetLastError(0xdead);
    return call() ? 0 : Platform().GetLastError();
}
#define CODE_OF(call) ::pikel::contract::CodeOf([&] { return static_cast<bool>(call); })

/// False where the statement would end the program.
inline bool CanTry(std::span<const WineException> exceptions, std::string_view statement) {
    const WineException* exception = FindException(exceptions, statement);
    return exception == nullptr || !exception->ends;
}

/// Fixture: natively a fresh machine of the system that the parameter names; on Windows the one there is.
class Test : public ::testing::TestWithParam<std::string> {
#ifndef _WIN32
  protected:
    testing_support::TestMachine& Machine() {
        return m_machine;
    }

  private:
    testing_support::TestMachine m_machine{GetParam()};
#endif
};

#ifdef _WIN32
#define INSTANTIATE_CONTRACT(fixture, ...) INSTANTIATE_TEST_SUITE_P(Contract, fixture, ::testing::Values("windows"))
#else
/// INSTANTIATE_CONTRACT(Spooler, "xp", "vista"): the systems to run it on natively.
#define INSTANTIATE_CONTRACT(fixture, ...)                                                             \
    INSTANTIATE_TEST_SUITE_P(Contract, fixture, ::testing::Values(__VA_ARGS__), [](const auto& info) { \
        std::string name = info.param;                                                                 \
        std::erase(name, '-');                                                                         \
        return name;                                                                                   \
    })
#endif

/// The temporary folder, with a backslash at its end.
inline std::string TemporaryFolder() {
    char folder[MAX_PATH + 1] = "";
    EXPECT_NE(Platform().GetTempPathA(sizeof folder, folder), 0u);
    return folder;
}

/// Writes a file through the platform; its folder exists.
inline void WriteFile(const std::string& path, std::string_view bytes) {
    FileHandle file(
        Platform().CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    ASSERT_TRUE(static_cast<bool>(file)) << path << ": " << Platform().GetLastError();
    DWORD written = 0;
    ASSERT_TRUE(Platform().WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr));
    ASSERT_EQ(written, bytes.size());
}

inline bool FileExists(const std::string& path) {
    return Platform().GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

}  // namespace pikel::contract
