// IParamBlock2: values, accessors, controllers, tables, references and sub-anims of a parameter block.
#include "iparamb2.h"
#include "paramblock2_internal.h"
#include "paramblock_rollouts.h"

#include <algorithm>
#include <utility>

using hostrt::ParamValue;
using hostrt::PB2Entry;
using hostrt::ValueKind;

namespace {

// The PB2Value an accessor sees, with the working copies its pointer members point at.
class AccessorValue {
public:
    AccessorValue(const ParamValue& v, ValueKind kind, const MCHAR* text) : kind_(kind) {
        switch (kind) {
        case ValueKind::Int: pv.i = v.AsInt(); break;
        case ValueKind::Float: pv.f = v.AsFloat(); break;
        case ValueKind::Point2: p2_ = v.AsPoint2(); pv.p2 = &p2_; break;
        case ValueKind::Point3: p3_ = v.AsPoint3(); pv.p = &p3_; break;
        case ValueKind::Point4: p4_ = v.AsPoint4(); pv.p4 = &p4_; break;
        case ValueKind::Matrix3: m_ = v.AsMatrix3(); pv.m = &m_; break;
        case ValueKind::String:
            text_ = v.AsString();
            pv.s = text ? text : text_.data();
            break;
        case ValueKind::Ref: pv.r = v.AsRef(); break;
        case ValueKind::None: break;
        }
    }
    ParamValue Result() const {
        switch (kind_) {
        case ValueKind::Int: return ParamValue(pv.i);
        case ValueKind::Float: return ParamValue(pv.f);
        case ValueKind::Point2: return pv.p2 ? ParamValue(*pv.p2) : ParamValue::ZeroOf(kind_);
        case ValueKind::Point3: return pv.p ? ParamValue(*pv.p) : ParamValue::ZeroOf(kind_);
        case ValueKind::Point4: return pv.p4 ? ParamValue(*pv.p4) : ParamValue::ZeroOf(kind_);
        case ValueKind::Matrix3: return pv.m ? ParamValue(*pv.m) : ParamValue::ZeroOf(kind_);
        case ValueKind::String: return ParamValue(MSTR(pv.s));
        case ValueKind::Ref: return ParamValue(pv.r);
        case ValueKind::None: break;
        }
        return ParamValue();
    }
    PB2Value pv;

private:
    ValueKind kind_;
    Point2 p2_;
    Point3 p3_;
    Point4 p4_;
    Matrix3 m_;
    MSTR text_;
};

// Material and texture-map values are the sub-anims of their (plain) parameters.
bool isSubAnimValue(const ParamDef& def) {
    const int t = base_type(def.type);
    return !def.IsTable() && def.IsReference() && (t == TYPE_MTL || t == TYPE_TEXMAP);
}

// Targets a block owns: replaced ones go when nothing else needs them. Nodes belong to the scene.
bool ownsTargets(const ParamDef& def) { return def.IsReference() && base_type(def.type) != TYPE_INODE; }

}  // namespace

// ------------------------------------------------------------------------------------------------ creation

IParamBlock2::IParamBlock2(ParamBlockDesc2* pdesc, ReferenceMaker* owner)
    : owner_(owner), ownerHandle_(Animatable::GetHandleByAnim(owner)) {
    if (pdesc) init(pdesc);
}

IParamBlock2::~IParamBlock2() { hostrt::ForgetParamRollout(this); }

void IParamBlock2::init(ParamBlockDesc2* pdesc) {
    desc_ = pdesc;
    params_.assign(std::size_t(desc_->Count()), Param{});
    for (int i = 0; i < desc_->Count(); ++i) {
        const ParamDef& def = desc_->GetParamDefByIndex(i);
        const int n = def.IsTable() ? def.tab_size : 1;
        // Reference defaults are null (the builder allows no other), so no reference is made here.
        params_[std::size_t(i)].entries.assign(std::size_t(n), PB2Entry{hostrt::CreationDefault(def), nullptr});
    }
}

IParamBlock2* CreateParameterBlock2(ParamBlockDesc2* pdesc, ReferenceMaker* owner) {
    if (!pdesc) throw MAXException(L"CreateParameterBlock2: no block descriptor given");
    return new IParamBlock2(pdesc, owner);
}

BlockID IParamBlock2::ID() const { return desc_ ? desc_->ID : BlockID(-1); }

