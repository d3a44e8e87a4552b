// The host's lights (superclass 0x30), omni and target spot, with an include/exclude list whose nodes are
// references 1.. of the light: a deleted node leaves an empty entry; edits are undoable and send 80.
#pragma once

#include "scene/objects/block_object.h"
#include "scene/objects/ref_list.h"

namespace hostrt {

class HostLight : public BlockObject<LightObject> {
public:
    HostLight(ClassDesc2* cd, bool loading);
    ExclList* GetExclList() override { return &excl_; }

    int NumRefs() override { return 1 + nodes_.Count(); }
    RefTargetHandle GetReference(int i) override;
    void SetReference(int i, RefTargetHandle rtarg) override;
    // The listed nodes are no real dependencies: they keep nothing alive and are saved only with their scene.
    BOOL IsRealDependency(ReferenceTarget* rtarg) override;
    // Changes of the listed nodes stop here.
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle hTarget, PartID& partID, RefMessage message,
                               BOOL propagate) override;
    IOResult Save(ISave* isave) override;
    IOResult Load(ILoad* iload) override;

protected:
    void CloneExtras(BlockObject<LightObject>* clone, RemapDir& remap) override;

private:
    class List : public ExclList {
    public:
        explicit List(HostLight* light) : light_(light) {}
        int Count() override { return light_->nodes_.Count(); }
        INode* operator[](int i) override;
        int FindNode(INode* node) override;
        int AddNode(INode* node) override;
        void RemoveNode(int i) override;
        void RemoveNode(INode* node) override;
        BOOL IsInclude() override { return light_->include_; }
        void SetInclude(BOOL include) override;

    private:
        HostLight* light_;
    };
    class IncludeRestore;
    void changed() { NotifyDependents(FOREVER, PART_ALL, REFMSG_CHANGE); }

    RefList<NoExtra> nodes_;
    List excl_{this};
    bool include_ = false;
};

}  // namespace hostrt
