// The configurable identity class: stands in for host plug-in classes whose behaviour does not matter beyond
// their identity — any superclass and class id, a settable set of interfaces (answered with a non-null
// dummy), any number of references, named sub-anims and a settable anim-copy answer. Each (superclass, class
// id) pair gets a class descriptor of its own, made on first use, so these objects save, load and clone.
#pragma once

#include "plugapi.h"

namespace hostrt {

// What every identity object offers, whatever SDK base class its superclass gives it (Control for
// controllers, Object, Modifier, Mtl, Texmap, CustAttrib, else ReferenceTarget).
class IdentityClass {
public:
    // A new object of that identity. The pair's descriptor is registered on first use (named name, or
    // "Identity (0x..., 0x...)" when name is null). Throws MAXException when the pair belongs to another class.
    static ReferenceTarget* Make(SClass_ID sclass, Class_ID cid, const MCHAR* name = nullptr);
    // The identity side of an object made by Make (null for any other object).
    static IdentityClass* Of(Animatable* anim);

    virtual ~IdentityClass() = default;

    // Interfaces answered with a dummy: numeric ids through GetInterface(ULONG), Interface_IDs through
    // GetInterface(Interface_ID) (the dummy's GetID answers the id).
    virtual void AddInterface(ULONG id) = 0;
    virtual void AddInterface(Interface_ID id) = 0;
    virtual void RemoveInterface(ULONG id) = 0;
    virtual void RemoveInterface(Interface_ID id) = 0;

    // References: SetNumRefs grows (with empty slots) or shrinks (dropping the references beyond n).
    virtual void SetNumRefs(int n) = 0;
    // Sub-anim i is reference refIndex under a name; answers the sub-anim's index.
    virtual int AddSubAnim(int refIndex, const MSTR& name) = 0;

    // What CanCopyAnim answers (TRUE unless set).
    virtual void SetCanCopyAnim(bool on) = 0;
    // What a controller's IsLeaf answers (TRUE unless set).
    virtual void SetIsLeaf(bool on) = 0;
    // What a controller's IsReplaceable answers (TRUE unless set).
    virtual void SetIsReplaceable(bool on) = 0;
};

// Registers the descriptor of that identity without making an object (so that a file holding such objects can
// be opened before any was made); answers it. Throws as Make does.
ClassDesc* DeclareIdentityClass(SClass_ID sclass, Class_ID cid, const MCHAR* name = nullptr);

}  // namespace hostrt
