// The Interface members that edit a node's modifier stacks, with the notifications around each edit.
#include "inode.h"
#include "maxapi.h"
#include "notify.h"
#include "object.h"

namespace {

// The object-space derived object at the top of the node's chain, made when the node has none.
IDerivedObject* objectSpaceStack(INode& node) {
    Object* top = node.GetObjectRef();
    if (!top) return nullptr;
    if (top->SuperClassID() == GEN_DERIVOB_CLASS_ID && !static_cast<IDerivedObject*>(top)->IsWorldSpace())
        return static_cast<IDerivedObject*>(top);
    IDerivedObject* derived = CreateDerivedObject(top);
    node.SetObjectRef(derived);
    return derived;
}

// Calls edit between the pre and post notification. The modifier is kept alive until the post notification has
// gone out (a deleted modifier that nothing needs goes after it).
template <class Edit> void aroundEdit(int pre, int post, INode& node, Modifier& mod, ModContext* mc, Edit edit) {
    NotifyModAddDelParam param{&node, &mod, mc};
    BroadcastNotification(pre, &param);
    const bool wasLocked = mod.TestAFlag(A_LOCK_TARGET);
    mod.SetAFlag(A_LOCK_TARGET);
    edit();
    param.mc = nullptr;  // the context may have gone with the stack entry
    BroadcastNotification(post, &param);
    if (!wasLocked) {
        mod.ClearAFlag(A_LOCK_TARGET);
        mod.MaybeAutoDelete();
    }
}

}  // namespace

bool Interface::AddModifier(INode& node, Modifier& mod, int before) {
    if (mod.SuperClassID() == WSM_CLASS_ID) {
        IDerivedObject* ws = node.GetWSMDerivedObject();
        if (!ws) ws = node.CreateWSMDerivedObject();
        if (!ws) return false;
        aroundEdit(NOTIFY_PRE_MODIFIER_ADDED, NOTIFY_POST_MODIFIER_ADDED, node, mod, nullptr,
                   [&] { ws->AddModifier(&mod, nullptr, 0); });
        return true;
    }
    if (!node.GetObjectRef()) return false;
    Object* top = node.GetObjectRef();
    const bool hasStack = top->SuperClassID() == GEN_DERIVOB_CLASS_ID && !static_cast<IDerivedObject*>(top)->IsWorldSpace();
    const int count = hasStack ? static_cast<IDerivedObject*>(top)->NumModifiers() : 0;
    if (before < 0 || before > count) return false;
    IDerivedObject* derived = objectSpaceStack(node);
    aroundEdit(NOTIFY_PRE_MODIFIER_ADDED, NOTIFY_POST_MODIFIER_ADDED, node, mod, nullptr,
               [&] { derived->AddModifier(&mod, nullptr, before); });
    return true;
}

bool Interface::DeleteModifier(INode& node, Modifier& mod) {
    for (Object* obj = node.GetObjOrWSMRef(); obj && obj->SuperClassID() == GEN_DERIVOB_CLASS_ID;
         obj = static_cast<IDerivedObject*>(obj)->GetObjRef()) {
        auto* derived = static_cast<IDerivedObject*>(obj);
        for (int i = 0; i < derived->NumModifiers(); ++i) {
            if (derived->GetModifier(i) != &mod) continue;
            aroundEdit(NOTIFY_PRE_MODIFIER_DELETED, NOTIFY_POST_MODIFIER_DELETED, node, mod, derived->GetModContext(i),
                       [&] { derived->DeleteModifier(i); });
            return true;
        }
    }
    return false;
}
