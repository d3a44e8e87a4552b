// The host's objects and modifiers: their classes, their parameter blocks and their registration.
#include "scene/objects/object_classes.h"

#include "core/class_directory.h"
#include "istdplug.h"
#include "scene/objects/block_object.h"
#include "scene/objects/derived_object.h"
#include "scene/objects/lights.h"

#include <vector>

namespace hostrt {

namespace {

using GeomBlock = BlockObject<GeomObject>;
using ShapeBlock = BlockObject<ShapeObject>;
using CameraBlock = BlockObject<CameraObject>;
using HelperBlock = BlockObject<HelperObject>;
using SpaceWarpBlock = BlockObject<WSMObject>;
using OSModBlock = BlockModifier<OSModifier>;
using WSModBlock = BlockModifier<WSModifier>;

// A particle system: answers the particle interface.
class ParticleSystem : public GeomBlock {
public:
    using GeomBlock::GeomBlock;
    void* GetInterface(ULONG id) override { return id == I_PARTICLEOBJ ? this : GeomBlock::GetInterface(id); }
    using GeomBlock::GetInterface;
};

// A block descriptor with the usual flags: block 0 as reference 0, made with its object.
struct Block : ParamBlockDesc2 {
    Block(const MCHAR* name, ClassDesc2* cd) : ParamBlockDesc2(0, name, 0, cd, P_AUTO_CONSTRUCT) { AutoConstruct(0); }
    // An animatable float (it gets a float controller).
    ParamDefBuilder Float(ParamID id, const MCHAR* name, float def, ParamType2 type = TYPE_FLOAT) {
        auto b = AddParam(id, name, type, P_ANIMATABLE, 0);
        b.Default(def);
        return b;
    }
    ParamDefBuilder Int(ParamID id, const MCHAR* name, int def, ParamType2 type = TYPE_INT) {
        auto b = AddParam(id, name, type, 0, 0);
        b.Default(def);
        return b;
    }
};

struct Classes {
    BlockClassDesc<GeomBlock> box{L"Box", GEOMOBJECT_CLASS_ID, HOST_BOX_CLASS_ID, L"Standard Primitives"};
    BlockClassDesc<GeomBlock> sphere{L"Sphere", GEOMOBJECT_CLASS_ID, HOST_SPHERE_CLASS_ID, L"Standard Primitives"};
    BlockClassDesc<GeomBlock> target{L"Target", GEOMOBJECT_CLASS_ID, Class_ID(TARGET_CLASS_ID, 0), L""};
    BlockClassDesc<GeomBlock> bone{L"Bone", GEOMOBJECT_CLASS_ID, HOST_BONE_CLASS_ID, L"Systems"};
    BlockClassDesc<ParticleSystem> particles{L"Spray", GEOMOBJECT_CLASS_ID, HOST_PARTICLE_CLASS_ID,
                                             L"Particle Systems"};
    BlockClassDesc<ShapeBlock> circle{L"Circle", SHAPE_CLASS_ID, HOST_CIRCLE_CLASS_ID, L"Splines"};
    BlockClassDesc<HostLight> omni{L"Omni", LIGHT_CLASS_ID, HOST_OMNI_LIGHT_CLASS_ID, L"Standard"};
    BlockClassDesc<HostLight> spot{L"Target Spot", LIGHT_CLASS_ID, HOST_TARGET_SPOT_CLASS_ID, L"Standard"};
    BlockClassDesc<CameraBlock> freeCamera{L"Free Camera", CAMERA_CLASS_ID, HOST_FREE_CAMERA_CLASS_ID, L"Standard"};
    BlockClassDesc<CameraBlock> targetCamera{L"Target Camera", CAMERA_CLASS_ID, HOST_TARGET_CAMERA_CLASS_ID,
                                             L"Standard"};
    BlockClassDesc<HelperBlock> dummy{L"Dummy", HELPER_CLASS_ID, Class_ID(DUMMY_CLASS_ID, 0), L"Standard"};
    BlockClassDesc<HelperBlock> point{L"Point", HELPER_CLASS_ID, HOST_POINT_HELPER_CLASS_ID, L"Standard"};
    BlockClassDesc<SpaceWarpBlock> spaceWarp{L"Wind", WSM_OBJECT_CLASS_ID, HOST_SPACE_WARP_CLASS_ID, L"Forces"};
    BlockClassDesc<OSModBlock> bend{L"Bend", OSM_CLASS_ID, HOST_BEND_CLASS_ID, L"Parametric Deformers"};
    BlockClassDesc<OSModBlock> taper{L"Taper", OSM_CLASS_ID, HOST_TAPER_CLASS_ID, L"Parametric Deformers"};
    BlockClassDesc<WSModBlock> binding{L"Wind Binding", WSM_CLASS_ID, HOST_SPACE_WARP_BINDING_CLASS_ID, L""};
    BlockClassDesc<GeomBlock> cylinder{L"Cylinder", GEOMOBJECT_CLASS_ID, HOST_CYLINDER_CLASS_ID, L"Standard Primitives"};
    BlockClassDesc<GeomBlock> plane{L"Plane", GEOMOBJECT_CLASS_ID, HOST_PLANE_CLASS_ID, L"Standard Primitives"};
    BlockClassDesc<GeomBlock> teapot{L"Teapot", GEOMOBJECT_CLASS_ID, HOST_TEAPOT_CLASS_ID, L"Standard Primitives"};
    BlockClassDesc<GeomBlock> cone{L"Cone", GEOMOBJECT_CLASS_ID, HOST_CONE_CLASS_ID, L"Standard Primitives"};
    BlockClassDesc<GeomBlock> torus{L"Torus", GEOMOBJECT_CLASS_ID, HOST_TORUS_CLASS_ID, L"Standard Primitives"};
    BlockClassDesc<GeomBlock> tube{L"Tube", GEOMOBJECT_CLASS_ID, HOST_TUBE_CLASS_ID, L"Standard Primitives"};
    BlockClassDesc<HostLight> freeSpot{L"Free Spot", LIGHT_CLASS_ID, HOST_FREE_SPOT_CLASS_ID, L"Standard"};
    BlockClassDesc<HostLight> directional{L"Free Direct", LIGHT_CLASS_ID, HOST_DIRECTIONAL_LIGHT_CLASS_ID,
                                          L"Standard"};
    BlockClassDesc<HostLight> targetDirectional{L"Target Direct", LIGHT_CLASS_ID,
                                                HOST_TARGET_DIRECTIONAL_LIGHT_CLASS_ID, L"Standard"};
    BlockClassDesc<OSModBlock> twist{L"Twist", OSM_CLASS_ID, HOST_TWIST_CLASS_ID, L"Parametric Deformers"};
    BlockClassDesc<OSModBlock> turboSmooth{L"TurboSmooth", OSM_CLASS_ID, HOST_TURBOSMOOTH_CLASS_ID,
                                           L"Subdivision Surfaces"};
    BlockClassDesc<OSModBlock> editPoly{L"Edit Poly", OSM_CLASS_ID, HOST_EDIT_POLY_CLASS_ID, L"Mesh Editing"};
    BlockClassDesc<OSModBlock> uvwMap{L"UVW Map", OSM_CLASS_ID, HOST_UVWMAP_CLASS_ID, L"UV Coordinates"};
    BlockClassDesc<OSModBlock> shell{L"Shell", OSM_CLASS_ID, HOST_SHELL_CLASS_ID, L"Parametric Deformers"};
    BlockClassDesc<OSModBlock> symmetry{L"Symmetry", OSM_CLASS_ID, HOST_SYMMETRY_CLASS_ID, L"Parametric Deformers"};
    BlockClassDesc<OSModBlock> skin{L"Skin", OSM_CLASS_ID, HOST_SKIN_CLASS_ID, L"Animation Modifiers"};

