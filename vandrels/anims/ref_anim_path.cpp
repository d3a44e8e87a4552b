// The path scheme of the animatable records: resolving names and numbers level by level below the owner's
// target, the check that no other record of the owner holds the same place, and the undoable number path.
#include "anims/path_by_number_restore.h"
#include "anims/ref_anim.h"
#include "anims/ref_anim_steps.h"
#include "hold.h"
#include "iparamb2.h"
#include "records/subanim_space.h"

namespace {

// The table parameter of a parameter block 2 that a hint (its parameter index) names, as the address space
// wants it: by internal name; null without hint or for another kind of item.
const MCHAR* HintName(Animatable* current, int hint, MSTR& storage) {
    if (hint < 0 || !current || current->SuperClassID() != PARAMETER_BLOCK2_CLASS_ID) return nullptr;
    auto* pb = dynamic_cast<IParamBlock2*>(current);
    if (!pb || hint >= pb->NumParams()) return nullptr;
    storage = pb->GetParamDef(pb->IndextoID(hint)).int_name;
    return storage.data();
}

bool SameName(const MSTR& entry, const WStr* name) { return name && entry == *name; }

}  // namespace

void RefAnim::SetPathByNumber(const Tab<int>& numbers, bool hold) {
    if (hold) HoldPathByNumber();
    pathByNumber_ = numbers;
}

void RefAnim::HoldPathByNumber() {
    if (theHold.Holding()) theHold.Put(new PathByNumberRestore(this, pathByNumber_));
}

bool RefAnim::ResolvePath(Animatable* root, const Tab<WStr*>& names, const Tab<int>& numbers, Animatable*& anim,
                          Animatable*& parent, int& subIndex, int& hint, Tab<int>& resolved) {
    const int levels = names.Count();
    resolved.SetCount(levels);
    for (int i = 0; i < levels; ++i) resolved[i] = 0;
    anim = nullptr;
    parent = nullptr;
    subIndex = -1;
    hint = -1;
    if (levels != numbers.Count() || levels == 0) return false;

    Animatable* current = root;
    Animatable* above = nullptr;  // the item current was reached from, as the address space wants it
    for (int i = 0; i < levels; ++i) {
        const bool last = i == levels - 1;
        int found = -1;
        Animatable* entry = nullptr;
        if (current) {
            MSTR hintStorage;
            const MCHAR* hintName = HintName(current, hint, hintStorage);
            const int count = CountSubAnims(current, above, hintName);
            const int stored = numbers[i];
            MSTR name;
            if (stored >= 0 && stored < count) {
                entry = GetSubAnimByIndex(current, above, stored, hintName, name);
                if (SameName(name, names[i])) found = stored;
            }
            if (found < 0 && !(stored >= count && hint >= 0)) {
                for (int k = 0; k < count; ++k) {
                    entry = GetSubAnimByIndex(current, above, k, hintName, name);
                    if (SameName(name, names[i])) {
                        found = k;
                        break;
                    }
                }
            }
        }
        if (found < 0) {
            anim = nullptr;
            subIndex = -1;
            parent = last ? current : nullptr;
            return false;
        }
        resolved[i] = found;
        parent = current;
        subIndex = found;
        if (entry == current) {
            // An entry that names a level without descending: the next level addresses that table.
            hint = numbers[i] - 1;
        } else {
            hint = -1;
            above = current;
            current = entry;
        }
    }
    anim = current;
    if (!anim) return true;
    return !IsPathTaken(anim, resolved);
}

bool RefAnim::GetAnimByPath(Animatable* root, Animatable*& anim, Animatable*& parent, int& subIndex, int& hint,
                            Tab<int>& resolved) {
    const bool ok = ResolvePath(root, path_, pathByNumber_, anim, parent, subIndex, hint, resolved);
    lastOperation_ = kStepGetAnimByPath;
    return ok;
}

bool RefAnim::IsPathTaken(Animatable* anim, const Tab<int>& numbers) {
    auto* target = dynamic_cast<ReferenceTarget*>(anim);
    if (!target) return false;
    DependentIterator it(target);
    while (ReferenceMaker* dep = it.Next()) {
        if (dep == this || dep->SuperClassID() != REFANIM_SUPER_CLASS_ID) continue;
        auto* other = static_cast<RefAnim*>(dep);
        if (other->GetAnim() != anim || other->GetOwner() != owner_) continue;
        const Tab<int> theirs = other->GetPathByNumber();
        if (theirs.Count() != numbers.Count()) continue;
        bool same = true;
        for (int i = 0; same && i < numbers.Count(); ++i) same = theirs[i] == numbers[i];
        if (same) return true;
    }
    return false;
}
