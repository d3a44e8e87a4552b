// The MAXScript interpreter's lexer, parser and error reports, and what the interpreter keeps between texts.
// The language itself is exercised end to end by tests/scripts/*.ms.
#include "maxscript/interpreter.h"
#include "maxscript/lexer.h"
#include "maxscript/parser.h"
#include "maxscript/print.h"
#include "strclass.h"

#include <gtest/gtest.h>

namespace mxs = hostrt::mxs;

namespace {

std::wstring ErrorReport(mxs::Interpreter& in, const std::wstring& text, const std::wstring& source = L"") {
    try {
        in.Execute(text, source);
    } catch (const mxs::ScriptError& e) {
        return e.Report();
    }
    ADD_FAILURE() << "no error from: " << MaxSDK::ToUTF8(text);
    return {};
}

}  // namespace

TEST(MaxScriptLexer, TokensKnowTheirKindValueAndSurroundings) {
    const auto t = mxs::Tokenize(L"f 10f 2s 3t 1.5e1 0x10 key:#Name $box* $'my node' $\n@\"C:\\a\" \"x\\%\\n\"");
    ASSERT_EQ(t.size(), 14u);
    EXPECT_EQ(t[0].kind, mxs::Tok::Ident);
    EXPECT_EQ(t[1].kind, mxs::Tok::Time);
    EXPECT_EQ(t[1].number, 1600);  // ticks
    EXPECT_EQ(t[2].number, 9600);
    EXPECT_EQ(t[3].number, 3);
    EXPECT_EQ(t[4].kind, mxs::Tok::Float);
    EXPECT_EQ(t[4].number, 15);
    EXPECT_EQ(t[5].kind, mxs::Tok::Integer);
    EXPECT_EQ(t[5].number, 16);
    EXPECT_EQ(t[6].kind, mxs::Tok::Keyword);
    EXPECT_EQ(t[6].text, L"key");
    EXPECT_EQ(t[7].kind, mxs::Tok::Name);
    EXPECT_FALSE(t[7].spaceBefore);  // key:#Name is written without a blank
    EXPECT_EQ(t[8].kind, mxs::Tok::Path);
    EXPECT_EQ(t[8].text, L"box*");
    EXPECT_EQ(t[9].text, L"my node");
    EXPECT_EQ(t[10].kind, mxs::Tok::Path);
    EXPECT_EQ(t[10].text, L"");  // $ alone: the selection
    EXPECT_EQ(t[11].kind, mxs::Tok::String);
    EXPECT_EQ(t[11].text, L"C:\\a");  // verbatim: no escapes
    EXPECT_TRUE(t[11].newlineBefore);
    EXPECT_EQ(t[11].line, 2);
    EXPECT_EQ(t[11].column, 1);
    EXPECT_EQ(t[12].text, L"x\\%\n");  // \% stays for format
    EXPECT_EQ(t.back().kind, mxs::Tok::End);
}

TEST(MaxScriptParser, SyntaxErrorsCarryLineColumnSourceAndText) {
    mxs::Interpreter in;
    EXPECT_EQ(ErrorReport(in, L"x = 1\n  y = (x + )\n", L"scene.ms"),
              L"-- Syntax error: at ), expected <factor>\n"
              L"-- Error occurred in scene.ms; line: 2; column: 12\n"
              L"--  In line:   y = (x + )\n");
    EXPECT_EQ(ErrorReport(in, L"s = \"never closed"),
              L"-- Syntax error: at end of script, expected closing \" of the string\n"
              L"-- Error occurred in anonymous codeblock; line: 1; column: 5\n"
              L"--  In line: s = \"never closed\n");
    // A syntax error stops the text where it is written: what comes before it has run, nothing after it.
    EXPECT_EQ(ErrorReport(in, L"ranFirst = true\nx = )\nranAfter = true", L"a.ms"),
              L"-- Syntax error: at ), expected <factor>\n"
              L"-- Error occurred in a.ms; line: 2; column: 5\n"
              L"--  In line: x = )\n");
    EXPECT_TRUE(in.GetGlobal(L"ranFirst").has_value());
    EXPECT_FALSE(in.GetGlobal(L"ranAfter").has_value());
}

