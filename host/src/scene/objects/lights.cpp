// The host's lights and their include/exclude lists.
#include "scene/objects/lights.h"

#include "inode.h"
#include "ioapi.h"
#include "scene/objects/remap_follow.h"

namespace hostrt {

namespace {
constexpr USHORT kListCountChunk = 0x3000;
constexpr USHORT kIncludeChunk = 0x3001;
constexpr ULONG kMaxListed = 1u << 24;
}  // namespace

// Undo record of the include/exclude switch.
class HostLight::IncludeRestore : public RestoreObj {
public:
    IncludeRestore(HostLight* l, bool before) : l_(l), handle_(Animatable::GetHandleByAnim(l)), before_(before) {}
    void Restore(int) override { apply(before_); }
    void Redo() override { apply(!before_); }
    MSTR Description() override { return MSTR(L"Include/exclude switch"); }

private:
    void apply(bool include) {
        if (Animatable::GetAnimByHandle(handle_) != l_) return;
        l_->include_ = include;
        l_->changed();
    }
    HostLight* l_;
    AnimHandle handle_;
    bool before_;
};

HostLight::HostLight(ClassDesc2* cd, bool loading)
    : BlockObject<LightObject>(cd, loading), nodes_(this, 1, [this] { changed(); }) {}

RefTargetHandle HostLight::GetReference(int i) { return i == 0 ? pblock_ : nodes_.GetRef(i); }

void HostLight::SetReference(int i, RefTargetHandle rtarg) {
    if (i == 0)
        BlockObject<LightObject>::SetReference(i, rtarg);
    else
        nodes_.SetRef(i, rtarg);
}

BOOL HostLight::IsRealDependency(ReferenceTarget* rtarg) {
    return rtarg && rtarg != pblock_ && nodes_.IndexOf(rtarg) >= 0 ? FALSE : TRUE;
}

RefResult HostLight::NotifyRefChanged(const Interval&, RefTargetHandle hTarget, PartID&, RefMessage, BOOL) {
    return hTarget && hTarget != pblock_ && nodes_.IndexOf(hTarget) >= 0 ? REF_STOP : REF_SUCCEED;
}

INode* HostLight::List::operator[](int i) {
    ReferenceTarget* t = light_->nodes_.Target(i);
    return t && t->SuperClassID() == BASENODE_CLASS_ID ? static_cast<INode*>(t) : nullptr;
}

int HostLight::List::FindNode(INode* node) { return node ? light_->nodes_.IndexOf(node) : -1; }

int HostLight::List::AddNode(INode* node) {
    if (!node) return -1;
    if (int at = FindNode(node); at >= 0) return at;
    light_->nodes_.Insert(Count(), node);
    light_->changed();
    return Count() - 1;
}

void HostLight::List::RemoveNode(int i) {
    if (!light_->nodes_.InRange(i)) return;
    light_->nodes_.Remove(i, false);
    light_->changed();
}

void HostLight::List::RemoveNode(INode* node) { RemoveNode(FindNode(node)); }

void HostLight::List::SetInclude(BOOL include) {
    const bool on = include != FALSE;
    if (on == light_->include_) return;
    if (theHold.Holding() && !theHold.RestoreOrRedoing()) theHold.Put(new IncludeRestore(light_, light_->include_));
    light_->include_ = on;
    light_->changed();
}

IOResult HostLight::Save(ISave* isave) {
    ULONG written = 0;
    const ULONG n = ULONG(nodes_.Count());
    const BYTE include = include_ ? 1 : 0;
    isave->BeginChunk(kListCountChunk);
    IOResult r = isave->Write(&n, sizeof n, &written);
    isave->EndChunk();
    isave->BeginChunk(kIncludeChunk);
    if (r == IO_OK) r = isave->Write(&include, 1, &written);
    isave->EndChunk();
    return r;
}

IOResult HostLight::Load(ILoad* iload) {
    IOResult res;
    while ((res = iload->OpenChunk()) == IO_OK) {
        ULONG got = 0;
        bool ok = true;
        if (iload->CurChunkID() == kListCountChunk) {
            ULONG n = 0;
            ok = iload->Read(&n, sizeof n, &got) == IO_OK && got == sizeof n && n <= kMaxListed;
            if (ok) nodes_.ResizeForLoad(int(n));
        } else if (iload->CurChunkID() == kIncludeChunk) {
            BYTE include = 0;
            ok = iload->Read(&include, 1, &got) == IO_OK && got == 1;
            include_ = include != 0;
        }
        iload->CloseChunk();
        if (!ok) return IO_ERROR;
    }
    return res == IO_END ? IO_OK : res;
}

void HostLight::CloneExtras(BlockObject<LightObject>* clone, RemapDir& remap) {
    auto* c = static_cast<HostLight*>(clone);
    c->include_ = include_;
    // The listed nodes stay the same, or become their clones when they are cloned in the same operation.
    for (int i = 0; i < nodes_.Count(); ++i) {
        c->nodes_.Insert(i, nullptr);
        FollowRemap(remap, c, 1 + i, nodes_.Target(i));
    }
}

}  // namespace hostrt
