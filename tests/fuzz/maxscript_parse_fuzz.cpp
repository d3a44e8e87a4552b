// libFuzzer target: arbitrary text (read as UTF-8) through the MAXScript lexer (strict and lenient), the whole-
// script parser, the one-expression-at-a-time reader and the listener's incomplete-input check. Bad text must
// end in a syntax error, never a crash or a hang.
#include "maxscript/errors.h"
#include "maxscript/lexer.h"
#include "maxscript/parser.h"
#include "strclass.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace hostrt::mxs;
    const std::wstring text =
        MaxSDK::FromUTF8(std::string_view(reinterpret_cast<const char*>(data), size));
    try {
        Tokenize(text);
    } catch (const ScriptError&) {
    }
    TokenizeLenient(text);
    try {
        Parse(text, L"fuzz.ms");
    } catch (const ScriptError&) {
    }
    try {
        auto program = std::make_shared<ast::Program>();
        program->source = text;
        program->sourceName = L"fuzz.ms";
        ScriptReader reader(program);
        while (reader.Next()) {
        }
    } catch (const ScriptError&) {
    }
    IsIncomplete(text);
    return 0;
}
