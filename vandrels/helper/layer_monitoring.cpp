// The layer monitoring after a merge: the merged layers get their final names (name prefix and renamings), fold
// into scene layers of the same name, leave the scene when they received nothing, and the new ones become the
// owner's RefLayer entries.
#include "helper/layer_monitoring.h"

#include "frame/record_failure.h"
#include "ilayer.h"
#include "inode.h"
#include "maxapi.h"
#include "maxexception.h"
#include "resources/resource.h"

namespace vandrels {

namespace {

// Marks the merged layers that are not yet among the owner's layers while the entries are stored.
constexpr DWORD kLayerWorkBit = 0x00400000;

ILayerManager* SceneLayerManager() {
    Interface* ip = GetCOREInterface();
    return ip ? ip->GetLayerManager() : nullptr;
}

MergedLayer* EntryOfLayer(Tab<MergedLayer*>& mergedLayers, ILayer* layer) {
    if (!layer) return nullptr;
    for (MergedLayer* entry : mergedLayers)
        if (entry && entry->layer == layer) return entry;
    return nullptr;
}

void ForgetLayer(Tab<MergedLayer*>& mergedLayers, ILayer* layer) {
    for (MergedLayer* entry : mergedLayers)
        if (entry && entry->layer == layer) entry->layer = nullptr;
}

// Whether the entry's layer and every layer below it is empty.
bool ReceivedNothing(const MergedLayer& entry) {
    return entry.nodes.Count() == 0 && !entry.layer->HasNodesBelow();
}

// Takes an empty merged layer out of the scene. A layer with child layers cannot leave the layer manager, so
// the merged child layers below it (empty as well) go first. Answers whether the layer is gone.
bool DeleteEmptyLayer(ILayerManager* lm, Tab<MergedLayer*>& mergedLayers, MergedLayer& entry) {
    ILayer* layer = entry.layer;
    for (int i = layer->GetNumOfChildLayers() - 1; i >= 0; --i) {
        MergedLayer* child = EntryOfLayer(mergedLayers, layer->GetChildLayer(i));
        if (child && child != &entry && !child->existed && child->nodes.Count() == 0)
            DeleteEmptyLayer(lm, mergedLayers, *child);
    }
    if (!lm->DeleteLayer(layer->GetName())) return false;
    // The layer may be gone for good now: no entry keeps it.
    ForgetLayer(mergedLayers, layer);
    return true;
}

// The renaming of a layer by its name in the reference file (the first in table order), or null.
RenamedLayer* FindRenaming(Tab<RenamedLayer*>& renamedLayers, const WStr& name) {
    for (RenamedLayer* renamed : renamedLayers)
        if (renamed && renamed->name == name) return renamed;
    return nullptr;
}

// The name a merged layer is to carry; false when it keeps the name it came with.
bool FinalName(const MergedLayer& entry, const RenamedLayer* renamed, const WStr& prefix, WStr& finalName) {
    if (renamed && renamed->noPrefix) {
        finalName = renamed->newName;
    } else if (!prefix.isNull()) {
        finalName = prefix + L"_" + (renamed ? renamed->newName : entry.name);
    } else if (renamed) {
        finalName = renamed->newName;
    } else {
        return false;
    }
    // A renaming to an empty name (a layer the user named just "<prefix>_") leaves the layer as it came.
    return !finalName.isNull();
}

// Only the nodes still on the layer the merge gave them move: a node whose record put it on another layer when
// its overrides were re-applied (earlier in the same load) stays there.
void MoveNodes(const MergedLayer& entry, ILayer* target) {
    for (INode* node : entry.nodes)
        if (node && node->GetLayer() == entry.layer) target->AddToLayer(node);
}

// The child layers of a merged layer that folds into target follow it there, so that the merged layer can go.
void MoveChildLayers(ILayer* from, ILayer* target) {
    for (int i = from->GetNumOfChildLayers() - 1; i >= 0; --i)
        if (ILayer* child = from->GetChildLayer(i)) child->SetParentLayer(target);
}

// Gives one merged layer its final name: it folds into a scene layer of that name, or is renamed to it.
void NameMergedLayer(ILayerManager* lm, Tab<MergedLayer*>& mergedLayers, MergedLayer& entry, const WStr& finalName) {
    ILayer* found = lm->GetLayer(finalName);
    if (entry.existed) {
        // The merge put the nodes on the scene's layer of the file's name; they move on to the final one.
        if (!found) found = lm->CreateLayer(finalName);
        if (!found) throw MAXException(MSTR(L"The layer manager refused a layer named ") + finalName, 0);
        MoveNodes(entry, found);
        entry.layer = found;
    } else if (found && found != entry.layer) {
        ILayer* merged = entry.layer;
        MoveNodes(entry, found);
        MoveChildLayers(merged, found);
        // A merged layer that still holds something (nodes put on it by others) stays where it is.
        if (lm->DeleteLayer(merged->GetName())) ForgetLayer(mergedLayers, merged);
        entry.layer = found;
    } else if (entry.layer->GetName() != finalName) {
        entry.layer->SetName(finalName);
    }
}

// Drops the owner's entries whose layer is gone; their references are let go before the slots are removed.
void DropEmptyEntries(LayerRecordOwner& owner) {
    Tab<RefLayer*>& refLayers = owner.RefLayers();
    for (int k = refLayers.Count() - 1; k >= 0; --k) {
        RefLayer* entry = refLayers[k];
        if (entry && entry->layer) continue;
        if (entry) owner.SetLayerReference(k, nullptr);
        delete entry;
        refLayers.Delete(k, 1);
    }
}

// Every merged layer that is not yet one of the owner's layers becomes a new entry, named by the layer's name in
// the reference file (the first merged layer's name when several fold into one layer).
void StoreNewLayers(LayerRecordOwner& owner, Tab<MergedLayer*>& mergedLayers) {
    for (MergedLayer* entry : mergedLayers)
        if (entry && entry->layer) entry->layer->SetAFlag(kLayerWorkBit);
    for (RefLayer* entry : owner.RefLayers())
        if (entry && entry->layer) entry->layer->ClearAFlag(kLayerWorkBit);
    for (MergedLayer* entry : mergedLayers) {
        if (!entry || !entry->layer || !entry->layer->TestAFlag(kLayerWorkBit)) continue;
        entry->layer->ClearAFlag(kLayerWorkBit);
        auto* stored = new RefLayer;
        stored->name = entry->name;
        Tab<RefLayer*>& refLayers = owner.RefLayers();
        refLayers.Append(stored);
        owner.SetLayerReference(refLayers.Count() - 1, entry->layer);
    }
}

}  // namespace

void MonitorMergedLayers(LayerRecordOwner& owner, const WStr& prefix, Tab<MergedLayer*>& mergedLayers,
                         LayerStepProgress& progress) {
    progress.step = IDS_STEP_LAYERS_CLEANED;
    progress.current = nullptr;
    ILayerManager* lm = SceneLayerManager();
    if (mergedLayers.Count() == 0 || !lm) return;
    for (MergedLayer* entry : mergedLayers)
        if (entry && entry->layer)
            if (MergedLayer* parent = EntryOfLayer(mergedLayers, entry->layer->GetParentLayer()))
                entry->parent = parent;

    // The merge may have hung a merged layer elsewhere; it goes back below its parent.
    progress.step = IDS_STEP_LAYERS_MONITORED;
    for (MergedLayer* entry : mergedLayers)
        if (entry && entry->layer && entry->parent && entry->parent->layer &&
            entry->layer->GetParentLayer() != entry->parent->layer)
            entry->layer->SetParentLayer(entry->parent->layer);

    for (MergedLayer* entry : mergedLayers) {
        if (!entry || !entry->layer) continue;
        progress.current = entry;
        if (ReceivedNothing(*entry)) {
            // A layer the scene had before the merge is the user's: it stays, it just is none of the reference's.
            if (entry->existed) {
                entry->layer = nullptr;
                continue;
            }
            if (DeleteEmptyLayer(lm, mergedLayers, *entry)) continue;
            // A layer the manager keeps (the current layer) is named like the others.
        }
        progress.step = IDS_STEP_LAYERS_EXISTED_CHECK;
        const RenamedLayer* renamed = FindRenaming(owner.RenamedLayers(), entry->name);
        WStr finalName;
        if (!FinalName(*entry, renamed, prefix, finalName)) continue;
        progress.step = IDS_STEP_LAYERS_NEW_LAYER_NAME;
        NameMergedLayer(lm, mergedLayers, *entry, finalName);
        progress.step = IDS_STEP_LAYERS_RENAMING;
    }
    progress.current = nullptr;

    progress.step = IDS_STEP_LAYERS_STORED;
    DropEmptyEntries(owner);
    StoreNewLayers(owner, mergedLayers);
}

MSTR LayerMonitoringFailure(const MCHAR* words, const LayerStepProgress& progress, const MCHAR* stepWord,
                            const MAXException* cause) {
    RecordFailure failure;
    failure.operation = words;
    if (const MergedLayer* entry = progress.current) {
        try {
            MSTR crashed;
            crashed.printf(L"Layer Crashed: %s (%d), existed: %d, numNodes: %d", entry->name.data(),
                           int(Animatable::GetHandleByAnim(entry->layer)), entry->existed, entry->nodes.Count());
            failure.description = crashed;
        } catch (...) {
            failure.description = MSTR(L"Layer Data Corrupted");
        }
    }
    if (stepWord && *stepWord) failure.step = MSTR(stepWord);
    failure.cause = RecordFailure::CauseOf(cause);
    return failure.ToString();
}

}  // namespace vandrels
