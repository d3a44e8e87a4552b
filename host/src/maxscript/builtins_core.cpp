// Core built-ins: printing, classes and class tests, errors (throw, getCurrentException), execute, copy,
// the value constructors (point3, color, matrix3) and the built-in max commands.
#include "maxscript/builtins.h"

#include "classids.h"
#include "core/class_directory.h"
#include "hold.h"
#include "maxapi.h"
#include "maxscript/convert.h"
#include "maxscript/definitions.h"
#include "maxscript/errors.h"
#include "maxscript/interpreter.h"
#include "maxscript/print.h"
#include "maxscript/scene_values.h"
#include "maxscript/streams.h"
#include "platform/listener_capture.h"
#include "ref.h"

#include <mutex>

namespace hostrt::mxs {

void ListenerWrite(const std::wstring& text) { hostrt::Listener::Instance().Write(text); }

namespace {

const wchar_t* SuperclassOfHost(SClass_ID sid) {
    switch (sid) {
    case GEOMOBJECT_CLASS_ID: return L"GeometryClass";
    case CAMERA_CLASS_ID: return L"camera";
    case LIGHT_CLASS_ID: return L"light";
    case SHAPE_CLASS_ID: return L"shape";
    case HELPER_CLASS_ID: return L"helper";
    case SYSTEM_CLASS_ID: return L"system";
    case OSM_CLASS_ID: return L"modifier";
    case WSM_CLASS_ID: return L"SpacewarpModifier";
    case WSM_OBJECT_CLASS_ID: return L"SpacewarpObject";
    case MATERIAL_CLASS_ID: return L"material";
    case TEXMAP_CLASS_ID: return L"textureMap";
    case REF_MAKER_CLASS_ID: return L"ReferenceMaker";
    case CTRL_FLOAT_CLASS_ID: return L"FloatController";
    case CTRL_POINT3_CLASS_ID: return L"Point3Controller";
    case CTRL_POSITION_CLASS_ID: return L"PositionController";
    case CTRL_ROTATION_CLASS_ID: return L"RotationController";
    case CTRL_SCALE_CLASS_ID: return L"ScaleController";
    case CTRL_MATRIX3_CLASS_ID: return L"Matrix3Controller";
    default: return L"ReferenceTarget";
    }
}

// A class known by name; made on first sight for classes of host and native objects.
Value ClassNamed(const std::wstring& name, const std::wstring& superclass) {
    if (auto cls = FindClass(name)) return *cls;
    return RegisterClass(name, superclass);
}

// A text stream in memory: `stringStream "text"`, written by `format ... to:` and `print ... to:`.
class StringStreamObject : public TextStream {
public:
    explicit StringStreamObject(std::wstring text) : text_(std::move(text)) {}
    std::wstring ClassName() const override { return L"StringStream"; }
    std::wstring Describe() const override { return L"StringStream:" + PrintForm(Value::String(text_)); }
    std::optional<std::wstring> AsString() const override { return text_; }
    std::optional<Value> GetProperty(CallContext&, const std::wstring& name) override {
        if (EqualsNoCase(name, L"count")) return Value::Int(int(text_.size()));
        return std::nullopt;
    }
    void Write(const std::wstring& text) override { text_ += text; }

private:
    std::wstring text_;
};

// Writes to the `to:` stream when one is given, else to the listener.
void WriteOut(const CallArgs& args, const std::wstring& text) {
    if (TextStream* stream = TargetStream(args)) stream->Write(text);
    else ListenerWrite(text);
}

Value MakeStringStream(CallContext&, CallArgs& args) {
    CheckArgCount(L"stringStream", args, 1);
    return Value::Ext(std::make_shared<StringStreamObject>(ToText(args.positional[0])));
}

Value Print(CallContext&, CallArgs& args) {
    CheckArgCount(L"print", args, 1);
    WriteOut(args, PrintForm(args.positional[0]) + L"\n");
    return args.positional[0];
}

Value Format(CallContext&, CallArgs& args) {
    if (args.positional.empty()) throw ArgCountRangeError(L"format", 1, 1 << 20, 0);
    const std::wstring fmt = ToText(args.positional[0]);
    std::wstring out;
    std::size_t next = 1;
    for (std::size_t i = 0; i < fmt.size(); ++i) {
        if (fmt[i] == L'\\' && i + 1 < fmt.size() && fmt[i + 1] == L'%') {
            out += L'%';
            ++i;
        } else if (fmt[i] == L'%') {
            if (next >= args.positional.size())
                throw RuntimeError(L"format: more % in \"" + fmt + L"\" than arguments given");
            out += DisplayForm(args.positional[next++]);
        } else {
            out += fmt[i];
        }
    }
    WriteOut(args, out);
    return Value::Ok();
}

Value Throw(CallContext& ctx, CallArgs& args) {
    if (args.positional.empty()) {
        if (const ScriptError* current = ctx.interp.CurrentException()) throw ScriptError(*current);
        throw RuntimeError(L"throw() with no arguments is only allowed inside catch");
    }
    CheckArgCount(L"throw", args, 1, 2);
    std::wstring message = DisplayForm(args.positional[0]);
    std::wstring text = message;
    if (args.positional.size() == 2) text += L" " + PrintForm(args.positional[1]);
    ScriptError e = RuntimeError(text);
    e.SetMessage(message);
    throw e;
}

Value Copy(CallContext& ctx, CallArgs& args) {
    CheckArgCount(L"copy", args, 1);
    const Value& v = args.positional[0];
    switch (v.kind()) {
    case Kind::Array: return Value::Array(v.Items());
    case Kind::String: return Value::String(v.Text());
    case Kind::BitArray: return Value::Bits(v.BitsRef());
    case Kind::Ext:
        if (auto copy = v.ExtObj()->Copy(ctx)) return *copy;
        return v;
    default: return v;
    }
}

float Component(const Value& v) { return ToFloat(v); }

void RegisterValueClasses() {
    RegisterClass(L"Value", L"");
    for (const wchar_t* name : {L"Number", L"String", L"Name", L"Array", L"BitArray", L"BooleanClass",
                                L"UndefinedClass", L"UnsuppliedClass", L"OkClass", L"MAXScriptFunction", L"Class",
                                L"Interface", L"MixinInterface", L"MAXWrapper"})
        RegisterClass(name, L"Value");
    for (const wchar_t* name : {L"Integer", L"Float", L"Time"}) RegisterClass(name, L"Number");
    for (const wchar_t* name : {L"ReferenceMaker", L"ReferenceTarget"}) RegisterClass(name, L"MAXWrapper");
    for (const wchar_t* name : {L"GeometryClass", L"camera", L"light", L"shape", L"helper", L"system", L"modifier",
                                L"SpacewarpModifier", L"SpacewarpObject", L"material", L"textureMap",
                                L"FloatController", L"Point3Controller", L"PositionController",
                                L"RotationController", L"ScaleController", L"Matrix3Controller"})
        RegisterClass(name, L"MAXWrapper");

    RegisterClass(L"Point3", L"Value", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"Point3", args, 3);
        return Value::P3(Point3(Component(args.positional[0]), Component(args.positional[1]),
                                Component(args.positional[2])));
    });
    RegisterClass(L"Point2", L"Value", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"Point2", args, 2);
        return Value::P2(Point2(Component(args.positional[0]), Component(args.positional[1])));
    });
    RegisterClass(L"Color", L"Value", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"Color", args, 3, 4);
        const auto& p = args.positional;
        return Value::Col(AColor(Component(p[0]), Component(p[1]), Component(p[2]),
                                 p.size() == 4 ? Component(p[3]) : 255.f));
    });
    RegisterClass(L"Matrix3", L"Value", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"Matrix3", args, 1, 4);
        const auto& p = args.positional;
        if (p.size() == 1) {
            const int which = ToInt(p[0]);
            if (which != 0 && which != 1) throw RuntimeError(L"Matrix3 wants 0 (zero) or 1 (identity), got: " +
                                                             PrintForm(p[0]));
            return Value::Matrix(Matrix3(which == 1 ? TRUE : FALSE));
        }
        if (p.size() != 4) throw ArgCountError(L"Matrix3", 4, int(p.size()));
        Matrix3 m(ToPoint3(p[0]), ToPoint3(p[1]), ToPoint3(p[2]), ToPoint3(p[3]));
        return Value::Matrix(m);
    });
}

}  // namespace

