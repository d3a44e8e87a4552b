// The record of a parameter block 2: it keeps a value snapshot of every parameter the user changed locally and
// the sizes of resized tables, and writes them into the freshly merged block after a reload. It also keeps a
// baseline of the block's table sizes and referenced items, to tell local edits from the library's own.
#pragma once

#include "anims/pblock2_param.h"
#include "anims/record_codes.h"
#include "anims/ref_anim.h"

class IParamBlock2;

class RefAnimPblock2 : public RefAnim {
public:
    RefAnimPblock2() = default;
    ~RefAnimPblock2() override;

    Class_ID ClassID() override { return REFANIM_PBLOCK2_CLASS_ID; }
    // The table-resize mode: 0 promotes the record to its parent on a resize, 1 snapshots the table and its
    // entries, 2 only follows the new size. The undo group applies all snapshots as one undo step "Override".
    void SetMode(int tabResizeOverride, bool undoGroup) {
        tabResizeOverride_ = tabResizeOverride;
        undoGroup_ = undoGroup ? 1 : 0;
    }
    int GetTabResizeOverride() const { return tabResizeOverride_; }
    bool IsUndoGroup() const { return undoGroup_ != 0; }
    std::uint32_t GetType() override;

    // The snapshots, in the order they were made; table sizes apart.
    const Tab<Pblock2Param*>& GetOverriddenParams() const { return overriddenParams_; }
    const Tab<Pblock2Param*>& GetOverriddenTabs() const { return overriddenTabs_; }
    // The value snapshot of (paramID, tabIndex), or null.
    Pblock2Param* FindParam(int paramID, int tabIndex) const;

    void Collect(Animatable* root) override;
    // Writes every snapshot into the block found at the path (tables first) and follows that block.
    void Override(Animatable* root) override;
    // Hands the local users of a LocDep record's block, but the block's owner, over to the new block.
    void OverrideLocDep(Animatable* anim) override;
    MSTR GetInfo() override;

    // References: 0 the block, 1 the block's owner while the record is LocDep.
    int NumRefs() override { return 2; }
    RefTargetHandle GetReference(int i) override;
    void SetReference(int i, RefTargetHandle target) override;
    // The change handler: a local change of a parameter while idle makes or refreshes its snapshot.
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle hTarget, PartID& partID, RefMessage message,
                               BOOL propagate) override;

    RefTargetHandle Clone(RemapDir& remap) override;
    IOResult Save(ISave* isave) override;
    IOResult Load(ILoad* iload) override;

protected:
    IOResult LoadChunk(ILoad* iload) override;

private:
    IParamBlock2* block() const;
    // Rebuilds the table counts and referenced items of every parameter from the held block.
    void takeBaseline();
    // The baseline of one parameter (by index): its table count, and its referenced items.
    void refreshBaseline(IParamBlock2* block, int index);
    void freeBaseline();
    // A table whose count changed; answers whether the change handler ends there.
    bool recordTableResize(IParamBlock2* block, ParamID id, int index);
    // Makes or refreshes the value snapshot of (id, tabIndex), undoably.
    void snapshot(IParamBlock2* block, ParamID id, int tabIndex);
    // Asks the owner for a record of target at this record's path extended by the parameter (and the entry).
    void recordReference(IParamBlock2* block, int index, int tabIndex, ReferenceTarget* target);
    void markModified();

    Tab<Pblock2Param*> overriddenParams_;
    Tab<Pblock2Param*> overriddenTabs_;
    Tab<int> refTabCounts_;
    Tab<Tab<ReferenceTarget*>*> refTabValues_;
    int baselineTaken_ = 0;
    int tabResizeOverride_ = 0;
    int undoGroup_ = 0;
    ReferenceTarget* ownerAnim_ = nullptr;
};
