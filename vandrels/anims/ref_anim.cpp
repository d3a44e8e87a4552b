#include "anims/ref_anim.h"

#include "anims/ref_anim_steps.h"
#include "anims/ref_anim_transfer.h"
#include "records/record_owner.h"
#include "ioapi.h"
#include "plugapi.h"
#include "frame/module.h"
#include "listener.h"
#include "records/chunk_io.h"
#include "records/ref_node.h"
#include "records/scene_utils.h"
#include "resource.h"

#include <algorithm>
#include <set>

namespace {

// Base chunks of every animatable record.
constexpr USHORT kPathCountChunk = 0x0023;
constexpr USHORT kPathNameChunk = 0x0024;
constexpr USHORT kNumberCountChunk = 0x0025;
constexpr USHORT kNumberChunk = 0x0026;
constexpr USHORT kStateChunk = 0x0027;
constexpr USHORT kOptionChunk = 0x0028;
// Wraps the base chunks of kinds that save state of their own after them.
constexpr USHORT kWrappedBaseChunk = 0x0029;

// Room reserved ahead of a path read from a file; longer paths still load, they just grow.
constexpr int kMaxReserve = 128;


}  // namespace

RefAnim::~RefAnim() { freePath(); }

void RefAnim::freePath() {
    for (WStr* name : path_) delete name;
    path_.ZeroCount();
}

void RefAnim::SetPath(const Tab<WStr*>& names) {
    // The same strings may come back (a copy from GetPath): free only those that are not taken over.
    for (WStr* old : path_)
        if (!names.Contains(old)) delete old;
    path_ = names;
}

// ------------------------------------------------------------------------------------------ operations

void RefAnim::SetAnim(Animatable* anim) {
    OverrideLocDep(anim);
    ReplaceReference(0, static_cast<ReferenceTarget*>(anim));
    lastOperation_ = kStepSetAnim;
}

int RefAnim::ResetOverrides(DWORD) {
    if (IsGeneric()) {
        overrideState_ = 0;
        return 0;
    }
    if (!anim_) return 1;
    return IsLocDep(anim_) ? 2 : 1;
}

void RefAnim::PrintData() {
    mputs(L"\n");
    mputs(GetInfo().data());
    mflush();
}

MSTR RefAnim::GetInfo() {
    MSTR info = L"\nType: " + GetTypeName();
    info += L"\nThe Anim Ref: " + DescribeItem(anim_);
    const int step = lastOperation_;
    try {
        Animatable* found = nullptr;
        Animatable* parent = nullptr;
        int subIndex = -1;
        int hint = -1;
        Tab<int> resolved;
        if (GetAnimByPath(GetOwnerTarget(), found, parent, subIndex, hint, resolved) && parent)
            info += L"\nAnim Owner: " + DescribeItem(parent);
    } catch (...) {
        info += L"\nGetAnimByPath failed.";
    }
    lastOperation_ = step;
    info += L"\nPath: ";
    for (WStr* name : path_) {
        if (name) info += *name;
        info += L",";
    }
    info += L"\nPathByN: ";
    for (int number : pathByNumber_) info.append_printf(L"%d,", number);
    info += L"\nOverridden State: ";
    static const MCHAR* const kWords[] = {L"Replaced, ", L"Modified, ", L"LocDep, ", L"Added, ",
                                          L"Removed, ",  L"Renamed, ",  L"Toggled, "};
    if (overrideState_ == 0) info += L"None.";
    for (int bit = 0; bit < 7; ++bit)
        if (overrideState_ & (1u << bit)) info += kWords[bit];
    info += L"\nLast Operation: ";
    info += GetString(lastOperation_);
    return info;
}

MSTR RefAnim::GetTypeName() {
    ClassDesc* desc = FindClassDesc(SuperClassID(), ClassID());
    return desc ? MSTR(desc->ClassName()) : MSTR();
}

BOOL RefAnim::IsRealDependency(ReferenceTarget*) {
    return TestOverrideBits(kOverrideModified | kOverrideReplaced | kOverrideLocDep) ? TRUE : FALSE;
}

BaseInterface* RefAnim::GetInterface(Interface_ID id) {
    if (id == REFANIM_INTERFACE_ID) return static_cast<RefAnimInterface*>(this);
    return ReferenceTarget::GetInterface(id);
}

// ------------------------------------------------------------------------------------------ owner

Animatable* RefAnim::GetOwnerTarget() { return owner_ ? owner_->GetTarget() : nullptr; }

RefNode* RefAnim::GetOwnerNodeRecord() {
    return owner_ && owner_->ClassID() == REFNODE_CLASS_ID ? static_cast<RefNode*>(owner_) : nullptr;
}

INode* RefAnim::GetOwnerNode() {
    RefNode* record = GetOwnerNodeRecord();
    return record ? dynamic_cast<INode*>(record->GetTarget()) : nullptr;
}

RecordOwner* RefAnim::GetHelper() { return owner_ ? owner_->GetHelper() : nullptr; }

DWORD RefAnim::GetPassStamp() {
    RecordOwner* helper = GetHelper();
    return helper ? helper->GetPassCounter() : 0;
}

bool RefAnim::IsPersistRef() {
    RecordOwner* helper = GetHelper();
    return helper && helper->GetPersistRef();
}

// ------------------------------------------------------------------------------------------ scripting

