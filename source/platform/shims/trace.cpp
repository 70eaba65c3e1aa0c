#include "platform/shims/trace.h"

#include <charconv>
#include <cstdint>
#include <string_view>
#include <utility>

#include "platform/shims/operation_tags.h"

namespace pikel::trace {

namespace {

/// Made on first use, because the library's entry turns the trace on before the objects of this file are made, and
/// never destroyed, because calls go on while the process ends.
Sink& TheSink() {
    static Sink& sink = *new Sink;
    return sink;
}
const PlatformTable* g_inner = nullptr;

std::string Hex(std::uint64_t number) {
    char digits[16];
    auto [end, error] = std::to_chars(digits, digits + sizeof digits, number, 16);
    return "0x" + std::string(digits, end);
}

std::string Quoted(std::string_view text) {
    std::string quoted = "\"";
    for (char c : text) {
        if (c == '"' || c == '\\') {
            quoted += '\\';
        }
        quoted += c;
    }
    return quoted + "\"";
}

std::string Quoted(const WCHAR* text) {
    std::string narrow;
    for (; *text != 0; ++text) {
        narrow += *text < 0x100 ? static_cast<char>(*text) : '?';
    }
    return Quoted(narrow);
}

/// Parameters that receive text, or that hold text whose length stands elsewhere: they are not read.
bool IsBuffer(std::string_view operation, std::string_view parameter) {
    if (operation == "RegEnumValueA" && parameter == "lpValueName") {
        return true;
    }
    for (std::string_view part : {"uffer", "Returned", "MultiByteStr", "WideCharStr", "strIn", "lpFilename"}) {
        if (parameter.find(part) != std::string_view::npos) {
            return true;
        }
    }
    return false;
}

template <class Value>
std::string Describe(std::string_view operation, std::string_view parameter, Value value) {
    if constexpr (std::is_class_v<Value>) {
        return "&";  // passed by reference: class and interface identifiers
    } else if constexpr (std::is_enum_v<Value>) {
        return Hex(static_cast<std::uint64_t>(value));
    } else if constexpr (std::is_integral_v<Value>) {
        return Hex(static_cast<std::uint64_t>(static_cast<std::make_unsigned_t<Value>>(value)));
    } else {
        auto address = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(value));
        if (address == 0) {
            return "null";
        }
        using Pointee = std::remove_cv_t<std::remove_pointer_t<Value>>;
        if constexpr (std::is_same_v<Pointee, char> || std::is_same_v<Pointee, WCHAR>) {
            return IsBuffer(operation, parameter) ? "&" : Quoted(value);
        } else {
            // Handles are small numbers on the simulated machine; the rest are addresses, which tell nothing.
            return address < 0x1'0000'0000 ? Hex(address) : address == UINTPTR_MAX ? "-1" : "&";
        }
    }
}

/// Names of the parameters from their text: "(LPSTR pName, DWORD Level)".
class ParameterNames {
  public:
    explicit ParameterNames(std::string_view list) : m_rest(list.substr(1, list.size() - 2)) {}

    std::string_view Next() {
        std::size_t comma = m_rest.find(',');
        std::string_view parameter = m_rest.substr(0, comma);
        m_rest = comma == std::string_view::npos ? std::string_view{} : m_rest.substr(comma + 1);
        return parameter.substr(parameter.find_last_of(" *") + 1);
    }

  private:
    std::string_view m_rest;
};

template <class Tag, class Pointer>
struct TracedAs;

template <class Tag, class Result, class... Parameters>
struct TracedAs<Tag, Result(WINAPI*)(Parameters...)> {
    static inline Result(WINAPI* below)(Parameters...) = nullptr;

    static Result WINAPI Call(Parameters... arguments) {
        trace::Call call;
        call.name = Tag::kName;
        [[maybe_unused]] ParameterNames names(Tag::kParameters);
        (call.arguments.push_back(Describe(Tag::kName, names.Next(), arguments)), ...);
        if constexpr (std::is_void_v<Result>) {
            below(arguments...);
            Tell(call);
        } else {
            Result result = below(arguments...);
            call.result = Describe(Tag::kName, "resultBuffer", result);
            if constexpr (failure::kCanFail<typename Tag::Failure>) {
                call.failed = Tag::Failure::Failed(result);
            }
            Tell(call);
            return result;
        }
    }

  private:
    static void Tell(trace::Call& call) {
        call.lastError = g_inner->GetLastError();
        if (TheSink()) {
            TheSink()(call);
        }
        g_inner->SetLastError(call.lastError);
    }
};

template <class Tag>
using Traced = TracedAs<Tag, typename Tag::Pointer>;

FARPROC WINAPI TracedGetProcAddress(HMODULE module, LPCSTR symbol) {
    FARPROC found = Traced<shims::tag::GetProcAddress>::Call(module, symbol);
    return found == nullptr ? found : shims::WrapLookedUp<Traced>(symbol, found);
}

void AppendJsonText(std::string& json, std::string_view text) {
    json += '"';
    for (char c : text) {
        auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            json += '\\';
            json += c;
        } else if (byte < 0x20 || byte >= 0x7f) {
            static constexpr char kDigits[] = "0123456789abcdef";
            json += "\\u00";
            json += kDigits[byte >> 4];
            json += kDigits[byte & 15];
        } else {
            json += c;
        }
    }
    json += '"';
}

}  // namespace

std::string Call::Text() const {
    std::string text = name + "(";
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        text += (i == 0 ? "" : ", ") + arguments[i];
    }
    text += ")";
    if (!result.empty()) {
        text += " = " + result;
    }
    if (failed) {
        text += " failed, last error " + std::to_string(lastError);
    }
    return text;
}

std::string Call::Json() const {
    std::string json = "{\"call\":";
    AppendJsonText(json, name);
    json += ",\"arguments\":[";
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        json += i == 0 ? "" : ",";
        AppendJsonText(json, arguments[i]);
    }
    json += "]";
    if (!result.empty()) {
        json += ",\"result\":";
        AppendJsonText(json, result);
    }
    json += ",\"failed\":";
    json += failed ? "true" : "false";
    return json + ",\"lastError\":" + std::to_string(lastError) + "}";
}

const PlatformTable& Over(const PlatformTable& inner, Sink sink) {
    static PlatformTable innerCopy;
    static PlatformTable table;
    innerCopy = inner;
    g_inner = &innerCopy;
    TheSink() = std::move(sink);
    table = shims::WrapTable<Traced>(innerCopy);
    table.GetProcAddress = &TracedGetProcAddress;
    table.GetLastError = inner.GetLastError;
    table.SetLastError = inner.SetLastError;
    table.GetProcessHeap = inner.GetProcessHeap;
    table.HeapAlloc = inner.HeapAlloc;
    table.HeapFree = inner.HeapFree;
    return table;
}

}  // namespace pikel::trace
