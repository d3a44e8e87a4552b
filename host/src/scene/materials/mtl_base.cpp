// What every material and texture map shares: the undoable name (247 on change), the flag word, the effects
// channel and their chunks.
#include "hold.h"
#include "imtl.h"
#include "ioapi.h"

namespace {

constexpr USHORT kNameChunk = 0x4100;
constexpr USHORT kFlagsChunk = 0x4101;
constexpr USHORT kGBufChunk = 0x4102;

void announceName(MtlBase* m) { m->NotifyDependents(FOREVER, PART_ALL, REFMSG_NODE_NAMECHANGE); }

// Undo record of a rename; it keeps the names, not the material, and checks the material is still there.
class MtlNameRestore : public RestoreObj {
public:
    MtlNameRestore(MtlBase* m, MSTR before, MSTR after)
        : mtl_(m), handle_(Animatable::GetHandleByAnim(m)), before_(std::move(before)), after_(std::move(after)) {}
    void Restore(int) override { apply(before_); }
    void Redo() override { apply(after_); }
    MSTR Description() override { return MSTR(L"Material name"); }

private:
    void apply(const MSTR& name) {
        if (Animatable::GetAnimByHandle(handle_) != mtl_) return;
        theHold.Suspend();
        mtl_->SetName(name);
        theHold.Resume();
    }
    MtlBase* mtl_;
    AnimHandle handle_;
    MSTR before_, after_;
};

IOResult writeULong(ISave* isave, USHORT id, ULONG v) {
    ULONG written = 0;
    isave->BeginChunk(id);
    const IOResult r = isave->Write(&v, sizeof v, &written);
    isave->EndChunk();
    return r;
}

}  // namespace

void MtlBase::SetName(const MSTR& name) {
    if (name == name_) return;
    if (theHold.Holding()) theHold.Put(new MtlNameRestore(this, name_, name));
    name_ = name;
    announceName(this);
}

IOResult MtlBase::SaveMtlBase(ISave* isave) {
    isave->BeginChunk(kNameChunk);
    const IOResult r = isave->WriteWString(name_);
    isave->EndChunk();
    if (r != IO_OK) return r;
    if (const IOResult f = writeULong(isave, kFlagsChunk, mtlFlags_); f != IO_OK) return f;
    return writeULong(isave, kGBufChunk, gbufId_);
}

bool MtlBase::LoadMtlBaseChunk(ILoad* iload, IOResult& res) {
    ULONG got = 0;
    switch (iload->CurChunkID()) {
    case kNameChunk:
        res = iload->ReadWStringChunk(name_);
        return true;
    case kFlagsChunk:
        res = iload->Read(&mtlFlags_, sizeof mtlFlags_, &got);
        return true;
    case kGBufChunk:
        res = iload->Read(&gbufId_, sizeof gbufId_, &got);
        gbufId_ &= 0xFF;
        return true;
    default:
        return false;
    }
}

IOResult MtlBase::LoadMtlBase(ILoad* iload) {
    IOResult res;
    while ((res = iload->OpenChunk()) == IO_OK) {
        IOResult r = IO_OK;
        LoadMtlBaseChunk(iload, r);
        iload->CloseChunk();
        if (r != IO_OK) return r;
    }
    return res == IO_END ? IO_OK : res;
}

void MtlBase::CopyMtlBaseState(MtlBase* to) const {
    to->name_ = name_;
    to->mtlFlags_ = mtlFlags_;
    to->gbufId_ = gbufId_;
}
