// Controllers: animatables that answer a value at a time. Matrix controllers in relative mode compose their
// value with the incoming (parent) matrix. Concrete controllers live with the scene.
#pragma once

#include "ref.h"

class INode;

enum GetSetMethod { CTRL_RELATIVE = 0, CTRL_ABSOLUTE = 1 };

// Out-of-range types (before and after the animated range).
#define ORT_BEFORE 1
#define ORT_AFTER 2
#define ORT_CONSTANT 1

// What SetValue of a matrix controller takes in relative mode (in absolute mode it takes the local Matrix3).
// XFORM_SET makes the controller's value, composed with tmParent, equal tmAxis (a world transform). XFORM_MOVE
// adds p to the position, XFORM_ROTATE turns the rotation by q (applied after it) and XFORM_SCALE multiplies the
// scale by p, each in the parent's space.
enum SetXFormCommand { XFORM_MOVE, XFORM_ROTATE, XFORM_SCALE, XFORM_SET };

class SetXFormPacket {
public:
    SetXFormPacket() = default;
    // XFORM_SET: the new world transform mat under a parent whose world transform is par.
    explicit SetXFormPacket(const Matrix3& mat, const Matrix3& par = Matrix3())
        : command(XFORM_SET), tmParent(par), tmAxis(mat) {}
    // XFORM_MOVE by pt.
    explicit SetXFormPacket(const Point3& pt, const Matrix3& par = Matrix3())
        : command(XFORM_MOVE), tmParent(par), p(pt) {}
    // XFORM_ROTATE by qt.
    explicit SetXFormPacket(const Quat& qt, const Matrix3& par = Matrix3())
        : command(XFORM_ROTATE), tmParent(par), q(qt) {}
    // XFORM_SCALE by the factors sc.
    static SetXFormPacket Scale(const Point3& sc, const Matrix3& par = Matrix3()) {
        SetXFormPacket x(sc, par);
        x.command = XFORM_SCALE;
        return x;
    }

    SetXFormCommand command = XFORM_SET;
    Matrix3 tmParent;
    Matrix3 tmAxis;
    Point3 p;
    Quat q;
};

// Value types by superclass: float 0x9003 float; point3 0x9005 Point3; position 0x900B Point3; rotation 0x900C
// Quat; scale 0x900D ScaleValue; matrix 0x9008 Matrix3 (SetValue: the local Matrix3 in absolute mode, a
// SetXFormPacket in relative mode). In relative mode position,
// rotation, scale and matrix controllers take the incoming Matrix3 and answer their value composed with it:
// value x incoming, so a point is transformed by the controller first, then by the incoming matrix.
class Control : public ReferenceTarget {
public:
    virtual void GetValue(TimeValue t, void* val, Interval& valid, GetSetMethod method = CTRL_ABSOLUTE) = 0;
    virtual void SetValue(TimeValue t, void* val, int commit = 1, GetSetMethod method = CTRL_ABSOLUTE) = 0;
    virtual BOOL IsKeyable() { return FALSE; }
    // Whether the controller can be split into independent tracks; zero for whole-matrix controllers.
    virtual BOOL IsLeaf() { return TRUE; }
    // Whether the user may replace the controller by another one; zero for controllers that a system owns
    // (solvers and rigs that drive a whole transform).
    virtual BOOL IsReplaceable() { return TRUE; }
    virtual int GetORT(int type) { return type == ORT_BEFORE ? ortBefore_ : ortAfter_; }
    virtual void SetORT(int ort, int type) { (type == ORT_BEFORE ? ortBefore_ : ortAfter_) = ort; }
    void* GetInterface(ULONG id) override { return id == I_CONTROL ? this : ReferenceTarget::GetInterface(id); }
    using ReferenceTarget::GetInterface;

    // Keys of keyable controllers (times in ticks, in increasing order). Adding a key where one is keeps one.
    virtual int NumKeys() { return 0; }
    virtual TimeValue GetKeyTime(int index) { return 0; }
    virtual int GetKeyIndex(TimeValue t) { return -1; }  // -1 when no key is at t
    virtual BOOL IsKeyAtTime(TimeValue t, DWORD flags = 0) { return GetKeyIndex(t) >= 0; }
    // A key at t holding the value the controller has there.
    virtual void AddNewKey(TimeValue t, DWORD flags = 0) {}
    virtual void DeleteKeyAtTime(TimeValue t) {}
    virtual void DeleteKeyByIndex(int index) {}
    virtual void DeleteKeys(DWORD flags = 0) {}

    // Sub-controllers of compound controllers (null, FALSE where a controller has none).
    virtual Control* GetPositionController() { return nullptr; }
    virtual Control* GetRotationController() { return nullptr; }
    virtual Control* GetScaleController() { return nullptr; }
    virtual BOOL SetPositionController(Control* c) { return FALSE; }
    virtual BOOL SetRotationController(Control* c) { return FALSE; }
    virtual BOOL SetScaleController(Control* c) { return FALSE; }
    virtual Control* GetXController() { return nullptr; }
    virtual Control* GetYController() { return nullptr; }
    virtual Control* GetZController() { return nullptr; }
    virtual Control* GetRollController() { return nullptr; }
    // The node a look-at controller aims at.
    virtual INode* GetTarget() { return nullptr; }
    virtual RefResult SetTarget(INode* target) { return REF_FAIL; }

private:
    int ortBefore_ = ORT_CONSTANT;
    int ortAfter_ = ORT_CONSTANT;
};

// Animate mode: while it is on (and not suspended), setting the value of a keyable controller at a time makes
// or changes a key there. With it off, a controller without keys takes the value as its constant, and one with
// keys changes the key at that time, or else moves every key by the difference.
BOOL Animating();
void AnimateOn();
void AnimateOff();
// Suspensions nest; Animating() answers FALSE while any is open.
void SuspendAnimate();
void ResumeAnimate();

// New controllers of the host's default classes (see istdplug.h): keyed float, point3, position and scale
// controllers, the Euler XYZ rotation and the position-rotation-scale transform.
Control* NewDefaultFloatController();
Control* NewDefaultPoint3Controller();
Control* NewDefaultPositionController();
Control* NewDefaultRotationController();
Control* NewDefaultScaleController();
Control* NewDefaultMatrix3Controller();
// A look-at transform controller aiming at target (none when null).
Control* CreateLookatControl(INode* target = nullptr);