ReferenceMaker* IParamBlock2::GetOwner() {
    if (owner_ && Animatable::GetAnimByHandle(ownerHandle_) == owner_) return owner_;
    owner_ = nullptr;
    if (!desc_ || !desc_->cd) return nullptr;
    const SClass_ID sc = desc_->cd->SuperClassID();
    const Class_ID cid = desc_->cd->ClassID();
    for (ReferenceMaker* m : Dependents()) {
        if (m->SuperClassID() == sc && m->ClassID() == cid) {
            owner_ = m;
            ownerHandle_ = Animatable::GetHandleByAnim(m);
            return m;
        }
    }
    return nullptr;
}

ParamDef& IParamBlock2::GetParamDef(ParamID id) {
    if (!desc_) throw MAXException(L"a parameter block without a descriptor has no parameters");
    return desc_->GetParamDef(id);
}

ParamType2 IParamBlock2::GetParameterType(ParamID id) const {
    const int index = IDtoIndex(id);
    return index < 0 ? TYPE_VOID : desc_->GetParamDefByIndex(index).type;
}

// ----------------------------------------------------------------------------------------------- reading

BOOL IParamBlock2::read(ParamID id, TimeValue t, ValueKind want, ParamValue& out, Interval& valid, int tabIndex,
                        const MCHAR** text) {
    const int index = IDtoIndex(id);
    if (index < 0) return FALSE;
    const ParamDef& def = desc_->GetParamDefByIndex(index);
    const auto& entries = params_[std::size_t(index)].entries;
    if (tabIndex < 0 || tabIndex >= int(entries.size())) return FALSE;
    const PB2Entry& e = entries[std::size_t(tabIndex)];
    const ValueKind kind = def.Kind();
    ParamValue v = e.control ? hostrt::ControllerGet(e.control, t, kind, valid) : e.value;
    const MCHAR* str = kind == ValueKind::String ? e.value.AsString().data() : nullptr;
    if (def.accessor) {
        AccessorValue av(v, kind, str);
        def.accessor->Get(av.pv, GetOwner(), id, tabIndex, t, valid);
        v = av.Result();
        if (kind == ValueKind::String) str = av.pv.s ? av.pv.s : L"";
    }
    auto converted = v.ConvertedTo(want);
    if (!converted) return FALSE;
    out = std::move(*converted);
    if (text) *text = str;
    return TRUE;
}

ParamValue IParamBlock2::readOr(ParamID id, TimeValue t, ValueKind want, int tabIndex) {
    ParamValue v;
    Interval valid = FOREVER;
    return read(id, t, want, v, valid, tabIndex) ? v : ParamValue::ZeroOf(want);
}

BOOL IParamBlock2::GetValue(ParamID id, TimeValue t, float& v, Interval& valid, int tabIndex) {
    ParamValue out;
    if (!read(id, t, ValueKind::Float, out, valid, tabIndex)) return FALSE;
    v = out.AsFloat();
    return TRUE;
}

BOOL IParamBlock2::GetValue(ParamID id, TimeValue t, int& v, Interval& valid, int tabIndex) {
    ParamValue out;
    if (!read(id, t, ValueKind::Int, out, valid, tabIndex)) return FALSE;
    v = out.AsInt();
    return TRUE;
}

BOOL IParamBlock2::GetValue(ParamID id, TimeValue t, Point2& v, Interval& valid, int tabIndex) {
    ParamValue out;
    if (!read(id, t, ValueKind::Point2, out, valid, tabIndex)) return FALSE;
    v = out.AsPoint2();
    return TRUE;
}

BOOL IParamBlock2::GetValue(ParamID id, TimeValue t, Point3& v, Interval& valid, int tabIndex) {
    ParamValue out;
    if (!read(id, t, ValueKind::Point3, out, valid, tabIndex)) return FALSE;
    v = out.AsPoint3();
    return TRUE;
}

BOOL IParamBlock2::GetValue(ParamID id, TimeValue t, Point4& v, Interval& valid, int tabIndex) {
    ParamValue out;
    if (!read(id, t, ValueKind::Point4, out, valid, tabIndex)) return FALSE;
    v = out.AsPoint4();
    return TRUE;
}

BOOL IParamBlock2::GetValue(ParamID id, TimeValue t, Color& v, Interval& valid, int tabIndex) {
    Point3 p;
    if (!GetValue(id, t, p, valid, tabIndex)) return FALSE;
    v = Color(p);
    return TRUE;
}

