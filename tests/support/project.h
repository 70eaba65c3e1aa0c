// Where the project and its build lie on the host.
#pragma once

#include <string>

namespace pikel::testing_support {

/// The project's folder, without a slash at its end.
const std::string& SourceDir();
/// The folder with the build's programs and libraries.
const std::string& BinDir();

}  // namespace pikel::testing_support
