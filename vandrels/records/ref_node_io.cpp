// The node record's chunks in a scene file: fixed chunks always, the local values only with their override bits.
#include "records/record_owner.h"
#include "ioapi.h"
#include "records/chunk_io.h"
#include "records/ref_node.h"

#include <cstring>
#include <memory>
#include <vector>

namespace {

enum : USHORT {
    kNodeLoadedChunk = 0x0007,
    kReferenceNameChunk = 0x0008,
    kFlagsChunk = 0x000A,
    kOverriddenNameChunk = 0x000B,
    kChildrenCountChunk = 0x000C,
    kGroupFlagsChunk = 0x000D,
    kObjectOffsetChunk = 0x000E,
    kSkinPoseChunk = 0x000F,
    kWireColorChunk = 0x0010,
    kDisplayChunk = 0x0011,
    kRenderPropsChunk = 0x0012,
    kUserPropsChunk = 0x0013,
    kBonePropsChunk = 0x0014,
    kTmLocksChunk = 0x0028,
    kExclusionLightsChunk = 0x0029,
    kNodeKindChunk = 0x002A,
    kSelectionSetsChunk = 0x002B,
    kExclusionOthersChunk = 0x002C,
};

// Collects the raw bytes of one chunk's payload.
class Payload {
public:
    template <class T> Payload& Add(const T& value) {
        const auto* p = reinterpret_cast<const std::uint8_t*>(&value);
        bytes_.insert(bytes_.end(), p, p + sizeof(T));
        return *this;
    }
    Payload& AddBytes(const std::uint8_t* p, std::size_t n) {
        bytes_.insert(bytes_.end(), p, p + n);
        return *this;
    }
    IOResult Save(ISave* isave, USHORT id) const {
        ULONG written = 0;
        isave->BeginChunk(id);
        const IOResult res = isave->Write(bytes_.data(), ULONG(bytes_.size()), &written);
        isave->EndChunk();
        return res;
    }

private:
    std::vector<std::uint8_t> bytes_;
};

IOResult SaveText(ISave* isave, USHORT id, const MSTR& text) {
    isave->BeginChunk(id);
    const IOResult res = isave->WriteWString(text);
    isave->EndChunk();
    return res;
}

IOResult ReadBytes(ILoad* iload, void* out, ULONG size) {
    ULONG n = 0;
    return iload->Read(out, size, &n);
}

IOResult ReadPoint(ILoad* iload, Point3& p) {
    float v[3];
    const IOResult res = ReadBytes(iload, v, sizeof v);
    if (res == IO_OK) p = Point3(v[0], v[1], v[2]);
    return res;
}

IOResult ReadQuat(ILoad* iload, Quat& q) {
    float v[4];
    const IOResult res = ReadBytes(iload, v, sizeof v);
    if (res == IO_OK) q = Quat(v[0], v[1], v[2], v[3]);
    return res;
}

IOResult ReadScale(ILoad* iload, ScaleValue& s) {
    IOResult res = ReadPoint(iload, s.s);
    return res == IO_OK ? ReadQuat(iload, s.q) : res;
}

using chunkio::ReadCount;
using chunkio::SizeWithNulls;

}  // namespace


