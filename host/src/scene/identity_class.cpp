// The configurable identity class: one template over the SDK base its superclass calls for, a descriptor per
// (superclass, class id) pair made on demand, and the saved configuration.
#include "scene/identity_class.h"

#include "baseinterface.h"
#include "core/class_directory.h"
#include "imtl.h"
#include "ioapi.h"
#include "maxexception.h"
#include "object.h"

#include <algorithm>
#include <map>
#include <memory>
#include <vector>

namespace hostrt {

namespace {

constexpr USHORT kRefsChunk = 0x0001;        // u32 number of references
constexpr USHORT kSubAnimChunk = 0x0002;     // i32 reference index, then the name (one chunk per sub-anim)
constexpr USHORT kNumericChunk = 0x0003;     // u32 count, u32 ids
constexpr USHORT kInterfaceChunk = 0x0004;   // u32 count, (u32, u32) ids
constexpr USHORT kFlagsChunk = 0x0005;       // u32: bit 0 anim copy, bit 1 leaf, bit 2 not replaceable
// Most references or interfaces an identity object accepts from a file.
constexpr ULONG kMaxCount = 1u << 20;

// The answer to an interface query: a dummy that knows its id.
class DummyInterface : public BaseInterface {
public:
    explicit DummyInterface(Interface_ID id) : id_(id) {}
    Interface_ID GetID() override { return id_; }

private:
    Interface_ID id_;
};

struct Config {
    std::vector<ULONG> numeric;
    std::vector<std::unique_ptr<DummyInterface>> interfaces;
    std::vector<std::pair<int, MSTR>> subs;
    bool canCopyAnim = true;
    bool leaf = true;
    bool replaceable = true;
};

template <class Base> class Identity : public Base, public IdentityClass {
public:
    Identity(SClass_ID sclass, Class_ID cid, ClassDesc* desc) : sclass_(sclass), cid_(cid), desc_(desc) {}

    Class_ID ClassID() override { return cid_; }
    SClass_ID SuperClassID() override { return sclass_; }
    void GetClassName(MSTR& s, bool = true) const override { s = desc_->ClassName(); }
    BOOL CanCopyAnim() override { return cfg_.canCopyAnim; }

    void* GetInterface(ULONG id) override {
        return std::find(cfg_.numeric.begin(), cfg_.numeric.end(), id) != cfg_.numeric.end() ? &numericDummy_ : nullptr;
    }
    BaseInterface* GetInterface(Interface_ID id) override {
        for (auto& i : cfg_.interfaces)
            if (i->GetID() == id) return i.get();
        return nullptr;
    }

    int NumRefs() override { return int(refs_.size()); }
    RefTargetHandle GetReference(int i) override { return i >= 0 && i < NumRefs() ? refs_[std::size_t(i)] : nullptr; }
    void SetReference(int i, RefTargetHandle t) override {
        if (i >= 0 && i < NumRefs()) refs_[std::size_t(i)] = t;
    }
    int NumSubs() override { return int(cfg_.subs.size()); }
    Animatable* SubAnim(int i) override { return i >= 0 && i < NumSubs() ? GetReference(cfg_.subs[i].first) : nullptr; }
    MSTR SubAnimName(int i, bool = true) override { return i >= 0 && i < NumSubs() ? cfg_.subs[i].second : MSTR(); }
    int SubNumToRefNum(int i) override { return i >= 0 && i < NumSubs() ? cfg_.subs[i].first : -1; }

    // ---- IdentityClass.
    void AddInterface(ULONG id) override {
        if (!GetInterface(id)) cfg_.numeric.push_back(id);
    }
    void AddInterface(Interface_ID id) override {
        if (!GetInterface(id)) cfg_.interfaces.push_back(std::make_unique<DummyInterface>(id));
    }
    void RemoveInterface(ULONG id) override {
        cfg_.numeric.erase(std::remove(cfg_.numeric.begin(), cfg_.numeric.end(), id), cfg_.numeric.end());
    }
    void RemoveInterface(Interface_ID id) override {
        auto& v = cfg_.interfaces;
        v.erase(std::remove_if(v.begin(), v.end(), [&](auto& i) { return i->GetID() == id; }), v.end());
    }
    void SetNumRefs(int n) override {
        n = std::max(n, 0);
        for (int i = NumRefs() - 1; i >= n; --i) this->DeleteReference(i);
        refs_.resize(std::size_t(n), nullptr);
    }
    int AddSubAnim(int refIndex, const MSTR& name) override {
        cfg_.subs.emplace_back(refIndex, name);
        return NumSubs() - 1;
    }
    void SetCanCopyAnim(bool on) override { cfg_.canCopyAnim = on; }
    void SetIsLeaf(bool on) override { cfg_.leaf = on; }
    void SetIsReplaceable(bool on) override { cfg_.replaceable = on; }

    // ---- Persistence and cloning.
    IOResult Save(ISave* s) override {
        ULONG n = 0;
        auto chunk = [&](USHORT id, const void* data, ULONG size) {
            s->BeginChunk(id);
            const IOResult r = s->Write(data, size, &n);
            s->EndChunk();
            return r;
        };
        const ULONG refs = ULONG(refs_.size());
        IOResult r = chunk(kRefsChunk, &refs, sizeof refs);
        for (auto& [ref, name] : cfg_.subs) {
            if (r != IO_OK) break;
            s->BeginChunk(kSubAnimChunk);
            r = s->Write(&ref, sizeof ref, &n);
            if (r == IO_OK) r = s->WriteWString(name);
            s->EndChunk();
        }
        std::vector<ULONG> numeric{ULONG(cfg_.numeric.size())};
        numeric.insert(numeric.end(), cfg_.numeric.begin(), cfg_.numeric.end());
        if (r == IO_OK) r = chunk(kNumericChunk, numeric.data(), ULONG(numeric.size() * sizeof(ULONG)));
        std::vector<ULONG> ids{ULONG(cfg_.interfaces.size())};
        for (auto& i : cfg_.interfaces) {
            ids.push_back(i->GetID().PartA());
            ids.push_back(i->GetID().PartB());
        }
        if (r == IO_OK) r = chunk(kInterfaceChunk, ids.data(), ULONG(ids.size() * sizeof(ULONG)));
        const ULONG flags = (cfg_.canCopyAnim ? 1u : 0u) | (cfg_.leaf ? 2u : 0u) | (cfg_.replaceable ? 0u : 4u);
        if (r == IO_OK) r = chunk(kFlagsChunk, &flags, sizeof flags);
        return r;
    }

    IOResult Load(ILoad* l) override {
        IOResult res;
        ULONG got = 0;
        auto readCount = [&](ULONG& n, ULONG itemSize) {
            return l->Read(&n, sizeof n, &got) == IO_OK && n <= kMaxCount && l->CurChunkLength() == sizeof n + n * itemSize;
        };
        while ((res = l->OpenChunk()) == IO_OK) {
            bool ok = true;
            ULONG n = 0;
            switch (l->CurChunkID()) {
            case kRefsChunk:
                ok = l->Read(&n, sizeof n, &got) == IO_OK && n <= kMaxCount;
                if (ok) refs_.assign(n, nullptr);
                break;
            case kSubAnimChunk: {
                int ref = 0;
                MSTR name;
                ok = l->Read(&ref, sizeof ref, &got) == IO_OK && l->ReadWStringChunk(name) == IO_OK;
                if (ok) cfg_.subs.emplace_back(ref, name);
                break;
            }
            case kNumericChunk:
                ok = readCount(n, sizeof(ULONG));
                cfg_.numeric.assign(ok ? n : 0, 0);
                for (ULONG& id : cfg_.numeric)
                    if (ok) ok = l->Read(&id, sizeof id, &got) == IO_OK;
                break;
            case kInterfaceChunk:
                ok = readCount(n, 2 * sizeof(ULONG));
                for (ULONG k = 0; ok && k < n; ++k) {
                    ULONG ab[2] = {};
                    ok = l->Read(ab, sizeof ab, &got) == IO_OK;
                    if (ok) AddInterface(Interface_ID(ab[0], ab[1]));
                }
                break;
            case kFlagsChunk:
                ok = l->Read(&n, sizeof n, &got) == IO_OK;
                cfg_.canCopyAnim = (n & 1u) != 0;
                cfg_.leaf = (n & 2u) != 0;
                cfg_.replaceable = (n & 4u) == 0;
                break;
            default: break;
            }
            l->CloseChunk();
            if (!ok) return IO_ERROR;
        }
        return res == IO_END ? IO_OK : res;
    }

    RefTargetHandle Clone(RemapDir& remap) override {
        auto* c = static_cast<Identity*>(IdentityClass::Make(sclass_, cid_));
        c->cfg_.numeric = cfg_.numeric;
        for (auto& i : cfg_.interfaces) c->AddInterface(i->GetID());
        c->cfg_.subs = cfg_.subs;
        c->cfg_.canCopyAnim = cfg_.canCopyAnim;
        c->cfg_.leaf = cfg_.leaf;
        c->cfg_.replaceable = cfg_.replaceable;
        c->SetNumRefs(NumRefs());
        this->BaseClone(this, c, remap);
        for (int i = 0; i < NumRefs(); ++i)
            if (refs_[std::size_t(i)]) c->ReplaceReference(i, remap.CloneRef(refs_[std::size_t(i)]));
        return c;
    }

protected:
    SClass_ID sclass_;
    Class_ID cid_;
    ClassDesc* desc_;
    Config cfg_;
    std::vector<RefTargetHandle> refs_;
    char numericDummy_ = 0;
};

// Controllers answer values of their kind: nothing changes in relative mode, a neutral value in absolute mode.
class IdentityControl : public Identity<Control> {
public:
    using Identity::Identity;
    void GetValue(TimeValue, void* val, Interval& valid, GetSetMethod method) override {
        valid = FOREVER;
        if (method == CTRL_RELATIVE || !val) return;
        switch (sclass_) {
        case CTRL_FLOAT_CLASS_ID: *static_cast<float*>(val) = 0.f; break;
        case CTRL_POINT3_CLASS_ID:
        case CTRL_POSITION_CLASS_ID: *static_cast<Point3*>(val) = Point3(); break;
        case CTRL_ROTATION_CLASS_ID: *static_cast<Quat*>(val) = Quat(); break;
        case CTRL_SCALE_CLASS_ID: *static_cast<ScaleValue*>(val) = ScaleValue(); break;
        case CTRL_MATRIX3_CLASS_ID: *static_cast<Matrix3*>(val) = Matrix3(); break;
        default: break;
        }
    }
    void SetValue(TimeValue, void*, int, GetSetMethod) override {}
    BOOL IsLeaf() override { return cfg_.leaf; }
    BOOL IsReplaceable() override { return cfg_.replaceable; }
    // Controllers answer I_CONTROL whatever the configured set says.
    void* GetInterface(ULONG id) override { return id == I_CONTROL ? this : Identity::GetInterface(id); }
    using Identity::GetInterface;
};

class IdentityDesc : public ClassDesc {
public:
    IdentityDesc(SClass_ID sc, Class_ID cid, MSTR name) : sc_(sc), cid_(cid), name_(std::move(name)) {}
    int IsPublic() override { return FALSE; }
    void* Create(BOOL) override { return static_cast<Animatable*>(make()); }
    const MCHAR* ClassName() override { return name_.data(); }
    SClass_ID SuperClassID() override { return sc_; }
    Class_ID ClassID() override { return cid_; }
    const MCHAR* Category() override { return L""; }

