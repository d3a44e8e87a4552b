#include "helper/node_lightening.h"

#include "control.h"
#include "frame/placeholders.h"
#include "inode.h"
#include "istdplug.h"
#include "maxapi.h"
#include "object.h"
#include "plugapi.h"
#include "records/ref_holder.h"
#include "ref.h"

namespace vandrels {
namespace {

constexpr ULONG kPinnedGeometryPartA = 0x50320C9A;
constexpr ULONG kPinnedHelperPartB = 0x1EB34300;
const Interface_ID kPFActionInterface(0x74F93D00, 0x1EB34500);

constexpr int kVisibilityRef = NODE_VIS_REF;

}  // namespace

RefMessagesOffScope::RefMessagesOffScope() { DisableRefMsgs(); }
RefMessagesOffScope::~RefMessagesOffScope() { EnableRefMsgs(); }

bool ObjectMayBeReplaced(Object* baseObject) {
    if (!baseObject) return false;
    const SClass_ID sc = baseObject->SuperClassID();
    const Class_ID id = baseObject->ClassID();
    if (sc == GEOMOBJECT_CLASS_ID) return id.PartA() != kPinnedGeometryPartA;
    if (sc == HELPER_CLASS_ID)
        return id.PartB() != kPinnedHelperPartB && baseObject->GetInterface(kPFActionInterface) == nullptr;
    return true;
}

bool NeedsStandInNode(INode* node) {
    return node->GetReference(NODE_IMBLUR_REF) != nullptr || node->GetReference(NODE_OBJBLUR_REF) != nullptr;
}

RelinkEntry ParkNodeItems(RefHolder* holder, int first, INode* node, bool parkController) {
    RelinkEntry entry;
    entry.node = node;
    if (holder->NumRefs() < first + 3) holder->SetNumRefs(first + 3);
    if (parkController) {
        entry.controller = node->GetTMController();
        holder->ReplaceReference(first, entry.controller);
    }
    entry.object = dynamic_cast<Object*>(node->GetReference(NODE_OBJECT_REF));
    holder->ReplaceReference(first + 1, entry.object);
    entry.ref3 = node->GetReference(kVisibilityRef);
    holder->ReplaceReference(first + 2, entry.ref3);
    return entry;
}

void LightenNode(INode* node, const Matrix3& tm, bool hasTm, bool merged) {
    RefMessagesOffScope messagesOff;
    Object* base = node->GetBaseObject();
    if (ObjectMayBeReplaced(base)) {
        Object* standIn = merged ? static_cast<Object*>(CreateInstance(HELPER_CLASS_ID, Class_ID(DUMMY_CLASS_ID, 0)))
                                 : MakePlaceholderObject(base);
        if (standIn) node->ReplaceReference(NODE_OBJECT_REF, standIn);
    }
    if (hasTm) {
        if (merged) {
            if (auto* prs = static_cast<Control*>(CreateInstance(CTRL_MATRIX3_CLASS_ID,
                                                                  Class_ID(PRS_CONTROL_CLASS_ID, 0)))) {
                node->ReplaceReference(NODE_TM_REF, prs);
                Matrix3 world = tm;
                node->SetNodeTM(GetCOREInterface()->GetTime(), world);
            }
        } else {
            node->ReplaceReference(NODE_TM_REF, MakePlaceholderController(tm));
        }
    }
    node->ReplaceReference(kVisibilityRef, nullptr);
}

void RestoreParkedItems(const RelinkEntry& entry) {
    if (!entry.node) return;
    RefMessagesOffScope messagesOff;
    if (entry.controller) entry.node->ReplaceReference(NODE_TM_REF, entry.controller);
    entry.node->ReplaceReference(NODE_OBJECT_REF, entry.object);
    entry.node->ReplaceReference(kVisibilityRef, entry.ref3);
}

}  // namespace vandrels
