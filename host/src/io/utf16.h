// Conversion between the host's wide strings (32-bit wchar_t, UTF-32) and the UTF-16LE text stored in files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace hostrt {

// Appends text as UTF-16LE code units, characters above U+FFFF as surrogate pairs. Values that are no
// character (lone surrogates, above U+10FFFF) are stored as U+FFFD. No terminator is added.
void AppendUtf16LE(std::wstring_view text, std::vector<std::uint8_t>& out);

// Decodes UTF-16LE bytes up to the first zero unit (or the end). An unpaired surrogate becomes U+FFFD;
// a trailing odd byte is ignored (callers that care check the size first).
std::wstring DecodeUtf16LE(const std::uint8_t* bytes, std::size_t size);

}  // namespace hostrt
