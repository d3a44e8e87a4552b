// Path text helpers of the host: splitting where both '/' and '\' are separators, and the conversion between
// the host's wide path texts and file-system paths.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace hostrt {

bool IsPathSeparator(wchar_t c);

// The parts of a path as the C library's splitpath answers them: drive ("C:" or ""), folder with its
// trailing separator, file name without extension, extension from the last '.' of the file name (dot included).
struct PathParts {
    std::wstring drive;
    std::wstring directory;
    std::wstring stem;
    std::wstring extension;
};
PathParts SplitPath(std::wstring_view path);

// Drive and folder, up to and including the last separator ("" when the path has none).
std::wstring PathDirectory(std::wstring_view path);
// Everything after the last separator.
std::wstring PathFileName(std::wstring_view path);
// The file name without its extension.
std::wstring PathStem(std::wstring_view path);
// The extension with its dot ("" when the file name has no '.').
std::wstring PathExtension(std::wstring_view path);
// The path with a separator at its end (unchanged when it ends with one or is empty).
std::wstring WithTrailingSeparator(std::wstring_view path);

// A file-system path from a host path text: '\' becomes '/', the text is encoded as UTF-8.
std::filesystem::path ToNativePath(std::wstring_view path);
// The host path text of a file-system path (decoded from UTF-8).
std::wstring FromNativePath(const std::filesystem::path& path);

}  // namespace hostrt
