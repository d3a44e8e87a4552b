// Interface descriptions (functions, parameters, properties and their checks), FPInterface's dispatch entry,
// static interfaces, and the function-publishing members of ClassDesc.
#include "core/fnpub.h"
#include "core/fnpub_kind.h"
#include "plugapi.h"

#include <string>

namespace {

MSTR Quoted(const MSTR& s) { return MSTR(L"\"") + s + L"\""; }

MSTR IdText(FunctionID fid) { return MSTR(std::to_wstring(fid)); }

}  // namespace

// --- Parameters and functions ------------------------------------------------------------------------------

FPParamDef& FPParamDef::Keyword(FPValue value) {
    keyword = true;
    defaultValue = std::move(value);
    return *this;
}

FPParamDef& FPParamDef::KeywordNone() {
    if (!hostrt::fp::IsPointerKind(hostrt::fp::KindOf(type)))
        throw MAXException(MSTR(L"Keyword parameter ") + Quoted(internal_name) + L" of type " +
                           hostrt::FPTypeName(type) + L" cannot default to none");
    keyword = true;
    defaultValue = FPValue::Null(type);
    return *this;
}

int FPFunctionDef::NumPositional() const {
    int count = 0;
    for (const FPParamDef& p : params)
        if (!p.keyword) ++count;
    return count;
}

const FPParamDef* FPFunctionDef::FindKeyword(const MCHAR* name) const {
    for (const FPParamDef& p : params)
        if (p.keyword && p.internal_name.EqualsNoCase(MSTR(name))) return &p;
    return nullptr;
}

// --- FPInterface -------------------------------------------------------------------------------------------

Interface_ID FPInterface::GetID() {
    FPInterfaceDesc* desc = GetDesc();
    return desc ? desc->ID : Interface_ID(0, 0);
}

FPStatus FPInterface::Invoke(FunctionID fid, TimeValue t, FPValue& result, FPParams* params) {
    // A function reading a parameter that was not passed meets the array's out-of-range exception
    // rather than a null list.
    FPParams none;
    return _dispatch_fn(fid, t, result, params ? params : &none);
}

FunctionID FPInterface::FindFn(const MCHAR* name) {
    FPInterfaceDesc* desc = GetDesc();
    const FPFunctionDef* fn = desc ? desc->GetFnDef(name) : nullptr;
    return fn ? fn->ID : FP_NO_FUNCTION;
}

// --- FPInterfaceDesc ---------------------------------------------------------------------------------------

FPInterfaceDesc::FPInterfaceDesc(Interface_ID id, const MCHAR* internalName, int descriptionStringId,
                                 ClassDesc* classDesc, ULONG interfaceFlags)
    : ID(id), internal_name(internalName), description(descriptionStringId), cd(classDesc), flags(interfaceFlags) {
    if (cd) cd->AddInterface(this);
}

FPInterfaceDesc::FPInterfaceDesc(Interface_ID id, const MCHAR* internalName, int descriptionStringId,
                                 ClassDesc* classDesc, ULONG interfaceFlags,
                                 std::initializer_list<FPFunctionDef> functionTable,
                                 std::initializer_list<FPPropDef> propertyTable)
    : ID(id), internal_name(internalName), description(descriptionStringId), cd(classDesc), flags(interfaceFlags) {
    for (const FPFunctionDef& fn : functionTable) AppendFunction(fn);
    for (const FPPropDef& prop : propertyTable) AppendProperty(prop);
    // Listed on the class descriptor only once it is complete: a refused table leaves nothing behind.
    if (cd) cd->AddInterface(this);
}

void FPInterfaceDesc::checkNewId(FunctionID fid, const MCHAR* what) const {
    const MSTR where = MSTR(L"Interface ") + Quoted(internal_name) + L": ";
    if (fid == FP_NO_FUNCTION)
        throw MAXException(where + L"function id " + IdText(fid) + L" of " + Quoted(what) + L" is reserved");
    for (const FPFunctionDef& fn : functions)
        if (fn.ID == fid)
            throw MAXException(where + L"function id " + IdText(fid) + L" of " + Quoted(what) +
                               L" is already used by " + Quoted(fn.internal_name));
    for (const FPPropDef& prop : props)
        if (prop.getter_ID == fid || prop.setter_ID == fid)
            throw MAXException(where + L"function id " + IdText(fid) + L" of " + Quoted(what) +
                               L" is already used by property " + Quoted(prop.internal_name));
}

