// The shared parts of objects and modifiers: object names, modifier names and toggles (with their undo and
// chunks), modifier contexts and the base-object walk of derived objects.
#include "hold.h"
#include "ioapi.h"
#include "object.h"

namespace {

constexpr USHORT kModifierNameChunk = 0x4000;
constexpr USHORT kModifierTogglesChunk = 0x4001;
constexpr BYTE kOn = 0x1, kInViews = 0x2, kInRender = 0x4;

}  // namespace

MSTR BaseObject::GetObjectName(bool) {
    MSTR s;
    GetClassName(s);
    return s;
}

Object* IDerivedObject::FindBaseObject() {
    Object* below = GetObjRef();
    return below ? below->FindBaseObject() : nullptr;
}

// ---------------------------------------------------------------------------------------------- ModContext

ModContext::ModContext(Matrix3* tmIn, Box3* boxIn, void* data)
    : tm(tmIn ? new Matrix3(*tmIn) : nullptr), box(boxIn ? new Box3(*boxIn) : nullptr), localData(data) {}

ModContext::ModContext(const ModContext& other) : ModContext(other.tm, other.box, other.localData) {}

ModContext& ModContext::operator=(const ModContext& other) {
    if (this == &other) return *this;
    Matrix3* newTm = other.tm ? new Matrix3(*other.tm) : nullptr;
    Box3* newBox = other.box ? new Box3(*other.box) : nullptr;
    delete tm;
    delete box;
    tm = newTm;
    box = newBox;
    localData = other.localData;
    return *this;
}

ModContext::~ModContext() {
    delete tm;
    delete box;
}

// ------------------------------------------------------------------------------------------------ Modifier

// Undo record of a modifier's name and toggles: the state before and after one change.
class Modifier::StateRestore : public RestoreObj {
public:
    struct State {
        MSTR name;
        bool named, on, inViews, inRender;
    };
    StateRestore(Modifier* m, State before, State after)
        : m_(m), handle_(Animatable::GetHandleByAnim(m)), before_(std::move(before)), after_(std::move(after)) {}
    static State Of(const Modifier* m) { return {m->name_, m->named_, m->on_, m->inViews_, m->inRender_}; }
    void Restore(int) override { apply(before_, after_); }
    void Redo() override { apply(after_, before_); }
    MSTR Description() override { return MSTR(L"Modifier change"); }

private:
    void apply(const State& to, const State& from) {
        if (Animatable::GetAnimByHandle(handle_) != m_) return;
        m_->name_ = to.name;
        m_->named_ = to.named;
        m_->on_ = to.on;
        m_->inViews_ = to.inViews;
        m_->inRender_ = to.inRender;
        const MSTR shownTo = to.named ? to.name : m_->ClassName(), shownFrom = from.named ? from.name : m_->ClassName();
        if (shownTo != shownFrom) {
            m_->NotifyDependents(FOREVER, PART_ALL, REFMSG_NODE_NAMECHANGE);
            m_->NotifyDependents(FOREVER, PART_ALL, REFMSG_MODIFIER_NAME_CHANGED);
        }
        if (to.on != from.on || to.inViews != from.inViews || to.inRender != from.inRender)
            m_->NotifyDependents(FOREVER, PART_ALL, REFMSG_CHANGE);
    }
    Modifier* m_;
    AnimHandle handle_;
    State before_, after_;
};

MSTR Modifier::GetName(bool) {
    if (named_) return name_;
    MSTR s;
    GetClassName(s);
    return s;
}

void Modifier::SetName(const MSTR& name) {
    if (named_ && name_ == name) return;
    const auto before = StateRestore::Of(this);
    const MSTR shown = GetName();
    name_ = name;
    named_ = true;
    if (theHold.Holding() && !theHold.RestoreOrRedoing())
        theHold.Put(new StateRestore(this, before, StateRestore::Of(this)));
    if (shown == name) return;  // the class name, now given explicitly: nothing the user sees changed
    NotifyDependents(FOREVER, PART_ALL, REFMSG_NODE_NAMECHANGE);
    NotifyDependents(FOREVER, PART_ALL, REFMSG_MODIFIER_NAME_CHANGED);
}

void Modifier::setToggle(bool& toggle, bool on) {
    if (toggle == on) return;
    const auto before = StateRestore::Of(this);
    toggle = on;
    if (theHold.Holding() && !theHold.RestoreOrRedoing())
        theHold.Put(new StateRestore(this, before, StateRestore::Of(this)));
    NotifyDependents(FOREVER, PART_ALL, REFMSG_CHANGE);
}

IOResult Modifier::SaveModifier(ISave* isave) {
    IOResult r = IO_OK;
    if (named_) {
        isave->BeginChunk(kModifierNameChunk);
        r = isave->WriteWString(name_);
        isave->EndChunk();
    }
    const BYTE toggles = BYTE((on_ ? kOn : 0) | (inViews_ ? kInViews : 0) | (inRender_ ? kInRender : 0));
    ULONG written = 0;
    isave->BeginChunk(kModifierTogglesChunk);
    if (r == IO_OK) r = isave->Write(&toggles, 1, &written);
    isave->EndChunk();
    return r;
}

bool Modifier::LoadModifierChunk(ILoad* iload, IOResult& res) {
    switch (iload->CurChunkID()) {
    case kModifierNameChunk:
        res = iload->ReadWStringChunk(name_);
        named_ = res == IO_OK;
        return true;
    case kModifierTogglesChunk: {
        BYTE toggles = 0;
        ULONG got = 0;
        res = iload->Read(&toggles, 1, &got);
        if (res == IO_OK && got != 1) res = IO_ERROR;
        on_ = toggles & kOn;
        inViews_ = toggles & kInViews;
        inRender_ = toggles & kInRender;
        return true;
    }
    default:
        return false;
    }
}

void Modifier::CopyModifierState(Modifier* to) {
    to->name_ = name_;
    to->named_ = named_;
    to->on_ = on_;
    to->inViews_ = inViews_;
    to->inRender_ = inRender_;
}
