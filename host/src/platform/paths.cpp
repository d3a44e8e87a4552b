// Path text helpers: splitting with both separators and conversion to and from file-system paths.
#include "platform/paths.h"

#include "strclass.h"

#include <algorithm>
#include <cwctype>

namespace hostrt {

bool IsPathSeparator(wchar_t c) { return c == L'/' || c == L'\\'; }

namespace {
std::size_t fileNameStart(std::wstring_view path) {
    for (std::size_t i = path.size(); i > 0; --i)
        if (IsPathSeparator(path[i - 1])) return i;
    // "C:name" has a drive and no separator.
    if (path.size() >= 2 && path[1] == L':' && std::iswalpha(path[0])) return 2;
    return 0;
}
}  // namespace

PathParts SplitPath(std::wstring_view path) {
    PathParts parts;
    std::size_t folderStart = 0;
    if (path.size() >= 2 && path[1] == L':' && std::iswalpha(path[0])) {
        parts.drive = path.substr(0, 2);
        folderStart = 2;
    }
    const std::size_t nameStart = std::max(fileNameStart(path), folderStart);
    parts.directory = path.substr(folderStart, nameStart - folderStart);
    const std::wstring_view name = path.substr(nameStart);
    const std::size_t dot = name.rfind(L'.');
    if (dot == std::wstring_view::npos) {
        parts.stem = name;
    } else {
        parts.stem = name.substr(0, dot);
        parts.extension = name.substr(dot);
    }
    return parts;
}

std::wstring PathDirectory(std::wstring_view path) { return std::wstring(path.substr(0, fileNameStart(path))); }

std::wstring PathFileName(std::wstring_view path) { return std::wstring(path.substr(fileNameStart(path))); }

std::wstring PathStem(std::wstring_view path) { return SplitPath(path).stem; }

std::wstring PathExtension(std::wstring_view path) { return SplitPath(path).extension; }

std::wstring WithTrailingSeparator(std::wstring_view path) {
    std::wstring out(path);
    if (!out.empty() && !IsPathSeparator(out.back())) out += L'/';
    return out;
}

std::filesystem::path ToNativePath(std::wstring_view path) {
    std::wstring text(path);
    std::replace(text.begin(), text.end(), L'\\', L'/');
    return std::filesystem::path(MaxSDK::ToUTF8(text));
}

std::wstring FromNativePath(const std::filesystem::path& path) { return MaxSDK::FromUTF8(path.string()); }

}  // namespace hostrt
