#include "records/ref_material.h"

#include "frame/record_failure.h"
#include "frame/class_desc.h"
#include "frame/module.h"
#include "frame/module_state.h"
#include "records/record_owner.h"
#include "hold.h"
#include "imtl.h"
#include "ioapi.h"
#include "listener.h"
#include "maxapi.h"
#include "maxexception.h"
#include "records/chunk_io.h"
#include "records/scene_utils.h"
#include "records/flag_restore.h"
#include "resource.h"

namespace {

enum : USHORT {
    kFormatChunk = 0x0000,
    kReferenceNameChunk = 0x0009,
    kFlagsChunk = 0x000A,
    kOverriddenNameChunk = 0x000B,
    kRefAnimCountChunk = 0x0022,
};

// Sent by the loading pipeline when it had to rename the merged material: its name becomes the local name.
constexpr RefMessage kMsgTakeLocalName = 0x8663DF11;

// prefix + "_" + name, or name alone without a prefix.
MSTR Prefixed(const MSTR& prefix, const MSTR& name) { return prefix.isNull() ? name : prefix + L"_" + name; }

}  // namespace

// ------------------------------------------------------------------------------------------ construction

RefMaterial::RefMaterial(Mtl* mtl, RecordOwner* helper) {
    SetHelper(helper);
    runInErrorFrame(L"Error Creating RefMaterial", L"Unknown Error Creating RefMaterial", [&] {
        ReplaceReference(0, mtl);
        // Outside idle the reference does not build the tree by itself.
        if (GetTarget() && vandrels::GetOperationMode() != vandrels::kModeIdle) BuildSubAnimTree();
    });
}

Mtl* RefMaterial::GetMaterial() { return static_cast<Mtl*>(GetTarget()); }

void RefMaterial::SetMaterialFlags(std::uint16_t mask, std::uint16_t value) { SetShortFlags(materialFlags_, mask, value); }

void RefMaterial::SetReference(int i, RefTargetHandle target) {
    if (i == 0 && target && target->SuperClassID() != MATERIAL_CLASS_ID) target = nullptr;
    RefBase::SetReference(i, target);
    // The first material bound names the record.
    if (i == 0 && target && referenceName_.isNull()) referenceName_ = static_cast<Mtl*>(target)->GetName();
}

Animatable* RefMaterial::SubAnim(int i) { return i == 0 ? GetTarget() : nullptr; }

MSTR RefMaterial::SubAnimName(int i, bool) { return i == 0 ? MSTR(L"Material") : MSTR(); }

// ------------------------------------------------------------------------------------------ failures

template <class Op> void RefMaterial::runInErrorFrame(const MCHAR* words, const MCHAR* unknownWords, Op op) {
    vandrels::RunInErrorFrame(words, unknownWords, op,
                              [this](const MCHAR* failed, const MAXException* cause) { fail(failed, cause); });
}

void RefMaterial::fail(const MCHAR* words, const MAXException* cause) {
    MSTR description;
    try {
        description = GetInfo();
    } catch (...) {
        Mtl* mtl = GetMaterial();
        description = mtl ? mtl->GetName() : MSTR(L"Unknown Name");
    }
    const vandrels::RecordFailure failure{words, description, std::nullopt, vandrels::RecordFailure::CauseOf(cause)};
    SetBusy(0);
    DeleteReference(0);
    failure.Throw();
}

// ------------------------------------------------------------------------------------------ protocol

void RefMaterial::Collect() {
    runInErrorFrame(L"Error Collecting RefMaterial", L"Unknown Error Collecting RefMaterial",
                    [&] { RefBase::Collect(); });
}

void RefMaterial::Override() { RefBase::Override(); }

