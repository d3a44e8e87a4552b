// The reference helper's state: everything a helper keeps between calls, held privately by VandrelsHelper and
// changed only through its methods.
#pragma once

#include "helper/helper_layers.h"
#include "helper/node_callback.h"
#include "iparamb2.h"
#include "object.h"

#include <cstdint>
#include <memory>

class RefAnim;
class RefNode;
class RefMaterial;

struct VandrelsHelperState {
    IObjParam* editInterface = nullptr;   // while edited in the command panel
    HWND rolloutWindow = nullptr;         // the parameter rollout's window while edited
    int useNamePrefix = 0;                // copy of UseNamePrefix, taken whenever the block is attached
    std::unique_ptr<NodeCallback> nodeCallback;  // the helper's node-event callback, registered while it lives
    DWORD sceneEventKey = 0;              // key of that registration
    std::uint64_t fileTime = 0;           // last-write time of the reference file at the last load; 0 unknown
    Tab<RefAnim*> pendingRecords;         // animatable records to finish after the current load
    DWORD passCounter = 0;                // incremented after every collect pass over the records
    int loaded = 0;                       // 1 while the reference's content is in the scene
    int holdsNested = 0;                  // 1 when the last load merged a helper that needs render switching
    IParamBlock2* pblock = nullptr;       // the parameter block slot
    Tab<RefNode*> refNodes;               // the node record slots
    Tab<RefMaterial*> refMaterials;       // the material record slots
    Tab<RefLayer*> refLayers;             // the layer slots (the layers themselves)
    Tab<RenamedLayer*> renamedLayers;     // how the user renamed the reference's layers
    int accessorEnabled = 1;              // 0 while the helper writes its own parameters
    Tab<WStr*> nodesToDelete;             // names of referenced nodes the user deleted locally
    ReferenceTarget* sceneMaterials = nullptr;  // the scene materials slot, only while a merge runs
    int creating = 0;                     // 1 between the first and the last click of interactive creation
};
