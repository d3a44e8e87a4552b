// The float list controller: entries, weights, the active entry, cut and paste, and the published interface.
#include "scene/controllers/list_control.h"
#include "core/paired_scopes.h"
#include "io/count_chunk.h"

#include "hold.h"
#include "ioapi.h"
#include "istdplug.h"
#include "scene/objects/host_class_desc.h"

#include <algorithm>

namespace hostrt {

namespace {

constexpr ParamID kWeights = 0;
constexpr USHORT kCountChunk = 0x0200;
constexpr USHORT kActiveChunk = 0x0210;
constexpr USHORT kNameChunk = 0x0220;
constexpr ULONG kMaxEntries = 1u << 20;

bool holding() { return theHold.Holding() && !theHold.RestoreOrRedoing(); }

// The class, its weights block and its published interface, made together so that each finds the others.
struct ListClass {
    HostClassDesc<FloatListControl> desc{L"Float List", CTRL_FLOAT_CLASS_ID, HOST_FLOAT_LIST_CONTROL_CLASS_ID};
    ParamBlockDesc2 weights{0, L"Weights", 0, &desc, P_AUTO_CONSTRUCT};
    FPInterfaceDesc fp{LIST_CONTROLLER_INTERFACE,
                       L"list",
                       0,
                       &desc,
                       FP_MIXIN,
                       {FPFunctionDef(IListControl::list_getCount, L"getCount", TYPE_INT),
                        FPFunctionDef(IListControl::list_getActive, L"getActive", TYPE_INDEX),
                        FPFunctionDef(IListControl::list_setActive, L"setActive", TYPE_VOID,
                                      {FPParamDef(L"listIndex", TYPE_INDEX)}),
                        FPFunctionDef(IListControl::list_delete, L"delete", TYPE_VOID,
                                      {FPParamDef(L"listIndex", TYPE_INDEX)}),
                        FPFunctionDef(IListControl::list_cut, L"cut", TYPE_VOID,
                                      {FPParamDef(L"listIndex", TYPE_INDEX)}),
                        FPFunctionDef(IListControl::list_paste, L"paste", TYPE_VOID,
                                      {FPParamDef(L"listIndex", TYPE_INDEX)}),
                        FPFunctionDef(IListControl::list_getName, L"getName", TYPE_STRING,
                                      {FPParamDef(L"listIndex", TYPE_INDEX)}),
                        FPFunctionDef(IListControl::list_setName, L"setName", TYPE_VOID,
                                      {FPParamDef(L"listIndex", TYPE_INDEX), FPParamDef(L"name", TYPE_STRING)}),
                        FPFunctionDef(IListControl::list_getSubCtrl, L"getSubCtrl", TYPE_CONTROL,
                                      {FPParamDef(L"listIndex", TYPE_INDEX)}),
                        FPFunctionDef(IListControl::list_getSubCtrlWeight, L"getSubCtrlWeight", TYPE_FLOAT,
                                      {FPParamDef(L"listIndex", TYPE_INDEX)})}};
    ListClass() {
        weights.AutoConstruct(0);
        weights.AddParam(kWeights, L"weights", TYPE_FLOAT_TAB, P_ANIMATABLE | P_VARIABLE_SIZE, 0)
            .TableSize(0)
            .Default(1.0f);
    }
};

ListClass& listClass() {
    static ListClass c;
    return c;
}

}  // namespace

FPInterfaceDesc* ListControlInterfaceDesc() { return &listClass().fp; }

// ------------------------------------------------------------------------------------------ the controller

// Undo record of the active entry.
class FloatListControl::ActiveRestore : public RestoreObj {
public:
    ActiveRestore(FloatListControl* c, int before, int after)
        : c_(c), handle_(Animatable::GetHandleByAnim(c)), before_(before), after_(after) {}
    void Restore(int) override { apply(before_); }
    void Redo() override { apply(after_); }
    MSTR Description() override { return MSTR(L"Active list entry"); }

private:
    void apply(int v) {
        if (Animatable::GetAnimByHandle(handle_) == c_) c_->setActive(v, true);
    }
    FloatListControl* c_;
    AnimHandle handle_;
    int before_, after_;
};

ClassDesc2* FloatListControl::Desc() { return &listClass().desc; }

FloatListControl::FloatListControl(bool loading)
    : entries_(this, 1, [this] {
          // An undone cut brings the entry back: it is no longer waiting to be pasted.
          if (clip_ && entries_.IndexOf(clip_) >= 0) dropClip();
          structureChanged();
      }) {
    if (!loading) {
        hostrt::HoldSuspendedScope suspended;
        listClass().desc.MakeAutoParamBlocks(this);
    }
}

FloatListControl::~FloatListControl() { dropClip(); }

Class_ID FloatListControl::ClassID() { return HOST_FLOAT_LIST_CONTROL_CLASS_ID; }

RefTargetHandle FloatListControl::GetReference(int i) {
    if (i == 0) return weights_;
    return entries_.GetRef(i);
}

void FloatListControl::SetReference(int i, RefTargetHandle rtarg) {
    if (i == 0)
        weights_ = rtarg && rtarg->SuperClassID() == PARAMETER_BLOCK2_CLASS_ID ? static_cast<IParamBlock2*>(rtarg)
                                                                               : nullptr;
    else
        entries_.SetRef(i, rtarg);
}

BaseInterface* FloatListControl::GetInterface(Interface_ID id) {
    if (id == LIST_CONTROLLER_INTERFACE) return static_cast<IListControl*>(this);
    return Control::GetInterface(id);
}

Control* FloatListControl::GetSubCtrl(int index) { return dynamic_cast<Control*>(entries_.Target(index)); }

float FloatListControl::GetSubCtrlWeight(int index, TimeValue t) {
    if (!entries_.InRange(index)) return 0.f;
    float w = 1.f;
    Interval valid = FOREVER;
    if (weights_ && index < weights_->Count(kWeights)) weights_->GetValue(kWeights, t, w, valid, index);
    return w;
}

void FloatListControl::GetValue(TimeValue t, void* val, Interval& valid, GetSetMethod method) {
    float sum = 0.f;
    for (int i = 0; i < GetCount(); ++i) {
        Control* c = GetSubCtrl(i);
        if (!c) continue;
        float v = 0.f;
        c->GetValue(t, &v, valid, CTRL_ABSOLUTE);
        float w = 1.f;
        if (weights_ && i < weights_->Count(kWeights)) weights_->GetValue(kWeights, t, w, valid, i);
        sum += w * v;
    }
    if (method == CTRL_RELATIVE)
        *static_cast<float*>(val) += sum;
    else
        *static_cast<float*>(val) = sum;
}

void FloatListControl::SetValue(TimeValue t, void* val, int commit, GetSetMethod method) {
    Control* c = GetSubCtrl(active_);
    const float w = GetSubCtrlWeight(active_, t);
    if (!c || w == 0.f) return;
    float delta = *static_cast<float*>(val);
    if (method == CTRL_ABSOLUTE) {
        float total = 0.f;
        Interval iv = FOREVER;
        GetValue(t, &total, iv, CTRL_ABSOLUTE);
        delta -= total;
    }
    float move = delta / w;
    c->SetValue(t, &move, commit, CTRL_RELATIVE);
}

BOOL FloatListControl::IsAnimated() {
    for (int i = 0; i < GetCount(); ++i)
        if (Control* c = GetSubCtrl(i); c && c->IsAnimated()) return TRUE;
    return FALSE;
}

void FloatListControl::setActive(int index, bool announce) {
    if (index == active_) return;
    active_ = index;
    if (announce) NotifyDependents(FOREVER, 0, REFMSG_CHANGE);
}

void FloatListControl::SetActive(int index) {
    if (!entries_.InRange(index) || index == active_) return;
    if (holding()) theHold.Put(new ActiveRestore(this, active_, index));
    setActive(index, true);
}

void FloatListControl::insertEntry(int at, Control* c, const MSTR& name) {
    at = std::clamp(at, 0, GetCount());
    entries_.Insert(at, c, name);
    const float one = 1.f;
    // The list announces the change itself (258); the table's own message would read as a weight change.
    {
        hostrt::RefMessagesOffScope messagesOff;
        if (weights_) weights_->Insert(kWeights, at, 1, &one);
    }
    // The active entry stays the same controller; the first entry of an empty list becomes active.
    int next = active_ < 0 ? 0 : (active_ >= at ? active_ + 1 : active_);
    if (next != active_) {
        if (holding()) theHold.Put(new ActiveRestore(this, active_, next));
        setActive(next, false);
    }
}

void FloatListControl::removeEntry(int at, bool delOld) {
    entries_.Remove(at, delOld);
    {
        hostrt::RefMessagesOffScope messagesOff;
        if (weights_ && at < weights_->Count(kWeights)) weights_->Delete(kWeights, at, 1);
    }
    int next = active_;
    if (GetCount() == 0)
        next = -1;
    else if (active_ > at || active_ >= GetCount())
        next = active_ - 1;
    if (next != active_) {
        if (holding()) theHold.Put(new ActiveRestore(this, active_, next));
        setActive(next, false);
    }
}

void FloatListControl::DeleteItem(int index) {
    if (!entries_.InRange(index)) return;
    removeEntry(index, true);
    structureChanged();
}

void FloatListControl::dropClip() {
    Control* c = std::exchange(clip_, nullptr);
    if (c && Animatable::GetAnimByHandle(clipHandle_) == c) c->UnpinForUndo();
    clipName_ = MSTR();
}

void FloatListControl::CutItem(int index) {
    if (!entries_.InRange(index)) return;
    dropClip();
    clip_ = GetSubCtrl(index);
    clipName_ = entries_.ExtraAt(index);
    if (clip_) {
        clipHandle_ = Animatable::GetHandleByAnim(clip_);
        clip_->PinForUndo();
    }
    removeEntry(index, false);
    structureChanged();
}

void FloatListControl::PasteItem(int index) {
    if (!clip_ || Animatable::GetAnimByHandle(clipHandle_) != clip_ || clip_->TestAFlag(A_IS_DELETED)) return;
    insertEntry(index, clip_, clipName_);
    dropClip();
    structureChanged();
}

void FloatListControl::SetName(int index, MSTR name) {
    if (!entries_.InRange(index) || entries_.ExtraAt(index) == name) return;
    entries_.SetExtra(index, name);
    structureChanged();
}

MSTR FloatListControl::GetName(int index) {
    if (!entries_.InRange(index)) return MSTR();
    if (!entries_.ExtraAt(index).isNull()) return entries_.ExtraAt(index);
    Control* c = GetSubCtrl(index);
    return c ? c->ClassName() : MSTR();
}

Animatable* FloatListControl::SubAnim(int i) {
    if (i >= 0 && i < GetCount()) return GetSubCtrl(i);
    if (i == GetCount() + 1) return weights_;
    return nullptr;
}

MSTR FloatListControl::SubAnimName(int i, bool) {
    if (i >= 0 && i < GetCount()) return GetName(i);
    if (i == GetCount()) return MSTR(L"Available");
    if (i == GetCount() + 1) return MSTR(L"Weights");
    return MSTR();
}

int FloatListControl::SubNumToRefNum(int subNum) {
    if (subNum >= 0 && subNum < GetCount()) return subNum + 1;
    if (subNum == GetCount() + 1) return 0;
    return -1;
}

BOOL FloatListControl::CanAssignController(int subAnim) { return subAnim >= 0 && subAnim <= GetCount(); }

BOOL FloatListControl::AssignController(Animatable* control, int subAnim) {
    auto* c = dynamic_cast<Control*>(control);
    if (!c || c->SuperClassID() != CTRL_FLOAT_CLASS_ID || !CanAssignController(subAnim) || c == this) return FALSE;
    if (subAnim == GetCount())
        insertEntry(subAnim, c, MSTR());
    else
        entries_.Replace(subAnim, c);
    structureChanged();
    return TRUE;
}

IOResult FloatListControl::Save(ISave* isave) {
    ULONG written = 0;
    IOResult r = SaveCountChunk(isave, kCountChunk, ULONG(GetCount()));
    isave->BeginChunk(kActiveChunk);
    if (r == IO_OK) r = isave->Write(&active_, sizeof active_, &written);
    isave->EndChunk();
    for (int i = 0; i < GetCount() && r == IO_OK; ++i) {
        isave->BeginChunk(kNameChunk);
        r = isave->WriteWString(entries_.ExtraAt(i));
        isave->EndChunk();
    }
    return r;
}

IOResult FloatListControl::Load(ILoad* iload) {
    IOResult res;
    int named = 0;
    while ((res = iload->OpenChunk()) == IO_OK) {
        ULONG got = 0;
        bool ok = true;
        switch (iload->CurChunkID()) {
        case kCountChunk: {
            ULONG n = 0;
            ok = ReadCount(iload, kMaxEntries, n) == IO_OK;
            if (ok) entries_.ResizeForLoad(int(n));
            break;
        }
        case kActiveChunk:
            ok = iload->Read(&active_, sizeof active_, &got) == IO_OK && got == sizeof active_;
            break;
        case kNameChunk: {
            MSTR name;
            ok = named < GetCount() && iload->ReadWStringChunk(name) == IO_OK;
            if (ok) entries_.ExtraAt(named++) = name;
            break;
        }
        default:
            break;
        }
        iload->CloseChunk();
        if (!ok) return IO_ERROR;
    }
    if (active_ < -1 || active_ >= GetCount()) return IO_ERROR;
    return res == IO_END ? IO_OK : res;
}

RefTargetHandle FloatListControl::Clone(RemapDir& remap) {
    auto* c = new FloatListControl(true);
    c->ReplaceReference(0, remap.CloneRef(weights_));
    for (int i = 0; i < GetCount(); ++i) c->entries_.Insert(i, remap.CloneRef(GetSubCtrl(i)), entries_.ExtraAt(i));
    c->active_ = active_;
    BaseClone(this, c, remap);
    return c;
}

}  // namespace hostrt

