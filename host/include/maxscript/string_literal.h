// MAXScript texts built from data: any text (a file name, a node name, a setting) becomes one quoted, escaped
// string literal, so quotes, backslashes, line breaks and percent signs in it are read back as the same text and
// never run as code. The host prints string values the same way.
#pragma once

#include <string>
#include <string_view>

// The text as a MAXScript string literal, quotes included: "a\"b\\c\nd".
std::wstring MaxScriptStringLiteral(std::wstring_view text);
