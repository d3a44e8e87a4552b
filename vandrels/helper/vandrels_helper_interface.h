// The helper's scripting mixin: the operations and accessors that scripts call on a reference helper, and the
// dispatch of their function ids.
#pragma once

#include "ifnpub.h"

class RefNode;
class RefMaterial;

#define VANDRELS_HELPER_INTERFACE_ID Interface_ID(0x9663DFA5, 0x4F273879)

// Function ids of the helper's interface, as scripts and saved macros know them.
enum VandrelsHelperFunction : FunctionID {
    vh_fn_reload = 0,
    vh_fn_unload = 1,
    vh_fn_merge = 2,
    vh_fn_dismiss = 3,
    vh_fn_reset = 4,
    vh_fn_print_data = 5,
    vh_fn_num_ref_nodes = 7,
    vh_fn_get_ref_node = 8,
    vh_fn_num_ref_materials = 9,
    vh_fn_get_ref_material = 10,
    vh_fn_get_nodes = 11,
    vh_fn_show_dup_names = 12,
    vh_fn_overwrite = 13,
    vh_fn_save_as = 14
};

class VandrelsHelperInterface : public FPMixinInterface {
public:
    // The reference operations, in slot order.
    virtual int Reload() = 0;
    virtual int Unload() = 0;
    virtual int Merge() = 0;
    virtual int Dismiss() = 0;
    virtual int Reset() = 0;
    virtual int Overwrite() = 0;
    virtual int SaveAs(const MCHAR* fileName) = 0;
    virtual void PrintData(int mode) = 0;
    // The accessors. Index errors raise the host's Tab out-of-range exception.
    virtual int NumRefNodes() = 0;
    virtual RefNode* GetRefNode(int index) = 0;
    virtual int NumRefMaterials() = 0;
    virtual RefMaterial* GetRefMaterial(int index) = 0;
    virtual Tab<INode*> GetNodes() = 0;
    virtual void ShowDupNames() = 0;

    FPInterfaceDesc* GetDesc() override;

protected:
    FPStatus _dispatch_fn(FunctionID fid, TimeValue t, FPValue& result, FPParams* p) override;
};

// The interface's description, attached to the helper's class descriptor.
FPInterfaceDesc* GetVandrelsHelperInterfaceDesc();
