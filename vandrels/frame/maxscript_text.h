// MAXScript texts built from data: a file name or any other text becomes a quoted, escaped string literal, so
// quotes, backslashes and line breaks in it never run as code.
#pragma once

#include <string>

namespace vandrels {

std::wstring MaxScriptStringLiteral(const std::wstring& text);

}  // namespace vandrels
