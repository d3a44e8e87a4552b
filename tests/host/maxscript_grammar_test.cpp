// The MAXScript grammar as scripts write it: every construct parses, the ones with a meaning of their own
// evaluate as MAXScript does, a script runs up to its syntax error, and no text makes the parser crash.
#include "maxscript/interpreter.h"
#include "maxscript/lexer.h"
#include "maxscript/parser.h"
#include "maxscript/print.h"
#include "strclass.h"

#include <gtest/gtest.h>

namespace mxs = hostrt::mxs;

namespace {

std::string Narrow(const std::wstring& s) { return MaxSDK::ToUTF8(s); }

// The first line of the error a text raises; empty when it runs.
std::wstring ErrorOf(mxs::Interpreter& in, const std::wstring& text) {
    try {
        in.Execute(text, L"case.ms");
    } catch (const mxs::ScriptError& e) {
        return e.Text() + L" @" + std::to_wstring(e.Line());
    }
    return L"";
}

// One of each definition, context and grammar form, as written in public tool scripts.
const wchar_t* const kEveryConstruct = LR"MXS(
macroScript TidyScene category:"Studio Tools" buttonText:"Tidy" toolTip:"Tidy the scene"
(
    on isEnabled return true
    on execute do (tidied = true)
)
struct Shelf (name, count = 0, private secret = 1, fn add n = (count += n; this), on create do count += 1)
rollout toolRoll "Tools" width:180
(
    local pressedTimes = 0
    group "Scene" ( button btnTidy "Tidy" across:2; checkbox chkAll "All" checked:true )
    spinner spnCount "Count" range:[0,10,3] type:#integer
    dropdownlist ddlMode "Mode" items:#("fast", "slow")
    edittext edtName "Name:" text:"shot"
    on btnTidy pressed do pressedTimes += 1
    on spnCount changed val do format "%\n" val
    on toolRoll open do ()
)
utility studioUtil "Studio" ( button go "Go"; on go pressed do () )
rcmenu quickMenu ( menuItem miHide "Hide" checked:false; separator sep1; subMenu "More" ( menuItem miShow "Show" ); on miHide picked do () )
tool clicker prompt:"Click" numPoints:2 ( local clicks = 0; on mousePoint n do clicks = n; on stop do () )
plugin helper SceneMarker name:"SceneMarker" classID:#(0x7a1b2c3d, 0x1d2c3b4a) category:"Studio" extends:Dummy replaceUI:true
(
    parameters main rollout:params ( size type:#float default:10 ui:spnSize; on size set val do () )
    rollout params "Marker" ( spinner spnSize "Size" )
    on create do ()
)
attributes shotData version:1 ( parameters main ( frames type:#integer default:24 ) )
fn grow &value step:1 = (value += step)
mapped fn halve x = x / 2
when transform $Marker* changes id:#follow obj do print obj
when $Marker* deleted do print "gone"
in coordsys world (about pivot (0))
in coordsys parent 0
coordsys local (0)
set coordsys world
try(0);catch()
for i in 1 to 5 by 2 while i < 4 do 0
x = 1L + 1P + 0.0d0 + 2
t = 1m2s3f + 10f
y = ::x
z = # ()
c = case of ((x > 0): 1; default: 2)
r = on
s = "" as stringStream
v = 1 + \ -- continued
    2
w = ?
sel = $selection
)MXS";

}  // namespace

TEST(MaxScriptGrammar, EveryConstructAsWrittenParsesAndRuns) {
    const auto program = mxs::Parse(kEveryConstruct, L"every.ms");
    EXPECT_EQ(program->top->body.size(), 28u);
    mxs::Interpreter in;
    in.Run(program);
    EXPECT_EQ(mxs::PrintForm(*in.GetGlobal(L"x")), L"4.0");
    EXPECT_EQ(mxs::PrintForm(*in.GetGlobal(L"t")), L"1873f");
    EXPECT_EQ(mxs::PrintForm(*in.GetGlobal(L"y")), L"4.0");
    EXPECT_EQ(mxs::PrintForm(*in.GetGlobal(L"z")), L"#()");
    EXPECT_EQ(mxs::PrintForm(*in.GetGlobal(L"v")), L"3");
    EXPECT_EQ(mxs::PrintForm(*in.GetGlobal(L"w")), L"3") << "? answers the last top-level result";
}

TEST(MaxScriptGrammar, NumberFormsTimeLiteralsAndLineJoinsLex) {
    const auto t = mxs::Tokenize(L"1L 7P 0x10L 1.5d2 0.0d0 1m2s3f 10f 2.5s # ( # { a \\ -- why\nb ::g");
    EXPECT_EQ(t[0].kind, mxs::Tok::Integer);
    EXPECT_EQ(t[0].number, 1);
    EXPECT_EQ(t[1].number, 7);
    EXPECT_EQ(t[2].number, 16);
    EXPECT_EQ(t[3].kind, mxs::Tok::Float);
    EXPECT_EQ(t[3].number, 150);
    EXPECT_EQ(t[4].number, 0);
    EXPECT_EQ(t[5].kind, mxs::Tok::Time);
    EXPECT_EQ(t[5].number, (60 * 30 + 2 * 30 + 3) * 160);  // minutes, seconds and frames add up in ticks
    EXPECT_EQ(t[6].number, 1600);
    EXPECT_EQ(t[7].number, 2.5 * 4800);
    EXPECT_TRUE(t[8].IsPunct(L"#("));
    EXPECT_TRUE(t[9].IsPunct(L"#{"));
    EXPECT_EQ(t[11].text, L"b");
    EXPECT_FALSE(t[11].newlineBefore) << "a backslash with a comment after it still joins the lines";
    EXPECT_TRUE(t[12].IsPunct(L"::"));
    for (const wchar_t* bad : {L"1m2x", L"3fx", L"12L5"}) EXPECT_THROW(mxs::Tokenize(bad), mxs::ScriptError) << Narrow(bad);
}

TEST(MaxScriptGrammar, FormsWithAMeaningEvaluateAsMaxScriptDoes) {
    mxs::Interpreter in;
    in.Execute(L"global g = 5; fn readGlobal = (local g = 1; ::g)\n"
               L"fn swap &a &b = (local t = a; a = b; b = t)\n"
               L"mapped fn collectInto x store = append store (x * 10)\n");
    const std::pair<const wchar_t*, const wchar_t*> cases[] = {
        {L"on", L"true"},
        {L"off", L"false"},
        {L"readGlobal()", L"5"},
        {L"::g = 9; g", L"9"},
        {L"p = 1; q = 2; swap &p &q; #(p, q)", L"#(2, 1)"},
        {L"arr = #(3, 4); swap &arr[1] &arr[2]; arr", L"#(4, 3)"},
        {L"a = 1; r = &a; *r = 5; #(a, *r, 2 * 3)", L"#(5, 5, 6)"},
        {L"out = #(); collectInto #(1, 2, 3) out; out", L"#(10, 20, 30)"},
        {L"out = #(); collectInto 4 out; out", L"#(40)"},
        {L"for i in 1 to 10 by 4 collect i", L"#(1, 5, 9)"},
        {L"for i in 1 to 10 while i < 3 collect i", L"#(1, 2)"},
        {L"k = 3; case of ((k > 5): #big; (k > 1): #mid; default: #small)", L"#mid"},
        {L"k = false; case of (k: 1; true: 2)", L"2"},
        {L"pt = [1, 2, 3]; case 2 of (pt.y: #y; pt.z: #z)", L"#y"},
        {L"try (throw \"x\") ; catch (\"caught\")", L"\"caught\""},
        {L"1 + \\ -- sum\n 2", L"3"},
        {L"40 + 2\n?", L"42"},
        {L"1L + 1P", L"2"},
        {L"1m2s3f", L"1863f"},
        {L"# (1, 2)", L"#(1, 2)"},
        {L"(\"abc\" as stringStream) as string", L"\"abc\""},
        {L"classOf (\"\" as stringStream)", L"StringStream"},
        {L"10f", L"10f"},
        {L"$selection.count", L"0"},
    };
    for (const auto& [text, printed] : cases)
        EXPECT_EQ(mxs::PrintForm(in.Execute(text)), printed) << Narrow(text);
}

TEST(MaxScriptGrammar, ContextsSwitchForTheirBodyAndSetSwitchesForGood) {
    mxs::Interpreter in;
    EXPECT_EQ(mxs::PrintForm(in.CoordSystem()), L"#world");
    in.Execute(L"in coordsys parent (about selection (x = 1))");
    EXPECT_EQ(mxs::PrintForm(in.CoordSystem()), L"#world") << "a context ends with its body";
    EXPECT_EQ(mxs::PrintForm(in.TransformCentre()), L"#pivot");
    in.Execute(L"set coordsys local");
    EXPECT_EQ(mxs::PrintForm(in.CoordSystem()), L"#local");
    in.Execute(L"set time 12");
    EXPECT_EQ(in.Time(), 12 * 160);
    EXPECT_EQ(mxs::PrintForm(in.Execute(L"at time 3 currentTime")), L"3f");
    EXPECT_EQ(mxs::PrintForm(in.Execute(L"currentTime")), L"12f");
    // A context's error still restores what it switched.
    EXPECT_NE(ErrorOf(in, L"in coordsys parent (undefined.x)"), L"");
    EXPECT_EQ(mxs::PrintForm(in.CoordSystem()), L"#local");
}

TEST(MaxScriptGrammar, AScriptRunsUpToItsSyntaxError) {
    mxs::Interpreter in;
    EXPECT_EQ(ErrorOf(in, L"before = 1\n\nfn fine = 2\nbroken = (1 + )\nafter = 3"),
              L"Syntax error: at ), expected <factor> @4");
    EXPECT_TRUE(in.GetGlobal(L"before").has_value());
    EXPECT_EQ(in.Execute(L"fine()").AsInt(), 2) << "a function defined before the error stays defined";
    EXPECT_FALSE(in.GetGlobal(L"after").has_value());
    // Text the lexer cannot read stops the script where it stands, too.
    EXPECT_EQ(ErrorOf(in, L"lexedBefore = 1\ns = \"never closed"),
              L"Syntax error: at end of script, expected closing \" of the string @2");
    EXPECT_TRUE(in.GetGlobal(L"lexedBefore").has_value());
    // Two expressions on a line: the first runs, the second is the error.
    EXPECT_EQ(ErrorOf(in, L"sameLine = 1 )"), L"Syntax error: at ), expected <end of statement> @1");
    EXPECT_TRUE(in.GetGlobal(L"sameLine").has_value());
}

TEST(MaxScriptGrammar, UnknownConstructsFailWithMaxScriptTextsAndTheirLine) {
    mxs::Interpreter in;
    const std::pair<const wchar_t*, const wchar_t*> cases[] = {
        {L"x = 1\nstruct S (a b)", L"Syntax error: at b, expected , or ) @2"},
        {L"rollout r \"R\"\n(\n  knob k \"K\"\n)", L"Syntax error: at knob, expected <rollout clause> @3"},
        {L"rcmenu m ( button b \"B\" )", L"Syntax error: at button, expected <menu item> @1"},
        {L"plugin helper P ( spinner s \"S\" )", L"Syntax error: at spinner, expected <plugin clause> @1"},
        {L"macroScript M category:\"C\" ( on do () )", L"Syntax error: at do, expected <event name> @1"},
        {L"when transform $a moves do 1", L"Syntax error: at moves, expected changes @1"},
        {L"fn f &1 = 1", L"Syntax error: at &, expected = @1"},
        {L"x = &5", L"Syntax error: at &, expected <factor> @1"},
        {L"in coordsys", L"Syntax error: at end of script, expected <factor> @1"},
        {L"struct S (a, on explode do 1)\nS()", L"Runtime error: Unknown struct event handler: explode in struct S @1"},
    };
    for (const auto& [text, error] : cases) EXPECT_EQ(ErrorOf(in, text), error) << Narrow(text);
}

TEST(MaxScriptGrammar, NoTextMakesTheParserCrashOrHang) {
    // Every prefix of a script with all constructs either parses or fails as a syntax error.
    const std::wstring all = kEveryConstruct;
    for (std::size_t n = 0; n <= all.size(); n += 7) {
        try {
            mxs::Parse(all.substr(0, n));
        } catch (const mxs::ScriptError& e) {
            EXPECT_EQ(e.Kind(), mxs::ErrorKind::Syntax) << n;
        }
    }
    // Nesting deeper than the stack can take is a syntax error too.
    const std::wstring deep = std::wstring(5000, L'(') + L"1" + std::wstring(5000, L')');
    EXPECT_THROW(mxs::Parse(deep), mxs::ScriptError);
    std::wstring minuses;
    for (int i = 0; i < 5000; ++i) minuses += L"- ";
    EXPECT_THROW(mxs::Parse(minuses + L"1"), mxs::ScriptError);
}