IOResult RefNode::Save(ISave* isave) {
    const std::uint32_t f = data_.overrideFlags;
    if (SaveFormatChunk(isave) != IO_OK) return IO_ERROR;
    if (chunkio::SaveValueChunk(isave, kNodeLoadedChunk, data_.nodeLoaded) != IO_OK) return IO_ERROR;
    if (SaveText(isave, kReferenceNameChunk, data_.referenceName) != IO_OK) return IO_ERROR;
    if (chunkio::SaveValueChunk(isave, kFlagsChunk, f) != IO_OK) return IO_ERROR;
    if ((f & kNodeOverriddenName) && SaveText(isave, kOverriddenNameChunk, data_.overriddenName) != IO_OK)
        return IO_ERROR;
    if (data_.children.Count() &&
        chunkio::SaveValueChunk(isave, kChildrenCountChunk, std::int32_t(data_.children.Count())) != IO_OK)
        return IO_ERROR;
    if ((f & kNodeGrouping) && chunkio::SaveValueChunk(isave, kGroupFlagsChunk, data_.groupFlags) != IO_OK)
        return IO_ERROR;
    if (f & kNodeObjectOffset) {
        const NodeObjectOffset& o = data_.objectOffset;
        Payload p;
        p.Add(o.pos.x).Add(o.pos.y).Add(o.pos.z).Add(o.rot.x).Add(o.rot.y).Add(o.rot.z).Add(o.rot.w);
        p.Add(o.scale.s.x).Add(o.scale.s.y).Add(o.scale.s.z);
        p.Add(o.scale.q.x).Add(o.scale.q.y).Add(o.scale.q.z).Add(o.scale.q.w);
        if (p.Save(isave, kObjectOffsetChunk) != IO_OK) return IO_ERROR;
    }
    if (f & kNodeSkinPose) {
        const NodeSkinPose& k = data_.skinPose;
        Payload p;
        p.Add(k.pos.x).Add(k.pos.y).Add(k.pos.z);
        for (float v : k.rot.value) p.Add(v);
        p.Add(k.rot.form);
        p.Add(k.scale.s.x).Add(k.scale.s.y).Add(k.scale.s.z);
        p.Add(k.scale.q.x).Add(k.scale.q.y).Add(k.scale.q.z).Add(k.scale.q.w);
        if (p.Save(isave, kSkinPoseChunk) != IO_OK) return IO_ERROR;
    }
    if ((f & kNodeWireColor) && chunkio::SaveValueChunk(isave, kWireColorChunk, data_.wireColor) != IO_OK)
        return IO_ERROR;
    if (f & (kNodeHidden | kNodeFrozen | kNodeDisplayProps)) {
        Payload p;
        p.Add(data_.displayBits).Add(data_.displayValues[0]).Add(data_.displayValues[1]);
        if (p.Save(isave, kDisplayChunk) != IO_OK) return IO_ERROR;
    }
    if (f & kNodeRenderProps) {
        Payload p;
        p.Add(data_.renderProps.flags).AddBytes(data_.renderProps.values, 20).AddBytes(data_.renderProps.extra, 36);
        if (p.Save(isave, kRenderPropsChunk) != IO_OK) return IO_ERROR;
    }
    if ((f & kNodeUserProps) && SaveText(isave, kUserPropsChunk, data_.userProps) != IO_OK) return IO_ERROR;
    if (f & kNodeBoneProps) {
        Payload p;
        p.Add(data_.boneProps.flags).Add(data_.boneProps.settings[0]).Add(data_.boneProps.settings[1]);
        if (p.Save(isave, kBonePropsChunk) != IO_OK) return IO_ERROR;
    }
    if ((f & kNodeTmLocks) && chunkio::SaveValueChunk(isave, kTmLocksChunk, data_.tmLocks) != IO_OK) return IO_ERROR;
    if (mods_.Save(isave) != IO_OK) return IO_ERROR;
    if (chunkio::SaveValueChunk(isave, kExclusionLightsChunk, std::int32_t(data_.exclusionLights.Count())) != IO_OK)
        return IO_ERROR;
    if (SaveRefAnimCountChunk(isave) != IO_OK) return IO_ERROR;
    if (chunkio::SaveValueChunk(isave, kNodeKindChunk, data_.nodeKind) != IO_OK) return IO_ERROR;
    if (f & kNodeSelectionSets) {
        Payload p;
        p.Add(std::int32_t(data_.selectionSets.Count()));
        for (int set : data_.selectionSets) p.Add(std::int32_t(set));
        if (p.Save(isave, kSelectionSetsChunk) != IO_OK) return IO_ERROR;
    }
    // The mode list follows the item list, new entries 0.
    const int others = data_.exclusionOthers.Count();
    const int known = data_.exclusionModes.Count();
    data_.exclusionModes.SetCount(others);
    for (int k = known; k < others; ++k) data_.exclusionModes[k] = 0;
    Payload p;
    p.Add(std::int32_t(others));
    for (int mode : data_.exclusionModes) p.Add(std::int32_t(mode));
    return p.Save(isave, kExclusionOthersChunk);
}