    ReferenceTarget* make() {
        switch (sc_) {
        case CTRL_FLOAT_CLASS_ID:
        case CTRL_POINT3_CLASS_ID:
        case CTRL_MATRIX3_CLASS_ID:
        case CTRL_POSITION_CLASS_ID:
        case CTRL_ROTATION_CLASS_ID:
        case CTRL_SCALE_CLASS_ID:
        case CTRL_POINT4_CLASS_ID: return new IdentityControl(sc_, cid_, this);
        case GEOMOBJECT_CLASS_ID:
        case CAMERA_CLASS_ID:
        case LIGHT_CLASS_ID:
        case SHAPE_CLASS_ID:
        case HELPER_CLASS_ID:
        case SYSTEM_CLASS_ID:
        case WSM_OBJECT_CLASS_ID: return new Identity<Object>(sc_, cid_, this);
        case OSM_CLASS_ID:
        case WSM_CLASS_ID: return new Identity<Modifier>(sc_, cid_, this);
        case MATERIAL_CLASS_ID: return new Identity<Mtl>(sc_, cid_, this);
        case TEXMAP_CLASS_ID: return new Identity<Texmap>(sc_, cid_, this);
        case CUST_ATTRIB_CLASS_ID: return new Identity<CustAttrib>(sc_, cid_, this);
        default: return new Identity<ReferenceTarget>(sc_, cid_, this);
        }
    }

private:
    SClass_ID sc_;
    Class_ID cid_;
    MSTR name_;
};

std::map<std::pair<SClass_ID, Class_ID>, std::unique_ptr<IdentityDesc>>& descriptors() {
    static auto* all = new std::map<std::pair<SClass_ID, Class_ID>, std::unique_ptr<IdentityDesc>>();
    return *all;  // registered descriptors must outlive every object
}

IdentityDesc* declare(SClass_ID sclass, Class_ID cid, const MCHAR* name) {
    auto& all = descriptors();
    const auto key = std::make_pair(sclass, cid);
    if (auto it = all.find(key); it != all.end()) return it->second.get();
    if (ClassDesc* other = ClassDirectory::Instance().Find(sclass, cid))
        throw MAXException(MSTR(MaxSDK::Format(
            L"cannot make an identity of superclass 0x%08X, class id (0x%08X, 0x%08X): class '%s' has that identity",
            sclass, cid.PartA(), cid.PartB(), other->ClassName())));
    MSTR label = name ? MSTR(name)
                      : MSTR(MaxSDK::Format(L"Identity (0x%08X, 0x%08X)", cid.PartA(), cid.PartB()));
    auto desc = std::make_unique<IdentityDesc>(sclass, cid, std::move(label));
    ClassDirectory::Instance().Register(desc.get());
    return all.emplace(key, std::move(desc)).first->second.get();
}

}  // namespace

ReferenceTarget* IdentityClass::Make(SClass_ID sclass, Class_ID cid, const MCHAR* name) {
    return declare(sclass, cid, name)->make();
}

ClassDesc* DeclareIdentityClass(SClass_ID sclass, Class_ID cid, const MCHAR* name) {
    return declare(sclass, cid, name);
}

IdentityClass* IdentityClass::Of(Animatable* anim) { return dynamic_cast<IdentityClass*>(anim); }

}  // namespace hostrt
