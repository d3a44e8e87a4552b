// WStr and the host's printf-style formatting, where %s takes a wide string and %hs or %S a narrow one.
#include "strclass.h"

#include <cwctype>
#include <vector>

namespace MaxSDK {

namespace {
// Rewrites a host format into one the C library's wide printf reads: a bare %s / %c becomes %ls / %lc,
// %S / %C and %hs / %hc become the narrow %s / %c.
std::wstring translateFormat(const MCHAR* format) {
    std::wstring out;
    for (const MCHAR* p = format; *p; ++p) {
        out += *p;
        if (*p != L'%') continue;
        ++p;
        if (*p == L'%') { out += *p; continue; }
        // flags, width, precision
        while (*p && std::wcschr(L"-+ #0123456789.*", *p)) out += *p++;
        // length modifier
        std::wstring len;
        while (*p && std::wcschr(L"hlLqjzt", *p)) len += *p++;
        if (!*p) { out += len; break; }
        MCHAR conv = *p;
        if (conv == L's' || conv == L'c') {
            if (len.empty()) out += L'l';
            else if (len == L"h") len.clear();
            out += len;
            out += conv;
        } else if (conv == L'S' || conv == L'C') {
            out += (conv == L'S') ? L's' : L'c';
        } else {
            out += len;
            out += conv;
        }
    }
    return out;
}
}  // namespace

std::wstring FormatV(const MCHAR* format, va_list args) {
    if (!format) return {};
    const std::wstring fmt = translateFormat(format);
    std::vector<wchar_t> buf(256);
    for (;;) {
        va_list copy;
        va_copy(copy, args);
        int n = std::vswprintf(buf.data(), buf.size(), fmt.c_str(), copy);
        va_end(copy);
        if (n >= 0 && std::size_t(n) < buf.size()) return std::wstring(buf.data(), std::size_t(n));
        if (buf.size() > (std::size_t(1) << 26)) return std::wstring(buf.data());  // a format that never fits
        buf.resize(buf.size() * 4);
    }
}

std::wstring Format(const MCHAR* format, ...) {
    va_list args;
    va_start(args, format);
    std::wstring s = FormatV(format, args);
    va_end(args);
    return s;
}

std::string ToUTF8(std::wstring_view text) {
    std::string out;
    out.reserve(text.size());
    for (wchar_t wc : text) {
        auto c = static_cast<std::uint32_t>(wc);
        if (c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) c = 0xFFFD;
        if (c < 0x80) {
            out += char(c);
        } else if (c < 0x800) {
            out += char(0xC0 | (c >> 6));
            out += char(0x80 | (c & 0x3F));
        } else if (c < 0x10000) {
            out += char(0xE0 | (c >> 12));
            out += char(0x80 | ((c >> 6) & 0x3F));
            out += char(0x80 | (c & 0x3F));
        } else {
            out += char(0xF0 | (c >> 18));
            out += char(0x80 | ((c >> 12) & 0x3F));
            out += char(0x80 | ((c >> 6) & 0x3F));
            out += char(0x80 | (c & 0x3F));
        }
    }
    return out;
}

std::wstring FromUTF8(std::string_view text) {
    std::wstring out;
    out.reserve(text.size());
    const std::size_t n = text.size();
    for (std::size_t i = 0; i < n;) {
        auto b = static_cast<unsigned char>(text[i]);
        std::size_t extra;
        std::uint32_t c;
        if (b < 0x80) { extra = 0; c = b; }
        else if ((b >> 5) == 0x6) { extra = 1; c = b & 0x1F; }
        else if ((b >> 4) == 0xE) { extra = 2; c = b & 0x0F; }
        else if ((b >> 3) == 0x1E) { extra = 3; c = b & 0x07; }
        else { out += L'\uFFFD'; ++i; continue; }
        bool ok = i + extra < n;
        for (std::size_t k = 1; ok && k <= extra; ++k) {
            auto cb = static_cast<unsigned char>(text[i + k]);
            if ((cb & 0xC0) != 0x80) ok = false;
            else c = (c << 6) | (cb & 0x3F);
        }
        if (!ok) { out += L'\uFFFD'; ++i; continue; }
        out += wchar_t(c);
        i += extra + 1;
    }
    return out;
}

}  // namespace MaxSDK

int WStr::CompareNoCase(const WStr& o) const {
    std::size_t n = std::min(s_.size(), o.s_.size());
    for (std::size_t i = 0; i < n; ++i) {
        wint_t a = std::towlower(wint_t(s_[i])), b = std::towlower(wint_t(o.s_[i]));
        if (a != b) return a < b ? -1 : 1;
    }
    return s_.size() == o.s_.size() ? 0 : (s_.size() < o.s_.size() ? -1 : 1);
}

WStr WStr::Substr(int start, int n) const {
    if (start < 0) start = 0;
    if (std::size_t(start) >= s_.size()) return WStr();
    return WStr(s_.substr(std::size_t(start), n < 0 ? std::wstring::npos : std::size_t(n)));
}

int WStr::first(MCHAR c) const {
    auto p = s_.find(c);
    return p == std::wstring::npos ? -1 : int(p);
}

int WStr::last(MCHAR c) const {
    auto p = s_.rfind(c);
    return p == std::wstring::npos ? -1 : int(p);
}

int WStr::find(const WStr& what, int from) const {
    auto p = s_.find(what.s_, std::size_t(from < 0 ? 0 : from));
    return p == std::wstring::npos ? -1 : int(p);
}

void WStr::remove(int pos, int n) {
    if (pos < 0 || std::size_t(pos) >= s_.size()) return;
    s_.erase(std::size_t(pos), n < 0 ? std::wstring::npos : std::size_t(n));
}

WStr& WStr::toUpper() {
    for (auto& c : s_) c = wchar_t(std::towupper(wint_t(c)));
    return *this;
}

WStr& WStr::toLower() {
    for (auto& c : s_) c = wchar_t(std::towlower(wint_t(c)));
    return *this;
}

int WStr::vprintf(const MCHAR* format, va_list args) {
    s_ = MaxSDK::FormatV(format, args);
    return Length();
}

int WStr::printf(const MCHAR* format, ...) {
    va_list args;
    va_start(args, format);
    int n = vprintf(format, args);
    va_end(args);
    return n;
}

int WStr::append_printf(const MCHAR* format, ...) {
    va_list args;
    va_start(args, format);
    s_ += MaxSDK::FormatV(format, args);
    va_end(args);
    return Length();
}
