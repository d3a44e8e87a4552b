// The parameter-block-2 record: its change handler, the baseline of table sizes and referenced items, writing
// the snapshots back after a reload, and its chunks.
#include "anims/ref_anim_pblock2.h"

#include "anims/classifier.h"
#include "anims/ref_anim_steps.h"
#include "anims/ref_anim_transfer.h"
#include "frame/module_state.h"
#include "records/chunk_io.h"
#include "records/ref_base.h"

#include "control.h"
#include "hold.h"
#include "iparamb2.h"

#include <string>

namespace {

constexpr USHORT kParamsChunk = 0x002A;
constexpr USHORT kTabsChunk = 0x002B;
constexpr USHORT kModeChunk = 0x002C;
constexpr USHORT kUndoGroupChunk = 0x002D;
// A definition flag that takes a parameter out of the snapshots' reach.
constexpr DWORD kUnreachableParamFlag = 0x8000;
// The sub-anim name of a table entry below its parameter in a record's path.
constexpr const MCHAR* kTabItemName = L"TabItem";

// Value types whose values are scene items the block references: material, texture map, node, reference
// target, parameter block, and the two further reference types of newer hosts.
bool IsReferenceParamType(int type) {
    switch (type & ~TYPE_TAB) {
    case TYPE_MTL: case TYPE_TEXMAP: case TYPE_INODE: case TYPE_REFTARG: case TYPE_PBLOCK2: case 54: case 55:
        return true;
    default: return false;
    }
}

bool IsUndoOrRedo() { return theHold.RestoreOrRedoing() != FALSE; }
bool IsIdle() { return vandrels::GetOperationMode() == vandrels::kModeIdle; }

MSTR Number(int n) { return MSTR(std::to_wstring(n).c_str()); }

}  // namespace

RefAnimPblock2::~RefAnimPblock2() {
    DeleteParamList(overriddenParams_);
    DeleteParamList(overriddenTabs_);
    freeBaseline();
}

std::uint32_t RefAnimPblock2::GetType() {
    switch (tabResizeOverride_) {
    case 0: return undoGroup_ ? kCodePblock2UndoGroup : kCodePblock2;
    case 1: return kCodePblock2ResizeOverride1;
    case 2: return kCodePblock2ResizeOverride2;
    default: return kCodePblock2;
    }
}

IParamBlock2* RefAnimPblock2::block() const {
    Animatable* anim = GetAnim();
    return anim && anim->SuperClassID() == PARAMETER_BLOCK2_CLASS_ID ? static_cast<IParamBlock2*>(anim) : nullptr;
}

Pblock2Param* RefAnimPblock2::FindParam(int paramID, int tabIndex) const {
    for (Pblock2Param* param : overriddenParams_)
        if (param->paramID == paramID && param->tabIndex == tabIndex) return param;
    return nullptr;
}

// ------------------------------------------------------------------------------------------------ baseline

void RefAnimPblock2::freeBaseline() {
    for (Tab<ReferenceTarget*>* values : refTabValues_) delete values;
    refTabValues_.ZeroCount();
    refTabCounts_.ZeroCount();
    baselineTaken_ = 0;
}

void RefAnimPblock2::takeBaseline() {
    freeBaseline();
    IParamBlock2* pb = block();
    if (!pb || !pb->GetDesc()) return;
    refTabCounts_.SetCount(pb->NumParams());
    refTabValues_.SetCount(pb->NumParams());
    for (int i = 0; i < pb->NumParams(); ++i) {
        refTabCounts_[i] = 0;
        refTabValues_[i] = nullptr;
        refreshBaseline(pb, i);
    }
    baselineTaken_ = 1;
}

void RefAnimPblock2::refreshBaseline(IParamBlock2* pb, int index) {
    if (index < 0 || index >= refTabCounts_.Count()) return;
    const ParamID id = pb->IndextoID(index);
    const int count = pb->Count(id);
    refTabCounts_[index] = count;
    if (!IsReferenceParamType(pb->GetParameterType(id))) return;
    if (!refTabValues_[index]) refTabValues_[index] = new Tab<ReferenceTarget*>();
    Tab<ReferenceTarget*>& values = *refTabValues_[index];
    values.SetCount(count);
    for (int k = 0; k < count; ++k) values[k] = pb->GetReferenceTarget(id, 0, k);
}

