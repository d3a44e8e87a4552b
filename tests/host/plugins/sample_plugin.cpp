// A small plug-in library the host is tested with: two classes, a start-up callback, and the entry points
// the host loads libraries through.
#include "max.h"
#include "winshim.h"

namespace {

HINSTANCE hInstance = nullptr;
int startups = 0;
int attaches = 0;

// A target that holds up to two references and a number it saves.
class SampleTarget : public ReferenceTarget {
public:
    static constexpr Class_ID kClassID{0x5A3D0001, 0x00000001};
    Class_ID ClassID() override { return kClassID; }
    SClass_ID SuperClassID() override { return REF_TARGET_CLASS_ID; }
    void GetClassName(MSTR& s, bool) const override { s = L"SampleTarget"; }
    int NumRefs() override { return 2; }
    RefTargetHandle GetReference(int i) override { return i >= 0 && i < 2 ? refs_[i] : nullptr; }
    void SetReference(int i, RefTargetHandle t) override { if (i >= 0 && i < 2) refs_[i] = t; }
    RefTargetHandle Clone(RemapDir& remap) override {
        auto* c = new SampleTarget();
        c->value_ = value_;
        for (int i = 0; i < 2; ++i) c->ReplaceReference(i, remap.CloneRef(refs_[i]));
        BaseClone(this, c, remap);
        return c;
    }
    IOResult Save(ISave* isave) override {
        ULONG w = 0;
        isave->BeginChunk(0x0100);
        isave->Write(&value_, sizeof value_, &w);
        isave->EndChunk();
        return IO_OK;
    }
    IOResult Load(ILoad* iload) override {
        IOResult res;
        while ((res = iload->OpenChunk()) == IO_OK) {
            ULONG r = 0;
            if (iload->CurChunkID() == 0x0100 && iload->Read(&value_, sizeof value_, &r) != IO_OK) return IO_ERROR;
            iload->CloseChunk();
        }
        return res == IO_END ? IO_OK : res;
    }

private:
    RefTargetHandle refs_[2] = {nullptr, nullptr};
    int value_ = 42;
};

class SampleTargetClassDesc : public ClassDesc2 {
public:
    int IsPublic() override { return TRUE; }
    void* Create(BOOL) override { return new SampleTarget(); }
    const MCHAR* ClassName() override {  // from the library's string table
        static wchar_t name[64];
        return LoadStringW(hInstance, 1, name, 64) ? name : nullptr;
    }
    SClass_ID SuperClassID() override { return REF_TARGET_CLASS_ID; }
    Class_ID ClassID() override { return SampleTarget::kClassID; }
    const MCHAR* Category() override { return L"Host Samples"; }
    HINSTANCE HInstance() override { return hInstance; }
};

// A plain reference maker, not public.
class SampleMaker : public ReferenceMaker {
public:
    static constexpr Class_ID kClassID{0x5A3D0002, 0x00000001};
    Class_ID ClassID() override { return kClassID; }
    SClass_ID SuperClassID() override { return REF_MAKER_CLASS_ID; }
};

class SampleMakerClassDesc : public ClassDesc2 {
public:
    int IsPublic() override { return FALSE; }
    void* Create(BOOL) override { return new SampleMaker(); }
    const MCHAR* ClassName() override { return L"SampleMaker"; }
    SClass_ID SuperClassID() override { return REF_MAKER_CLASS_ID; }
    Class_ID ClassID() override { return SampleMaker::kClassID; }
    const MCHAR* Category() override { return L"Host Samples"; }
    HINSTANCE HInstance() override { return hInstance; }
};

SampleTargetClassDesc targetDesc;
SampleMakerClassDesc makerDesc;

void onStartup(void*, NotifyInfo*) { ++startups; }

}  // namespace

MAX_PLUGIN_EXPORT BOOL DllMain(HINSTANCE hinst, ULONG reason, void*) {
    if (reason == DLL_PROCESS_ATTACH) {
        hInstance = hinst;
        ++attaches;
    }
    return TRUE;
}
MAX_PLUGIN_EXPORT const MCHAR* LibDescription() { return L"Host sample plug-in"; }
MAX_PLUGIN_EXPORT int LibNumberClasses() { return 2; }
MAX_PLUGIN_EXPORT ClassDesc* LibClassDesc(int i) {
    switch (i) {
        case 0: return &targetDesc;
        case 1: return &makerDesc;
        default: return nullptr;
    }
}
MAX_PLUGIN_EXPORT ULONG LibVersion() { return VERSION_3DSMAX; }
MAX_PLUGIN_EXPORT int LibInitialize() {
    RegisterNotification(onStartup, nullptr, NOTIFY_SYSTEM_STARTUP);
    return TRUE;
}
MAX_PLUGIN_EXPORT int LibShutdown() { return TRUE; }
MAX_PLUGIN_EXPORT ULONG CanAutoDefer() { return FALSE; }

// Test probes: how often start-up was heard and the library attached, and the instance handle it was given.
MAX_PLUGIN_EXPORT int HostSampleStartups() { return startups; }
MAX_PLUGIN_EXPORT int HostSampleAttaches() { return attaches; }
MAX_PLUGIN_EXPORT HINSTANCE HostSampleInstance() { return hInstance; }