BOOL IParamBlock2::GetValue(ParamID id, TimeValue t, AColor& v, Interval& valid, int tabIndex) {
    Point4 p;
    if (!GetValue(id, t, p, valid, tabIndex)) return FALSE;
    v = AColor(p.x, p.y, p.z, p.w);
    return TRUE;
}

BOOL IParamBlock2::GetValue(ParamID id, TimeValue t, Matrix3& v, Interval& valid, int tabIndex) {
    ParamValue out;
    if (!read(id, t, ValueKind::Matrix3, out, valid, tabIndex)) return FALSE;
    v = out.AsMatrix3();
    return TRUE;
}

BOOL IParamBlock2::GetValue(ParamID id, TimeValue t, MSTR& v, Interval& valid, int tabIndex) {
    ParamValue out;
    if (!read(id, t, ValueKind::String, out, valid, tabIndex)) return FALSE;
    v = out.AsString();
    return TRUE;
}

BOOL IParamBlock2::GetValue(ParamID id, TimeValue t, const MCHAR*& v, Interval& valid, int tabIndex) {
    ParamValue out;
    const MCHAR* text = nullptr;
    if (!read(id, t, ValueKind::String, out, valid, tabIndex, &text)) return FALSE;
    v = text;
    return TRUE;
}

BOOL IParamBlock2::GetValue(ParamID id, TimeValue t, ReferenceTarget*& v, Interval& valid, int tabIndex) {
    ParamValue out;
    if (!read(id, t, ValueKind::Ref, out, valid, tabIndex)) return FALSE;
    v = out.AsRef();
    return TRUE;
}

int IParamBlock2::GetInt(ParamID id, TimeValue t, int tabIndex) { return readOr(id, t, ValueKind::Int, tabIndex).AsInt(); }

float IParamBlock2::GetFloat(ParamID id, TimeValue t, int tabIndex) {
    return readOr(id, t, ValueKind::Float, tabIndex).AsFloat();
}

const MCHAR* IParamBlock2::GetStr(ParamID id, TimeValue t, int tabIndex) {
    const MCHAR* text = nullptr;
    Interval valid = FOREVER;
    return GetValue(id, t, text, valid, tabIndex) ? text : nullptr;
}

Point2 IParamBlock2::GetPoint2(ParamID id, TimeValue t, int tabIndex) {
    return readOr(id, t, ValueKind::Point2, tabIndex).AsPoint2();
}

Point3 IParamBlock2::GetPoint3(ParamID id, TimeValue t, int tabIndex) {
    return readOr(id, t, ValueKind::Point3, tabIndex).AsPoint3();
}

Point4 IParamBlock2::GetPoint4(ParamID id, TimeValue t, int tabIndex) {
    return readOr(id, t, ValueKind::Point4, tabIndex).AsPoint4();
}

Color IParamBlock2::GetColor(ParamID id, TimeValue t, int tabIndex) { return Color(GetPoint3(id, t, tabIndex)); }

AColor IParamBlock2::GetAColor(ParamID id, TimeValue t, int tabIndex) {
    Point4 p = GetPoint4(id, t, tabIndex);
    return AColor(p.x, p.y, p.z, p.w);
}

Matrix3 IParamBlock2::GetMatrix3(ParamID id, TimeValue t, int tabIndex) {
    return readOr(id, t, ValueKind::Matrix3, tabIndex).AsMatrix3();
}

ReferenceTarget* IParamBlock2::GetReferenceTarget(ParamID id, TimeValue t, int tabIndex) {
    return readOr(id, t, ValueKind::Ref, tabIndex).AsRef();
}

// ----------------------------------------------------------------------------------------------- writing

void IParamBlock2::NotifyParamChanged(ParamID id, int tabIndex) {
    lastId_ = id;
    lastTab_ = tabIndex;
    NotifyDependents(FOREVER, PART_ALL, REFMSG_CHANGE);
    if (map_) map_->Invalidate(id, tabIndex);
}

void IParamBlock2::RestoreParam(int index, int tabIndex, const std::vector<PB2Entry>& entries) {
    AssignEntries(index, entries);
    NotifyParamChanged(IndextoID(index), tabIndex);
}

