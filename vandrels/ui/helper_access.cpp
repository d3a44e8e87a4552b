#include "ui/helper_access.h"

#include "helper/helper_params.h"
#include "helper/vandrels_helper.h"
#include "helper/vandrels_helper_interface.h"

namespace vandrels {

namespace {
IParamBlock2* BlockOf(INode* node) {
    VandrelsHelper* helper = HelperOf(node);
    return helper ? helper->ParamBlock() : nullptr;
}
}  // namespace

VandrelsHelper* HelperOf(INode* node) {
    if (!node) return nullptr;
    Object* obj = node->GetObjectRef();
    return obj ? VandrelsHelper::FromObject(obj->FindBaseObject()) : nullptr;
}

VandrelsHelperInterface* HelperInterfaceOf(INode* node) {
    VandrelsHelper* helper = HelperOf(node);
    return helper ? static_cast<VandrelsHelperInterface*>(helper->GetInterface(VANDRELS_HELPER_INTERFACE_ID))
                  : nullptr;
}

std::optional<int> ReadHelperInt(INode* node, int param) {
    IParamBlock2* block = BlockOf(node);
    if (!block) return std::nullopt;
    int value = 0;
    Interval valid = FOREVER;
    if (!block->GetValue(ParamID(param), 0, value, valid)) return std::nullopt;
    return value;
}

std::optional<MSTR> ReadHelperString(INode* node, int param) {
    IParamBlock2* block = BlockOf(node);
    if (!block) return std::nullopt;
    const MCHAR* value = nullptr;
    Interval valid = FOREVER;
    if (!block->GetValue(ParamID(param), 0, value, valid)) return std::nullopt;
    return MSTR(value ? value : L"");
}

bool WriteHelperInt(INode* node, int param, int value) {
    IParamBlock2* block = BlockOf(node);
    return block && block->SetValue(ParamID(param), 0, value);
}

bool WriteHelperString(INode* node, int param, const MSTR& value) {
    IParamBlock2* block = BlockOf(node);
    return block && block->SetValue(ParamID(param), 0, value);
}

}  // namespace vandrels
