// The bridge between MAXScript and function publishing (node tables, reference targets, interface hosts,
// value conversions) and the plug-in facing API: ExecuteMAXScriptScript and primitives.
#include "core/class_directory.h"
#include "maxscript/execute.h"
#include "maxscript/fp_bridge.h"
#include "maxscript/interpreter.h"
#include "maxscript/maxscript.h"
#include "maxscript/print.h"
#include "maxscript/registry.h"
#include "platform/dialog_service.h"
#include "platform/listener_capture.h"
#include "platform/session.h"
#include "test_objects.h"

#include <gtest/gtest.h>

#include <set>

namespace mxs = hostrt::mxs;

namespace {

constexpr Interface_ID kBridgeCoreId(0x7E57B001, 0x00000001);
constexpr Interface_ID kNamerId(0x7E57B001, 0x00000002);
constexpr Class_ID kNamedClass(0x7E57B002, 0x00000000);
enum : FunctionID { fnNodes, fnFirst, fnKeep, fnKept, fnGetName = 0, fnSetName, fnGetTag = 10, fnSetTag };

// A core interface passing nodes and reference targets back and forth.
class BridgeCore : public FPStaticInterface {
public:
    BridgeCore() : FPStaticInterface(kBridgeCoreId, L"BridgeCore", 0, nullptr, FP_CORE) {
        AppendFunction(fnNodes, L"Nodes", TYPE_INODE_TAB_BV, {FPParamDef(L"nodes", TYPE_INODE_TAB)})
            .AppendFunction(fnFirst, L"First", TYPE_INODE, {FPParamDef(L"nodes", TYPE_INODE_TAB)})
            .AppendFunction(fnKeep, L"Keep", TYPE_VOID, {FPParamDef(L"target", TYPE_REFTARG)})
            .AppendFunction(fnKept, L"Kept", TYPE_REFTARG);
    }
    ReferenceTarget* kept = nullptr;

protected:
    FPStatus _dispatch_fn(FunctionID fid, TimeValue, FPValue& result, FPParams* p) override {
        switch (fid) {
        case fnNodes: result = FPValue(*p->params[0].n_tab, TYPE_INODE_TAB_BV); return FPS_OK;
        case fnFirst: result = FPValue(p->params[0].n_tab->Count() ? (*p->params[0].n_tab)[0] : nullptr); return FPS_OK;
        case fnKeep: kept = p->params[0].r; return FPS_OK;
        case fnKept: result = FPValue(kept); return FPS_OK;
        default: return FPS_NO_SUCH_FUNCTION;
        }
    }
};
BridgeCore bridgeCore;

class NamedClassDesc : public ClassDesc2 {
public:
    int IsPublic() override { return FALSE; }
    void* Create(BOOL) override { return nullptr; }
    const MCHAR* ClassName() override { return L"Named"; }
    SClass_ID SuperClassID() override { return REF_TARGET_CLASS_ID; }
    Class_ID ClassID() override { return kNamedClass; }
    const MCHAR* Category() override { return L""; }
};
NamedClassDesc namedClassDesc;
FPInterfaceDesc namerDesc(kNamerId, L"Namer", 0, &namedClassDesc, FP_MIXIN,
                          {FPFunctionDef(fnGetName, L"GetName", TYPE_STRING),
                           FPFunctionDef(fnSetName, L"SetName", TYPE_VOID, {FPParamDef(L"name", TYPE_STRING)})},
                          {FPPropDef(fnGetTag, fnSetTag, L"Tag", TYPE_INT)});

// The object a "node" stands for: it publishes Namer.
class Named : public ReferenceTarget, public FPMixinInterface {
public:
    Class_ID ClassID() override { return kNamedClass; }
    BaseInterface* GetInterface(Interface_ID id) override {
        return id == kNamerId ? static_cast<FPMixinInterface*>(this) : ReferenceTarget::GetInterface(id);
    }
    using ReferenceTarget::GetInterface;
    FPInterfaceDesc* GetDesc() override { return &namerDesc; }
    MSTR name = L"unnamed";
    int tag = 0;

protected:
    FPStatus _dispatch_fn(FunctionID fid, TimeValue, FPValue& result, FPParams* p) override {
        switch (fid) {
        case fnGetName: result = FPValue(name); return FPS_OK;
        case fnSetName: name = p->params[0].s; return FPS_OK;
        case fnGetTag: result = FPValue(tag); return FPS_OK;
        case fnSetTag: tag = p->params[0].i; return FPS_OK;
        default: return FPS_NO_SUCH_FUNCTION;
        }
    }
};

std::wstring ErrorText(mxs::Interpreter& in, const std::wstring& text) {
    try {
        in.Execute(text);
    } catch (const mxs::ScriptError& e) {
        return L"-- " + e.Text();
    }
    return L"no error";
}

// Test items stand for nodes: their pointers cross the bridge as INode pointers, never dereferenced.
struct FakeNodes {
    std::set<Animatable*> nodes;
    mxs::NodeConverters previous = mxs::GetNodeConverters();
    FakeNodes() {
        mxs::SetNodeConverters({[](INode* n) { return reinterpret_cast<Animatable*>(n); },
                                [this](Animatable* a) { return nodes.count(a) ? reinterpret_cast<INode*>(a) : nullptr; }});
    }
    ~FakeNodes() { mxs::SetNodeConverters(previous); }
};

}  // namespace

