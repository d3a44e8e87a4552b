// How the runtime extends MAXScript: global functions, system variables, classes with constructors, native
// objects, handlers for host objects, the $path resolver and max commands, and the evaluation context they read.
#include "hold.h"
#include "maxscript/builtins.h"
#include "maxscript/convert.h"
#include "maxscript/interpreter.h"
#include "maxscript/print.h"
#include "maxscript/registry.h"
#include "test_objects.h"

#include <gtest/gtest.h>

#include <map>

namespace mxs = hostrt::mxs;

namespace {

std::wstring ErrorText(mxs::Interpreter& in, const std::wstring& text) {
    try {
        in.Execute(text);
    } catch (const mxs::ScriptError& e) {
        return L"-- " + e.Text();
    }
    return L"no error";
}

// A native object: a named list of numbers with a size.
class Widget : public mxs::ExtObject {
public:
    std::wstring ClassName() const override { return L"Widget"; }
    std::wstring Describe() const override { return L"<Widget " + name + L">"; }
    std::optional<mxs::Value> GetProperty(mxs::CallContext&, const std::wstring& prop) override {
        if (mxs::EqualsNoCase(prop, L"name")) return mxs::Value::String(name);
        if (mxs::EqualsNoCase(prop, L"count")) return mxs::Value::Int(int(items.size()));
        return std::nullopt;
    }
    bool SetProperty(mxs::CallContext&, const std::wstring& prop, const mxs::Value& v) override {
        if (!mxs::EqualsNoCase(prop, L"name")) return false;
        name = mxs::ToText(v);
        return true;
    }
    std::optional<mxs::Value> GetIndex(mxs::CallContext&, const mxs::Value& index) override {
        const int i = mxs::ToInt(index);
        if (i < 1 || i > int(items.size())) return std::nullopt;
        return mxs::Value::Int(items[std::size_t(i - 1)]);
    }
    bool SetIndex(mxs::CallContext&, const mxs::Value& index, const mxs::Value& v) override {
        const int i = mxs::ToInt(index);
        if (i < 1 || i > int(items.size())) return false;
        items[std::size_t(i - 1)] = mxs::ToInt(v);
        return true;
    }
    bool DeleteItem(mxs::CallContext&, const mxs::Value& index) override {
        const int i = mxs::ToInt(index);
        if (i < 1 || i > int(items.size())) return false;
        items.erase(items.begin() + (i - 1));
        return true;
    }
    std::optional<std::vector<mxs::Value>> Items(mxs::CallContext&) override {
        std::vector<mxs::Value> out;
        for (int i : items) out.push_back(mxs::Value::Int(i));
        return out;
    }

    std::wstring name;
    std::vector<int> items;
};

// Registrations that a test makes, undone when it ends.
struct Registrations {
    std::vector<std::wstring> functions, variables;
    std::vector<int> handlers;
    mxs::PathResolver paths = mxs::GetPathResolver();
    ~Registrations() {
        for (const auto& f : functions) mxs::UnregisterGlobalFunction(f);
        for (const auto& v : variables) mxs::UnregisterSystemVariable(v);
        for (int h : handlers) mxs::UnregisterHostObjectHandler(h);
        mxs::SetPathResolver(paths);
    }
};

}  // namespace

