// Text files decoded by their byte-order mark.
#include "platform/text_files.h"

#include "strclass.h"

#include <fstream>
#include <iterator>
#include <system_error>

namespace hostrt {

std::optional<std::wstring> ReadTextFile(const std::filesystem::path& path) {
    std::error_code ec;
    if (std::filesystem::is_directory(path, ec)) return std::nullopt;
    std::ifstream in(path, std::ios::binary);
    if (!in) return std::nullopt;
    const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (bytes.size() >= 2 && (unsigned char)bytes[0] == 0xFF && (unsigned char)bytes[1] == 0xFE) {
        std::u16string units;
        for (std::size_t i = 2; i + 1 < bytes.size(); i += 2)
            units += char16_t((unsigned char)bytes[i] | ((unsigned char)bytes[i + 1] << 8));
        std::wstring text;
        for (std::size_t i = 0; i < units.size(); ++i) {
            char32_t c = units[i];
            if (c >= 0xD800 && c < 0xDC00 && i + 1 < units.size() && units[i + 1] >= 0xDC00 && units[i + 1] < 0xE000)
                c = 0x10000 + ((c - 0xD800) << 10) + (units[++i] - 0xDC00);
            text += wchar_t(c);
        }
        return text;
    }
    const bool bom = bytes.size() >= 3 && bytes.compare(0, 3, "\xEF\xBB\xBF") == 0;
    return MaxSDK::FromUTF8(std::string_view(bytes).substr(bom ? 3 : 0));
}

}  // namespace hostrt