TEST(MaxScriptParser, IncompleteInputIsToldFromWrongInput) {
    for (const wchar_t* open : {L"(1 +", L"\"abc", L"if a then", L"fn f x =", L"#(1, 2", L"/* comment", L"x = 1 +"})
        EXPECT_TRUE(mxs::IsIncomplete(open)) << MaxSDK::ToUTF8(open);
    for (const wchar_t* done : {L"1 + 2", L"x = )", L"(1)\n", L"", L"f a b key:1"})
        EXPECT_FALSE(mxs::IsIncomplete(done)) << MaxSDK::ToUTF8(done);
}

TEST(MaxScriptParser, ArgumentsEndAtTheLineAndMinusReadsAsWritten) {
    mxs::Interpreter in;
    in.Execute(L"fn count a b c: = (if c == unsupplied then 2 else 3)\n"
               L"n = 5\n");
    // `f a b` on one line is one call; the next line starts a new expression.
    EXPECT_EQ(in.Execute(L"r = count 1 2\nr2 = 7").AsInt(), 7);
    EXPECT_EQ(in.GetGlobal(L"r")->AsInt(), 2);
    EXPECT_EQ(in.Execute(L"n -1").AsInt(), 4);  // no function on the left: a subtraction
    EXPECT_EQ(in.Execute(L"n - 1").AsInt(), 4);
    EXPECT_EQ(in.Execute(L"n-1").AsInt(), 4);
    EXPECT_EQ(in.Execute(L"amax 1 -3").AsInt(), 1);  // a function on the left: a negative argument
    in.Execute(L"fn id x = x; arr = #(7, 8)");
    EXPECT_EQ(mxs::PrintForm(in.Execute(L"id [1,2,3]")), L"[1,2,3]") << "a blank before [ starts a point";
    EXPECT_EQ(in.Execute(L"arr[2]").AsInt(), 8) << "no blank before [: an index";
}

TEST(MaxScriptInterpreter, GlobalsPersistPerInterpreterAndErrorsPointIntoTheirOwnText) {
    mxs::Interpreter a;
    mxs::Interpreter b;
    a.Execute(L"fn broken x = (\n  x.missing\n)", L"library.ms");
    a.Execute(L"kept = 41");
    EXPECT_EQ(a.Execute(L"kept + 1").AsInt(), 42);
    EXPECT_TRUE(b.Execute(L"kept").IsUndefined());

    // The error of a function defined by an earlier text reports that text's line.
    EXPECT_EQ(ErrorReport(a, L"broken 3", L"caller.ms"),
              L"-- Unknown property: \"missing\" in 3\n"
              L"-- Error occurred in library.ms; line: 2; column: 4\n"
              L"--  In line:   x.missing\n");
}

TEST(MaxScriptInterpreter, ValuesPrintAsTheListenerShowsThem) {
    mxs::Interpreter in;
    const std::pair<const wchar_t*, const wchar_t*> cases[] = {
        {L"1.0 / 3", L"0.333333"},       {L"2.0", L"2.0"},
        {L"1e10 * 1.0", L"1e+10"},       {L"#(1, \"a\", #b, 2.5)", L"#(1, \"a\", #b, 2.5)"},
        {L"#{1..3, 5, 7..8}", L"#{1..3, 5, 7..8}"}, {L"[1, 2.5, -0.0]", L"[1,2.5,0]"},
        {L"color 255 0 0", L"(color 255 0 0)"},     {L"color 1 2 3 4", L"(color 1 2 3 4)"},
        {L"ok", L"OK"},                  {L"\"q\\\"\\\\\"", L"\"q\\\"\\\\\""},
        {L"2.5f", L"2.5f"},              {L"fn f = 1", L"f()"},
        {L"matrix3 1", L"(matrix3 [1,0,0] [0,1,0] [0,0,1] [0,0,0])"},
    };
    for (const auto& [text, printed] : cases) EXPECT_EQ(mxs::PrintForm(in.Execute(text)), printed) << MaxSDK::ToUTF8(text);
    EXPECT_EQ(mxs::DisplayForm(in.Execute(L"\"plain\"")), L"plain");
    EXPECT_EQ(mxs::DisplayForm(in.Execute(L"#plain")), L"plain");
}
