#include "records/scene_utils.h"

#include "ref.h"

#include <unordered_set>

namespace {

constexpr SClass_ID kAnimRecordSuperClass = 0x8663DFA8;
// Items whose description lists their first two references in the dependents block.
constexpr Class_ID kTwoRelatedItemsClass(0x402C7C2D, 0x0F9C3C6D);

MSTR Line(Animatable* item) {
    const Class_ID cid = item->ClassID();
    return item->ClassName() + MSTR(MaxSDK::Format(L"(%d) SuperClassID:%d ClassID:(%d,%d)",
                                           int(Animatable::GetHandleByAnim(item)), int(item->SuperClassID()),
                                           int(cid.PartA()), int(cid.PartB())));
}

// The description of item; seen keeps a block that reaches itself again from describing it twice.
MSTR Describe(Animatable* item, std::unordered_set<Animatable*>& seen) {
    if (!item) return MSTR(L"NULL");
    MSTR text = Line(item);
    std::vector<Animatable*> related;
    if (item->SuperClassID() == PARAMETER_BLOCK2_CLASS_ID) {
        if (auto* target = dynamic_cast<ReferenceTarget*>(item))
            for (ReferenceMaker* dep : target->Dependents().Unique())
                if (dep->SuperClassID() != kAnimRecordSuperClass) related.push_back(dep);
    } else if (item->ClassID() == kTwoRelatedItemsClass) {
        if (auto* maker = dynamic_cast<ReferenceMaker*>(item))
            for (int i = 0; i < 2 && i < maker->NumRefs(); ++i) related.push_back(maker->GetReference(i));
    } else {
        return text;
    }
    if (!seen.insert(item).second) return text;
    text += L"\n<Dependents:";
    for (Animatable* r : related) {
        text += L"\n";
        text += Describe(r, seen);
    }
    text += L"\n>";
    return text;
}

}  // namespace

MSTR DescribeItem(Animatable* item) {
    std::unordered_set<Animatable*> seen;
    return Describe(item, seen);
}

int StripNamePrefix(const MCHAR* prefix, MSTR& name) {
    if (!prefix || !*prefix) return 0;
    const std::size_t len = std::char_traits<MCHAR>::length(prefix);
    const std::size_t nameLen = std::size_t(name.Length());
    if (len > nameLen + 1) return 1;
    // The comparison runs over name's terminating character too: a prefix one longer than name differs there.
    const MCHAR* text = name.data();
    for (std::size_t i = 0; i < len; ++i)
        if (prefix[i] != text[i]) return 1;
    if (len >= nameLen || text[len] != L'_') return 1;
    name = MSTR(text + len + 1);
    return 0;
}
