// Script errors as MAXScript reports them ("-- Type error: ...", "-- Unknown property: ...") with where they
// happened, and the signals that carry return, exit and continue out of nested evaluation.
#pragma once

#include "maxscript/value.h"

#include <exception>
#include <string>

namespace hostrt::mxs {

enum class ErrorKind {
    Syntax,           // "Syntax error: at ), expected <factor>"
    Runtime,          // "Runtime error: ..." (also what throw raises)
    Type,             // "Type error: ..."
    UnknownProperty,  // "Unknown property: "x" in undefined"
    ArgCount,         // "Argument count error: f wanted 1, got 2"
    NoMethod,         // "No ""+"" function for undefined"
    Conversion,       // "Unable to convert: #(1) to type: Integer"
};

class ScriptError : public std::exception {
public:
    ScriptError(ErrorKind kind, std::wstring text);

    ErrorKind Kind() const { return kind_; }
    // The error line without its "-- " lead: "Type error: Call needs function or class, got: undefined".
    const std::wstring& Text() const { return text_; }
    // What throw was given (a user error), else the text.
    const std::wstring& Message() const { return message_.empty() ? text_ : message_; }
    void SetMessage(std::wstring message) { message_ = std::move(message); }
    const char* what() const noexcept override { return narrow_.c_str(); }

    // Where it happened (line and column 1-based; 0 while unknown), the source's name and the line's text.
    bool HasLocation() const { return line_ > 0; }
    void SetLocation(int line, int column);
    void SetSource(std::wstring source, std::wstring lineText);
    int Line() const { return line_; }
    int Column() const { return column_; }
    const std::wstring& Source() const { return source_; }
    const std::wstring& LineText() const { return lineText_; }

    // "-- <text>" then, when known, "-- Error occurred in <source>; line: <n>; column: <c>" and the source
    // line ("--  In line: <text>"), each ending with a line break.
    std::wstring Report() const;

private:
    ErrorKind kind_;
    std::wstring text_;
    std::wstring message_;
    std::string narrow_;
    int line_ = 0;
    int column_ = 0;
    std::wstring source_;
    std::wstring lineText_;
};

// Makers of the usual errors. Values are shown as print shows them.
ScriptError RuntimeError(const std::wstring& message);
ScriptError TypeError(const std::wstring& message);
ScriptError UnknownPropertyError(const std::wstring& property, const Value& in);
ScriptError ArgCountError(const std::wstring& function, int wanted, int got);
// "wanted at least/most" forms for functions with optional arguments.
ScriptError ArgCountRangeError(const std::wstring& function, int least, int most, int got);
ScriptError NoMethodError(const std::wstring& op, const Value& operand);
ScriptError ConversionError(const Value& v, const std::wstring& toClass);
ScriptError SyntaxError(const std::wstring& at, const std::wstring& expected);

// Control transfers: caught by the function call, loop or interpreter they belong to, never by try/catch.
struct ReturnSignal {
    Value value;
};
struct ExitSignal {
    Value value;
};
struct ContinueSignal {};

}  // namespace hostrt::mxs
