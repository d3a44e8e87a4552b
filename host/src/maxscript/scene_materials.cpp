// Materials and maps in MAXScript: standardMaterial, multiMaterial, bitmapTexture, checker with keyword
// parameters, their properties and sub-materials, the scene material library (sceneMaterials) and the
// material editor slots (meditMaterials).
#include "maxscript/scene_values.h"

#include "imtl.h"
#include "inode.h"
#include "maxapi.h"
#include "maxscript/builtins.h"
#include "maxscript/convert.h"
#include "maxscript/errors.h"
#include "maxscript/interpreter.h"
#include "maxscript/print.h"
#include "scene/materials/multi_material.h"
#include "scene/materials/texmaps.h"

namespace hostrt::mxs {

namespace {

constexpr int kEditorSlots = 24;
const wchar_t* const kStdMapNames[] = {L"diffuseMap", L"specularMap", L"opacityMap", L"bumpMap"};

MtlBase* AsMtlBase(const Value& v, const wchar_t* cls) {
    MtlBase* m = v.Is(Kind::HostObject) ? dynamic_cast<MtlBase*>(v.Anim()) : nullptr;
    if (!m) throw ConversionError(v, cls);
    return m;
}

int StdMapSlot(MtlBase* m, const std::wstring& name) {
    if (m->ClassID() != DMTL_CLASS_ID) return -1;
    for (int i = 0; i < 4; ++i)
        if (EqualsNoCase(kStdMapNames[i], name)) return i;
    return -1;
}

int SubIndex(Mtl* m, const Value& index) {
    const int i = ToInt(index);
    if (i < 1 || i > m->NumSubMtls())
        throw RuntimeError(L"Index out of range: " + PrintForm(index) + L" in " + PrintForm(Value::Host(m)));
    return i - 1;
}

void RegisterMaterialHandler() {
    HostObjectHandler h;
    h.name = L"material";
    h.accepts = [](Animatable* a) { return dynamic_cast<MtlBase*>(a) != nullptr; };
    h.getProperty = [](CallContext& ctx, Animatable* a, const std::wstring& name) -> std::optional<Value> {
        auto* m = dynamic_cast<MtlBase*>(a);
        if (EqualsNoCase(name, L"name")) return Value::String(m->GetName().data());
        if (auto* multi = dynamic_cast<MultiMaterial*>(a); multi && EqualsNoCase(name, L"numsubs"))
            return Value::Int(multi->NumSubMtls());
        if (int slot = StdMapSlot(m, name); slot >= 0) return Value::Host(m->GetSubTexmap(slot));
        if (EqualsNoCase(name, L"effectsChannel")) return Value::Int(int(m->GetGBufID()));
        return GetBlockParam(ctx, a, name);
    };
    h.setProperty = [](CallContext& ctx, Animatable* a, const std::wstring& name, const Value& v) {
        auto* m = dynamic_cast<MtlBase*>(a);
        if (EqualsNoCase(name, L"name")) {
            m->SetName(MSTR(ToText(v).c_str()));
            return true;
        }
        if (auto* multi = dynamic_cast<MultiMaterial*>(a); multi && EqualsNoCase(name, L"numsubs")) {
            const int n = ToInt(v);
            if (n < 1) throw RuntimeError(L"numsubs must be at least 1, got: " + PrintForm(v));
            multi->SetNumSubMtls(n);
            return true;
        }
        if (int slot = StdMapSlot(m, name); slot >= 0) {
            Texmap* map = nullptr;
            if (!v.IsUndefined() && !(map = dynamic_cast<Texmap*>(AsMtlBase(v, L"TextureMap"))))
                throw ConversionError(v, L"TextureMap");
            m->SetSubTexmap(slot, map);
            return true;
        }
        if (EqualsNoCase(name, L"effectsChannel")) {
            m->SetGBufID(ULONG(ToInt(v)));
            return true;
        }
        return SetBlockParam(ctx, a, name, v);
    };
    h.getIndex = [](CallContext&, Animatable* a, const Value& index) -> std::optional<Value> {
        auto* m = dynamic_cast<Mtl*>(a);
        if (!m || m->NumSubMtls() == 0) return std::nullopt;
        return Value::Host(m->GetSubMtl(SubIndex(m, index)));
    };
    h.setIndex = [](CallContext&, Animatable* a, const Value& index, const Value& v) {
        auto* m = dynamic_cast<Mtl*>(a);
        if (!m || m->NumSubMtls() == 0) return false;
        Mtl* sub = v.IsUndefined() ? nullptr : dynamic_cast<Mtl*>(AsMtlBase(v, L"Material"));
        if (!v.IsUndefined() && !sub) throw ConversionError(v, L"Material");
        m->SetSubMtl(SubIndex(m, index), sub);
        return true;
    };
    h.describe = [](Animatable* a) -> std::optional<std::wstring> {
        auto cls = ScriptClassOf(a);
        return std::wstring(dynamic_cast<MtlBase*>(a)->GetName().data()) + L":" +
               (cls ? cls->Cls()->name : std::wstring(a->ClassName().data()));
    };
    h.classOf = [](Animatable* a) { return ScriptClassOf(a); };
    RegisterHostObjectHandler(std::move(h));
}

Value Construct(CallContext& ctx, CallArgs& args, const wchar_t* name, SClass_ID sid, Class_ID cid) {
    if (!args.positional.empty()) throw ArgCountError(name, 0, int(args.positional.size()));
    const Value m = Value::Host(CreateHostInstance(sid, cid, name));
    // numsubs first, so that keyword arguments about the sub-materials find them.
    if (const Value* n = args.Keyword(L"numsubs")) ctx.interp.SetProperty(m, L"numsubs", *n);
    ApplyKeywords(ctx, m, args, {L"numsubs"});
    return m;
}

// The scene material library.
class SceneMaterials : public ExtObject {
public:
    std::wstring ClassName() const override { return L"MaterialLibrary"; }
    std::wstring Describe() const override { return L"#sceneMaterials"; }
    std::optional<Value> GetProperty(CallContext&, const std::wstring& name) override {
        if (EqualsNoCase(name, L"count")) return Value::Int(Lib()->Count());
        return std::nullopt;
    }
    std::optional<Value> GetIndex(CallContext&, const Value& index) override {
        MtlBaseLib* lib = Lib();
        if (index.Is(Kind::String) || index.Is(Kind::Name)) {
            const int i = lib->FindMtlByName(MSTR(index.Text().c_str()));
            return i < 0 ? Value::Undefined() : Value::Host((*lib)[i]);
        }
        const int i = ToInt(index);
        if (i < 1 || i > lib->Count()) throw RuntimeError(L"Index out of range: " + PrintForm(index) +
                                                          L" in sceneMaterials");
        return Value::Host((*lib)[i - 1]);
    }
    std::optional<std::vector<Value>> Items(CallContext&) override {
        std::vector<Value> items;
        MtlBaseLib* lib = Lib();
        for (int i = 0; i < lib->Count(); ++i) items.push_back(Value::Host((*lib)[i]));
        return items;
    }

private:
    // The library brought up to date first: the materials the scene's nodes carry are scene materials.
    static MtlBaseLib* Lib() {
        MtlBaseLib* lib = GetCOREInterface()->GetSceneMtls();
        for (INode* n : SceneNodes())
            if (Mtl* m = n->GetMtl()) lib->Add(m);
        return lib;
    }
};

// The material editor's slots, 1 to 24.
class EditorSlots : public ExtObject {
public:
    std::wstring ClassName() const override { return L"MaterialLibrary"; }
    std::wstring Describe() const override { return L"#meditMaterials"; }
    std::optional<Value> GetProperty(CallContext&, const std::wstring& name) override {
        if (EqualsNoCase(name, L"count")) return Value::Int(kEditorSlots);
        return std::nullopt;
    }
    std::optional<Value> GetIndex(CallContext&, const Value& index) override {
        return Value::Host(GetCOREInterface()->GetMtlSlot(Slot(index)));
    }
    bool SetIndex(CallContext&, const Value& index, const Value& value) override {
        GetCOREInterface()->PutMtlToMtlEditor(AsMtlBase(value, L"Material"), Slot(index));
        return true;
    }
    std::optional<std::vector<Value>> Items(CallContext&) override {
        std::vector<Value> items;
        for (int i = 0; i < kEditorSlots; ++i) items.push_back(Value::Host(GetCOREInterface()->GetMtlSlot(i)));
        return items;
    }

private:
    static int Slot(const Value& index) {
        const int i = ToInt(index);
        if (i < 1 || i > kEditorSlots) throw RuntimeError(L"Index out of range: " + PrintForm(index) +
                                                          L" in meditMaterials (1 to 24)");
        return i - 1;
    }
};

}  // namespace

void RegisterSceneMaterialFunctions() {
    RegisterMaterialHandler();
    struct Entry {
        const wchar_t* name;
        const wchar_t* superclass;
        SClass_ID sid;
        Class_ID cid;
    };
    static const Entry entries[] = {
        {L"StandardMaterial", L"material", MATERIAL_CLASS_ID, DMTL_CLASS_ID},
        {L"MultiMaterial", L"material", MATERIAL_CLASS_ID, MULTI_MATERIAL_CLASS_ID},
        {L"BitmapTexture", L"textureMap", TEXMAP_CLASS_ID, BitmapTexmap::kClassID},
        {L"Checker", L"textureMap", TEXMAP_CLASS_ID, CheckerTexmap::kClassID},
    };
    for (const Entry& e : entries)
        RegisterHostClass(e.name, e.superclass, e.cid, [&e](CallContext& ctx, CallArgs& args) {
            return Construct(ctx, args, e.name, e.sid, e.cid);
        });
    RegisterSystemVariable(L"sceneMaterials", {[] { return Value::Ext(std::make_shared<SceneMaterials>()); }, nullptr});
    RegisterSystemVariable(L"meditMaterials", {[] { return Value::Ext(std::make_shared<EditorSlots>()); }, nullptr});
}

}  // namespace hostrt::mxs
