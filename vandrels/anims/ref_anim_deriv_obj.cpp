// The derived-object record: reading and comparing a stack's names and switches, putting local ones back, and
// its chunks.
#include "anims/ref_anim_deriv_obj.h"

#include "frame/module_state.h"
#include "hold.h"
#include "object.h"
#include "records/chunk_io.h"

#include <array>

namespace {

constexpr USHORT kCountsChunk = 0x002A;
constexpr USHORT kNameChunk = 0x002B;
constexpr USHORT kTogglesChunk = 0x002C;

IDerivedObject* AsDerived(Animatable* anim) {
    return anim && anim->SuperClassID() == GEN_DERIVOB_CLASS_ID ? dynamic_cast<IDerivedObject*>(anim) : nullptr;
}

int TogglesOf(Modifier* mod) {
    if (!mod) return 0;
    return (mod->IsEnabled() ? RefAnimDerivObj::kOn : 0) | (mod->IsEnabledInViews() ? RefAnimDerivObj::kInViews : 0) |
           (mod->IsEnabledInRender() ? RefAnimDerivObj::kInRender : 0);
}

void ApplyToggles(Modifier* mod, int toggles) {
    if (!mod || TogglesOf(mod) == toggles) return;
    if (toggles & RefAnimDerivObj::kOn) mod->EnableMod(); else mod->DisableMod();
    if (toggles & RefAnimDerivObj::kInViews) mod->EnableModInViews(); else mod->DisableModInViews();
    if (toggles & RefAnimDerivObj::kInRender) mod->EnableModInRender(); else mod->DisableModInRender();
}

int NestedBelow(IDerivedObject* derived) {
    int nested = 0;
    for (IDerivedObject* d = AsDerived(derived->GetObjRef()); d && nested < 4096; d = AsDerived(d->GetObjRef()))
        ++nested;
    return nested;
}

}  // namespace

IDerivedObject* RefAnimDerivObj::derived() const { return AsDerived(GetAnim()); }

void RefAnimDerivObj::read(IDerivedObject* d) {
    modNames_.clear();
    modToggles_.clear();
    numNested_ = 0;
    if (!d) return;
    for (int m = 0; m < d->NumModifiers(); ++m) {
        Modifier* mod = d->GetModifier(m);
        modNames_.push_back(mod ? mod->GetName(false) : MSTR());
        modToggles_.push_back(TogglesOf(mod));
    }
    numNested_ = NestedBelow(d);
}

void RefAnimDerivObj::SetAnim(Animatable* anim) {
    RefAnim::SetAnim(anim);
    if (!TestOverrideBits(kOverrideRenamed | kOverrideToggled)) read(derived());
}

void RefAnimDerivObj::compare() {
    IDerivedObject* d = derived();
    if (!d) return;
    // Added or removed modifiers belong to the node's stack monitoring: the record only starts over.
    if (d->NumModifiers() != int(modNames_.size()) || modToggles_.size() != modNames_.size()) {
        read(d);
        return;
    }
    for (int m = 0; m < d->NumModifiers(); ++m) {
        Modifier* mod = d->GetModifier(m);
        if (!mod) continue;
        const MSTR name = mod->GetName(false);
        if (name != modNames_[m]) {
            modNames_[m] = name;
            if (!TestOverrideBits(kOverrideRenamed)) SetOverrideBits(kOverrideRenamed, true, true);
        }
        const int toggles = TogglesOf(mod);
        if (toggles != modToggles_[m]) {
            modToggles_[m] = toggles;
            if (!TestOverrideBits(kOverrideToggled)) SetOverrideBits(kOverrideToggled, true, true);
        }
    }
    numNested_ = NestedBelow(d);
}

void RefAnimDerivObj::Collect(Animatable* root) {
    RefAnim::Collect(root);
    compare();
}

RefResult RefAnimDerivObj::NotifyRefChanged(const Interval&, RefTargetHandle hTarget, PartID&, RefMessage,
                                            BOOL) {
    if (hTarget && hTarget == GetAnim() && vandrels::GetOperationMode() == vandrels::kModeIdle &&
        !theHold.RestoreOrRedoing())
        compare();
    return REF_STOP;
}

