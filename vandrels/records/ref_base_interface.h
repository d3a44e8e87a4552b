// The scripting faces of the records: "RefBase" on every record (its animatable records, 0-based) and
// "RefNode" on node records (the same list 1-based, and the node record's reference name).
#pragma once

#include "ifnpub.h"

class ReferenceTarget;

#define REFBASE_INTERFACE_ID Interface_ID(0x9663DFA6, 0x4F273883)
#define REFNODE_INTERFACE_ID Interface_ID(0x9663DFA6, 0x4F273884)

class RefBaseInterface : public FPMixinInterface {
public:
    enum : FunctionID { kNumRefAnims = 0, kGetRefAnim = 1 };

    virtual int ScriptNumRefAnims() = 0;
    // Entry index of the animatable records, or null outside the list.
    virtual ReferenceTarget* ScriptGetRefAnim(int index) = 0;

    FPInterfaceDesc* GetDesc() override;

protected:
    FPStatus _dispatch_fn(FunctionID fid, TimeValue t, FPValue& result, FPParams* params) override;
};

class RefNodeInterface : public FPMixinInterface {
public:
    enum : FunctionID { kNumRefAnims = 0, kGetRefAnim = 1, kGetName = 2, kSetName = 3 };

    virtual int ScriptNumRefAnims() = 0;
    // Entry index (0-based here); an index outside the list throws the host's out-of-range exception.
    virtual ReferenceTarget* ScriptGetRefAnimChecked(int index) = 0;
    virtual MSTR ScriptGetName() = 0;
    virtual void ScriptSetName(const MCHAR* name) = 0;

    FPInterfaceDesc* GetDesc() override;

protected:
    FPStatus _dispatch_fn(FunctionID fid, TimeValue t, FPValue& result, FPParams* params) override;
};

// The interface descriptions, listed on the record classes' descriptors.
FPInterfaceDesc* RefBaseInterfaceDesc();
FPInterfaceDesc* RefNodeInterfaceDesc();
