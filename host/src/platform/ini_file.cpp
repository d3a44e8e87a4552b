// IniFile: reads the file into lines, answers or edits them, and writes the file back in its own encoding.
#include "platform/ini_file.h"

#include "strclass.h"

#include <cerrno>
#include <cstring>
#include <cwctype>
#include <fstream>
#include <optional>
#include <iterator>
#include <unistd.h>

namespace hostrt {

namespace {

enum class Encoding { Utf8, Utf8Bom, Utf16Le };

// The file as lines, with what is needed to write it back the way it was.
struct Document {
    std::vector<std::wstring> lines;
    Encoding encoding = Encoding::Utf8;
    bool crlf = false;
};

std::string describe(const std::filesystem::path& path) { return "'" + path.string() + "'"; }
std::string narrow(std::wstring_view text) { return MaxSDK::ToUTF8(text); }

bool equalsNoCase(std::wstring_view a, std::wstring_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (std::towlower(a[i]) != std::towlower(b[i])) return false;
    return true;
}

std::wstring_view trim(std::wstring_view s) {
    while (!s.empty() && std::iswspace(s.front())) s.remove_prefix(1);
    while (!s.empty() && std::iswspace(s.back())) s.remove_suffix(1);
    return s;
}

// "[name]" → name (blanks around it dropped); nothing for other lines.
std::optional<std::wstring_view> sectionOf(std::wstring_view line) {
    line = trim(line);
    if (line.size() < 2 || line.front() != L'[') return std::nullopt;
    const std::size_t close = line.find(L']');
    if (close == std::wstring_view::npos) return std::nullopt;
    return trim(line.substr(1, close - 1));
}

struct Entry {
    std::wstring_view key;
    std::wstring_view value;
};
// "key=value" → both trimmed; nothing for comments, headers and lines without '='.
std::optional<Entry> entryOf(std::wstring_view line) {
    line = trim(line);
    if (line.empty() || line.front() == L';' || line.front() == L'[') return std::nullopt;
    const std::size_t eq = line.find(L'=');
    if (eq == std::wstring_view::npos) return std::nullopt;
    const std::wstring_view key = trim(line.substr(0, eq));
    if (key.empty()) return std::nullopt;
    return Entry{key, trim(line.substr(eq + 1))};
}

std::wstring unquote(std::wstring_view value) {
    if (value.size() >= 2 && (value.front() == L'"' || value.front() == L'\'') && value.back() == value.front())
        value = value.substr(1, value.size() - 2);
    return std::wstring(value);
}

std::wstring decodeUtf16Le(std::string_view bytes) {
    std::wstring out;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        char32_t unit = char32_t(static_cast<unsigned char>(bytes[i])) |
                        (char32_t(static_cast<unsigned char>(bytes[i + 1])) << 8);
        if (unit >= 0xD800 && unit <= 0xDBFF && i + 3 < bytes.size()) {
            const char32_t low = char32_t(static_cast<unsigned char>(bytes[i + 2])) |
                                 (char32_t(static_cast<unsigned char>(bytes[i + 3])) << 8);
            if (low >= 0xDC00 && low <= 0xDFFF) {
                unit = 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
                i += 2;
            }
        }
        out += wchar_t(unit);
    }
    return out;
}

std::string encodeUtf16Le(std::wstring_view text) {
    std::string out;
    auto put = [&out](char32_t unit) {
        out += char(unit & 0xFF);
        out += char((unit >> 8) & 0xFF);
    };
    for (wchar_t wc : text) {
        const auto c = char32_t(wc);
        if (c >= 0x10000 && c <= 0x10FFFF) {
            put(0xD800 + ((c - 0x10000) >> 10));
            put(0xDC00 + ((c - 0x10000) & 0x3FF));
        } else {
            put(c > 0x10FFFF ? 0xFFFD : c);
        }
    }
    return out;
}

Document load(const std::filesystem::path& path) {
    Document doc;
    std::error_code ec;
    const auto status = std::filesystem::status(path, ec);
    if (!std::filesystem::exists(status)) return doc;
    if (std::filesystem::is_directory(status))
        throw IniError("cannot read the settings file " + describe(path) + ": it is a folder");
    std::ifstream in(path, std::ios::binary);
    if (!in) throw IniError("cannot read the settings file " + describe(path) + ": " + std::strerror(errno));
    const std::string bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    if (in.bad()) throw IniError("cannot read the settings file " + describe(path) + ": " + std::strerror(errno));
    std::wstring text;
    if (bytes.size() >= 2 && bytes[0] == '\xFF' && bytes[1] == '\xFE') {
        doc.encoding = Encoding::Utf16Le;
        text = decodeUtf16Le(std::string_view(bytes).substr(2));
    } else if (bytes.size() >= 3 && bytes.compare(0, 3, "\xEF\xBB\xBF") == 0) {
        doc.encoding = Encoding::Utf8Bom;
        text = MaxSDK::FromUTF8(std::string_view(bytes).substr(3));
    } else {
        text = MaxSDK::FromUTF8(bytes);
    }
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = text.find(L'\n', start);
        if (end == std::wstring::npos) end = text.size();
        std::wstring line = text.substr(start, end - start);
        if (!line.empty() && line.back() == L'\r') {
            line.pop_back();
            doc.crlf = true;
        }
        doc.lines.push_back(std::move(line));
        start = end + 1;
    }
    return doc;
}

