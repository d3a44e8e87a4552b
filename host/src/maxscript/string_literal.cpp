// The one MAXScript string quoting of the host and its plug-ins.
#include "maxscript/string_literal.h"

std::wstring MaxScriptStringLiteral(std::wstring_view text) {
    std::wstring literal;
    literal.reserve(text.size() + 2);
    literal += L'"';
    for (wchar_t c : text) {
        switch (c) {
        case L'"': literal += L"\\\""; break;
        case L'\\': literal += L"\\\\"; break;
        case L'\n': literal += L"\\n"; break;
        case L'\r': literal += L"\\r"; break;
        case L'\t': literal += L"\\t"; break;
        default: literal += c;  // a percent sign is plain text in a literal; only format reads placeholders
        }
    }
    literal += L'"';
    return literal;
}
