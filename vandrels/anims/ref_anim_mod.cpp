// The modifier records: keeping a Modified modifier's context and holder object, putting the modifier back after
// a reload, and the context chunk.
#include "anims/ref_anim_mod.h"

#include "frame/module_state.h"
#include "object.h"
#include "records/chunk_io.h"

#include <type_traits>

namespace {

constexpr USHORT kContextChunk = 0x0933;

// The context's transform as saved: the four rows, then the matrix's flag word.
struct SavedTransform {
    float rows[4][3];
    std::uint32_t flags;
};
static_assert(sizeof(SavedTransform) == 52);

SavedTransform ToSaved(const Matrix3* tm) {
    const Matrix3 m = tm ? *tm : Matrix3();
    SavedTransform saved{};
    for (int r = 0; r < 4; ++r) {
        const Point3 row = m.GetRow(r);
        saved.rows[r][0] = row.x;
        saved.rows[r][1] = row.y;
        saved.rows[r][2] = row.z;
    }
    saved.flags = std::uint32_t(m.GetIdentFlags());
    return saved;
}

Matrix3 FromSaved(const SavedTransform& saved) {
    Matrix3 m;
    for (int r = 0; r < 4; ++r) m.SetRow(r, Point3(saved.rows[r][0], saved.rows[r][1], saved.rows[r][2]));
    m.SetIdentFlags(DWORD(saved.flags));
    return m;
}

}  // namespace

template <class Base> ModifierRecord<Base>::~ModifierRecord() { stopWaitingForSave(); }

template <class Base> void ModifierRecord<Base>::stopWaitingForSave() {
    if (!waitingForSave_) return;
    UnRegisterNotification(&ModifierRecord::onPostSave, this, NOTIFY_FILE_POST_SAVE);
    waitingForSave_ = false;
}

template <class Base> void ModifierRecord<Base>::onPostSave(void* param, NotifyInfo*) {
    auto* record = static_cast<ModifierRecord*>(param);
    record->stopWaitingForSave();
    record->ReleaseSnapshot();
}

template <class Base> void ModifierRecord<Base>::Collect(Animatable* root) {
    Base::Collect(root);
    if (!this->IsModified()) return;
    const int mode = vandrels::GetOperationMode();
    if (mode == vandrels::kModeSaving && this->IsPersistRef()) return;
    if (ModContext* context = this->GetModContext(root)) context_ = std::make_unique<ModContext>(*context);
    ModContext* found = nullptr;
    if (Object* holder = this->MakeHolderObject(root, &found)) this->ReplaceReference(1, holder);
    if (mode == vandrels::kModeSaving && holder_ && !waitingForSave_) {
        RegisterNotification(&ModifierRecord::onPostSave, this, NOTIFY_FILE_POST_SAVE);
        waitingForSave_ = true;
    }
    if (mode == vandrels::kModeDuplicating) this->RegisterWithHelper();
}

template <class Base> void ModifierRecord<Base>::Override(Animatable* root) {
    // Only a modifier found in a stack goes back by position; anything else takes the kind's own override.
    Animatable* found = nullptr;
    Animatable* parent = nullptr;
    int subIndex = -1;
    int hint = -1;
    Tab<int> resolved;
    const bool inStack = this->GetAnimByPath(root, found, parent, subIndex, hint, resolved) && parent &&
                         parent->SuperClassID() == GEN_DERIVOB_CLASS_ID;
    if (inStack && this->IsModified() && !this->TestOverrideBits(kOverrideReplaced))
        this->OverrideModifier(root, dynamic_cast<IDerivedObject*>(holder_), context_.get());
    else
        Base::Override(root);
    ReleaseSnapshot();
}

template <class Base> void ModifierRecord<Base>::ReleaseSnapshot() {
    if (holder_) this->DeleteReference(1);
}

template <class Base> RefTargetHandle ModifierRecord<Base>::GetReference(int i) {
    if (i == 1) return holder_;
    return Base::GetReference(i > 1 ? i - 1 : i);
}

template <class Base> void ModifierRecord<Base>::SetReference(int i, RefTargetHandle target) {
    if (i == 1) {
        holder_ = dynamic_cast<Object*>(target);
        return;
    }
    Base::SetReference(i > 1 ? i - 1 : i, target);
}

template <class Base> BOOL ModifierRecord<Base>::IsRealDependency(ReferenceTarget* target) {
    if (target && target == holder_) return TRUE;
    return Base::IsRealDependency(target);
}

template <class Base>
void ModifierRecord<Base>::BaseClone(ReferenceTarget* from, ReferenceTarget* to, RemapDir& remap) {
    Base::BaseClone(from, to, remap);
    auto* src = dynamic_cast<ModifierRecord*>(from);
    auto* dst = dynamic_cast<ModifierRecord*>(to);
    if (!src || !dst) return;
    if (src->context_) dst->context_ = std::make_unique<ModContext>(*src->context_);
}

template <class Base> IOResult ModifierRecord<Base>::Save(ISave* isave) {
    // The base kind's own layout: the wrapped base chunks (and the count of held items for modifiers with
    // references).
    IOResult kind = IO_OK;
    if constexpr (std::is_same_v<Base, RefAnim>)
        kind = this->SaveWrappedBaseChunks(isave);
    else
        kind = Base::Save(isave);
    if (kind != IO_OK) return IO_ERROR;
    if (!context_) return IO_OK;
    const SavedTransform tm = ToSaved(context_->tm);
    Box3 box;
    if (context_->box) box = *context_->box;
    isave->BeginChunk(kContextChunk);
    ULONG written = 0;
    IOResult res = isave->Write(&tm, ULONG(sizeof(tm)), &written);
    if (res == IO_OK) res = isave->Write(&box, ULONG(sizeof(box)), &written);
    isave->EndChunk();
    return res;
}

template <class Base> IOResult ModifierRecord<Base>::LoadChunk(ILoad* iload) {
    if (iload->CurChunkID() != kContextChunk) return Base::LoadChunk(iload);
    SavedTransform saved{};
    Box3 box;
    IOResult res = chunkio::ReadValue(iload, saved);
    if (res == IO_OK) res = chunkio::ReadValue(iload, box);
    if (res != IO_OK) return res;
    Matrix3 tm = FromSaved(saved);
    context_ = std::make_unique<ModContext>(&tm, &box);
    return IO_OK;
}

template class ModifierRecord<RefAnim>;
template class ModifierRecord<RefAnimWithRefs>;
