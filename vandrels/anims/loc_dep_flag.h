// The cached answer of the local-dependency test, hung on the animatable it was asked for, valid for one
// pass of the helper (stamp).
#pragma once

#include "ref.h"

#define LOCDEPFLAG_PROPERTY_ID 0x8663DFC5

class LocDepFlag : public AnimProperty {
public:
    explicit LocDepFlag(DWORD passStamp) : stamp(passStamp) {}
    DWORD ID() override { return LOCDEPFLAG_PROPERTY_ID; }

    int result = 0;
    DWORD stamp = 0;
};
