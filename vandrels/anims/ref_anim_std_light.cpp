// The light record: the include/exclude list and the look-at target's name, their change handler, putting a
// locally edited list into the merged light, and the record's chunks.
#include "anims/ref_anim_std_light.h"

#include "anims/ref_anim_transfer.h"
#include "frame/module_state.h"
#include "records/chunk_io.h"

#include "control.h"
#include "hold.h"
#include "inode.h"
#include "istdplug.h"
#include "object.h"

#include <string>

namespace {

constexpr USHORT kOverridesChunk = 0x002A;
constexpr USHORT kValuesChunk = 0x002B;
constexpr USHORT kIntegersChunk = 0x002C;
constexpr USHORT kStdLightChunk = 0x002E;
constexpr USHORT kTargetNameChunk = 0x002F;
constexpr USHORT kViewBitsChunk = 0x0030;

ExclList* ListOf(Animatable* anim) {
    if (!anim || anim->SuperClassID() != LIGHT_CLASS_ID) return nullptr;
    return static_cast<LightObject*>(anim)->GetExclList();
}

bool SameList(ExclList* list, const Tab<INode*>& nodes, int include) {
    if (list->Count() != nodes.Count() || (list->IsInclude() ? 1 : 0) != include) return false;
    for (int i = 0; i < nodes.Count(); ++i)
        if ((*list)[i] != nodes[i]) return false;
    return true;
}

}  // namespace

class RefAnimStdLight::LightBitsRestore : public RestoreObj {
public:
    explicit LightBitsRestore(RefAnimStdLight* record) : record_(record), undo_(record->lightOverrides_) {}
    void Restore(int isUndo) override {
        if (isUndo) redo_ = record_->lightOverrides_;
        record_->lightOverrides_ = undo_;
    }
    void Redo() override { record_->lightOverrides_ = redo_; }
    MSTR Description() override { return MSTR(L"LightBitsRestore"); }

private:
    RefAnimStdLight* record_;
    std::uint32_t undo_;
    std::uint32_t redo_ = 0;
};

void RefAnimStdLight::setLightBits(std::uint32_t bits) {
    if ((lightOverrides_ & bits) == bits) return;
    if (theHold.Holding()) theHold.Put(new LightBitsRestore(this));
    lightOverrides_ |= bits;
}

void RefAnimStdLight::readList() {
    exclNodes_.ZeroCount();
    exclInclude_ = 0;
    ExclList* list = ListOf(GetAnim());
    if (!list) return;
    for (int i = 0; i < list->Count(); ++i) exclNodes_.Append((*list)[i]);
    exclInclude_ = list->IsInclude() ? 1 : 0;
}

INode* RefAnimStdLight::lookAtTarget() {
    INode* node = GetOwnerNode();
    Control* tm = node ? node->GetTMController() : nullptr;
    if (!tm || tm->ClassID() != Class_ID(LOOKAT_CONTROL_CLASS_ID, 0)) return nullptr;
    return tm->GetTarget();
}

void RefAnimStdLight::readTargetName() {
    INode* target = lookAtTarget();
    hasTargetName_ = target != nullptr;
    targetName_ = target ? MSTR(target->GetName()) : MSTR();
}

void RefAnimStdLight::SetAnim(Animatable* anim) {
    RefAnim::SetAnim(anim);
    isStdLight_ = ListOf(GetAnim()) ? 1 : 0;
    if (isStdLight_) readList();
    readTargetName();
}

RefResult RefAnimStdLight::NotifyRefChanged(const Interval&, RefTargetHandle hTarget, PartID&, RefMessage message,
                                            BOOL) {
    Animatable* light = GetAnim();
    if (!light || hTarget != light || vandrels::GetOperationMode() != vandrels::kModeIdle) return REF_STOP;
    if (ExclList* list = ListOf(light); list && !SameList(list, exclNodes_, exclInclude_)) {
        if (!theHold.RestoreOrRedoing()) {
            setLightBits(kLightOverrideExclList);
            if (!IsModified()) SetOverrideBits(kOverrideModified, true, true);
        }
        readList();
    }
    if (message != REFMSG_CHANGE) return REF_STOP;
    // Following the look-at target: a new target becomes one of the helper's nodes, a lost one is forgotten.
    INode* target = lookAtTarget();
    if (target && !hasTargetName_) {
        targetName_ = target->GetName();
        hasTargetName_ = true;
        AdoptNode(target, targetName_.data());
    } else if (!target && hasTargetName_) {
        ForgetHelperName(targetName_.data());
        targetName_ = MSTR();
        hasTargetName_ = false;
    } else {
        return REF_STOP;
    }
    static_cast<ReferenceTarget*>(light)->NotifyDependents(FOREVER, PART_ALL, REFMSG_SUBANIM_STRUCTURE_CHANGED);
    return REF_STOP;
}