void RefAnim::ScriptSetPathSize(int size) {
    if (size < 0) return;
    for (int i = size; i < path_.Count(); ++i) delete path_[i];
    const int names = path_.Count();
    path_.SetCount(size);
    for (int i = names; i < size; ++i) path_[i] = new WStr();
    const int numbers = pathByNumber_.Count();
    pathByNumber_.SetCount(size);
    for (int i = numbers; i < size; ++i) pathByNumber_[i] = 0;
}

MSTR RefAnim::ScriptGetPathItem(int index) {
    if (index < 0 || index >= path_.Count() || !path_[index]) return MSTR();
    return *path_[index];
}

void RefAnim::ScriptSetPathItem(int index, const MCHAR* name) {
    if (index < 0 || index >= path_.Count()) return;
    delete path_[index];
    path_[index] = new WStr(name ? name : L"");
}

int RefAnim::ScriptGetPathByNumberItem(int index) {
    return index >= 0 && index < pathByNumber_.Count() ? pathByNumber_[index] : -1;
}

void RefAnim::ScriptSetPathByNumberItem(int index, int number) {
    if (index >= 0 && index < pathByNumber_.Count()) pathByNumber_[index] = number;
}

// ------------------------------------------------------------------------------------------ cloning

RefTargetHandle RefAnim::Clone(RemapDir& remap) {
    auto* made = static_cast<Animatable*>(CreateInstance(SuperClassID(), ClassID()));
    auto* clone = dynamic_cast<RefAnim*>(made);
    if (!clone) {
        if (made) made->DeleteThis();
        return nullptr;
    }
    BaseClone(this, clone, remap);
    return clone;
}

void RefAnim::BaseClone(ReferenceTarget* from, ReferenceTarget* to, RemapDir& remap) {
    ReferenceTarget::BaseClone(from, to, remap);
    auto* src = dynamic_cast<RefAnim*>(from);
    auto* dst = dynamic_cast<RefAnim*>(to);
    if (!src || !dst) return;
    Tab<WStr*> names;
    for (WStr* name : src->path_) names.Append(name ? new WStr(*name) : nullptr);
    dst->SetPath(names);
    dst->pathByNumber_ = src->pathByNumber_;
    dst->overrideState_ = src->overrideState_;
    if (src->anim_ && src->IsRealDependency(src->anim_)) dst->ReplaceReference(0, remap.CloneRef(src->anim_));
}

// ------------------------------------------------------------------------------------------ save and load

IOResult RefAnim::SaveBaseChunks(ISave* isave) {
    const std::int32_t names = path_.Count();
    if (chunkio::SaveValueChunk(isave, kPathCountChunk, names) != IO_OK) return IO_ERROR;
    for (WStr* name : path_) {
        isave->BeginChunk(kPathNameChunk);
        const IOResult res = isave->WriteWString(name ? name->data() : L"");
        isave->EndChunk();
        if (res != IO_OK) return res;
    }
    const std::int32_t numbers = pathByNumber_.Count();
    if (chunkio::SaveValueChunk(isave, kNumberCountChunk, numbers) != IO_OK) return IO_ERROR;
    for (int number : pathByNumber_)
        if (chunkio::SaveValueChunk(isave, kNumberChunk, std::int32_t(number)) != IO_OK) return IO_ERROR;
    if (chunkio::SaveValueChunk(isave, kStateChunk, overrideState_) != IO_OK) return IO_ERROR;
    return chunkio::SaveValueChunk(isave, kOptionChunk, std::int32_t(option_));
}

IOResult RefAnim::SaveWrappedBaseChunks(ISave* isave) {
    isave->BeginChunk(kWrappedBaseChunk);
    const IOResult res = SaveBaseChunks(isave);
    isave->EndChunk();
    return res;
}

IOResult RefAnim::Save(ISave* isave) { return SaveBaseChunks(isave); }

IOResult RefAnim::Load(ILoad* iload) { return loadChunks(iload, false); }

IOResult RefAnim::loadChunks(ILoad* iload, bool wrapped) {
    IOResult res;
    while ((res = iload->OpenChunk()) == IO_OK) {
        std::int32_t count = 0;
        switch (iload->CurChunkID()) {
        case kPathCountChunk:
        case kNumberCountChunk:
            res = chunkio::ReadValue(iload, count);
            if (res == IO_OK && count < 0) res = IO_ERROR;
            if (res == IO_OK) {
                const int room = std::min(int(count), kMaxReserve);
                if (iload->CurChunkID() == kPathCountChunk)
                    path_.Resize(path_.Count() + room);
                else
                    pathByNumber_.Resize(pathByNumber_.Count() + room);
            }
            break;
        case kPathNameChunk: {
            MSTR name;
            res = iload->ReadWStringChunk(name);
            if (res == IO_OK) path_.Append(new WStr(name));
            break;
        }
        case kNumberChunk:
            res = chunkio::ReadValue(iload, count);
            if (res == IO_OK) pathByNumber_.Append(count);
            break;
        case kStateChunk: res = chunkio::ReadValue(iload, overrideState_); break;
        case kOptionChunk:
            res = chunkio::ReadValue(iload, count);
            if (res == IO_OK) option_ = count;
            break;
        case kWrappedBaseChunk:
            // The base chunks of a kind with state of its own; nothing else lives in there.
            res = wrapped ? IO_OK : loadChunks(iload, true);
            break;
        default: res = wrapped ? IO_OK : LoadChunk(iload); break;
        }
        iload->CloseChunk();
        if (res != IO_OK) return res;
    }
    return res == IO_END ? IO_OK : res;
}
