// The record of a camera: which of the camera's on/off properties the user switched locally (and to what), and
// which of the four viewports looked through the camera's node, so that both survive a reload. The camera's
// values (field of view, target distance) live in its parameter block and have a record of their own.
#pragma once

#include "anims/ref_anim.h"

#include <cstdint>

class RefAnimCam : public RefAnim {
public:
    Class_ID ClassID() override { return REFANIM_CAM_CLASS_ID; }

    // Bits 0x01 to 0x20: the camera's six on/off properties. camOverrides says which were switched locally,
    // camValues holds their values; bit i of viewBits says viewport i looks through the camera's node.
    std::uint8_t GetCamOverrides() const { return camOverrides_; }
    std::uint8_t GetCamValues() const { return camValues_; }
    std::uint8_t GetViewBits() const { return viewBits_; }

    // Changes of the camera's values reach its parameter block's record; the camera record stays clean.
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle hTarget, PartID& partID, RefMessage message,
                               BOOL propagate) override;
    // A Replaced record takes the base override; otherwise the record follows the merged camera.
    void Override(Animatable* root) override;

    void BaseClone(ReferenceTarget* from, ReferenceTarget* to, RemapDir& remap) override;
    // 0x0029 the base chunks; 0x002A camOverrides and camValues (1 byte each); 0x002B viewBits (1 byte).
    IOResult Save(ISave* isave) override;

protected:
    IOResult LoadChunk(ILoad* iload) override;

private:
    std::uint8_t camOverrides_ = 0;
    std::uint8_t camValues_ = 0;
    std::uint8_t viewBits_ = 0;
};
