#include "models_choice.h"

#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "platform/owned.h"

namespace pikel::cli {

namespace {

constexpr DWORD kFirstDecorated = 0x501;  // older systems read the plain section

/// The fields of the first line, section name first.
std::vector<std::string> ReadFields(const std::string& path) {
    std::vector<std::string> fields;
    const InfHandle inf(Platform().SetupOpenInfFileA(path.c_str(), nullptr, INF_STYLE_WIN4, nullptr));
    INFCONTEXT context{};
    if (inf.Get() == INVALID_HANDLE_VALUE ||
        !Platform().SetupFindFirstLineA(inf.Get(), "Manufacturer", nullptr, &context)) {
        return fields;
    }
    char text[2048];
    DWORD size = 0;
    if (!Platform().SetupGetLineTextA(&context, nullptr, nullptr, nullptr, text, sizeof text, &size)) {
        return fields;
    }
    std::string_view rest = text;
    while (true) {
        const std::size_t comma = rest.find(',');
        fields.emplace_back(rest.substr(0, comma));
        if (comma == std::string_view::npos) {
            return fields;
        }
        rest.remove_prefix(comma + 1);
    }
}

std::string VersionText(DWORD version) {
    return std::to_string(version >> 8) + "." + std::to_string(version & 0xFF);
}

/// The version of a decoration behind its first dot.
DWORD VersionOf(const std::string& decoration, std::size_t dot) {
    const DWORD major = static_cast<DWORD>(std::atoi(decoration.c_str() + dot + 1));
    const std::size_t second = decoration.find('.', dot + 1);
    const DWORD minor =
        second == std::string::npos ? 0 : static_cast<DWORD>(std::atoi(decoration.c_str() + second + 1));
    return (major & 0xFF) << 8 | (minor & 0xFF);
}

/// Marks one candidate as chosen and gives the one before its reason.
void Choose(std::vector<ModelsCandidate>& candidates, std::size_t& chosen, std::size_t next, const char* because) {
    candidates[chosen].isChosen = false;
    candidates[chosen].reason = because;
    candidates[next].isChosen = true;
    chosen = next;
}

}  // namespace

std::vector<ModelsCandidate> ExplainModelsChoice(const std::string& path, DWORD major, DWORD minor) {
    std::vector<ModelsCandidate> candidates;
    const std::vector<std::string> fields = ReadFields(path);
    if (fields.empty() || fields[0].empty()) {
        return candidates;
    }
    const DWORD version = (major & 0xFF) << 8 | (minor & 0xFF);
    candidates.push_back({fields[0], true, "nothing decorated fits better"});
    std::size_t chosen = 0;
    bool hasVersion = false;
    DWORD nearest = 0xffffffff;
    for (std::size_t i = 1; i < fields.size(); ++i) {
        if (fields[i].empty()) {
            continue;
        }
        const std::size_t next = candidates.size();
        candidates.push_back({fields[0] + "." + fields[i], false, ""});
        ModelsCandidate& candidate = candidates.back();
        const std::size_t dot = fields[i].find('.');
        if (version < kFirstDecorated) {
            candidate.reason = "decorations count from version 5.1 on";
        } else if (dot == std::string::npos && hasVersion) {
            candidate.reason = "has no version, and one with a version fits";
        } else if (dot == std::string::npos) {
            candidate.reason = "the last decoration without a version";
            Choose(candidates, chosen, next, "a decoration stands behind it");
        } else if (const DWORD own = VersionOf(fields[i], dot); own > version) {
            candidate.reason = "is for version " + VersionText(own) + ", which is later";
        } else if (version - own > nearest) {
            candidate.reason = "version " + VersionText(own) + " is further away";
        } else {
            candidate.reason = "version " + VersionText(own) + " is the nearest that isn't later";
            Choose(candidates, chosen, next,
                   version - own == nearest ? "as near, and the later field wins" : "a nearer version follows");
            nearest = version - own;
            hasVersion = true;
        }
    }
    return candidates;
}

}  // namespace pikel::cli
