// Unloading a reference: its content leaves the scene while its records and their overrides stay. Nothing local
// is lost on the way: the local children the records list hang from the scene root, a referenced node that
// local items depend on stays in light form in its place (or, when it holds what lightening cannot replace,
// hands its dependents to an auxiliary node), and the next load moves every dependent over to the freshly
// merged node.
#include "frame/module.h"
#include "frame/placeholders.h"
#include "helper/helper_error_report.h"
#include "helper/hold_scopes.h"
#include "helper/load_work.h"
#include "frame/module_state.h"
#include "helper/node_lightening.h"
#include "helper/reference_batch.h"
#include "helper/vandrels_helper.h"
#include "hold.h"
#include "inode.h"
#include "listener.h"
#include "maxapi.h"
#include "maxexception.h"
#include "notify.h"
#include "records/node_transfer.h"
#include "records/ref_node.h"
#include "records/scene_utils.h"
#include "resource.h"
#include "frame/settings.h"
#include "winshim.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace vandrels {
namespace {

constexpr int kNotifyUnloadStarts = 0xDFA2;
constexpr int kNotifyUnloadEnds = 0xDFA3;
// The undo entry of an unload that runs while the host is holding.
constexpr const MCHAR* kUnloadHoldName = L"VDU";

// The world transform of node expressed under its parent: what a placeholder controller must hold for the node
// to stay where it is.
Matrix3 TransformUnderParent(INode* node, TimeValue t) {
    const Matrix3 world = node->GetNodeTM(t);
    INode* parent = node->GetParentNode();
    if (!parent || parent->IsRootNode()) return world;
    return world * Inverse(parent->GetNodeTM(t));
}

// The working lists of one unload, taken from the records that the collect pass found with their node.
class UnloadWork {
public:
    explicit UnloadWork(VandrelsHelper* helper) {
        for (RefNode* record : helper->NodeRecords())
            if (record && record->WasNodeLoadedAtCollect() && record->GetNode()) records_.push_back(record);
        RegisterNotification(onNodeDeleted, this, NOTIFY_SCENE_PRE_DELETED_NODE);
    }
    ~UnloadWork() { UnRegisterNotification(onNodeDeleted, this, NOTIFY_SCENE_PRE_DELETED_NODE); }
    UnloadWork(const UnloadWork&) = delete;
    UnloadWork& operator=(const UnloadWork&) = delete;

    // The local children each record lists leave the referenced node, keeping their transform under it, so that
    // the record puts them back under the fresh node unchanged.
    void DetachLocalChildren() {
        for (RefNode* record : records_) {
            if (!(record->GetOverrideFlags() & kNodeChildren)) continue;
            INode* node = record->GetNode();
            for (INode* child : record->GetChildren())
                if (node && child && child->GetParentNode() == node) child->Detach(0, FALSE);
        }
    }

    static int Depth(INode* node) {
        int depth = 0;
        for (INode* n = node ? node->GetParentNode() : nullptr; n && !n->IsRootNode(); n = n->GetParentNode()) ++depth;
        return depth;
    }

    // Decides what happens to each referenced node: kept in light form when local items depend on it, its
    // dependents moved to an auxiliary node when lightening cannot replace all it holds, deleted otherwise.
    // The auxiliary nodes are made here; then the referenced nodes leave the scene.
    void MakeAuxiliaryNodesAndDelete(double& deleteTime) {
        Interface* ip = GetCOREInterface();
        const TimeValue t = ip->GetTime();
        for (RefNode* record : records_) {
            INode* node = record->GetNode();
            if (!node) continue;
            if (!(record->GetOverrideFlags() & kNodeLocalDependents)) {
                doomed_.Append(node);
                continue;
            }
            if (!NeedsStandInNode(node)) {
                kept_.push_back(node);
                continue;
            }
            INode* aux = ip->CreateObjectNode(MakePlaceholderObject(node->GetBaseObject()));
            aux->SetName(node->GetName());
            aux->SetWireColor(node->GetWireColor());
            aux->SetTMController(MakePlaceholderController(node->GetNodeTM(t)));
            TransferNodeReferences(node, aux, false);
            if (record->GetNode() != aux) record->ReplaceReference(0, aux);
            doomed_.Append(node);
        }
        MaxSDK::PerformanceTools::Timer timer;
        doomed_.Compact();
        // Deepest first: deleting a node re-links its children to the root keeping their place, which writes
        // their world transform into their own controllers. A child that leaves with it must not go through that,
        // or the controller its record keeps would come back holding the world transform as its local one.
        std::vector<std::pair<int, INode*>> byDepth;
        for (INode* node : doomed_.Nodes()) byDepth.emplace_back(Depth(node), node);
        std::stable_sort(byDepth.begin(), byDepth.end(),
                         [](const auto& a, const auto& b) { return a.first > b.first; });
        INodeTab table;
        for (const auto& entry : byDepth) table.Append(entry.second);
        if (table.Count()) ip->DeleteNodes(table, true, false);
        doomed_.Clear();
        deleteTime = timer.EndTimer();
    }