    Block boxPb{L"BoxParameters", &box};
    Block spherePb{L"SphereParameters", &sphere};
    Block bonePb{L"BoneParameters", &bone};
    Block particlesPb{L"SprayParameters", &particles};
    Block circlePb{L"CircleParameters", &circle};
    Block omniPb{L"OmniParameters", &omni};
    Block spotPb{L"SpotParameters", &spot};
    Block freeCameraPb{L"CameraParameters", &freeCamera};
    Block targetCameraPb{L"CameraParameters", &targetCamera};
    Block dummyPb{L"DummyParameters", &dummy};
    Block pointPb{L"PointParameters", &point};
    Block spaceWarpPb{L"WindParameters", &spaceWarp};
    Block bendPb{L"BendParameters", &bend};
    Block taperPb{L"TaperParameters", &taper};
    Block bindingPb{L"BindingParameters", &binding};
    Block cylinderPb{L"CylinderParameters", &cylinder};
    Block planePb{L"PlaneParameters", &plane};
    Block teapotPb{L"TeapotParameters", &teapot};
    Block conePb{L"ConeParameters", &cone};
    Block torusPb{L"TorusParameters", &torus};
    Block tubePb{L"TubeParameters", &tube};
    Block freeSpotPb{L"SpotParameters", &freeSpot};
    Block directionalPb{L"DirectionalParameters", &directional};
    Block targetDirectionalPb{L"DirectionalParameters", &targetDirectional};
    Block twistPb{L"TwistParameters", &twist};
    Block turboSmoothPb{L"TurboSmoothParameters", &turboSmooth};
    Block editPolyPb{L"EditPolyParameters", &editPoly};
    Block uvwMapPb{L"UVWMapParameters", &uvwMap};
    Block shellPb{L"ShellParameters", &shell};
    Block symmetryPb{L"SymmetryParameters", &symmetry};
    Block skinPb{L"SkinParameters", &skin};

