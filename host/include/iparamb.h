// The old-style parameter block (IParamBlock, superclass 8): a list of float, int, colour, point3 and bool
// parameters made from descriptions, each parameter optionally driven by a controller.
#pragma once

#include "control.h"
#include "iparamb2.h"

#include <vector>

// Class id under which the host registers its old-style parameter block class (superclass PARAMETER_BLOCK_CLASS_ID).
#define PARAMBLOCK1_HOST_CLASS_ID Class_ID(0x2B6D4C31, 0x1A7E5B91)

// Old-style blocks take TYPE_FLOAT, TYPE_INT, TYPE_RGBA (a colour), TYPE_POINT3 and TYPE_BOOL.
using ParamType = ParamType2;

// Description of one parameter: its type, whether it takes a controller, an id, and the name it has as a sub-anim.
struct ParamBlockDescID {
    ParamType type = TYPE_FLOAT;
    BOOL animatable = FALSE;
    DWORD id = 0;
    const MCHAR* name = nullptr;
};

// References: reference i is the controller of parameter i (null when it has none); so are the sub-anims, named
// by the parameters' names, and SubNumToRefNum(i) = i. Controllers of float, int and bool parameters are float
// controllers, those of colour and point3 parameters Point3 controllers.
//
// SetValue and controller changes are undoable while theHold holds; after a change the block records
// LastNotifyParamNum and sends REFMSG_CHANGE.
class IParamBlock : public ReferenceTarget {
public:
    // Raises MAXException for a type the block cannot hold.
    IParamBlock(const ParamBlockDescID* descs, int count, DWORD version = 0);

    Class_ID ClassID() override { return PARAMBLOCK1_HOST_CLASS_ID; }
    SClass_ID SuperClassID() override { return PARAMETER_BLOCK_CLASS_ID; }
    void GetClassName(MSTR& s, bool localized = true) const override { s = L"ParamBlock"; }

    int NumParams() const { return int(params_.size()); }
    // TYPE_VOID for an index out of range.
    ParamType GetParameterType(int i) const;
    DWORD GetParamID(int i) const;
    // Index of the parameter with this id, -1 when none.
    int IDtoIndex(DWORD id) const;
    BOOL IsParamAnimatable(int i) const;
    DWORD GetVersion() const { return version_; }

    // Reads parameter i at time t (through its controller when it has one); ints and floats convert; FALSE for
    // an index out of range or another kind.
    BOOL GetValue(int i, TimeValue t, float& v, Interval& valid);
    BOOL GetValue(int i, TimeValue t, int& v, Interval& valid);
    BOOL GetValue(int i, TimeValue t, Point3& v, Interval& valid);
    BOOL GetValue(int i, TimeValue t, Color& v, Interval& valid);
    // Stores the value (in the controller when one drives the parameter), then announces the change.
    BOOL SetValue(int i, TimeValue t, float v);
    BOOL SetValue(int i, TimeValue t, int v);
    BOOL SetValue(int i, TimeValue t, const Point3& v);
    BOOL SetValue(int i, TimeValue t, const Color& v);

    Control* GetController(int i) const;
    // FALSE for a parameter that is not animatable. preserveValue gives the controller the current value.
    BOOL SetController(int i, Control* c, BOOL preserveValue = TRUE);
    // The controller's value at time 0 stays as the plain value.
    BOOL RemoveController(int i);
    // Index of the parameter of the most recent change the block announced; negative before any.
    int LastNotifyParamNum() const { return last_; }

    int NumRefs() override { return NumParams(); }
    RefTargetHandle GetReference(int i) override;
    void SetReference(int i, RefTargetHandle rtarg) override;
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle hTarget, PartID& partID, RefMessage message,
                               BOOL propagate) override;
    int NumSubs() override { return NumParams(); }
    Animatable* SubAnim(int i) override { return GetController(i); }
    MSTR SubAnimName(int i, bool localized = true) override;
    int SubNumToRefNum(int subNum) override { return subNum >= 0 && subNum < NumParams() ? subNum : -1; }
    BOOL CanAssignController(int subAnim) override { return IsParamAnimatable(subAnim); }
    BOOL AssignController(Animatable* control, int subAnim) override;
    BOOL IsAnimated() override;

    IOResult Save(ISave* isave) override;
    IOResult Load(ILoad* iload) override;
    RefTargetHandle Clone(RemapDir& remap) override;

    // Host internals (undo records): puts parameter index's entry back and announces the change.
    void RestoreParam(int index, int tabIndex, const std::vector<hostrt::PB2Entry>& entries);

private:
    struct Param {
        ParamBlockDescID desc;
        MSTR name;
        hostrt::PB2Entry entry;
    };
    BOOL read(int i, TimeValue t, hostrt::ValueKind want, hostrt::ParamValue& out, Interval& valid);
    BOOL set(int i, TimeValue t, const hostrt::ParamValue& v);
    void assign(int i, const hostrt::PB2Entry& entry);
    void recordAndAssign(int i, const hostrt::PB2Entry& entry);
    void notifyParam(int i);

    std::vector<Param> params_;
    DWORD version_ = 0;
    int last_ = -1;
};

// Makes an old-style block of count parameters described by pdesc.
IParamBlock* CreateParameterBlock(const ParamBlockDescID* pdesc, int count, DWORD version = 0);
