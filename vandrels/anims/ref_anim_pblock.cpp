// The old-style parameter-block record: capturing changed parameters, writing them back, its chunks and undo.
#include "anims/ref_anim_pblock.h"

#include "frame/module_state.h"
#include "records/chunk_io.h"

#include "control.h"
#include "hold.h"
#include "iparamb.h"

#include <cmath>
#include <cstring>
#include <string>

namespace {

constexpr USHORT kCountChunk = 0x002A;
constexpr USHORT kEntryChunk = 0x002B;

// The block's value of parameter index as the entry stores it; false for an index beyond the block.
bool CaptureValue(IParamBlock* pb, int index, float value[3]) {
    if (index < 0 || index >= pb->NumParams()) return false;
    Interval valid = FOREVER;
    value[0] = value[1] = value[2] = 0.f;
    switch (pb->GetParameterType(index)) {
    case TYPE_FLOAT: pb->GetValue(index, 0, value[0], valid); break;
    case TYPE_INT:
    case TYPE_BOOL: {
        int i = 0;
        pb->GetValue(index, 0, i, valid);
        value[0] = float(i);
        break;
    }
    case TYPE_RGBA:
    case TYPE_POINT3: {
        Point3 p;
        pb->GetValue(index, 0, p, valid);
        value[0] = p.x;
        value[1] = p.y;
        value[2] = p.z;
        break;
    }
    default: break;
    }
    return true;
}

void ApplyEntry(IParamBlock* pb, const PblockParam& entry) {
    const int i = entry.index;
    if (i < 0 || i >= pb->NumParams()) return;
    Interval valid = FOREVER;
    switch (pb->GetParameterType(i)) {
    case TYPE_FLOAT: {
        float current = 0.f;
        pb->GetValue(i, 0, current, valid);
        if (current != entry.value[0]) pb->SetValue(i, 0, entry.value[0]);
        break;
    }
    case TYPE_INT:
    case TYPE_BOOL: {
        int current = 0;
        pb->GetValue(i, 0, current, valid);
        const int stored = int(std::trunc(entry.value[0]));
        Control* control = pb->GetController(i);
        if (current != stored && !(control && control->IsAnimated())) pb->SetValue(i, 0, stored);
        break;
    }
    case TYPE_RGBA:
    case TYPE_POINT3: {
        Point3 current;
        pb->GetValue(i, 0, current, valid);
        const Point3 stored(entry.value[0], entry.value[1], entry.value[2]);
        if (current != stored) pb->SetValue(i, 0, stored);
        break;
    }
    default: break;
    }
}

}  // namespace

RefResult RefAnimPblock::NotifyRefChanged(const Interval&, RefTargetHandle hTarget, PartID&, RefMessage message,
                                          BOOL) {
    Animatable* anim = GetAnim();
    if (!anim || hTarget != anim || anim->SuperClassID() != PARAMETER_BLOCK_CLASS_ID) return REF_STOP;
    if (vandrels::GetOperationMode() != vandrels::kModeIdle || theHold.RestoreOrRedoing() ||
        message != REFMSG_CHANGE)
        return REF_STOP;
    auto* pb = static_cast<IParamBlock*>(anim);
    if (!IsModified()) SetOverrideBits(kOverrideModified, true, true);
    const int index = pb->LastNotifyParamNum();
    if (index < 0 || pb->GetController(index)) return REF_STOP;
    for (std::size_t k = 0; k < overriddenParams_.size(); ++k) {
        if (overriddenParams_[k].index != index) continue;
        if (theHold.Holding()) theHold.Put(new PblockParamRestore(this, int(k)));
        CaptureValue(pb, index, overriddenParams_[k].value);
        return REF_STOP;
    }
    PblockParam entry;
    entry.index = index;
    if (!CaptureValue(pb, index, entry.value)) return REF_STOP;
    if (theHold.Holding()) theHold.Put(new ParamArrayRestore(this));
    overriddenParams_.push_back(entry);
    return REF_STOP;
}

