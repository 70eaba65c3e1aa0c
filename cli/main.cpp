// pikel: drives the library from a command line. Results go to standard output, diagnostics to standard error.
// Exit codes: 0 done, 1 failed, 2 wrong usage, 3 done but a restart is needed.
#include <cstdio>
#include <exception>

#include "commands.h"
#include "failure.h"

namespace pikel::cli {

namespace {

int Report(const OperationFailed& failure, const Session& session) {
    std::string hint = ErrorHint(failure.Operation(), failure.Code());
    if (session.asJson) {
        nlohmann::json json = JsonObject({{"error", JsonObject({{"operation", failure.Operation()},
                                                                {"status", failure.Status()},
                                                                {"code", failure.Code()},
                                                                {"name", ErrorName(failure.Code())},
                                                                {"text", ErrorText(failure.Code())},
                                                                {"hint", hint}})}});
        std::printf("%s\n", json.dump(2).c_str());
    }
    std::fprintf(stderr, "pikel: %s failed: 0x%08x, %s (%u): %s\n", failure.Operation().c_str(),
                 static_cast<unsigned>(failure.Status()), ErrorName(failure.Code()).c_str(),
                 static_cast<unsigned>(failure.Code()), ErrorText(failure.Code()).c_str());
    if (!hint.empty()) {
        std::fprintf(stderr, "pikel: %s\n", hint.c_str());
    }
    return 1;
}

int Main(int argc, char** argv) {
    Session session;
    try {
        const int usage = RunCommandLine(ToolCommandLine(session), argc, argv);
        return usage != 0 ? usage : session.ExitCode();
    } catch (const OperationFailed& failure) {
        return Report(failure, session);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "pikel: %s\n", error.what());
        return 1;
    }
}

}  // namespace
}  // namespace pikel::cli

int main(int argc, char** argv) {
    return pikel::cli::Main(argc, argv);
}
