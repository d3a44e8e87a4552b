// hostrt::mxs::Value: a MAXScript value. Numbers, booleans, points and colours are held by value; strings,
// arrays, bit arrays, functions, classes and native objects are shared (two variables can name one array).
// Host objects are held by their animatable handle, so a deleted object is noticed instead of dereferenced.
#pragma once

#include "bitarray.h"
#include "geom.h"
#include "maxtypes.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

class Animatable;
class FPInterface;

namespace hostrt::mxs {

class Interpreter;
class Value;
class ExtObject;
struct FunctionData;
struct ClassData;

enum class Kind {
    Undefined,
    Unsupplied,  // a keyword parameter the caller left out
    Ok,
    Bool,
    Integer,
    Float,
    Time,  // ticks
    String,
    Name,
    Array,
    BitArray,
    Point2,
    Point3,
    Color,  // components 0..255
    Matrix3,
    Function,
    Class,
    HostObject,  // an Animatable of the host, by handle
    Interface,   // a function-publishing interface
    Ext,         // a native object of the runtime (ExtObject)
};

using ArrayData = std::vector<Value>;

// A function-publishing interface as a script sees it; owner is the object a mixin belongs to (0: none).
struct InterfaceRef {
    FPInterface* fpi = nullptr;
    AnimHandle owner = 0;
};

class Value {
public:
    Value() = default;
    static Value Undefined() { return Value(); }
    static Value Unsupplied() { return Value(Kind::Unsupplied); }
    static Value Ok() { return Value(Kind::Ok); }
    static Value Bool(bool b);
    static Value Int(int i);
    static Value Float(float f);
    static Value Time(TimeValue ticks);
    static Value String(std::wstring s);
    static Value Name(std::wstring s);
    static Value Array(ArrayData items = {});
    static Value Bits(::BitArray bits);
    static Value P2(Point2 p);
    static Value P3(Point3 p);
    static Value Col(AColor c);
    static Value Matrix(const Matrix3& m);
    static Value Function(std::shared_ptr<FunctionData> fn);
    static Value Class(std::shared_ptr<ClassData> cls);
    // A host object; null gives undefined.
    static Value Host(Animatable* anim);
    static Value MakeInterface(FPInterface* fpi, Animatable* owner = nullptr);
    static Value Ext(std::shared_ptr<ExtObject> obj);

    Kind kind() const { return kind_; }
    bool Is(Kind k) const { return kind_ == k; }
    bool IsUndefined() const { return kind_ == Kind::Undefined; }
    bool IsNumber() const { return kind_ == Kind::Integer || kind_ == Kind::Float; }

    bool AsBool() const { return std::get<bool>(data_); }
    int AsInt() const { return std::get<int>(data_); }
    float AsFloat() const { return std::get<float>(data_); }
    // Integer or float as a double (numbers only).
    double Number() const { return kind_ == Kind::Integer ? double(AsInt()) : double(AsFloat()); }
    TimeValue AsTime() const { return std::get<int>(data_); }
    // The text of a string or a name.
    const std::wstring& Text() const { return *std::get<std::shared_ptr<std::wstring>>(data_); }
    std::wstring& MutableText() const { return *std::get<std::shared_ptr<std::wstring>>(data_); }
    ArrayData& Items() const { return *std::get<std::shared_ptr<ArrayData>>(data_); }
    ::BitArray& BitsRef() const { return *std::get<std::shared_ptr<::BitArray>>(data_); }
    const Point2& AsPoint2() const { return std::get<Point2>(data_); }
    const Point3& AsPoint3() const { return std::get<Point3>(data_); }
    const AColor& AsColor() const { return std::get<AColor>(data_); }
    const Matrix3& AsMatrix() const { return *std::get<std::shared_ptr<Matrix3>>(data_); }
    const std::shared_ptr<FunctionData>& Fn() const { return std::get<std::shared_ptr<FunctionData>>(data_); }
    const std::shared_ptr<ClassData>& Cls() const { return std::get<std::shared_ptr<ClassData>>(data_); }
    AnimHandle Handle() const { return std::get<AnimHandle>(data_); }
    // The host object, null when it has been deleted.
    Animatable* Anim() const;
    const InterfaceRef& IfaceRef() const { return std::get<InterfaceRef>(data_); }
    const std::shared_ptr<ExtObject>& ExtObj() const { return std::get<std::shared_ptr<ExtObject>>(data_); }

private:
    explicit Value(Kind k) : kind_(k) {}
    Kind kind_ = Kind::Undefined;
    std::variant<std::monostate, bool, int, float, std::shared_ptr<std::wstring>, std::shared_ptr<ArrayData>,
                 std::shared_ptr<::BitArray>, Point2, Point3, AColor, std::shared_ptr<Matrix3>,
                 std::shared_ptr<FunctionData>, std::shared_ptr<ClassData>, AnimHandle, InterfaceRef,
                 std::shared_ptr<ExtObject>>
        data_;
};

// Arguments of a call: positional ones, then keyword ones in the order written.
struct CallArgs {
    std::vector<Value> positional;
    std::vector<std::pair<std::wstring, Value>> keywords;
    // For native functions: the references (&x) the caller gave, by position (undefined where none); the
    // positional values are what they stand for. A function with an out parameter writes through these.
    std::vector<Value> references;

