// Class ids and parameter ids of the host's own objects, modifiers, derived objects and controllers, and the
// interfaces of the controllers that aim at a node.
#pragma once

#include "control.h"
#include "object.h"

// ---- Controllers.
#define PRS_CONTROL_CLASS_ID 0x00002005     // position-rotation-scale transform, superclass 0x9008
#define LOOKAT_CONTROL_CLASS_ID 0x00002006  // look-at transform, superclass 0x9008
#define EULER_CONTROL_CLASS_ID 0x00002012   // Euler XYZ rotation, superclass 0x900C
#define HOST_FLOAT_CONTROL_CLASS_ID Class_ID(0x48532101, 0x00000001)       // keyed float, 0x9003
#define HOST_POINT3_CONTROL_CLASS_ID Class_ID(0x48532102, 0x00000001)      // keyed point3, 0x9005
#define HOST_POSITION_CONTROL_CLASS_ID Class_ID(0x48532103, 0x00000001)    // keyed position, 0x900B
#define HOST_SCALE_CONTROL_CLASS_ID Class_ID(0x48532104, 0x00000001)       // keyed scale, 0x900D
#define HOST_FLOAT_LIST_CONTROL_CLASS_ID Class_ID(0x48532105, 0x00000001)  // float list, 0x9003

// Sub-anims of the position-rotation-scale controller (also its references).
#define PRS_POS_REF 0
#define PRS_ROT_REF 1
#define PRS_SCL_REF 2
// Sub-anims of the look-at controller: position, roll, scale; the target node is reference 3.
#define LOOKAT_POS_REF 0
#define LOOKAT_ROLL_REF 1
#define LOOKAT_SCL_REF 2
#define LOOKAT_TARGET_REF 3

// ---- Derived objects (superclass 2).
#define HOST_DERIVED_OBJECT_CLASS_ID Class_ID(0x48532001, 0x00000001)
#define HOST_WS_DERIVED_OBJECT_CLASS_ID Class_ID(0x48532002, 0x00000001)

// ---- Objects.
#define TARGET_CLASS_ID 0x00001020  // the target of a look-at light or camera: Class_ID(0x1020, 0), superclass 0x10
#define DUMMY_CLASS_ID 0x00876234   // the dummy helper: Class_ID(0x00876234, 0), superclass 0x50
#define BONE_OBJ_CLASSID_PART_A 0x28BF6E8D
#define HOST_BOX_CLASS_ID Class_ID(0x48532201, 0x00000001)           // 0x10
#define HOST_SPHERE_CLASS_ID Class_ID(0x48532202, 0x00000001)        // 0x10
#define HOST_CIRCLE_CLASS_ID Class_ID(0x48532203, 0x00000001)        // 0x40
#define HOST_OMNI_LIGHT_CLASS_ID Class_ID(0x48532204, 0x00000001)    // 0x30
#define HOST_TARGET_SPOT_CLASS_ID Class_ID(0x48532205, 0x00000001)   // 0x30
#define HOST_FREE_CAMERA_CLASS_ID Class_ID(0x48532206, 0x00000001)   // 0x20
#define HOST_TARGET_CAMERA_CLASS_ID Class_ID(0x48532207, 0x00000001) // 0x20
#define HOST_POINT_HELPER_CLASS_ID Class_ID(0x48532208, 0x00000001)  // 0x50
#define HOST_PARTICLE_CLASS_ID Class_ID(0x48532209, 0x00000001)      // 0x10, answers I_PARTICLEOBJ
#define HOST_SPACE_WARP_CLASS_ID Class_ID(0x4853220A, 0x00000001)    // 0x830
#define HOST_BONE_CLASS_ID Class_ID(BONE_OBJ_CLASSID_PART_A, 0x00000001)  // 0x10
#define HOST_CYLINDER_CLASS_ID Class_ID(0x4853220B, 0x00000001)      // 0x10
#define HOST_PLANE_CLASS_ID Class_ID(0x4853220C, 0x00000001)         // 0x10
#define HOST_TEAPOT_CLASS_ID Class_ID(0x4853220D, 0x00000001)        // 0x10
#define HOST_CONE_CLASS_ID Class_ID(0x4853220E, 0x00000001)          // 0x10
#define HOST_TORUS_CLASS_ID Class_ID(0x4853220F, 0x00000001)         // 0x10
#define HOST_TUBE_CLASS_ID Class_ID(0x48532210, 0x00000001)          // 0x10
#define HOST_FREE_SPOT_CLASS_ID Class_ID(0x48532211, 0x00000001)     // 0x30
#define HOST_DIRECTIONAL_LIGHT_CLASS_ID Class_ID(0x48532212, 0x00000001)         // 0x30
#define HOST_TARGET_DIRECTIONAL_LIGHT_CLASS_ID Class_ID(0x48532213, 0x00000001)  // 0x30

