// ScriptProbe: a plug-in library the MAXScript end-to-end cases drive the function-publishing bridge
// through. It publishes a static core interface shaped like the Vandrels one (index and index-array
// parameters, keywords with defaults and "none" defaults, properties, failures) and objects with a mixin
// interface, registers a primitive and runs texts through ExecuteMAXScriptScript.
#include "max.h"
#include "ifnpub.h"
#include "maxscript/maxscript.h"

#include <string>
#include <vector>

namespace {

constexpr Class_ID kProbeObjectClass(0x5C817E57, 0x00000010);
constexpr Interface_ID kProbeCoreId(0x5C817E57, 0x00000001);
constexpr Interface_ID kProbeOpsId(0x5C817E57, 0x00000002);

int primitiveCalls = 0;

class ProbeObject;
std::vector<ProbeObject*> probes;  // every probe made, in order (they live until the library goes)

class ProbeObjectClassDesc : public ClassDesc2 {
public:
    int IsPublic() override { return FALSE; }
    void* Create(BOOL) override;
    const MCHAR* ClassName() override { return L"ProbeObject"; }
    SClass_ID SuperClassID() override { return REF_TARGET_CLASS_ID; }
    Class_ID ClassID() override { return kProbeObjectClass; }
    const MCHAR* Category() override { return L"Script Probe"; }
};
ProbeObjectClassDesc probeObjectDesc;

enum : FunctionID { opGetName, opSetName, opDescribe, opPartner, opSetPartner, opGetSize = 10, opSetSize };

FPInterfaceDesc probeOpsDesc(
    kProbeOpsId, L"ProbeOps", 0, &probeObjectDesc, FP_MIXIN,
    {FPFunctionDef(opGetName, L"GetName", TYPE_STRING),
     FPFunctionDef(opSetName, L"SetName", TYPE_VOID, {FPParamDef(L"name", TYPE_STRING)}),
     FPFunctionDef(opDescribe, L"Describe", TYPE_STRING, {FPParamDef(L"mode", TYPE_INDEX).Keyword(FPValue(TYPE_INDEX, 0))}),
     FPFunctionDef(opPartner, L"Partner", TYPE_REFTARG),
     FPFunctionDef(opSetPartner, L"SetPartner", TYPE_VOID, {FPParamDef(L"other", TYPE_REFTARG)})},
    {FPPropDef(opGetSize, opSetSize, L"Size", TYPE_INT)});

// A target that publishes ProbeOps: a name, a size and a partner probe.
class ProbeObject : public ReferenceTarget, public FPMixinInterface {
public:
    Class_ID ClassID() override { return kProbeObjectClass; }
    SClass_ID SuperClassID() override { return REF_TARGET_CLASS_ID; }
    void GetClassName(MSTR& s, bool) const override { s = L"ProbeObject"; }
    BaseInterface* GetInterface(Interface_ID id) override {
        if (id == kProbeOpsId) return static_cast<FPMixinInterface*>(this);
        return ReferenceTarget::GetInterface(id);
    }
    using ReferenceTarget::GetInterface;
    FPInterfaceDesc* GetDesc() override { return &probeOpsDesc; }

