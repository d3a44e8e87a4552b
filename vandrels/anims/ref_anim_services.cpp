// The helper services an animatable record reaches through its owner's helper; a record without helper (no
// owner, or an owner not yet adopted by a helper) does nothing.
#include "anims/ref_anim.h"
#include "helper/vandrels_helper.h"

void RefAnim::AdoptNode(INode* node, const MCHAR* name) {
    if (VandrelsHelper* helper = GetHelper()) helper->AdoptNode(node, name);
}

void RefAnim::ForgetHelperName(const MCHAR* name) {
    VandrelsHelper* helper = GetHelper();
    if (helper && name) helper->ForgetName(name);
}

void RefAnim::RegisterWithHelper() {
    if (VandrelsHelper* helper = GetHelper()) helper->RegisterWithHelper(this);
}