TEST(MaxScriptExtension, GlobalFunctionsAndSystemVariables) {
    Registrations reg;
    mxs::Interpreter in;
    std::vector<std::wstring> seen;
    reg.functions.push_back(L"joinWith");
    mxs::RegisterGlobalFunction(L"joinWith", [&seen](mxs::CallContext& ctx, mxs::CallArgs& args) {
        mxs::CheckArgCount(L"joinWith", args, 1, 3);
        const mxs::Value* sep = args.Keyword(L"SEPARATOR");
        std::wstring out;
        for (const mxs::Value& v : args.positional)
            out += (out.empty() ? L"" : (sep ? mxs::ToText(*sep) : L"+")) + mxs::DisplayForm(v);
        seen.push_back(std::to_wstring(ctx.line));
        return mxs::Value::String(out);
    });
    EXPECT_EQ(in.Execute(L"\n\nJOINWITH 1 #b \"c\" separator:\"/\"").Text(), L"1/b/c");
    EXPECT_EQ(seen, std::vector<std::wstring>{L"3"});  // the function knows the line of its call
    EXPECT_EQ(ErrorText(in, L"joinWith()"), L"-- Argument count error: joinWith wanted at least 1, got 0");
    EXPECT_EQ(ErrorText(in, L"joinWith 1 2 3 4"), L"-- Argument count error: joinWith wanted at most 3, got 4");

    int level = 3;
    reg.variables = {L"hostLevel", L"hostVersion"};
    mxs::RegisterSystemVariable(L"hostLevel", {[&] { return mxs::Value::Int(level); },
                                               [&](const mxs::Value& v) { level = mxs::ToInt(v); }});
    mxs::RegisterSystemVariable(L"hostVersion", {[] { return mxs::Value::Int(27); }, nullptr});
    in.Execute(L"hostLevel += 2; (hostLevel = hostLevel * 10)");  // assigned inside a block: still the host's
    EXPECT_EQ(level, 50);
    EXPECT_EQ(in.Execute(L"hostVersion").AsInt(), 27);
    EXPECT_EQ(ErrorText(in, L"hostVersion = 1"), L"-- Runtime error: Cannot assign to read-only variable: hostVersion");
    in.Execute(L"joinWith = 5");  // a script's own global takes the name over, for that interpreter only
    EXPECT_EQ(in.Execute(L"joinWith").AsInt(), 5);
    EXPECT_EQ(mxs::Interpreter().Execute(L"joinWith 1").Text(), L"1");
}

TEST(MaxScriptExtension, ClassesConstructNativeObjectsThatActLikeValues) {
    mxs::Interpreter in;
    mxs::RegisterClass(L"Widget", L"Value", [](mxs::CallContext&, mxs::CallArgs& args) {
        mxs::CheckArgCount(L"Widget", args, 0);
        auto w = std::make_shared<Widget>();
        if (const mxs::Value* n = args.Keyword(L"name")) w->name = mxs::ToText(*n);
        if (const mxs::Value* s = args.Keyword(L"size")) w->items.assign(std::size_t(mxs::ToInt(*s)), 0);
        return mxs::Value::Ext(w);
    });
    in.Execute(L"w = widget name:\"w1\" size:3\n"
               L"w[2] = 7; w.name = w.name + \"!\"");
    EXPECT_EQ(mxs::PrintForm(in.Execute(L"w")), L"<Widget w1!>");
    EXPECT_EQ(mxs::PrintForm(in.Execute(L"#(w.count, w[2], for i in w collect i, w as array)")),
              L"#(3, 7, #(0, 7, 0), #(0, 7, 0))");
    EXPECT_TRUE(in.Execute(L"classOf w == Widget and isKindOf w Value").AsBool());
    EXPECT_EQ(ErrorText(in, L"w.weight"), L"-- Unknown property: \"weight\" in <Widget w1!>");
    EXPECT_EQ(ErrorText(in, L"w[9]"), L"-- No \"\"get\"\" function for <Widget w1!>");
    EXPECT_EQ(ErrorText(in, L"w[9] = 1"), L"-- No \"\"put\"\" function for <Widget w1!>");
    EXPECT_EQ(mxs::PrintForm(in.Execute(L"deleteItem w 1; w as array")), L"#(7, 0)");
    EXPECT_EQ(ErrorText(in, L"deleteItem w 5"), L"-- Runtime error: deleteItem: no item 5 in <Widget w1!>");
    EXPECT_EQ(ErrorText(in, L"Integer 5"), L"-- Runtime error: No constructor found for Integer");
}

