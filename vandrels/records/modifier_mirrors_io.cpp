// The modifier mirrors' chunks inside the node record's chunks: the counts at merge (only when the referenced
// content is saved with the scene), both mirrors entry by entry (referenced entries as empty chunks unless the
// reference persists) and the three change lists.
#include "records/modifier_mirrors.h"

#include "records/chunk_io.h"

#include <cstring>
#include <memory>

namespace {

enum : USHORT {
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
    kModCountsChunk = 0x0024,
};

using chunkio::ReadCount;

IOResult SaveText(ISave* isave, USHORT id, const MSTR& text) {
    isave->BeginChunk(id);
    const IOResult res = isave->WriteWString(text);
    isave->EndChunk();
    return res;
}

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
        ULONG written = 0;
        isave->BeginChunk(kEntryThirdChunk);
        res = isave->Write(&tm, sizeof tm, &written);
        if (res == IO_OK) res = isave->Write(&box, sizeof box, &written);
        isave->EndChunk();
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

void NodeModifierMirrors::BeginLoad() {
    for (int& cursor : loadCursor_) cursor = 0;
}

IOResult NodeModifierMirrors::Save(ISave* isave) const {
    const bool persist = owner_.MirrorsPersist();
    // The counts at merge only matter to a scene that keeps the referenced content.
    if (persist) {
        ULONG written = 0;
        isave->BeginChunk(kModCountsChunk);
        const IOResult res = isave->Write(countsAtMerge_, sizeof countsAtMerge_, &written);
        isave->EndChunk();
        if (res != IO_OK) return IO_ERROR;
    }
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
    if (saveMirror(wsMods_, kWsModsCountChunk, kWsModChunk, kWsModEmptyChunk) != IO_OK) return IO_ERROR;
    if (saveMirror(osMods_, kOsModsCountChunk, kOsModChunk, kOsModEmptyChunk) != IO_OK) return IO_ERROR;

    auto saveChanges = [&](const auto& list, USHORT countId, auto saveEntry) {
        if (!list.Count()) return IO_OK;
        if (chunkio::SaveValueChunk(isave, countId, std::int32_t(list.Count())) != IO_OK) return IO_ERROR;
        for (const auto* entry : list)
            if (entry && saveEntry(*entry) != IO_OK) return IO_ERROR;
        return IO_OK;
    };
    if (saveChanges(deletedMods_, kDeletedCountChunk, [&](const ModDeleted& e) {
            return SaveChangeEntry(isave, kDeletedChunk, e.name, e.index, [] { return IO_OK; });
        }) != IO_OK)
        return IO_ERROR;
    if (saveChanges(renamedMods_, kRenamedCountChunk, [&](const ModChangedName& e) {
            return SaveChangeEntry(isave, kRenamedChunk, e.name, e.index,
                                   [&] { return SaveText(isave, kEntryThirdChunk, e.newName); });
        }) != IO_OK)
        return IO_ERROR;
    return saveChanges(toggledMods_, kToggledCountChunk, [&](const ModChangedToggles& e) {
        return SaveChangeEntry(isave, kToggledChunk, e.name, e.index,
                               [&] { return chunkio::SaveValueChunk(isave, kEntryThirdChunk, e.toggles); });
    });
}

IOResult NodeModifierMirrors::LoadChunk(ILoad* iload, bool& taken) {
    taken = true;
    const USHORT id = iload->CurChunkID();
    switch (id) {
    case kModCountsChunk: {
        ULONG n = 0;
        return iload->Read(countsAtMerge_, sizeof countsAtMerge_, &n);
    }
    case kWsModsCountChunk: return ReadListCount(iload, wsMods_);
    case kOsModsCountChunk: return ReadListCount(iload, osMods_);
    case kWsModEmptyChunk: PlaceEntry<RefModifier>(wsMods_, loadCursor_[0], nullptr); return IO_OK;
    case kOsModEmptyChunk: PlaceEntry<RefModifier>(osMods_, loadCursor_[1], nullptr); return IO_OK;
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
            PlaceEntry(wsMods_, loadCursor_[0], entry.release());
        else
            PlaceEntry(osMods_, loadCursor_[1], entry.release());
        return IO_OK;
    }
    case kDeletedCountChunk: return ReadListCount(iload, deletedMods_);
    case kRenamedCountChunk: return ReadListCount(iload, renamedMods_);
    case kToggledCountChunk: return ReadListCount(iload, toggledMods_);
    case kDeletedChunk: {
        auto entry = std::make_unique<ModDeleted>();
        const IOResult res = ReadEntryFields(iload, [&](USHORT field) {
            if (field == kEntryFirstChunk) return iload->ReadWStringChunk(entry->name);
            if (field == kEntrySecondChunk) return chunkio::ReadValue(iload, entry->index);
            return IO_OK;
        });
        if (res == IO_OK) PlaceEntry(deletedMods_, loadCursor_[2], entry.release());
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
        if (res == IO_OK) PlaceEntry(renamedMods_, loadCursor_[3], entry.release());
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
        if (res == IO_OK) PlaceEntry(toggledMods_, loadCursor_[4], entry.release());
        return res;
    }
    default: taken = false; return IO_OK;
    }
}
