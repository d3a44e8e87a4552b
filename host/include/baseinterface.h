// BaseInterface: the root of the interfaces an animatable answers by Interface_ID (function-publishing
// interfaces and the host's extension interfaces), through Animatable::GetInterface(Interface_ID).
#pragma once

#include "maxtypes.h"

class BaseInterface {
public:
    virtual ~BaseInterface() = default;
    // The identifier this interface is known by; (0, 0) when it has none.
    virtual Interface_ID GetID() { return Interface_ID(0, 0); }
};