// ---- Modifiers.
#define HOST_BEND_CLASS_ID Class_ID(0x48532301, 0x00000001)           // 0x810
#define HOST_TAPER_CLASS_ID Class_ID(0x48532302, 0x00000001)          // 0x810
#define HOST_SPACE_WARP_BINDING_CLASS_ID Class_ID(0x48532303, 0x00000001)  // 0x820
#define HOST_TWIST_CLASS_ID Class_ID(0x48532304, 0x00000001)          // 0x810
#define HOST_TURBOSMOOTH_CLASS_ID Class_ID(0x48532305, 0x00000001)    // 0x810
#define HOST_EDIT_POLY_CLASS_ID Class_ID(0x48532306, 0x00000001)      // 0x810
#define HOST_UVWMAP_CLASS_ID Class_ID(0x48532307, 0x00000001)         // 0x810
#define HOST_SHELL_CLASS_ID Class_ID(0x48532308, 0x00000001)          // 0x810
#define HOST_SYMMETRY_CLASS_ID Class_ID(0x48532309, 0x00000001)       // 0x810
#define HOST_SKIN_CLASS_ID Class_ID(0x4853230A, 0x00000001)          // 0x810

// Parameter ids of the objects' and modifiers' blocks (block id 0, reference 0 of the object). Float
// parameters are animatable and carry float controllers; integer ones are plain values.
enum { box_length, box_width, box_height, box_lsegs, box_wsegs, box_hsegs };
enum { sphere_radius, sphere_segs, sphere_hemisphere };
enum { circle_radius };
enum { cylinder_radius, cylinder_height, cylinder_heightsegs, cylinder_capsegs, cylinder_sides };
enum { plane_length, plane_width, plane_lengthsegs, plane_widthsegs };
enum { teapot_radius, teapot_segs };
// Cone and tube: radius1 at the base, radius2 at the top (cone) or inside (tube).
enum { cone_radius1, cone_radius2, cone_height, cone_heightsegs, cone_sides };
enum { torus_radius1, torus_radius2, torus_segs, torus_sides };
enum { tube_radius1, tube_radius2, tube_height, tube_heightsegs, tube_sides };
// Lights: colour (point3 controller), multiplier, and for spot lights hotspot and falloff (degrees).
enum { light_color, light_multiplier, light_on, light_hotspot, light_falloff };
// Cameras: field of view (degrees), target distance.
enum { camera_fov, camera_tdist };
enum { dummy_size };
enum { point_size, point_cross, point_box };
enum { bone_width, bone_height, bone_taper, bone_length };
enum { particle_count, particle_size, particle_speed };
enum { spacewarp_strength, spacewarp_decay };
enum { bend_angle, bend_direction, bend_axis };
enum { taper_amount, taper_curve, taper_axis };
enum { twist_angle, twist_bias, twist_axis };
enum { turbosmooth_iterations, turbosmooth_use_render_iterations, turbosmooth_render_iterations,
       turbosmooth_isoline_display };
// UVW map: maptype 0 planar, 1 cylindrical, 2 spherical, 3 shrink wrap, 4 box, 5 face, 6 XYZ to UVW.
enum { uvwmap_maptype, uvwmap_length, uvwmap_width, uvwmap_height, uvwmap_utile, uvwmap_vtile, uvwmap_wtile,
       uvwmap_channel };
enum { shell_inner_amount, shell_outer_amount, shell_segments };
// Symmetry: axis 0 X, 1 Y, 2 Z.
enum { symmetry_axis, symmetry_flip, symmetry_threshold };
enum { edit_poly_use_stack_selection, edit_poly_animation_mode };
// Skin: the bones as a node table with a float table of their weights (one per bone), and the bone limit.
enum { skin_bone_limit, skin_bones, skin_weights };
// The world-space binding: the space-warp node it is bound to, and its strength.
enum { binding_node, binding_strength };
