// Where the machine's paths lie on the host.
#include "machine/files/host_places.h"

#include <utility>

#include "machine/base/text.h"

namespace pikel::simulated {

namespace {

// Spellings of folders that are kept in mind before the memory starts anew.
constexpr std::size_t kMostSpellings = 1024;

}  // namespace

std::string HostPlaces::DriveFolder(char drive) const {
    return !m_medium.empty() && drive == kMediumDrive ? m_medium : m_root + "/" + drive;
}

void HostPlaces::InsertMedium(std::string folder) {
    m_medium = std::move(folder);
    m_spellings.clear();
}

std::string HostPlaces::WindowsPath(const std::filesystem::path& host, UINT codePage) const {
    std::filesystem::path below = host.lexically_relative(m_root);
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

Place HostPlaces::Find(MachinePath path, UINT codePage) {
    Place place;
    place.path = std::move(path);
    place.code = place.path.code;
    if (place.code != ERROR_SUCCESS) {
        return place;
    }
    place.key = place.path.Key(codePage);
    place.host = DriveFolder(place.path.drive);
    const std::size_t driveLength = place.host.size();
    for (const std::string& name : place.path.names) {
        place.host += '/';
        place.host += name;
    }
    // The spelling asked for is there as a rule.
    if (stat(place.host.c_str(), &place.status) != 0) {
        place.host.resize(driveLength);
        Match(place, codePage);
    }
    if (place.Exists() && place.path.endsInSeparator && !place.IsDirectory()) {
        place.code = ERROR_INVALID_NAME;
    }
    return place;
}

/// Finds the stored spelling name by name, as far as the path goes.
void HostPlaces::Match(Place& place, UINT codePage) {
    bool found = stat(place.host.c_str(), &place.status) == 0 && S_ISDIR(place.status.st_mode);
    place.code = found ? ERROR_SUCCESS : ERROR_PATH_NOT_FOUND;
    std::string asked = place.host;
    for (const std::string& wanted : place.path.names) {
        asked += "/" + wanted;
        if (!found) {
            place.host += "/" + wanted;
            continue;
        }
        const bool isInFolder = S_ISDIR(place.status.st_mode);
        found = MatchName(asked, wanted, codePage, place.host, place.status);
        if (!found) {
            const bool isLast = &wanted == &place.path.names.back();
            place.code = isLast && isInFolder ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND;
        }
    }
}

/// Goes one name further: host gets the name as it is stored, status what is there. False when nothing matches; host
/// gets the name as it was asked for then.
bool HostPlaces::MatchName(const std::string& asked, const std::string& wanted, UINT codePage, std::string& host,
                           struct stat& status) {
    const std::string folder = std::exchange(host, host + "/" + wanted);
    if (!S_ISDIR(status.st_mode)) {
        return false;
    }
    if (const auto known = m_spellings.find(asked);
        known != m_spellings.end() && stat(known->second.c_str(), &status) == 0) {
        host = known->second;
        return true;
    }
    if (stat(host.c_str(), &status) == 0) {
        return true;
    }
    const std::string name = m_names.Find(folder, wanted, codePage);
    const std::string stored = folder + "/" + name;
    if (name.empty() || stat(stored.c_str(), &status) != 0) {
        return false;
    }
    host = stored;
    if (S_ISDIR(status.st_mode)) {
        if (m_spellings.size() >= kMostSpellings) {
            m_spellings.clear();
        }
        m_spellings[asked] = stored;
    }
    return true;
}

}  // namespace pikel::simulated