    // The keyword argument of this name (case-insensitive), null when not given.
    const Value* Keyword(std::wstring_view name) const;
};

// What a native function sees of its caller: the interpreter and where the call is written.
struct CallContext {
    Interpreter& interp;
    int line = 0;
    int column = 0;
};

using NativeFn = std::function<Value(CallContext&, CallArgs&)>;

namespace ast {
struct FnDef;
struct Program;
}
struct Scope;

// A function value: a native function (built-in, registered by the host or a plug-in, or a bound method of
// an object) or a scripted one with the scope it was defined in.
struct FunctionData {
    std::wstring name;
    NativeFn native;
    std::shared_ptr<const ast::FnDef> scripted;
    std::shared_ptr<Scope> closure;
    std::shared_ptr<const ast::Program> program;  // the parsed script the definition lives in
};

// A class value: the classes of built-in values and the classes the host registers (e.g. scene objects).
// A class with a constructor can be called: `box name:"b" length:10`.
struct ClassData {
    std::wstring name;
    std::wstring superclass;  // name of the superclass; empty for Value
    NativeFn construct;
};

// A native object of the runtime that scripts can use like any value: properties, indexing, iteration.
// Every hook answers "not handled" by default (nullopt / false), which becomes the usual script error.
class ExtObject {
public:
    virtual ~ExtObject() = default;
    virtual std::wstring ClassName() const = 0;
    // The text print and format show.
    virtual std::wstring Describe() const { return L"<" + ClassName() + L">"; }
    // The text `as string` answers; nullopt: the text print shows.
    virtual std::optional<std::wstring> AsString() const { return std::nullopt; }
    virtual std::optional<Value> GetProperty(CallContext& ctx, const std::wstring& name) { return std::nullopt; }
    virtual bool SetProperty(CallContext& ctx, const std::wstring& name, const Value& value) { return false; }
    virtual std::optional<Value> GetIndex(CallContext& ctx, const Value& index) { return std::nullopt; }
    virtual bool SetIndex(CallContext& ctx, const Value& index, const Value& value) { return false; }
    // The items `for x in obj` visits; nullopt when the object is not a collection.
    virtual std::optional<std::vector<Value>> Items(CallContext& ctx) { return std::nullopt; }
    // `deleteItem obj index`; false when the object has no such item or deletes none.
    virtual bool DeleteItem(CallContext& ctx, const Value& index) { return false; }
    // Objects that scripts call like functions (a struct definition makes an instance).
    virtual bool Callable() const { return false; }
    virtual std::optional<Value> Call(CallContext& ctx, CallArgs& args) { return std::nullopt; }
    // What classOf answers (a struct instance: its definition); nullopt: a class named after ClassName.
    virtual std::optional<Value> ClassValue() { return std::nullopt; }
    // What copy answers; nullopt: the object itself.
    virtual std::optional<Value> Copy(CallContext& ctx) { return std::nullopt; }
    // The names of the properties scripts can read (for listings such as getPropNames).
    virtual std::vector<std::wstring> PropertyNames() const { return {}; }
    // Whether property assignment to the object goes to each of its items (`$box*.wirecolor = red`).
    virtual bool MapsPropertyAssignment() const { return false; }
};

// Case-insensitive comparison and folding of identifiers.
std::wstring FoldCase(std::wstring_view s);
bool EqualsNoCase(std::wstring_view a, std::wstring_view b);

// Equality as `==` answers it: numbers by value (1 == 1.0), strings case-sensitively, names without regard to
// case, points and colours by value, arrays and other shared values by identity.
bool ValuesEqual(const Value& a, const Value& b);

}  // namespace hostrt::mxs
