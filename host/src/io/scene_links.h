// ISceneLinks: pointers between host objects that are not numbered references but that a scene file must
// keep (a node's parent and children, for instance). Host classes implement it; the scene writer finds it
// by dynamic_cast and writes the links as the object's link table.
#pragma once

#include "ref.h"

namespace hostrt {

class ISceneLinks {
public:
    virtual ~ISceneLinks() = default;
    virtual int NumLinks() = 0;
    virtual ReferenceTarget* GetLink(int i) = 0;
    // Called by the scene reader after every object is loaded and every reference restored, for each saved
    // link that is not null, in index order (i < NumLinks() as answered after Load).
    virtual void SetLink(int i, ReferenceTarget* target) = 0;
};

}  // namespace hostrt
