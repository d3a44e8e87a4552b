// Light stand-ins for referenced content that is out of the scene: an empty geometric object, an empty shape
// and a transform controller that holds one fixed matrix.
#pragma once

#include "frame/class_ids.h"
#include "object.h"

class EmptyBaseObject : public GeomObject {
public:
    Class_ID ClassID() override { return EMPTY_BASE_OBJECT_CLASS_ID; }
};

class EmptyShape : public ShapeObject {
public:
    Class_ID ClassID() override { return EMPTY_SHAPE_CLASS_ID; }
};

class EmptyController : public Control {
public:
    Class_ID ClassID() override { return EMPTY_CONTROLLER_CLASS_ID; }
    SClass_ID SuperClassID() override { return CTRL_MATRIX3_CLASS_ID; }
    void GetValue(TimeValue t, void* val, Interval& valid, GetSetMethod method = CTRL_ABSOLUTE) override {}
    void SetValue(TimeValue t, void* val, int commit = 1, GetSetMethod method = CTRL_ABSOLUTE) override {}
};
