// The float list controller (superclass 0x9003): the weighted sum of a list of float controllers, with the list
// interface of ilistctrl.h; reference 0 is the weights block, references 1.. the entries.
#pragma once

#include "ilistctrl.h"
#include "iparamb2.h"
#include "scene/objects/ref_list.h"

namespace hostrt {

// The published description of the list interface.
FPInterfaceDesc* ListControlInterfaceDesc();

class FloatListControl : public Control, public IListControl {
public:
    explicit FloatListControl(bool loading = false);
    ~FloatListControl() override;
    Class_ID ClassID() override;
    SClass_ID SuperClassID() override { return CTRL_FLOAT_CLASS_ID; }
    void GetClassName(MSTR& s, bool localized = true) const override { s = L"Float List"; }
    static ClassDesc2* Desc();

    // Absolute: the weighted sum of the entries; relative: added to the incoming float.
    void GetValue(TimeValue t, void* val, Interval& valid, GetSetMethod method = CTRL_ABSOLUTE) override;
    // Changes the active entry so that the list takes the value (relative: moves it by the value).
    void SetValue(TimeValue t, void* val, int commit = 1, GetSetMethod method = CTRL_ABSOLUTE) override;
    BOOL IsAnimated() override;

    // IListControl
    int GetCount() override { return entries_.Count(); }
    int GetActive() override { return active_; }
    void SetActive(int index) override;
    void DeleteItem(int index) override;
    void CutItem(int index) override;
    void PasteItem(int index) override;
    void SetName(int index, MSTR name) override;
    MSTR GetName(int index) override;
    Control* GetSubCtrl(int index) override;
    float GetSubCtrlWeight(int index, TimeValue t) override;

    BaseInterface* GetInterface(Interface_ID id) override;
    using Control::GetInterface;

    int NumSubs() override { return GetCount() + 2; }
    Animatable* SubAnim(int i) override;
    MSTR SubAnimName(int i, bool localized = true) override;
    int SubNumToRefNum(int subNum) override;
    BOOL CanAssignController(int subAnim) override;
    // Entry i < n: replaces it; i == n (the "Available" slot): appends. Float controllers only.
    BOOL AssignController(Animatable* control, int subAnim) override;
    int NumParamBlocks() override { return 1; }
    IParamBlock2* GetParamBlock(int i) override { return i == 0 ? weights_ : nullptr; }
    IParamBlock2* GetParamBlockByID(short id) override { return id == 0 ? weights_ : nullptr; }

    int NumRefs() override { return 1 + entries_.Count(); }
    RefTargetHandle GetReference(int i) override;
    void SetReference(int i, RefTargetHandle rtarg) override;
    IOResult Save(ISave* isave) override;
    IOResult Load(ILoad* iload) override;
    RefTargetHandle Clone(RemapDir& remap) override;

private:
    class ActiveRestore;
    void insertEntry(int at, Control* c, const MSTR& name);
    void removeEntry(int at, bool delOld);
    void setActive(int index, bool announce);
    void structureChanged() { NotifyDependents(FOREVER, PART_ALL, REFMSG_SUBANIM_STRUCTURE_CHANGED); }
    void dropClip();

    IParamBlock2* weights_ = nullptr;
    RefList<MSTR> entries_;
    int active_ = -1;
    // The entry cut last, kept alive for PasteItem.
    Control* clip_ = nullptr;
    AnimHandle clipHandle_ = 0;
    MSTR clipName_;
};

}  // namespace hostrt