// Writes a sibling file and renames it over the old one, so a failed write never leaves half a file.
void save(const std::filesystem::path& path, const Document& doc) {
    std::error_code ec;
    if (path.has_parent_path()) {
        std::filesystem::create_directories(path.parent_path(), ec);
        if (ec)
            throw IniError("cannot make the folder of the settings file " + describe(path) + ": " + ec.message());
    }
    std::wstring text;
    for (const std::wstring& line : doc.lines) text += line + (doc.crlf ? L"\r\n" : L"\n");
    std::string bytes;
    switch (doc.encoding) {
        case Encoding::Utf16Le: bytes = "\xFF\xFE" + encodeUtf16Le(text); break;
        case Encoding::Utf8Bom: bytes = "\xEF\xBB\xBF" + MaxSDK::ToUTF8(text); break;
        case Encoding::Utf8: bytes = MaxSDK::ToUTF8(text); break;
    }
    std::filesystem::path temp = path;
    temp += ".tmp" + std::to_string(::getpid());
    {
        std::ofstream out(temp, std::ios::binary | std::ios::trunc);
        if (!out) throw IniError("cannot write the settings file " + describe(path) + ": " + std::strerror(errno));
        out.write(bytes.data(), std::streamsize(bytes.size()));
        out.close();
        if (!out) {
            const std::string reason = std::strerror(errno);
            std::filesystem::remove(temp, ec);
            throw IniError("cannot write the settings file " + describe(path) + ": " + reason);
        }
    }
    std::filesystem::rename(temp, path, ec);
    if (ec) {
        std::filesystem::remove(temp, ec);
        throw IniError("cannot replace the settings file " + describe(path) + ": " + ec.message());
    }
}

// Index of the header line of section, or of its first occurrence; nothing when absent.
std::optional<std::size_t> findSection(const Document& doc, std::wstring_view section) {
    for (std::size_t i = 0; i < doc.lines.size(); ++i) {
        auto name = sectionOf(doc.lines[i]);
        if (name && equalsNoCase(*name, trim(section))) return i;
    }
    return std::nullopt;
}

// One past the last line of the section whose header is at line header.
std::size_t sectionEnd(const Document& doc, std::size_t header) {
    std::size_t i = header + 1;
    while (i < doc.lines.size() && !sectionOf(doc.lines[i])) ++i;
    return i;
}

std::optional<std::size_t> findKey(const Document& doc, std::wstring_view section, std::wstring_view key) {
    const auto header = findSection(doc, section);
    if (!header) return std::nullopt;
    const std::size_t end = sectionEnd(doc, *header);
    for (std::size_t i = *header + 1; i < end; ++i) {
        auto entry = entryOf(doc.lines[i]);
        if (entry && equalsNoCase(entry->key, trim(key))) return i;
    }
    return std::nullopt;
}