// ------------------------------------------------------------------------------------------ change handler

void RefAnimPblock2::markModified() {
    if (!IsModified()) SetOverrideBits(kOverrideModified, true, true);
}

void RefAnimPblock2::recordReference(IParamBlock2* pb, int index, int tabIndex, ReferenceTarget* target) {
    RefBase* owner = GetOwner();
    if (!owner || !target) return;
    const ParamID id = pb->IndextoID(index);
    Tab<WStr*> names;
    for (WStr* name : GetPath()) names.Append(new WStr(name ? *name : WStr()));
    Tab<int> numbers = GetPathByNumber();
    names.Append(new WStr(pb->GetParamDef(id).int_name));
    numbers.Append(index + 1);
    if (pb->GetParamDef(id).IsTable()) {
        names.Append(new WStr(kTabItemName));
        numbers.Append(tabIndex);
    }
    std::uint32_t code = ClassifyAnim(target, pb);
    // A node held in a parameter gets a plain record, as a node met in the tree build does.
    if (code == 0 || code == kCodeIgnore || code == kCodeNodeAsSubAnim) code = kCodePlain;
    owner->CreateRefAnim(code, target, names, numbers, kOverrideReplaced);
}

void RefAnimPblock2::snapshot(IParamBlock2* pb, ParamID id, int tabIndex) {
    if (Pblock2Param* existing = FindParam(id, tabIndex)) {
        existing->Capture(pb);
        return;
    }
    if (IsUndoOrRedo()) return;
    Pblock2Param* param = SnapshotParam(pb, id, tabIndex);
    if (!param) return;
    if (theHold.Holding()) theHold.Put(new Param2ArrayRestore(&overriddenParams_, param, true));
    overriddenParams_.Append(param);
}

bool RefAnimPblock2::recordTableResize(IParamBlock2* pb, ParamID id, int index) {
    if (IsUndoOrRedo() || tabResizeOverride_ == 2) {
        refreshBaseline(pb, index);
        return false;
    }
    if (tabResizeOverride_ != 1) {
        refreshBaseline(pb, index);
        PromoteToParent(GetOwnerTarget());
        return true;
    }
    Pblock2Param* table = nullptr;
    for (Pblock2Param* param : overriddenTabs_)
        if (param->paramID == id) table = param;
    if (table) {
        table->Capture(pb);
    } else {
        table = new TabParam(pb->GetParamDef(id).int_name, id, -1);
        table->Capture(pb);
        if (theHold.Holding()) theHold.Put(new Param2ArrayRestore(&overriddenTabs_, table, true));
        overriddenTabs_.Append(table);
    }
    const bool references = IsReferenceParamType(pb->GetParameterType(id));
    for (int k = 0; k < pb->Count(id); ++k) {
        if (references)
            recordReference(pb, index, k, pb->GetReferenceTarget(id, 0, k));
        else
            snapshot(pb, id, k);
    }
    refreshBaseline(pb, index);
    markModified();
    return true;
}