TEST(MaxScriptBridge, NodesAndReferenceTargetsCrossAsHostObjects) {
    mxs::Interpreter in;  // first: it installs the scene's own node converters, which the fakes then stand in for
    FakeNodes fake;
    testobj::Item a("a"), b("b"), plain("plain");
    fake.nodes = {&a, &b};
    in.SetGlobal(L"a", mxs::Value::Host(&a));
    in.SetGlobal(L"b", mxs::Value::Host(&b));
    in.SetGlobal(L"plain", mxs::Value::Host(&plain));

    EXPECT_TRUE(in.Execute(L"r = BridgeCore.Nodes #(b, a); r[1] == b and r[2] == a and r.count == 2").AsBool());
    EXPECT_TRUE(in.Execute(L"BridgeCore.First #()").IsUndefined());
    EXPECT_TRUE(in.Execute(L"BridgeCore.First #(a) == a").AsBool());
    EXPECT_EQ(ErrorText(in, L"BridgeCore.Nodes #(plain)"),
              L"-- Unable to convert: ReferenceTarget:Item to type: node");
    in.Execute(L"BridgeCore.Keep plain");
    EXPECT_EQ(bridgeCore.kept, &plain);
    EXPECT_TRUE(in.Execute(L"BridgeCore.Kept() == plain").AsBool());
    in.Execute(L"BridgeCore.Keep undefined");  // undefined is "no target"
    EXPECT_EQ(bridgeCore.kept, nullptr);

    mxs::SetNodeConverters({});
    EXPECT_EQ(ErrorText(in, L"BridgeCore.Nodes #()"), L"no error");
    EXPECT_EQ(ErrorText(in, L"BridgeCore.Nodes #(a)"), L"-- Unable to convert: ReferenceTarget:Item to type: node");
}

TEST(MaxScriptBridge, HandlersLetAnObjectAnswerTheInterfacesOfAnother) {
    static const bool registered = hostrt::ClassDirectory::Instance().Register(&namedClassDesc);
    ASSERT_TRUE(registered);
    mxs::Interpreter in;
    testobj::Item node("node");
    Named object;
    mxs::HostObjectHandler forward;
    forward.accepts = [&](Animatable* a) { return a == &node; };
    forward.interfaceHosts = [&](Animatable*) { return std::vector<Animatable*>{&object}; };
    const int key = mxs::RegisterHostObjectHandler(forward);
    in.SetGlobal(L"n", mxs::Value::Host(&node));

    in.Execute(L"n.SetName \"lamp\"; n.Tag = 5");
    EXPECT_EQ(object.name, L"lamp");
    EXPECT_EQ(object.tag, 5);
    EXPECT_EQ(in.Execute(L"n.getName()").Text(), L"lamp");
    EXPECT_EQ(in.Execute(L"n.Namer.Tag").AsInt(), 5);
    EXPECT_EQ(mxs::PrintForm(in.Execute(L"n.Namer")), L"<MixinInterface:Namer>");
    mxs::UnregisterHostObjectHandler(key);
    EXPECT_EQ(ErrorText(in, L"n.GetName()"), L"-- Unknown property: \"GetName\" in ReferenceTarget:Item");
}