    Classes() {
        boxPb.Float(box_length, L"length", 25.f, TYPE_WORLD);
        boxPb.Float(box_width, L"width", 25.f, TYPE_WORLD);
        boxPb.Float(box_height, L"height", 25.f, TYPE_WORLD);
        boxPb.Int(box_lsegs, L"lengthsegs", 1);
        boxPb.Int(box_wsegs, L"widthsegs", 1);
        boxPb.Int(box_hsegs, L"heightsegs", 1);
        spherePb.Float(sphere_radius, L"radius", 25.f, TYPE_WORLD);
        spherePb.Int(sphere_segs, L"segs", 32);
        spherePb.Float(sphere_hemisphere, L"hemisphere", 0.f);
        bonePb.Float(bone_width, L"width", 10.f, TYPE_WORLD);
        bonePb.Float(bone_height, L"height", 10.f, TYPE_WORLD);
        bonePb.Float(bone_taper, L"taper", 0.9f, TYPE_PCNT_FRAC);
        bonePb.Float(bone_length, L"length", 40.f, TYPE_WORLD);
        particlesPb.Int(particle_count, L"count", 100);
        particlesPb.Float(particle_size, L"size", 1.f, TYPE_WORLD);
        particlesPb.Float(particle_speed, L"speed", 10.f);
        circlePb.Float(circle_radius, L"radius", 10.f, TYPE_WORLD);
        for (Block* light : {&omniPb, &spotPb, &freeSpotPb, &directionalPb, &targetDirectionalPb}) {
            light->AddParam(light_color, L"color", TYPE_RGBA, P_ANIMATABLE, 0).Default(Color(1.f, 1.f, 1.f));
            light->Float(light_multiplier, L"multiplier", 1.f);
            light->Int(light_on, L"on", TRUE, TYPE_BOOL);
        }
        for (Block* beam : {&spotPb, &freeSpotPb, &directionalPb, &targetDirectionalPb}) {
            beam->Float(light_hotspot, L"hotspot", 43.f);
            beam->Float(light_falloff, L"falloff", 45.f);
        }
        for (Block* camera : {&freeCameraPb, &targetCameraPb}) {
            camera->Float(camera_fov, L"fov", 45.f);
            camera->Float(camera_tdist, L"targetDistance", 160.f, TYPE_WORLD);
        }
        dummyPb.Float(dummy_size, L"boxsize", 10.f, TYPE_WORLD);
        pointPb.Float(point_size, L"size", 20.f, TYPE_WORLD);
        pointPb.Int(point_cross, L"cross", TRUE, TYPE_BOOL);
        pointPb.Int(point_box, L"box", FALSE, TYPE_BOOL);
        spaceWarpPb.Float(spacewarp_strength, L"strength", 1.f);
        spaceWarpPb.Float(spacewarp_decay, L"decay", 0.f);
        bendPb.Float(bend_angle, L"angle", 0.f);
        bendPb.Float(bend_direction, L"direction", 0.f);
        bendPb.Int(bend_axis, L"axis", 2);
        taperPb.Float(taper_amount, L"amount", 0.f);
        taperPb.Float(taper_curve, L"curve", 0.f);
        taperPb.Int(taper_axis, L"primaryaxis", 2);
        bindingPb.AddParam(binding_node, L"node", TYPE_INODE, 0, 0);
        bindingPb.Float(binding_strength, L"strength", 1.f);
        Primitives();
        Modifiers();
    }

