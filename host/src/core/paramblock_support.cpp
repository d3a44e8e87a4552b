// Support of both kinds of parameter block: controller values by parameter kind and undo pins.
#include "paramblock2_internal.h"

#include <algorithm>
#include <cmath>

namespace hostrt {

bool ControllerTakes(ValueKind kind) {
    return kind == ValueKind::Int || kind == ValueKind::Float || kind == ValueKind::Point3 ||
           kind == ValueKind::Point4;
}

ParamValue ControllerGet(Control* c, TimeValue t, ValueKind kind, Interval& valid) {
    switch (kind) {
    case ValueKind::Int:
    case ValueKind::Float: {
        float f = 0.0f;
        c->GetValue(t, &f, valid);
        return kind == ValueKind::Int ? ParamValue(int(std::lround(f))) : ParamValue(f);
    }
    case ValueKind::Point3: {
        Point3 p;
        c->GetValue(t, &p, valid);
        return ParamValue(p);
    }
    case ValueKind::Point4: {
        Point4 p;
        c->GetValue(t, &p, valid);
        return ParamValue(p);
    }
    default:
        return ParamValue::ZeroOf(kind);
    }
}

void ControllerSet(Control* c, TimeValue t, const ParamValue& v) {
    switch (v.Kind()) {
    case ValueKind::Int:
    case ValueKind::Float: {
        float f = v.AsFloat();
        c->SetValue(t, &f);
        break;
    }
    case ValueKind::Point3: {
        Point3 p = v.AsPoint3();
        c->SetValue(t, &p);
        break;
    }
    case ValueKind::Point4: {
        Point4 p = v.AsPoint4();
        c->SetValue(t, &p);
        break;
    }
    default:
        break;
    }
}

ParamValue CreationDefault(const ParamDef& def) {
    if (def.flags & P_NO_INIT) return ParamValue::ZeroOf(def.Kind());
    return (def.flags & P_RESET_DEFAULT) ? def.def : def.cur_def;
}

PinSet::~PinSet() {
    // Unpinning may delete a target, and that may delete others of the set: check each before touching it.
    auto pinned = std::move(pinned_);
    for (auto& [t, h] : pinned)
        if (Animatable::GetAnimByHandle(h) == t) t->UnpinForUndo();
}

void PinSet::Add(ReferenceTarget* t) {
    if (!t) return;
    t->PinForUndo();
    pinned_.emplace_back(t, Animatable::GetHandleByAnim(t));
}

void OfferDeletion(const std::vector<ReferenceTarget*>& targets) {
    std::vector<std::pair<ReferenceTarget*, AnimHandle>> items;
    for (ReferenceTarget* t : targets)
        if (t) items.emplace_back(t, Animatable::GetHandleByAnim(t));
    for (auto& [t, h] : items)
        if (Animatable::GetAnimByHandle(h) == t) t->MaybeAutoDelete();
}

}  // namespace hostrt
