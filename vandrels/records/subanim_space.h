// The module's sub-anim address space: how the animatables below a scene item are numbered and named in
// animatable-record paths. It adds entries to the host's own sub-anims: index 0 (without a hint) is the item's
// custom-attribute container, nodes expose their fixed slots, derived-object chains are numbered bottom-up,
// and an item's custom attributes follow its sub-anims.
#pragma once

#include "maxtypes.h"
#include "strclass.h"

class Animatable;

// Number of entries below anim in the address space. parent is the item anim was reached from (null at the
// top of a path); hint, when not null, names the table parameter of a parameter block 2 to address.
int CountSubAnims(Animatable* anim, Animatable* parent, const MCHAR* hint = nullptr);

// Entry index below anim and its name. hint null means no hint. An index that addresses nothing answers null
// with an empty name; an entry that exists but holds no animatable at the moment answers null with its name.
Animatable* GetSubAnimByIndex(Animatable* anim, Animatable* parent, int index, const MCHAR* hint, MSTR& name);

// The fixed entry names ("CAC", "Vis", "Mods", "TM", "BO", "IMBM", "MBO") are texts of the module's string
// table; the module supplies the text of a string id through this function.
MSTR SubAnimSlotName(int stringId);
