// Whole files of the host: what a machine's own two files, machine.ini and registry.reg, are read and written with.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace pikel::simulated {

/// Reads a file whole. Throws MachineError, with the host's reason, when it can't.
std::string ReadHostFile(const std::filesystem::path& file);
/// Puts a file in the place of another one by rename, so that a reader sees the old or the new one and never a part.
/// Throws MachineError; the old file is untouched then.
void ReplaceHostFile(const std::filesystem::path& file, std::string_view bytes);

}  // namespace pikel::simulated
