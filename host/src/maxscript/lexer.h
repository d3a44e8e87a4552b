// The MAXScript lexer: turns source text into tokens, each knowing its line and column and whether blanks
// or a line break come before it (calls by juxtaposition end at a line break; `a[1]` indexes, `f [1,2,3]`
// passes a point).
#pragma once

#include "maxscript/errors.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace hostrt::mxs {

enum class Tok {
    End,
    Integer,
    Float,
    Time,     // number with a frame/tick/second suffix: 10f, 2t, 1s (value in ticks)
    String,   // decoded text
    Name,     // #foo (text without '#')
    Ident,    // identifiers and reserved words (text as written)
    Keyword,  // `name:` (text without ':')
    Path,     // $name, $name*, $ (text without '$')
    Punct,    // ( ) [ ] { } , ; . : :: = += -= *= /= == != < <= > >= + - * / ^ & ? #( #{ ..
    Error,    // where a lenient run stopped on text that is no token (the error is kept beside the tokens)
};

struct Token {
    Tok kind = Tok::End;
    std::wstring text;
    double number = 0;  // Integer, Float, Time
    int line = 1;
    int column = 1;
    bool spaceBefore = false;    // blanks, a comment or a line break come right before it
    bool newlineBefore = false;  // a line break comes before it (since the previous token)

    bool Is(Tok k, std::wstring_view t) const { return kind == k && text == t; }
    bool IsPunct(std::wstring_view t) const { return kind == Tok::Punct && text == t; }
    // A reserved word or identifier equal to word without regard to case.
    bool IsWord(std::wstring_view word) const;
};

// Tokenises the whole text; throws ScriptError (syntax) for an unterminated string or comment or a stray
// character. The last token is End.
std::vector<Token> Tokenize(std::wstring_view source);

// Tokenises as far as the text reads. When it meets text that is no token, the tokens end with an Error
// token at that place (then End) and error holds the syntax error, so that a runner can run what comes
// before it first.
struct LexResult {
    std::vector<Token> tokens;
    std::unique_ptr<ScriptError> error;  // null when the whole text reads
};
LexResult TokenizeLenient(std::wstring_view source);

// The text of line n (1-based) of source, without its line break.
std::wstring SourceLine(std::wstring_view source, int line);

}  // namespace hostrt::mxs
