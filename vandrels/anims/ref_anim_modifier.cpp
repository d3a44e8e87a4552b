// What the base animatable record does for modifiers: finding a modifier's place and context in its stack,
// holding a modifier in a placeholder object while its node is away, putting a locally changed modifier back
// into a freshly merged stack, and handing a record's animatable to a record one level up.
#include "anims/ref_anim.h"
#include "anims/record_codes.h"
#include "anims/ref_anim_transfer.h"
#include "frame/placeholders.h"
#include "hold.h"
#include "inode.h"
#include "object.h"
#include "records/node_transfer.h"
#include "records/ref_base.h"

#include <algorithm>
#include <vector>

namespace {

// The record kinds PromoteToParent makes: a modifier record for a modifier, else a plain record.
// The host's holder of one modifier application inside a derived object; it keeps its modifier.
constexpr SClass_ID kModAppHolder = 0x000C;

bool IsModifier(Animatable* anim) {
    const SClass_ID sc = anim ? anim->SuperClassID() : 0;
    return sc == OSM_CLASS_ID || sc == WSM_CLASS_ID;
}

IDerivedObject* AsDerived(Animatable* anim) {
    return anim && anim->SuperClassID() == GEN_DERIVOB_CLASS_ID ? dynamic_cast<IDerivedObject*>(anim) : nullptr;
}

// Where a modifier sits in a chain of derived objects: the derived object that holds it and its position
// there (0 is the top of that stack).
struct StackPlace {
    IDerivedObject* derived = nullptr;
    int position = -1;
};

// The place of mod in the chain from top down. The chain is searched from the bottom up, in the order the
// sub-anim numbering counts modifiers, so a modifier held twice is found where its index points first.
StackPlace FindInChain(Animatable* top, Animatable* mod) {
    std::vector<IDerivedObject*> chain;
    for (IDerivedObject* d = AsDerived(top); d && chain.size() < 4096; d = AsDerived(d->GetObjRef()))
        chain.push_back(d);
    for (auto d = chain.rbegin(); d != chain.rend(); ++d)
        for (int m = (*d)->NumModifiers() - 1; m >= 0; --m)
            if ((*d)->GetModifier(m) == mod) return {*d, m};
    return {};
}

}  // namespace

ModContext* RefAnim::GetModContext(Animatable* root) {
    Animatable* found = nullptr;
    Animatable* parent = nullptr;
    int subIndex = -1;
    int hint = -1;
    Tab<int> resolved;
    if (!anim_ || !GetAnimByPath(root, found, parent, subIndex, hint, resolved)) return nullptr;
    if (found != anim_ || !AsDerived(parent)) return nullptr;
    const StackPlace place = FindInChain(parent, anim_);
    return place.derived ? place.derived->GetModContext(place.position) : nullptr;
}

Object* RefAnim::MakeHolderObject(Animatable* root, ModContext** outContext) {
    if (outContext) *outContext = nullptr;
    if (!anim_) return nullptr;
    ModContext* context = GetModContext(root);
    if (!context || !context->localData) return nullptr;
    if (outContext) *outContext = context;
    return MakeHolderObject(root, context);
}

Object* RefAnim::MakeHolderObject(Animatable*, ModContext* modContext) {
    auto* mod = dynamic_cast<Modifier*>(anim_);
    if (!mod) return nullptr;
    // The placeholder takes the kind of the owner node's base object, so a shape modifier sits on a shape.
    INode* node = GetOwnerNode();
    Object* nodeObject = node ? node->GetObjectRef() : nullptr;
    Object* placeholder = MakePlaceholderObject(nodeObject ? nodeObject->FindBaseObject() : nullptr);
    IDerivedObject* holder = mod->SuperClassID() == WSM_CLASS_ID ? CreateWSDerivedObject(placeholder)
                                                                  : CreateDerivedObject(placeholder);
    holder->AddModifier(mod, modContext);
    return holder;
}

void RefAnim::OverrideModifier(Animatable* root, IDerivedObject* derivedObject, ModContext* modContext) {
    if (!anim_) return;
    Animatable* found = nullptr;
    Animatable* parent = nullptr;
    int subIndex = -1;
    int hint = -1;
    Tab<int> resolved;
    if (!GetAnimByPath(root, found, parent, subIndex, hint, resolved)) return;
    if (!found || found == anim_ || found->ClassID() != anim_->ClassID()) return;
    if (!AsDerived(parent)) {
        Override(root);
        return;
    }
    if (!IsModified()) return;
    const StackPlace place = FindInChain(parent, found);
    if (!place.derived) return;
    // The holder object keeps the modifier on top with the context it had when the node went away.
    if (derivedObject && derivedObject->NumModifiers() > 0 && derivedObject->GetModifier(0) == anim_)
        modContext = derivedObject->GetModContext(0);
    // The context may live in the holder, which the transfer below can release: the stack gets a copy.
    ModContext context = modContext ? *modContext : ModContext();
    auto* held = static_cast<Modifier*>(static_cast<ReferenceTarget*>(anim_));
    TransferModifier(found, anim_);
    place.derived->AddModifier(held, &context, place.position);
    place.derived->DeleteModifier(place.position + 1);
    pathByNumber_ = resolved;
}

void RefAnim::TransferModifier(Animatable* oldAnim, Animatable* newAnim) {
    auto* oldT = dynamic_cast<ReferenceTarget*>(oldAnim);
    auto* newT = dynamic_cast<ReferenceTarget*>(newAnim);
    if (!oldT || !newT || oldT == newT) return;
    TransferSubAnims(oldAnim, newAnim);
    // The stacks keep their modifier: the override puts the new one in beside it and then drops the old one.
    // This host's derived objects reference their modifiers themselves, so they are passed over too.
    std::vector<ReferenceMaker*> dependents;
    DependentIterator it(oldT);
    while (ReferenceMaker* dep = it.Next()) dependents.push_back(dep);
    for (ReferenceMaker* dep : dependents) {
        const SClass_ID sc = dep->SuperClassID();
        if (sc == kModAppHolder || sc == GEN_DERIVOB_CLASS_ID) continue;
        for (int j = 0; j < dep->NumRefs(); ++j)
            if (dep->GetReference(j) == oldT && dep->CanTransferReference(j)) dep->ReplaceReference(j, newT);
    }
    NotifyStructureAndChange(newT);
}

void RefAnim::PromoteToParent(Animatable*) {
    const int levels = path_.Count();
    Animatable* target = GetOwnerTarget();
    if (levels < 2 || !target || !anim_) return;
    Tab<WStr*> names;
    Tab<int> numbers;
    for (int i = 0; i < levels - 1; ++i) {
        names.Append(path_[i]);
        numbers.Append(i < pathByNumber_.Count() ? pathByNumber_[i] : -1);
    }
    Animatable* found = nullptr;
    Animatable* parent = nullptr;
    int subIndex = -1;
    int hint = -1;
    Tab<int> resolved;
    if (!ResolvePath(target, names, numbers, found, parent, subIndex, hint, resolved) || found != anim_) return;
    Animatable* anim = anim_;
    const std::uint32_t code = IsModifier(anim) ? kCodeMod : kCodePlain;
    Tab<WStr*> ownNames;
    for (WStr* name : names) ownNames.Append(new WStr(name ? *name : WStr()));
    DeleteReference(0);
    owner_->CreateRefAnim(code, anim, ownNames, resolved, kOverrideModified);
}
