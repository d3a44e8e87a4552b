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

// Whether source stops in the middle of an expression (an open bracket, a missing operand...): the
// interactive listener then reads another line before it evaluates.
bool IsIncomplete(std::wstring_view source);

}  // namespace hostrt::mxs