TEST(MaxScriptBridge, ValuesConvertByTheParameterType) {
    using mxs::Value;
    // Script to C++.
    FPValue strings = mxs::ToFPValue(Value::Array({Value::String(L"x"), Value::Name(L"y")}), TYPE_STRING_TAB);
    ASSERT_EQ(strings.type, TYPE_STRING_TAB);
    ASSERT_EQ(strings.s_tab->Count(), 2);
    EXPECT_STREQ((*strings.s_tab)[1], L"y");
    FPValue bits = mxs::ToFPValue(Value::Array({Value::Int(2), Value::Int(4)}), TYPE_BITARRAY);
    EXPECT_EQ(bits.bits->GetSize(), 4);
    EXPECT_EQ(bits.bits->NumberSet(), 2);
    EXPECT_TRUE(mxs::ToFPValue(Value::Undefined(), TYPE_BITARRAY).type == TYPE_VOID);  // "none", made null by the call
    EXPECT_EQ(mxs::ToFPValue(Value::Time(320), TYPE_TIMEVALUE).i, 320);
    EXPECT_EQ(mxs::ToFPValue(Value::Int(3), TYPE_TIMEVALUE).i, 480);  // integers count frames
    EXPECT_THROW(mxs::ToFPValue(Value::Array({Value::Int(1), Value::String(L"a")})), mxs::ScriptError);
    EXPECT_THROW(mxs::ToFPValue(Value::String(L"a"), TYPE_INT_TAB), mxs::ScriptError);

    // C++ to script.
    EXPECT_EQ(mxs::FromFPValue(FPValue()).kind(), mxs::Kind::Ok);
    EXPECT_TRUE(mxs::FromFPValue(FPValue::Null(TYPE_BITARRAY)).IsUndefined());
    EXPECT_TRUE(mxs::FromFPValue(FPValue::Null(TYPE_INODE_TAB)).IsUndefined());
    EXPECT_TRUE(mxs::FromFPValue(FPValue(TYPE_BOOL, 1)).AsBool());
    FPValue name(L"tag");
    name.type = TYPE_NAME;
    EXPECT_EQ(mxs::PrintForm(mxs::FromFPValue(name)), L"#tag");
    EXPECT_EQ(mxs::PrintForm(mxs::FromFPValue(FPValue(Tab<float>{0.5f, 2.f}))), L"#(0.5, 2.0)");
    EXPECT_EQ(mxs::PrintForm(mxs::FromFPValue(FPValue(Tab<int>{1, 0}, TYPE_BOOL_TAB))), L"#(true, false)");
    EXPECT_EQ(mxs::PrintForm(mxs::FromFPValue(FPValue(Point3(1, 2, 3)))), L"[1,2,3]");
}

