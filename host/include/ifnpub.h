// Function publishing: how a plug-in publishes functions and properties to scripts. An interface description
// (FPInterfaceDesc) lists them; an FPInterface runs a call by function id with typed values (FPValue) in a
// parameter list (FPParams). Mixin interfaces are implemented by objects and listed on their class
// descriptor; static core interfaces register themselves when their library loads.
#pragma once

#include "baseinterface.h"
#include "bitarray.h"
#include "geom.h"
#include "paramtype.h"
#include "strclass.h"
#include "tab.h"

#include <cstdint>
#include <initializer_list>
#include <vector>

class ClassDesc;
class INode;
class ReferenceTarget;
class Mtl;
class Texmap;
class Control;
class Object;
class FPInterface;
class FPInterfaceDesc;

using FunctionID = short;
#define FP_NO_FUNCTION ((FunctionID)-1)

// Results of FPInterface::Invoke.
using FPStatus = int;
enum : FPStatus { FPS_FAIL = 0, FPS_NO_SUCH_FUNCTION = 1, FPS_ACTION_DISABLED = 2, FPS_OK = 3 };

// Flags of an interface description.
#define FP_ACTIONS 0x0001
#define FP_MIXIN 0x0002
#define FP_CORE 0x0004  // a static core interface, reachable through GetCOREInterface and as a script global
#define FP_STATIC_METHODS 0x0008
#define FP_TEST_INTERFACE 0x0010

// A typed value crossing the function-publishing bridge. The member that holds the value follows the type:
//   i     TYPE_INT, TYPE_BOOL, TYPE_INDEX, TYPE_ENUM, TYPE_TIMEVALUE, TYPE_RADIOBTN_INDEX
//   f     TYPE_FLOAT, TYPE_ANGLE, TYPE_PCNT_FRAC, TYPE_WORLD, TYPE_COLOR_CHANNEL
//   d, b, i64, dbl, intptr   TYPE_DWORD, TYPE_bool, TYPE_INT64, TYPE_DOUBLE, TYPE_INTPTR
//   s     TYPE_STRING, TYPE_FILENAME, TYPE_NAME          tstr  TYPE_TSTR
//   n     TYPE_INODE                                      r     TYPE_REFTARG (mtl, tex, ctrl, obj likewise)
//   p     TYPE_POINT3   p2 TYPE_POINT2   p4 TYPE_POINT4   clr TYPE_RGBA, TYPE_COLOR   aclr TYPE_FRGBA
//   m     TYPE_MATRIX3  q  TYPE_QUAT     intvl TYPE_INTERVAL                         bits TYPE_BITARRAY
//   i_tab TYPE_INT_TAB, TYPE_INDEX_TAB, TYPE_BOOL_TAB     f_tab TYPE_FLOAT_TAB     s_tab TYPE_STRING_TAB
//   n_tab TYPE_INODE_TAB                                  r_tab TYPE_REFTARG_TAB
//   fpi   TYPE_INTERFACE; any other type: ptr, not owned.
// The by-value, by-reference and by-pointer variants use the member of their base type.
// The value owns what its pointer members point to (strings, points, matrices, bit arrays, tables and the
// strings of a string table) and copies it deeply; nodes, reference targets and interfaces are only referred
// to. A pointer member may be null: that is "none" (a null node, or no bit array/table at all, which is not
// the same as an empty one). Set values through the constructors, Null() or assignment, never by writing an
// owned pointer member directly.
class FPValue {
public:
    FPValue() : i64(0) {}
    explicit FPValue(int v) : type(TYPE_INT), i64(0) { i = v; }
    explicit FPValue(float v) : type(TYPE_FLOAT), i64(0) { f = v; }
    explicit FPValue(bool v) : type(TYPE_BOOL), i64(0) { i = v ? TRUE : FALSE; }
    // An integer-held value of the given type (TYPE_INT, TYPE_BOOL, TYPE_INDEX, TYPE_ENUM, ...).
    FPValue(ParamType2 t, int v);
    // A float-held value of the given type (TYPE_FLOAT, TYPE_ANGLE, TYPE_WORLD, ...).
    FPValue(ParamType2 t, float v);
    // TYPE_STRING (a copy; null is kept as a null string).
    explicit FPValue(const MCHAR* v);
    explicit FPValue(const MSTR& v) : FPValue(v.data()) {}
    explicit FPValue(INode* v) : type(TYPE_INODE), i64(0) { n = v; }
    explicit FPValue(ReferenceTarget* v) : type(TYPE_REFTARG), i64(0) { r = v; }
    // A reference-target-held value of the given type (TYPE_REFTARG, TYPE_MTL, TYPE_TEXMAP, TYPE_CONTROL, ...).
    FPValue(ParamType2 t, ReferenceTarget* v);
    explicit FPValue(FPInterface* v) : type(TYPE_INTERFACE), i64(0) { fpi = v; }
    explicit FPValue(const Point3& v);
    explicit FPValue(const Matrix3& v);
    explicit FPValue(const BitArray& v);
    // Tables: TYPE_INT_TAB, TYPE_INDEX_TAB or TYPE_BOOL_TAB (and their by-value variants) for integers.
    explicit FPValue(const Tab<int>& v, ParamType2 t = TYPE_INT_TAB);
    explicit FPValue(const Tab<float>& v);
    explicit FPValue(const Tab<INode*>& v, ParamType2 t = TYPE_INODE_TAB);
    explicit FPValue(const Tab<ReferenceTarget*>& v);
    explicit FPValue(const Tab<const MCHAR*>& v);  // copies the strings
    // "None" of a pointer-held type: a null node, reference target, bit array, table, string...
    // Throws MAXException for a type that is not held by pointer.
    static FPValue Null(ParamType2 t);

