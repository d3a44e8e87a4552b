// The reference helper: the scene object that stands for one reference file. It carries the reference's settings
// in its parameter block, owns the records of what was merged from the file through its references, and keeps
// the lists that survive a reload.
#pragma once

#include "frame/class_ids.h"
#include "helper/helper_params.h"
#include "helper/helper_slots.h"
#include "helper/helper_state.h"
#include "helper/vandrels_helper_interface.h"
#include "records/record_owner.h"
#include "sceneinfo.h"

#include <cstdint>

class Mtl;
class RefAnim;
class RefBase;
class RefNode;
class RefMaterial;
class ILoad;
class ISave;

// The asset type of the helper's two file names.
#define VH_FILE_ASSET_TYPE 7

class VandrelsHelper : public HelperObject, public VandrelsHelperInterface, public RecordOwner, public ISceneInfo {
public:
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
    IParamBlock2* GetParamBlock(int i) override { return i == 0 ? data_.pblock : nullptr; }
    IParamBlock2* GetParamBlockByID(short id) override { return id == 0 ? data_.pblock : nullptr; }
    int NumParamBlocks() override { return 1; }
    // Brings PersistReloadType in step with ReloadIfChanged (a reload type of 2 is left alone).
    void ReconcileReloadParameters();

    // References and sub-anims, in the layout of helper_slots.h.
    vandrels::HelperSlots Slots() const {
        return vandrels::HelperSlots(data_.refNodes.Count(), data_.refMaterials.Count(), data_.refLayers.Count());
    }
    int NumRefs() override;
    RefTargetHandle GetReference(int i) override;
    void SetReference(int i, RefTargetHandle rtarg) override;
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle hTarget, PartID& partID, RefMessage message,
                               BOOL propagate) override;
    BOOL IsRealDependency(ReferenceTarget* rtarg) override;
    int NumSubs() override { return 1; }
    Animatable* SubAnim(int i) override { return i == 0 ? data_.pblock : nullptr; }
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
    // Mode 2 writes the scene-info listing of this reference (helper/helper_info.cpp).
    void PrintData(int mode) override;
    // The helper in the scene-info listing: its files, options, local deletions and records (helper_info.cpp).
    void DescribeSceneInfo(InfoWriter& out) override;
    int NumRefNodes() override { return data_.refNodes.Count(); }
    RefNode* GetRefNode(int index) override { return data_.refNodes[index]; }
    int NumRefMaterials() override { return data_.refMaterials.Count(); }
    RefMaterial* GetRefMaterial(int index) override { return data_.refMaterials[index]; }
    Tab<INode*> GetNodes() override;
    void ShowDupNames() override;

    // Services records call on their helper.
    // The helper node's name while UseNamePrefix is on, else empty.
    WStr GetNamePrefix() override;
    BOOL GetPersistRef() override;
    DWORD GetPassCounter() const override { return data_.passCounter; }
    void RegisterWithHelper(RefAnim* record) override { data_.pendingRecords.Append(record); }
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
    // Keeps name (a referenced node's name in the reference file) among the nodes deleted again after each merge.
    void RememberDeletedName(const MSTR& name);
    // The helper's node (the first node whose object is this helper); null when none.
    INode* GetNode();

    // The helper's layer reference to layer is dropped (the layer is about to leave the scene).
    void OnLayerDeleted(ILayer* layer);

    // The records and lists, in slot order. Records join through the Append calls, adoption and loading, and
    // leave through the reference system.
    const Tab<RefNode*>& NodeRecords() const { return data_.refNodes; }
    const Tab<RefMaterial*>& MaterialRecords() const { return data_.refMaterials; }
    const Tab<RefLayer*>& LayerRecords() const { return data_.refLayers; }
    const Tab<RenamedLayer*>& RenamedLayers() const { return data_.renamedLayers; }
    // Names of referenced nodes the user deleted locally: a reload leaves them out.
    const Tab<WStr*>& DeletedNodeNames() const { return data_.nodesToDelete; }
    void RememberDeletedNode(const MCHAR* name) { data_.nodesToDelete.Append(new WStr(name)); }
    int NumLayerRefs() const { return data_.refLayers.Count(); }
    // A new node record for node, appended after the node records: the list gets an empty slot, then the
    // helper references the record there, so the host records the addition like any reference change. Throws
    // MAXException when the record cannot be made.
    RefNode* AppendNodeRecord(INode* node);
    // The same for a material record, appended after the material records.
    RefMaterial* AppendMaterialRecord(Mtl* mtl);
    // The collect pass (collect_pass.cpp): fills the node records' exclusion work lists, lets every material
    // record and then every node record collect when it is bound, records how the user renamed the
    // reference's layers, and counts the pass. Record failures travel up as MAXException.
    void RunCollectPass();
    // Resets the override categories that mask chooses on every record (the node records, the material
    // records with the material bit, the layer renamings with the layer bit, the locally deleted node names
    // with the deleted-nodes bit). The caller reloads afterwards. Answers 1.
    int ResetByMask(DWORD mask);

    // The parameter block; null before it is made.
    IParamBlock2* ParamBlock() const { return data_.pblock; }
    // Whether the reference's content is in the scene; a copy takes over its original's state.
    bool IsLoaded() const { return data_.loaded != 0; }
    void SetLoaded(bool loaded) { data_.loaded = loaded ? 1 : 0; }
    // The reference file's last-write time at the last load; 0 unknown.
    std::uint64_t FileTimeAtLoad() const { return data_.fileTime; }
    // Set between the first and the last click of interactive creation.
    void SetCreating(bool creating) { data_.creating = creating ? 1 : 0; }
    // Whether the helper reacts to writes of its own parameters (off while it writes them itself).
    bool ReactsToOwnParameters() const { return data_.accessorEnabled == 1; }
    // UseNamePrefix was switched (on is its new value): every node and material record re-applies the new
    // prefix to its item's name and the layers follow.
    void SwitchNamePrefix(int on);

    // The layer steps' view of the layer lists (helper_layer_steps.cpp).
    class LayerSteps;

private:
    friend class AccessorOffScope;

    void clearRecordBackPointer(ReferenceTarget* record);
    void setRecordBackPointer(ReferenceTarget* record);
    void freeLists();

    VandrelsHelperState data_;
};

// Switches the helper's reaction to its own parameter writes off for its lifetime, then back as it was.
class AccessorOffScope {
public:
    explicit AccessorOffScope(VandrelsHelper* helper) : helper_(helper), saved_(helper->data_.accessorEnabled) {
        helper_->data_.accessorEnabled = 0;
    }
    ~AccessorOffScope() { helper_->data_.accessorEnabled = saved_; }
    AccessorOffScope(const AccessorOffScope&) = delete;
    AccessorOffScope& operator=(const AccessorOffScope&) = delete;

private:
    VandrelsHelper* helper_;
    int saved_;
};

// The helper's parameter block descriptor.
ParamBlockDesc2* GetVandrelsHelperParamBlockDesc();
