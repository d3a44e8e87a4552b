// Walks the tree of sub-materials and sub-maps below a material or map.
#pragma once

#include "imtl.h"

namespace hostrt {

// Whether target is root or lies anywhere below it (through sub-maps and, for materials, sub-materials).
// Material and map setters use it to refuse a cycle.
inline bool MtlTreeContains(MtlBase* root, MtlBase* target) {
    if (!root || !target) return false;
    if (root == target) return true;
    for (int i = 0; i < root->NumSubTexmaps(); ++i)
        if (MtlTreeContains(root->GetSubTexmap(i), target)) return true;
    if (root->SuperClassID() == MATERIAL_CLASS_ID) {
        Mtl* m = static_cast<Mtl*>(root);
        for (int i = 0; i < m->NumSubMtls(); ++i)
            if (MtlTreeContains(m->GetSubMtl(i), target)) return true;
    }
    return false;
}

}  // namespace hostrt
