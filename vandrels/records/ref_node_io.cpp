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
    kModCountsChunk = 0x0024,
    kWsModsCountChunk = 0x0015,
    kOsModsCountChunk = 0x0016,
    kWsModChunk = 0x0017,
    kOsModChunk = 0x0018,
    kWsModEmptyChunk = 0x0019,
    kOsModEmptyChunk = 0x001A,
    kDeletedCountChunk = 0x001C,
    kDeletedChunk = 0x001D,
    kRenamedCountChunk = 0x001E,
    kRenamedChunk = 0x001F,
    kToggledCountChunk = 0x0020,
    kToggledChunk = 0x0021,
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

// Fields inside a modifier entry or a change entry.
enum : USHORT {
    kEntryFirstChunk = 0x0000,   // state of a mirror entry; name of a change entry
    kEntrySecondChunk = 0x0001,  // name of a mirror entry; index of a change entry
    kEntryThirdChunk = 0x0002,   // context of a mirror entry; new name or toggles of a change entry
};

constexpr ULONG kContextBytes = sizeof(Matrix3) + sizeof(Box3);

IOResult SaveModEntry(ISave* isave, USHORT id, const RefModifier& entry) {
    isave->BeginChunk(id);
    IOResult res = chunkio::SaveValueChunk(isave, kEntryFirstChunk, entry.state);
    if (res == IO_OK) res = SaveText(isave, kEntrySecondChunk, entry.name);
    if (res == IO_OK && entry.modContext) {
        // A context without transform or box is stored with the default transform and an empty box.
        const Matrix3 tm = entry.modContext->tm ? *entry.modContext->tm : Matrix3();
        const Box3 box = entry.modContext->box ? *entry.modContext->box : Box3();
        Payload p;
        p.AddBytes(reinterpret_cast<const std::uint8_t*>(&tm), sizeof tm);
        p.AddBytes(reinterpret_cast<const std::uint8_t*>(&box), sizeof box);
        res = p.Save(isave, kEntryThirdChunk);
    }
    isave->EndChunk();
    return res;
}

// One change entry: name, index, then what the change set (when there is a third field).
template <class Third> IOResult SaveChangeEntry(ISave* isave, USHORT id, const MSTR& name, std::int32_t index,
                                                Third third) {
    isave->BeginChunk(id);
    IOResult res = SaveText(isave, kEntryFirstChunk, name);
    if (res == IO_OK) res = chunkio::SaveValueChunk(isave, kEntrySecondChunk, index);
    if (res == IO_OK) res = third();
    isave->EndChunk();
    return res;
}

// The sub-chunks of the open entry chunk, each handed to field; stops at the first failure.
template <class Field> IOResult ReadEntryFields(ILoad* iload, Field field) {
    for (;;) {
        IOResult res = iload->OpenChunk();
        if (res == IO_END) return IO_OK;
        if (res != IO_OK) return res;
        res = field(iload->CurChunkID());
        const IOResult closed = iload->CloseChunk();
        if (res != IO_OK) return res;
        if (closed != IO_OK) return closed;
    }
}

// Places a loaded entry at the list's next position: into a slot the count made, or appended.
template <class T> void PlaceEntry(Tab<T*>& list, int& cursor, T* entry) {
    if (cursor < list.Count()) {
        delete list[cursor];
        list[cursor] = entry;
    } else {
        list.Append(entry);
    }
    ++cursor;
}

// A count chunk of a list: the list gets at least that many positions (entries may have come first).
template <class T> IOResult ReadListCount(ILoad* iload, Tab<T*>& list) {
    std::int32_t count = 0;
    const IOResult res = ReadCount(iload, count);
    if (res == IO_OK)
        while (list.Count() < count) list.Append(nullptr);
    return res;
}

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
    if (RecordOwner* helper = GetHelper(); helper && helper->GetPersistRef()) {
        Payload p;
        p.Add(data_.modCountsAtMerge[0]).Add(data_.modCountsAtMerge[1]);
        if (p.Save(isave, kModCountsChunk) != IO_OK) return IO_ERROR;
    }
    if (saveModifierChunks(isave) != IO_OK) return IO_ERROR;
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
    for (int& cursor : data_.modLoadCursor) cursor = 0;
    const IOResult res = RefBase::Load(iload);
    if (res != IO_OK) {
        ClearRefAnimSlots();
        dropModEntries(data_.wsMods);
        dropModEntries(data_.osMods);
        freeModLists();
    }
    return res;
}

