// The material record: wraps one material that a reference file brought into the scene (reference 0). It keeps
// the material's name in the reference file and a local name when the user renames it, shows the material as
// its single sub-anim "Material", and on a reload puts the freshly merged material in the old one's place in
// the scene material library.
#pragma once

#include "records/ref_base.h"

#include <cstdint>

class Mtl;
class MAXException;

// Bits of a material record's flag word.
enum RefMaterialFlag : std::uint16_t {
    kMtlOverriddenLocDep = 0x1,  // local scene items depend on the material
    kMtlOverriddenName = 0x2,    // the material carries the local name overriddenName
    kMtlNameWithoutPrefix = 0x4  // the local name stands without the helper's name prefix
};

class RefMaterial : public RefBase {
public:
    RefMaterial() = default;
    // A record for mtl owned by helper; bound, it takes the material's name as its reference name and builds its
    // sub-animatable tree. Throws MAXException ("Error Creating RefMaterial") when that fails.
    RefMaterial(Mtl* mtl, RecordOwner* helper);

    Class_ID ClassID() override { return REFMATERIAL_CLASS_ID; }

    Mtl* GetMaterial();
    const MSTR& GetReferenceName() const { return referenceName_; }
    const MSTR& GetOverriddenName() const { return overriddenName_; }
    std::uint16_t GetMaterialFlags() const { return materialFlags_; }
    // Sets the masked flag bits, undoably while the host is holding.
    void SetMaterialFlags(std::uint16_t mask, std::uint16_t value);

    // The record protocol.
    void Collect() override;
    void Override() override;
    // Rebinds to newTarget: every library slot of the old material gets the new one, which takes the local name.
    void Update(ReferenceTarget* newTarget) override;
    void ApplyNamePrefix(const MSTR& prefix) override;
    bool HasOverrides() override;
    Animatable* GetAnimRoot() override { return this; }
    void PrintData(int mode) override;
    MSTR GetInfo() override;
    MSTR GetTypeName() override;

    // The material is the single sub-anim.
    int NumSubs() override { return 1; }
    Animatable* SubAnim(int i) override;
    MSTR SubAnimName(int i, bool localized = true) override;
    int SubNumToRefNum(int subNum) override { return subNum == 0 ? 0 : -1; }

    void SetReference(int i, RefTargetHandle target) override;
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle hTarget, PartID& partID, RefMessage message,
                               BOOL propagate) override;
    BOOL IsRealDependency(ReferenceTarget* target) override;
    // Only the material may be moved to another item.
    BOOL CanTransferReference(int i) override { return i == 0; }

    void BaseClone(ReferenceTarget* from, ReferenceTarget* to, RemapDir& remap) override;

    // Chunks 0x0000, 0x0009 (reference name), 0x000A (flags), 0x000B (local name, with its flag) and 0x0022.
    IOResult Save(ISave* isave) override;
    // A read error empties the animatable records and answers the error.
    IOResult Load(ILoad* iload) override;

protected:
    IOResult LoadChunk(ILoad* iload) override;

private:
    // Reacts to a rename of the material made by the user.
    void onNameChanged();
    // While the host undoes or redoes a rename, the local name follows the material without new undo steps.
    void followRestoredName();
    MSTR expectedName();
    // Ends a failed operation: lets go of the material and throws the composed message.
    [[noreturn]] void fail(const MCHAR* words, const MAXException* cause);
    template <class Op> void runInErrorFrame(const MCHAR* words, const MCHAR* unknownWords, Op op);

    MSTR referenceName_;
    MSTR overriddenName_;
    std::uint16_t materialFlags_ = 0;
};
