// Keyed controllers: the key track, its undo, its chunks, and the four value kinds built on it.
#include "scene/controllers/keyed_control.h"

#include "hold.h"
#include "ioapi.h"
#include "istdplug.h"

#include <algorithm>
#include <climits>

namespace hostrt {

namespace {

constexpr USHORT kConstantChunk = 0x0100;
constexpr USHORT kKeysChunk = 0x0110;
constexpr USHORT kOrtChunk = 0x0120;
// Most keys a track accepts from a file; more means the file is damaged.
constexpr ULONG kMaxKeys = 1u << 22;

bool readAll(ILoad* iload, void* buf, ULONG n) {
    ULONG got = 0;
    return iload->Read(buf, n, &got) == IO_OK && got == n;
}
IOResult writeAll(ISave* isave, const void* buf, ULONG n) {
    ULONG written = 0;
    return isave->Write(buf, n, &written);
}

}  // namespace

// Undo record of a track: its whole state before and after.
template <class T> class KeyedControl<T>::KeyRestore : public RestoreObj {
public:
    KeyRestore(KeyedControl* c, State before, State after)
        : c_(c), handle_(Animatable::GetHandleByAnim(c)), before_(std::move(before)), after_(std::move(after)) {}
    void Restore(int) override { apply(before_); }
    void Redo() override { apply(after_); }
    MSTR Description() override { return MSTR(L"Controller change"); }

private:
    void apply(const State& s) {
        if (Animatable::GetAnimByHandle(handle_) != c_) return;
        c_->s_ = s;
        c_->announce();
    }
    KeyedControl* c_;
    AnimHandle handle_;
    State before_, after_;
};

template <class T> void KeyedControl<T>::change(const std::function<void(State&)>& edit) {
    State after = s_;
    edit(after);
    if (after.constant == s_.constant && after.keys == s_.keys) return;
    if (theHold.Holding() && !theHold.RestoreOrRedoing()) theHold.Put(new KeyRestore(this, s_, after));
    s_ = std::move(after);
    announce();
}

template <class T> void KeyedControl<T>::putKey(State& s, TimeValue t, const T& v) {
    auto it = std::lower_bound(s.keys.begin(), s.keys.end(), t,
                               [](const ControlKey<T>& k, TimeValue time) { return k.time < time; });
    if (it != s.keys.end() && it->time == t)
        it->value = v;
    else
        s.keys.insert(it, ControlKey<T>{t, v});
}

template <class T> TimeValue KeyedControl<T>::GetKeyTime(int index) {
    return index >= 0 && index < NumKeys() ? s_.keys[std::size_t(index)].time : 0;
}

template <class T> int KeyedControl<T>::GetKeyIndex(TimeValue t) {
    for (std::size_t i = 0; i < s_.keys.size(); ++i)
        if (s_.keys[i].time == t) return int(i);
    return -1;
}

template <class T> void KeyedControl<T>::AddNewKey(TimeValue t, DWORD) {
    if (GetKeyIndex(t) >= 0) return;
    const T v = ValueAt(t);
    change([&](State& s) { putKey(s, t, v); });
}

template <class T> void KeyedControl<T>::DeleteKeyByIndex(int index) {
    if (index < 0 || index >= NumKeys()) return;
    // The last key leaves its value behind as the constant.
    const T last = s_.keys[std::size_t(index)].value;
    change([&](State& s) {
        s.keys.erase(s.keys.begin() + index);
        if (s.keys.empty()) s.constant = last;
    });
}

template <class T> void KeyedControl<T>::DeleteKeyAtTime(TimeValue t) { DeleteKeyByIndex(GetKeyIndex(t)); }

template <class T> void KeyedControl<T>::DeleteKeys(DWORD) {
    if (s_.keys.empty()) return;
    const T v = ValueAt(0);
    change([&](State& s) {
        s.keys.clear();
        s.constant = v;
    });
}

template <class T> T KeyedControl<T>::ValueAt(TimeValue t, Interval& valid) const {
    const auto& keys = s_.keys;
    if (keys.empty()) return s_.constant;
    if (t <= keys.front().time) {
        valid &= Interval(TIME_NegInfinity, keys.front().time);
        return keys.front().value;
    }
    if (t >= keys.back().time) {
        valid &= Interval(keys.back().time, TIME_PosInfinity);
        return keys.back().value;
    }
    auto next = std::upper_bound(keys.begin(), keys.end(), t,
                                 [](TimeValue time, const ControlKey<T>& k) { return time < k.time; });
    auto prev = next - 1;
    if (prev->value == next->value) {
        valid &= Interval(prev->time, next->time);
        return prev->value;
    }
    valid &= Interval(t, t);
    const float u = float(t - prev->time) / float(next->time - prev->time);
    return prev->value + (next->value - prev->value) * u;
}

template <class T> void KeyedControl<T>::SetValueAt(TimeValue t, const T& v) {
    if (Animating()) {
        // The first key made away from time 0 keeps the old value at time 0, so the change is animated.
        const T before = s_.constant;
        const bool first = s_.keys.empty();
        change([&](State& s) {
            if (first && t != 0) putKey(s, 0, before);
            putKey(s, t, v);
        });
        return;
    }
    if (s_.keys.empty()) {
        change([&](State& s) { s.constant = v; });
        return;
    }
    const int at = GetKeyIndex(t);
    if (at >= 0) {
        change([&](State& s) { s.keys[std::size_t(at)].value = v; });
        return;
    }
    const T delta = v - ValueAt(t);
    change([&](State& s) {
        for (auto& k : s.keys) k.value = k.value + delta;
    });
}

template <class T> void KeyedControl<T>::SetKey(TimeValue t, const T& v) {
    change([&](State& s) { putKey(s, t, v); });
}

template <class T> T KeyedControl<T>::KeyValue(int index) const {
    return index >= 0 && index < int(s_.keys.size()) ? s_.keys[std::size_t(index)].value : s_.constant;
}

template <class T> void KeyedControl<T>::SetKeyValue(int index, const T& v) {
    if (index < 0 || index >= int(s_.keys.size())) return;
    change([&](State& s) { s.keys[std::size_t(index)].value = v; });
}

template <class T> void KeyedControl<T>::CopyKeysTo(KeyedControl* to) const {
    to->s_ = s_;
    to->SetORT(const_cast<KeyedControl*>(this)->GetORT(ORT_BEFORE), ORT_BEFORE);
    to->SetORT(const_cast<KeyedControl*>(this)->GetORT(ORT_AFTER), ORT_AFTER);
}

template <class T> IOResult KeyedControl<T>::Save(ISave* isave) {
    isave->BeginChunk(kConstantChunk);
    IOResult r = writeAll(isave, &s_.constant, sizeof(T));
    isave->EndChunk();
    if (r != IO_OK) return r;
    if (!s_.keys.empty()) {
        isave->BeginChunk(kKeysChunk);
        const ULONG n = ULONG(s_.keys.size());
        r = writeAll(isave, &n, sizeof n);
        for (const auto& k : s_.keys) {
            if (r == IO_OK) r = writeAll(isave, &k.time, sizeof k.time);
            if (r == IO_OK) r = writeAll(isave, &k.value, sizeof(T));
        }
        isave->EndChunk();
        if (r != IO_OK) return r;
    }
    const int orts[2] = {GetORT(ORT_BEFORE), GetORT(ORT_AFTER)};
    isave->BeginChunk(kOrtChunk);
    r = writeAll(isave, orts, sizeof orts);
    isave->EndChunk();
    return r;
}

template <class T> IOResult KeyedControl<T>::Load(ILoad* iload) {
    IOResult res;
    while ((res = iload->OpenChunk()) == IO_OK) {
        bool ok = true;
        switch (iload->CurChunkID()) {
        case kConstantChunk:
            ok = readAll(iload, &s_.constant, sizeof(T));
            break;
        case kKeysChunk: {
            ULONG n = 0;
            ok = readAll(iload, &n, sizeof n) && n <= kMaxKeys;
            s_.keys.clear();
            for (ULONG i = 0; ok && i < n; ++i) {
                ControlKey<T> k;
                ok = readAll(iload, &k.time, sizeof k.time) && readAll(iload, &k.value, sizeof(T));
                // Keys are written in increasing time order; anything else is damage.
                ok = ok && (s_.keys.empty() || s_.keys.back().time < k.time);
                if (ok) s_.keys.push_back(k);
            }
            break;
        }
        case kOrtChunk: {
            int orts[2] = {ORT_CONSTANT, ORT_CONSTANT};
            ok = readAll(iload, orts, sizeof orts);
            SetORT(orts[0], ORT_BEFORE);
            SetORT(orts[1], ORT_AFTER);
            break;
        }
        default:
            break;
        }
        iload->CloseChunk();
        if (!ok) return IO_ERROR;
    }
    return res == IO_END ? IO_OK : res;
}

template class KeyedControl<float>;
template class KeyedControl<Point3>;

// ----------------------------------------------------------------------------------------------- float

Class_ID FloatKeyControl::ClassID() { return HOST_FLOAT_CONTROL_CLASS_ID; }

void FloatKeyControl::GetValue(TimeValue t, void* val, Interval& valid, GetSetMethod method) {
    const float v = ValueAt(t, valid);
    if (method == CTRL_RELATIVE)
        *static_cast<float*>(val) += v;
    else
        *static_cast<float*>(val) = v;
}

void FloatKeyControl::SetValue(TimeValue t, void* val, int, GetSetMethod method) {
    const float v = *static_cast<float*>(val);
    SetValueAt(t, method == CTRL_RELATIVE ? ValueAt(t) + v : v);
}

RefTargetHandle FloatKeyControl::Clone(RemapDir& remap) {
    auto* c = new FloatKeyControl(true);
    CopyKeysTo(c);
    BaseClone(this, c, remap);
    return c;
}

// ---------------------------------------------------------------------------------------------- point3

Class_ID Point3KeyControl::ClassID() { return HOST_POINT3_CONTROL_CLASS_ID; }

void Point3KeyControl::GetValue(TimeValue t, void* val, Interval& valid, GetSetMethod method) {
    const Point3 v = ValueAt(t, valid);
    if (method == CTRL_RELATIVE)
        *static_cast<Point3*>(val) += v;
    else
        *static_cast<Point3*>(val) = v;
}

void Point3KeyControl::SetValue(TimeValue t, void* val, int, GetSetMethod method) {
    const Point3 v = *static_cast<Point3*>(val);
    SetValueAt(t, method == CTRL_RELATIVE ? ValueAt(t) + v : v);
}

RefTargetHandle Point3KeyControl::Clone(RemapDir& remap) {
    auto* c = new Point3KeyControl(true);
    CopyKeysTo(c);
    BaseClone(this, c, remap);
    return c;
}

// -------------------------------------------------------------------------------------------- position

Class_ID PositionKeyControl::ClassID() { return HOST_POSITION_CONTROL_CLASS_ID; }

void PositionKeyControl::GetValue(TimeValue t, void* val, Interval& valid, GetSetMethod method) {
    const Point3 v = ValueAt(t, valid);
    if (method == CTRL_RELATIVE) {
        auto* m = static_cast<Matrix3*>(val);
        *m = TransMatrix(v) * *m;
    } else {
        *static_cast<Point3*>(val) = v;
    }
}

void PositionKeyControl::SetValue(TimeValue t, void* val, int, GetSetMethod method) {
    const Point3 v = *static_cast<Point3*>(val);
    SetValueAt(t, method == CTRL_RELATIVE ? ValueAt(t) + v : v);
}

RefTargetHandle PositionKeyControl::Clone(RemapDir& remap) {
    auto* c = new PositionKeyControl(true);
    CopyKeysTo(c);
    BaseClone(this, c, remap);
    return c;
}

// ----------------------------------------------------------------------------------------------- scale

Class_ID ScaleKeyControl::ClassID() { return HOST_SCALE_CONTROL_CLASS_ID; }

void ScaleKeyControl::GetValue(TimeValue t, void* val, Interval& valid, GetSetMethod method) {
    const Point3 v = ValueAt(t, valid);
    if (method == CTRL_RELATIVE) {
        auto* m = static_cast<Matrix3*>(val);
        *m = ScaleMatrix(v) * *m;
    } else {
        *static_cast<ScaleValue*>(val) = ScaleValue(v);
    }
}

void ScaleKeyControl::SetValue(TimeValue t, void* val, int, GetSetMethod method) {
    const Point3 s = static_cast<ScaleValue*>(val)->s;
    if (method == CTRL_RELATIVE) {
        const Point3 cur = ValueAt(t);
        SetValueAt(t, Point3(cur.x * s.x, cur.y * s.y, cur.z * s.z));
    } else {
        SetValueAt(t, s);
    }
}

RefTargetHandle ScaleKeyControl::Clone(RemapDir& remap) {
    auto* c = new ScaleKeyControl(true);
    CopyKeysTo(c);
    BaseClone(this, c, remap);
    return c;
}

}  // namespace hostrt