TextStream* TargetStream(const CallArgs& args) {
    const Value* to = args.Keyword(L"to");
    if (!to || to->Is(Kind::Unsupplied) || to->Is(Kind::Undefined)) return nullptr;
    auto* stream = to->Is(Kind::Ext) ? dynamic_cast<TextStream*>(to->ExtObj().get()) : nullptr;
    if (!stream) throw ConversionError(*to, L"Stream");
    return stream;
}

std::optional<Value> FindDescriptorClass(const std::wstring& name) {
    for (const hostrt::ClassEntry& entry : hostrt::ClassDirectory::Instance().Entries()) {
        const MCHAR* className = entry.desc ? entry.desc->ClassName() : nullptr;
        if (className && EqualsNoCase(className, name))
            return ClassNamed(className, SuperclassOfHost(entry.desc->SuperClassID()));
    }
    return std::nullopt;
}

Value ClassOf(const Value& v) {
    if (v.Is(Kind::HostObject)) {
        Animatable* anim = v.Anim();
        if (!anim) throw RuntimeError(L"Attempt to access deleted scene object");
        for (const HostObjectHandler* h : HostObjectHandlers()) {
            if (!h->classOf || (h->accepts && !h->accepts(anim))) continue;
            if (auto cls = h->classOf(anim)) return *cls;
        }
        return ClassNamed(anim->ClassName().str(), SuperclassOfHost(anim->SuperClassID()));
    }
    if (v.Is(Kind::Ext))
        if (auto cls = v.ExtObj()->ClassValue()) return *cls;
    return ClassNamed(ClassNameOf(v), L"Value");
}