void RefAnimStdLight::Override(Animatable* root) {
    Animatable* found = nullptr;
    Animatable* parent = nullptr;
    int subIndex = -1;
    int hint = -1;
    Tab<int> resolved;
    if (TestOverrideBits(kOverrideReplaced)) {
        if (!GetAnimByPath(root, found, parent, subIndex, hint, resolved)) return;
        if (found != GetAnim() && parent && parent->SuperClassID() == BASENODE_CLASS_ID && GetAnim()) {
            static_cast<INode*>(parent)->SetObjectRef(static_cast<Object*>(GetAnim()));
            readTargetName();
            SetPathByNumber(resolved);
            return;
        }
        RefAnim::Override(root);
        return;
    }
    if (!GetAnimByPath(root, found, parent, subIndex, hint, resolved)) return;
    if (!found || found->SuperClassID() != LIGHT_CLASS_ID) return;
    if (IsModified() && isStdLight_) {
        readList();  // the held light's list: a loaded record has read none yet
        ExclList* mergedList = ListOf(found);
        if ((lightOverrides_ & kLightOverrideExclList) && mergedList && found != GetAnim()) {
            // The merged light takes the held list, in order, with its include or exclude switch.
            while (mergedList->Count() > 0) mergedList->RemoveNode(mergedList->Count() - 1);
            for (INode* node : exclNodes_)
                if (node) mergedList->AddNode(node);
            mergedList->SetInclude(exclInclude_ ? TRUE : FALSE);
        }
    }
    SetAnim(found);
    SetPathByNumber(resolved);
}

MSTR RefAnimStdLight::GetInfo() {
    MSTR info = RefAnim::GetInfo();
    info += MSTR(L"\nLight Overrides: ") + MSTR(std::to_wstring(lightOverrides_).c_str());
    info += MSTR(L"\nExclusion List: ") + MSTR(std::to_wstring(exclNodes_.Count()).c_str());
    if (hasTargetName_) info += MSTR(L"\nTarget: ") + targetName_;
    return info;
}

RefTargetHandle RefAnimStdLight::Clone(RemapDir& remap) {
    auto* clone = new RefAnimStdLight();
    BaseClone(this, clone, remap);
    clone->lightOverrides_ = lightOverrides_;
    clone->lightValues_ = lightValues_;
    clone->lightValueA_ = lightValueA_;
    clone->lightValueB_ = lightValueB_;
    clone->exclNodes_ = exclNodes_;
    clone->exclInclude_ = exclInclude_;
    clone->targetName_ = targetName_;
    clone->hasTargetName_ = hasTargetName_;
    clone->isStdLight_ = isStdLight_;
    clone->viewBits_ = viewBits_;
    return clone;
}

IOResult RefAnimStdLight::Save(ISave* isave) {
    if (SaveWrappedBaseChunks(isave) != IO_OK) return IO_ERROR;
    if (chunkio::SaveValueChunk(isave, kOverridesChunk, lightOverrides_) != IO_OK) return IO_ERROR;
    if (chunkio::SaveValueChunk(isave, kValuesChunk, lightValues_) != IO_OK) return IO_ERROR;
    const std::int32_t integers[2] = {lightValueA_, lightValueB_};
    isave->BeginChunk(kIntegersChunk);
    ULONG written = 0;
    const IOResult res = isave->Write(integers, sizeof(integers), &written);
    isave->EndChunk();
    if (res != IO_OK) return res;
    if (chunkio::SaveValueChunk(isave, kStdLightChunk, isStdLight_) != IO_OK) return IO_ERROR;
    if (hasTargetName_) {
        isave->BeginChunk(kTargetNameChunk);
        const IOResult named = isave->WriteWString(targetName_);
        isave->EndChunk();
        if (named != IO_OK) return named;
    }
    return chunkio::SaveValueChunk(isave, kViewBitsChunk, viewBits_);
}

IOResult RefAnimStdLight::LoadChunk(ILoad* iload) {
    switch (iload->CurChunkID()) {
    case kOverridesChunk: return chunkio::ReadValue(iload, lightOverrides_);
    case kValuesChunk: return chunkio::ReadValue(iload, lightValues_);
    case kIntegersChunk: {
        std::int32_t integers[2] = {0, 0};
        ULONG read = 0;
        const IOResult res = iload->Read(integers, sizeof(integers), &read);
        if (res != IO_OK) return res;
        lightValueA_ = integers[0];
        lightValueB_ = integers[1];
        return IO_OK;
    }
    case kStdLightChunk: return chunkio::ReadValue(iload, isStdLight_);
    case kTargetNameChunk: {
        const IOResult res = iload->ReadWStringChunk(targetName_);
        hasTargetName_ = res == IO_OK;
        return res;
    }
    case kViewBitsChunk: return chunkio::ReadValue(iload, viewBits_);
    default: return IO_OK;
    }
}
