// Error texts as MAXScript writes them, and the error report with its location.
#include "maxscript/errors.h"

#include "maxscript/print.h"
#include "strclass.h"

namespace hostrt::mxs {

ScriptError::ScriptError(ErrorKind kind, std::wstring text)
    : kind_(kind), text_(std::move(text)), narrow_(MaxSDK::ToUTF8(L"-- " + text_)) {}

void ScriptError::SetLocation(int line, int column) {
    line_ = line;
    column_ = column;
}

void ScriptError::SetSource(std::wstring source, std::wstring lineText) {
    source_ = std::move(source);
    lineText_ = std::move(lineText);
}

std::wstring ScriptError::Report() const {
    std::wstring out = L"-- " + text_ + L"\n";
    if (HasLocation()) {
        out += L"-- Error occurred in " + (source_.empty() ? std::wstring(L"anonymous codeblock") : source_) +
               L"; line: " + std::to_wstring(line_) + L"; column: " + std::to_wstring(column_) + L"\n";
        if (!lineText_.empty()) out += L"--  In line: " + lineText_ + L"\n";
    }
    return out;
}

ScriptError RuntimeError(const std::wstring& message) {
    return ScriptError(ErrorKind::Runtime, L"Runtime error: " + message);
}

ScriptError TypeError(const std::wstring& message) { return ScriptError(ErrorKind::Type, L"Type error: " + message); }

ScriptError UnknownPropertyError(const std::wstring& property, const Value& in) {
    return ScriptError(ErrorKind::UnknownProperty, L"Unknown property: \"" + property + L"\" in " + PrintForm(in));
}

ScriptError ArgCountError(const std::wstring& function, int wanted, int got) {
    return ScriptError(ErrorKind::ArgCount, L"Argument count error: " + function + L" wanted " +
                                                std::to_wstring(wanted) + L", got " + std::to_wstring(got));
}

ScriptError ArgCountRangeError(const std::wstring& function, int least, int most, int got) {
    const std::wstring wanted =
        got < least ? L"at least " + std::to_wstring(least) : L"at most " + std::to_wstring(most);
    return ScriptError(ErrorKind::ArgCount,
                       L"Argument count error: " + function + L" wanted " + wanted + L", got " + std::to_wstring(got));
}

ScriptError NoMethodError(const std::wstring& op, const Value& operand) {
    return ScriptError(ErrorKind::NoMethod, L"No \"\"" + op + L"\"\" function for " + PrintForm(operand));
}

ScriptError ConversionError(const Value& v, const std::wstring& toClass) {
    return ScriptError(ErrorKind::Conversion, L"Unable to convert: " + PrintForm(v) + L" to type: " + toClass);
}

ScriptError SyntaxError(const std::wstring& at, const std::wstring& expected) {
    return ScriptError(ErrorKind::Syntax, L"Syntax error: at " + at + L", expected " + expected);
}

}  // namespace hostrt::mxs
