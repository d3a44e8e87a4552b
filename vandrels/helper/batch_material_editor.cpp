#include "helper/batch_material_editor.h"

#include "frame/class_ids.h"
#include "imtl.h"
#include "inode.h"
#include "maxapi.h"
#include "records/ref_holder.h"
#include "ref.h"

namespace vandrels {
namespace {

constexpr int kEditorSlots = 24;
constexpr const MCHAR* kHolderNodeName = L"VDCMEHolder";

// The holder node's handle while a batch holds materials, else 0.
ULONG& HolderHandle() {
    static ULONG handle = 0;
    return handle;
}

// Whether an animatable record holds exactly mtl as its animatable.
bool HeldByAnimatableRecord(MtlBase* mtl) {
    DependentIterator it(mtl);
    while (ReferenceMaker* dep = it.Next())
        if (dep->SuperClassID() == REFANIM_SUPER_CLASS_ID && dep->GetReference(0) == mtl) return true;
    return false;
}

}  // namespace

void HoldEditorMaterials() {
    Interface* ip = GetCOREInterface();
    RefHolder* holder = nullptr;
    for (int slot = 0; slot < kEditorSlots; ++slot) {
        MtlBase* mtl = ip->GetMtlSlot(slot);
        if (!mtl || !HeldByAnimatableRecord(mtl)) continue;
        if (!holder) {
            holder = new RefHolder();
            holder->SetNumRefs(kEditorSlots);
        }
        holder->ReplaceReference(slot, mtl);
        ip->PutMtlToMtlEditor(NewDefaultStdMat(), slot);
    }
    if (!holder) return;
    INode* node = ip->CreateObjectNode(holder);
    node->SetName(kHolderNodeName);
    HolderHandle() = node->GetHandle();
}

void RestoreEditorMaterials() {
    const ULONG handle = HolderHandle();
    if (!handle) return;
    HolderHandle() = 0;
    Interface* ip = GetCOREInterface();
    INode* node = ip->GetINodeByHandle(handle);
    if (!node) return;
    auto* holder = dynamic_cast<RefHolder*>(node->GetObjectRef());
    if (holder && holder->ClassID() == REFHOLDER_CLASS_ID && holder->NumRefs() == kEditorSlots)
        for (int slot = 0; slot < kEditorSlots; ++slot) {
            ReferenceTarget* held = holder->GetReference(slot);
            if (held && (held->SuperClassID() == MATERIAL_CLASS_ID || held->SuperClassID() == TEXMAP_CLASS_ID))
                ip->PutMtlToMtlEditor(static_cast<MtlBase*>(held), slot);
        }
    ip->DeleteNode(node, FALSE);
}

}  // namespace vandrels