IOResult RefNode::Load(ILoad* iload) {
    mods_.BeginLoad();
    const IOResult res = RefBase::Load(iload);
    if (res != IO_OK) {
        ClearRefAnimSlots();
        mods_.DropAll();
    }
    return res;
}

IOResult RefNode::LoadChunk(ILoad* iload) {
    switch (iload->CurChunkID()) {
    case kNodeLoadedChunk: return chunkio::ReadValue(iload, data_.nodeLoaded);
    case kReferenceNameChunk: return iload->ReadWStringChunk(data_.referenceName);
    case kFlagsChunk: return chunkio::ReadValue(iload, data_.overrideFlags);
    case kOverriddenNameChunk: return iload->ReadWStringChunk(data_.overriddenName);
    case kChildrenCountChunk: {
        std::int32_t count = 0;
        const IOResult res = ReadCount(iload, count);
        if (res == IO_OK) SizeWithNulls(data_.children, count);
        return res;
    }
    case kGroupFlagsChunk: return chunkio::ReadValue(iload, data_.groupFlags);
    case kObjectOffsetChunk: {
        NodeObjectOffset o;
        IOResult res = ReadPoint(iload, o.pos);
        if (res == IO_OK) res = ReadQuat(iload, o.rot);
        if (res == IO_OK) res = ReadScale(iload, o.scale);
        if (res == IO_OK) data_.objectOffset = o;
        return res;
    }
    case kSkinPoseChunk: {
        NodeSkinPose k;
        IOResult res = ReadPoint(iload, k.pos);
        if (res == IO_OK) res = ReadBytes(iload, k.rot.value, sizeof k.rot.value);
        if (res == IO_OK) res = chunkio::ReadValue(iload, k.rot.form);
        if (res == IO_OK) res = ReadScale(iload, k.scale);
        if (res == IO_OK) data_.skinPose = k;
        return res;
    }
    case kWireColorChunk: return chunkio::ReadValue(iload, data_.wireColor);
    case kDisplayChunk: {
        IOResult res = chunkio::ReadValue(iload, data_.displayBits);
        return res == IO_OK ? ReadBytes(iload, data_.displayValues, 2) : res;
    }
    case kRenderPropsChunk: {
        IOResult res = chunkio::ReadValue(iload, data_.renderProps.flags);
        if (res == IO_OK) res = ReadBytes(iload, data_.renderProps.values, 20);
        return res == IO_OK ? ReadBytes(iload, data_.renderProps.extra, 36) : res;
    }
    case kUserPropsChunk: return iload->ReadWStringChunk(data_.userProps);
    case kBonePropsChunk: {
        IOResult res = chunkio::ReadValue(iload, data_.boneProps.flags);
        return res == IO_OK ? ReadBytes(iload, data_.boneProps.settings, 2) : res;
    }
    case kTmLocksChunk: return chunkio::ReadValue(iload, data_.tmLocks);
    case kExclusionLightsChunk: {
        std::int32_t count = 0;
        const IOResult res = ReadCount(iload, count);
        if (res == IO_OK) SizeWithNulls(data_.exclusionLights, count);
        return res;
    }
    case kNodeKindChunk: return chunkio::ReadValue(iload, data_.nodeKind);
    case kSelectionSetsChunk: {
        std::int32_t count = 0;
        const IOResult res = ReadCount(iload, count);
        return res == IO_OK ? chunkio::ReadInt32s(iload, count, data_.selectionSets) : res;
    }
    case kExclusionOthersChunk: {
        std::int32_t count = 0;
        IOResult res = ReadCount(iload, count);
        if (res == IO_OK) res = chunkio::ReadInt32s(iload, count, data_.exclusionModes);
        if (res == IO_OK) SizeWithNulls(data_.exclusionOthers, count);
        return res;
    }
    default: {
        bool taken = false;
        const IOResult res = mods_.LoadChunk(iload, taken);
        return taken ? res : RefBase::LoadChunk(iload);
    }
    }
}
