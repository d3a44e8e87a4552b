// The MAXScript lexer.
#include "maxscript/lexer.h"

#include "geom.h"
#include "maxscript/errors.h"

#include <cmath>
#include <cstdint>
#include <cwctype>

namespace hostrt::mxs {

bool Token::IsWord(std::wstring_view word) const { return kind == Tok::Ident && EqualsNoCase(text, word); }

namespace {

bool IsIdentStart(wchar_t c) { return c == L'_' || std::iswalpha(wint_t(c)); }
bool IsIdentChar(wchar_t c) { return c == L'_' || std::iswalnum(wint_t(c)); }
bool IsDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

class Lexer {
public:
    explicit Lexer(std::wstring_view src) : src_(src) {}

    std::vector<Token> Run() {
        for (;;) {
            bool space = false;
            bool newline = false;
            skipBlanks(space, newline);
            Token t;
            t.line = line_;
            t.column = column();
            t.spaceBefore = space || tokens_.empty();
            t.newlineBefore = newline;
            if (pos_ >= src_.size()) {
                t.kind = Tok::End;
                tokens_.push_back(t);
                return std::move(tokens_);
            }
            lexToken(t);
            tokens_.push_back(std::move(t));
        }
    }

    // The tokens read before an error.
    std::vector<Token> TakeTokens() { return std::move(tokens_); }

private:
    wchar_t peek(std::size_t ahead = 0) const {
        return pos_ + ahead < src_.size() ? src_[pos_ + ahead] : L'\0';
    }
    int column() const { return int(pos_ - lineStart_) + 1; }
    void advance() {
        if (src_[pos_] == L'\n') {
            ++line_;
            lineStart_ = pos_ + 1;
        }
        ++pos_;
    }

    [[noreturn]] void fail(int line, int col, const std::wstring& at, const std::wstring& expected) {
        ScriptError e = SyntaxError(at, expected);
        e.SetLocation(line, col);
        throw e;
    }

    void skipBlanks(bool& space, bool& newline) {
        while (pos_ < src_.size()) {
            const wchar_t c = peek();
            if (c == L'\n') {
                newline = space = true;
                advance();
            } else if (c == L' ' || c == L'\t' || c == L'\r' || c == L'\f' || c == L'\v') {
                space = true;
                advance();
            } else if (c == L'-' && peek(1) == L'-') {
                space = true;
                while (pos_ < src_.size() && peek() != L'\n') advance();
            } else if (c == L'/' && peek(1) == L'*') {
                const int line = line_, col = column();
                space = true;
                advance();
                advance();
                while (pos_ < src_.size() && !(peek() == L'*' && peek(1) == L'/')) {
                    if (peek() == L'\n') newline = true;
                    advance();
                }
                if (pos_ >= src_.size()) fail(line, col, L"end of script", L"end of comment */");
                advance();
                advance();
            } else if (c == L'\\' && continuesLine()) {
                // A backslash at the end of a line joins the next line to this one.
                space = true;
                advance();
                while (pos_ < src_.size() && peek() != L'\n') advance();
                if (pos_ < src_.size()) advance();
            } else {
                return;
            }
        }
    }

    // A backslash with nothing but blanks, and perhaps a `--` comment, up to the end of its line.
    bool continuesLine() const {
        std::size_t p = pos_ + 1;
        while (p < src_.size() && (src_[p] == L' ' || src_[p] == L'\t' || src_[p] == L'\r')) ++p;
        if (p + 1 < src_.size() && src_[p] == L'-' && src_[p + 1] == L'-') return true;
        return p < src_.size() && src_[p] == L'\n';
    }

    void lexToken(Token& t) {
        const wchar_t c = peek();
        if (IsDigit(c)) return lexNumber(t);
        if (c == L'@' && peek(1) == L'"') return lexVerbatim(t);
        if (c == L'"') return lexString(t);
        if (IsIdentStart(c) || c == L'\'') return lexIdent(t);
        if (c == L'#') return lexHash(t);
        if (c == L'$') return lexPath(t);
        lexPunct(t);
    }