void IParamBlock2::AssignEntries(int index, std::vector<PB2Entry> entries) {
    if (index < 0 || index >= NumParams()) return;
    const ParamDef& def = desc_->GetParamDefByIndex(index);
    auto& current = params_[std::size_t(index)].entries;
    if (!hasSlots(index)) {
        current = std::move(entries);
        return;
    }
    // Reference bookkeeping is per target, not per slot: drop this parameter's references, change the layout,
    // then make the new ones. The reference system records none of it; callers put their own undo records.
    const bool isRef = def.IsReference();
    auto targetOf = [isRef](const PB2Entry& e) -> ReferenceTarget* { return isRef ? e.value.AsRef() : e.control; };
    hostrt::HoldSuspension quiet;
    const int first = firstRefOf(index);
    std::vector<ReferenceTarget*> dropped;
    for (int k = int(current.size()) - 1; k >= 0; --k) {
        if (ReferenceTarget* t = targetOf(current[std::size_t(k)])) {
            dropped.push_back(t);
            ReplaceReference(first + k, nullptr, FALSE);
        }
    }
    std::vector<ReferenceTarget*> targets;
    for (PB2Entry& e : entries) {
        targets.push_back(targetOf(e));
        if (isRef) e.value = ParamValue(nullptr);
        e.control = nullptr;
    }
    current = std::move(entries);
    for (std::size_t k = 0; k < targets.size(); ++k)
        if (targets[k]) ReplaceReference(first + int(k), targets[k], FALSE);
    std::erase_if(dropped, [&](ReferenceTarget* t) { return std::find(targets.begin(), targets.end(), t) != targets.end(); });
    if (ownsTargets(def) || !isRef) hostrt::OfferDeletion(dropped);
}

void IParamBlock2::recordAndAssign(int index, std::vector<PB2Entry> entries, int tabIndex) {
    std::unique_ptr<hostrt::ParamRestore<IParamBlock2>> rec;
    if (hostrt::Recording())
        rec = std::make_unique<hostrt::ParamRestore<IParamBlock2>>(this, index, tabIndex,
                                                                    params_[std::size_t(index)].entries);
    AssignEntries(index, std::move(entries));
    if (rec) {
        rec->SetAfter(params_[std::size_t(index)].entries);
        theHold.Put(rec.release());
    }
}

BOOL IParamBlock2::set(ParamID id, TimeValue t, const ParamValue& v, int tabIndex) {
    const int index = IDtoIndex(id);
    if (index < 0) return FALSE;
    const ParamDef& def = desc_->GetParamDefByIndex(index);
    auto fitted = v.ConvertedTo(def.Kind());
    if (!fitted || tabIndex < 0 || tabIndex >= int(params_[std::size_t(index)].entries.size())) return FALSE;
    auto entryAt = [&]() -> PB2Entry* {
        auto& entries = params_[std::size_t(index)].entries;
        return tabIndex < int(entries.size()) ? &entries[std::size_t(tabIndex)] : nullptr;
    };
    auto store = [&](const ParamValue& value) {
        if (Control* c = entryAt()->control) {
            // The controller keeps its own undo. Its change message stops here: the block announces the change
            // itself, after the accessor.
            Control* outer = std::exchange(settingControl_, c);
            hostrt::ControllerSet(c, t, value);
            settingControl_ = outer;
            return;
        }
        auto entries = params_[std::size_t(index)].entries;
        entries[std::size_t(tabIndex)].value = value;
        recordAndAssign(index, std::move(entries), tabIndex);
    };

    // The new value is in place before the accessor hears of it, so what it reads back is the new value.
    store(*fitted);
    if (def.accessor) {
        AccessorValue av(*fitted, def.Kind(), nullptr);
        def.accessor->Set(av.pv, GetOwner(), id, tabIndex, t);
        // An accessor that changed v (a clamp, say) gets its value stored, unless it set the parameter itself.
        ParamValue adjusted = av.Result();
        PB2Entry* e = entryAt();
        if (e && !e->control && !(adjusted == *fitted) && e->value == *fitted) store(adjusted);
    }
    NotifyParamChanged(id, tabIndex);
    return TRUE;
}

// ------------------------------------------------------------------------------------------------- tables

int IParamBlock2::Count(ParamID id) const {
    const int index = IDtoIndex(id);
    if (index < 0) return 0;
    return desc_->GetParamDefByIndex(index).IsTable() ? int(params_[std::size_t(index)].entries.size()) : 1;
}