    // The nodes kept for local items get their stand-ins: a placeholder object, a placeholder controller that
    // holds them where they are, no visibility controller and no material.
    void LightenKeptNodes() {
        const TimeValue t = GetCOREInterface()->GetTime();
        for (INode* node : kept_) {
            if (!node) continue;
            LightenNode(node, TransformUnderParent(node, t), true, false);
            RefMessagesOffScope messagesOff;
            node->SetMtl(nullptr);
        }
        kept_.clear();
    }

private:
    // A node deleted by anyone while the unload deletes leaves the working lists.
    static void onNodeDeleted(void* param, NotifyInfo* info) {
        auto* self = static_cast<UnloadWork*>(param);
        auto* node = info ? static_cast<INode*>(info->callParam) : nullptr;
        if (!self || !node) return;
        self->doomed_.Remove(node);
        for (INode*& kept : self->kept_)
            if (kept == node) kept = nullptr;
    }

    std::vector<RefNode*> records_;
    NodeList doomed_;
    std::vector<INode*> kept_;
};

}  // namespace
}  // namespace vandrels

int VandrelsHelper::Unload() {
    using namespace vandrels;
    BroadcastNotification(kNotifyUnloadStarts, this);
    SetCursor(LoadCursor(nullptr, IDC_WAIT));
    const bool timing = GetPrintTimes();
    MaxSDK::PerformanceTools::Timer totalTimer;
    double collectTime = 0, deleteTime = 0;
    int step = 0;
    int result = 0;
    {
        BatchScope batch;
        try {
            theHold.FlushUndoBuffer();
            step = IDS_STEP_UNLOAD_UNDO_CLEARED;
            OperationModeScope mode(kModeUnloading);
            data_.holdsNested = 0;
            {
                HoldResumedScope resumed;
                NestedHoldScope hold(kUnloadHoldName);
                step = IDS_STEP_UNLOAD_HOLD_CHECKED;

                MaxSDK::PerformanceTools::Timer collectTimer;
                RunCollectPass();
                collectTime = collectTimer.EndTimer();
                step = IDS_STEP_UNLOAD_REMEMBERED;

                UnloadWork work(this);
                step = IDS_STEP_UNLOAD_LIGHTENED;
                work.DetachLocalChildren();
                step = IDS_STEP_UNLOAD_LIGHTING2;
                work.MakeAuxiliaryNodesAndDelete(deleteTime);
                step = IDS_STEP_UNLOAD_LIGHTING_NORMAL;
                work.LightenKeptNodes();
                hold.Accept();
            }
            theHold.FlushUndoBuffer();
            step = IDS_STEP_UNLOAD_UNDO_CLEARED;
            batch.Close();
            result = 1;
        } catch (const MAXException& e) {
            ReportHelperError(this, L"Error Unloading Reference", step ? GetStringCopy(step).data() : nullptr, &e);
        } catch (...) {
            ReportHelperError(this, L"Unknown Error Unloading Reference", step ? GetStringCopy(step).data() : nullptr,
                              nullptr);
        }
        batch.Close();
    }
    data_.loaded = 0;
    if (result && timing) {
        mprintf(L"\nVD Collect Time: %f\nVD Delete Time: %f\nVD Total Unloading Time: %f", collectTime, deleteTime,
                totalTimer.EndTimer());
        mflush();
    }
    SetCursor(LoadCursor(nullptr, IDC_ARROW));
    BroadcastNotification(kNotifyUnloadEnds, this);
    return result;
}
