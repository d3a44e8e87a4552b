// Reference records: the base record that wraps one scene item, the node and material records, and the
// holder object that keeps an array of references.
#pragma once

#include "frame/class_ids.h"
#include "object.h"

class RefBase : public ReferenceTarget {
public:
    Class_ID ClassID() override { return REFBASE_CLASS_ID; }
    SClass_ID SuperClassID() override { return REFBASE_SUPER_CLASS_ID; }
};

class RefNode : public RefBase {
public:
    Class_ID ClassID() override { return REFNODE_CLASS_ID; }
};

class RefMaterial : public RefBase {
public:
    Class_ID ClassID() override { return REFMATERIAL_CLASS_ID; }
};

class RefHolder : public GeomObject {
public:
    Class_ID ClassID() override { return REFHOLDER_CLASS_ID; }
};