void RefMaterial::Update(ReferenceTarget* newTarget) {
    runInErrorFrame(L"Error Updating RefMaterial", L"Unknown Error Updating RefMaterial", [&] {
        auto* fresh = dynamic_cast<Mtl*>(newTarget);
        if (!fresh) return;
        SetBusy(1);
        if (Mtl* old = GetMaterial(); old && old != fresh)
            if (MtlBaseLib* lib = GetCOREInterface()->GetSceneMtls()) lib->Replace(old, fresh);
        ReplaceReference(0, fresh);
        if (materialFlags_ & kMtlOverriddenName) fresh->SetName(overriddenName_);
        prune();
        Override();
        CaptureBaseline();
        BuildSubAnimTree();
        SetBusy(0);
    });
}

void RefMaterial::ApplyNamePrefix(const MSTR& prefix) {
    if (materialFlags_ & kMtlNameWithoutPrefix) return;
    Mtl* mtl = GetMaterial();
    if (!mtl) return;
    mtl->SetName(Prefixed(prefix, (materialFlags_ & kMtlOverriddenName) ? overriddenName_ : referenceName_));
}

bool RefMaterial::HasOverrides() { return materialFlags_ != 0 || RefBase::HasOverrides(); }

MSTR RefMaterial::GetTypeName() {
    const MCHAR* name = GetString(IDS_CLASS_REFMATERIAL);
    return name && *name ? MSTR(name) : MSTR(L"RefMaterial");
}

MSTR RefMaterial::GetInfo() {
    MSTR info = L"Material Name: " + referenceName_;
    info.append_printf(L" - %d\n\n", int(Animatable::GetHandleByAnim(GetTarget())));
    info.append_printf(L"\nOverriddenName:  - %d", int(materialFlags_ & kMtlOverriddenName));
    info.append_printf(L"\nOverriddenLocDep:  - %d", int(materialFlags_ & kMtlOverriddenLocDep));
    return info + RefBase::GetInfo();
}

void RefMaterial::PrintData(int mode) {
    const int handle = int(Animatable::GetHandleByAnim(GetTarget()));
    if (mode == 1) {
        mprintf(L"\n\n***************************\nRefMaterial: %s - %d\n\n", referenceName_.data(), handle);
        mprintf(L"\nOverriddenName:  - %d", int(materialFlags_ & kMtlOverriddenName));
        mprintf(L"\nOverriddenLocDep:  - %d", int(materialFlags_ & kMtlOverriddenLocDep));
        mflush();
    } else {
        mprintf(L"\nRefMaterial: %s - %d\n", referenceName_.data(), handle);
    }
    RefBase::PrintData(mode);
}

// ------------------------------------------------------------------------------------------ messages

MSTR RefMaterial::expectedName() {
    return Prefixed(GetNamePrefix(), (materialFlags_ & kMtlOverriddenName) ? overriddenName_ : referenceName_);
}

void RefMaterial::onNameChanged() {
    const MSTR name = GetMaterial()->GetName();
    if (materialFlags_ & kMtlNameWithoutPrefix) {
        overriddenName_ = name;
        return;
    }
    if (name == expectedName()) return;
    SetMaterialFlags(kMtlOverriddenName, kMtlOverriddenName);
    overriddenName_ = name;
    if (StripNamePrefix(GetNamePrefix().data(), overriddenName_) != 0)
        SetMaterialFlags(kMtlNameWithoutPrefix, kMtlNameWithoutPrefix);
}

void RefMaterial::followRestoredName() {
    if (!(materialFlags_ & kMtlOverriddenName)) return;
    overriddenName_ = GetMaterial()->GetName();
    if (!(materialFlags_ & kMtlNameWithoutPrefix)) StripNamePrefix(GetNamePrefix().data(), overriddenName_);
}

