// The one file that knows these places: a build of another folder then shares all other objects with this one.
#include "support/project.h"

namespace pikel::testing_support {

const std::string& SourceDir() {
    static const std::string folder = PIKEL_SOURCE_DIR;
    return folder;
}

const std::string& BinDir() {
    static const std::string folder = PIKEL_BIN_DIR;
    return folder;
}

}  // namespace pikel::testing_support