BOOL IParamBlock2::SetCount(ParamID id, int n) {
    const int index = IDtoIndex(id);
    if (index < 0 || n < 0) return FALSE;
    const ParamDef& def = desc_->GetParamDefByIndex(index);
    if (!def.IsTable()) return FALSE;
    auto entries = params_[std::size_t(index)].entries;
    if (int(entries.size()) == n) return TRUE;
    entries.resize(std::size_t(n), PB2Entry{hostrt::CreationDefault(def), nullptr});
    recordAndAssign(index, std::move(entries), -1);
    if (def.accessor) def.accessor->TabChanged(tab_setcount, GetOwner(), id, 0, n);
    NotifyParamChanged(id, -1);
    return TRUE;
}

int IParamBlock2::Resize(ParamID id, int n) {
    const int index = IDtoIndex(id);
    if (index < 0 || n < 0 || !desc_->GetParamDefByIndex(index).IsTable()) return 0;
    params_[std::size_t(index)].entries.reserve(std::size_t(n));
    return 1;
}

int IParamBlock2::insert(ParamID id, int at, std::vector<ParamValue> values) {
    const int index = IDtoIndex(id);
    if (index < 0) return -1;
    const ParamDef& def = desc_->GetParamDefByIndex(index);
    auto entries = params_[std::size_t(index)].entries;
    const bool append = at < 0;
    if (append) at = int(entries.size());
    if (!def.IsTable() || at > int(entries.size())) return -1;
    std::vector<PB2Entry> added;
    for (const ParamValue& v : values) {
        if (v.Empty()) {
            added.push_back(PB2Entry{hostrt::CreationDefault(def), nullptr});
            continue;
        }
        auto fitted = v.ConvertedTo(def.Kind());
        if (!fitted) return -1;
        added.push_back(PB2Entry{*fitted, nullptr});
    }
    entries.insert(entries.begin() + at, added.begin(), added.end());
    recordAndAssign(index, std::move(entries), -1);
    if (def.accessor) def.accessor->TabChanged(append ? tab_append : tab_insert, GetOwner(), id, at, int(added.size()));
    NotifyParamChanged(id, -1);
    return at;
}

int IParamBlock2::Delete(ParamID id, int start, int n) {
    const int index = IDtoIndex(id);
    if (index < 0) return -1;
    const ParamDef& def = desc_->GetParamDefByIndex(index);
    auto entries = params_[std::size_t(index)].entries;
    if (!def.IsTable() || start < 0 || n < 0 || start + n > int(entries.size())) return -1;
    entries.erase(entries.begin() + start, entries.begin() + start + n);
    const int count = int(entries.size());
    recordAndAssign(index, std::move(entries), -1);
    if (def.accessor) def.accessor->TabChanged(tab_delete, GetOwner(), id, start, n);
    NotifyParamChanged(id, -1);
    return count;
}

// -------------------------------------------------------------------------------------------- controllers

Control* IParamBlock2::GetController(ParamID id, int tabIndex) {
    const int index = IDtoIndex(id);
    if (index < 0) return nullptr;
    const auto& entries = params_[std::size_t(index)].entries;
    return tabIndex >= 0 && tabIndex < int(entries.size()) ? entries[std::size_t(tabIndex)].control : nullptr;
}

BOOL IParamBlock2::SetController(ParamID id, int tabIndex, Control* c, BOOL preserveValue) {
    const int index = IDtoIndex(id);
    if (index < 0) return FALSE;
    const ParamDef& def = desc_->GetParamDefByIndex(index);
    auto entries = params_[std::size_t(index)].entries;
    if (!def.IsAnimatable() || tabIndex < 0 || tabIndex >= int(entries.size())) return FALSE;
    PB2Entry& e = entries[std::size_t(tabIndex)];
    if (e.control == c) return TRUE;
    Interval valid = FOREVER;
    const ParamValue current = e.control ? hostrt::ControllerGet(e.control, 0, def.Kind(), valid) : e.value;
    if (c && preserveValue) {
        hostrt::HoldSuspension quiet;  // part of this assignment, which the block's own record takes back
        hostrt::ControllerSet(c, 0, current);
    }
    e.value = current;
    e.control = c;
    recordAndAssign(index, std::move(entries), tabIndex);
    NotifyParamChanged(id, tabIndex);
    NotifyDependents(FOREVER, PART_ALL, REFMSG_SUBANIM_STRUCTURE_CHANGED);
    return TRUE;
}

BOOL IParamBlock2::RemoveController(ParamID id, int tabIndex) {
    if (!GetController(id, tabIndex)) return FALSE;
    return SetController(id, tabIndex, nullptr);
}

// ------------------------------------------------------------------------------------ references, sub-anims