void checkStorable(const std::filesystem::path& path, std::wstring_view section, std::wstring_view key,
                   std::wstring_view value) {
    auto fail = [&](const std::string& what) {
        throw IniError("cannot store [" + narrow(section) + "] " + narrow(key) + " in the settings file " +
                       describe(path) + ": " + what);
    };
    auto hasBreak = [](std::wstring_view s) { return s.find_first_of(L"\r\n") != std::wstring_view::npos; };
    if (trim(section).empty()) fail("the section name is empty");
    if (trim(key).empty()) fail("the key is empty");
    if (hasBreak(section) || hasBreak(key) || hasBreak(value)) fail("names and values cannot hold line breaks");
    if (section.find(L']') != std::wstring_view::npos) fail("a section name cannot hold ']'");
    if (key.find(L'=') != std::wstring_view::npos) fail("a key cannot hold '='");
    const std::wstring_view k = trim(key);
    if (k.front() == L';' || k.front() == L'[') fail("a key cannot start with ';' or '['");
}

}  // namespace

std::wstring IniFile::Get(std::wstring_view section, std::wstring_view key) const {
    const Document doc = load(path_);
    const auto line = findKey(doc, section, key);
    return line ? unquote(entryOf(doc.lines[*line])->value) : std::wstring();
}

bool IniFile::Contains(std::wstring_view section, std::wstring_view key) const {
    return findKey(load(path_), section, key).has_value();
}

std::vector<std::wstring> IniFile::Sections() const {
    std::vector<std::wstring> names;
    for (const std::wstring& line : load(path_).lines)
        if (auto name = sectionOf(line)) names.emplace_back(*name);
    return names;
}

std::vector<std::wstring> IniFile::Keys(std::wstring_view section) const {
    const Document doc = load(path_);
    std::vector<std::wstring> keys;
    const auto header = findSection(doc, section);
    if (!header) return keys;
    const std::size_t end = sectionEnd(doc, *header);
    for (std::size_t i = *header + 1; i < end; ++i)
        if (auto entry = entryOf(doc.lines[i])) keys.emplace_back(entry->key);
    return keys;
}

void IniFile::Set(std::wstring_view section, std::wstring_view key, std::wstring_view value) {
    checkStorable(path_, section, key, value);
    Document doc = load(path_);
    const std::wstring_view k = trim(key);
    if (const auto line = findKey(doc, section, key)) {
        // Keep the spelling the file already uses for the key.
        doc.lines[*line] = std::wstring(entryOf(doc.lines[*line])->key) + L"=" + std::wstring(value);
    } else if (const auto header = findSection(doc, section)) {
        std::size_t after = *header + 1;
        const std::size_t end = sectionEnd(doc, *header);
        for (std::size_t i = after; i < end; ++i)
            if (entryOf(doc.lines[i])) after = i + 1;
        doc.lines.insert(doc.lines.begin() + std::ptrdiff_t(after), std::wstring(k) + L"=" + std::wstring(value));
    } else {
        if (!doc.lines.empty() && !trim(doc.lines.back()).empty()) doc.lines.emplace_back();
        doc.lines.push_back(L"[" + std::wstring(trim(section)) + L"]");
        doc.lines.push_back(std::wstring(k) + L"=" + std::wstring(value));
    }
    save(path_, doc);
}

bool IniFile::Remove(std::wstring_view section, std::wstring_view key) {
    Document doc = load(path_);
    const auto line = findKey(doc, section, key);
    if (!line) return false;
    doc.lines.erase(doc.lines.begin() + std::ptrdiff_t(*line));
    save(path_, doc);
    return true;
}

bool IniFile::RemoveSection(std::wstring_view section) {
    Document doc = load(path_);
    const auto header = findSection(doc, section);
    if (!header) return false;
    doc.lines.erase(doc.lines.begin() + std::ptrdiff_t(*header),
                    doc.lines.begin() + std::ptrdiff_t(sectionEnd(doc, *header)));
    save(path_, doc);
    return true;
}

}  // namespace hostrt