TEST(MaxScriptExtension, HostObjectsGoThroughTheirHandlersAndPaths) {
    Registrations reg;
    mxs::Interpreter in;
    testobj::Item first("first"), second("second"), other("other");
    std::map<Animatable*, Point3> positions;
    const mxs::Value itemClass = mxs::RegisterClass(L"SceneItem", L"GeometryClass");

    // A general handler first, then one for scene items only: the newer one is asked first.
    mxs::HostObjectHandler general;
    general.name = L"general";
    general.getProperty = [](mxs::CallContext&, Animatable*, const std::wstring& p) -> std::optional<mxs::Value> {
        if (mxs::EqualsNoCase(p, L"kind")) return mxs::Value::Name(L"general");
        return std::nullopt;
    };
    reg.handlers.push_back(mxs::RegisterHostObjectHandler(general));
    mxs::HostObjectHandler items;
    items.name = L"scene items";
    items.accepts = [&](Animatable* a) { return a != &other; };
    items.getProperty = [&](mxs::CallContext&, Animatable* a, const std::wstring& p) -> std::optional<mxs::Value> {
        if (mxs::EqualsNoCase(p, L"name")) return mxs::Value::String(MaxSDK::FromUTF8(static_cast<testobj::Item*>(a)->name));
        if (mxs::EqualsNoCase(p, L"pos")) return mxs::Value::P3(positions[a]);
        if (mxs::EqualsNoCase(p, L"kind")) return mxs::Value::Name(L"item");
        return std::nullopt;
    };
    items.setProperty = [&](mxs::CallContext&, Animatable* a, const std::wstring& p, const mxs::Value& v) {
        if (!mxs::EqualsNoCase(p, L"pos")) return false;
        positions[a] = mxs::ToPoint3(v);
        return true;
    };
    items.getIndex = [](mxs::CallContext&, Animatable* a, const mxs::Value& i) -> std::optional<mxs::Value> {
        return mxs::Value::Host(static_cast<testobj::Item*>(a)->GetReference(mxs::ToInt(i) - 1));
    };
    items.describe = [](Animatable* a) -> std::optional<std::wstring> {
        return L"$Item:" + MaxSDK::FromUTF8(static_cast<testobj::Item*>(a)->name);
    };
    items.classOf = [itemClass](Animatable*) -> std::optional<mxs::Value> { return itemClass; };
    reg.handlers.push_back(mxs::RegisterHostObjectHandler(items));

    std::vector<testobj::Item*> all{&first, &second, &other};
    mxs::SetPathResolver([&](mxs::CallContext&, const std::wstring& path) -> mxs::Value {
        mxs::ArrayData found;
        for (testobj::Item* i : all)
            if (mxs::WildcardMatch(MaxSDK::FromUTF8(i->name), path.empty() ? L"first" : path)) found.push_back(mxs::Value::Host(i));
        if (found.empty()) return mxs::Value::Undefined();
        return found.size() == 1 && path.find(L'*') == std::wstring::npos ? found[0] : mxs::Value::Array(found);
    });
    first.ReplaceReference(0, &second);

    EXPECT_EQ(in.Execute(L"$first.name").Text(), L"first");
    EXPECT_EQ(mxs::PrintForm(in.Execute(L"$")), L"$Item:first");
    EXPECT_EQ(mxs::PrintForm(in.Execute(L"$f*")), L"#($Item:first)");
    EXPECT_TRUE(in.Execute(L"$nothing").IsUndefined());
    EXPECT_EQ(in.Execute(L"$first[1].name").Text(), L"second");
    EXPECT_TRUE(in.Execute(L"$first == $'first' and $first != $second").AsBool());

    // A component of a property is stored back through the handler.
    in.Execute(L"$second.pos = [1, 2, 3]; $second.pos.z = 30");
    EXPECT_EQ(positions[&second], Point3(1, 2, 30));

    EXPECT_EQ(in.Execute(L"$first.kind").Text(), L"item");
    EXPECT_EQ(in.Execute(L"$other.kind").Text(), L"general");  // not accepted by the item handler
    EXPECT_EQ(ErrorText(in, L"$other.name"), L"-- Unknown property: \"name\" in ReferenceTarget:Item");
    EXPECT_TRUE(in.Execute(L"classOf $first == SceneItem and superClassOf $first == GeometryClass").AsBool());
    EXPECT_TRUE(in.Execute(L"isKindOf $second GeometryClass and not isKindOf $second Number").AsBool());

    // A value whose object is gone says so instead of touching it.
    auto* doomed = new testobj::Item("doomed");
    all.push_back(doomed);
    in.Execute(L"kept = $doomed");
    all.pop_back();
    doomed->DeleteThis();
    EXPECT_TRUE(in.Execute(L"isDeleted kept").AsBool());
    EXPECT_EQ(ErrorText(in, L"kept.name"), L"-- Runtime error: Attempt to access deleted scene object");
}

