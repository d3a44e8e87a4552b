// The camera record: its change handler, collect and override, and its chunks. This host's cameras expose none
// of the six on/off properties and it has no viewports to look through, so camOverrides, camValues and viewBits
// only carry what a scene file brought; they are kept and written back unchanged.
#include "anims/ref_anim_cam.h"

#include "records/chunk_io.h"

#include <array>

namespace {

constexpr USHORT kCamOverridesChunk = 0x002A;
constexpr USHORT kViewBitsChunk = 0x002B;

}  // namespace

RefResult RefAnimCam::NotifyRefChanged(const Interval&, RefTargetHandle, PartID&, RefMessage, BOOL) {
    // A change of the camera's values reaches the record of its parameter block; the camera record itself only
    // follows the on/off properties, which this host's cameras do not have.
    return REF_STOP;
}

void RefAnimCam::Override(Animatable* root) {
    if (TestOverrideBits(kOverrideReplaced)) {
        RefAnim::Override(root);
        return;
    }
    Animatable* found = nullptr;
    Animatable* parent = nullptr;
    int subIndex = -1;
    int hint = -1;
    Tab<int> resolved;
    if (!GetAnimByPath(root, found, parent, subIndex, hint, resolved)) return;
    if (!found || found->SuperClassID() != CAMERA_CLASS_ID) return;
    SetAnim(found);
    SetPathByNumber(resolved);
}

void RefAnimCam::BaseClone(ReferenceTarget* from, ReferenceTarget* to, RemapDir& remap) {
    RefAnim::BaseClone(from, to, remap);
    auto* src = dynamic_cast<RefAnimCam*>(from);
    auto* dst = dynamic_cast<RefAnimCam*>(to);
    if (!src || !dst) return;
    dst->camOverrides_ = src->camOverrides_;
    dst->camValues_ = src->camValues_;
    dst->viewBits_ = src->viewBits_;
}

IOResult RefAnimCam::Save(ISave* isave) {
    if (SaveWrappedBaseChunks(isave) != IO_OK) return IO_ERROR;
    const std::array<std::uint8_t, 2> cam = {camOverrides_, camValues_};
    if (chunkio::SaveValueChunk(isave, kCamOverridesChunk, cam) != IO_OK) return IO_ERROR;
    return chunkio::SaveValueChunk(isave, kViewBitsChunk, viewBits_);
}

IOResult RefAnimCam::LoadChunk(ILoad* iload) {
    switch (iload->CurChunkID()) {
    case kCamOverridesChunk: {
        std::array<std::uint8_t, 2> cam = {0, 0};
        const IOResult res = chunkio::ReadValue(iload, cam);
        if (res != IO_OK) return res;
        camOverrides_ = cam[0];
        camValues_ = cam[1];
        return IO_OK;
    }
    case kViewBitsChunk: return chunkio::ReadValue(iload, viewBits_);
    default: return IO_OK;
    }
}
