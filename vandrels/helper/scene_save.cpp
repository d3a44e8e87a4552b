#include "helper/scene_save.h"

#include "assetmanagement.h"
#include "frame/module.h"
#include "frame/placeholders.h"
#include "frame/record_failure.h"
#include "frame/module_state.h"
#include "helper/helper_registry.h"
#include "helper/node_lightening.h"
#include "helper/save_state.h"
#include "helper/vandrels_helper.h"
#include "hold.h"
#include "inode.h"
#include "listener.h"
#include "maxapi.h"
#include "maxexception.h"
#include "maxscript/maxscript.h"
#include "notify.h"
#include "records/node_transfer.h"
#include "records/ref_holder.h"
#include "records/ref_node.h"
#include "records/scene_utils.h"
#include "resource.h"
#include "helper/save_merged.h"
#include "frame/settings.h"
#include "helper/error_report.h"
#include "winshim.h"

#include <algorithm>

namespace vandrels {
namespace {

// A failure of the pre-save or post-save: the words, the host exception's text right after them and the step
// word last, under the scene-wide report's label.
RecordFailure SaveFailure(const MCHAR* words, int step, const MAXException* cause) {
    RecordFailure failure{words, std::nullopt, RecordFailure::StepOf(step), RecordFailure::CauseOf(cause),
                          RecordFailure::StepLabel::Spaced};
    failure.causePlace = RecordFailure::CausePlace::BeforeStep;
    return failure;
}

constexpr const MCHAR* kHolderNodeName = L"VDHN";
constexpr const MCHAR* kWorkbenchTitle = L"Animation Workbench";
// Empties the workbench's track set, which would otherwise hold on to referenced controllers.
constexpr const MCHAR* kEmptyWorkbenchTrackSet =
    L"wb=TrackViewNodes.selection_set_manager.MZWB_Track_Set;for i=wb.numsubs to 1 by -1 do "
    L"deleteTrackViewController wb wb[i].controller;";

// Keeps the save's own scene changes out of the undo buffer.
class HoldSuspendedScope {
public:
    HoldSuspendedScope() { theHold.Suspend(); }
    ~HoldSuspendedScope() { theHold.Resume(); }
    HoldSuspendedScope(const HoldSuspendedScope&) = delete;
    HoldSuspendedScope& operator=(const HoldSuspendedScope&) = delete;
};

// Switches the host's quiet mode on for its lifetime and back as it was.
class QuietModeScope {
public:
    QuietModeScope() : saved_(GetCOREInterface()->GetQuietMode()) { GetCOREInterface()->SetQuietMode(TRUE); }
    ~QuietModeScope() { GetCOREInterface()->SetQuietMode(saved_); }
    QuietModeScope(const QuietModeScope&) = delete;
    QuietModeScope& operator=(const QuietModeScope&) = delete;

private:
    BOOL saved_;
};

bool IsUnderSceneRoot(INode* node) {
    if (!node) return false;
    INode* top = node;
    while (INode* parent = top->GetParentNode()) top = parent;
    return top == GetCOREInterface()->GetRootNode();
}

bool IsClass(Animatable* item, const Class_ID& id) { return item && item->ClassID() == id; }

// A referenced node that leaves the written scene (its record sees no local dependents and its helper does not
// keep the content).
bool LeavesWrittenScene(INode* node) {
    RefNode* record = FindNodeRecord(node);
    if (!record || (record->GetOverrideFlags() & kNodeLocalDependents)) return false;
    VandrelsHelper* helper = VandrelsHelper::FromOwner(record->GetHelper());
    return !(helper && helper->GetPersistRef());
}

// Step 4: with the animation workbench open, its track set is emptied and the selection put aside.
void PutWorkbenchSelectionAside(SaveState& s) {
    s.selection.ZeroCount();
    if (!FindWindowW(nullptr, kWorkbenchTitle)) return;
    Interface* ip = GetCOREInterface();
    for (int i = 0; i < ip->GetSelNodeCount(); ++i)
        if (INode* node = ip->GetSelNode(i)) s.selection.Append(node);
    ExecuteMAXScriptScript(kEmptyWorkbenchTrackSet, MAXScript::ScriptSource::Embedded, TRUE, nullptr, TRUE);
    ip->ClearNodeSelection(FALSE);
}

// Step 5: helpers inside externally referenced scenes are not saved by this scene.
void DropHelpersOutsideScene() {
    Tab<VandrelsHelper*>& registry = HelperRegistry();
    for (int i = registry.Count() - 1; i >= 0; --i)
        if (!IsUnderSceneRoot(registry[i] ? registry[i]->GetNode() : nullptr)) registry.Delete(i, 1);
}

// Reloads every helper whose content differs between viewport and render, as rendering or not.
void SwitchRenderContent(bool rendering) {
    if (rendering) SetRendering(true);
    Tab<VandrelsHelper*> helpers = HelperRegistry();
    for (VandrelsHelper* helper : helpers)
        if (HelperRegistry().Contains(helper) && helper->NeedsRenderSwitching()) helper->Reload();
    if (rendering) SetRendering(false);
}

// Step 8: a temporary external-scene entry of the scene root, which the host does not write, and the holder
// node under its tree.
void MakeParkingPlace(SaveState& s) {
    using namespace MaxSDK::AssetManagement;
    INode* root = GetCOREInterface()->GetRootNode();
    const AssetUser asset = IAssetManager::GetInstance()->GetAsset(GetStringCopy(IDS_XREF_ENTRY_ASSET), kXRefAsset);
    if (!root->AddNewXRefFile(asset, FALSE)) throw MAXException(L"The scene root took no external-scene entry");
    s.parkingRoot = root->GetXRefTree(root->GetXRefFileCount() - 1);
    if (!s.parkingRoot) throw MAXException(L"The external-scene entry has no tree");
    s.holder = new RefHolder();
    s.holderNode = GetCOREInterface()->CreateObjectNode(s.holder);
    s.holderNode->SetName(kHolderNodeName);
    s.parkingRoot->AttachChild(s.holderNode, 0);
    s.relinkList.ZeroCount();
    s.auxList.ZeroCount();
    s.linkList.ZeroCount();
    s.lightenList.ZeroCount();
    s.childOrders.clear();
}

void AddLink(SaveState& s, INode* child, INode* parent, INode* destination) {
    s.linkList.Append(LinkEntry{child, parent, destination});
}

bool IsLinkedChild(const SaveState& s, INode* child) {
    for (const LinkEntry& entry : s.linkList)
        if (entry.child == child) return true;
    return false;
}

// The local children of a node that leaves the written scene (attached under it, without a record of their
// own) hang from the scene root during the write, whether or not the node's record lists them yet.
void KeepLocalChildren(SaveState& s, INode* node, INode* sceneRoot) {
    for (int i = 0; i < node->NumberOfChildren(); ++i) {
        INode* child = node->GetChildNode(i);
        if (child && !FindNodeRecord(child) && !IsLinkedChild(s, child)) AddLink(s, child, node, sceneRoot);
    }
}

void AddLighten(SaveState& s, INode* node) {
    s.lightenList.Append(LightenEntry{node, node->GetNodeTM(GetCOREInterface()->GetTime()), true});
}

// Step 10 when the references are left out: what leaves the written scene, what stays in light form, and which
// local children hang from the scene root meanwhile.
void DecideReferencedContent(SaveState& s) {
    INode* sceneRoot = GetCOREInterface()->GetRootNode();
    for (VandrelsHelper* helper : HelperRegistry()) {
        if (!helper || helper->GetPersistRef()) continue;
        for (int k = 0; k < helper->NodeRecords().Count(); ++k) {
            RefNode* record = helper->NodeRecords()[k];
            INode* node = record ? record->GetNode() : nullptr;
            INode* parent = node ? node->GetParentNode() : nullptr;
            if (!parent) continue;
            const std::uint32_t flags = record->GetOverrideFlags();
            if (flags & kNodeChildren)
                for (INode* child : record->GetChildren())
                    if (child && !IsLinkedChild(s, child)) AddLink(s, child, node, sceneRoot);
            if (!(flags & kNodeLocalDependents)) {
                KeepLocalChildren(s, node, sceneRoot);
                if (!LeavesWrittenScene(parent)) AddLink(s, node, parent, s.parkingRoot);
                continue;
            }
            if (!(flags & kNodeClothChanged) && NeedsStandInNode(node)) {
                KeepLocalChildren(s, node, sceneRoot);
                s.auxList.Append(AuxEntry{node, nullptr, node->GetNodeTM(GetCOREInterface()->GetTime())});
                AddLink(s, node, parent, s.parkingRoot);
                continue;
            }
            if (!(flags & kNodeClothChanged)) AddLighten(s, node);
            AddLink(s, node, parent, sceneRoot);
        }
    }
}

void CollectUnloadedNodes(SaveState& s, INode* parent) {
    for (int i = 0; i < parent->NumberOfChildren(); ++i) {
        INode* node = parent->GetChildNode(i);
        if (!node) continue;
        Object* base = node->GetBaseObject();
        if (IsClass(node->GetTMController(), EMPTY_CONTROLLER_CLASS_ID) || IsClass(base, EMPTY_BASE_OBJECT_CLASS_ID) ||
            IsClass(base, EMPTY_SHAPE_CLASS_ID))
            AddLighten(s, node);
        CollectUnloadedNodes(s, node);
    }
}

// Step 10 when the scene is written merged: the helpers stay out, and content that is unloaded now is written
// with host classes.
void DecideMergedContent(SaveState& s) {
    for (VandrelsHelper* helper : HelperRegistry()) {
        INode* node = helper ? helper->GetNode() : nullptr;
        if (node && node->GetParentNode()) AddLink(s, node, node->GetParentNode(), s.parkingRoot);
    }
    CollectUnloadedNodes(s, GetCOREInterface()->GetRootNode());
}

// Step 11: an auxiliary node with a placeholder object and the node's transform takes over the node's
// dependents, and its record, while the node itself is parked.
void MakeAuxiliaryNodes(SaveState& s) {
    Interface* ip = GetCOREInterface();
    for (AuxEntry& entry : s.auxList) {
        INode* aux = ip->CreateObjectNode(MakePlaceholderObject(entry.node->GetBaseObject()));
        entry.auxiliary = aux;
        aux->SetName(entry.node->GetName());
        aux->SetWireColor(entry.node->GetWireColor());
        aux->SetTMController(MakePlaceholderController(entry.tm));
        TransferNodeReferences(entry.node, aux, false);
        if (RefNode* record = FindNodeRecord(entry.node)) record->ReplaceReference(0, aux);
    }
}

// The order of the children of every parent that a link entry names, noted before anything is added to the
// scene, so that the post-save can put it back.
void NoteChildOrders(SaveState& s) {
    for (const LinkEntry& entry : s.linkList) {
        auto known = std::find_if(s.childOrders.begin(), s.childOrders.end(),
                                  [&](const auto& order) { return order.first == entry.parent; });
        if (known != s.childOrders.end()) continue;
        std::vector<INode*> children;
        for (int i = 0; i < entry.parent->NumberOfChildren(); ++i) children.push_back(entry.parent->GetChildNode(i));
        s.childOrders.emplace_back(entry.parent, std::move(children));
    }
}

// Step 12: the links of the write.
void LinkForWrite(SaveState& s) {
    for (const LinkEntry& entry : s.linkList) entry.destination->AttachChild(entry.child, 0);
}

// Step 13: the holder grows by three references per node to lighten, which then takes its stand-ins.
void LightenForWrite(SaveState& s) {
    const int base = s.holder->NumRefs();
    s.holder->SetNumRefs(base + 3 * s.lightenList.Count());
    for (int k = 0; k < s.lightenList.Count(); ++k) {
        const LightenEntry& entry = s.lightenList[k];
        s.relinkList.Append(ParkNodeItems(s.holder, base + 3 * k, entry.node, entry.hasTm));
        LightenNode(entry.node, entry.tm, entry.hasTm, s.saveMerged != 0);
    }
    s.lightenList.ZeroCount();
}

// Post-save step 6: the auxiliary nodes hand the dependents and the record back and leave.
void RemoveAuxiliaryNodes(SaveState& s) {
    while (s.auxList.Count()) {
        const AuxEntry entry = s.auxList[0];
        s.auxList.Delete(0, 1);
        if (!entry.auxiliary) continue;
        TransferNodeReferences(entry.auxiliary, entry.node, false);
        if (RefNode* record = FindNodeRecord(entry.auxiliary)) record->ReplaceReference(0, entry.node);
        GetCOREInterface()->DeleteNode(entry.auxiliary, TRUE);
    }
}

// Post-save step 7: every node goes back under the parent it had, in the place it had among its siblings.
void RestoreLinks(SaveState& s) {
    QuietModeScope quiet;
    for (const LinkEntry& entry : s.linkList)
        if (entry.child && entry.parent && entry.child->GetParentNode() != entry.parent)
            entry.parent->AttachChild(entry.child, 0);
    s.linkList.ZeroCount();
    for (const auto& [parent, order] : s.childOrders) {
        if (!s.parkingRoot) break;
        // Attaching appends: from the first child out of place on, the children pass through the parking place
        // and come back in order.
        std::size_t first = 0;
        while (first < order.size() && int(first) < parent->NumberOfChildren() &&
               parent->GetChildNode(int(first)) == order[first])
            ++first;
        for (std::size_t i = first; i < order.size(); ++i)
            if (order[i] && order[i]->GetParentNode() == parent) {
                s.parkingRoot->AttachChild(order[i], 0);
                parent->AttachChild(order[i], 0);
            }
    }
    s.childOrders.clear();
}

// Post-save step 9: the holder node and the temporary external-scene entry leave the scene.
void RemoveParkingPlace(SaveState& s) {
    Interface* ip = GetCOREInterface();
    if (s.holderNode) ip->DeleteNode(s.holderNode, TRUE);
    s.holderNode = nullptr;
    s.holder = nullptr;
    s.parkingRoot = nullptr;
    INode* root = ip->GetRootNode();
    const MSTR asset = GetStringCopy(IDS_XREF_ENTRY_ASSET);
    const int count = root->GetXRefFileCount();
    if (count > 0 && root->GetXRefAsset(count - 1).GetFileName() == asset) {
        root->DeleteXRefFile(count - 1);
        return;
    }
    for (int i = 0; i < count; ++i)
        if (root->GetXRefAsset(i).GetFileName() == asset) {
            root->DeleteXRefFile(i);
            return;
        }
}

void SetWaitCursor(bool wait) { SetCursor(LoadCursor(nullptr, wait ? IDC_WAIT : IDC_ARROW)); }

}  // namespace

void PreSave(NotifyInfo* info) {
    if (GetOperationMode() == kModeSavingAs) return;
    SaveState& s = GetSaveState();
    int step = 0;
    const bool timing = GetPrintTimes();
    if (timing) s.preSaveTimer.StartTimer();
    s.savePath = info && info->callParam ? MSTR(static_cast<const MCHAR*>(info->callParam)) : MSTR();
    if (HelperRegistry().Count() == 0) {
        SetOperationMode(kModeSavingNodes);
        return;
    }
    SetWaitCursor(true);
    HoldSuspendedScope holdSuspended;
    try {
        PutWorkbenchSelectionAside(s);
        DropHelpersOutsideScene();
        step = IDS_STEP_SAVE_CLEANED;

        s.saveMerged = ShouldSaveMerged(s.savePath.data()) ? 1 : 0;
        if (s.saveMerged) SwitchRenderContent(true);
        SetOperationMode(kModeSaving);
        MakeParkingPlace(s);

        s.collectTime = 0;
        if (!s.saveMerged) {
            s.collectTimer.StartTimer();
            Tab<VandrelsHelper*> helpers = HelperRegistry();
            for (VandrelsHelper* helper : helpers)
                if (helper) helper->RunCollectPass();
            s.collectTime = s.collectTimer.EndTimer();
        }
        step = IDS_STEP_SAVE_REMEMBERED;

        step = IDS_STEP_SAVE_LINKING;
        if (s.saveMerged)
            DecideMergedContent(s);
        else
            DecideReferencedContent(s);
        NoteChildOrders(s);
        step = IDS_STEP_SAVE_LOC_DEP_COLLECT;
        MakeAuxiliaryNodes(s);
        step = IDS_STEP_SAVE_LIGHTING_2;
        LinkForWrite(s);
        step = IDS_STEP_SAVE_LINKING;
        LightenForWrite(s);

        if (timing) {
            mprintf(L"\nVD Collect Time: %f\nVD PreSave Time: %f", s.collectTime, s.preSaveTimer.EndTimer());
            mflush();
            s.saveTimer.StartTimer();
        }
        SetOperationMode(kModeSavingNodes);
    } catch (const MAXException& e) {
        ReportError(SaveFailure(L"Error Saving Scene in PreSave", step, &e));
        SetOperationMode(kModeIdle);
    } catch (...) {
        ReportError(SaveFailure(L"Unknown Error Saving Scene in PreSave", step, nullptr));
        SetOperationMode(kModeIdle);
    }
}

void PostSave(NotifyInfo*) {
    if (GetOperationMode() == kModeSavingAs) return;
    SaveState& s = GetSaveState();
    int step = 0;
    const bool timing = GetPrintTimes();
    if (timing) {
        mprintf(L"\nVD Save Time: %f", s.saveTimer.EndTimer());
        mflush();
        s.postSaveTimer.StartTimer();
    }
    // The pre-save may have dropped the last helper (one inside an external scene) after it began parking.
    const bool parked = s.holderNode || s.relinkList.Count() || s.auxList.Count() || s.linkList.Count();
    if (HelperRegistry().Count() == 0 && !parked) {
        SetOperationMode(kModeIdle);
        return;
    }
    SetWaitCursor(true);
    SetOperationMode(kModeRestoring);
    SetPreSaveProcessPath(MSTR());
    {
        HoldSuspendedScope holdSuspended;
        try {
            while (s.relinkList.Count()) {
                const RelinkEntry entry = s.relinkList[0];
                s.relinkList.Delete(0, 1);
                RestoreParkedItems(entry);
            }
            step = IDS_STEP_RESTORE_LIGHTING_RESTORE;
            RemoveAuxiliaryNodes(s);
            step = IDS_STEP_RESTORE_LIGHTING_RESTORE_2;
            RestoreLinks(s);
            step = IDS_STEP_RESTORE_LINKING_RESTORE;
            if (!s.saveMerged) {
                Tab<VandrelsHelper*> helpers = HelperRegistry();
                for (VandrelsHelper* helper : helpers)
                    for (int k = 0; helper && k < helper->NodeRecords().Count(); ++k)
                        if (RefNode* record = helper->NodeRecords()[k]) record->FinishLoad();
            }
            step = IDS_STEP_RESTORE_RESTORE;
            RemoveParkingPlace(s);
            GetCOREInterface()->SetSaveRequiredFlag(FALSE);
            if (timing) {
                mprintf(L"\nVD PostSave Time: %f\n", s.postSaveTimer.EndTimer());
                mflush();
            }
        } catch (const MAXException& e) {
            ReportError(SaveFailure(L"Error Saving Reference in PostSave", step, &e));
        } catch (...) {
            ReportError(SaveFailure(L"Unknown Error Saving Reference in PostSave", step, nullptr));
        }
    }
    SetOperationMode(kModeIdle);
    if (s.saveMerged) {
        s.saveMerged = 0;
        SwitchRenderContent(false);
    }
    if (s.selection.Count()) {
        INodeTab nodes;
        for (INode* node : s.selection)
            if (node) nodes.Append(node);
        GetCOREInterface()->SelectNodeTab(nodes, TRUE, FALSE);
        s.selection.ZeroCount();
    }
    SetWaitCursor(false);
}

}  // namespace vandrels