TEST(MaxScriptExtension, MaxCommandsAndTheContextRegisteredCodeReads) {
    Registrations reg;
    mxs::Interpreter in;
    std::vector<std::wstring> log;
    mxs::RegisterMaxCommand(L"File Open", [&](mxs::CallContext& ctx) {
        log.push_back(L"open at " + std::to_wstring(ctx.interp.Time()));
    });
    reg.functions.push_back(L"probeContext");
    mxs::RegisterGlobalFunction(L"probeContext", [&](mxs::CallContext& ctx, mxs::CallArgs&) {
        log.push_back(std::to_wstring(ctx.interp.Time()) + (ctx.interp.Animating() ? L" animate" : L""));
        return mxs::Value::Ok();
    });
    in.Execute(L"max file open\n"
               L"animate on at time 10 probeContext()\n"
               L"at time 2.5 (probeContext())\n"
               L"try (animate on (throw \"x\")) catch ()\n"
               L"probeContext()\n"
               L"at time 3f max file open");
    EXPECT_EQ(log, (std::vector<std::wstring>{L"open at 0", L"1600 animate", L"400", L"0", L"open at 480"}));
}

namespace {

// An undo record that only counts how often it was taken back.
struct CountingRestore : RestoreObj {
    explicit CountingRestore(int& undone) : undone(undone) {}
    void Restore(int) override { ++undone; }
    void Redo() override { --undone; }
    int& undone;
};

}  // namespace

TEST(MaxScriptExtension, UndoContextsMakeNamedStepsThatMaxUndoTakesBack) {
    Registrations reg;
    mxs::Interpreter in;
    theHold.FlushUndoBuffer();
    int undone = 0;
    reg.functions.push_back(L"recordChange");
    mxs::RegisterGlobalFunction(L"recordChange", [&](mxs::CallContext&, mxs::CallArgs&) {
        if (theHold.Holding()) theHold.Put(new CountingRestore(undone));
        return mxs::Value::Ok();
    });
    in.Execute(L"undo \"Move things\" on (recordChange(); recordChange())\n"
               L"undo off recordChange()\n"
               L"recordChange()\n"
               L"undo on recordChange()");
    ASSERT_EQ(theHold.NumUndoEntries(), 2);
    EXPECT_EQ(theHold.UndoEntryName(0), MSTR(L"MAXScript"));
    EXPECT_EQ(theHold.UndoEntryName(1), MSTR(L"Move things"));
    EXPECT_EQ(theHold.GetBeginDepth(), 0);
    EXPECT_FALSE(theHold.IsSuspended());
    in.Execute(L"max undo; max undo");
    EXPECT_EQ(undone, 3);
    in.Execute(L"max redo");
    EXPECT_EQ(undone, 1);
    theHold.FlushUndoBuffer();
}
