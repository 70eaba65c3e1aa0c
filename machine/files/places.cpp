// Where the machine's paths lie on its disks.
#include "machine/files/places.h"

#include <utility>

#include "machine/base/text.h"
#include "machine/files/host_disk.h"

namespace pikel::simulated {

namespace {

// Spellings of folders that are kept in mind before the memory starts anew.
constexpr std::size_t kMostSpellings = 1024;

}  // namespace

Places::Places(std::shared_ptr<Disk> disk, std::string root)
    : m_disk(std::move(disk)),
      m_host(std::make_unique<HostDisk>()),
      m_root(std::move(root)),
      m_names(*m_disk),
      m_mediumNames(*m_host) {}

std::string Places::DriveFolder(char drive) const {
    return IsMedium(drive) ? m_medium : m_root + "/" + drive;
}

std::string Places::HostFolder(char drive) const {
    const bool isOnHost = IsMedium(drive) || !m_root.empty();
    return isOnHost ? DriveFolder(drive) : std::string();
}

void Places::InsertMedium(std::string folder) {
    m_medium = std::move(folder);
    m_spellings.clear();
}

std::string Places::WindowsPath(const std::filesystem::path& host, UINT codePage) const {
    std::filesystem::path below;
    if (!m_root.empty()) {
        below = host.lexically_relative(m_root);
    }
    std::string path;
    if (!m_medium.empty() && *host.lexically_relative(m_medium).begin() != "..") {
        below = host.lexically_relative(m_medium);
        path = std::string(1, kMediumDrive) + ":";
    }
    for (const std::filesystem::path& name : below) {
        if (name == ".") {
            continue;
        }
        if (path.empty() && (name.native().size() != 1 || name.native()[0] < 'A' || name.native()[0] > 'Z')) {
            return {};
        }
        path += path.empty() ? name.native() + ":" : "\\" + FromUtf8(codePage, name.native());
    }
    return path.size() == 2 ? path + "\\" : path;
}

std::string Places::WindowsPath(const Place& place, UINT codePage) const {
    std::string path = std::string(1, place.path.drive) + ":";
    std::string_view rest = std::string_view(place.location).substr(DriveFolder(place.path.drive).size());
    while (!rest.empty()) {
        rest.remove_prefix(1);  // the slash
        const std::size_t end = std::min(rest.find('/'), rest.size());
        path += "\\" + FromUtf8(codePage, rest.substr(0, end));
        rest.remove_prefix(end);
    }
    return path.size() == 2 ? path + "\\" : path;
}

Place Places::Find(MachinePath path, UINT codePage) {
    Place place;
    place.path = std::move(path);
    place.code = place.path.code;
    if (place.code != ERROR_SUCCESS) {
        return place;
    }
    place.disk = IsOnMedium(place) ? m_host.get() : m_disk.get();
    place.key = place.path.Key(codePage);
    place.location = DriveFolder(place.path.drive);
    const std::size_t driveLength = place.location.size();
    for (const std::string& name : place.path.names) {
        place.location += '/';
        place.location += name;
    }
    // The spelling asked for is there as a rule.
    if (place.disk->Look(place.location, &place.entry) != ERROR_SUCCESS) {
        place.location.resize(driveLength);
        Match(place, codePage);
    }
    if (place.Exists() && place.path.endsInSeparator && !place.IsDirectory()) {
        place.code = ERROR_INVALID_NAME;
    }
    return place;
}

/// Finds the stored spelling name by name, as far as the path goes.
void Places::Match(Place& place, UINT codePage) {
    bool found = place.disk->Look(place.location, &place.entry) == ERROR_SUCCESS && place.entry.isFolder;
    place.code = found ? ERROR_SUCCESS : ERROR_PATH_NOT_FOUND;
    std::string asked = place.path.drive + place.location;
    for (const std::string& wanted : place.path.names) {
        asked += "/" + wanted;
        if (!found) {
            place.location += "/" + wanted;
            continue;
        }
        const bool isInFolder = place.entry.isFolder;
        found = MatchName(asked, wanted, codePage, place);
        if (!found) {
            const bool isLast = &wanted == &place.path.names.back();
            place.code = isLast && isInFolder ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND;
        }
    }
}

/// Goes one name further: the location gets the name as it is stored, the entry is what is there. False when nothing
/// matches; the location gets the name as it was asked for then.
bool Places::MatchName(const std::string& asked, const std::string& wanted, UINT codePage, Place& place) {
    const std::string folder = std::exchange(place.location, place.location + "/" + wanted);
    if (!place.entry.isFolder) {
        return false;
    }
    const Disk& disk = *place.disk;
    if (const auto known = m_spellings.find(asked);
        known != m_spellings.end() && disk.Look(known->second, &place.entry) == ERROR_SUCCESS) {
        place.location = known->second;
        return true;
    }
    if (disk.Look(place.location, &place.entry) == ERROR_SUCCESS) {
        return true;
    }
    const std::string name = Names(place).Find(folder, wanted, codePage);
    const std::string stored = folder + "/" + name;
    if (name.empty() || disk.Look(stored, &place.entry) != ERROR_SUCCESS) {
        return false;
    }
    place.location = stored;
    if (place.entry.isFolder) {
        if (m_spellings.size() >= kMostSpellings) {
            m_spellings.clear();
        }
        m_spellings[asked] = stored;
    }
    return true;
}

}  // namespace pikel::simulated
