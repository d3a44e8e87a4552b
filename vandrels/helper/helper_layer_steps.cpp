// The layer steps on a reference helper: the helper's layer lists and layer references as the steps' owner, and
// the failure report of the layer monitoring.
#include "frame/module.h"
#include "helper/layer_monitoring.h"
#include "helper/vandrels_helper.h"
#include "ilayer.h"
#include "maxexception.h"
#include "resources/resource.h"

namespace vandrels {

namespace {

// The helper's layer references follow its node and material records.
class HelperLayerOwner : public LayerRecordOwner {
public:
    explicit HelperLayerOwner(VandrelsHelper* helper) : helper_(helper) {}
    Tab<RefLayer*>& RefLayers() override { return helper_->refLayers; }
    Tab<RenamedLayer*>& RenamedLayers() override { return helper_->renamedLayers; }
    void SetLayerReference(int k, ILayer* layer) override {
        const int ref = helper_->Slots().Layer(k);
        if (layer)
            helper_->ReplaceReference(ref, layer);
        else
            helper_->DeleteReference(ref);
    }

private:
    VandrelsHelper* helper_;
};

const MCHAR* StepWord(int step) { return step ? GetString(step) : nullptr; }

}  // namespace

void MonitorLayers(VandrelsHelper* helper, Tab<MergedLayer*>& mergedLayers) {
    if (!helper) return;
    LayerStepProgress progress;
    try {
        HelperLayerOwner owner(helper);
        progress.step = IDS_STEP_LAYERS_CLEANED;
        MonitorMergedLayers(owner, helper->GetNamePrefix(), mergedLayers, progress);
    } catch (const MAXException& e) {
        throw MAXException(
            LayerMonitoringFailure(L"Error Monitoring Layers", progress, StepWord(progress.step), &e), 0);
    } catch (...) {
        throw MAXException(
            LayerMonitoringFailure(L"Unknown Error Monitoring Layers", progress, StepWord(progress.step), nullptr),
            0);
    }
}

void RecordLayerRenamings(VandrelsHelper* helper, const WStr& prefix) {
    if (!helper) return;
    HelperLayerOwner owner(helper);
    RecordLayerRenamings(owner, prefix);
}

void ChangeLayerPrefix(VandrelsHelper* helper, const WStr& oldPrefix, const WStr& newPrefix) {
    if (!helper) return;
    HelperLayerOwner owner(helper);
    ChangeLayerPrefix(owner, oldPrefix, newPrefix);
}

bool RenameReferenceLayer(VandrelsHelper* helper, int refLayerIndex, const WStr& newName) {
    if (!helper) return false;
    HelperLayerOwner owner(helper);
    return RenameReferenceLayer(owner, refLayerIndex, newName);
}

}  // namespace vandrels
