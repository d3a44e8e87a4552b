// Extents of the host's objects from their size parameters.
#include "scene/objects/object_extents.h"

#include "classids.h"
#include "iparamb2.h"
#include "istdplug.h"

#include <algorithm>

namespace hostrt {

namespace {

// A box centred on the z axis: half sizes hx, hy, from z0 to z1.
Box3 Around(float hx, float hy, float z0, float z1) {
    return Box3(Point3(-hx, -hy, std::min(z0, z1)), Point3(hx, hy, std::max(z0, z1)));
}

}  // namespace

Box3 ObjectSizeBox(Object* obj, TimeValue t) {
    Object* base = obj ? obj->FindBaseObject() : nullptr;
    IParamBlock2* pb = base && base->NumParamBlocks() > 0 ? base->GetParamBlock(0) : nullptr;
    if (!pb) return Box3(Point3(), Point3());
    auto f = [&](ParamID id) { return pb->GetFloat(id, t); };
    const Class_ID cid = base->ClassID();
    if (cid == HOST_BOX_CLASS_ID) return Around(f(box_width) / 2, f(box_length) / 2, 0.f, f(box_height));
    if (cid == HOST_SPHERE_CLASS_ID) {
        const float r = f(sphere_radius);
        return Around(r, r, -r, r);
    }
    if (cid == HOST_CYLINDER_CLASS_ID)
        return Around(f(cylinder_radius), f(cylinder_radius), 0.f, f(cylinder_height));
    if (cid == HOST_PLANE_CLASS_ID) return Around(f(plane_width) / 2, f(plane_length) / 2, 0.f, 0.f);
    if (cid == HOST_TEAPOT_CLASS_ID) {
        // The spout and handle reach past the body's radius; the lid ends at three quarters of a radius up.
        const float r = f(teapot_radius);
        return Around(r * 1.5f, r, 0.f, r * 1.5f);
    }
    if (cid == HOST_CONE_CLASS_ID) {
        const float r = std::max(f(cone_radius1), f(cone_radius2));
        return Around(r, r, 0.f, f(cone_height));
    }
    if (cid == HOST_TORUS_CLASS_ID) {
        const float r = f(torus_radius1) + f(torus_radius2), tube = f(torus_radius2);
        return Around(r, r, -tube, tube);
    }
    if (cid == HOST_TUBE_CLASS_ID) {
        const float r = std::max(f(tube_radius1), f(tube_radius2));
        return Around(r, r, 0.f, f(tube_height));
    }
    if (cid == HOST_CIRCLE_CLASS_ID) return Around(f(circle_radius), f(circle_radius), 0.f, 0.f);
    if (cid == Class_ID(DUMMY_CLASS_ID, 0)) {
        const float h = f(dummy_size) / 2;
        return Around(h, h, -h, h);
    }
    if (cid == HOST_POINT_HELPER_CLASS_ID) {
        const float h = f(point_size) / 2;
        return Around(h, h, -h, h);
    }
    if (cid == HOST_BONE_CLASS_ID)
        return Box3(Point3(0.f, -f(bone_width) / 2, -f(bone_height) / 2),
                    Point3(f(bone_length), f(bone_width) / 2, f(bone_height) / 2));
    return Box3(Point3(), Point3());
}

}  // namespace hostrt
