#include "frame/placeholders.h"

#include "frame/class_desc.h"
#include "resource.h"

ClassDesc2* GetEmptyBaseObjectDesc() {
    static SimpleClassDesc<EmptyBaseObject> desc(IDS_CLASS_EMPTYBASEOBJECT, L"EmptyBaseObject", GEOMOBJECT_CLASS_ID,
                                                 EMPTY_BASE_OBJECT_CLASS_ID);
    return &desc;
}

ClassDesc2* GetEmptyShapeDesc() {
    static SimpleClassDesc<EmptyShape> desc(IDS_CLASS_EMPTYSHAPE, L"EmptyShape", SHAPE_CLASS_ID, EMPTY_SHAPE_CLASS_ID);
    return &desc;
}

ClassDesc2* GetEmptyControllerDesc() {
    static SimpleClassDesc<EmptyController> desc(IDS_CLASS_EMPTYCONTROLLER, L"EmptyController",
                                                 CTRL_MATRIX3_CLASS_ID, EMPTY_CONTROLLER_CLASS_ID);
    return &desc;
}
