#include "records/ref_base.h"

#include "frame/class_desc.h"
#include "resource.h"

ClassDesc2* GetRefBaseDesc() {
    static SimpleClassDesc<RefBase> desc(IDS_CLASS_REFBASE, L"RefBase", REFBASE_SUPER_CLASS_ID, REFBASE_CLASS_ID);
    return &desc;
}

ClassDesc2* GetRefNodeDesc() {
    static SimpleClassDesc<RefNode> desc(IDS_CLASS_REFNODE, L"RefNode", REFBASE_SUPER_CLASS_ID, REFNODE_CLASS_ID);
    return &desc;
}

ClassDesc2* GetRefMaterialDesc() {
    static SimpleClassDesc<RefMaterial> desc(IDS_CLASS_REFMATERIAL, L"RefMaterial", REFBASE_SUPER_CLASS_ID,
                                             REFMATERIAL_CLASS_ID);
    return &desc;
}

ClassDesc2* GetRefHolderDesc() {
    static SimpleClassDesc<RefHolder> desc(IDS_CLASS_REFHOLDER, L"RefHolder", GEOMOBJECT_CLASS_ID, REFHOLDER_CLASS_ID);
    return &desc;
}