    void lexNumber(Token& t) {
        const std::size_t start = pos_;
        if (peek() == L'0' && (peek(1) == L'x' || peek(1) == L'X')) {
            advance();
            advance();
            unsigned long long v = 0;
            bool any = false;
            while (std::iswxdigit(wint_t(peek()))) {
                const wchar_t d = peek();
                v = v * 16 + unsigned(IsDigit(d) ? d - L'0' : (std::towlower(wint_t(d)) - L'a' + 10));
                any = true;
                advance();
            }
            if (!any) fail(t.line, t.column, std::wstring(src_.substr(start, pos_ - start)), L"<hexadecimal digits>");
            const bool wide = skipIntegerSuffix();
            t.kind = Tok::Integer;
            // 32-bit hexadecimal numbers wrap to negative integers; wider ones (with L or P) keep their value.
            t.number = wide ? double(v) : double(std::int32_t(std::uint32_t(v)));
            if (t.number > 2147483647.0) t.kind = Tok::Float;
            t.text = src_.substr(start, pos_ - start);
            failOnIdentChar(t, start);
            return;
        }
        double ticks = 0;
        bool timed = false;
        for (;;) {
            const std::size_t partStart = pos_;
            bool isFloat = false;
            while (IsDigit(peek())) advance();
            if (peek() == L'.' && IsDigit(peek(1))) {
                isFloat = true;
                advance();
                while (IsDigit(peek())) advance();
            }
            // Exponents: 1e5, and the double form 1.5d3 (d0 for no exponent).
            const wchar_t e = peek();
            if ((e == L'e' || e == L'E' || e == L'd' || e == L'D') &&
                (IsDigit(peek(1)) || ((peek(1) == L'+' || peek(1) == L'-') && IsDigit(peek(2))))) {
                isFloat = true;
                advance();
                if (peek() == L'+' || peek() == L'-') advance();
                while (IsDigit(peek())) advance();
            }
            std::wstring digits(src_.substr(partStart, pos_ - partStart));
            for (wchar_t& c : digits)
                if (c == L'd' || c == L'D') c = L'e';
            const double value = std::wcstod(digits.c_str(), nullptr);
            // Time suffixes: minutes, seconds, frames, ticks, written one after the other (1m2s3f).
            const wchar_t s = wchar_t(std::towlower(wint_t(peek())));
            if (s == L'f' || s == L't' || s == L's' || s == L'm') {
                const wchar_t after = peek(1);
                if (!IsIdentChar(after) || IsDigit(after)) {
                    advance();
                    const double perUnit = s == L'f'   ? GetTicksPerFrame()
                                           : s == L't' ? 1.0
                                           : s == L's' ? TIME_TICKSPERSEC
                                                       : 60.0 * TIME_TICKSPERSEC;
                    ticks += value * perUnit;
                    timed = true;
                    if (IsDigit(peek())) continue;
                    t.kind = Tok::Time;
                    t.number = std::round(ticks);
                    t.text = src_.substr(start, pos_ - start);
                    failOnIdentChar(t, start);
                    return;
                }
            }
            if (timed) fail(t.line, t.column, std::wstring(src_.substr(start, pos_ - start + 1)), L"<time>");
            t.text = src_.substr(start, pos_ - start);
            t.number = value;
            // 1L (64-bit) and 1P (pointer-sized) integers.
            if (!isFloat && skipIntegerSuffix()) t.text = src_.substr(start, pos_ - start);
            failOnIdentChar(t, start);
            t.kind = (isFloat || t.number > 2147483647.0) ? Tok::Float : Tok::Integer;
            return;
        }
    }

    bool skipIntegerSuffix() {
        const wchar_t c = peek();
        if ((c == L'L' || c == L'l' || c == L'P' || c == L'p') && !IsIdentChar(peek(1))) {
            advance();
            return true;
        }
        return false;
    }

    void failOnIdentChar(const Token& t, std::size_t start) {
        if (IsIdentChar(peek()))
            fail(t.line, t.column, std::wstring(src_.substr(start, pos_ - start + 1)), L"<number>");
    }

    void lexVerbatim(Token& t) {
        advance();  // @
        advance();  // "
        std::wstring text;
        while (pos_ < src_.size() && peek() != L'"') {
            text += peek();
            advance();
        }
        if (pos_ >= src_.size()) fail(t.line, t.column, L"end of script", L"closing \" of the string");
        advance();
        t.kind = Tok::String;
        t.text = std::move(text);
    }

    void lexString(Token& t) {
        advance();
        std::wstring text;
        while (pos_ < src_.size() && peek() != L'"') {
            wchar_t c = peek();
            if (c == L'\\' && pos_ + 1 < src_.size()) {
                advance();
                const wchar_t e = peek();
                switch (e) {
                case L'n': text += L'\n'; break;
                case L't': text += L'\t'; break;
                case L'r': text += L'\r'; break;
                case L'"': text += L'"'; break;
                case L'\\': text += L'\\'; break;
                default:
                    // Unknown escapes keep their backslash, as MAXScript does; "\%" stays so that format
                    // can tell a literal percent sign from a placeholder.
                    text += L'\\';
                    text += e;
                }
                advance();
                continue;
            }
            text += c;
            advance();
        }
        if (pos_ >= src_.size()) fail(t.line, t.column, L"end of script", L"closing \" of the string");
        advance();
        t.kind = Tok::String;
        t.text = std::move(text);
    }