RefResult RefMaterial::NotifyRefChanged(const Interval& changeInt, RefTargetHandle hTarget, PartID& partID,
                                        RefMessage message, BOOL propagate) {
    const int mode = vandrels::GetOperationMode();
    Mtl* mtl = GetMaterial();
    const bool fromMaterial = mtl && hTarget == mtl;
    if (mode == vandrels::kModeLoading && message == kMsgTakeLocalName && mtl) {
        overriddenName_ = mtl->GetName();
        materialFlags_ |= kMtlOverriddenName;
        return REF_STOP;
    }
    if (mode == vandrels::kModeIdle && fromMaterial && message == REFMSG_NODE_NAMECHANGE && !IsBusy()) {
        if (theHold.RestoreOrRedoing())
            followRestoredName();
        else
            onNameChanged();
        return REF_STOP;
    }
    // Structure messages, the target query and the post-load rescan work as for every record.
    return RefBase::NotifyRefChanged(changeInt, hTarget, partID, message, propagate);
}

BOOL RefMaterial::IsRealDependency(ReferenceTarget* target) {
    RecordOwner* helper = GetHelper();
    if (helper && helper->GetPersistRef()) return TRUE;
    if (!target || target != GetTarget()) return RefBase::IsRealDependency(target);
    if (!vandrels::AreRecordsInessential()) return TRUE;
    return (materialFlags_ & kMtlOverriddenLocDep) ? TRUE : FALSE;
}

// ------------------------------------------------------------------------------------------ cloning

void RefMaterial::BaseClone(ReferenceTarget* from, ReferenceTarget* to, RemapDir& remap) {
    RefBase::BaseClone(from, to, remap);
    auto* src = dynamic_cast<RefMaterial*>(from);
    auto* dst = dynamic_cast<RefMaterial*>(to);
    if (!src || !dst) return;
    dst->referenceName_ = src->referenceName_;
    if (src->materialFlags_ & kMtlOverriddenName) dst->overriddenName_ = src->overriddenName_;
    dst->materialFlags_ = src->materialFlags_;
}

// ------------------------------------------------------------------------------------------ save and load

namespace {

IOResult SaveText(ISave* isave, USHORT id, const MSTR& text) {
    isave->BeginChunk(id);
    const IOResult res = isave->WriteWString(text);
    isave->EndChunk();
    return res;
}

}  // namespace

IOResult RefMaterial::Save(ISave* isave) {
    if (SaveFormatChunk(isave) != IO_OK) return IO_ERROR;
    if (SaveText(isave, kReferenceNameChunk, referenceName_) != IO_OK) return IO_ERROR;
    if (chunkio::SaveValueChunk(isave, kFlagsChunk, materialFlags_) != IO_OK) return IO_ERROR;
    if ((materialFlags_ & kMtlOverriddenName) && SaveText(isave, kOverriddenNameChunk, overriddenName_) != IO_OK)
        return IO_ERROR;
    return SaveRefAnimCountChunk(isave);
}

IOResult RefMaterial::Load(ILoad* iload) {
    const IOResult res = RefBase::Load(iload);
    if (res != IO_OK) ClearRefAnimSlots();
    return res;
}

IOResult RefMaterial::LoadChunk(ILoad* iload) {
    switch (iload->CurChunkID()) {
    case kReferenceNameChunk: return iload->ReadWStringChunk(referenceName_);
    case kFlagsChunk: return chunkio::ReadValue(iload, materialFlags_);
    case kOverriddenNameChunk: return iload->ReadWStringChunk(overriddenName_);
    default: return RefBase::LoadChunk(iload);
    }
}

// ------------------------------------------------------------------------------------------ descriptor

namespace {

struct RefMaterialClassDesc : SimpleClassDesc<RefMaterial> {
    RefMaterialClassDesc()
        : SimpleClassDesc<RefMaterial>(IDS_CLASS_REFMATERIAL, L"RefMaterial", REFBASE_SUPER_CLASS_ID,
                                       REFMATERIAL_CLASS_ID) {
        AddInterface(RefBaseInterfaceDesc());
    }
};

}  // namespace

ClassDesc2* GetRefMaterialDesc() {
    static RefMaterialClassDesc desc;
    return &desc;
}
