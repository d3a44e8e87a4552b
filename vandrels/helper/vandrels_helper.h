// The reference helper: the scene object that stands for one reference file. It carries the reference's settings
// in its parameter block, owns the records of what was merged from the file through its references, and keeps
// the lists that survive a reload.
#pragma once

#include "frame/class_ids.h"
#include "helper/helper_layers.h"
#include "helper/helper_params.h"
#include "helper/helper_slots.h"
#include "helper/vandrels_helper_interface.h"
#include "iparamb2.h"
#include "records/record_owner.h"
#include "object.h"

#include <cstdint>

class RefAnim;
class RefBase;
class RefNode;
class RefMaterial;
class ILoad;
class ISave;

// The asset type of the helper's two file names.
#define VH_FILE_ASSET_TYPE 7

class VandrelsHelper : public HelperObject, public VandrelsHelperInterface, public RecordOwner {
public:
    IObjParam* editInterface = nullptr;   // while edited in the command panel
    HWND rolloutWindow = nullptr;         // the parameter rollout's window while edited
    int useNamePrefix = 0;                // copy of UseNamePrefix, taken whenever the block is attached
    DWORD sceneEventKey = 0;              // key of the node-event callback registration
    std::uint64_t fileTime = 0;             // last-write time of the reference file at the last load; 0 unknown
    Tab<RefAnim*> pendingRecords;         // animatable records to finish after the current load
    DWORD passCounter = 0;                // incremented after every collect pass over the records
    int loaded = 0;                       // 1 while the reference's content is in the scene
    int holdsNested = 0;                  // 1 when the last load merged a helper that needs render switching
    IParamBlock2* pblock = nullptr;       // reference 0
    Tab<RefNode*> refNodes;               // references 2 .. 1+N
    Tab<RefMaterial*> refMaterials;       // the next M references
    Tab<RefLayer*> refLayers;             // the next L references (the layers themselves)
    Tab<RenamedLayer*> renamedLayers;
    int accessorEnabled = 1;              // 0 while the helper writes its own parameters
    Tab<WStr*> nodesToDelete;             // names of referenced nodes the user deleted locally
    ReferenceTarget* sceneMaterials = nullptr;  // reference 1, only while a merge runs
    int creating = 0;                     // 1 between the first and the last click of interactive creation

    explicit VandrelsHelper(BOOL loading = FALSE);
    ~VandrelsHelper() override;

    // Whether obj is a reference helper; the helper itself or null.
    static bool IsVandrelsHelper(Object* obj);
    static VandrelsHelper* FromObject(Object* obj);
    // The helper behind a record's owner (every record owner is a helper); null for null.
    static VandrelsHelper* FromOwner(RecordOwner* owner) { return static_cast<VandrelsHelper*>(owner); }

    // Identity.
    Class_ID ClassID() override { return VANDRELS_HELPER_CLASS_ID; }
    SClass_ID SuperClassID() override { return HELPER_CLASS_ID; }
    void GetClassName(MSTR& s, bool = true) const override { s = L"VandrelsHelper"; }
    MSTR GetObjectName(bool localized = true) override;
    BaseInterface* GetInterface(Interface_ID id) override;
    void* GetInterface(ULONG id) override { return HelperObject::GetInterface(id); }

    // Parameters.
    IParamBlock2* GetParamBlock(int i) override { return i == 0 ? pblock : nullptr; }
    IParamBlock2* GetParamBlockByID(short id) override { return id == 0 ? pblock : nullptr; }
    int NumParamBlocks() override { return 1; }
    // Brings PersistReloadType in step with ReloadIfChanged (a reload type of 2 is left alone).
    void ReconcileReloadParameters();

