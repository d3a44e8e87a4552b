// WStr, the host's wide string (also known as MSTR and TSTR), and the host's printf-style formatting, which
// reads %s as a wide-string argument and %hs/%S as a narrow one, as on the host's own platform.
#pragma once

#include "maxtypes.h"

#include <cstdarg>
#include <string>
#include <string_view>

namespace MaxSDK {
// Formats with the host's conventions (see above) and answers the text.
std::wstring FormatV(const MCHAR* format, va_list args);
std::wstring Format(const MCHAR* format, ...);
// UTF-8 <-> wide conversions used at the edges (file names, terminals).
std::string ToUTF8(std::wstring_view text);
std::wstring FromUTF8(std::string_view text);
}  // namespace MaxSDK

class WStr {
public:
    WStr() = default;
    WStr(const MCHAR* s) : s_(s ? s : L"") {}
    WStr(const std::wstring& s) : s_(s) {}
    WStr(std::wstring&& s) : s_(std::move(s)) {}
    WStr(std::wstring_view s) : s_(s) {}
    explicit WStr(const char* utf8) : s_(MaxSDK::FromUTF8(utf8 ? utf8 : "")) {}

    static WStr FromUTF8(std::string_view utf8) { return WStr(MaxSDK::FromUTF8(utf8)); }
    std::string ToUTF8() const { return MaxSDK::ToUTF8(s_); }

    const MCHAR* data() const { return s_.c_str(); }
    const MCHAR* ToMCHAR() const { return s_.c_str(); }
    operator const MCHAR*() const { return s_.c_str(); }
    const std::wstring& str() const { return s_; }
    std::wstring& str() { return s_; }

    int Length() const { return int(s_.size()); }
    int length() const { return int(s_.size()); }
    bool isNull() const { return s_.empty(); }
    void Resize(int n) { s_.resize(n < 0 ? 0 : std::size_t(n)); }

    MCHAR& operator[](int i) { return s_[std::size_t(i)]; }
    MCHAR operator[](int i) const { return s_[std::size_t(i)]; }

    WStr& operator=(const MCHAR* s) { s_ = s ? s : L""; return *this; }
    WStr& operator+=(const WStr& o) { s_ += o.s_; return *this; }
    WStr& operator+=(const MCHAR* o) { s_ += o ? o : L""; return *this; }
    WStr& operator+=(MCHAR c) { s_ += c; return *this; }
    WStr& Append(const WStr& o) { s_ += o.s_; return *this; }

    friend WStr operator+(const WStr& a, const WStr& b) { return WStr(a.s_ + b.s_); }
    friend WStr operator+(const WStr& a, const MCHAR* b) { return WStr(a.s_ + (b ? b : L"")); }
    friend WStr operator+(const MCHAR* a, const WStr& b) { return WStr((a ? a : L"") + b.s_); }

    // Case-sensitive whole-string comparisons.
    friend bool operator==(const WStr& a, const WStr& b) { return a.s_ == b.s_; }
    friend bool operator==(const WStr& a, const MCHAR* b) { return a.s_ == (b ? b : L""); }
    friend bool operator==(const MCHAR* a, const WStr& b) { return b == a; }
    friend bool operator!=(const WStr& a, const WStr& b) { return !(a == b); }
    friend bool operator!=(const WStr& a, const MCHAR* b) { return !(a == b); }
    friend bool operator<(const WStr& a, const WStr& b) { return a.s_ < b.s_; }
    int Compare(const WStr& o) const { return s_.compare(o.s_); }
    int CompareNoCase(const WStr& o) const;
    bool EqualsNoCase(const WStr& o) const { return CompareNoCase(o) == 0; }

    // Substring of n characters from start (n < 0: to the end).
    WStr Substr(int start, int n = -1) const;
    // Index of the first/last occurrence of c or of a text, -1 when absent.
    int first(MCHAR c) const;
    int last(MCHAR c) const;
    int find(const WStr& what, int from = 0) const;
    void remove(int pos, int n = -1);
    WStr& toUpper();
    WStr& toLower();

    // Replaces the content with the formatted text (see MaxSDK::Format).
    int printf(const MCHAR* format, ...);
    int vprintf(const MCHAR* format, va_list args);
    int append_printf(const MCHAR* format, ...);

private:
    std::wstring s_;
};

using MSTR = WStr;
using TSTR = WStr;
