// The node record's own reference lists (local children, exclusion lights, other exclusion items) and its
// material slot. An entry added or removed shifts the slots behind it, which the host's undo records of single
// references cannot follow: list changes therefore bypass the undo stack, and the reset that empties the
// children records one undo object for the whole list.
#include "hold.h"
#include "imtl.h"
#include "inode.h"
#include "maxapi.h"
#include "records/ref_node.h"
#include "records/undo_bypass.h"

// The children a reset dropped: undo puts them back (by node handle, so a node deleted since is skipped), redo
// drops them again.
class ChildrenRestore : public RestoreObj {
public:
    ChildrenRestore(RefNode* record, const Tab<INode*>& children) : record_(record) {
        for (INode* child : children)
            if (child) handles_.Append(child->GetHandle());
    }
    void Restore(int) override {
        for (ULONG handle : handles_)
            if (INode* child = GetCOREInterface()->GetINodeByHandle(handle)) record_->appendChild(child);
    }
    void Redo() override {
        UndoBypass bypass;
        while (record_->data_.children.Count()) record_->removeChild(record_->data_.children.Count() - 1);
    }
    MSTR Description() override { return MSTR(L"RefNode Children"); }

private:
    RefNode* record_;
    Tab<ULONG> handles_;
};

void RefNode::setMaterialRef(Mtl* mtl) { ReplaceReference(Slots().Material(), mtl); }

void RefNode::appendChild(INode* child) {
    UndoBypass bypass;
    const int position = data_.children.Append(nullptr);
    ReplaceReference(Slots().Child(position), child);
}

void RefNode::removeChild(int position) {
    UndoBypass bypass;
    DeleteReference(Slots().Child(position));
    data_.children.Delete(position, 1);
}

void RefNode::dropChildren() {
    if (theHold.Holding() && data_.children.Count()) theHold.Put(new ChildrenRestore(this, data_.children));
    UndoBypass bypass;
    while (data_.children.Count()) removeChild(data_.children.Count() - 1);
}

void RefNode::appendExclusionLight(ReferenceTarget* light) {
    UndoBypass bypass;
    const int position = data_.exclusionLights.Append(nullptr);
    ReplaceReference(Slots().ExclusionLight(position), light);
}

void RefNode::removeExclusionLight(int position) {
    UndoBypass bypass;
    DeleteReference(Slots().ExclusionLight(position));
    data_.exclusionLights.Delete(position, 1);
}

void RefNode::appendExclusionOther(ReferenceTarget* item, int listIndex) {
    UndoBypass bypass;
    const int position = data_.exclusionOthers.Append(nullptr);
    data_.exclusionModes.SetCount(data_.exclusionOthers.Count());
    data_.exclusionModes[position] = listIndex;
    ReplaceReference(Slots().ExclusionOther(position), item);
}

void RefNode::removeExclusionOther(int position) {
    UndoBypass bypass;
    DeleteReference(Slots().ExclusionOther(position));
    data_.exclusionOthers.Delete(position, 1);
    if (position < data_.exclusionModes.Count()) data_.exclusionModes.Delete(position, 1);
}

void RefNode::AddSelectionSet(int setIndex) {
    if (data_.selectionSets.IndexOf(setIndex) < 0) data_.selectionSets.Append(setIndex);
    SetOverrideFlags(kNodeSelectionSets, kNodeSelectionSets);
}

void RefNode::ForgetSelectionSets() {
    data_.selectionSets.ZeroCount();
    SetOverrideFlags(kNodeSelectionSets, 0);
}
