// Light stand-ins for referenced content that is out of the scene: an empty geometric object, an empty shape
// and a transform controller that holds one fixed matrix. They are saved like any object of the scene.
#pragma once

#include "frame/class_ids.h"
#include "object.h"

// A geometric object without geometry or parameters.
class EmptyBaseObject : public GeomObject {
public:
    Class_ID ClassID() override { return EMPTY_BASE_OBJECT_CLASS_ID; }
    void GetClassName(MSTR& s, bool /*localized*/ = true) const override { s = L"EmptyBaseObject"; }
    // Placeholders are never copied into animatable records.
    BOOL CanCopyAnim() override { return FALSE; }
    RefTargetHandle Clone(RemapDir& remap) override;
};

// A shape without curves that keeps the host properties set on it.
class EmptyShape : public ShapeObject {
public:
    ~EmptyShape() override;
    Class_ID ClassID() override { return EMPTY_SHAPE_CLASS_ID; }
    void GetClassName(MSTR& s, bool /*localized*/ = true) const override { s = L"EmptyShape"; }
    BOOL CanCopyAnim() override { return FALSE; }
    RefTargetHandle Clone(RemapDir& remap) override;

    // data is an AnimProperty*. The host's own handling gets it first; otherwise it joins the shape's list,
    // which owns it like an animatable's property list does (items marked "do not delete" are only unlinked).
    int SetProperty(ULONG id, void* data) override;
    // The first property of the list with this id, or null.
    void* GetProperty(ULONG id) override;

private:
    Tab<AnimProperty*> properties_;
};

// A transform controller that always answers its stored matrix: absolute gets give the matrix, relative gets
// compose it with the incoming (parent) matrix, sets are ignored. Out-of-range types are the host's default.
class EmptyController : public Control {
public:
    Class_ID ClassID() override { return EMPTY_CONTROLLER_CLASS_ID; }
    SClass_ID SuperClassID() override { return CTRL_MATRIX3_CLASS_ID; }
    void GetClassName(MSTR& s, bool /*localized*/ = true) const override { s = L"EmptyController"; }

    void GetValue(TimeValue t, void* val, Interval& valid, GetSetMethod method = CTRL_ABSOLUTE) override;
    void SetValue(TimeValue, void*, int = 1, GetSetMethod = CTRL_ABSOLUTE) override {}
    RefTargetHandle Clone(RemapDir& remap) override;
    // One chunk 0x0000 with the 52 bytes of the matrix (12 floats, then the flag word).
    IOResult Save(ISave* isave) override;
    // Reads the first chunk, whatever its id, into the matrix.
    IOResult Load(ILoad* iload) override;

    const Matrix3& GetMatrix() const { return matrix_; }
    void SetMatrix(const Matrix3& tm) { matrix_ = tm; }

private:
    Matrix3 matrix_;
};

// The placeholder for a node's base object (the object below all derived objects): an empty shape for a
// shape, an empty geometric object for anything else and for no object at all.
Object* MakePlaceholderObject(Object* baseObject);

// A placeholder transform controller that holds tm.
EmptyController* MakePlaceholderController(const Matrix3& tm);
