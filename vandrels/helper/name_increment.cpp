#include "name_increment.h"

#include <algorithm>
#include <string>

namespace vandrels {

MSTR NameFromFileName(const MCHAR* fileName) {
    const std::wstring path = fileName ? fileName : L"";
    const std::size_t slash = path.find_last_of(L"\\/");
    std::wstring file = slash == std::wstring::npos ? path : path.substr(slash + 1);
    const std::size_t dot = file.find(L'.');
    if (dot != std::wstring::npos) file.resize(dot);
    return MSTR(file);
}

MSTR IncrementName(const MSTR& name) {
    const std::wstring& text = name.str();
    std::size_t start = text.size();
    while (start > 0 && text[start - 1] >= L'0' && text[start - 1] <= L'9') --start;
    const std::size_t runLength = text.size() - start;
    if (runLength == 0) return MSTR(text + L"001");
    // Add one to the digit run as text, so that a run of any length carries without overflow.
    std::wstring digits = text.substr(start);
    std::size_t i = digits.size();
    while (i > 0 && digits[i - 1] == L'9') digits[--i] = L'0';
    if (i == 0)
        digits.insert(digits.begin(), L'1');
    else
        ++digits[i - 1];
    // The value written without leading zeros, then padded to the run's length or 3 digits.
    const std::size_t firstNonZero = std::min(digits.find_first_not_of(L'0'), digits.size() - 1);
    digits.erase(0, firstNonZero);
    const std::size_t width = std::max<std::size_t>(runLength, 3);
    if (digits.size() < width) digits.insert(0, width - digits.size(), L'0');
    return MSTR(text.substr(0, start) + digits);
}

MSTR MakeUniqueName(const MSTR& name, const std::function<bool(const MSTR&)>& taken, long maxIncrements) {
    MSTR candidate = name;
    for (long tries = 0; tries < maxIncrements && taken(candidate); ++tries) candidate = IncrementName(candidate);
    return candidate;
}

}  // namespace vandrels
