// Reading a whole text file as the host reads scripts: UTF-8 with or without its byte-order mark, or UTF-16LE
// with its mark.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace hostrt {

// The decoded text; nullopt when the file cannot be read (missing, a folder, no rights).
std::optional<std::wstring> ReadTextFile(const std::filesystem::path& path);

}  // namespace hostrt
