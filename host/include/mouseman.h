// Interactive creation: the mouse messages a creation procedure hears, the viewport it sees (ViewExp) and the
// procedure itself (CreateMouseCallBack), which an object hands out through BaseObject::GetCreateMouseCallBack.
#pragma once

#include "geom.h"

// Mouse messages.
#define MOUSE_ABORT 0
#define MOUSE_IDLE 1
#define MOUSE_POINT 2
#define MOUSE_MOVE 3
#define MOUSE_DBLCLICK 4
#define MOUSE_INIT 5
#define MOUSE_UNINIT 6
#define MOUSE_FREEMOVE 7

// Answers of a creation procedure.
#define CREATE_CONTINUE 1
#define CREATE_STOP 0
#define CREATE_ABORT -1

// Snap flags of ViewExp::SnapPoint.
#define SNAP_IN_3D 0x00000000
#define SNAP_IN_PLANE 0x00000001

// The viewport a creation runs in. This host has no real viewports: a screen point maps to the construction plane
// point (x, y, 0) in world units, and snapping rounds to the snap spacing when snapping is on.
class ViewExp {
public:
    virtual ~ViewExp() = default;
    // The world point under screen point m, snapped when snapping is on.
    virtual Point3 SnapPoint(IPoint2& in, IPoint2& out, Matrix3* plane2d = nullptr, DWORD flags = 0) = 0;
    virtual bool IsAlive() { return true; }
};

class CreateMouseCallBack {
public:
    virtual ~CreateMouseCallBack() = default;
    // One mouse event of the creation: message, index of the point (0 at the first click), mouse flags, screen
    // point, and the new node's transform, which the host applies after each call. Answers CREATE_CONTINUE,
    // CREATE_STOP or CREATE_ABORT.
    virtual int proc(ViewExp* vpt, int msg, int point, int flags, IPoint2 m, Matrix3& mat) = 0;
};
