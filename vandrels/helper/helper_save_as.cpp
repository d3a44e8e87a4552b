// Writing a reference's nodes into a file (a new one, or the reference's own file through Overwrite). The file
// holds the nodes under the names they carry in the reference file; the scene is left exactly as it was.
#include "helper/helper_params.h"
#include "frame/module_state.h"
#include "helper/vandrels_helper.h"
#include "inode.h"
#include "maxapi.h"
#include "maxexception.h"
#include "helper/error_report.h"

#include <unordered_set>
#include <utility>
#include <vector>

namespace vandrels {
namespace {

// Switches the helper's name prefix off for its lifetime when it is on (the accessor renames the nodes, materials
// and layers back to their names in the reference file), and on again afterwards, also when the save fails.
class PrefixOffScope {
public:
    explicit PrefixOffScope(VandrelsHelper* helper) : helper_(helper) {
        switched_ = helper_->ParamBlock()->GetInt(vh_use_name_prefix) != 0;
        if (switched_) helper_->ParamBlock()->SetValue(vh_use_name_prefix, 0, FALSE);
    }
    ~PrefixOffScope() {
        if (switched_ && helper_->ParamBlock()) helper_->ParamBlock()->SetValue(vh_use_name_prefix, 0, TRUE);
    }
    PrefixOffScope(const PrefixOffScope&) = delete;
    PrefixOffScope& operator=(const PrefixOffScope&) = delete;

private:
    VandrelsHelper* helper_;
    bool switched_ = false;
};

// The host writes a listed node together with the nodes below it. For its lifetime the children of the written
// nodes that are not written themselves (local nodes linked under referenced ones) hang from the scene root,
// keeping their transforms under their parents; afterwards they go back, each in its place among its siblings.
class UnwrittenChildrenAside {
public:
    explicit UnwrittenChildrenAside(const INodeTab& written) {
        std::unordered_set<INode*> listed(written.begin(), written.end());
        for (INode* parent : written) {
            std::vector<INode*> order;
            bool moves = false;
            for (int i = 0; parent && i < parent->NumberOfChildren(); ++i) {
                INode* child = parent->GetChildNode(i);
                order.push_back(child);
                moves = moves || !listed.count(child);
            }
            if (!moves) continue;
            for (INode* child : order)
                if (!listed.count(child)) child->Detach(0, FALSE);
            parents_.emplace_back(parent, std::move(order));
        }
    }
    ~UnwrittenChildrenAside() {
        for (auto& [parent, order] : parents_) {
            // Attaching appends: from the first child out of place on, every child is attached again in order.
            std::size_t first = 0;
            while (first < order.size() && int(first) < parent->NumberOfChildren() &&
                   parent->GetChildNode(int(first)) == order[first])
                ++first;
            for (std::size_t i = first; i < order.size(); ++i) {
                if (order[i]->GetParentNode() == parent) order[i]->Detach(0, FALSE);
                parent->AttachChild(order[i], FALSE);
            }
        }
    }
    UnwrittenChildrenAside(const UnwrittenChildrenAside&) = delete;
    UnwrittenChildrenAside& operator=(const UnwrittenChildrenAside&) = delete;

private:
    std::vector<std::pair<INode*, std::vector<INode*>>> parents_;
};

}  // namespace
}  // namespace vandrels

int VandrelsHelper::SaveAs(const MCHAR* fileName) {
    using namespace vandrels;
    if (!data_.pblock) return 0;
    try {
        if (!fileName || !*fileName) throw MAXException(L"No file name was given.");
        // An unloaded reference has only stand-ins in the scene; writing them would wipe the file's content.
        if (!data_.loaded) throw MAXException(L"The reference is not loaded; load it before saving it.");
        Tab<INode*> nodes = GetNodes();
        INodeTab table;
        for (INode* node : nodes) table.Append(node);
        PrefixOffScope prefixOff(this);
        OperationModeScope mode(kModeSavingAs);
        UnwrittenChildrenAside aside(table);
        Interface* ip = GetCOREInterface();
        if (!ip->SaveNodes(&table, fileName)) throw MAXException(ip->GetLastFileError());
        return 1;
    } catch (const MAXException& e) {
        ReportError(MSTR(L"Error Saving Reference"), 0, &e);
    } catch (...) {
        ReportError(MSTR(L"Unknown Error Saving Reference"));
    }
    return 0;
}
