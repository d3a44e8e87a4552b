// Calls and property access as scripts make them (argument checks, keyword defaults, index conversion,
// statuses and exceptions turned into errors), and the lookup of an object's mixin interfaces.
#include "core/fnpub.h"
#include "core/fnpub_kind.h"
#include "plugapi.h"

#include <cstdio>
#include <optional>
#include <string>

namespace {

using hostrt::FPTypeName;
using hostrt::fp::ConvertTo;
using hostrt::fp::IsIndexType;
using hostrt::fp::Kind;
using hostrt::fp::KindOf;

MSTR Quoted(const MSTR& s) { return MSTR(L"\"") + s + L"\""; }
MSTR Number(long long n) { return MSTR(std::to_wstring(n)); }

// Adds delta to an index value or to every element of an index table (a null table stays null).
void ShiftIndex(FPValue& v, int delta) {
    if (KindOf(v.type) == Kind::Int) {
        v.i += delta;
    } else if (KindOf(v.type) == Kind::IntTab && v.i_tab) {
        for (int& element : *v.i_tab) element += delta;
    }
}

// Converts a script argument to the parameter's type and from 1-based to 0-based when it is an index.
void PrepareArgument(FPValue& v, int type, const MSTR& label, const MSTR& which) {
    if (!ConvertTo(v, type))
        throw MAXException(MSTR(L"Type error: ") + label + L" " + which + L" wanted " + FPTypeName(type) +
                           L", got " + FPTypeName(v.type));
    if (IsIndexType(type)) ShiftIndex(v, -1);
}

// Turns an index result (as declared, or as answered when the declaration says nothing) to 1-based.
void PrepareResult(FPValue& result, int declared) {
    if (IsIndexType(declared) && KindOf(result.type) == KindOf(declared)) result.type = ParamType2(declared);
    if (IsIndexType(result.type)) ShiftIndex(result, +1);
}

void InvokeChecked(FPInterface* fpi, FunctionID fid, const MSTR& label, TimeValue t, FPValue& result,
                   FPParams& params) {
    result.Free();
    FPStatus status = FPS_FAIL;
    try {
        status = fpi->Invoke(fid, t, result, &params);
    } catch (const MAXException&) {
        throw;
    } catch (const std::exception& e) {
        throw MAXException(label + L": " + MSTR::FromUTF8(e.what()));
    } catch (...) {
        throw MAXException(label + L": unknown failure");
    }
    switch (status) {
    case FPS_OK: return;
    case FPS_NO_SUCH_FUNCTION: throw MAXException(label + L": no such function (id " + Number(fid) + L")");
    case FPS_ACTION_DISABLED: throw MAXException(label + L" is disabled");
    default: throw MAXException(label + L" failed (status " + Number(status) + L")");
    }
}

FPInterfaceDesc* DescOf(FPInterface* fpi, const MCHAR* what) {
    if (!fpi) throw MAXException(MSTR(L"Cannot reach ") + Quoted(what ? what : L"") + L": no interface given");
    return fpi->GetDesc();
}

void CallDescribed(FPInterface* fpi, const FPFunctionDef& fn, std::vector<FPValue>& positional,
                   hostrt::FPKeywordArgs& keywords, FPValue& result, TimeValue t) {
    const MSTR label = hostrt::FPInterfaceName(fpi) + L"." + fn.internal_name;
    const int wanted = fn.NumPositional();
    if (int(positional.size()) != wanted)
        throw MAXException(MSTR(L"Argument count error: ") + label + L" wanted " + Number(wanted) + L", got " +
                           Number(static_cast<long long>(positional.size())));

    FPParams params;
    for (int i = 0; i < wanted; ++i) {
        const FPParamDef& def = fn.params[std::size_t(i)];
        PrepareArgument(positional[std::size_t(i)], def.type, label,
                        MSTR(L"argument ") + Number(i + 1) + L" (" + def.internal_name + L")");
        params.params.append(positional[std::size_t(i)]);
    }

    std::vector<std::optional<FPValue>> given(fn.params.size());
    for (auto& [name, value] : keywords) {
        const FPParamDef* def = fn.FindKeyword(name.data());
        if (!def)
            throw MAXException(MSTR(L"Unknown keyword argument ") + Quoted(name) + L" in call to " + label);
        std::optional<FPValue>& slot = given[std::size_t(def - fn.params.data())];
        if (slot)
            throw MAXException(MSTR(L"Keyword argument ") + Quoted(name) + L" given twice in call to " + label);
        PrepareArgument(value, def->type, label, MSTR(L"keyword argument ") + def->internal_name + L":");
        slot = std::move(value);
    }
    for (std::size_t i = std::size_t(wanted); i < fn.params.size(); ++i)
        params.params.append(given[i] ? *given[i] : fn.params[i].defaultValue);

    InvokeChecked(fpi, fn.ID, label, t, result, params);
    PrepareResult(result, fn.result_type);
}

const FPPropDef& PropertyOf(FPInterface* fpi, const MCHAR* name) {
    FPInterfaceDesc* desc = DescOf(fpi, name);
    const FPPropDef* prop = desc ? desc->GetPropDef(name) : nullptr;
    if (!prop)
        throw MAXException(MSTR(L"Unknown property ") + Quoted(name ? name : L"") + L" in interface " +
                           hostrt::FPInterfaceName(fpi));
    return *prop;
}

}  // namespace

