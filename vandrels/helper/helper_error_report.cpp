#include "helper/helper_error_report.h"

#include "frame/record_failure.h"
#include "helper/vandrels_helper.h"
#include "inode.h"
#include "maxexception.h"
#include "helper/error_report.h"

#include <cstdio>

namespace vandrels {

MSTR DescribeHelper(VandrelsHelper* helper) {
    try {
        if (!helper) return MSTR(L"Unknown Reference Data");
        INode* node = helper->GetNode();
        MSTR text(L"Name: ");
        if (node && node->GetName()) text += node->GetName();
        wchar_t counts[200];
        std::swprintf(counts, 200, L"\nRefNodes: %d, RefMaterials: %d, RefLayers: %d\nNodesToDelete: %d, RenamedLayers: %d",
                      helper->NodeRecords().Count(), helper->MaterialRecords().Count(), helper->LayerRecords().Count(),
                      helper->DeletedNodeNames().Count(), helper->RenamedLayers().Count());
        return text + counts;
    } catch (...) {
        return MSTR(L"Unknown Reference Data");
    }
}

MSTR ReportHelperError(VandrelsHelper* helper, const MSTR& message, const MCHAR* step, const MAXException* cause) {
    const RecordFailure failure{message, DescribeHelper(helper), step ? std::optional<MSTR>(step) : std::nullopt,
                                RecordFailure::CauseOf(cause)};
    const MSTR text = failure.ToString();
    ReportError(text);
    return text;
}

}  // namespace vandrels
