// Keyed controllers: a value per key time with linear interpolation and a constant while there is no key, for
// float (0x9003), point3 (0x9005), position (0x900B) and scale (0x900D) values.
#pragma once

#include "control.h"

#include <functional>
#include <vector>

namespace hostrt {

template <class T> struct ControlKey {
    TimeValue time = 0;
    T value{};
    bool operator==(const ControlKey& o) const { return time == o.time && value == o.value; }
};

// The key track of a controller of values T (float or Point3). Every change is undoable while the hold holds
// and announced to the dependents with REFMSG_CHANGE.
template <class T> class KeyedControl : public Control {
public:
    BOOL IsKeyable() override { return TRUE; }
    BOOL IsAnimated() override { return s_.keys.empty() ? FALSE : TRUE; }

    int NumKeys() override { return int(s_.keys.size()); }
    TimeValue GetKeyTime(int index) override;
    int GetKeyIndex(TimeValue t) override;
    void AddNewKey(TimeValue t, DWORD flags = 0) override;
    void DeleteKeyAtTime(TimeValue t) override;
    void DeleteKeyByIndex(int index) override;
    void DeleteKeys(DWORD flags = 0) override;

    // The value at t: the constant without keys, the first or last key's value outside the keys, linear in
    // between. valid is narrowed to the time span over which the value stays the same.
    T ValueAt(TimeValue t, Interval& valid) const;
    T ValueAt(TimeValue t) const {
        Interval iv = FOREVER;
        return ValueAt(t, iv);
    }
    // Sets the value at t by the animate-mode rules (see Animating() in control.h).
    void SetValueAt(TimeValue t, const T& v);
    // Makes or changes the key at t, whatever the animate mode.
    void SetKey(TimeValue t, const T& v);
    // The value of key i (the constant when i is out of range) and a change of it.
    T KeyValue(int index) const;
    void SetKeyValue(int index, const T& v);
    const T& Constant() const { return s_.constant; }

    IOResult Save(ISave* isave) override;
    IOResult Load(ILoad* iload) override;

protected:
    explicit KeyedControl(const T& constant) { s_.constant = constant; }
    // Copies constant, keys and out-of-range types into a clone.
    void CopyKeysTo(KeyedControl* to) const;

private:
    struct State {
        T constant{};
        std::vector<ControlKey<T>> keys;
    };
    class KeyRestore;
    void change(const std::function<void(State&)>& edit);
    void announce() { NotifyDependents(FOREVER, PART_ALL, REFMSG_CHANGE); }
    static void putKey(State& s, TimeValue t, const T& v);

    State s_;
};

// A float track (superclass 0x9003); value type float.
class FloatKeyControl : public KeyedControl<float> {
public:
    explicit FloatKeyControl(bool loading = false) : KeyedControl<float>(0.0f) {}
    Class_ID ClassID() override;
    SClass_ID SuperClassID() override { return CTRL_FLOAT_CLASS_ID; }
    void GetClassName(MSTR& s, bool localized = true) const override { s = L"Bezier Float"; }
    void GetValue(TimeValue t, void* val, Interval& valid, GetSetMethod method = CTRL_ABSOLUTE) override;
    void SetValue(TimeValue t, void* val, int commit = 1, GetSetMethod method = CTRL_ABSOLUTE) override;
    RefTargetHandle Clone(RemapDir& remap) override;
};

// A point3 track (superclass 0x9005); value type Point3.
class Point3KeyControl : public KeyedControl<Point3> {
public:
    explicit Point3KeyControl(bool loading = false) : KeyedControl<Point3>(Point3()) {}
    Class_ID ClassID() override;
    SClass_ID SuperClassID() override { return CTRL_POINT3_CLASS_ID; }
    void GetClassName(MSTR& s, bool localized = true) const override { s = L"Bezier Point3"; }
    void GetValue(TimeValue t, void* val, Interval& valid, GetSetMethod method = CTRL_ABSOLUTE) override;
    void SetValue(TimeValue t, void* val, int commit = 1, GetSetMethod method = CTRL_ABSOLUTE) override;
    RefTargetHandle Clone(RemapDir& remap) override;
};

// A position track (superclass 0x900B): Point3 in absolute mode; relative mode translates the incoming matrix.
class PositionKeyControl : public KeyedControl<Point3> {
public:
    explicit PositionKeyControl(bool loading = false) : KeyedControl<Point3>(Point3()) {}
    Class_ID ClassID() override;
    SClass_ID SuperClassID() override { return CTRL_POSITION_CLASS_ID; }
    void GetClassName(MSTR& s, bool localized = true) const override { s = L"Bezier Position"; }
    void GetValue(TimeValue t, void* val, Interval& valid, GetSetMethod method = CTRL_ABSOLUTE) override;
    void SetValue(TimeValue t, void* val, int commit = 1, GetSetMethod method = CTRL_ABSOLUTE) override;
    RefTargetHandle Clone(RemapDir& remap) override;
};

// A scale track (superclass 0x900D): ScaleValue (without orientation) in absolute mode; relative mode scales
// the incoming matrix. SetValue in relative mode multiplies the factors.
class ScaleKeyControl : public KeyedControl<Point3> {
public:
    explicit ScaleKeyControl(bool loading = false) : KeyedControl<Point3>(Point3(1.f, 1.f, 1.f)) {}
    Class_ID ClassID() override;
    SClass_ID SuperClassID() override { return CTRL_SCALE_CLASS_ID; }
    void GetClassName(MSTR& s, bool localized = true) const override { s = L"Bezier Scale"; }
    void GetValue(TimeValue t, void* val, Interval& valid, GetSetMethod method = CTRL_ABSOLUTE) override;
    void SetValue(TimeValue t, void* val, int commit = 1, GetSetMethod method = CTRL_ABSOLUTE) override;
    RefTargetHandle Clone(RemapDir& remap) override;
};

}  // namespace hostrt
