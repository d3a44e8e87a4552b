// IniFile: a settings file of [sections] and key=value lines, all values text, read and written like the
// Windows profile functions: names compare without regard to case, every write goes to disk at once.
#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace hostrt {

// A settings file that cannot be read or written, or a name or value that cannot be stored.
class IniError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Every call reads the file afresh, so several IniFile objects (and other programs) share one file. A missing
// file reads as empty and is made, with its folders, by the first write. Rewriting keeps comments (';'),
// blank lines, other lines, the line ending (LF or CRLF) and the encoding (UTF-8, or UTF-16LE with its BOM).
class IniFile {
public:
    IniFile() = default;
    explicit IniFile(std::filesystem::path path) : path_(std::move(path)) {}
    const std::filesystem::path& Path() const { return path_; }

    // The value of key in section: the text after '=', without surrounding blanks and without one pair of
    // enclosing quotes. "" when the section or the key is missing.
    std::wstring Get(std::wstring_view section, std::wstring_view key) const;
    bool Contains(std::wstring_view section, std::wstring_view key) const;
    // Section names, and the key names of one section, in file order as the file spells them.
    std::vector<std::wstring> Sections() const;
    std::vector<std::wstring> Keys(std::wstring_view section) const;

    // Sets key in section (both made when missing; a new key goes after the last key of its section).
    // Throws IniError for an empty key, a key with '=', a section with ']', line breaks anywhere, and when
    // the file cannot be written.
    void Set(std::wstring_view section, std::wstring_view key, std::wstring_view value);
    // Removes a key, or a section with all its lines; answers whether there was one.
    bool Remove(std::wstring_view section, std::wstring_view key);
    bool RemoveSection(std::wstring_view section);

private:
    std::filesystem::path path_;
};

}  // namespace hostrt
