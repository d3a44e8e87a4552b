// What definitions do at run time beyond the stories of tests/scripts: the rules rollout controls keep,
// struct instances and their functions, change handlers that must not loop or stop the host's work, and
// the errors a misused definition gives.
#include "core/class_directory.h"
#include "maxscript/interpreter.h"
#include "maxscript/maxscript.h"
#include "maxscript/print.h"
#include "platform/listener_capture.h"
#include "strclass.h"

#include <gtest/gtest.h>

namespace mxs = hostrt::mxs;

namespace {

struct Definitions : ::testing::Test {
    void SetUp() override {
        hostrt::RegisterBuiltinClasses();
        in.Execute(L"resetMaxFile #noPrompt");
    }
    std::wstring Printed(const std::wstring& text) { return mxs::PrintForm(in.Execute(text)); }
    std::wstring ErrorText(const std::wstring& text) {
        try {
            in.Execute(text);
        } catch (const mxs::ScriptError& e) {
            return e.Text();
        }
        return L"no error";
    }
    mxs::Interpreter in;
};

}  // namespace

TEST_F(Definitions, RolloutControlsKeepTheRulesOfRealControls) {
    in.Execute(LR"(rollout r "R" (
        listbox lst "Items" items:#("a", "b", "c") selection:3
        dropdownlist ddl "Pick" items:#("x", "y")
        multilistbox mlb "Many" items:#("p", "q") selection:#(2)
        radiobuttons rb "Mode" labels:#("one", "two") default:2
        checkbutton cbt "Lock" checked:true
        progressbar pb "Busy" value:50
        timer tick "T" interval:250
        spinner spn "S" range:[-5, 5, 0]
        label lbl
    ))");
    const std::pair<const wchar_t*, const wchar_t*> cases[] = {
        {L"r.lst.items = #(\"a\"); r.lst.selection", L"1"},          // a selection past the items shrinks
        {L"r.ddl.selection", L"1"},                                    // a drop-down list starts at its first item
        {L"r.ddl.items = #(); r.ddl.selection", L"0"},
        {L"r.ddl.items = #(\"m\", \"n\"); r.ddl.selected = \"M2\"; r.ddl.items", L"#(\"M2\", \"n\")"},
        {L"r.mlb.selection", L"#{2}"},
        {L"r.rb.state = 9; r.rb.state", L"2"},
        {L"r.cbt.state", L"true"},
        {L"r.pb.value = 300; r.pb.value", L"100.0"},
        {L"#(r.tick.interval, r.tick.active)", L"#(250, true)"},
        {L"r.spn.value = -9; r.spn.value", L"-5.0"},
        {L"r.spn.range = [0, 1, 0.5]; r.spn.value", L"0.5"},
        {L"r.lbl.text", L"\"lbl\""},                                   // no caption: the control's name
        {L"a = r.lst.items; append a \"z\"; r.lst.items.count", L"1"},  // items come as a copy
        {L"classOf r", L"RolloutClass"},
    };
    for (const auto& [text, printed] : cases) EXPECT_EQ(Printed(text), printed) << MaxSDK::ToUTF8(text);
    EXPECT_EQ(ErrorText(L"r.spn.value = \"high\""), L"Unable to convert: \"high\" to type: Float");
    EXPECT_EQ(ErrorText(L"r.lst.pressed()"), L"Unknown property: \"pressed\" in ListBoxControl:lst");
}

TEST_F(Definitions, RolloutsMakeTheirLocalsAndControlsWhenTheyOpen) {
    // What a rollout's controls need may be defined after the rollout; an error shows when it opens.
    in.Execute(L"rollout late \"Late\" ( local n = lateItems.count; dropdownlist ddl items:lateItems )");
    EXPECT_EQ(ErrorText(L"createDialog late"), L"Unknown property: \"count\" in undefined");
    EXPECT_FALSE(in.Execute(L"late.open").AsBool());
    in.Execute(L"lateItems = #(\"a\", \"b\"); createDialog late");
    EXPECT_EQ(Printed(L"#(late.n, late.ddl.items)"), L"#(2, #(\"a\", \"b\"))");
}

TEST_F(Definitions, StructInstancesKeepTheirOwnMembersAndFunctions) {
    in.Execute(LR"(
        fn makeCounterType start = (
            struct Counter (n = start, fn inc = (n += 1; this), fn twice = (inc(); inc()), fn peek = n,
                            on clone do n = -1)
            Counter
        )
        Counter = makeCounterType 10
        one = Counter()
        two = Counter n:100
    )");
    EXPECT_EQ(Printed(L"one.twice(); one.n"), L"12") << "a member function calls another and changes its own member";
    EXPECT_EQ(Printed(L"two.n"), L"100");
    EXPECT_EQ(Printed(L"copy one"), L"(Counter n:-1)") << "a copy runs on clone";
    EXPECT_EQ(Printed(L"one.n"), L"12");
    EXPECT_EQ(Printed(L"Counter.peek()"), L"10") << "a function through the definition sees the initial values";
    EXPECT_EQ(ErrorText(L"Counter nope:1"),
              L"Unknown property: \"nope\" in #Struct:Counter(n:<data>; inc:<fn>; twice:<fn>; peek:<fn>)");
    EXPECT_EQ(ErrorText(L"one.inc = 5"), L"Unknown property: \"inc\" in (Counter n:12)");
}

