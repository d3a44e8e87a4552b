// The scene material library: the scene's list of materials and maps, a scene part. Entries are references;
// every change of the list sends 258 to the library's dependents.
#pragma once

#include "imtl.h"
#include "ioapi.h"

#include <unordered_map>
#include <vector>

namespace hostrt {

// Each material or map is listed at most once. List changes are not recorded for undo. An entry that is
// deleted leaves the list (258). A scene file lists the materials that the nodes it holds use: while the scene
// is written the library's entries are no real dependencies, so an entry that no written node (nor the material
// editor) uses is written empty, and empty entries leave the list once the file is read.
class SceneMaterialLibrary : public MtlBaseLib {
public:
    static constexpr Class_ID kClassID = Class_ID(0x48530C01, 0x00000001);

    explicit SceneMaterialLibrary(bool loading = false) {}

    int Count() override { return int(entries_.size()); }
    MtlBase* operator[](int i) override;
    int Add(MtlBase* m) override;
    int Remove(MtlBase* m) override;
    int FindMtl(MtlBase* m) override;
    int FindMtlByName(const MSTR& name) override;
    int Replace(MtlBase* oldMtl, MtlBase* newMtl) override;
    void DeleteAll() override;

    Class_ID ClassID() override { return kClassID; }
    SClass_ID SuperClassID() override { return REF_TARGET_CLASS_ID; }
    void GetClassName(MSTR& s, bool localized = true) const override { s = L"SceneMaterialLibrary"; }
    int NumRefs() override { return int(entries_.size()); }
    RefTargetHandle GetReference(int i) override;
    void SetReference(int i, RefTargetHandle target) override;
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle hTarget, PartID& partID, RefMessage message,
                               BOOL propagate) override;
    BOOL IsRealDependency(ReferenceTarget* target) override;
    // The number of entries (they come back as references).
    IOResult Save(ISave* isave) override;
    IOResult Load(ILoad* iload) override;
    // A library listing the same materials.
    RefTargetHandle Clone(RemapDir& remap) override;

private:
    // Drops entry i (no message).
    void drop(int i);
    void announce() { NotifyDependents(FOREVER, PART_ALL, REFMSG_SUBANIM_STRUCTURE_CHANGED); }

    // Drops the entries that the file left empty.
    class DropEmptyEntries : public PostLoadCallback {
    public:
        explicit DropEmptyEntries(SceneMaterialLibrary* lib) : lib_(lib) {}
        void proc(ILoad*) override;

    private:
        SceneMaterialLibrary* lib_;
    };

    std::vector<MtlBase*> entries_;
    DropEmptyEntries dropEmpty_{this};
    // How often each material is listed: membership without walking the list.
    std::unordered_map<MtlBase*, int> listed_;
};

// The material library of the open scene (never null).
SceneMaterialLibrary& SceneMtlLibrary();

}  // namespace hostrt
