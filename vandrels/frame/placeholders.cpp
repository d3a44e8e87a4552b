#include "frame/placeholders.h"

#include "frame/class_desc.h"
#include "ioapi.h"
#include "resource.h"

namespace {

constexpr USHORT kMatrixChunk = 0x0000;
constexpr ULONG kMatrixBytes = sizeof(Matrix3);  // 12 floats, then the 32-bit flag word
static_assert(kMatrixBytes == 52);

}  // namespace

// ------------------------------------------------------------------------------------------ EmptyBaseObject

RefTargetHandle EmptyBaseObject::Clone(RemapDir& remap) {
    auto* clone = new EmptyBaseObject();
    BaseClone(this, clone, remap);
    return clone;
}

// ------------------------------------------------------------------------------------------ EmptyShape

EmptyShape::~EmptyShape() {
    for (AnimProperty* p : properties_)
        if (p && !p->DontDelete()) delete p;
}

RefTargetHandle EmptyShape::Clone(RemapDir& remap) {
    auto* clone = new EmptyShape();
    BaseClone(this, clone, remap);
    return clone;
}

int EmptyShape::SetProperty(ULONG id, void* data) {
    if (ShapeObject::SetProperty(id, data)) return 1;
    properties_.Append(static_cast<AnimProperty*>(data));
    return 1;
}

void* EmptyShape::GetProperty(ULONG id) {
    for (AnimProperty* p : properties_)
        if (p && p->ID() == id) return p;
    return nullptr;
}

// ------------------------------------------------------------------------------------------ EmptyController

void EmptyController::GetValue(TimeValue, void* val, Interval&, GetSetMethod method) {
    auto* tm = static_cast<Matrix3*>(val);
    if (!tm) return;
    // Relative: the stored matrix composed with the parent's, as the host composes a local transform.
    *tm = method == CTRL_RELATIVE ? matrix_ * *tm : matrix_;
}

RefTargetHandle EmptyController::Clone(RemapDir& remap) {
    auto* clone = new EmptyController();
    clone->matrix_ = matrix_;
    BaseClone(this, clone, remap);
    return clone;
}

IOResult EmptyController::Save(ISave* isave) {
    ULONG written = 0;
    isave->BeginChunk(kMatrixChunk);
    const IOResult res = isave->Write(&matrix_, kMatrixBytes, &written);
    isave->EndChunk();
    return res;
}

IOResult EmptyController::Load(ILoad* iload) {
    IOResult res = iload->OpenChunk();
    if (res != IO_OK) return IO_ERROR;  // the matrix chunk is missing: the controller's data is damaged
    Matrix3 tm;
    ULONG read = 0;
    res = iload->Read(&tm, kMatrixBytes, &read);
    iload->CloseChunk();
    if (res != IO_OK) return res;
    matrix_ = tm;
    return IO_OK;
}

// ------------------------------------------------------------------------------------------ factories

Object* MakePlaceholderObject(Object* baseObject) {
    if (baseObject && baseObject->SuperClassID() == SHAPE_CLASS_ID) return new EmptyShape();
    return new EmptyBaseObject();
}

EmptyController* MakePlaceholderController(const Matrix3& tm) {
    auto* ctrl = new EmptyController();
    ctrl->SetMatrix(tm);
    return ctrl;
}

// ------------------------------------------------------------------------------------------ descriptors

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
