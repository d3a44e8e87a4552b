// Time spans in MAXScript: `interval start end` values with `.start`, `.end` and `.duration`, and the scene's
// `animationRange`, read and set.
#include "maxscript/scene_values.h"

#include "maxapi.h"
#include "maxscript/builtins.h"
#include "maxscript/convert.h"
#include "maxscript/errors.h"
#include "maxscript/print.h"

namespace hostrt::mxs {

namespace {

class IntervalObject : public ExtObject {
public:
    explicit IntervalObject(Interval range) : range_(range) {}
    Interval Get() const { return range_; }
    std::wstring ClassName() const override { return L"Interval"; }
    std::wstring Describe() const override {
        return L"(interval " + FormatTime(range_.Start()) + L" " + FormatTime(range_.End()) + L")";
    }
    std::optional<Value> GetProperty(CallContext&, const std::wstring& name) override {
        if (EqualsNoCase(name, L"start")) return Value::Time(range_.Start());
        if (EqualsNoCase(name, L"end")) return Value::Time(range_.End());
        if (EqualsNoCase(name, L"duration")) return Value::Time(range_.End() - range_.Start());
        return std::nullopt;
    }
    bool SetProperty(CallContext&, const std::wstring& name, const Value&) override {
        if (EqualsNoCase(name, L"start") || EqualsNoCase(name, L"end"))
            throw RuntimeError(L"Cannot set " + name + L" of an interval; assign a new interval instead");
        return false;
    }
    std::vector<std::wstring> PropertyNames() const override { return {L"start", L"end", L"duration"}; }

private:
    Interval range_;
};

Value IntervalValue(Interval range) { return Value::Ext(std::make_shared<IntervalObject>(range)); }

Interval IntervalArg(const Value& v) {
    if (v.Is(Kind::Ext))
        if (auto* i = dynamic_cast<IntervalObject*>(v.ExtObj().get())) return i->Get();
    throw ConversionError(v, L"Interval");
}

}  // namespace

void RegisterSceneAnimRangeFunctions() {
    RegisterClass(L"Interval", L"Value", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"Interval", args, 2);
        const TimeValue start = ToTime(args.positional[0]), end = ToTime(args.positional[1]);
        return IntervalValue(Interval(std::min(start, end), std::max(start, end)));
    });
    RegisterSystemVariable(L"animationRange", {[] { return IntervalValue(GetCOREInterface()->GetAnimRange()); },
                                               [](const Value& v) {
                                                   const Interval range = IntervalArg(v);
                                                   if (range.Start() == range.End())
                                                       throw RuntimeError(L"The animation range needs at least "
                                                                          L"two frames, got: " + PrintForm(v));
                                                   GetCOREInterface()->SetAnimRange(range);
                                               }});
}

}  // namespace hostrt::mxs