void RefAnimDerivObj::Override(Animatable* root) {
    if (TestOverrideBits(kOverrideReplaced)) {
        RefAnim::Override(root);
        return;
    }
    Animatable* found = nullptr;
    Animatable* parent = nullptr;
    int subIndex = -1;
    int hint = -1;
    Tab<int> resolved;
    if (!GetAnimByPath(root, found, parent, subIndex, hint, resolved)) return;
    IDerivedObject* merged = AsDerived(found);
    if (!merged) return;
    if (merged != GetAnim() && merged->NumModifiers() == int(modNames_.size()) &&
        modToggles_.size() == modNames_.size()) {
        for (int m = 0; m < merged->NumModifiers(); ++m) {
            Modifier* mod = merged->GetModifier(m);
            if (!mod) continue;
            if (TestOverrideBits(kOverrideRenamed) && mod->GetName(false) != modNames_[m]) mod->SetName(modNames_[m]);
            if (TestOverrideBits(kOverrideToggled)) ApplyToggles(mod, modToggles_[m]);
        }
    }
    SetAnim(found);
    SetPathByNumber(resolved);
}

MSTR RefAnimDerivObj::GetInfo() {
    MSTR info = RefAnim::GetInfo();
    info.append_printf(L"\nNumMods: %d\nNumNestedDerivObj: %d", int(modNames_.size()), numNested_);
    info += L"\nModNames: ";
    for (const MSTR& name : modNames_) {
        info += name;
        info += L",";
    }
    info += L"\nModToggles: ";
    for (int toggles : modToggles_) info.append_printf(L"%d,", toggles);
    return info;
}

void RefAnimDerivObj::BaseClone(ReferenceTarget* from, ReferenceTarget* to, RemapDir& remap) {
    RefAnim::BaseClone(from, to, remap);
    auto* src = dynamic_cast<RefAnimDerivObj*>(from);
    auto* dst = dynamic_cast<RefAnimDerivObj*>(to);
    if (!src || !dst) return;
    dst->modNames_ = src->modNames_;
    dst->modToggles_ = src->modToggles_;
    dst->numNested_ = src->numNested_;
}

IOResult RefAnimDerivObj::Save(ISave* isave) {
    if (SaveWrappedBaseChunks(isave) != IO_OK) return IO_ERROR;
    const std::array<std::int32_t, 2> counts = {std::int32_t(modNames_.size()), numNested_};
    if (chunkio::SaveValueChunk(isave, kCountsChunk, counts) != IO_OK) return IO_ERROR;
    for (const MSTR& name : modNames_) {
        isave->BeginChunk(kNameChunk);
        const IOResult res = isave->WriteWString(name);
        isave->EndChunk();
        if (res != IO_OK) return res;
    }
    isave->BeginChunk(kTogglesChunk);
    IOResult res = IO_OK;
    for (int toggles : modToggles_) {
        const std::int32_t value = toggles;
        ULONG written = 0;
        if ((res = isave->Write(&value, ULONG(sizeof(value)), &written)) != IO_OK) break;
    }
    isave->EndChunk();
    return res;
}

IOResult RefAnimDerivObj::LoadChunk(ILoad* iload) {
    switch (iload->CurChunkID()) {
    case kCountsChunk: {
        std::array<std::int32_t, 2> counts = {0, 0};
        const IOResult res = chunkio::ReadValue(iload, counts);
        if (res != IO_OK) return res;
        if (!chunkio::IsPlausibleCount(counts[0]) || !chunkio::IsPlausibleCount(counts[1])) return IO_ERROR;
        modNames_.clear();
        modNames_.reserve(size_t(counts[0]));
        numNested_ = counts[1];
        return IO_OK;
    }
    case kNameChunk: {
        MSTR name;
        const IOResult res = iload->ReadWStringChunk(name);
        if (res == IO_OK) modNames_.push_back(name);
        return res;
    }
    case kTogglesChunk: {
        // One switch word per name read before.
        Tab<int> toggles;
        const IOResult res = chunkio::ReadInt32s(iload, std::int32_t(modNames_.size()), toggles);
        if (res != IO_OK) return res;
        modToggles_.assign(toggles.begin(), toggles.end());
        return IO_OK;
    }
    default: return IO_OK;
    }
}