    std::wstring quotedName(const Token& t) {
        advance();  // '
        std::wstring text;
        while (pos_ < src_.size() && peek() != L'\'') {
            text += peek();
            advance();
        }
        if (pos_ >= src_.size()) fail(t.line, t.column, L"end of script", L"closing ' of the name");
        advance();
        return text;
    }

    std::wstring identText(const Token& t) {
        if (peek() == L'\'') return quotedName(t);
        const std::size_t start = pos_;
        while (IsIdentChar(peek())) advance();
        return std::wstring(src_.substr(start, pos_ - start));
    }

    void lexIdent(Token& t) {
        t.text = identText(t);
        if (peek() == L':' && peek(1) != L':') {
            advance();
            t.kind = Tok::Keyword;
        } else {
            t.kind = Tok::Ident;
        }
    }

    void lexHash(Token& t) {
        advance();
        // `# (` and `# {` with blanks between are still array and bit-array literals.
        std::size_t ahead = 0;
        while (peek(ahead) == L' ' || peek(ahead) == L'\t') ++ahead;
        if (ahead > 0 && (peek(ahead) == L'(' || peek(ahead) == L'{'))
            for (std::size_t i = 0; i < ahead; ++i) advance();
        if (peek() == L'(' || peek() == L'{') {
            t.kind = Tok::Punct;
            t.text = std::wstring(L"#") + peek();
            advance();
            return;
        }
        if (IsIdentChar(peek()) || peek() == L'\'') {
            t.kind = Tok::Name;
            t.text = identText(t);
            return;
        }
        fail(t.line, t.column, L"#", L"<name>, #( or #{");
    }

    void lexPath(Token& t) {
        advance();
        std::wstring text;
        for (;;) {
            const wchar_t c = peek();
            if (c == L'\'') {
                text += quotedName(t);
            } else if (IsIdentChar(c) || c == L'*' || c == L'?' || c == L'/' || c == L'\\') {
                text += c;
                advance();
            } else {
                break;
            }
        }
        t.kind = Tok::Path;
        t.text = std::move(text);
    }

    void lexPunct(Token& t) {
        static const wchar_t* const twoChar[] = {L"==", L"!=", L"<=", L">=", L"+=", L"-=", L"*=", L"/=", L"..", L"::"};
        for (const wchar_t* op : twoChar) {
            if (peek() == op[0] && peek(1) == op[1]) {
                t.kind = Tok::Punct;
                t.text = op;
                advance();
                advance();
                return;
            }
        }
        const wchar_t c = peek();
        if (std::wstring_view(L"()[]{},;.:=<>+-*/^&?").find(c) == std::wstring_view::npos)
            fail(t.line, t.column, std::wstring(1, c), L"<expression>");
        t.kind = Tok::Punct;
        t.text = std::wstring(1, c);
        advance();
    }

    std::wstring_view src_;
    std::vector<Token> tokens_;
    std::size_t pos_ = 0;
    std::size_t lineStart_ = 0;
    int line_ = 1;
};

}  // namespace

std::vector<Token> Tokenize(std::wstring_view source) { return Lexer(source).Run(); }

LexResult TokenizeLenient(std::wstring_view source) {
    LexResult result;
    Lexer lexer(source);
    try {
        result.tokens = lexer.Run();
    } catch (ScriptError& e) {
        result.tokens = lexer.TakeTokens();
        Token stop;
        stop.kind = Tok::Error;
        stop.line = e.Line();
        stop.column = e.Column();
        stop.spaceBefore = true;
        Token end = stop;
        end.kind = Tok::End;
        result.tokens.push_back(stop);
        result.tokens.push_back(end);
        result.error = std::make_unique<ScriptError>(std::move(e));
    }
    return result;
}

std::wstring SourceLine(std::wstring_view source, int line) {
    std::size_t start = 0;
    for (int n = 1; n < line; ++n) {
        start = source.find(L'\n', start);
        if (start == std::wstring_view::npos) return L"";
        ++start;
    }
    std::size_t end = source.find(L'\n', start);
    std::wstring text(source.substr(start, end == std::wstring_view::npos ? std::wstring_view::npos : end - start));
    while (!text.empty() && (text.back() == L'\r')) text.pop_back();
    return text;
}

}  // namespace hostrt::mxs
