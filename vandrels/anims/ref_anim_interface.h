// The scripting face of every animatable record ("RefAnim"): the record's path, name by name and number by
// number. Scripts index from 1; the operations here see 0-based indices.
#pragma once

#include "ifnpub.h"

#define REFANIM_INTERFACE_ID Interface_ID(0x9663DFA6, 0x4F273894)

class RefAnimInterface : public FPMixinInterface {
public:
    enum : FunctionID {
        kGetPathSize = 0,
        kSetPathSize = 1,
        kGetPathItem = 2,
        kSetPathItem = 3,
        kGetPathByNumberItem = 4,
        kSetPathByNumberItem = 5
    };

    virtual int ScriptGetPathSize() = 0;
    // Nothing for a negative size; new names are empty, new numbers 0.
    virtual void ScriptSetPathSize(int size) = 0;
    // "" outside the path.
    virtual MSTR ScriptGetPathItem(int index) = 0;
    // Nothing outside the path.
    virtual void ScriptSetPathItem(int index, const MCHAR* name) = 0;
    // -1 outside the path.
    virtual int ScriptGetPathByNumberItem(int index) = 0;
    virtual void ScriptSetPathByNumberItem(int index, int number) = 0;

    FPInterfaceDesc* GetDesc() override;

protected:
    FPStatus _dispatch_fn(FunctionID fid, TimeValue t, FPValue& result, FPParams* params) override;
};

class ClassDesc;

// The interface description; every animatable record class lists it on its descriptor (AddRefAnimInterface).
FPInterfaceDesc* RefAnimInterfaceDesc();
void AddRefAnimInterface(ClassDesc* desc);
