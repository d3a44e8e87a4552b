// Dismissing a reference: its content, records and lists go; the helper stays, empty. Deleting a helper's node
// dismisses its reference first (scene_events.cpp).
#include "helper/helper_error_report.h"
#include "frame/module_state.h"
#include "helper/reference_batch.h"
#include "helper/vandrels_helper.h"
#include "hold.h"
#include "ilayer.h"
#include "imtl.h"
#include "inode.h"
#include "maxapi.h"
#include "maxexception.h"
#include "records/ref_material.h"
#include "records/ref_node.h"
#include "winshim.h"

#include <unordered_set>
#include <vector>

namespace vandrels {
namespace {

// Whether the node still uses mtl (directly as its material).
class NodesUsing : public DependentEnumProc {
public:
    std::vector<INode*> nodes;
    explicit NodesUsing(Mtl* mtl) : mtl_(mtl) {}
    int proc(ReferenceMaker* rm) override {
        if (rm && rm->SuperClassID() == BASENODE_CLASS_ID && static_cast<INode*>(rm)->GetMtl() == mtl_)
            nodes.push_back(static_cast<INode*>(rm));
        return DEP_ENUM_CONTINUE;
    }

private:
    Mtl* mtl_;
};

// Deletes layer from the layer manager, its child layers first (last child first). The current layer first
// hands that role to layer "0"; a layer that keeps a child stays.
bool DeleteLayerTree(ILayerManager* lm, ILayer* layer) {
    bool childrenGone = true;
    for (int i = layer->GetNumOfChildLayers() - 1; i >= 0; --i)
        if (ILayer* child = layer->GetChildLayer(i)) childrenGone = DeleteLayerTree(lm, child) && childrenGone;
    if (!childrenGone) return false;
    if (lm->GetCurrentLayer() == layer) lm->SetCurrentLayer(L"0");
    return lm->DeleteLayer(layer->GetName());
}

}  // namespace
}  // namespace vandrels

int VandrelsHelper::Dismiss() {
    using namespace vandrels;
    OperationModeScope mode(kModeDismissing);
    BatchScope batch;
    try {
        Unload();
        SetCursor(LoadCursor(nullptr, IDC_WAIT));
        // The nodes the records still hold, and those that still use the records' materials, leave the scene.
        std::vector<INode*> doomed;
        std::unordered_set<INode*> seen;
        auto gather = [&](INode* node) {
            if (node && seen.insert(node).second) doomed.push_back(node);
        };
        for (int k = data_.refNodes.Count() - 1; k >= 0; --k) {
            if (data_.refNodes[k]) gather(data_.refNodes[k]->GetNode());
            DeleteReference(Slots().NodeRecord(k));
        }
        data_.refNodes.ZeroCount();
        for (int k = data_.refMaterials.Count() - 1; k >= 0; --k) {
            if (RefMaterial* record = data_.refMaterials[k])
                if (Mtl* mtl = record->GetMaterial()) {
                    NodesUsing users(mtl);
                    mtl->DoEnumDependents(&users);
                    for (INode* node : users.nodes) gather(node);
                }
            DeleteReference(Slots().MaterialRecord(k));
        }
        data_.refMaterials.ZeroCount();
        if (!doomed.empty()) {
            INodeTab table;
            for (INode* node : doomed) table.Append(node);
            GetCOREInterface()->DeleteNodes(table, true, true);
        }

        for (WStr* name : data_.nodesToDelete) delete name;
        data_.nodesToDelete.ZeroCount();
        if (ILayerManager* lm = GetCOREInterface()->GetLayerManager())
            for (int k = data_.refLayers.Count() - 1; k >= 0; --k)
                if (data_.refLayers[k] && data_.refLayers[k]->layer) DeleteLayerTree(lm, data_.refLayers[k]->layer);
        for (int k = data_.refLayers.Count() - 1; k >= 0; --k) {
            DeleteReference(Slots().Layer(k));
            delete data_.refLayers[k];
        }
        data_.refLayers.ZeroCount();
        for (RenamedLayer* renamed : data_.renamedLayers) delete renamed;
        data_.renamedLayers.ZeroCount();

        theHold.FlushUndoBuffer();
        batch.Close();
        SetCursor(LoadCursor(nullptr, IDC_ARROW));
        return 1;
    } catch (const MAXException& e) {
        ReportHelperError(this, L"Error Dismissing Reference", nullptr, &e);
    } catch (...) {
        ReportHelperError(this, L"Unknown Error Dismissing Reference", nullptr, nullptr);
    }
    batch.Close();
    SetCursor(LoadCursor(nullptr, IDC_ARROW));
    return 0;
}