    FPValue(const FPValue& o);
    FPValue(FPValue&& o) noexcept;
    FPValue& operator=(const FPValue& o);
    FPValue& operator=(FPValue&& o) noexcept;
    ~FPValue() { Free(); }

    // Releases what the value owns and makes it TYPE_VOID.
    void Free();
    // Whether the value is held by pointer and that pointer is null.
    bool IsNull() const;

    ParamType2 type = TYPE_VOID;
    union {
        int i;
        float f;
        DWORD d;
        bool b;
        std::int64_t i64;
        double dbl;
        INT_PTR intptr;
        const MCHAR* s;
        MSTR* tstr;
        INode* n;
        ReferenceTarget* r;
        Mtl* mtl;
        Texmap* tex;
        Control* ctrl;
        Object* obj;
        FPInterface* fpi;
        Point3* p;
        Point2* p2;
        Point4* p4;
        Color* clr;
        AColor* aclr;
        Matrix3* m;
        Quat* q;
        Interval* intvl;
        BitArray* bits;
        Tab<int>* i_tab;
        Tab<float>* f_tab;
        Tab<const MCHAR*>* s_tab;
        Tab<INode*>* n_tab;
        Tab<ReferenceTarget*>* r_tab;
        void* ptr;
    };
};

// The parameters of one call, in the order of the function's description (positional, then keyword).
// Reading a parameter that is not there throws MaxSDK::Util::OutOfRangeException.
class FPParams {
public:
    FPParams() = default;
    FPParams(std::initializer_list<FPValue> values) : params(values) {}
    int Count() const { return int(params.length()); }

    MaxSDK::Array<FPValue> params;
};

// One parameter of a published function: its name, its type and, for a keyword parameter, its default.
// A keyword default is the value the C++ function receives when a script leaves the keyword out; it is
// delivered unchanged (an index default is already 0-based).
class FPParamDef {
public:
    FPParamDef(const MCHAR* name, ParamType2 paramType) : internal_name(name), type(paramType) {}
    // Makes this a keyword parameter with the given default.
    FPParamDef& Keyword(FPValue defaultValue);
    // Makes this a keyword parameter whose default is "none": a null pointer of the parameter's type (a null
    // node, bit array or table), unlike an explicitly given empty one.
    FPParamDef& KeywordNone();
    bool IsKeyword() const { return keyword; }

    MSTR internal_name;
    ParamType2 type;
    bool keyword = false;
    FPValue defaultValue;
};

// A published function: id, name, result type and parameters (positional ones first, then keyword ones).
class FPFunctionDef {
public:
    FPFunctionDef() = default;
    FPFunctionDef(FunctionID fid, const MCHAR* name, ParamType2 resultType,
                  std::initializer_list<FPParamDef> parameters = {})
        : ID(fid), internal_name(name), result_type(resultType), params(parameters) {}
    int NumPositional() const;
    int NumKeyword() const { return int(params.size()) - NumPositional(); }
    // The keyword parameter of this name (case-insensitive), null when none.
    const FPParamDef* FindKeyword(const MCHAR* name) const;

    FunctionID ID = FP_NO_FUNCTION;
    MSTR internal_name;
    ParamType2 result_type = TYPE_VOID;
    std::vector<FPParamDef> params;
};

// A published property, read and written through two function ids (setter FP_NO_FUNCTION: read-only).
class FPPropDef {
public:
    FPPropDef() = default;
    FPPropDef(FunctionID getter, FunctionID setter, const MCHAR* name, ParamType2 type)
        : getter_ID(getter), setter_ID(setter), internal_name(name), prop_type(type) {}
    bool IsReadOnly() const { return setter_ID == FP_NO_FUNCTION; }

    FunctionID getter_ID = FP_NO_FUNCTION;
    FunctionID setter_ID = FP_NO_FUNCTION;
    MSTR internal_name;
    ParamType2 prop_type = TYPE_VOID;
};

// An interface that scripts can call. Invoke hands the call to _dispatch_fn, which a published interface
// overrides; an id it does not know answers FPS_NO_SUCH_FUNCTION. Exceptions thrown by the dispatch pass
// through Invoke unchanged.
class FPInterface : public BaseInterface {
public:
    virtual FPInterfaceDesc* GetDesc() = 0;
    Interface_ID GetID() override;

