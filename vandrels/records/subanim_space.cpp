#include "records/subanim_space.h"

#include "baseinterface.h"
#include "hold.h"
#include "inode.h"
#include "iparamb.h"
#include "iparamb2.h"
#include "object.h"
#include "ref.h"
#include "resources/resource.h"

#include <vector>

namespace {

// Items whose entries the host's sub-anims do not give as they stand.
constexpr Class_ID kMorpherClass(0x17BB6854, 0xA5CBA2A3);
constexpr Class_ID kLayerFloatClass(0x742D30AC, 0x37984F09);
constexpr Class_ID kRefListFloatClass(0x72ED43DC, 0x3EC96A0A);
constexpr Class_ID kRefListMatrixClassA(0x18D026A1, 0x347D1CF3);
constexpr Class_ID kRefListMatrixClassB(0x40585238, 0x2503240D);
constexpr Class_ID kTwoEntryMatrixClass(0x873FE764, 0xAABE8601);
// Items that answer this interface keep their custom attributes out of the numbering.
constexpr Interface_ID kNoCustAttribEntries(0x444E7687, 0x722E6E36);

constexpr int kNodeEntries = 7;

bool IsNode(Animatable* anim) { return anim && anim->SuperClassID() == BASENODE_CLASS_ID; }

bool IsDerived(Animatable* anim) { return anim && anim->SuperClassID() == GEN_DERIVOB_CLASS_ID; }

IDerivedObject* AsDerived(Animatable* anim) { return IsDerived(anim) ? dynamic_cast<IDerivedObject*>(anim) : nullptr; }

// The derived objects from anim down to the last one above the base object.
std::vector<IDerivedObject*> DerivedChain(Animatable* anim) {
    std::vector<IDerivedObject*> chain;
    for (IDerivedObject* d = AsDerived(anim); d; d = AsDerived(d->GetObjRef())) {
        chain.push_back(d);
        if (chain.size() > 4096) break;  // a cyclic chain is a broken scene; never loop on it
    }
    return chain;
}

// Every modifier of the chain from the bottom up: the lowest derived object first, and within one derived object
// its lowest modifier (the host numbers modifiers from the top) first.
std::vector<Modifier*> ChainModifiersBottomUp(Animatable* anim) {
    const std::vector<IDerivedObject*> chain = DerivedChain(anim);
    std::vector<Modifier*> mods;
    for (auto d = chain.rbegin(); d != chain.rend(); ++d)
        for (int m = (*d)->NumModifiers() - 1; m >= 0; --m) mods.push_back((*d)->GetModifier(m));
    return mods;
}

Object* ChainBase(Animatable* anim) {
    const std::vector<IDerivedObject*> chain = DerivedChain(anim);
    return chain.empty() ? nullptr : chain.back()->GetObjRef();
}

ICustAttribContainer* Container(Animatable* anim) { return anim->GetCustAttribContainer(); }

int CustAttribEntries(Animatable* anim) {
    if (anim->GetInterface(kNoCustAttribEntries)) return 0;
    ICustAttribContainer* cc = Container(anim);
    return cc ? cc->GetNumCustAttribs() : 0;
}

// True when block is one of the item's custom attributes or the parameter block of one.
bool IsCustAttribBlock(Animatable* anim, Animatable* block) {
    ICustAttribContainer* cc = Container(anim);
    if (!cc) return false;
    for (int i = 0; i < cc->GetNumCustAttribs(); ++i) {
        CustAttrib* ca = cc->GetCustAttrib(i);
        if (!ca) continue;
        if (static_cast<Animatable*>(ca) == block) return true;
        for (int b = 0; b < ca->NumParamBlocks(); ++b)
            if (static_cast<Animatable*>(ca->GetParamBlock(b)) == block) return true;
    }
    return false;
}

int GeneralCount(Animatable* anim) { return anim->NumSubs() + 1 + CustAttribEntries(anim); }

// The rule every item follows unless its class says otherwise: entries 1 to n are its sub-anims 0 to n-1,
// the entries after them its custom attributes. slotByReference takes the entries from the references
// instead, all named fixedName.
Animatable* GeneralEntry(Animatable* anim, int index, MSTR& name, bool slotByReference = false,
                         const MCHAR* fixedName = nullptr) {
    const int subs = anim->NumSubs();
    if (index >= 1 && index <= subs) {
        Animatable* sub = nullptr;
        if (slotByReference) {
            auto* maker = dynamic_cast<ReferenceMaker*>(anim);
            sub = maker ? maker->GetReference(index - 1) : nullptr;
        } else {
            sub = anim->SubAnim(index - 1);
        }
        if (sub && sub->SuperClassID() == PARAMETER_BLOCK2_CLASS_ID && IsCustAttribBlock(anim, sub)) return nullptr;
        name = fixedName ? MSTR(fixedName) : anim->SubAnimName(index - 1, false);
        return sub;
    }
    const int ca = index - subs - 1;
    if (ca >= 0 && ca < CustAttribEntries(anim)) {
        CustAttrib* attrib = Container(anim)->GetCustAttrib(ca);
        name = attrib ? MSTR(attrib->GetName(false)) : MSTR();
        return attrib;
    }
    return nullptr;
}

Animatable* NodeEntry(INode* node, int index, MSTR& name) {
    if (index > kNodeEntries) return nullptr;
    switch (index) {
    case 1:
        name = SubAnimSlotName(IDS_SUBANIM_VIS);
        return node->GetVisController();
    case 2: {
        Object* obj = node->GetObjOrWSMRef();
        if (!IsDerived(obj)) return nullptr;
        name = SubAnimSlotName(IDS_SUBANIM_MODS);
        return obj;
    }
    case 3:
        name = SubAnimSlotName(IDS_SUBANIM_TM);
        return node->GetTMController();
    case 4: {
        name = SubAnimSlotName(IDS_SUBANIM_BO);
        Object* obj = node->GetObjOrWSMRef();
        return obj ? obj->FindBaseObject() : nullptr;
    }
    case 6:
        name = SubAnimSlotName(IDS_SUBANIM_IMBM);
        return node->GetImageBlurMultController();
    case 7:
        name = SubAnimSlotName(IDS_SUBANIM_MBO);
        return node->GetMotBlurOnOffController();
    default:
        return nullptr;
    }
}

Animatable* DerivedEntry(Animatable* derived, Animatable* parent, int index, MSTR& name) {
    int first = 1;
    if (!IsNode(parent)) {
        if (index == 1) {
            name = SubAnimSlotName(IDS_SUBANIM_BO);
            return ChainBase(derived);
        }
        first = 2;
    }
    const std::vector<Modifier*> mods = ChainModifiersBottomUp(derived);
    const int m = index - first;
    if (m < 0 || m >= int(mods.size())) return nullptr;
    name = mods[std::size_t(m)] ? mods[std::size_t(m)]->GetName(false) : MSTR();
    return mods[std::size_t(m)];
}

// The parameter of a block 2 that a hint names, when it is a table.
ParamID HintedTable(IParamBlock2* pb, const MCHAR* hint) {
    ParamBlockDesc2* desc = pb->GetDesc();
    if (!desc) return -1;
    const int index = desc->NameToIndex(hint);
    if (index < 0) return -1;
    const ParamID id = desc->IndextoID(index);
    return is_tab(pb->GetParameterType(id)) ? id : ParamID(-1);
}

Animatable* Block2Entry(IParamBlock2* pb, int index, const MCHAR* hint, MSTR& name) {
    if (hint) {
        const ParamID id = HintedTable(pb, hint);
        if (id < 0 || index >= pb->Count(id)) return nullptr;
        name = L"TabItem";
        if (Control* c = pb->GetController(id, index)) return c;
        return hostrt::IsReferenceType(pb->GetParameterType(id)) ? pb->GetReferenceTarget(id, 0, index) : nullptr;
    }
    if (index < 1 || index > pb->NumParams()) return nullptr;
    const ParamDef& def = pb->GetParamDef(pb->IndextoID(index - 1));
    name = def.int_name.isNull() ? MSTR(L"unnamed") : def.int_name;
    return pb->SubAnim(index - 1);
}

Animatable* BlockEntry(IParamBlock* pb, Animatable* parent, int index, MSTR& name) {
    if (index < 1 || index > pb->NumSubs()) return nullptr;
    name = parent && parent->ClassID() == kMorpherClass ? MSTR(L"MT") : pb->SubAnimName(index - 1, false);
    return pb->SubAnim(index - 1);
}

Animatable* ContainerEntry(ICustAttribContainer* cc, int index, MSTR& name) {
    if (index < 1 || index > cc->GetNumCustAttribs()) return nullptr;
    CustAttrib* ca = cc->GetCustAttrib(index - 1);
    name = ca ? MSTR(ca->GetName(false)) : MSTR();
    return ca;
}

Animatable* MorpherEntry(Animatable* morpher, int index, MSTR& name) {
    auto* maker = dynamic_cast<ReferenceMaker*>(morpher);
    if (!maker || index < 1 || index > 100) return nullptr;
    name = morpher->SubAnimName(index - 1, false);
    return index - 1 < maker->NumRefs() ? maker->GetReference(index - 1) : nullptr;
}

bool IsContainer(Animatable* anim) {
    return anim->SuperClassID() == REF_MAKER_CLASS_ID && anim->ClassID() == CUSTATTRIB_CONTAINER_CLASS_ID;
}

bool IsReferenceListController(Animatable* anim) {
    const SClass_ID sc = anim->SuperClassID();
    const Class_ID cid = anim->ClassID();
    return (sc == CTRL_FLOAT_CLASS_ID && cid == kRefListFloatClass) ||
           (sc == CTRL_MATRIX3_CLASS_ID && (cid == kRefListMatrixClassA || cid == kRefListMatrixClassB));
}

}  // namespace