TEST(MaxScriptExecute, ResultsComeTypedAndErrorsAreShownOrLogged) {
    hostrt::ResetPlatform();
    mxs::ClearErrorRecords();
    FPValue result;
    EXPECT_TRUE(ExecuteMAXScriptScript(L"execGlobal = \"abc\"", MAXScript::ScriptSource::Embedded, FALSE, &result));
    ASSERT_EQ(result.type, TYPE_STRING);
    EXPECT_STREQ(result.s, L"abc");
    EXPECT_TRUE(ExecuteMAXScriptScript(L"execGlobal.count", MAXScript::ScriptSource::Dynamic, TRUE, &result));
    EXPECT_EQ(result.type, TYPE_INT);
    EXPECT_EQ(result.i, 3);
    EXPECT_TRUE(ExecuteMAXScriptScript(L"execGlobal == \"abc\"", MAXScript::ScriptSource::Embedded, TRUE, &result));
    EXPECT_EQ(result.type, TYPE_BOOL);
    EXPECT_TRUE(ExecuteMAXScriptScript(L"undefined", MAXScript::ScriptSource::Embedded, TRUE, &result));
    EXPECT_EQ(result.type, TYPE_VOID);
    EXPECT_TRUE(ExecuteMAXScriptScript(L"fn f = 1", MAXScript::ScriptSource::Embedded, TRUE, &result));
    EXPECT_EQ(result.type, TYPE_VALUE);  // no C++ form: neither string nor integer
    EXPECT_EQ(hostrt::Listener::Instance().Text(), L"");

    // Quiet errors: FALSE, nothing shown, logged only when asked.
    EXPECT_FALSE(ExecuteMAXScriptScript(L"Vandrels_Manager.open", MAXScript::ScriptSource::Embedded, TRUE, &result, FALSE));
    EXPECT_EQ(result.type, TYPE_VOID);
    EXPECT_TRUE(mxs::QuietErrorLog().empty());
    EXPECT_FALSE(ExecuteMAXScriptScript(L"Vandrels_Manager.open", MAXScript::ScriptSource::Embedded, TRUE, &result, TRUE));
    ASSERT_EQ(mxs::QuietErrorLog().size(), 1u);
    EXPECT_EQ(mxs::QuietErrorLog()[0].rfind(L"-- Unknown property: \"open\" in undefined\n", 0), 0u);
    EXPECT_EQ(hostrt::Listener::Instance().Text(), L"");
    EXPECT_TRUE(hostrt::DialogService::Instance().MessageBoxes().empty());

    // Errors not suppressed are shown: in the listener and in a message box.
    EXPECT_FALSE(ExecuteMAXScriptScript(L"DestroyDialog Vandrels_Manager", MAXScript::ScriptSource::Embedded));
    ASSERT_EQ(mxs::ShownErrors().size(), 1u);
    const std::wstring shown = mxs::ShownErrors()[0];
    EXPECT_EQ(shown.rfind(L"-- Unable to convert: undefined to type: RolloutClass\n", 0), 0u);
    EXPECT_EQ(hostrt::Listener::Instance().Text(), shown);
    const auto boxes = hostrt::DialogService::Instance().MessageBoxes();
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].request.title, L"MAXScript");
    EXPECT_EQ(boxes[0].request.text, shown);
    EXPECT_EQ(mxs::QuietErrorLog().size(), 1u);
    hostrt::ResetPlatform();
    mxs::ClearErrorRecords();
}

namespace {

std::wstring lastArgs;

Value* Describe(Value** arg_list, int count) {
    lastArgs.clear();
    for (int i = 0; i < count; ++i) lastArgs += arg_list[i]->to_print_string().str() + L";";
    if (count > 0 && !arg_list[0]->is_undefined() && arg_list[0]->to_int() < 0) throw RuntimeError(L"negative");
    if (count > 4) throw TypeError(L"too much");
    return count == 0 ? &undefined : &ok;
}

}  // namespace

TEST(MaxScriptExecute, PrimitivesReceiveValuesInOrderAndRaiseScriptErrors) {
    mxs::Interpreter in;
    {
        MAXScriptPrimitiveRegistration registration(L"describeArgs", Describe);
        EXPECT_TRUE(in.Execute(L"describeArgs()").IsUndefined());
        EXPECT_EQ(in.Execute(L"describeArgs 1 \"two\" flag:true").kind(), mxs::Kind::Ok);
        EXPECT_EQ(lastArgs, L"1;\"two\";#flag;true;");  // a keyword argument: its name, then its value
        EXPECT_EQ(ErrorText(in, L"describeArgs -1"), L"-- Runtime error: negative");
        EXPECT_EQ(ErrorText(in, L"describeArgs 1 2 3 4 5"), L"-- Type error: too much");
        EXPECT_EQ(ErrorText(in, L"describeArgs \"x\""), L"-- Unable to convert: \"x\" to type: Integer");
        EXPECT_EQ(in.Execute(L"try (describeArgs -1) catch (\"caught\")").Text(), L"caught");
    }
    // Gone with its registration (as when the plug-in library is unloaded).
    EXPECT_EQ(ErrorText(in, L"describeArgs()"), L"-- Type error: Call needs function or class, got: undefined");
}
