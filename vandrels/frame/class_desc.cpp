#include "frame/class_desc.h"

#include "frame/module.h"
#include "resource.h"

VandrelsClassDesc::VandrelsClassDesc(int nameId, const MCHAR* scriptName, SClass_ID superClassId, Class_ID classId)
    : nameId_(nameId), scriptName_(scriptName), superClassId_(superClassId), classId_(classId) {}

// The texts are copied out of the shared string buffer on first use.
const MCHAR* VandrelsClassDesc::ClassName() {
    if (name_.isNull()) name_ = GetStringCopy(nameId_);
    return name_.isNull() ? scriptName_ : name_.data();
}

const MCHAR* VandrelsClassDesc::Category() {
    if (category_.isNull()) category_ = GetStringCopy(IDS_CATEGORY);
    return category_.data();
}

HINSTANCE VandrelsClassDesc::HInstance() { return GetModuleInstance(); }
