// The record of an old-style parameter block: the index and value of every parameter the user changed locally,
// written into the freshly merged block after a reload.
#pragma once

#include "anims/ref_anim.h"
#include "hold.h"

#include <vector>

class IParamBlock;

// One changed parameter: its index in the block and its value (a float or an integer as float in the first
// element and zeros after it, or a colour or point in all three). 16 bytes in the file.
struct PblockParam {
    std::int32_t index = 0;
    float value[3] = {0.f, 0.f, 0.f};
};

class RefAnimPblock : public RefAnim {
public:
    Class_ID ClassID() override { return REFANIM_PBLOCK_CLASS_ID; }

    const std::vector<PblockParam>& GetOverriddenParams() const { return overriddenParams_; }
    // The entry list as the undo records see it.
    std::vector<PblockParam>& ParamList() { return overriddenParams_; }

    void Override(Animatable* root) override;
    MSTR GetInfo() override;
    // The change handler: a local change of a parameter while idle stores or refreshes its entry.
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle hTarget, PartID& partID, RefMessage message,
                               BOOL propagate) override;
    RefTargetHandle Clone(RemapDir& remap) override;
    IOResult Save(ISave* isave) override;
    IOResult Load(ILoad* iload) override;

protected:
    IOResult LoadChunk(ILoad* iload) override;

private:
    std::vector<PblockParam> overriddenParams_;
};

// Undo of an appended entry: the list's count before, and the entries the undo took off for the redo.
class ParamArrayRestore : public RestoreObj {
public:
    explicit ParamArrayRestore(RefAnimPblock* record)
        : undoCount_(int(record->ParamList().size())), record_(record) {}
    void Restore(int isUndo) override;
    void Redo() override;
    MSTR Description() override { return MSTR(L"ParamArrayRestore"); }

private:
    int undoCount_;
    int redoCount_ = 0;
    std::vector<PblockParam> undone_;
    RefAnimPblock* record_;
};

// Undo of a refreshed entry's value. The entry is known by its place in the record's list.
class PblockParamRestore : public RestoreObj {
public:
    PblockParamRestore(RefAnimPblock* record, int entry);
    void Restore(int isUndo) override;
    void Redo() override;
    MSTR Description() override { return MSTR(L"PblockParamRestore"); }

private:
    float undo_[3];
    float redo_[3] = {0.f, 0.f, 0.f};
    RefAnimPblock* record_;
    int entry_;
};