IOResult RefNode::saveModifierChunks(ISave* isave) {
    RecordOwner* helper = GetHelper();
    const bool persist = helper && helper->GetPersistRef();
    // Referenced modifiers come back with the reference file: they keep only their position, unless the
    // referenced content is saved with the scene.
    auto saveMirror = [&](const Tab<RefModifier*>& list, USHORT countId, USHORT entryId, USHORT emptyId) {
        if (!list.Count()) return IO_OK;
        if (chunkio::SaveValueChunk(isave, countId, std::int32_t(list.Count())) != IO_OK) return IO_ERROR;
        for (const RefModifier* entry : list) {
            IOResult res;
            if (entry && (entry->state != kModFromReference || persist)) {
                res = SaveModEntry(isave, entryId, *entry);
            } else {
                isave->BeginChunk(emptyId);
                isave->EndChunk();
                res = IO_OK;
            }
            if (res != IO_OK) return IO_ERROR;
        }
        return IO_OK;
    };
    if (saveMirror(data_.wsMods, kWsModsCountChunk, kWsModChunk, kWsModEmptyChunk) != IO_OK) return IO_ERROR;
    if (saveMirror(data_.osMods, kOsModsCountChunk, kOsModChunk, kOsModEmptyChunk) != IO_OK) return IO_ERROR;

    auto saveChanges = [&](const auto& list, USHORT countId, auto saveEntry) {
        if (!list.Count()) return IO_OK;
        if (chunkio::SaveValueChunk(isave, countId, std::int32_t(list.Count())) != IO_OK) return IO_ERROR;
        for (const auto* entry : list)
            if (entry && saveEntry(*entry) != IO_OK) return IO_ERROR;
        return IO_OK;
    };
    if (saveChanges(data_.deletedMods, kDeletedCountChunk, [&](const ModDeleted& e) {
            return SaveChangeEntry(isave, kDeletedChunk, e.name, e.index, [] { return IO_OK; });
        }) != IO_OK)
        return IO_ERROR;
    if (saveChanges(data_.renamedMods, kRenamedCountChunk, [&](const ModChangedName& e) {
            return SaveChangeEntry(isave, kRenamedChunk, e.name, e.index,
                                   [&] { return SaveText(isave, kEntryThirdChunk, e.newName); });
        }) != IO_OK)
        return IO_ERROR;
    return saveChanges(data_.toggledMods, kToggledCountChunk, [&](const ModChangedToggles& e) {
        return SaveChangeEntry(isave, kToggledChunk, e.name, e.index,
                               [&] { return chunkio::SaveValueChunk(isave, kEntryThirdChunk, e.toggles); });
    });
}

IOResult RefNode::loadModifierChunk(ILoad* iload, bool& taken) {
    taken = true;
    const USHORT id = iload->CurChunkID();
    switch (id) {
    case kWsModsCountChunk: return ReadListCount(iload, data_.wsMods);
    case kOsModsCountChunk: return ReadListCount(iload, data_.osMods);
    case kWsModEmptyChunk: PlaceEntry<RefModifier>(data_.wsMods, data_.modLoadCursor[0], nullptr); return IO_OK;
    case kOsModEmptyChunk: PlaceEntry<RefModifier>(data_.osMods, data_.modLoadCursor[1], nullptr); return IO_OK;
    case kWsModChunk:
    case kOsModChunk: {
        // The toggles are not stored: they are read from the modifier when the host restores it.
        auto entry = std::make_unique<RefModifier>();
        const IOResult res = ReadEntryFields(iload, [&](USHORT field) {
            switch (field) {
            case kEntryFirstChunk: return chunkio::ReadValue(iload, entry->state);
            case kEntrySecondChunk: return iload->ReadWStringChunk(entry->name);
            case kEntryThirdChunk: {
                std::uint8_t bytes[kContextBytes];
                ULONG n = 0;
                const IOResult read = iload->Read(bytes, kContextBytes, &n);
                if (read != IO_OK) return read;
                Matrix3 tm;
                Box3 box;
                std::memcpy(&tm, bytes, sizeof tm);
                std::memcpy(&box, bytes + sizeof tm, sizeof box);
                const ModContext context(&tm, &box);
                entry->SetContext(&context);
                return IO_OK;
            }
            default: return IO_OK;
            }
        });
        if (res != IO_OK) return res;
        if (entry->state == kModBoundary) entry->toggles = 0;
        if (id == kWsModChunk)
            PlaceEntry(data_.wsMods, data_.modLoadCursor[0], entry.release());
        else
            PlaceEntry(data_.osMods, data_.modLoadCursor[1], entry.release());
        return IO_OK;
    }
    case kDeletedCountChunk: return ReadListCount(iload, data_.deletedMods);
    case kRenamedCountChunk: return ReadListCount(iload, data_.renamedMods);
    case kToggledCountChunk: return ReadListCount(iload, data_.toggledMods);
    case kDeletedChunk: {
        auto entry = std::make_unique<ModDeleted>();
        const IOResult res = ReadEntryFields(iload, [&](USHORT field) {
            if (field == kEntryFirstChunk) return iload->ReadWStringChunk(entry->name);
            if (field == kEntrySecondChunk) return chunkio::ReadValue(iload, entry->index);
            return IO_OK;
        });
        if (res == IO_OK) PlaceEntry(data_.deletedMods, data_.modLoadCursor[2], entry.release());
        return res;
    }
    case kRenamedChunk: {
        auto entry = std::make_unique<ModChangedName>();
        const IOResult res = ReadEntryFields(iload, [&](USHORT field) {
            if (field == kEntryFirstChunk) return iload->ReadWStringChunk(entry->name);
            if (field == kEntrySecondChunk) return chunkio::ReadValue(iload, entry->index);
            if (field == kEntryThirdChunk) return iload->ReadWStringChunk(entry->newName);
            return IO_OK;
        });
        if (res == IO_OK) PlaceEntry(data_.renamedMods, data_.modLoadCursor[3], entry.release());
        return res;
    }
    case kToggledChunk: {
        auto entry = std::make_unique<ModChangedToggles>();
        const IOResult res = ReadEntryFields(iload, [&](USHORT field) {
            if (field == kEntryFirstChunk) return iload->ReadWStringChunk(entry->name);
            if (field == kEntrySecondChunk) return chunkio::ReadValue(iload, entry->index);
            if (field == kEntryThirdChunk) return chunkio::ReadValue(iload, entry->toggles);
            return IO_OK;
        });
        if (res == IO_OK) PlaceEntry(data_.toggledMods, data_.modLoadCursor[4], entry.release());
        return res;
    }
    default: taken = false; return IO_OK;
    }
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
    case kModCountsChunk: return ReadBytes(iload, data_.modCountsAtMerge, sizeof data_.modCountsAtMerge);
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
        const IOResult res = loadModifierChunk(iload, taken);
        return taken ? res : RefBase::LoadChunk(iload);
    }
    }
}
