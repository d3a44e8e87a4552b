// The MAXScript parser: source text to a syntax tree. Syntax errors are thrown as ScriptError with the line,
// column and text of the offending token.
#pragma once

#include "maxscript/ast.h"

#include <memory>
#include <string>
#include <string_view>

namespace hostrt::mxs {

// Parses a whole script. sourceName names it in error reports (a file name; empty for typed text).
std::shared_ptr<ast::Program> Parse(std::wstring_view source, const std::wstring& sourceName = L"");

// Reads a script one top-level expression at a time, as MAXScript runs a file: the runner evaluates each
// expression before the next is read, so a syntax error stops the script where it is written and what comes
// before it has run. The expressions go into program->top (which the reader makes), where they stay for
// the functions defined by them.
class ScriptReader {
public:
    explicit ScriptReader(std::shared_ptr<ast::Program> program);  // program->source and sourceName set
    ~ScriptReader();
    ScriptReader(const ScriptReader&) = delete;
    ScriptReader& operator=(const ScriptReader&) = delete;

    // The next expression; null at the end. Throws the syntax error (with its place) where reading stops.
    const ast::Node* Next();

private:
    struct State;
    std::shared_ptr<ast::Program> program_;
    std::unique_ptr<State> state_;
};

// Whether source stops in the middle of an expression (an open bracket, a missing operand...): the
// interactive listener then reads another line before it evaluates.
bool IsIncomplete(std::wstring_view source);

}  // namespace hostrt::mxs
