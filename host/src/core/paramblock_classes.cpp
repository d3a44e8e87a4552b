// Class descriptors of the host's parameter blocks. A block made through one is empty: a block 2 gets its
// descriptor, and an old-style block its parameters, from Load.
#include "paramblock_classes.h"

#include "class_directory.h"
#include "iparamb.h"

namespace hostrt {
namespace {

class ParamBlock2ClassDesc : public ClassDesc2 {
public:
    int IsPublic() override { return FALSE; }
    void* Create(BOOL) override { return new IParamBlock2(nullptr, nullptr); }
    const MCHAR* ClassName() override { return L"ParamBlock2"; }
    SClass_ID SuperClassID() override { return PARAMETER_BLOCK2_CLASS_ID; }
    Class_ID ClassID() override { return PARAMBLOCK2_HOST_CLASS_ID; }
    const MCHAR* Category() override { return L""; }
};

class ParamBlockClassDesc : public ClassDesc2 {
public:
    int IsPublic() override { return FALSE; }
    void* Create(BOOL) override { return new IParamBlock(nullptr, 0); }
    const MCHAR* ClassName() override { return L"ParamBlock"; }
    SClass_ID SuperClassID() override { return PARAMETER_BLOCK_CLASS_ID; }
    Class_ID ClassID() override { return PARAMBLOCK1_HOST_CLASS_ID; }
    const MCHAR* Category() override { return L""; }
};

}  // namespace

void RegisterParamBlockClasses() {
    static ParamBlock2ClassDesc block2;
    static ParamBlockClassDesc block1;
    ClassDirectory::Instance().Register(&block2);
    ClassDirectory::Instance().Register(&block1);
}

}  // namespace hostrt
