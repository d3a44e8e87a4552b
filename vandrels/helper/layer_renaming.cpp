// The reference's layers and their names: the renamings the user made are recorded (so that the next merge
// gives the layers the same names), and a change of the name prefix renames the layers.
#include "helper/layer_monitoring.h"

#include "ilayer.h"
#include "inode.h"
#include "maxapi.h"
#include "records/scene_utils.h"

#include <vector>

namespace vandrels {

namespace {

WStr WithPrefix(const WStr& prefix, const WStr& name) { return prefix.isNull() ? name : prefix + L"_" + name; }

RenamedLayer* FindRenaming(Tab<RenamedLayer*>& renamedLayers, const WStr& name) {
    for (RenamedLayer* renamed : renamedLayers)
        if (renamed && renamed->name == name) return renamed;
    return nullptr;
}

// Moves the nodes and child layers of from onto target and takes the emptied layer out of the scene.
void FoldLayer(ILayerManager* lm, ILayer* from, ILayer* target) {
    std::vector<INode*> nodes;
    for (int i = 0; i < from->NumNodes(); ++i) nodes.push_back(from->GetNode(i));
    for (INode* node : nodes)
        if (node) target->AddToLayer(node);
    for (int i = from->GetNumOfChildLayers() - 1; i >= 0; --i)
        if (ILayer* child = from->GetChildLayer(i)) child->SetParentLayer(target);
    // The current layer, or one that kept something, stays.
    if (from->NumNodes() == 0 && from->GetNumOfChildLayers() == 0) lm->DeleteLayer(from->GetName());
}

}  // namespace

void RecordLayerRenamings(LayerRecordOwner& owner, const WStr& prefix) {
    Tab<RenamedLayer*>& renamedLayers = owner.RenamedLayers();
    for (RefLayer* entry : owner.RefLayers()) {
        if (!entry || !entry->layer) continue;
        MSTR current = entry->layer->GetName();
        if (current == WithPrefix(prefix, entry->name)) continue;
        RenamedLayer* renamed = FindRenaming(renamedLayers, entry->name);
        if (!renamed) {
            renamed = new RenamedLayer;
            renamed->name = entry->name;
            renamedLayers.Append(renamed);
        }
        // A name without the prefix is taken as it stands from now on; a renaming that already is so stays so.
        if (!renamed->noPrefix) renamed->noPrefix = StripNamePrefix(prefix.data(), current);
        renamed->newName = current;
    }
}

bool RenameReferenceLayer(LayerRecordOwner& owner, int k, const WStr& newName) {
    Tab<RefLayer*>& refLayers = owner.RefLayers();
    if (k < 0 || k >= refLayers.Count() || !refLayers[k] || newName.isNull()) return false;
    ILayer* layer = refLayers[k]->layer;
    if (!layer || layer->GetName() == newName) return false;
    Interface* ip = GetCOREInterface();
    ILayerManager* lm = ip ? ip->GetLayerManager() : nullptr;
    ILayer* other = lm ? lm->GetLayer(newName) : nullptr;
    if (!other || other == layer) return layer->SetName(newName);
    // The scene has a layer of the name already: the reference's layer joins it.
    owner.SetLayerReference(k, other);
    FoldLayer(lm, layer, other);
    return true;
}

void ChangeLayerPrefix(LayerRecordOwner& owner, const WStr& oldPrefix, const WStr& newPrefix) {
    RecordLayerRenamings(owner, oldPrefix);
    Tab<RefLayer*>& refLayers = owner.RefLayers();
    for (int k = 0; k < refLayers.Count(); ++k) {
        RefLayer* entry = refLayers[k];
        if (!entry || !entry->layer) continue;
        const RenamedLayer* renamed = FindRenaming(owner.RenamedLayers(), entry->name);
        if (renamed && renamed->noPrefix) continue;
        RenameReferenceLayer(owner, k, WithPrefix(newPrefix, renamed ? renamed->newName : entry->name));
    }
}

}  // namespace vandrels
