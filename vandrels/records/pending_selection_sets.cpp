#include "records/pending_selection_sets.h"

#include <memory>
#include <vector>

namespace {

// One entry per set index; an entry's list is made with its first member.
std::vector<std::unique_ptr<Tab<INode*>>>& Table() {
    static std::vector<std::unique_ptr<Tab<INode*>>> table;
    return table;
}

bool InTable(int setIndex) { return setIndex >= 0 && setIndex < int(Table().size()); }

}  // namespace

namespace vandrels {

void ResetPendingSelectionSets(int count) {
    Table().clear();
    Table().resize(count > 0 ? std::size_t(count) : 0);
}

int NumPendingSelectionSets() { return int(Table().size()); }

const Tab<INode*>* PendingSelectionMembers(int setIndex) {
    return InTable(setIndex) ? Table()[std::size_t(setIndex)].get() : nullptr;
}

void ClearPendingSelectionSets() { Table().clear(); }

}  // namespace vandrels

bool AddPendingSelectionMember(INode* node, int setIndex) {
    if (!InTable(setIndex)) return false;
    std::unique_ptr<Tab<INode*>>& members = Table()[std::size_t(setIndex)];
    if (!members) members = std::make_unique<Tab<INode*>>();
    if (node) members->Append(node);
    return true;
}
