// Compressed files for tests: SZDD by a small writer, cabinets by the command gcab.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace pikel::testing_support {

/// An SZDD file that holds these bytes, without packing any of them.
std::string MakeSzdd(const std::string& bytes);

/// A cabinet with these files, name and bytes; a name may have folders, parted by slashes.
std::string MakeCabinet(const std::vector<std::pair<std::string, std::string>>& files);

}  // namespace pikel::testing_support