namespace hostrt {

MSTR FPInterfaceName(FPInterface* fpi) {
    FPInterfaceDesc* desc = fpi ? fpi->GetDesc() : nullptr;
    if (desc && !desc->internal_name.isNull()) return desc->internal_name;
    const Interface_ID id = fpi ? fpi->GetID() : Interface_ID(0, 0);
    wchar_t text[48];
    std::swprintf(text, 48, L"<interface 0x%08X, 0x%08X>", unsigned(id.PartA()), unsigned(id.PartB()));
    return MSTR(text);
}

void CallFromScript(FPInterface* fpi, const MCHAR* functionName, std::vector<FPValue> positional,
                    FPKeywordArgs keywords, FPValue& result, TimeValue t) {
    FPInterfaceDesc* desc = DescOf(fpi, functionName);
    const FPFunctionDef* fn = desc ? desc->GetFnDef(functionName) : nullptr;
    if (!fn)
        throw MAXException(MSTR(L"Unknown function ") + Quoted(functionName ? functionName : L"") +
                           L" in interface " + FPInterfaceName(fpi));
    CallDescribed(fpi, *fn, positional, keywords, result, t);
}

void CallFromScript(FPInterface* fpi, FunctionID fid, std::vector<FPValue> positional, FPKeywordArgs keywords,
                    FPValue& result, TimeValue t) {
    FPInterfaceDesc* desc = DescOf(fpi, (L"function id " + std::to_wstring(fid)).c_str());
    if (const FPFunctionDef* fn = desc ? desc->GetFnDef(fid) : nullptr) {
        CallDescribed(fpi, *fn, positional, keywords, result, t);
        return;
    }
    // Not described: nothing to check the arguments against, so they go as given.
    const MSTR label = FPInterfaceName(fpi) + L" function " + Number(fid);
    if (!keywords.empty())
        throw MAXException(MSTR(L"Unknown keyword argument ") + Quoted(keywords.front().first) + L" in call to " +
                           label);
    FPParams params;
    for (FPValue& v : positional) params.params.append(v);
    InvokeChecked(fpi, fid, label, t, result, params);
    PrepareResult(result, TYPE_VOID);
}

FPValue GetPropertyFromScript(FPInterface* fpi, const MCHAR* name, TimeValue t) {
    const FPPropDef& prop = PropertyOf(fpi, name);
    const MSTR label = FPInterfaceName(fpi) + L"." + prop.internal_name;
    FPParams none;
    FPValue result;
    InvokeChecked(fpi, prop.getter_ID, label, t, result, none);
    PrepareResult(result, prop.prop_type);
    return result;
}

void SetPropertyFromScript(FPInterface* fpi, const MCHAR* name, FPValue value, TimeValue t) {
    const FPPropDef& prop = PropertyOf(fpi, name);
    const MSTR label = FPInterfaceName(fpi) + L"." + prop.internal_name;
    if (prop.IsReadOnly()) throw MAXException(MSTR(L"Cannot set read-only property ") + label);
    PrepareArgument(value, prop.prop_type, label, L"value");
    FPParams params;
    params.params.append(value);
    FPValue ignored;
    InvokeChecked(fpi, prop.setter_ID, label, t, ignored, params);
}

namespace {

// Pairs of (description listed on the class descriptor, the object's answer for it).
std::vector<std::pair<FPInterface*, FPInterface*>> ObjectMixins(Animatable* obj) {
    std::vector<std::pair<FPInterface*, FPInterface*>> found;
    if (!obj) return found;
    ClassDesc* cd = FindClassDesc(obj->SuperClassID(), obj->ClassID());
    if (!cd) return found;
    for (int i = 0; i < cd->NumInterfaces(); ++i) {
        FPInterface* listed = cd->GetInterfaceAt(i);
        if (!listed) continue;
        auto* answer = dynamic_cast<FPInterface*>(obj->GetInterface(listed->GetID()));
        if (!answer) continue;
        bool seen = false;
        for (auto& pair : found) seen = seen || pair.second == answer;
        if (!seen) found.emplace_back(listed, answer);
    }
    return found;
}

}  // namespace

std::vector<FPInterface*> FindMixinInterfaces(Animatable* obj) {
    std::vector<FPInterface*> result;
    for (auto& [listed, answer] : ObjectMixins(obj)) result.push_back(answer);
    return result;
}

FPInterface* FindObjectInterface(Animatable* obj, const MCHAR* name) {
    if (!name) return nullptr;
    const MSTR wanted(name);
    for (auto& [listed, answer] : ObjectMixins(obj)) {
        FPInterfaceDesc* desc = listed->GetDesc();
        if (desc && desc->internal_name.EqualsNoCase(wanted)) return answer;
    }
    return nullptr;
}

std::pair<FPInterface*, const FPFunctionDef*> FindObjectFunction(Animatable* obj, const MCHAR* functionName) {
    for (auto& [listed, answer] : ObjectMixins(obj)) {
        FPInterfaceDesc* desc = listed->GetDesc();
        if (const FPFunctionDef* fn = desc ? desc->GetFnDef(functionName) : nullptr) return {answer, fn};
    }
    return {nullptr, nullptr};
}

}  // namespace hostrt