RefResult RefAnimPblock2::NotifyRefChanged(const Interval&, RefTargetHandle hTarget, PartID&, RefMessage message,
                                           BOOL) {
    IParamBlock2* pb = block();
    if (!pb || hTarget != pb || message != REFMSG_CHANGE || !pb->GetDesc()) return REF_STOP;
    int tabIndex = 0;
    const ParamID id = pb->LastNotifyParamID(tabIndex);
    const int index = pb->IDtoIndex(id);
    if (index < 0) return REF_STOP;
    const ParamDef& def = pb->GetParamDef(id);
    if ((def.flags & kUnreachableParamFlag) || def.int_name.isNull()) return REF_STOP;
    const bool resized = def.IsTable() && index < refTabCounts_.Count() && pb->Count(id) != refTabCounts_[index];
    const bool heldReference = IsReferenceParamType(def.type) && baselineTaken_ && index < refTabValues_.Count() &&
                               refTabValues_[index] && tabIndex >= 0;

    if (!IsIdle()) {
        if (resized) {
            recordTableResize(pb, id, index);
        } else if (heldReference) {
            Tab<ReferenceTarget*>& values = *refTabValues_[index];
            if (tabIndex < values.Count()) values[tabIndex] = pb->GetReferenceTarget(id, 0, tabIndex);
        }
        return REF_STOP;
    }
    if (resized && recordTableResize(pb, id, index)) return REF_STOP;
    if (heldReference) {
        Tab<ReferenceTarget*>& values = *refTabValues_[index];
        if (tabIndex >= values.Count()) values.SetCount(tabIndex + 1);
        ReferenceTarget* current = pb->GetReferenceTarget(id, 0, tabIndex);
        if (current == values[tabIndex]) return REF_STOP;
        if (!IsUndoOrRedo()) {
            markModified();
            recordReference(pb, index, tabIndex, current);
        }
        values[tabIndex] = current;
        return REF_STOP;
    }
    if (tabIndex < 0 || IsReferenceParamType(def.type) || pb->GetController(id, tabIndex)) return REF_STOP;
    if (!IsUndoOrRedo()) markModified();
    snapshot(pb, id, tabIndex);
    return REF_STOP;
}

// ------------------------------------------------------------------------------------ collect and override

void RefAnimPblock2::Collect(Animatable* root) {
    RefAnim::Collect(root);
    IParamBlock2* pb = block();
    if (!pb) return;
    if (TestOverrideBits(kOverrideLocDep)) {
        ReferenceMaker* owner = pb->GetOwner();
        if (owner && owner != ownerAnim_ && owner->IsRefTarget())
            ReplaceReference(1, static_cast<ReferenceTarget*>(owner));
    }
    if (!baselineTaken_) return;
    for (int i = 0; i < pb->NumParams() && i < refTabValues_.Count(); ++i) {
        const ParamID id = pb->IndextoID(i);
        if (!refTabValues_[i] || !IsReferenceParamType(pb->GetParameterType(id))) continue;
        Tab<ReferenceTarget*>& values = *refTabValues_[i];
        if (pb->Count(id) != values.Count()) continue;
        for (int k = 0; k < values.Count(); ++k) {
            ReferenceTarget* current = pb->GetReferenceTarget(id, 0, k);
            if (current == values[k]) continue;
            markModified();
            recordReference(pb, i, k, current);
            values[k] = current;
        }
    }
}

void RefAnimPblock2::Override(Animatable* root) {
    Animatable* found = nullptr;
    Animatable* parent = nullptr;
    int subIndex = -1;
    int hint = -1;
    Tab<int> resolved;
    if (!GetAnimByPath(root, found, parent, subIndex, hint, resolved)) return;
    if (!found || found->SuperClassID() != PARAMETER_BLOCK2_CLASS_ID) return;
    auto* merged = static_cast<IParamBlock2*>(found);
    if (IsModified()) {
        // Tables are resized before their entries are set.
        const bool group = undoGroup_ && !theHold.Holding();
        if (group) theHold.Begin();
        for (Pblock2Param* table : overriddenTabs_) table->Apply(merged);
        for (Pblock2Param* param : overriddenParams_) param->Apply(merged);
        if (group) theHold.Accept(L"Override");
    }
    SetAnim(found);
    SetPathByNumber(resolved);
}

void RefAnimPblock2::OverrideLocDep(Animatable* anim) {
    IParamBlock2* held = block();
    if (!held || !TestOverrideBits(kOverrideLocDep) || !anim || anim == held) return;
    if (anim->SuperClassID() != PARAMETER_BLOCK2_CLASS_ID || anim->ClassID() != held->ClassID()) return;
    auto* fresh = static_cast<ReferenceTarget*>(anim);
    {
        vandrels::TransferGuardScope guard(true);
        ReferenceMaker* blockOwner = held->GetOwner();
        TransRefEnumProc deps;
        held->DoEnumDependents(&deps);
        for (ReferenceMaker* dep : deps.dependents) {
            if (dep == blockOwner) continue;
            for (int j = 0; j < dep->NumRefs(); ++j)
                if (dep->GetReference(j) == held && dep->CanTransferReference(j)) dep->ReplaceReference(j, fresh);
        }
        NotifyStructureAndChange(fresh);
    }
    SetLastOperation(kStepOverrideLocDep);
}

