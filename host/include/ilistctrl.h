// The list controller interface: a controller whose value is the weighted sum of a list of controllers.
// Entries are numbered from 0; one of them is active (it takes the values that are set on the list).
#pragma once

#include "control.h"
#include "ifnpub.h"

#define LIST_CONTROLLER_INTERFACE Interface_ID(0x444E7687, 0x722E6E36)

// Sub-anims of a list controller: entries 0..n-1, then an empty "Available" slot (assigning a controller there
// appends it), then the weights parameter block. Adding, deleting, cutting, pasting and renaming entries sends
// 258 (sub-anim structure changed) to the dependents; a change of the active entry sends 80 with part 0.
// Every edit is undoable while the hold holds.
class IListControl : public FPMixinInterface {
public:
    virtual int GetCount() = 0;
    // The active entry, -1 when the list is empty.
    virtual int GetActive() = 0;
    virtual void SetActive(int index) = 0;
    virtual void DeleteItem(int index) = 0;
    // Removes entry index and keeps it for PasteItem.
    virtual void CutItem(int index) = 0;
    // Inserts the entry cut last in front of entry index (at the end for index >= GetCount()).
    virtual void PasteItem(int index) = 0;
    virtual void SetName(int index, MSTR name) = 0;
    // The entry's name: the name it was given, else its controller's class name.
    virtual MSTR GetName(int index) = 0;
    virtual Control* GetSubCtrl(int index) = 0;
    virtual float GetSubCtrlWeight(int index, TimeValue t) = 0;

    Interface_ID GetID() override { return LIST_CONTROLLER_INTERFACE; }
    // The published functions (script names): getCount, getActive, setActive, delete, cut, paste, getName,
    // setName, getSubCtrl, getSubCtrlWeight; entry numbers are 1-based in scripts.
    FPInterfaceDesc* GetDesc() override;
    enum { list_getCount, list_getActive, list_setActive, list_delete, list_cut, list_paste, list_getName,
           list_setName, list_getSubCtrl, list_getSubCtrlWeight };

protected:
    FPStatus _dispatch_fn(FunctionID fid, TimeValue t, FPValue& result, FPParams* p) override;
};

// Answers the list interface of an animatable, null when it is no list controller.
inline IListControl* GetIListControlInterface(Animatable* anim) {
    return anim ? dynamic_cast<IListControl*>(anim->GetInterface(LIST_CONTROLLER_INTERFACE)) : nullptr;
}
