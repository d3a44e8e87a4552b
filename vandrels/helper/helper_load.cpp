// Loading a reference: the helper merges its file, binds the merged nodes and materials to its records (by
// their names in the reference file), deletes the nodes the user deleted locally, sorts out the layers and ends
// with the undo buffer cleared.
#include "helper/file_time.h"
#include "helper/helper_error_report.h"
#include "helper/helper_params.h"
#include "helper/hold_scopes.h"
#include "helper/layer_monitoring.h"
#include "helper/load_work.h"
#include "helper/merge_reference_file.h"
#include "frame/module_state.h"
#include "helper/name_increment.h"
#include "helper/reference_batch.h"
#include "helper/vandrels_helper.h"

#include "anims/ref_anim.h"
#include "frame/module.h"
#include "hold.h"
#include "imtl.h"
#include "inode.h"
#include "listener.h"
#include "maxapi.h"
#include "maxexception.h"
#include "notify.h"
#include "records/ref_material.h"
#include "records/ref_node.h"
#include "records/scene_utils.h"
#include "resource.h"
#include "frame/settings.h"
#include "helper/dup_names_dialog.h"
#include "winshim.h"

#include <cstdio>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace vandrels {
namespace {

constexpr int kNotifyLoadStarts = 0xDFA4;
constexpr int kNotifyLoadEnds = 0xDFA5;
constexpr RefMessage kMsgTakeLocalName = 0x8663DF11;
constexpr long kMaxMaterialNameIncrements = 100000;

std::wstring Key(const MCHAR* name) { return name ? std::wstring(name) : std::wstring(); }

// Drops, from the last slot to the first, the empty slots and the records that carry nothing.
template <class Record> void DropBareRecords(VandrelsHelper* helper, Tab<Record*>& records, HelperSlot kind) {
    for (int k = records.Count() - 1; k >= 0; --k) {
        if (records[k] && records[k]->HasOverrides()) continue;
        if (records[k]) helper->DeleteReference(helper->Slots().SlotOf(kind, k));
        records.Delete(k, 1);
    }
}

// Matches merged materials to the helper's material records by their names in the reference file.
void MonitorMaterials(VandrelsHelper* helper, LoadWork& work, Tab<Mtl*>& newMaterials) {
    std::unordered_map<std::wstring, RefMaterial*> byName;
    for (int k = helper->MaterialRecords().Count() - 1; k >= 0; --k)
        if (RefMaterial* record = helper->MaterialRecords()[k]) byName[Key(record->GetReferenceName().data())] = record;
    for (INode* node : work.mergedNodes.Nodes()) {
        Mtl* mtl = node ? node->GetMtl() : nullptr;
        if (!mtl || FindRecord(mtl)) continue;
        newMaterials.Append(mtl);
        auto it = byName.find(Key(mtl->GetName().data()));
        if (it != byName.end())
            it->second->Update(mtl);
        else
            helper->AppendMaterialRecord(mtl);
    }
}

// Moves the merged nodes whose names the user deleted locally to the deletion list (last to first).
void CollectNodesToDelete(VandrelsHelper* helper, LoadWork& work) {
    std::unordered_set<std::wstring> names;
    for (WStr* name : helper->DeletedNodeNames())
        if (name) names.insert(Key(name->data()));
    if (names.empty()) return;
    const Tab<INode*>& nodes = work.mergedNodes.Nodes();
    for (int i = nodes.Count() - 1; i >= 0; --i) {
        INode* node = nodes[i];
        if (!node || !names.count(Key(node->GetName()))) continue;
        // A group member may be deleted alone once it no longer counts as one.
        if (node->IsGroupMember()) node->SetGroupMember(FALSE);
        work.mergedNodes.Remove(node);
        work.toDelete.Append(node);
    }
    work.mergedNodes.Compact();
}

// Binds every merged node to the first unbound record of its name among the records made before this step,
// or to a new record; answers whether a name met a record bound already in this load.
bool MonitorNodes(VandrelsHelper* helper, LoadWork& work) {
    struct Candidates {
        std::vector<RefNode*> records;  // records of this name among the first K, in order
        size_t cursor = 0;              // records before it are bound
        bool boundSeen = false;
        int madeHere = 0;               // records of this name made in this step
    };
    std::unordered_map<std::wstring, Candidates> byName;
    const int existing = helper->NodeRecords().Count();
    for (int k = 0; k < existing; ++k)
        if (RefNode* record = helper->NodeRecords()[k]) byName[Key(record->GetName().data())].records.push_back(record);

    bool duplicates = false;
    // Nodes added while records bind (appended to the list) are bound too.
    for (int i = 0; i < work.mergedNodes.Nodes().Count(); ++i) {
        INode* node = work.mergedNodes.Nodes()[i];
        if (!node || FindNodeRecord(node)) continue;
        Candidates& c = byName[Key(node->GetName())];
        while (c.cursor < c.records.size() && c.records[c.cursor]->IsNodeLoaded()) {
            c.boundSeen = true;
            ++c.cursor;
        }
        RefNode* taken = c.cursor < c.records.size() ? c.records[c.cursor] : nullptr;
        if (c.boundSeen || c.madeHere > 0) duplicates = true;
        if (taken) {
            ++c.cursor;
            c.boundSeen = true;
            taken->Update(node);
        } else {
            helper->AppendNodeRecord(node);
            ++c.madeHere;
        }
    }
    return duplicates;
}

// Records re-apply their links one by one, so a link that closes a loop until a later record moves its node is
// refused at first; the links are tried again until none more can be made (each round makes at least one).
void ReapplyRefusedLinks(VandrelsHelper* helper) {
    const int records = helper->NodeRecords().Count();
    for (int round = 0; round < records; ++round) {
        bool made = false;
        for (RefNode* record : helper->NodeRecords())
            if (record && record->ReapplyRefusedLinks()) made = true;
        if (!made) return;
    }
}

// Adds the new materials to the scene's material library under names no other material of it has.
void AddMaterialsToScene(const Tab<Mtl*>& newMaterials) {
    MtlBaseLib* lib = GetCOREInterface()->GetSceneMtls();
    if (!lib) return;
    std::unordered_map<std::wstring, int> taken;
    for (int i = 0; i < lib->Count(); ++i)
        if (MtlBase* m = (*lib)[i]) ++taken[Key(m->GetName().data())];
    for (Mtl* mtl : newMaterials) {
        if (!mtl) continue;
        if (lib->FindMtl(mtl) >= 0) continue;
        lib->Add(mtl);
        const MSTR name = mtl->GetName();
        const MSTR unique = MakeUniqueName(
            name, [&taken](const MSTR& candidate) { return taken.count(Key(candidate.data())) > 0; },
            kMaxMaterialNameIncrements);
        ++taken[Key(unique.data())];
        if (unique == name) continue;
        mtl->SetName(unique);
        mtl->NotifyDependents(FOREVER, 0, kMsgTakeLocalName, REFBASE_SUPER_CLASS_ID);
    }
}

void DeleteNodes(const Tab<INode*>& nodes, bool keepChildTM) {
    INodeTab table;
    for (INode* node : nodes)
        if (node) table.Append(node);
    if (table.Count()) GetCOREInterface()->DeleteNodes(table, keepChildTM, true);
}

// A failed load: the report, then the content leaves the scene as an unload takes it (the records keep their
// overrides and local content its links); the merged nodes that no record took are deleted after it.
void FailLoad(VandrelsHelper* helper, LoadWork& work, int step, const MAXException* cause, BatchScope& batch) {
    work.ListenForLayers(false);
    work.ListenForAddedNodes(false);
    work.mergedNodes.Compact();
    work.toDelete.Compact();
    wchar_t count[64];
    std::swprintf(count, 64, L"\nMerged Nodes: %d", work.mergedNodes.Count() + work.toDelete.Count());
    ReportHelperError(helper, MSTR(L"Error Loading Reference") + count, step ? GetStringCopy(step).data() : nullptr,
                      cause);
    helper->SetLoaded(false);
    helper->Unload();
    batch.Close();
    try {
        // The unload deleted the records' nodes (the lists heard of it) or kept them in light form for local items.
        Tab<INode*> rest;
        for (const NodeList* list : {&work.mergedNodes, &work.toDelete})
            for (INode* node : list->Nodes())
                if (node && !FindNodeRecord(node)) rest.Append(node);
        work.mergedNodes.Clear();
        work.toDelete.Clear();
        DeleteNodes(rest, false);
    } catch (...) {
        // The scene keeps what could not be deleted.
    }
}

}  // namespace
}  // namespace vandrels

