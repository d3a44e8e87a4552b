// UTF-16LE encoding and decoding of wide strings for chunk streams.
#include "io/utf16.h"

namespace hostrt {

namespace {

void putUnit(std::uint16_t u, std::vector<std::uint8_t>& out) {
    out.push_back(std::uint8_t(u & 0xFF));
    out.push_back(std::uint8_t(u >> 8));
}

bool isHighSurrogate(std::uint32_t u) { return u >= 0xD800 && u <= 0xDBFF; }
bool isLowSurrogate(std::uint32_t u) { return u >= 0xDC00 && u <= 0xDFFF; }

}  // namespace

void AppendUtf16LE(std::wstring_view text, std::vector<std::uint8_t>& out) {
    out.reserve(out.size() + text.size() * 2);
    for (wchar_t wc : text) {
        auto c = static_cast<std::uint32_t>(wc);
        if (c > 0x10FFFF || isHighSurrogate(c) || isLowSurrogate(c)) c = 0xFFFD;
        if (c < 0x10000) {
            putUnit(std::uint16_t(c), out);
        } else {
            c -= 0x10000;
            putUnit(std::uint16_t(0xD800 | (c >> 10)), out);
            putUnit(std::uint16_t(0xDC00 | (c & 0x3FF)), out);
        }
    }
}

std::wstring DecodeUtf16LE(const std::uint8_t* bytes, std::size_t size) {
    std::wstring out;
    const std::size_t units = size / 2;
    out.reserve(units);
    auto unit = [bytes](std::size_t i) { return std::uint32_t(bytes[2 * i]) | (std::uint32_t(bytes[2 * i + 1]) << 8); };
    for (std::size_t i = 0; i < units; ++i) {
        std::uint32_t u = unit(i);
        if (u == 0) break;
        if (isHighSurrogate(u) && i + 1 < units && isLowSurrogate(unit(i + 1))) {
            out += wchar_t(0x10000 + ((u - 0xD800) << 10) + (unit(i + 1) - 0xDC00));
            ++i;
        } else if (isHighSurrogate(u) || isLowSurrogate(u)) {
            out += wchar_t(0xFFFD);
        } else {
            out += wchar_t(u);
        }
    }
    return out;
}

}  // namespace hostrt
