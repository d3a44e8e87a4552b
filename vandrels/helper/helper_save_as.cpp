// Writing a reference's nodes into a file (a new one, or the reference's own file through Overwrite). The file
// holds the nodes under the names they carry in the reference file; the scene is left exactly as it was.
#include "helper/helper_params.h"
#include "helper/module_state.h"
#include "helper/vandrels_helper.h"
#include "inode.h"
#include "maxapi.h"
#include "maxexception.h"
#include "ui/error_report.h"

namespace vandrels {
namespace {

// Switches the helper's name prefix off for its lifetime when it is on (the accessor renames the nodes, materials
// and layers back to their names in the reference file), and on again afterwards, also when the save fails.
class PrefixOffScope {
public:
    explicit PrefixOffScope(VandrelsHelper* helper) : helper_(helper) {
        switched_ = helper_->pblock->GetInt(vh_use_name_prefix) != 0;
        if (switched_) helper_->pblock->SetValue(vh_use_name_prefix, 0, FALSE);
    }
    ~PrefixOffScope() {
        if (switched_ && helper_->pblock) helper_->pblock->SetValue(vh_use_name_prefix, 0, TRUE);
    }
    PrefixOffScope(const PrefixOffScope&) = delete;
    PrefixOffScope& operator=(const PrefixOffScope&) = delete;

private:
    VandrelsHelper* helper_;
    bool switched_ = false;
};

}  // namespace
}  // namespace vandrels

int VandrelsHelper::SaveAs(const MCHAR* fileName) {
    using namespace vandrels;
    if (!pblock) return 0;
    try {
        if (!fileName || !*fileName) throw MAXException(L"No file name was given.");
        // An unloaded reference has only stand-ins in the scene; writing them would wipe the file's content.
        if (!loaded) throw MAXException(L"The reference is not loaded; load it before saving it.");
        Tab<INode*> nodes = GetNodes();
        INodeTab table;
        for (INode* node : nodes) table.Append(node);
        PrefixOffScope prefixOff(this);
        OperationModeScope mode(kModeSavingAs);
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