    MSTR name;
    int size = 1;
    ProbeObject* partner = nullptr;

protected:
    FPStatus _dispatch_fn(FunctionID fid, TimeValue, FPValue& result, FPParams* p) override {
        switch (fid) {
        case opGetName: result = FPValue(name); return FPS_OK;
        case opSetName: name = p->params[0].s; return FPS_OK;
        case opDescribe:
            result = FPValue(MSTR(L"probe " + name.str() + L" mode " + std::to_wstring(p->params[0].i)));
            return FPS_OK;
        case opPartner: result = FPValue(static_cast<ReferenceTarget*>(partner)); return FPS_OK;
        case opSetPartner: partner = dynamic_cast<ProbeObject*>(p->params[0].r); return FPS_OK;
        case opGetSize: result = FPValue(size); return FPS_OK;
        case opSetSize: size = p->params[0].i; return FPS_OK;
        default: return FPS_NO_SUCH_FUNCTION;
        }
    }
};

void* ProbeObjectClassDesc::Create(BOOL) { return new ProbeObject; }

enum : FunctionID {
    fnCount,
    fnEcho,
    fnZeroBased,
    fnIndices,
    fnFlags,
    fnMakeProbe,
    fnFail,
    fnOutOfRange,
    fnRunText,
    fnLastIndex,
    fnPrimitiveCalls,
    fnGetEnabled = 20,
    fnSetEnabled,
    fnGetLevel,
};

std::wstring Describe(const BitArray* bits) {
    if (!bits) return L"none";
    std::wstring out = L"#{";
    for (int i = 0; i < bits->GetSize(); ++i)
        if ((*bits)[i]) out += (out.size() > 2 ? L"," : L"") + std::to_wstring(i + 1);
    return out + L"}";
}

// Describes what ExecuteMAXScriptScript answered: "<TRUE|FALSE> <type> <value>".
std::wstring RunText(const MCHAR* text) {
    FPValue result;
    const BOOL ok = ExecuteMAXScriptScript(text, MAXScript::ScriptSource::Embedded, TRUE, &result, TRUE);
    std::wstring out = ok ? L"TRUE " : L"FALSE ";
    switch (result.type) {
    case TYPE_STRING: return out + L"string " + (result.s ? result.s : L"");
    case TYPE_INT: return out + L"integer " + std::to_wstring(result.i);
    case TYPE_BOOL: return out + L"boolean " + (result.i ? L"true" : L"false");
    case TYPE_FLOAT: return out + L"float";
    case TYPE_VOID: return out + L"void";
    default: return out + L"type " + std::to_wstring(int(result.type));
    }
}

// Undo record of the Enabled property: setting it inside `undo on` can be taken back.
class EnabledRestore : public RestoreObj {
public:
    EnabledRestore(BOOL& flag, BOOL before) : flag_(flag), before_(before), after_(flag) {}
    void Restore(int isUndo) override {
        if (isUndo) after_ = flag_;
        flag_ = before_;
    }
    void Redo() override { flag_ = after_; }

private:
    BOOL& flag_;
    BOOL before_;
    BOOL after_;
};

class ProbeCore : public FPStaticInterface {
public:
    ProbeCore() : FPStaticInterface(kProbeCoreId, L"ScriptProbe", 0, nullptr, FP_CORE) {
        AppendFunction(fnCount, L"Count", TYPE_INT)
            .AppendFunction(fnEcho, L"Echo", TYPE_STRING, {FPParamDef(L"text", TYPE_STRING)})
            .AppendFunction(fnZeroBased, L"ZeroBased", TYPE_INT, {FPParamDef(L"index", TYPE_INDEX)})
            .AppendFunction(fnIndices, L"Indices", TYPE_INT_TAB_BV, {FPParamDef(L"array of indices", TYPE_INDEX_TAB)})
            .AppendFunction(fnFlags, L"Flags", TYPE_STRING,
                            {FPParamDef(L"selection", TYPE_INT).Keyword(FPValue(1)),
                             FPParamDef(L"category", TYPE_BITARRAY).KeywordNone(),
                             FPParamDef(L"references", TYPE_INDEX_TAB).KeywordNone()})
            .AppendFunction(fnMakeProbe, L"MakeProbe", TYPE_REFTARG, {FPParamDef(L"name", TYPE_STRING)})
            .AppendFunction(fnFail, L"Fail", TYPE_VOID, {FPParamDef(L"message", TYPE_STRING)})
            .AppendFunction(fnOutOfRange, L"OutOfRange", TYPE_VOID)
            .AppendFunction(fnRunText, L"RunText", TYPE_STRING, {FPParamDef(L"text", TYPE_STRING)})
            .AppendFunction(fnLastIndex, L"LastIndex", TYPE_INDEX)
            .AppendFunction(fnPrimitiveCalls, L"PrimitiveCalls", TYPE_INT)
            .AppendProperty(fnGetEnabled, fnSetEnabled, L"Enabled", TYPE_BOOL)
            .AppendProperty(fnGetLevel, FP_NO_FUNCTION, L"Level", TYPE_INT);
    }

protected:
    FPStatus _dispatch_fn(FunctionID fid, TimeValue, FPValue& result, FPParams* p) override {
        switch (fid) {
        case fnCount: result = FPValue(int(probes.size())); break;
        case fnEcho: result = FPValue(p->params[0].s); break;
        case fnZeroBased: result = FPValue(p->params[0].i); break;
        case fnIndices: result = FPValue(*p->params[0].i_tab, TYPE_INT_TAB_BV); break;
        case fnFlags: {
            const Tab<int>* refs = p->params[2].i_tab;
            std::wstring text = L"selection " + std::to_wstring(p->params[0].i) + L" category " +
                                Describe(p->params[1].bits) + L" references ";
            if (!refs) text += L"none";
            for (int i = 0; refs && i < refs->Count(); ++i) text += (i ? L"," : L"") + std::to_wstring((*refs)[i]);
            result = FPValue(MSTR(text));
            break;
        }
        case fnMakeProbe: {
            auto* probe = new ProbeObject;
            probe->name = p->params[0].s;
            probes.push_back(probe);
            result = FPValue(static_cast<ReferenceTarget*>(probe));
            break;
        }
        case fnFail: throw MAXException(p->params[0].s);
        case fnOutOfRange: (void)p->params[3]; break;
        case fnRunText: result = FPValue(MSTR(RunText(p->params[0].s))); break;
        case fnLastIndex: result = FPValue(TYPE_INDEX, int(probes.size()) - 1); break;
        case fnPrimitiveCalls: result = FPValue(primitiveCalls); break;
        case fnGetEnabled: result = FPValue(TYPE_BOOL, enabled_); break;
        case fnSetEnabled: {
            const BOOL before = enabled_;
            enabled_ = p->params[0].i;
            if (theHold.Holding()) theHold.Put(new EnabledRestore(enabled_, before));
            break;
        }
        case fnGetLevel: result = FPValue(7); break;
        default: return FPS_NO_SUCH_FUNCTION;
        }
        return FPS_OK;
    }

private:
    BOOL enabled_ = FALSE;
};
ProbeCore probeCore;

}  // namespace

// A primitive taking no arguments, as the plug-in's manager primitive does.
def_visible_primitive(ProbePrimitive, "ProbePrimitive");
Value* ProbePrimitive_cf(Value** arg_list, int count) {
    check_arg_count(ProbePrimitive, 0, count);
    ++primitiveCalls;
    return &ok;
}

MAX_PLUGIN_EXPORT const MCHAR* LibDescription() { return L"MAXScript bridge probe"; }
MAX_PLUGIN_EXPORT int LibNumberClasses() { return 1; }
MAX_PLUGIN_EXPORT ClassDesc* LibClassDesc(int i) { return i == 0 ? &probeObjectDesc : nullptr; }
MAX_PLUGIN_EXPORT ULONG LibVersion() { return VERSION_3DSMAX; }
MAX_PLUGIN_EXPORT int LibInitialize() { return TRUE; }
MAX_PLUGIN_EXPORT int LibShutdown() {
    for (ProbeObject* probe : probes) probe->MaybeAutoDelete();
    probes.clear();
    return TRUE;
}
MAX_PLUGIN_EXPORT ULONG CanAutoDefer() { return FALSE; }
