#include "helper/batch_selection_sets.h"

#include "helper/helper_registry.h"
#include "helper/scene_events.h"
#include "helper/vandrels_helper.h"
#include "inode.h"
#include "maxapi.h"
#include "records/pending_selection_sets.h"
#include "records/ref_node.h"
#include "records/scene_utils.h"

#include <algorithm>
#include <vector>

namespace vandrels {
namespace {

// A member of a set when the batch opened: its node by handle (the node may be gone when the batch closes) and
// the node record it had, kept only to be compared with the records of the fresh nodes.
struct Member {
    ULONG handle = 0;
    const RefNode* record = nullptr;
};

struct RememberedSet {
    MSTR name;
    std::vector<Member> members;
};

std::vector<RememberedSet>& Remembered() {
    static std::vector<RememberedSet> sets;
    return sets;
}

int FindSet(const MSTR& name) {
    Interface* ip = GetCOREInterface();
    for (int i = 0; i < ip->GetNumNamedSelSets(); ++i)
        if (ip->GetNamedSelSetName(i) == name) return i;
    return -1;
}

// The members of a remembered set after the batch: the nodes still there in their places, a fresh node in the
// place of the node its record had, then the fresh nodes that took no place.
INodeTab RebuiltMembers(const RememberedSet& set, const Tab<INode*>& pending) {
    Interface* ip = GetCOREInterface();
    std::vector<INode*> fresh;
    for (INode* node : pending)
        if (node && std::find(fresh.begin(), fresh.end(), node) == fresh.end()) fresh.push_back(node);
    std::vector<bool> placed(fresh.size(), false);
    INodeTab members;
    auto add = [&members](INode* node) {
        if (node && members.IndexOf(node) < 0) members.Append(node);
    };
    for (const Member& member : set.members) {
        if (INode* node = ip->GetINodeByHandle(member.handle)) {
            add(node);
            continue;
        }
        if (!member.record) continue;
        for (std::size_t k = 0; k < fresh.size(); ++k)
            if (!placed[k] && FindNodeRecord(fresh[k]) == member.record) {
                placed[k] = true;
                add(fresh[k]);
                break;
            }
    }
    for (std::size_t k = 0; k < fresh.size(); ++k)
        if (!placed[k]) add(fresh[k]);
    return members;
}

}  // namespace

void RememberSelectionSets() {
    SetSelectionSetTracking(false);
    Interface* ip = GetCOREInterface();
    const int count = ip->GetNumNamedSelSets();
    ResetPendingSelectionSets(count);
    std::vector<RememberedSet>& sets = Remembered();
    sets.clear();
    for (int i = 0; i < count; ++i) {
        RememberedSet set{ip->GetNamedSelSetName(i), {}};
        for (int j = 0; j < ip->GetNamedSelSetItemCount(i); ++j) {
            INode* node = ip->GetNamedSelSetItem(i, j);
            if (!node) continue;
            RefNode* record = FindNodeRecord(node);
            if (record) record->AddSelectionSet(i);
            set.members.push_back({node->GetHandle(), record});
        }
        sets.push_back(std::move(set));
    }
}

void RebuildSelectionSets() {
    Interface* ip = GetCOREInterface();
    const std::vector<RememberedSet>& sets = Remembered();
    for (int i = 0; i < int(sets.size()); ++i) {
        const Tab<INode*>* pending = PendingSelectionMembers(i);
        if (!pending || pending->Count() == 0) continue;
        INodeTab members = RebuiltMembers(sets[std::size_t(i)], *pending);
        if (FindSet(sets[std::size_t(i)].name) >= 0)
            ip->ReplaceNamedSelSet(members, sets[std::size_t(i)].name);
        else
            ip->AddNewNamedSelSet(members, sets[std::size_t(i)].name);
    }
    // The records whose nodes stayed have nothing to restore; the records of unloaded nodes keep their sets for
    // the load that brings the nodes back.
    for (VandrelsHelper* helper : HelperRegistry())
        if (helper)
            for (RefNode* record : helper->NodeRecords())
                if (record && record->IsNodeLoaded() && record->GetNode() &&
                    (record->GetOverrideFlags() & kNodeSelectionSets))
                    record->ForgetSelectionSets();
    ClearPendingSelectionSets();
    Remembered().clear();
    RebuildSelectionSetCache();
    SetSelectionSetTracking(true);
}

}  // namespace vandrels
