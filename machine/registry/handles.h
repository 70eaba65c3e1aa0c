// What the handles of the registry calls stand for.
#pragma once

#include <cstdint>
#include <string>

#include "platform/types.h"

namespace pikel::simulated {

/// Path of a predefined handle, which is never closed; null for any other. A 64-bit Windows extends the sign, so the
/// low half tells it.
const char* RootOf(HKEY key);

/// What a key handle stands for.
struct OpenKey {
    std::string path;
    std::uint64_t id = 0;  ///< the key's number when it was opened; another one, or none, there now: it was deleted
    REGSAM access = 0;
};

/// What a handle of the current machine stands for, predefined ones included.
/// @param key [out]  for a key that was deleted as it was
/// @return 0, 6 for a handle that is no open key, 1018 for a key that was deleted
DWORD ResolveKey(HKEY handle, OpenKey& key);

/// Path of the key that a handle of the current machine stands for, predefined ones included.
/// @param path [out]  as Registry takes it; only with code 0
/// @return 0, 6 for a handle that is no open key, 1018 for a key that was deleted
DWORD PathOfKey(HKEY handle, std::string& path);

/// Opens a key that is there.
/// @param access  rights asked for; the handle carries what they come to
/// @return 0, or 5 without the rights
LSTATUS OpenKeyHandle(const std::string& path, REGSAM access, PHKEY result);

}  // namespace pikel::simulated