    // The standard primitives after box and sphere, with the defaults of the host's creation panel.
    void Primitives() {
        cylinderPb.Float(cylinder_radius, L"radius", 15.f, TYPE_WORLD);
        cylinderPb.Float(cylinder_height, L"height", 25.f, TYPE_WORLD);
        cylinderPb.Int(cylinder_heightsegs, L"heightsegs", 5);
        cylinderPb.Int(cylinder_capsegs, L"capsegs", 1);
        cylinderPb.Int(cylinder_sides, L"sides", 18);
        planePb.Float(plane_length, L"length", 50.f, TYPE_WORLD);
        planePb.Float(plane_width, L"width", 50.f, TYPE_WORLD);
        planePb.Int(plane_lengthsegs, L"lengthsegs", 4);
        planePb.Int(plane_widthsegs, L"widthsegs", 4);
        teapotPb.Float(teapot_radius, L"radius", 25.f, TYPE_WORLD);
        teapotPb.Int(teapot_segs, L"segs", 4);
        conePb.Float(cone_radius1, L"radius1", 15.f, TYPE_WORLD);
        conePb.Float(cone_radius2, L"radius2", 0.f, TYPE_WORLD);
        conePb.Float(cone_height, L"height", 25.f, TYPE_WORLD);
        conePb.Int(cone_heightsegs, L"heightsegs", 5);
        conePb.Int(cone_sides, L"sides", 24);
        torusPb.Float(torus_radius1, L"radius1", 25.f, TYPE_WORLD);
        torusPb.Float(torus_radius2, L"radius2", 10.f, TYPE_WORLD);
        torusPb.Int(torus_segs, L"segs", 24);
        torusPb.Int(torus_sides, L"sides", 12);
        tubePb.Float(tube_radius1, L"radius1", 20.f, TYPE_WORLD);
        tubePb.Float(tube_radius2, L"radius2", 15.f, TYPE_WORLD);
        tubePb.Float(tube_height, L"height", 25.f, TYPE_WORLD);
        tubePb.Int(tube_heightsegs, L"heightsegs", 5);
        tubePb.Int(tube_sides, L"sides", 18);
    }

    // The modifiers users stack most, each with the parameters set first.
    void Modifiers() {
        twistPb.Float(twist_angle, L"angle", 0.f);
        twistPb.Float(twist_bias, L"bias", 0.f);
        twistPb.Int(twist_axis, L"axis", 2);
        turboSmoothPb.Int(turbosmooth_iterations, L"iterations", 1);
        turboSmoothPb.Int(turbosmooth_use_render_iterations, L"useRenderIterations", FALSE, TYPE_BOOL);
        turboSmoothPb.Int(turbosmooth_render_iterations, L"renderIterations", 2);
        turboSmoothPb.Int(turbosmooth_isoline_display, L"isolineDisplay", FALSE, TYPE_BOOL);
        uvwMapPb.Int(uvwmap_maptype, L"maptype", 0);
        uvwMapPb.Float(uvwmap_length, L"length", 1.f, TYPE_WORLD);
        uvwMapPb.Float(uvwmap_width, L"width", 1.f, TYPE_WORLD);
        uvwMapPb.Float(uvwmap_height, L"height", 1.f, TYPE_WORLD);
        uvwMapPb.Float(uvwmap_utile, L"utile", 1.f);
        uvwMapPb.Float(uvwmap_vtile, L"vtile", 1.f);
        uvwMapPb.Float(uvwmap_wtile, L"wtile", 1.f);
        uvwMapPb.Int(uvwmap_channel, L"mapChannel", 1);
        shellPb.Float(shell_inner_amount, L"innerAmount", 0.f, TYPE_WORLD);
        shellPb.Float(shell_outer_amount, L"outerAmount", 1.f, TYPE_WORLD);
        shellPb.Int(shell_segments, L"segments", 1);
        symmetryPb.Int(symmetry_axis, L"axis", 0);
        symmetryPb.Int(symmetry_flip, L"flip", FALSE, TYPE_BOOL);
        symmetryPb.Float(symmetry_threshold, L"threshold", 0.1f, TYPE_WORLD);
        editPolyPb.Int(edit_poly_use_stack_selection, L"useStackSelection", FALSE, TYPE_BOOL);
        editPolyPb.Int(edit_poly_animation_mode, L"animationMode", 0);
        skinPb.Int(skin_bone_limit, L"bone_Limit", 20);
        skinPb.AddParam(skin_bones, L"bones", TYPE_INODE_TAB, 0, 0);
        skinPb.AddParam(skin_weights, L"weights", TYPE_FLOAT_TAB, 0, 0);
    }

    std::vector<ClassDesc*> All() {
        return {&box,  &sphere, &target, &bone,      &particles, &circle, &omni,  &spot,
                &freeCamera, &targetCamera, &dummy, &point, &spaceWarp, &bend, &taper, &binding,
                &cylinder, &plane, &teapot, &cone, &torus, &tube, &freeSpot, &directional, &targetDirectional,
                &twist, &turboSmooth, &editPoly, &uvwMap, &shell, &symmetry, &skin};
    }
};

Classes& classes() {
    static Classes c;
    return c;
}

}  // namespace

void RegisterObjectClasses() {
    static bool done = false;
    if (done) return;
    done = true;
    auto& dir = ClassDirectory::Instance();
    for (ClassDesc* d : classes().All()) dir.Register(d);
    dir.Register(DerivedObjectDesc());
    dir.Register(WSDerivedObjectDesc());
}

}  // namespace hostrt
