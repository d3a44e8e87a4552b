// Materials and texture maps, and the scene material library. A rename sends 247 to the dependents.
#pragma once

#include "ref.h"

// Sent to the dependents of a material or map whose name changed.
#define REFMSG_NODE_NAMECHANGE 0x000000F7

// Bits of a material's flag word (GetMtlFlags). Bits 10-12 hold the sample type and 13-15 the sample UV tiling.
#define MTL_DISP_ENABLE_FLAGS 0x00000008
#define MTL_BEING_EDITED 0x00000100      // background in the sample slot
#define MTL_SUB_BEING_EDITED 0x00000200  // backlight in the sample slot
#define MTL_VIDEO_COLOR_CHECK 0x00010000
#define MTL_HW_MAT_ENABLED 0x00020000
#define MTL_HW_TEX_ENABLED 0x40000000

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

    // The flag word (see the MTL_ bits above) and the effects (G-buffer) channel. Changing them sends nothing.
    ULONG GetMtlFlags() const { return mtlFlags_; }
    void SetMtlFlag(ULONG mask, BOOL on = TRUE) { mtlFlags_ = on ? (mtlFlags_ | mask) : (mtlFlags_ & ~mask); }
    void ClearMtlFlag(ULONG mask) { mtlFlags_ &= ~mask; }
    int TestMtlFlag(ULONG mask) const { return (mtlFlags_ & mask) ? 1 : 0; }
    ULONG GetGBufID() const { return gbufId_; }
    void SetGBufID(ULONG id) { gbufId_ = id & 0xFF; }

protected:
    // Saves and loads the name (chunk 0x4100), the flag word (0x4101) and the effects channel (0x4102);
    // LoadMtlBaseChunk answers whether it took the open chunk.
    IOResult SaveMtlBase(ISave* isave);
    bool LoadMtlBaseChunk(ILoad* iload, IOResult& res);
    // Load for a class whose own data is just these chunks (others are skipped).
    IOResult LoadMtlBase(ILoad* iload);
    // Copies name, flag word and effects channel to a clone.
    void CopyMtlBaseState(MtlBase* to) const;
    MSTR name_;

private:
    ULONG mtlFlags_ = 0;
    ULONG gbufId_ = 0;
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
    virtual int FindMtlByName(const MSTR& name) = 0;  // exact name; -1 when absent
    // Puts newMtl in place of every entry holding oldMtl (an entry that would repeat newMtl is dropped);
    // answers the number of entries replaced.
    virtual int Replace(MtlBase* oldMtl, MtlBase* newMtl) = 0;
    virtual void DeleteAll() = 0;
};

// A new standard material (class (2, 0)).
Mtl* NewDefaultStdMat();

#define DMTL_CLASS_ID Class_ID(0x00000002, 0)
#define MULTI_MATERIAL_CLASS_ID Class_ID(0x00000200, 0)