    // Calls function fid at time t. A null params is treated as an empty parameter list.
    virtual FPStatus Invoke(FunctionID fid, TimeValue t, FPValue& result, FPParams* params = nullptr);
    FPStatus Invoke(FunctionID fid, FPValue& result, FPParams* params = nullptr) {
        return Invoke(fid, TimeValue(0), result, params);
    }
    FPStatus Invoke(FunctionID fid, FPParams* params = nullptr) {
        FPValue ignored;
        return Invoke(fid, TimeValue(0), ignored, params);
    }
    // The id of the function of this name (case-insensitive), FP_NO_FUNCTION when none.
    FunctionID FindFn(const MCHAR* name);

protected:
    virtual FPStatus _dispatch_fn(FunctionID fid, TimeValue t, FPValue& result, FPParams* p) {
        return FPS_NO_SUCH_FUNCTION;
    }
};

// The description of an interface: identifier, internal name (the script name), description string id
// (0 = none), owning class descriptor (or none), flags, functions and properties. Given a class descriptor,
// the description adds itself to that descriptor's interfaces (so a static description must be defined after
// its static class descriptor, in the same file). The tables are given to the constructor
// or appended afterwards (in the constructor of a derived interface, for example):
//   static FPInterfaceDesc mixinDesc(MIXIN_ID, L"Mixin", 0, &theClassDesc, FP_MIXIN,
//       {FPFunctionDef(fnReload, L"Reload", TYPE_INT),
//        FPFunctionDef(fnPrint, L"PrintData", TYPE_VOID,
//                      {FPParamDef(L"mode", TYPE_INDEX).Keyword(FPValue(TYPE_INDEX, 0))})});
//   AppendFunction(fnAdd, L"AddVandrel", TYPE_INODE,
//                  {FPParamDef(L"fileName", TYPE_STRING), FPParamDef(L"load", TYPE_BOOL).Keyword(FPValue(true))})
//       .AppendProperty(fnGetWarn, fnSetWarn, L"ShowDuplicatedNamesWarning", TYPE_BOOL);
// A malformed entry (duplicate id or name, positional parameter after a keyword one, default of another
// type) throws MAXException naming the interface and the entry.
class FPInterfaceDesc : public FPInterface {
public:
    FPInterfaceDesc(Interface_ID id, const MCHAR* internalName, int descriptionStringId = 0,
                    ClassDesc* classDesc = nullptr, ULONG interfaceFlags = 0);
    FPInterfaceDesc(Interface_ID id, const MCHAR* internalName, int descriptionStringId, ClassDesc* classDesc,
                    ULONG interfaceFlags, std::initializer_list<FPFunctionDef> functionTable,
                    std::initializer_list<FPPropDef> propertyTable = {});
    FPInterfaceDesc(const FPInterfaceDesc&) = delete;
    FPInterfaceDesc& operator=(const FPInterfaceDesc&) = delete;

    FPInterfaceDesc& AppendFunction(FPFunctionDef fn);
    FPInterfaceDesc& AppendFunction(FunctionID fid, const MCHAR* name, ParamType2 resultType,
                                    std::initializer_list<FPParamDef> params = {}) {
        return AppendFunction(FPFunctionDef(fid, name, resultType, params));
    }
    // setter FP_NO_FUNCTION makes the property read-only.
    FPInterfaceDesc& AppendProperty(FPPropDef prop);
    FPInterfaceDesc& AppendProperty(FunctionID getter, FunctionID setter, const MCHAR* name, ParamType2 type) {
        return AppendProperty(FPPropDef(getter, setter, name, type));
    }

    FPInterfaceDesc* GetDesc() override { return this; }
    Interface_ID GetID() override { return ID; }

    // Lookups (names case-insensitive); null when absent. Valid until the next Append.
    const FPFunctionDef* GetFnDef(FunctionID fid) const;
    const FPFunctionDef* GetFnDef(const MCHAR* name) const;
    const FPPropDef* GetPropDef(const MCHAR* name) const;

    Interface_ID ID;
    MSTR internal_name;
    int description = 0;
    ClassDesc* cd = nullptr;
    ULONG flags = 0;
    std::vector<FPFunctionDef> functions;
    std::vector<FPPropDef> props;

private:
    void checkNewId(FunctionID fid, const MCHAR* what) const;
    void checkNewName(const MCHAR* name) const;
};

// An interface an object implements itself (a mixin). Its description, listed on the object's class
// descriptor, names it; the object answers it from GetInterface(Interface_ID). The implementing class
// overrides GetDesc() and _dispatch_fn.
class FPMixinInterface : public FPInterface {};

// A static interface: one object that is both description and implementation. With FP_CORE in its flags
// it registers itself as a core interface when it is constructed (so a static one registers when its
// library loads) and unregisters when it is destroyed.
class FPStaticInterface : public FPInterfaceDesc {
public:
    FPStaticInterface(Interface_ID id, const MCHAR* internalName, int descriptionStringId = 0,
                      ClassDesc* classDesc = nullptr, ULONG interfaceFlags = FP_CORE);
    ~FPStaticInterface() override;
};

// The core interfaces: registration (the first interface registered with an id wins) and lookup by id.
void RegisterCOREInterface(FPInterface* fpi);
// The core interface with this id, null when none is registered.
FPInterface* GetCOREInterface(Interface_ID id);