int VandrelsHelper::Load() {
    using namespace vandrels;
    if (data_.loaded || !data_.pblock) return 0;
    BroadcastNotification(kNotifyLoadStarts, this);
    if (!data_.pblock->GetInt(vh_active)) {
        BroadcastNotification(kNotifyLoadEnds, this);
        return 0;
    }
    Interface* ip = GetCOREInterface();
    SetCursor(LoadCursor(nullptr, IDC_WAIT));
    int result = 0;
    bool duplicatesFound = false;
    {
        OperationModeScope mode(kModeLoading);
        BatchScope batch;
        data_.holdsNested = 0;
        LoadWork work;
        int step = 0;  // the string id of the step word in force
        const bool timing = GetPrintTimes();
        MaxSDK::PerformanceTools::Timer mergeTimer, initTimer;
        double mergeTime = 0, initTime = 0;
        bool merged = false;
        // What the merge step collected before it failed, if it did.
        Tab<INode*> mergedByStep;
        try {
            DropBareRecords(this, data_.refNodes, HelperSlot::NodeRecord);
            DropBareRecords(this, data_.refMaterials, HelperSlot::MaterialRecord);
            step = IDS_STEP_LOAD_CLEANED;

            work.RememberPreLayers();
            if (timing) mergeTimer.StartTimer();
            const MSTR path = ChooseReferenceFile(this);
            merged = MergeReferenceFile(this, path, mergedByStep) != 0;
            for (INode* node : mergedByStep) work.mergedNodes.Append(node);
            mergedByStep.ZeroCount();
            if (!merged) {
                data_.fileTime = 0;
            } else {
                step = IDS_STEP_LOAD_MERGED;
                if (timing) {
                    mergeTime = mergeTimer.EndTimer();
                    initTimer.StartTimer();
                }
                data_.fileTime = ReadLastWriteTime(path);

                // Nested references become plain content of this one.
                const Tab<INode*>& nodes = work.mergedNodes.Nodes();
                for (int i = nodes.Count() - 1; i >= 0; --i) {
                    INode* node = nodes[i];
                    VandrelsHelper* nested = node ? FromObject(node->GetObjectRef()) : nullptr;
                    if (!nested) continue;
                    if (!data_.holdsNested && nested->NeedsRenderSwitching()) data_.holdsNested = 1;
                    work.mergedNodes.Remove(node);
                    nested->Merge();
                }
                work.mergedNodes.Compact();

                HoldResumedScope resumed;
                work.ListenForLayers(true);
                work.CollectLayers();
                step = IDS_STEP_LOAD_LAYERS_COLLECTED;
                work.CollectParentLayers();
                step = IDS_STEP_LOAD_LAYERS_PARENT_COLLECTED;

                Tab<Mtl*> newMaterials;
                data_.pendingRecords.ZeroCount();
                MonitorMaterials(this, work, newMaterials);
                step = IDS_STEP_LOAD_MATERIALS_MONITORED;

                work.ListenForAddedNodes(true);
                CollectNodesToDelete(this, work);
                step = IDS_STEP_LOAD_NODES_TO_DELETE_COLLECTED;
                duplicatesFound = MonitorNodes(this, work);
                ReapplyRefusedLinks(this);
                work.mergedNodes.Compact();
                step = IDS_STEP_LOAD_NODES_MONITORED;

                if (data_.pblock->GetInt(vh_use_name_prefix)) {
                    const WStr prefix = GetNamePrefix();
                    for (RefNode* record : data_.refNodes)
                        if (record && record->GetNode()) record->ApplyNamePrefix(prefix);
                    for (RefMaterial* record : data_.refMaterials)
                        if (record && record->GetMaterial()) record->ApplyNamePrefix(prefix);
                }
                AddMaterialsToScene(newMaterials);
                step = IDS_STEP_LOAD_MATERIALS_ADDED_TO_SCENE;
                work.ListenForAddedNodes(false);
                work.toDelete.Compact();
                DeleteNodes(work.toDelete.Nodes(), true);
                work.toDelete.Clear();
                step = IDS_STEP_LOAD_NODES_DELETED;

                work.ListenForLayers(false);
                work.CompactLayers();
                MonitorLayers(this, work.mergedLayers);
                work.FreeLayers();
                for (RefAnim* record : data_.pendingRecords)
                    if (record) record->Refresh();
                data_.pendingRecords.ZeroCount();
                if (timing) initTime = initTimer.EndTimer();
                step = IDS_STEP_LOAD_PRE_LOADED;
            }
        } catch (const MAXException& e) {
            for (INode* node : mergedByStep) work.mergedNodes.Append(node);
            FailLoad(this, work, step, &e, batch);
            merged = false;
        } catch (...) {
            for (INode* node : mergedByStep) work.mergedNodes.Append(node);
            FailLoad(this, work, step, nullptr, batch);
            merged = false;
        }
        theHold.FlushUndoBuffer();
        batch.Close();
        if (merged) {
            data_.loaded = 1;
            if (timing) {
                mprintf(L"\nVD Merge Time: %f\nVD Initialization Time: %f\n", mergeTime, initTime);
                mflush();
            }
            ip->ReplacePrompt(L"Reference Loaded");
            result = 1;
        }
    }
    SetCursor(LoadCursor(nullptr, IDC_ARROW));
    BroadcastNotification(kNotifyLoadEnds, this);
    if (duplicatesFound && ip->HasUserInterface() && GetShowDuplicatedNamesWarning())
        ShowDuplicatedNamesWarning(this, GetNodes());
    return result;
}
