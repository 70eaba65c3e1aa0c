#include "machine/setup/install_section.h"

#include <functional>

#include "machine/base/machine.h"
#include "machine/base/text.h"
#include "machine/files/path.h"
#include "machine/inf/number.h"

namespace pikel::simulated {

namespace {

constexpr DWORD kSystemFolder = 11;

/// A field, or an empty text.
std::string FieldOr(const std::vector<std::string>& fields, std::size_t index) {
    return index < fields.size() ? fields[index] : std::string();
}

/// Calls for each element of all lines with a key.
void ForEachElement(OpenInf& inf, UINT section, std::string_view key,
                    const std::function<void(const std::string&)>& visit) {
    for (UINT line = 0; line < inf.file->LineCount(section); ++line) {
        const std::optional<std::string_view> its = inf.file->Field(section, line, 0);
        if (!its.has_value() || !EqualNoCase(*its, key)) {
            continue;
        }
        for (const std::string& element : inf.file->Fields(section, line)) {
            if (!element.empty()) {
                visit(element);
            }
        }
    }
}

/// Calls for each line of each list section that a key names.
void ForEachListLine(OpenInf& inf, UINT section, std::string_view key,
                     const std::function<void(const std::string& list, UINT number, UINT line)>& visit) {
    ForEachElement(inf, section, key, [&](const std::string& list) {
        const std::optional<UINT> number = inf.file->FindSection(list);
        for (UINT line = 0; number.has_value() && line < inf.file->LineCount(*number); ++line) {
            visit(list, *number, line);
        }
    });
}

/// The folder of a list section.
std::string TargetFolder(OpenInf& inf, const std::string* section) {
    std::vector<std::string> fields;
    if (const std::optional<UINT> folders = inf.file->FindSection("DestinationDirs")) {
        std::optional<UINT> line = section != nullptr ? inf.file->FindLine(*folders, *section) : std::nullopt;
        if (!line.has_value()) {
            line = inf.file->FindLine(*folders, "DefaultDestDir");
        }
        if (line.has_value()) {
            fields = inf.file->Fields(*folders, *line);
        }
    }
    const DWORD id = InfNumber(FieldOr(fields, 0));
    const std::string below = FieldOr(fields, 1);
    if (id == kAbsoluteDirectory || id == kAbsoluteDirectory16) {
        return below;
    }
    std::optional<std::string> folder = inf.Directory(id);
    if (!folder.has_value()) {
        folder = inf.Directory(kSystemFolder);
    }
    return JoinPath(inf.machine, *folder, below);
}

const char* ProcessorSuffix(const Machine& machine) {
    switch (machine.System().processorType) {
        case 2200:
            return ".ia64";
        case 8664:
            return ".amd64";
        default:
            return ".x86";
    }
}

/// Fields of the line with a key in a section for the machine's processor, else in the plain one.
std::vector<std::string> LayoutFields(OpenInf& layout, const std::string& section, std::string_view key) {
    for (const std::string& name : {section + ProcessorSuffix(layout.machine), section}) {
        const std::optional<UINT> number = layout.file->FindSection(name);
        const std::optional<UINT> line = number.has_value() ? layout.file->FindLine(*number, key) : std::nullopt;
        if (line.has_value()) {
            return layout.file->Fields(*number, *line);
        }
    }
    return {};
}

/// What a line's flag means for the copy.
struct LineFlag {
    DWORD flag;  ///< COPYFLG_...
    DWORD adds;
    DWORD takesAway;
};
constexpr LineFlag kLineFlags[] = {
    {0x4, 0, SP_COPY_NEWER | SP_COPY_FORCE_NEWER | 0x10000},  // no version check
    {0x8, SP_COPY_FORCE_IN_USE, 0},
    {0x10, SP_COPY_FORCE_NOOVERWRITE, 0},
    {0x20, SP_COPY_FORCE_NEWER, 0},  // a newer target is kept without a word
    {0x40, 0x10000, 0},              // older targets only
    {0x400, SP_COPY_REPLACEONLY, 0},
    {0x800, SP_COPY_NODECOMP, 0},
};

/// Fills a queue from one install section.
class SectionQueuer {
  public:
    SectionQueuer(OpenInf& inf, OpenInf& layout, const char* root, DWORD style, FileQueue& queue)
        : m_inf(inf), m_layout(layout), m_root(root), m_style(style), m_queue(queue) {}

