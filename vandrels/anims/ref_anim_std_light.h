// The record of a light: besides the base record's state it keeps the light's include/exclude list and the name
// of its look-at target, so that a list edited locally is put into the freshly merged light after a reload while
// the light's parameters follow the file or their own snapshots.
#pragma once

#include "anims/ref_anim.h"

#include <cstdint>

// Bits of the light's overridden properties. Bits 0x0001 to 0x2000 (on/off properties) and 0x4000, 0x8000 (two
// integer values) are kept in the file layout; this host's lights expose none of them, so only the map and the
// list bits can be set.
enum LightOverride : std::uint32_t {
    kLightOverrideMap = 0x10000,
    kLightOverrideExclList = 0x20000,
};

class RefAnimStdLight : public RefAnim {
public:
    Class_ID ClassID() override { return REFANIM_STDLIGHT_CLASS_ID; }

    std::uint32_t GetLightOverrides() const { return lightOverrides_; }
    void SetLightOverrides(std::uint32_t bits) { lightOverrides_ = bits; }
    // Whether the held light is one whose state the record keeps (the host's lights with an include/exclude list).
    bool IsStdLight() const { return isStdLight_ != 0; }
    const MSTR& GetTargetName() const { return targetName_; }

    // The base, then the light's list and the look-at target's name are read.
    void SetAnim(Animatable* anim) override;
    void Override(Animatable* root) override;
    MSTR GetInfo() override;
    // A change of the held light while idle: a different list sets its override bit and Modified (undoably); a
    // look-at target that appears or goes is adopted or forgotten by the helper.
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle hTarget, PartID& partID, RefMessage message,
                               BOOL propagate) override;
    RefTargetHandle Clone(RemapDir& remap) override;
    IOResult Save(ISave* isave) override;

protected:
    IOResult LoadChunk(ILoad* iload) override;

private:
    void readList();
    void readTargetName();
    INode* lookAtTarget();
    // Sets or clears light override bits, undoably while the host holds.
    void setLightBits(std::uint32_t bits);

    std::uint32_t lightOverrides_ = 0;
    std::uint32_t lightValues_ = 0;
    std::int32_t lightValueA_ = 0;
    std::int32_t lightValueB_ = 0;
    Tab<INode*> exclNodes_;
    int exclInclude_ = 0;
    MSTR targetName_;
    bool hasTargetName_ = false;
    std::int32_t isStdLight_ = 0;
    std::uint8_t viewBits_ = 0;

    class LightBitsRestore;
};
