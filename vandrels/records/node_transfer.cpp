#include "records/node_transfer.h"

#include "iparamb2.h"
#include "maxexception.h"
#include "records/scene_utils.h"
#include "ref.h"

#include <algorithm>
#include <vector>

namespace {

constexpr SClass_ID kRecordSuperClass = 0x8663DFA6;
constexpr SClass_ID kAnimRecordSuperClass = 0x8663DFA8;
constexpr ULONG kParticleFlowPartB = 0x1EB34300;

// Messages newItem sends after a transfer with notify.
constexpr RefMessage kStructureChanged = 258;
constexpr RefMessage kChange = 80;
constexpr PartID kObjectChainPart = 0x800037FF;

bool IsOneOf(const Class_ID& cid, std::initializer_list<Class_ID> ids) {
    for (const Class_ID& id : ids)
        if (cid == id) return true;
    return false;
}

bool IsPartAOneOf(const Class_ID& cid, std::initializer_list<ULONG> parts) {
    for (ULONG a : parts)
        if (cid.PartA() == a) return true;
    return false;
}

// The dependents that must keep their reference whoever they are.
bool IsPinnedDependent(SClass_ID sc, const Class_ID& cid) {
    if (sc == CTRL_MATRIX3_CLASS_ID &&
        IsOneOf(cid, {Class_ID(0x78724378, 0x008A4FD9), Class_ID(0x21C71167, 0x692D0DD7)}))
        return true;
    if (cid == Class_ID(0, 0)) return true;
    return IsOneOf(cid, {Class_ID(0x74F93B01, kParticleFlowPartB), Class_ID(0x74F93B02, kParticleFlowPartB),
                         Class_ID(0x74F93B07, kParticleFlowPartB), Class_ID(0x125A4394, 0x78FA5578)});
}

// True when a node parameter (plain or table) of the block holds item.
bool BlockHoldsNode(IParamBlock2* pb, ReferenceTarget* item) {
    for (int p = 0; p < pb->NumParams(); ++p) {
        const ParamID id = pb->IndextoID(p);
        const ParamType2 type = pb->GetParameterType(id);
        if ((type & ~TYPE_TAB) != TYPE_INODE) continue;
        const int count = pb->Count(id);
        for (int k = 0; k < count; ++k)
            if (pb->GetReferenceTarget(id, 0, k) == item) return true;
    }
    return false;
}

// A block 2 moves with its owner when the owner is one of the kinds that keep nodes in their blocks.
bool BlockOwnerDecides(IParamBlock2* pb, ReferenceTarget* oldItem, TransferTrace& trace) {
    ReferenceMaker* owner = pb->GetOwner();
    trace.ownerSuperClass = owner ? owner->SuperClassID() : 0;
    trace.ownerClass = owner ? owner->ClassID() : Class_ID(0, 0);
    const SClass_ID sc = trace.ownerSuperClass;
    const Class_ID cid = trace.ownerClass;
    if (owner) {
        if (sc == CTRL_POSITION_CLASS_ID && IsPartAOneOf(cid, {8209, 8217})) return true;
        if (sc == CTRL_ROTATION_CLASS_ID && IsPartAOneOf(cid, {8224, 8225})) return true;
        if (sc == CTRL_MATRIX3_CLASS_ID && IsPartAOneOf(cid, {0x873FE764, 0x21C71167, 0x78724378})) return true;
        if (sc == GEOMOBJECT_CLASS_ID && cid == Class_ID(0x50320C9A, 0)) return true;
        if (sc == HELPER_CLASS_ID &&
            IsOneOf(cid, {Class_ID(0x74F93B07, kParticleFlowPartB), Class_ID(0x74F93B04, kParticleFlowPartB)}))
            return false;
        if (sc == HELPER_CLASS_ID && cid == Class_ID(0x74F93B03, kParticleFlowPartB)) return true;
        if (cid.PartB() == kParticleFlowPartB) return true;
        if (sc == OSM_CLASS_ID && cid == Class_ID(0x000C4D33, 0)) return true;
    }
    return BlockHoldsNode(pb, oldItem);
}

}  // namespace