Value SuperClassOf(const Value& classOrValue) {
    const Value cls = classOrValue.Is(Kind::Class) ? classOrValue : ClassOf(classOrValue);
    if (!cls.Is(Kind::Class)) return ClassNamed(L"Value", L"");
    const std::wstring& super = cls.Cls()->superclass;
    if (super.empty()) return Value::Undefined();
    return ClassNamed(super, L"Value");
}

bool IsKindOf(const Value& v, const Value& cls) {
    // A struct definition is the class of its instances.
    if (cls.Is(Kind::Ext) && cls.ExtObj()->Callable()) return ValuesEqual(ClassOf(v), cls);
    if (!cls.Is(Kind::Class)) throw TypeError(L"isKindOf needs a class, got: " + PrintForm(cls));
    Value c = ClassOf(v);
    for (int guard = 0; guard < 64 && c.Is(Kind::Class); ++guard) {
        if (EqualsNoCase(c.Cls()->name, cls.Cls()->name)) return true;
        if (c.Cls()->superclass.empty()) break;
        c = ClassNamed(c.Cls()->superclass, L"Value");
    }
    return false;
}

void RegisterCoreBuiltins() {
    RegisterValueClasses();
    RegisterGlobalFunction(L"print", Print);
    RegisterGlobalFunction(L"format", Format);
    RegisterGlobalFunction(L"stringStream", MakeStringStream);
    RegisterGlobalFunction(L"throw", Throw);
    RegisterGlobalFunction(L"copy", Copy);
    RegisterGlobalFunction(L"classOf", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"classOf", args, 1);
        return ClassOf(args.positional[0]);
    });
    RegisterGlobalFunction(L"superClassOf", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"superClassOf", args, 1);
        return SuperClassOf(args.positional[0]);
    });
    RegisterGlobalFunction(L"isKindOf", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"isKindOf", args, 2);
        return Value::Bool(IsKindOf(args.positional[0], args.positional[1]));
    });
    RegisterGlobalFunction(L"getCurrentException", [](CallContext& ctx, CallArgs& args) {
        CheckArgCount(L"getCurrentException", args, 0);
        const ScriptError* e = ctx.interp.CurrentException();
        return e ? Value::String(L"-- " + e->Text()) : Value::Undefined();
    });
    RegisterGlobalFunction(L"execute", [](CallContext& ctx, CallArgs& args) {
        CheckArgCount(L"execute", args, 1);
        return ctx.interp.Execute(ToText(args.positional[0]));
    });
    RegisterGlobalFunction(L"isDeleted", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"isDeleted", args, 1);
        const Value& v = args.positional[0];
        if (!v.Is(Kind::HostObject)) throw ConversionError(v, L"MAXWrapper");
        return Value::Bool(v.Anim() == nullptr);
    });
    // The time scripts evaluate at (`at time`, else the slider), and the time slider itself.
    RegisterSystemVariable(L"currentTime", {[] { return Value::Time(Interpreter::Current().Time()); }, nullptr});
    RegisterSystemVariable(L"sliderTime", {[] { return Value::Time(GetCOREInterface()->GetTime()); },
                                           [](const Value& v) { GetCOREInterface()->SetTime(ToTime(v)); }});
    RegisterMaxCommand(L"undo", [](CallContext&) { theHold.Undo(); });
    RegisterMaxCommand(L"redo", [](CallContext&) { theHold.Redo(); });
}

void RegisterBuiltins() {
    static std::once_flag once;
    std::call_once(once, [] {
        RegisterCoreBuiltins();
        RegisterDiscoveryBuiltins();  // before the scene's handlers, which describe their objects first
        RegisterStringBuiltins();
        RegisterArrayBuiltins();
        RegisterMathBuiltins();
        RegisterFileBuiltins();
        RegisterFileOperationBuiltins();
        RegisterAssertBuiltins();
        RegisterVectorBuiltins();
        RegisterDictionaryBuiltins();
        RegisterBitBuiltins();
        RegisterFileStreamBuiltins();
        RegisterEnvironmentBuiltins();
        RegisterCallbackBuiltins();
        RegisterSceneBuiltins();
        RegisterNameBuiltins();
        RegisterBinaryStreamBuiltins();
        RegisterFileDialogBuiltins();
        RegisterDefinitionBuiltins();
    });
}

}  // namespace hostrt::mxs