bool IParamBlock2::hasSlots(int index) const {
    const ParamDef& def = desc_->GetParamDefByIndex(index);
    return def.IsReference() || def.IsAnimatable();
}

int IParamBlock2::firstRefOf(int index) {
    int first = 0;
    for (int p = 0; p < index; ++p)
        if (hasSlots(p)) first += int(params_[std::size_t(p)].entries.size());
    return first;
}

std::pair<int, int> IParamBlock2::refSlot(int i) {
    if (i < 0) return {-1, -1};
    for (int p = 0; p < NumParams(); ++p) {
        if (!hasSlots(p)) continue;
        const int n = int(params_[std::size_t(p)].entries.size());
        if (i < n) return {p, i};
        i -= n;
    }
    return {-1, -1};
}

int IParamBlock2::NumRefs() {
    int n = 0;
    for (int p = 0; p < NumParams(); ++p)
        if (hasSlots(p)) n += int(params_[std::size_t(p)].entries.size());
    return n;
}

RefTargetHandle IParamBlock2::GetReference(int i) {
    auto [p, k] = refSlot(i);
    if (p < 0) return nullptr;
    const PB2Entry& e = params_[std::size_t(p)].entries[std::size_t(k)];
    return desc_->GetParamDefByIndex(p).IsReference() ? e.value.AsRef() : e.control;
}

void IParamBlock2::SetReference(int i, RefTargetHandle rtarg) {
    auto [p, k] = refSlot(i);
    if (p < 0) return;
    PB2Entry& e = params_[std::size_t(p)].entries[std::size_t(k)];
    if (desc_->GetParamDefByIndex(p).IsReference())
        e.value = ParamValue(rtarg);
    else
        e.control = dynamic_cast<Control*>(rtarg);
}

RefResult IParamBlock2::NotifyRefChanged(const Interval&, RefTargetHandle hTarget, PartID&, RefMessage message,
                                         BOOL) {
    // The block's targets are parts of it; their deletion is the block's business only.
    if (message == REFMSG_TARGET_DELETED) return REF_STOP;
    if (message != REFMSG_CHANGE) return REF_SUCCEED;
    if (hTarget && hTarget == settingControl_) return REF_STOP;
    const int slot = FindRef(hTarget);
    auto [p, k] = refSlot(slot);
    if (p < 0) return REF_SUCCEED;
    const ParamDef& def = desc_->GetParamDefByIndex(p);
    // A node's own changes (moves, edits) are no change of the block, which only names the node.
    if (base_type(def.type) == TYPE_INODE) return REF_STOP;
    lastId_ = def.ID;
    lastTab_ = k;
    return REF_SUCCEED;
}

Animatable* IParamBlock2::SubAnim(int i) {
    if (i < 0 || i >= NumParams()) return nullptr;
    const ParamDef& def = desc_->GetParamDefByIndex(i);
    if (def.IsTable()) return nullptr;
    const PB2Entry& e = params_[std::size_t(i)].entries.front();
    if (def.IsAnimatable()) return e.control;
    return isSubAnimValue(def) ? e.value.AsRef() : nullptr;
}

MSTR IParamBlock2::SubAnimName(int i, bool) {
    return i >= 0 && i < NumParams() ? desc_->GetParamDefByIndex(i).int_name : MSTR();
}

int IParamBlock2::SubNumToRefNum(int subNum) {
    if (subNum < 0 || subNum >= NumParams()) return -1;
    const ParamDef& def = desc_->GetParamDefByIndex(subNum);
    if (def.IsTable() || !(def.IsAnimatable() || isSubAnimValue(def))) return -1;
    return firstRefOf(subNum);
}

BOOL IParamBlock2::CanAssignController(int subAnim) {
    if (subAnim < 0 || subAnim >= NumParams()) return FALSE;
    const ParamDef& def = desc_->GetParamDefByIndex(subAnim);
    return !def.IsTable() && def.IsAnimatable() ? TRUE : FALSE;
}

BOOL IParamBlock2::AssignController(Animatable* control, int subAnim) {
    auto* c = dynamic_cast<Control*>(control);
    if (!CanAssignController(subAnim) || (control && !c)) return FALSE;
    return SetController(IndextoID(subAnim), 0, c);
}

BOOL IParamBlock2::IsAnimated() {
    for (const Param& p : params_)
        for (const PB2Entry& e : p.entries)
            if (e.control && e.control->IsAnimated()) return TRUE;
    return FALSE;
}
