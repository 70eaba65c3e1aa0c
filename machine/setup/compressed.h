// Cabinets and compressed files, read through libmspack from bytes in memory.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "platform/types.h"

namespace pikel::simulated {

/// One file of a cabinet.
struct CabinetEntry {
    std::string name;  ///< as it stands in the cabinet: UTF-8 or bytes of some code page
    bool isUtf8 = false;
    DWORD size = 0;
    WORD attributes = 0;
    WORD date = 0;
    WORD time = 0;
};

enum class Compression { None, Szdd, Cabinet };

/// By the bytes at the file's start.
Compression CompressionOf(std::string_view bytes);

/// The name under which a medium has a compressed file: "name.dl_" for "name.dll", "name.x_" for "name.x", "name._" for
/// "name".
std::string CompressedName(const std::string& path);

/// Walks the files of a cabinet.
/// @param visit  called for each file with a function that expands it (nothing when it is damaged); false ends the walk
/// @return false for bytes that are no whole cabinet
bool WalkCabinet(std::string_view bytes,
                 const std::function<bool(const CabinetEntry& entry,
                                          const std::function<std::optional<std::string>()>& expand)>& visit);

/// The expanded bytes of a compressed file: of an SZDD file, or of the first file of a cabinet. Nothing for damaged
/// ones.
std::optional<std::string> Expand(std::string_view bytes);

/// Bytes that Expand will give, as the file itself tells.
std::optional<DWORD> ExpandedSize(std::string_view bytes);

}  // namespace pikel::simulated