TEST_F(Definitions, ChangeHandlersNeitherLoopNorStopTheChangeThatSetThemOff) {
    auto& listener = hostrt::Listener::Instance();
    listener.Clear();
    in.Execute(LR"(
        global heard = #()
        b = box name:"Watched"
        -- A handler that moves its own node does not hear its own change.
        when transform b changes id:#t obj do (append heard obj.pos.x; obj.pos = obj.pos + [1, 0, 0])
        when names b changes id:#t do append heard #renamed
        when select b changes id:#t do undefined.boom
        b.pos = [10, 0, 0]
        b.name = "Renamed"
        select b
    )");
    EXPECT_EQ(Printed(L"heard"), L"#(10.0, #renamed)");
    EXPECT_EQ(Printed(L"b.pos"), L"[11,0,0]");
    EXPECT_TRUE(in.Execute(L"b.isSelected").AsBool()) << "an error in a handler does not undo the selection";
    EXPECT_NE(listener.Text().find(L"-- Error in change handler (select)"), std::wstring::npos) << MaxSDK::ToUTF8(listener.Text());
    // A handler may delete itself while it runs.
    in.Execute(L"deleteAllChangeHandlers id:#t; heard = #(); when transform b changes id:#once do (deleteAllChangeHandlers id:#once; append heard 1)\n"
               L"b.pos = [0, 0, 0]; b.pos = [1, 0, 0]");
    EXPECT_EQ(Printed(L"heard"), L"#(1)");
    // A new scene ends every handler.
    in.Execute(L"resetMaxFile #noPrompt; heard = #(); c = box(); when transform c changes do append heard 1; "
               L"resetMaxFile #noPrompt; c2 = box(); c2.pos = [5, 0, 0]");
    EXPECT_EQ(Printed(L"heard"), L"#()");
}

TEST_F(Definitions, MisusedDefinitionsFailWithClearErrors) {
    in.Execute(LR"(
        rollout r "R" ( button b "B" )
        attributes att ( parameters main ( p type:#integer ) )
        plugin helper ProbeHelper name:"ProbeHelper" classID:#(1, 2) ( parameters main ( size type:#float ) )
        fl = newRolloutFloater "F" 100 100
        closeRolloutFloater fl
    )");
    const std::pair<const wchar_t*, const wchar_t*> cases[] = {
        {L"createDialog 5", L"Unable to convert: 5 to type: RolloutClass"},
        {L"addRollout r fl", L"Runtime error: addRollout: the rollout floater is closed"},
        {L"custAttributes.add 5 att", L"Unable to convert: 5 to type: MAXWrapper"},
        {L"custAttributes.add (box()) r", L"Unable to convert: Rollout:r to type: AttributeDef"},
        {L"ProbeHelper colour:red", L"Unknown property: \"colour\" in ProbeHelper:ProbeHelper"},
        {L"ProbeHelper 1", L"Argument count error: ProbeHelper wanted 0, got 1"},
        {L"Dictionary 5", L"Runtime error: Dictionary wants #(key, value) arrays, DataPairs or key:value arguments, got: 5"},
        {L"Dictionary #float", L"Runtime error: Dictionary key type must be #name, #string or #integer, got: #float"},
        {L"bit.get 1 40", L"Runtime error: bit.get: bit number must be 1 to 32, got: 40"},
        {L"formattedPrint 1 format:\"%q\"", L"Runtime error: formattedPrint: cannot format with \"%q\""},
        {L"startTool r", L"Unable to convert: Rollout:r to type: MouseTool"},
        {L"macros.run 999", L"Runtime error: macros.run: no macroScript with id 999"},
        {L"deleteChangeHandler 1", L"Unable to convert: 1 to type: ChangeHandler"},
    };
    for (const auto& [text, error] : cases) EXPECT_EQ(ErrorText(text), error) << MaxSDK::ToUTF8(text);

    // A comparison that fails leaves the array as it was; one that answers at random still sorts safely.
    in.Execute(L"nums = #(3, 1, 2); fn broken a b = (if a == 1 do throw \"no\"; a - b)");
    EXPECT_EQ(ErrorText(L"qsort nums broken"), L"Runtime error: no");
    EXPECT_EQ(Printed(L"nums"), L"#(3, 1, 2)");
    in.Execute(L"many = for i = 1 to 200 collect i; fn coin a b = random -1 1; qsort many coin");
    EXPECT_EQ(Printed(L"many.count"), L"200");
}

TEST_F(Definitions, PluginTextsRunUpToTheirSyntaxErrorToo) {
    // ExecuteMAXScriptScript, as a plug-in calls it, runs the text's expressions before its error.
    EXPECT_FALSE(ExecuteMAXScriptScript(L"global pluginStep = 1\npluginStep = (2 +\n", MAXScript::ScriptSource::Dynamic,
                                        TRUE));
    EXPECT_EQ(mxs::PrintForm(*mxs::Interpreter::Shared().GetGlobal(L"pluginStep")), L"1");
}