    // References and sub-anims, in the layout of helper_slots.h.
    vandrels::HelperSlots Slots() const {
        return vandrels::HelperSlots(refNodes.Count(), refMaterials.Count(), refLayers.Count());
    }
    int NumRefs() override;
    RefTargetHandle GetReference(int i) override;
    void SetReference(int i, RefTargetHandle rtarg) override;
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle hTarget, PartID& partID, RefMessage message,
                               BOOL propagate) override;
    BOOL IsRealDependency(ReferenceTarget* rtarg) override;
    int NumSubs() override { return 1; }
    Animatable* SubAnim(int i) override { return i == 0 ? pblock : nullptr; }
    MSTR SubAnimName(int i, bool = true) override { return i == 0 ? MSTR(L"pblock") : MSTR(); }
    int SubNumToRefNum(int subNum) override { return subNum == 0 ? vandrels::HelperSlots::kParamBlock : -1; }
    Interval ObjectValidity(TimeValue) override { return FOREVER; }

    // Command panel, creation, assets, cloning, saving.
    void BeginEditParams(IObjParam* ip, ULONG flags, Animatable* prev) override;
    void EndEditParams(IObjParam* ip, ULONG flags, Animatable* next) override;
    CreateMouseCallBack* GetCreateMouseCallBack() override;
    void EnumAuxFiles(AssetEnumCallback& assetEnum, DWORD flags) override;
    RefTargetHandle Clone(RemapDir& remap) override;
    IOResult Save(ISave* isave) override;
    IOResult Load(ILoad* iload) override;

    // The reference operations (loading pipeline, unload, reload and the rest).
    // Load answers 1 when the reference's content is in the scene, else 0.
    int Load();
    int Reload() override;
    int Unload() override;
    int Merge() override;
    int Dismiss() override;
    int Reset() override;
    int Overwrite() override;
    int SaveAs(const MCHAR* fileName) override;
    void PrintData(int mode) override;
    int NumRefNodes() override { return refNodes.Count(); }
    RefNode* GetRefNode(int index) override { return refNodes[index]; }
    int NumRefMaterials() override { return refMaterials.Count(); }
    RefMaterial* GetRefMaterial(int index) override { return refMaterials[index]; }
    Tab<INode*> GetNodes() override;
    void ShowDupNames() override;

    // Services records call on their helper.
    // The helper node's name while UseNamePrefix is on, else empty.
    WStr GetNamePrefix() override;
    BOOL GetPersistRef() override;
    DWORD GetPassCounter() const override { return passCounter; }
    void RegisterWithHelper(RefAnim* record) override { pendingRecords.Append(record); }
    // Makes node one of the reference's nodes: a new node record, named name in the reference file (an
    // override of the name) or, without name, by the node's own name; that name leaves nodesToDelete and the
    // node's dependents hear of the adoption. Null, changing nothing, for no node or a node that has a record.
    RefNode* AdoptNode(INode* node, const MCHAR* name) override;
    // Whether a render must reload the helper: it holds loaded nested content that may switch, or its proxy
    // settings for viewport and render differ.
    bool NeedsRenderSwitching();
    // True while a merge is in progress or when the helper's node is not under the open scene's own root.
    bool IsNested() override;
    // Deletes every entry equal to name from nodesToDelete (undoable while the hold is holding).
    void ForgetName(const MCHAR* name) override;
    // The helper's node (the first node whose object is this helper); null when none.
    INode* GetNode();

    // The helper's layer reference to layer is dropped (the layer is about to leave the scene).
    void OnLayerDeleted(ILayer* layer);

    int NumLayerRefs() const { return refLayers.Count(); }

private:
    void clearRecordBackPointer(ReferenceTarget* record);
    void setRecordBackPointer(ReferenceTarget* record);
    void freeLists();
};

// Switches the helper's reaction to its own parameter writes off for its lifetime, then back as it was.
class AccessorOffScope {
public:
    explicit AccessorOffScope(VandrelsHelper* helper) : helper_(helper), saved_(helper->accessorEnabled) {
        helper_->accessorEnabled = 0;
    }
    ~AccessorOffScope() { helper_->accessorEnabled = saved_; }
    AccessorOffScope(const AccessorOffScope&) = delete;
    AccessorOffScope& operator=(const AccessorOffScope&) = delete;

private:
    VandrelsHelper* helper_;
    int saved_;
};

// The helper's parameter block descriptor.
ParamBlockDesc2* GetVandrelsHelperParamBlockDesc();
