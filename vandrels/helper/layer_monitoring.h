// The helper's layer steps: after a merge, giving every merged layer its final name and recording the reference's
// layers (layer monitoring); remembering how the user renamed them; following a change of the name prefix.
#pragma once

#include "helper/helper_layers.h"
#include "strclass.h"
#include "tab.h"

class ILayer;
class MAXException;
class VandrelsHelper;

namespace vandrels {

// What the layer steps need of the object that keeps the layer records: its two lists and the references that
// hold the layers of its RefLayer entries. The helper is one; the steps do not depend on the helper class.
class LayerRecordOwner {
public:
    virtual ~LayerRecordOwner() = default;
    virtual Tab<RefLayer*>& RefLayers() = 0;
    virtual Tab<RenamedLayer*>& RenamedLayers() = 0;
    // Points the reference that holds the layer of RefLayer entry k at layer (null lets the layer go).
    virtual void SetLayerReference(int k, ILayer* layer) = 0;
};

// Where a layer monitoring is: the string-table id of the step word in force (0 before the first step) and the
// merged layer being processed (null outside the per-layer step).
struct LayerStepProgress {
    int step = 0;
    const MergedLayer* current = nullptr;
};

// The layer monitoring on any owner, with the name prefix in force (empty when none is used). Failures leave
// it as they are; progress tells where it was.
void MonitorMergedLayers(LayerRecordOwner& owner, const WStr& prefix, Tab<MergedLayer*>& mergedLayers,
                         LayerStepProgress& progress);

// The failure text of a layer monitoring: words, the merged layer being processed ("\nLayer Crashed: ...", or
// "\nLayer Data Corrupted" when that cannot be told), "\nLastOperation: " with the step word, and "\n\n" with
// the message of the host exception that caused it.
MSTR LayerMonitoringFailure(const MCHAR* words, const LayerStepProgress& progress, const MCHAR* stepWord,
                            const MAXException* cause);

// Records, for every RefLayer whose layer no longer carries its expected name (prefix + "_" + its name in the
// reference file, or that name alone without a prefix), the name it now has as a renaming.
void RecordLayerRenamings(LayerRecordOwner& owner, const WStr& prefix);

// Renames the layer of RefLayer entry k to newName. When another scene layer already has that name, the layer's
// nodes and child layers move to that layer, the entry points at it and the emptied layer leaves the scene.
// Answers whether the entry's layer now carries the new name where it did not before.
bool RenameReferenceLayer(LayerRecordOwner& owner, int k, const WStr& newName);

// Gives the reference's layers the names they carry under newPrefix, after recording the renamings made under
// oldPrefix (either prefix empty when none is used).
void ChangeLayerPrefix(LayerRecordOwner& owner, const WStr& oldPrefix, const WStr& newPrefix);

// The same steps on a helper. MonitorLayers throws one MAXException ("Error Monitoring Layers" or "Unknown Error
// Monitoring Layers", composed as LayerMonitoringFailure says) when it fails.
void MonitorLayers(VandrelsHelper* helper, Tab<MergedLayer*>& mergedLayers);
void RecordLayerRenamings(VandrelsHelper* helper, const WStr& prefix);
void ChangeLayerPrefix(VandrelsHelper* helper, const WStr& oldPrefix, const WStr& newPrefix);
bool RenameReferenceLayer(VandrelsHelper* helper, int refLayerIndex, const WStr& newName);

}  // namespace vandrels