// ------------------------------------------------------------------------------------ the published interface

FPInterfaceDesc* IListControl::GetDesc() { return hostrt::ListControlInterfaceDesc(); }

FPStatus IListControl::_dispatch_fn(FunctionID fid, TimeValue t, FPValue& result, FPParams* p) {
    auto arg = [&](int i) -> const FPValue& { return p->params[std::size_t(i)]; };
    switch (fid) {
    case list_getCount:
        result = FPValue(GetCount());
        return FPS_OK;
    case list_getActive:
        result = FPValue(TYPE_INDEX, GetActive());
        return FPS_OK;
    case list_setActive:
        SetActive(arg(0).i);
        return FPS_OK;
    case list_delete:
        DeleteItem(arg(0).i);
        return FPS_OK;
    case list_cut:
        CutItem(arg(0).i);
        return FPS_OK;
    case list_paste:
        PasteItem(arg(0).i);
        return FPS_OK;
    case list_getName:
        result = FPValue(GetName(arg(0).i));
        return FPS_OK;
    case list_setName:
        SetName(arg(0).i, MSTR(arg(1).s ? arg(1).s : L""));
        return FPS_OK;
    case list_getSubCtrl:
        result = FPValue(TYPE_CONTROL, GetSubCtrl(arg(0).i));
        return FPS_OK;
    case list_getSubCtrlWeight:
        result = FPValue(GetSubCtrlWeight(arg(0).i, t));
        return FPS_OK;
    default:
        return FPS_NO_SUCH_FUNCTION;
    }
}
