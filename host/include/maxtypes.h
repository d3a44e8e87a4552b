// Scalar types, identifiers and result codes of the host SDK, with the widths of the host's platform:
// DWORD, ULONG and UINT are 32-bit, BOOL is a 32-bit int, part identifiers are pointer-sized.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cwchar>
#include <functional>

using DWORD = std::uint32_t;
using ULONG = std::uint32_t;
using UINT = std::uint32_t;
using LONG = std::int32_t;
using BOOL = std::int32_t;
using USHORT = std::uint16_t;
using WORD = std::uint16_t;
using BYTE = std::uint8_t;
using UBYTE = std::uint8_t;
using INT_PTR = std::intptr_t;
using UINT_PTR = std::uintptr_t;
using ULONG_PTR = std::uintptr_t;
using DWORD_PTR = std::uintptr_t;
using LPARAM = std::intptr_t;
using WPARAM = std::uintptr_t;
using LRESULT = std::intptr_t;
using COLORREF = DWORD;
using HINSTANCE = void*;
using HMODULE = void*;
using HWND = void*;
using HICON = void*;
using HCURSOR = void*;

#ifndef TRUE
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif

// Wide characters throughout; literals are written _T("...") or _M("...").
using MCHAR = wchar_t;
using TCHAR = wchar_t;
#ifndef _T
#define _T(x) L##x
#endif
#ifndef _M
#define _M(x) L##x
#endif

#define RGB(r, g, b) ((COLORREF)(((BYTE)(r) | ((WORD)((BYTE)(g)) << 8)) | (((DWORD)(BYTE)(b)) << 16)))
#define GetRValue(rgb) ((BYTE)(rgb))
#define GetGValue(rgb) ((BYTE)(((WORD)(rgb)) >> 8))
#define GetBValue(rgb) ((BYTE)((rgb) >> 16))

// 64-bit file time in 100 ns units since 1601-01-01 (UTC).
struct FILETIME {
    DWORD dwLowDateTime = 0;
    DWORD dwHighDateTime = 0;
};

using TimeValue = int;
using SClass_ID = ULONG;
using RefMessage = unsigned int;
using PartID = ULONG_PTR;
using AnimHandle = ULONG;

// Results of reference messages.
using RefResult = int;
enum : RefResult { REF_FAIL = 0, REF_SUCCEED = 1, REF_DONTCARE = 2, REF_STOP = 3, REF_INVALID = 4 };

// Results of chunked input and output.
enum IOResult { IO_OK = 0, IO_END = 1, IO_ERROR = 2 };

// Class identifier: a pair of unsigned 32-bit numbers.
class Class_ID {
public:
    constexpr Class_ID() = default;
    constexpr Class_ID(ULONG aa, ULONG bb) : a(aa), b(bb) {}
    constexpr ULONG PartA() const { return a; }
    constexpr ULONG PartB() const { return b; }
    void SetPartA(ULONG v) { a = v; }
    void SetPartB(ULONG v) { b = v; }
    constexpr bool operator==(const Class_ID& o) const { return a == o.a && b == o.b; }
    constexpr bool operator!=(const Class_ID& o) const { return !(*this == o); }
    constexpr bool operator<(const Class_ID& o) const { return a < o.a || (a == o.a && b < o.b); }

private:
    ULONG a = 0xFFFFFFFF;
    ULONG b = 0xFFFFFFFF;
};

// Interface identifier of function-publishing and extension interfaces.
class Interface_ID {
public:
    constexpr Interface_ID() = default;
    constexpr Interface_ID(ULONG aa, ULONG bb) : a(aa), b(bb) {}
    constexpr ULONG PartA() const { return a; }
    constexpr ULONG PartB() const { return b; }
    constexpr bool operator==(const Interface_ID& o) const { return a == o.a && b == o.b; }
    constexpr bool operator!=(const Interface_ID& o) const { return !(*this == o); }
    constexpr bool operator<(const Interface_ID& o) const { return a < o.a || (a == o.a && b < o.b); }

private:
    ULONG a = 0xFFFFFFFF;
    ULONG b = 0xFFFFFFFF;
};

template <> struct std::hash<Class_ID> {
    std::size_t operator()(const Class_ID& c) const noexcept {
        return (std::size_t(c.PartA()) << 32) ^ std::size_t(c.PartB());
    }
};
template <> struct std::hash<Interface_ID> {
    std::size_t operator()(const Interface_ID& c) const noexcept {
        return (std::size_t(c.PartA()) << 32) ^ std::size_t(c.PartB());
    }
};

// The SDK version constant of this host generation: release 27900, interface 68, revision 0.
#define MAX_RELEASE 27900
#define MAX_API_NUM 68
#define MAX_SDK_REV 0
#define MAXPLUGINAPI_VERSION(rel, api, rev) ((ULONG)(((rel) << 16) | ((api) << 8) | (rev)))
#define VERSION_3DSMAX MAXPLUGINAPI_VERSION(MAX_RELEASE, MAX_API_NUM, MAX_SDK_REV)
static_assert(VERSION_3DSMAX == 0x6CFC4400u);