void FPInterfaceDesc::checkNewName(const MCHAR* name) const {
    const MSTR where = MSTR(L"Interface ") + Quoted(internal_name) + L": ";
    if (!name || !*name) throw MAXException(where + L"a function or property has no name");
    if (GetFnDef(name) || GetPropDef(name))
        throw MAXException(where + L"the name " + Quoted(name) + L" is published twice");
}

FPInterfaceDesc& FPInterfaceDesc::AppendFunction(FPFunctionDef fn) {
    checkNewName(fn.internal_name.data());
    checkNewId(fn.ID, fn.internal_name.data());
    const MSTR where = MSTR(L"Interface ") + Quoted(internal_name) + L", function " + Quoted(fn.internal_name) + L": ";
    std::vector<FPParamDef> checked;
    bool keywordSeen = false;
    for (FPParamDef& p : fn.params) {
        if (p.internal_name.isNull()) throw MAXException(where + L"a parameter has no name");
        for (const FPParamDef& earlier : checked)
            if (earlier.internal_name.EqualsNoCase(p.internal_name))
                throw MAXException(where + L"parameter " + Quoted(p.internal_name) + L" is listed twice");
        if (!p.keyword && keywordSeen)
            throw MAXException(where + L"positional parameter " + Quoted(p.internal_name) +
                               L" follows a keyword parameter");
        if (p.keyword && !hostrt::fp::ConvertTo(p.defaultValue, p.type))
            throw MAXException(where + L"the default of keyword parameter " + Quoted(p.internal_name) + L" is " +
                               hostrt::FPTypeName(p.defaultValue.type) + L", not " + hostrt::FPTypeName(p.type));
        keywordSeen = keywordSeen || p.keyword;
        checked.push_back(std::move(p));
    }
    fn.params = std::move(checked);
    functions.push_back(std::move(fn));
    return *this;
}

FPInterfaceDesc& FPInterfaceDesc::AppendProperty(FPPropDef prop) {
    checkNewName(prop.internal_name.data());
    checkNewId(prop.getter_ID, prop.internal_name.data());
    if (prop.setter_ID != FP_NO_FUNCTION) {
        if (prop.setter_ID == prop.getter_ID)
            throw MAXException(MSTR(L"Interface ") + Quoted(internal_name) + L": property " +
                               Quoted(prop.internal_name) + L" uses function id " + IdText(prop.getter_ID) +
                               L" to both read and write");
        checkNewId(prop.setter_ID, prop.internal_name.data());
    }
    props.push_back(std::move(prop));
    return *this;
}

const FPFunctionDef* FPInterfaceDesc::GetFnDef(FunctionID fid) const {
    for (const FPFunctionDef& fn : functions)
        if (fn.ID == fid) return &fn;
    return nullptr;
}

const FPFunctionDef* FPInterfaceDesc::GetFnDef(const MCHAR* name) const {
    if (!name) return nullptr;
    const MSTR wanted(name);
    for (const FPFunctionDef& fn : functions)
        if (fn.internal_name.EqualsNoCase(wanted)) return &fn;
    return nullptr;
}

const FPPropDef* FPInterfaceDesc::GetPropDef(const MCHAR* name) const {
    if (!name) return nullptr;
    const MSTR wanted(name);
    for (const FPPropDef& prop : props)
        if (prop.internal_name.EqualsNoCase(wanted)) return &prop;
    return nullptr;
}

// --- FPStaticInterface -------------------------------------------------------------------------------------

FPStaticInterface::FPStaticInterface(Interface_ID id, const MCHAR* internalName, int descriptionStringId,
                                     ClassDesc* classDesc, ULONG interfaceFlags)
    : FPInterfaceDesc(id, internalName, descriptionStringId, classDesc, interfaceFlags) {
    if (flags & FP_CORE) hostrt::RegisterCoreInterface(this);
}

FPStaticInterface::~FPStaticInterface() { hostrt::UnregisterCoreInterface(this); }

// --- ClassDesc ---------------------------------------------------------------------------------------------

FPInterface* ClassDesc::GetInterface(Interface_ID id) {
    for (FPInterface* fpi : interfaces)
        if (fpi && fpi->GetID() == id) return fpi;
    return nullptr;
}

FPInterface* ClassDesc::GetInterface(const MCHAR* name) {
    if (!name) return nullptr;
    const MSTR wanted(name);
    for (FPInterface* fpi : interfaces) {
        FPInterfaceDesc* desc = fpi ? fpi->GetDesc() : nullptr;
        if (desc && desc->internal_name.EqualsNoCase(wanted)) return fpi;
    }
    return nullptr;
}

void ClassDesc::AddInterface(FPInterface* fpi) {
    if (fpi && !interfaces.Contains(fpi)) interfaces.Append(fpi);
}
