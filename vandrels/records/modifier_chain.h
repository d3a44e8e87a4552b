// Walking a node's object chain through its derived objects (superclass 2), from the top down.
#pragma once

#include "inode.h"
#include "object.h"

namespace modchain {

// obj as a derived object, or null when it is none.
inline IDerivedObject* AsDerived(Object* obj) {
    return obj && obj->SuperClassID() == GEN_DERIVOB_CLASS_ID ? static_cast<IDerivedObject*>(obj) : nullptr;
}

// The number of modifiers in every derived object from top down the chain.
inline int CountModifiers(Object* top) {
    int total = 0;
    for (IDerivedObject* d = AsDerived(top); d; d = AsDerived(d->GetObjRef())) total += d->NumModifiers();
    return total;
}

}  // namespace modchain

namespace modchain {

// The context of mod in node's world-space or object-space stack, or null when mod is in neither.
inline ModContext* ContextOf(INode* node, Modifier* mod) {
    if (!node || !mod) return nullptr;
    for (IDerivedObject* d = AsDerived(node->GetObjOrWSMRef()); d; d = AsDerived(d->GetObjRef()))
        for (int i = 0; i < d->NumModifiers(); ++i)
            if (d->GetModifier(i) == mod) return d->GetModContext(i);
    return nullptr;
}

}  // namespace modchain