int CountSubAnims(Animatable* anim, Animatable* parent, const MCHAR* hint) {
    if (!anim) return 0;
    const SClass_ID sc = anim->SuperClassID();
    const Class_ID cid = anim->ClassID();
    switch (sc) {
    case BASENODE_CLASS_ID:
        return parent ? 0 : GeneralCount(anim);
    case GEN_DERIVOB_CLASS_ID:
        return int(ChainModifiersBottomUp(anim).size()) + 2 + (IsNode(parent) ? 1 : 0);
    case PARAMETER_BLOCK_CLASS_ID:
        return anim->NumSubs() + 1;
    case PARAMETER_BLOCK2_CLASS_ID: {
        auto* pb = dynamic_cast<IParamBlock2*>(anim);
        if (!pb) return GeneralCount(anim);
        if (hint) {
            const ParamID id = HintedTable(pb, hint);
            return id < 0 ? 0 : pb->Count(id);
        }
        return pb->NumParams() + 1;
    }
    default:
        break;
    }
    if (IsContainer(anim)) {
        auto* cc = dynamic_cast<ICustAttribContainer*>(anim);
        return cc ? cc->GetNumCustAttribs() + 1 : 1;
    }
    if (sc == OSM_CLASS_ID && cid == kMorpherClass) return 101;
    if (sc == CTRL_MATRIX3_CLASS_ID && cid == kTwoEntryMatrixClass) return 2;
    return GeneralCount(anim);
}