bool MayTransferReference(ReferenceMaker* dependent, int index, ReferenceTarget* oldItem, TransferTrace& trace) {
    const SClass_ID sc = dependent->SuperClassID();
    if (sc == kRecordSuperClass || sc == kAnimRecordSuperClass) return true;
    if (IsPinnedDependent(sc, dependent->ClassID())) return false;
    if (sc == PARAMETER_BLOCK2_CLASS_ID)
        if (auto* pb = dynamic_cast<IParamBlock2*>(dependent)) return BlockOwnerDecides(pb, oldItem, trace);
    return dependent->CanTransferReference(index) != FALSE;
}

void TransferNodeReferences(ReferenceTarget* oldItem, ReferenceTarget* newItem, bool notify) {
    if (!oldItem || oldItem == newItem) return;
    TransferTrace trace;
    std::vector<ReferenceMaker*> visited;
    try {
        DependentIterator deps(oldItem);
        while (ReferenceMaker* dep = deps.Next()) {
            if (std::find(visited.begin(), visited.end(), dep) != visited.end()) continue;  // one entry per reference
            visited.push_back(dep);
            for (int i = 0; i < dep->NumRefs(); ++i)
                if (dep->GetReference(i) == oldItem && MayTransferReference(dep, i, oldItem, trace))
                    dep->ReplaceReference(i, newItem, FALSE);
        }
        if (notify && newItem) {
            newItem->NotifyDependents(FOREVER, kObjectChainPart, kStructureChanged);
            newItem->NotifyDependents(FOREVER, kObjectChainPart, kChange);
        }
    } catch (...) {
        MSTR cause;
        try {
            throw;
        } catch (const MAXException& e) {
            cause = e.message;
        } catch (const std::exception& e) {
            cause = MSTR::FromUTF8(e.what());
        } catch (...) {
        }
        MSTR text(L"Error Transferring Node References\nDependents:");
        for (ReferenceMaker* dep : visited) {
            text += L"\n";
            text += DescribeItem(dep);
        }
        text += MSTR(MaxSDK::Format(L"\nLatest Pblock2 Owner: SuperClassID:%d ClassID: (%d,%d)", int(trace.ownerSuperClass),
                            int(trace.ownerClass.PartA()), int(trace.ownerClass.PartB())));
        if (!cause.isNull()) text += L"\n\n" + cause;
        throw MAXException(text, 0);
    }
}

bool IsWorthTransferring(Animatable* oldSub, Animatable* newSub, Animatable* parent) {
    if (!oldSub || !newSub) return false;
    if (oldSub->ClassID() != newSub->ClassID()) return false;
    if (!newSub->IsRefMaker() || !newSub->IsRefTarget()) return false;
    if (oldSub->IsAnimated()) return true;
    const SClass_ID sc = oldSub->SuperClassID();
    const Class_ID cid = oldSub->ClassID();
    const bool ownerBound = (sc == CTRL_FLOAT_CLASS_ID && cid == Class_ID(0x72930021, 0x06951211)) ||
                            (sc == CTRL_POINT3_CLASS_ID && cid == Class_ID(0x69F672C0, 0x27927AFA)) ||
                            (sc == CTRL_ROTATION_CLASS_ID && cid == Class_ID(0x19357028, 0x428C5294));
    if (!ownerBound) return true;
    if (!parent || parent->SuperClassID() != PARAMETER_BLOCK2_CLASS_ID) return false;
    auto* pb = dynamic_cast<IParamBlock2*>(parent);
    ReferenceMaker* owner = pb ? pb->GetOwner() : nullptr;
    return owner && owner->ClassID() == Class_ID(0x848361CB, 0x913CC083);
}