// ------------------------------------------------------------------------------------------------ references

RefTargetHandle RefAnimPblock2::GetReference(int i) { return i == 1 ? ownerAnim_ : RefAnim::GetReference(i); }

void RefAnimPblock2::SetReference(int i, RefTargetHandle target) {
    if (i == 1) {
        ownerAnim_ = target;
        return;
    }
    RefAnim::SetReference(i, target);
    takeBaseline();
}

RefTargetHandle RefAnimPblock2::Clone(RemapDir& remap) {
    auto* clone = new RefAnimPblock2();
    clone->SetMode(tabResizeOverride_, undoGroup_ != 0);
    BaseClone(this, clone, remap);
    if (TestOverrideBits(kOverrideLocDep) && GetAnim() && ownerAnim_) {
        ReferenceTarget* ownerClone = remap.CloneRef(ownerAnim_);
        clone->ReplaceReference(1, ownerClone);
        ReferenceTarget* blockClone = remap.FindMapping(static_cast<ReferenceTarget*>(GetAnim()));
        if (ownerClone && blockClone)
            for (int j = 0; j < ownerClone->NumRefs(); ++j)
                if (ownerClone->GetReference(j) == blockClone) clone->ReplaceReference(0, blockClone);
    }
    for (Pblock2Param* param : overriddenParams_) clone->overriddenParams_.Append(param->Clone());
    for (Pblock2Param* table : overriddenTabs_) clone->overriddenTabs_.Append(table->Clone());
    return clone;
}

// ---------------------------------------------------------------------------------------------- save and load

IOResult RefAnimPblock2::Save(ISave* isave) {
    if (SaveWrappedBaseChunks(isave) != IO_OK) return IO_ERROR;
    isave->BeginChunk(kParamsChunk);
    IOResult res = SaveParamList(isave, overriddenParams_);
    isave->EndChunk();
    if (res != IO_OK) return res;
    isave->BeginChunk(kTabsChunk);
    res = SaveParamList(isave, overriddenTabs_);
    isave->EndChunk();
    if (res != IO_OK) return res;
    if (chunkio::SaveValueChunk(isave, kModeChunk, std::uint8_t(tabResizeOverride_)) != IO_OK) return IO_ERROR;
    return chunkio::SaveValueChunk(isave, kUndoGroupChunk, std::int32_t(undoGroup_));
}

IOResult RefAnimPblock2::Load(ILoad* iload) {
    const IOResult res = RefAnim::Load(iload);
    if (res != IO_OK) DeleteParamList(overriddenParams_);
    return res;
}

IOResult RefAnimPblock2::LoadChunk(ILoad* iload) {
    switch (iload->CurChunkID()) {
    case kParamsChunk: return LoadParamList(iload, overriddenParams_);
    case kTabsChunk: return LoadParamList(iload, overriddenTabs_);
    case kModeChunk: {
        std::uint8_t mode = 0;
        const IOResult res = chunkio::ReadValue(iload, mode);
        if (res == IO_OK) tabResizeOverride_ = mode;
        return res;
    }
    case kUndoGroupChunk: return chunkio::ReadValue(iload, undoGroup_);
    default: return IO_OK;
    }
}

MSTR RefAnimPblock2::GetInfo() {
    MSTR info = RefAnim::GetInfo();
    info += L"\nTabResizeOverride: " + Number(tabResizeOverride_);
    info += L"\nOverridden Params: ";
    for (Pblock2Param* param : overriddenParams_)
        info += Number(param->paramID) + L"-" + Number(param->tabIndex) + L",";
    info += L"\nOverridden Tabs: ";
    for (Pblock2Param* table : overriddenTabs_)
        info += Number(table->paramID) + L"-" + Number(static_cast<TabParam*>(table)->count) + L",";
    return info;
}
