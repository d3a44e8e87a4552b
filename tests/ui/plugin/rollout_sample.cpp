// A small plug-in the window tests load beside Vandrels: a helper object ("Dial") whose automatic rollout holds
// the controls the Vandrels helper's rollout has none of: a float spinner (Height, 0 to 100), an integer spinner
// (Count) and a drop-down list (Shape: Round, Square, Star).
#include "iparamb2.h"
#include "max.h"
#include "object.h"
#include "rollout_sample_resource.h"
#include "winshim.h"

namespace {

HINSTANCE hInstance = nullptr;

enum { kDialParams = 0 };
enum { kHeight = 0, kCount = 1, kShape = 2 };

class DialClassDesc;
DialClassDesc& TheDesc();
ParamBlockDesc2& TheParamDesc();

class Dial : public HelperObject {
public:
    static constexpr Class_ID kClassID{0x5A3D0101, 0x00000001};
    Dial();
    Class_ID ClassID() override { return kClassID; }
    void GetClassName(MSTR& s, bool) const override { s = L"Dial"; }
    int NumRefs() override { return 1; }
    RefTargetHandle GetReference(int i) override { return i == 0 ? block_ : nullptr; }
    void SetReference(int i, RefTargetHandle t) override {
        if (i == 0) block_ = static_cast<IParamBlock2*>(t);
    }
    int NumParamBlocks() override { return 1; }
    IParamBlock2* GetParamBlock(int i) override { return i == 0 ? block_ : nullptr; }
    IParamBlock2* GetParamBlockByID(short id) override { return id == kDialParams ? block_ : nullptr; }
    RefTargetHandle Clone(RemapDir& remap) override {
        auto* copy = new Dial();
        copy->ReplaceReference(0, remap.CloneRef(block_));
        BaseClone(this, copy, remap);
        return copy;
    }
    void BeginEditParams(IObjParam* ip, ULONG flags, Animatable* prev) override;
    void EndEditParams(IObjParam* ip, ULONG flags, Animatable* next) override;

private:
    IParamBlock2* block_ = nullptr;
};

class DialClassDesc : public ClassDesc2 {
public:
    int IsPublic() override { return TRUE; }
    void* Create(BOOL) override { return new Dial(); }
    const MCHAR* ClassName() override { return L"Dial"; }
    SClass_ID SuperClassID() override { return HELPER_CLASS_ID; }
    Class_ID ClassID() override { return Dial::kClassID; }
    const MCHAR* Category() override { return L"Host Samples"; }
    HINSTANCE HInstance() override { return hInstance; }
};

DialClassDesc& TheDesc() {
    static DialClassDesc desc;
    return desc;
}

ParamBlockDesc2& TheParamDesc() {
    static ParamBlockDesc2 desc(kDialParams, L"DialParameters", 0, &TheDesc(), P_AUTO_CONSTRUCT | P_AUTO_UI);
    static bool built = false;
    if (built) return desc;
    built = true;
    desc.AutoConstruct(0).AutoUI(IDD_SAMPLE_ROLLOUT, IDS_SAMPLE_PARAMETERS, 0);
    desc.AddParam(kHeight, L"Height", TYPE_FLOAT, 0, 0).Default(10.0f).Range(0.0f, 100.0f)
        .Spinner(IDC_HEIGHT_EDIT, IDC_HEIGHT_SPIN, EDITTYPE_FLOAT, 0.5f);
    desc.AddParam(kCount, L"Count", TYPE_INT, 0, 0).Default(3).Spinner(IDC_COUNT_EDIT, IDC_COUNT_SPIN, EDITTYPE_INT, 1);
    desc.AddParam(kShape, L"Shape", TYPE_INT, 0, 0).Default(0).Range(0, 2)
        .ComboBox(IDC_SHAPE_COMBO, {IDS_SHAPE_ROUND, IDS_SHAPE_SQUARE, IDS_SHAPE_STAR});
    return desc;
}

Dial::Dial() {
    TheParamDesc();
    TheDesc().MakeAutoParamBlocks(this);
}

void Dial::BeginEditParams(IObjParam* ip, ULONG flags, Animatable* prev) {
    TheDesc().BeginEditParams(ip, this, flags, prev);
}

void Dial::EndEditParams(IObjParam* ip, ULONG flags, Animatable* next) {
    TheDesc().EndEditParams(ip, this, flags, next);
}

}  // namespace

MAX_PLUGIN_EXPORT BOOL DllMain(HINSTANCE hinst, ULONG reason, void*) {
    if (reason == DLL_PROCESS_ATTACH) hInstance = hinst;
    return TRUE;
}
MAX_PLUGIN_EXPORT const MCHAR* LibDescription() { return L"Rollout sample plug-in"; }
MAX_PLUGIN_EXPORT int LibNumberClasses() { return 1; }
MAX_PLUGIN_EXPORT ClassDesc* LibClassDesc(int i) { return i == 0 ? &TheDesc() : nullptr; }
MAX_PLUGIN_EXPORT ULONG LibVersion() { return VERSION_3DSMAX; }
MAX_PLUGIN_EXPORT int LibInitialize() { return TRUE; }
MAX_PLUGIN_EXPORT int LibShutdown() { return TRUE; }
MAX_PLUGIN_EXPORT ULONG CanAutoDefer() { return FALSE; }