Animatable* GetSubAnimByIndex(Animatable* anim, Animatable* parent, int index, const MCHAR* hint, MSTR& name) {
    name = MSTR();
    if (!anim || index < 0) return nullptr;
    if (index == 0 && !hint) {
        name = SubAnimSlotName(IDS_SUBANIM_CAC);
        return anim->GetCustAttribContainer();
    }
    const SClass_ID sc = anim->SuperClassID();
    const Class_ID cid = anim->ClassID();
    switch (sc) {
    case BASENODE_CLASS_ID:
        if (auto* node = dynamic_cast<INode*>(anim)) return NodeEntry(node, index, name);
        return nullptr;
    case GEN_DERIVOB_CLASS_ID:
        return DerivedEntry(anim, parent, index, name);
    case PARAMETER_BLOCK_CLASS_ID:
        if (auto* pb = dynamic_cast<IParamBlock*>(anim)) return BlockEntry(pb, parent, index, name);
        break;
    case PARAMETER_BLOCK2_CLASS_ID:
        if (auto* pb = dynamic_cast<IParamBlock2*>(anim)) return Block2Entry(pb, index, hint, name);
        break;
    default:
        break;
    }
    if (IsContainer(anim)) {
        auto* cc = dynamic_cast<ICustAttribContainer*>(anim);
        return cc ? ContainerEntry(cc, index, name) : nullptr;
    }
    if (sc == OSM_CLASS_ID && cid == kMorpherClass) return MorpherEntry(anim, index, name);
    if (sc == CTRL_FLOAT_CLASS_ID && cid == kLayerFloatClass) {
        Animatable* sub = GeneralEntry(anim, index, name);
        // While the host undoes or redoes, a layer whose controller is not restored yet still keeps its place.
        if (!sub && index >= 1 && index <= anim->NumSubs() && theHold.RestoreOrRedoing()) name = L"Animation Layer";
        return sub;
    }
    if (IsReferenceListController(anim)) return GeneralEntry(anim, index, name, true, L"L");
    return GeneralEntry(anim, index, name);
}