    void QueueCopies(UINT section) {
        ForEachElement(m_inf, section, "CopyFiles", [&](const std::string& element) {
            if (element[0] == '@') {
                const std::string name = element.substr(1);
                Copy(name, name, m_style, TargetFolder(m_inf, nullptr));
            } else {
                CopyList(element);
            }
        });
    }

    void QueueRenames(UINT section) {
        ForEachListLine(m_inf, section, "RenFiles", [&](const std::string& list, UINT number, UINT line) {
            const std::vector<std::string> fields = m_inf.file->Fields(number, line);
            if (fields.size() >= 2 && !fields[0].empty() && !fields[1].empty()) {
                const std::string folder = TargetFolder(m_inf, &list);
                m_queue.renames.push_back(
                    {JoinPath(m_inf.machine, folder, fields[1]), JoinPath(m_inf.machine, folder, fields[0])});
            }
        });
    }

    void QueueDeletes(UINT section) {
        ForEachListLine(m_inf, section, "DelFiles", [&](const std::string& list, UINT number, UINT line) {
            const std::string name = FieldOr(m_inf.file->Fields(number, line), 0);
            if (!name.empty()) {
                m_queue.deletes.push_back(JoinPath(m_inf.machine, TargetFolder(m_inf, &list), name));
            }
        });
    }

  private:
    void CopyList(const std::string& list) {
        const std::optional<UINT> number = m_inf.file->FindSection(list);
        if (!number.has_value()) {
            return;
        }
        const std::string folder = TargetFolder(m_inf, &list);
        for (UINT line = 0; line < m_inf.file->LineCount(*number); ++line) {
            const CopyLine entry = ReadCopyLine(m_inf, *number, line);
            Copy(entry.source, entry.target, (m_style & ~entry.without) | entry.style, folder);
        }
    }

    void Copy(const std::string& source, const std::string& target, DWORD style, std::string_view folder) {
        if (!target.empty()) {
            m_queue.copies.push_back({LocateSource(m_layout, source, m_root, style), source,
                                      JoinPath(m_inf.machine, folder, target), style});
        }
    }

    OpenInf& m_inf;
    OpenInf& m_layout;
    const char* m_root;
    DWORD m_style;
    FileQueue& m_queue;
};

}  // namespace

SourceMedia LocateSource(OpenInf& layout, std::string_view name, const char* root, DWORD style) {
    SourceMedia media;
    media.path = root != nullptr ? std::string(root) : layout.folder;
    const std::vector<std::string> file = LayoutFields(layout, "SourceDisksFiles", name);
    if (file.empty()) {
        return media;
    }
    const std::vector<std::string> disc = LayoutFields(layout, "SourceDisksNames", file[0]);
    media.description = FieldOr(disc, 0);
    media.tagFile = FieldOr(disc, 1);
    if ((style & SP_COPY_SOURCEPATH_ABSOLUTE) == 0) {
        media.path = JoinPath(layout.machine, media.path, FieldOr(disc, 3));
        media.path = JoinPath(layout.machine, media.path, FieldOr(file, 1));
    }
    return media;
}

std::string TargetPath(OpenInf& inf, const std::string* section, std::string_view name) {
    return JoinPath(inf.machine, TargetFolder(inf, section), name);
}

CopyLine ReadCopyLine(OpenInf& inf, UINT section, UINT line) {
    const std::vector<std::string> fields = inf.file->Fields(section, line);
    CopyLine entry;
    entry.target = FieldOr(fields, 0);
    entry.source = FieldOr(fields, 1);
    if (entry.source.empty()) {
        entry.source = entry.target;
    }
    const DWORD flags = InfNumber(FieldOr(fields, 3));
    for (const LineFlag& flag : kLineFlags) {
        if ((flags & flag.flag) != 0) {
            entry.style |= flag.adds;
            entry.without |= flag.takesAway;
        }
    }
    return entry;
}

DWORD QueueFiles(OpenInf& inf, OpenInf& layout, const char* section, const char* root, DWORD style, FileQueue& queue) {
    const std::optional<UINT> number = inf.file->FindSection(section);
    if (!number.has_value()) {
        return ERROR_LINE_NOT_FOUND;
    }
    SectionQueuer queuer(inf, layout, root, style, queue);
    queuer.QueueCopies(*number);
    queuer.QueueRenames(*number);
    queuer.QueueDeletes(*number);
    return ERROR_SUCCESS;
}

}  // namespace pikel::simulated
