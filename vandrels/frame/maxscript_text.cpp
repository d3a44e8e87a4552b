#include "frame/maxscript_text.h"

namespace vandrels {

std::wstring MaxScriptStringLiteral(const std::wstring& text) {
    std::wstring literal = L"\"";
    for (wchar_t c : text) {
        switch (c) {
        case L'"': literal += L"\\\""; break;
        case L'\\': literal += L"\\\\"; break;
        case L'\n': literal += L"\\n"; break;
        case L'\r': literal += L"\\r"; break;
        case L'\t': literal += L"\\t"; break;
        default: literal += c;
        }
    }
    return literal + L"\"";
}

}  // namespace vandrels
