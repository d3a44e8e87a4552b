// Materials and texture maps, and the scene material library. A rename sends 247 to the dependents.
#pragma once

#include "ref.h"

class Texmap;
class Mtl;

class MtlBase : public ReferenceTarget {
public:
    virtual MSTR GetName(bool localized = true) { return name_; }
    virtual void SetName(const MSTR& name);
    // Brings the material up to date for time t (a node calls it after a material is assigned).
    virtual void Update(TimeValue t, Interval& valid) {}
    virtual int NumSubTexmaps() { return 0; }
    virtual Texmap* GetSubTexmap(int i) { return nullptr; }
    virtual void SetSubTexmap(int i, Texmap* m) {}
    virtual MSTR GetSubTexmapSlotName(int i, bool localized = true) { return MSTR(); }

protected:
    // Saves and loads the name (chunk 0x4100); LoadMtlBaseChunk answers whether it took the open chunk.
    IOResult SaveMtlBase(ISave* isave);
    bool LoadMtlBaseChunk(ILoad* iload, IOResult& res);
    MSTR name_;
};

class Mtl : public MtlBase {
public:
    SClass_ID SuperClassID() override { return MATERIAL_CLASS_ID; }
    virtual int NumSubMtls() { return 0; }
    virtual Mtl* GetSubMtl(int i) { return nullptr; }
    virtual void SetSubMtl(int i, Mtl* m) {}
    virtual MSTR GetSubMtlSlotName(int i, bool localized = true) { return MSTR(); }
};

class Texmap : public MtlBase {
public:
    SClass_ID SuperClassID() override { return TEXMAP_CLASS_ID; }
};

// A list of materials and maps, a reference target that sends 258 to its dependents when the list changes.
class MtlBaseLib : public ReferenceTarget {
public:
    virtual int Count() = 0;
    virtual MtlBase* operator[](int i) = 0;
    virtual int Add(MtlBase* m) = 0;          // answers the index; an entry already listed is not added again
    virtual int Remove(MtlBase* m) = 0;       // answers 1 when it was listed
    virtual int FindMtl(MtlBase* m) = 0;      // -1 when absent
    virtual int FindMtlByName(const MSTR& name) = 0;
    virtual void DeleteAll() = 0;
};

// A new standard material (class (2, 0)).
Mtl* NewDefaultStdMat();

#define DMTL_CLASS_ID Class_ID(0x00000002, 0)
#define MULTI_MATERIAL_CLASS_ID Class_ID(0x00000200, 0)
