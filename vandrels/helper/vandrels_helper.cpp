#include "helper/vandrels_helper.h"

#include "frame/class_desc.h"
#include "resource.h"

namespace {
class VandrelsHelperClassDesc : public VandrelsClassDesc {
public:
    VandrelsHelperClassDesc()
        : VandrelsClassDesc(IDS_CLASS_VANDRELSHELPER, L"VandrelsHelper", HELPER_CLASS_ID, VANDRELS_HELPER_CLASS_ID) {}
    void* Create(BOOL loading) override { return new VandrelsHelper(loading); }
};
}  // namespace

ClassDesc2* GetVandrelsHelperDesc() {
    static VandrelsHelperClassDesc desc;
    return &desc;
}

VandrelsHelper::VandrelsHelper(BOOL) {}
