// Sub-anims from MAXScript: by name or number (`$b[#transform]`, `$b[3]`), and through properties that read
// as plain values (`$b.pos.controller`, `$b.rotation.z_rotation`, `$b.length.controller`).
#include "maxscript/scene_values.h"

#include "control.h"
#include "inode.h"
#include "maxscript/convert.h"
#include "maxscript/errors.h"
#include "maxscript/interpreter.h"
#include "maxscript/print.h"
#include "object.h"

#include <cmath>

namespace hostrt::mxs {

namespace {

constexpr double kDegreesPerRadian = 180.0 / M_PI;

// A sub-anim name as a script writes it: no case, spaces as underscores.
bool SameSubName(std::wstring subName, const std::wstring& scripted) {
    for (wchar_t& c : subName)
        if (c == L' ') c = L'_';
    return EqualsNoCase(subName, scripted);
}

Animatable* SubAnimByName(Animatable* anim, const std::wstring& name) {
    for (int i = 0; i < anim->NumSubs(); ++i)
        if (Animatable* sub = anim->SubAnim(i); sub && SameSubName(anim->SubAnimName(i, false).data(), name)) return sub;
    return nullptr;
}

// The animatable behind owner.sub: a node's position, rotation and scale tracks, its named sub-anims, and
// the controllers of parameters.
Animatable* Resolve(const Value& owner, const std::wstring& sub) {
    Animatable* anim = owner.Anim();
    if (auto* node = dynamic_cast<INode*>(anim)) {
        Control* tm = node->GetTMController();
        if (tm && (EqualsNoCase(sub, L"pos") || EqualsNoCase(sub, L"position"))) return tm->GetPositionController();
        if (tm && EqualsNoCase(sub, L"rotation")) return tm->GetRotationController();
        if (tm && EqualsNoCase(sub, L"scale")) return tm->GetScaleController();
        if (Animatable* named = SubAnimByName(node, sub)) return named;
        anim = node->GetBaseObject();
        if (!anim) return nullptr;
    }
    if (Control* c = BlockParamController(anim, sub)) return c;
    return SubAnimByName(anim, sub);
}

// Rotation tracks show degrees.
bool IsAngleTrack(const std::wstring& name) {
    return name.size() > 9 && EqualsNoCase(name.substr(name.size() - 9), L"_rotation");
}

std::optional<Value> Get(CallContext& ctx, const Value& owner, const std::wstring& sub, const std::wstring& name) {
    Animatable* anim = Resolve(owner, sub);
    if (!anim) return std::nullopt;
    auto* c = dynamic_cast<Control*>(anim);
    if (EqualsNoCase(name, L"controller")) return c ? Value::Host(c) : Value::Undefined();
    if (EqualsNoCase(name, L"track")) return Value::Host(anim);
    const Value target = Value::Host(anim);
    const Value v = ctx.interp.GetProperty(target, name);
    // A track under the sub-anim reads as its value.
    if (auto* track = v.Is(Kind::HostObject) ? dynamic_cast<Control*>(v.Anim()) : nullptr) {
        const Value value = ControllerScriptValue(track, ctx.interp.Time());
        if (IsAngleTrack(name) && value.IsNumber()) return Value::Float(float(ToFloat(value) * kDegreesPerRadian));
        return value;
    }
    return v;
}

bool Set(CallContext& ctx, const Value& owner, const std::wstring& sub, const std::wstring& name, const Value& v) {
    Animatable* anim = Resolve(owner, sub);
    if (!anim) return false;
    const Value target = Value::Host(anim);
    if (EqualsNoCase(name, L"controller")) {
        auto* c = v.Is(Kind::HostObject) ? dynamic_cast<Control*>(v.Anim()) : nullptr;
        if (!c) throw ConversionError(v, L"Controller");
        auto* node = dynamic_cast<INode*>(owner.Anim());
        Control* tm = node ? node->GetTMController() : nullptr;
        bool done = false;
        if (tm && (EqualsNoCase(sub, L"pos") || EqualsNoCase(sub, L"position"))) done = tm->SetPositionController(c);
        else if (tm && EqualsNoCase(sub, L"rotation")) done = tm->SetRotationController(c);
        else if (tm && EqualsNoCase(sub, L"scale")) done = tm->SetScaleController(c);
        if (!done) throw RuntimeError(L"Cannot assign a controller to " + sub + L" of " + PrintForm(owner));
        return true;
    }
    const Value track = ctx.interp.GetProperty(target, name);
    if (auto* c = track.Is(Kind::HostObject) ? dynamic_cast<Control*>(track.Anim()) : nullptr) {
        const Value value = IsAngleTrack(name) && v.IsNumber() ? Value::Float(float(ToFloat(v) / kDegreesPerRadian)) : v;
        SetControllerScriptValue(c, ctx.interp.Time(), value);
        return true;
    }
    ctx.interp.SetProperty(target, name, v);
    return true;
}

// `anim[#name]` and `anim[n]`: the sub-anims of anything that has some (after the handlers of its kind).
void RegisterSubAnimIndexHandler() {
    HostObjectHandler h;
    h.name = L"sub-anims";
    h.accepts = [](Animatable* a) { return a->NumSubs() > 0; };
    h.getIndex = [](CallContext&, Animatable* a, const Value& index) -> std::optional<Value> {
        if (index.IsNumber()) {
            const int i = ToInt(index);
            if (i < 1 || i > a->NumSubs())
                throw RuntimeError(L"Index out of range: " + PrintForm(index) + L" in " + PrintForm(Value::Host(a)));
            Animatable* sub = a->SubAnim(i - 1);
            return sub ? Value::Host(sub) : Value::Undefined();
        }
        if (!index.Is(Kind::Name) && !index.Is(Kind::String)) return std::nullopt;
        Animatable* sub = SubAnimByName(a, index.Text());
        return sub ? Value::Host(sub) : Value::Undefined();
    };
    RegisterHostObjectHandler(std::move(h));
}

}  // namespace

void RegisterSceneSubAnimFunctions() {
    RegisterSubAnimIndexHandler();
    SetSubAnimAccess({Get, Set});
}

}  // namespace hostrt::mxs