void RefAnimPblock::Override(Animatable* root) {
    Animatable* found = nullptr;
    Animatable* parent = nullptr;
    int subIndex = -1;
    int hint = -1;
    Tab<int> resolved;
    if (!GetAnimByPath(root, found, parent, subIndex, hint, resolved)) return;
    if (!found || found->SuperClassID() != PARAMETER_BLOCK_CLASS_ID) return;
    if (IsModified())
        for (const PblockParam& entry : overriddenParams_) ApplyEntry(static_cast<IParamBlock*>(found), entry);
    SetAnim(found);
    SetPathByNumber(resolved);
}

MSTR RefAnimPblock::GetInfo() {
    MSTR info = RefAnim::GetInfo() + L"\nOverridden Params: ";
    for (const PblockParam& entry : overriddenParams_) info += MSTR(std::to_wstring(entry.index).c_str()) + L",";
    return info;
}

RefTargetHandle RefAnimPblock::Clone(RemapDir& remap) {
    auto* clone = new RefAnimPblock();
    BaseClone(this, clone, remap);
    clone->overriddenParams_ = overriddenParams_;
    return clone;
}

IOResult RefAnimPblock::Save(ISave* isave) {
    if (SaveWrappedBaseChunks(isave) != IO_OK) return IO_ERROR;
    if (chunkio::SaveValueChunk(isave, kCountChunk, std::int32_t(overriddenParams_.size())) != IO_OK) return IO_ERROR;
    for (const PblockParam& entry : overriddenParams_) {
        unsigned char bytes[16];
        std::memcpy(bytes, &entry.index, 4);
        std::memcpy(bytes + 4, entry.value, 12);
        ULONG written = 0;
        isave->BeginChunk(kEntryChunk);
        const IOResult res = isave->Write(bytes, sizeof(bytes), &written);
        isave->EndChunk();
        if (res != IO_OK) return res;
    }
    return IO_OK;
}

IOResult RefAnimPblock::Load(ILoad* iload) {
    const IOResult res = RefAnim::Load(iload);
    if (res != IO_OK) overriddenParams_.clear();
    return res;
}

IOResult RefAnimPblock::LoadChunk(ILoad* iload) {
    if (iload->CurChunkID() == kCountChunk) {
        std::int32_t count = 0;
        const IOResult res = chunkio::ReadCount(iload, count);
        if (res == IO_OK) overriddenParams_.reserve(std::size_t(count));
        return res;
    }
    if (iload->CurChunkID() != kEntryChunk) return IO_OK;
    unsigned char bytes[16];
    ULONG read = 0;
    const IOResult res = iload->Read(bytes, sizeof(bytes), &read);
    if (res != IO_OK) return res;
    if (read != sizeof(bytes)) return IO_ERROR;
    PblockParam entry;
    std::memcpy(&entry.index, bytes, 4);
    std::memcpy(entry.value, bytes + 4, 12);
    overriddenParams_.push_back(entry);
    return IO_OK;
}

void ParamArrayRestore::Restore(int isUndo) {
    std::vector<PblockParam>& list = record_->ParamList();
    if (isUndo) redoCount_ = int(list.size());
    if (int(list.size()) > undoCount_) {
        undone_.assign(list.begin() + undoCount_, list.end());
        list.resize(std::size_t(undoCount_));
    }
}

void ParamArrayRestore::Redo() {
    std::vector<PblockParam>& list = record_->ParamList();
    for (const PblockParam& entry : undone_)
        if (int(list.size()) < redoCount_) list.push_back(entry);
}

PblockParamRestore::PblockParamRestore(RefAnimPblock* record, int entry) : record_(record), entry_(entry) {
    std::memcpy(undo_, record->ParamList()[std::size_t(entry)].value, sizeof(undo_));
}

void PblockParamRestore::Restore(int isUndo) {
    std::vector<PblockParam>& list = record_->ParamList();
    if (entry_ >= int(list.size())) return;
    if (isUndo) std::memcpy(redo_, list[std::size_t(entry_)].value, sizeof(redo_));
    std::memcpy(list[std::size_t(entry_)].value, undo_, sizeof(undo_));
}

void PblockParamRestore::Redo() {
    std::vector<PblockParam>& list = record_->ParamList();
    if (entry_ < int(list.size())) std::memcpy(list[std::size_t(entry_)].value, redo_, sizeof(redo_));
}
