// One node of a record's sub-animatable tree: an animatable below the record's scene item with the nodes of
// its sub-anim entries, slot by slot, and the names of those slots. The tree is rebuilt, never patched; a
// rescan compares it with the live sub-anims to find what was inserted, removed or replaced.
#pragma once

#include "ref.h"
#include "strclass.h"
#include "tab.h"

struct RefSubAnim {
    explicit RefSubAnim(Animatable* anim) : anim(anim), superClass(anim ? anim->SuperClassID() : 0) {}
    ~RefSubAnim();
    RefSubAnim(const RefSubAnim&) = delete;
    RefSubAnim& operator=(const RefSubAnim&) = delete;

    Animatable* anim;           // not a reference: compared by identity only, never called through
    SClass_ID superClass;       // of anim when the node was made (anim may be gone by the time of a rescan)
    Tab<RefSubAnim*> children;  // owned; entry i is sub-anim slot i (null where the walk did not descend)
    Tab<WStr*> names;           // owned, parallel to children
};
