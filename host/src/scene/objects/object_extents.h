// The extent of an object in its own space, worked out from the size parameters of its class (box length,
// width and height, sphere radius...), for bounding boxes and selection centres.
#pragma once

#include "geom.h"
#include "object.h"

namespace hostrt {

// The object's box at time t in object space; a box around the origin with no size for classes without
// size parameters. Follows derived objects down to their base object (modifiers do not change extents).
Box3 ObjectSizeBox(Object* obj, TimeValue t);

}  // namespace hostrt
