// The helper services an animatable record reaches through its owner's helper; a record without helper (no
// owner, or an owner not yet adopted by a helper) does nothing.
#include "anims/ref_anim.h"
#include "records/record_owner.h"

void RefAnim::AdoptNode(INode* node, const MCHAR* name) {
    if (RecordOwner* helper = GetHelper()) helper->AdoptNode(node, name);
}

void RefAnim::ForgetHelperName(const MCHAR* name) {
    RecordOwner* helper = GetHelper();
    if (helper && name) helper->ForgetName(name);
}

void RefAnim::RegisterWithHelper() {
    if (RecordOwner* helper = GetHelper()) helper->RegisterWithHelper(this);
}
