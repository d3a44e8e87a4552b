// Controllers: animatables that answer a value at a time. Matrix controllers in relative mode compose their
// value with the incoming (parent) matrix. Concrete controllers live with the scene.
#pragma once

#include "ref.h"

enum GetSetMethod { CTRL_RELATIVE = 0, CTRL_ABSOLUTE = 1 };

// Out-of-range types (before and after the animated range).
#define ORT_BEFORE 1
#define ORT_AFTER 2
#define ORT_CONSTANT 1

class Control : public ReferenceTarget {
public:
    virtual void GetValue(TimeValue t, void* val, Interval& valid, GetSetMethod method = CTRL_ABSOLUTE) = 0;
    virtual void SetValue(TimeValue t, void* val, int commit = 1, GetSetMethod method = CTRL_ABSOLUTE) = 0;
    virtual int NumKeys() { return 0; }
    virtual BOOL IsKeyable() { return FALSE; }
    // Whether the controller can be split into independent tracks; zero for whole-matrix controllers.
    virtual BOOL IsLeaf() { return TRUE; }
    virtual int GetORT(int type) { return type == ORT_BEFORE ? ortBefore_ : ortAfter_; }
    virtual void SetORT(int ort, int type) { (type == ORT_BEFORE ? ortBefore_ : ortAfter_) = ort; }
    void* GetInterface(ULONG id) override { return id == I_CONTROL ? this : ReferenceTarget::GetInterface(id); }
    using ReferenceTarget::GetInterface;

private:
    int ortBefore_ = ORT_CONSTANT;
    int ortAfter_ = ORT_CONSTANT;
};
