// The layer steps on a reference helper: the helper's layer lists and layer references as the steps' owner, and
// the failure report of the layer monitoring.
#include "frame/module.h"
#include "helper/layer_monitoring.h"
#include "helper/vandrels_helper.h"
#include "ilayer.h"
#include "maxexception.h"
#include "resources/resource.h"

// The helper's layer references follow its node and material records.
class VandrelsHelper::LayerSteps : public vandrels::LayerRecordOwner {
public:
    explicit LayerSteps(VandrelsHelper* helper) : helper_(helper) {}
    Tab<RefLayer*>& RefLayers() override { return helper_->data_.refLayers; }
    Tab<RenamedLayer*>& RenamedLayers() override { return helper_->data_.renamedLayers; }
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

namespace vandrels {

namespace {

const MCHAR* StepWord(int step) { return step ? GetString(step) : nullptr; }

}  // namespace

void MonitorLayers(VandrelsHelper* helper, Tab<MergedLayer*>& mergedLayers) {
    if (!helper) return;
    LayerStepProgress progress;
    try {
        VandrelsHelper::LayerSteps owner(helper);
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
    VandrelsHelper::LayerSteps owner(helper);
    RecordLayerRenamings(owner, prefix);
}

void ChangeLayerPrefix(VandrelsHelper* helper, const WStr& oldPrefix, const WStr& newPrefix) {
    if (!helper) return;
    VandrelsHelper::LayerSteps owner(helper);
    ChangeLayerPrefix(owner, oldPrefix, newPrefix);
}

bool RenameReferenceLayer(VandrelsHelper* helper, int refLayerIndex, const WStr& newName) {
    if (!helper) return false;
    VandrelsHelper::LayerSteps owner(helper);
    return RenameReferenceLayer(owner, refLayerIndex, newName);
}

}  // namespace vandrels
