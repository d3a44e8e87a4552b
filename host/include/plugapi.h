// Class descriptors and the plug-in entry points. The host creates every object of a plug-in class through
// its descriptor: when a user or script creates one, when a scene file that holds one is opened, when cloning.
#pragma once

#include "ref.h"

class FPInterface;
class ParamBlockDesc2;
class IParamBlock2;
class IObjParam;
using BlockID = short;

class ClassDesc {
public:
    virtual ~ClassDesc();
    virtual int IsPublic() = 0;
    virtual void* Create(BOOL loading = FALSE) = 0;
    virtual const MCHAR* ClassName() = 0;
    virtual const MCHAR* NonLocalizedClassName() { return ClassName(); }
    virtual SClass_ID SuperClassID() = 0;
    virtual Class_ID ClassID() = 0;
    virtual const MCHAR* Category() = 0;
    virtual const MCHAR* InternalName() { return nullptr; }
    virtual HINSTANCE HInstance() { return nullptr; }
    virtual BOOL OkToCreate(IObjParam*) { return TRUE; }
    virtual int BeginEditParams(IObjParam* ip, ReferenceMaker* obj, ULONG flags, Animatable* prev) { return 0; }
    virtual int EndEditParams(IObjParam* ip, ReferenceMaker* obj, ULONG flags, Animatable* next) { return 0; }
    virtual void ResetClassParams(BOOL fileReset) {}

    // Parameter block descriptors of the class (kept by ClassDesc2).
    virtual int NumParamBlockDescs() { return 0; }
    virtual ParamBlockDesc2* GetParamBlockDesc(int i) { return nullptr; }
    virtual ParamBlockDesc2* GetParamBlockDescByID(BlockID id) { return nullptr; }
    virtual void AddParamBlockDesc(ParamBlockDesc2* pbd) {}
    // Makes the blocks of descriptors flagged for automatic construction as references of owner.
    virtual void MakeAutoParamBlocks(ReferenceMaker* owner) {}

    // Function-publishing interfaces of the class (mixins of its objects and static ones).
    int NumInterfaces() const { return interfaces.Count(); }
    FPInterface* GetInterfaceAt(int i) { return interfaces[i]; }
    virtual FPInterface* GetInterface(Interface_ID id);
    virtual FPInterface* GetInterface(const MCHAR* name);
    virtual void AddInterface(FPInterface* fpi);
    virtual void ClearInterfaces() { interfaces.ZeroCount(); }

protected:
    Tab<FPInterface*> interfaces;
};

class ClassDesc2 : public ClassDesc {
public:
    int NumParamBlockDescs() override { return pbDescs.Count(); }
    ParamBlockDesc2* GetParamBlockDesc(int i) override { return pbDescs[i]; }
    ParamBlockDesc2* GetParamBlockDescByID(BlockID id) override;
    void AddParamBlockDesc(ParamBlockDesc2* pbd) override { pbDescs.Append(pbd); }
    void MakeAutoParamBlocks(ReferenceMaker* owner) override;
    int BeginEditParams(IObjParam* ip, ReferenceMaker* obj, ULONG flags, Animatable* prev) override;
    int EndEditParams(IObjParam* ip, ReferenceMaker* obj, ULONG flags, Animatable* next) override;
    void ResetClassParams(BOOL fileReset) override;

protected:
    Tab<ParamBlockDesc2*> pbDescs;
};

// Creates an object of a registered class; null when no such class is known.
void* CreateInstance(SClass_ID superID, Class_ID classID);
// Looks a registered class up; null when unknown.
ClassDesc* FindClassDesc(SClass_ID superID, Class_ID classID);

// The entry points a plug-in library exports by name (as extern "C").
using LibDescriptionFn = const MCHAR* (*)();
using LibNumberClassesFn = int (*)();
using LibClassDescFn = ClassDesc* (*)(int i);
using LibVersionFn = ULONG (*)();
using LibInitializeFn = int (*)();
using LibShutdownFn = int (*)();
using CanAutoDeferFn = ULONG (*)();
// Optional: called once right after the library is opened, as the operating system would on attach.
using DllMainFn = BOOL (*)(HINSTANCE hinstDLL, ULONG fdwReason, void* reserved);
#define DLL_PROCESS_DETACH 0
#define DLL_PROCESS_ATTACH 1

#if defined(__GNUC__)
#define MAX_PLUGIN_EXPORT extern "C" __attribute__((visibility("default")))
#else
#define MAX_PLUGIN_EXPORT extern "C"
#endif
