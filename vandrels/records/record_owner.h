// What a record asks of the helper that owns it: the services a node, material or animatable record calls on its
// owner without knowing the helper class above it. The reference helper implements it.
#pragma once

#include "maxtypes.h"
#include "strclass.h"

class INode;
class RefAnim;
class RefNode;

class RecordOwner {
public:
    // The owner's node name while names are prefixed, else empty.
    virtual WStr GetNamePrefix() = 0;
    // Whether the records stay when the scene is saved (the reference persists with the scene).
    virtual BOOL GetPersistRef() = 0;
    // Incremented after every collect pass over the records.
    virtual DWORD GetPassCounter() const = 0;
    // Hands a new animatable record in to be finished after the current load.
    virtual void RegisterWithHelper(RefAnim* record) = 0;
    // Makes node one of the reference's nodes (see RecordOwner::AdoptNode).
    virtual RefNode* AdoptNode(INode* node, const MCHAR* name) = 0;
    // True while a merge is in progress or when the owner's node is not under the open scene's own root.
    virtual bool IsNested() = 0;
    // Forgets that the user deleted the referenced node called name.
    virtual void ForgetName(const MCHAR* name) = 0;

protected:
    ~RecordOwner() = default;
};
